// The configuration picker's Browse button and its OK: a cancelled browse
// changes nothing, a folder without the settings file is refused with a
// warning, a folder already listed is selected rather than listed
// twice, a new one is added under its own name; OK with no row chosen is
// refused with a beep and keeps the picker open.
#include <windows.h>

#include <commctrl.h>

#include <gtest/gtest.h>

#include "app/AppResources.h"
#include "app/ConfigPicker.h"
#include "app/LocateConfiguration.h"
#include "tests/win/pages/PageTestSupport.h"

namespace
{
class Picker : public PageTest
{
protected:
    int32_t Selected() const
    {
        return int32_t(SendDlgItemMessageW(picker->Handle(), kConfigPickerList, LVM_GETNEXTITEM,
                                           WPARAM(-1), LVNI_SELECTED));
    }
    void Browse(std::optional<KelText> answer)
    {
        user.AnswerBrowse(std::move(answer));
        Click(picker->Handle(), kConfigPickerBrowse);
    }

    std::vector<ConfigCandidate> candidates;
    std::unique_ptr<ConfigPicker> picker;
};
} // namespace

TEST_F(Picker, BrowseAddsOrSelectsAConfigurationOrSaysWhyNot)
{
    UseSettings("[GENERAL]\r\n");
    const KelText other = tree.Folder(u"Workshop 2");
    GetFileSystem().WriteBytes(other + u"KEL.INI", "[GENERAL]\r\n", 11);
    const KelText empty = tree.Folder(u"empty");
    candidates = {{u"config", folder, 1}};
    picker = std::make_unique<ConfigPicker>(candidates, u"KEL.INI", u"Shopwise");
    ASSERT_EQ(picker->Show(false), 1);
    const int32_t rows = 1;

    Browse(std::nullopt);
    ASSERT_EQ(user.browses.size(), 1u);
    EXPECT_TRUE(NormaliseFolder(user.browses[0].startFolder) == folder); // the selected row's
    EXPECT_EQ(candidates.size(), size_t(rows));
    EXPECT_TRUE(user.boxes.empty());

    Browse(empty);
    ASSERT_EQ(user.boxes.size(), 1u);
    EXPECT_EQ(user.boxes[0].style, uint32_t(MB_OK | MB_ICONEXCLAMATION));
    EXPECT_EQ(user.alerts.size(), 1u);
    EXPECT_EQ(candidates.size(), size_t(rows));

    // The listed folder, given without its trailing separator.
    Browse(folder.Sub(1, folder.Length() - 1));
    EXPECT_EQ(candidates.size(), size_t(rows));
    EXPECT_EQ(Selected(), 0);

    Browse(other);
    ASSERT_EQ(candidates.size(), size_t(rows + 1));
    EXPECT_EQ(candidates.back().name, u"Workshop 2");
    EXPECT_EQ(Selected(), rows);
    EXPECT_EQ(user.boxes.size(), 1u);

    // OK with no row chosen.
    LVITEMW clear{};
    clear.stateMask = LVIS_SELECTED;
    SendDlgItemMessageW(picker->Handle(), kConfigPickerList, LVM_SETITEMSTATE, WPARAM(-1),
                        LPARAM(&clear));
    Click(picker->Handle(), IDOK);
    EXPECT_TRUE(picker->Exists());
    EXPECT_EQ(user.alerts.size(), 2u);
    EXPECT_EQ(picker->Chosen(), -1);
    LVITEMW first{};
    first.stateMask = first.state = LVIS_SELECTED;
    SendDlgItemMessageW(picker->Handle(), kConfigPickerList, LVM_SETITEMSTATE, 0, LPARAM(&first));
    Click(picker->Handle(), IDOK);
    EXPECT_EQ(picker->Chosen(), 0);
}
