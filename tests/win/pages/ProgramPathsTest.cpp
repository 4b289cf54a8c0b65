// The program paths page in a real dialog: rows from the program-paths store,
// the browse button following the selection, a browsed folder reaching the
// store and on OK the settings file, and a settings file that cannot be
// written keeping the dialog open and losing nothing.
#include <optional>
#include <string>
#include <vector>

#include "app/pages/EditProgramPaths.h"
#include "app/pages/PageIds.h"
#include "framework/ListView.h"
#include "tests/win/pages/PageTestSupport.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
const char kSettings[] = "[SCANNER]\r\nPORT=COM3\r\n[PROGRAM PATHS]\r\nMain=C:\\Ledger\\\r\n"
                         "Backup=  D:\\Backup  \r\n";

class ProgramPathsPage : public PageTest
{
protected:
    // Ledgerline's kinds: Main, Backup, Database, Reports, Backup, Project.
    ListView& OpenPage(const KelText& product = u"Ledgerline",
                       const KelText& fileName = u"QUORLIN.INI")
    {
        UseSettings(kSettings, product, fileName);
        page = &Open<EditProgramPaths>();
        return *dynamic_cast<ListView*>(page->FindControl(kPathList));
    }
    bool CanBrowse() const { return page->IsControlEnabled(kPathBrowse); }
    void BrowseRow(ListView& list, int row, std::optional<KelText> answer)
    {
        list.SelectOnly(row);
        user.AnswerBrowse(std::move(answer));
        Click(page->Handle(), kPathBrowse);
    }
    // What the list tells its page on a double click.
    void DoubleClick(const ListView& list) const
    {
        NMHDR click = {list.Handle(), UINT_PTR(kPathList), UINT(NM_DBLCLK)};
        SendMessageW(page->Handle(), WM_NOTIFY, kPathList, reinterpret_cast<LPARAM>(&click));
    }
    static KelText StorePath(int32_t kind) { return SettingsContext::Instance().PathOf(kind); }

    EditProgramPaths* page = nullptr;
};
} // namespace

TEST_F(ProgramPathsPage, RowsFollowTheStoreAndTheButtonTheSelection)
{
    ListView& list = OpenPage();
    ASSERT_EQ(list.RowCount(), 6);
    const char16_t* const names[] = {u"Main",    u"Backup", u"Database",
                                     u"Reports", u"Backup", u"Project"};
    for (int row = 0; row < 6; ++row)
    {
        EXPECT_EQ(list.ItemData(row), SettingsContext::Instance().Kinds().At(row));
        EXPECT_TRUE(list.ItemText(row, 0).SameAs(names[row])) << row;
    }
    // Folders in the store's form; the default for a kind the file lacks.
    EXPECT_TRUE(list.ItemText(1, 1).SameAs(u"D:/Backup/"));
    EXPECT_TRUE(list.ItemText(5, 1).SameAs(folder + u"Projects/"));
    EXPECT_EQ(list.SelectedRows(), std::vector<int32_t>{0});
    EXPECT_TRUE(CanBrowse());

    list.ClearSelection();
    EXPECT_FALSE(CanBrowse());
    // Two rows (the template's list selects one at a time, so only code can
    // select a second): neither the button nor a double click browses.
    SetWindowLongW(list.Handle(), GWL_STYLE,
                   GetWindowLongW(list.Handle(), GWL_STYLE) & ~LVS_SINGLESEL);
    list.Select(2);
    list.Select(3);
    ASSERT_EQ(list.SelectedCount(), 2);
    EXPECT_FALSE(CanBrowse());
    DoubleClick(list);
    page->Browse();
    EXPECT_TRUE(user.browses.empty());
    list.Select(2, false);
    EXPECT_TRUE(CanBrowse());

    // A product without kinds: no rows, nothing to browse.
    const int32_t none[] = {-1};
    SettingsContext::Instance().SetSettingsFile(settingsPath, u"Ledgerline", none);
    page = &Open<EditProgramPaths>();
    EXPECT_EQ(dynamic_cast<ListView*>(page->FindControl(kPathList))->RowCount(), 0);
    EXPECT_FALSE(CanBrowse());
}

TEST_F(ProgramPathsPage, BrowsedFolderReachesTheFileOnOkCancelledOneNothing)
{
    ListView& list = OpenPage();
    BrowseRow(list, 5, KelText(u"E:\\Jobs\\2024"));
    ASSERT_EQ(user.browses.size(), 1u);
    EXPECT_EQ(user.browses[0].owner, page->Handle());
    EXPECT_TRUE(user.browses[0].title.SameAs(
        KelText::Formatted(u"%s %s", u"Project", DictText(kTextFolder))));
    EXPECT_TRUE(user.browses[0].startFolder.SameAs(folder + u"Projects/"));
    // The row shows the store's form of the folder, not the raw choice.
    EXPECT_TRUE(StorePath(4).SameAs(u"E:/Jobs/2024/"));
    EXPECT_TRUE(list.ItemText(5, 1).SameAs(u"E:/Jobs/2024/"));

    // A cancelled browser (from a double click) leaves row and store alone.
    list.SelectOnly(0);
    user.AnswerBrowse(std::nullopt);
    DoubleClick(list);
    ASSERT_EQ(user.browses.size(), 2u);
    EXPECT_TRUE(StorePath(3).SameAs(u"C:/Ledger/"));
    EXPECT_TRUE(list.ItemText(0, 1).SameAs(u"C:/Ledger/"));

    Ok();
    EXPECT_FALSE(DialogOpen());
    EXPECT_TRUE(user.boxes.empty());
    EXPECT_TRUE(SettingsValue(u"PROGRAM PATHS", u"Project").SameAs(u"E:/Jobs/2024/"));
    // Unchanged folders go back as the file had them, in their order; the
    // kinds the file lacked join them with their defaults, in the product's
    // order.
    EXPECT_TRUE(SettingsValue(u"PROGRAM PATHS", u"Main").SameAs(u"C:\\Ledger\\"));
    EXPECT_TRUE(SettingsValue(u"PROGRAM PATHS", u"Backup").SameAs(u"D:\\Backup"));
    EXPECT_TRUE(SettingsValue(u"PROGRAM PATHS", u"Database").SameAs(folder + u"Database/"));
    EXPECT_TRUE(SettingsValue(u"SCANNER", u"PORT").SameAs(u"COM3"));
    const std::string bytes = FileBytes(); // UTF-16 with its mark
    const std::string text =
        KelText(reinterpret_cast<const char16_t*>(bytes.data() + 2), int32_t(bytes.size() / 2 - 1))
            .ToUtf8();
    const std::vector<std::vector<std::string>> orders = {
        {"[PROGRAM PATHS]", "Main=", "Backup="},
        {"[PROGRAM PATHS]", "Database=", "Reports=", "Project=E:/Jobs/2024/"}};
    for (const std::vector<std::string>& keys : orders)
    {
        size_t at = 0;
        for (const std::string& key : keys)
        {
            at = text.find(key, at);
            EXPECT_NE(at, std::string::npos) << key << " in order in " << text;
        }
    }
}

TEST_F(ProgramPathsPage, OkWritesEveryPathOfTheProductIntoAFileWithoutTheSection)
{
    UseSettings("[GENERAL]\r\nUNITS=MM\r\n", u"Plotwise");
    page = &Open<EditProgramPaths>();
    Ok();
    EXPECT_FALSE(DialogOpen());
    const KindList& kinds = SettingsContext::Instance().Kinds();
    ASSERT_EQ(kinds.Count(), 13);
    for (int32_t i = 0; i < kinds.Count(); ++i)
    {
        const KelText name = SettingsContext::KindName(kinds.At(i));
        EXPECT_TRUE(SettingsValue(u"PROGRAM PATHS", name.c_str())
                        .SameAs(folder + SettingsContext::DefaultFolder(kinds.At(i))))
            << name.ToUtf8();
    }
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"UNITS").SameAs(u"MM"));
}

TEST_F(ProgramPathsPage, UnwritableSettingsFileRefusesAndKeepsTheChange)
{
    ListView& list = OpenPage();
    const std::string before = FileBytes();
    BrowseRow(list, 5, KelText(u"E:/Jobs"));
    // Read-only: refused before anything is written (also where the system
    // would let the write through, as it does for root under Wine).
    ASSERT_TRUE(SetFileAttributesW(AsWide(settingsPath), FILE_ATTRIBUTE_READONLY));

    Apply();
    Ok();
    EXPECT_TRUE(DialogOpen());
    ASSERT_EQ(user.boxes.size(), 2u);
    EXPECT_EQ(user.alerts.size(), 2u);
    for (const RecordingInteraction::Box& box : user.boxes)
    {
        EXPECT_EQ(box.owner, page->Handle());
        EXPECT_TRUE(
            box.caption.SameAs(DictTextOr(kTextSaveFailedCaption, u"Unable to Save Settings")));
        EXPECT_TRUE(box.text.SameAs(
            DictTextOr(kTextProgramPathsNotSaved,
                       u"The program paths could not be written to the settings file.")));
        EXPECT_EQ(box.style, uint32_t(MB_ICONHAND));
    }
    EXPECT_TRUE(list.ItemText(5, 1).SameAs(u"E:/Jobs/"));

    EXPECT_EQ(FileBytes(), before);
    EXPECT_NE(GetFileAttributesW(AsWide(settingsPath)) & FILE_ATTRIBUTE_READONLY, 0u);
    SetFileAttributesW(AsWide(settingsPath), FILE_ATTRIBUTE_NORMAL);
    // The change was kept: once the file is free, OK saves it and closes.
    Ok();
    EXPECT_FALSE(DialogOpen());
    EXPECT_EQ(user.boxes.size(), 2u);
    EXPECT_TRUE(SettingsValue(u"PROGRAM PATHS", u"Project").SameAs(u"E:/Jobs/"));
}

TEST_F(ProgramPathsPage, WideningTheDialogWidensOnlyThePathColumn)
{
    // Shopwise has rows enough for a vertical scroll bar.
    ListView& list = OpenPage(u"Shopwise", u"KEL.INI");
    const int kindWidth = list.ColumnWidth(0);
    const int pathWidth = list.ColumnWidth(1);
    EXPECT_EQ(kindWidth + pathWidth, list.ClientRect().right);
    const RECT button = RectIn(GetDlgItem(page->Handle(), kPathBrowse), page->Handle());

    Grow(dialog->Handle(), 150, 0);
    EXPECT_EQ(list.ColumnWidth(0), kindWidth);
    EXPECT_EQ(list.ColumnWidth(1), pathWidth + 150);
    const RECT moved = RectIn(GetDlgItem(page->Handle(), kPathBrowse), page->Handle());
    EXPECT_EQ(moved.left, button.left + 150);
    EXPECT_EQ(moved.right - moved.left, button.right - button.left);
    // Taller, the list loses its scroll bar: the column still ends at its edge.
    Grow(dialog->Handle(), 0, 200);
    EXPECT_EQ(list.ColumnWidth(0) + list.ColumnWidth(1), list.ClientRect().right);
}
