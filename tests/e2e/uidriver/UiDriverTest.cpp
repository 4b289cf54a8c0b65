// The UI driver against e2e_target.exe under Wine: each kind of control is
// worked from this process, and the target's status line, its state file and
// its exit code show that it saw what a user's action would have caused.
#include "tools/uidriver/UiDriver.h"

#include "E2eTargetIds.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>

using namespace UiDriver;
using namespace std::chrono_literals;

namespace
{

const wchar_t Title[] = L"E2E Target";

const std::wstring TargetProgram = WindowsPath(KEL_E2E_TARGET);

std::wstring TestName()
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return Wide(std::string(info->test_suite_name()) + "." + info->name());
}

std::wstring ScreenshotPath(const std::wstring& name)
{
    return WindowsPath(KEL_SCREENSHOT_DIR) + L"\\uidriver-" + name + L".png";
}

std::string ReadFile(const std::wstring& path)
{
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The action fails with an Error whose message holds each of `parts`.
void ExpectFailure(const std::function<void()>& action, std::initializer_list<const char*> parts)
{
    std::string message = "(no failure)";
    try
    {
        action();
    }
    catch (const Error& error)
    {
        message = error.what();
    }
    for (const char* part : parts)
        EXPECT_NE(message.find(part), std::string::npos) << message;
}

class TargetTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        stateFile_ = std::filesystem::absolute(L"uidriver-" + TestName() + L".state").wstring();
        DeleteFileW(stateFile_.c_str());
        Launch();
    }

    void TearDown() override
    {
        // What the dialog looked like at the end, for whoever reads the log.
        if (target_ && target_->IsRunning() && IsWindow(dialog_))
            SaveScreenshot(ScreenshotPath(TestName()), dialog_);
    }

    void Launch()
    {
        target_.reset();
        target_.emplace(TargetProcess::Start(TargetProgram, L"\"" + stateFile_ + L"\""));
        dialog_ = target_->WaitForWindow(Title);
    }

    HWND Item(int id) const { return Control(dialog_, id); }

    // The status line shows the last notification the target received.
    void ExpectStatus(const std::wstring& expected) const
    {
        WaitUntil([&] { return Text(Item(IDC_STATUS)) == expected; }, 5s);
        EXPECT_EQ(Text(Item(IDC_STATUS)), expected);
    }

    std::optional<TargetProcess> target_;
    HWND dialog_ = nullptr;
    std::wstring stateFile_;
};

TEST_F(TargetTest, ReadsSelectsAndActivatesListRows)
{
    HWND list = Item(IDC_LIST);
    EXPECT_EQ(ListColumnCount(list), 2);
    using Rows = std::vector<std::vector<std::wstring>>;
    EXPECT_EQ(ListRows(list), (Rows{{L"Alpha", L"1"}, {L"Beta", L"2"}, {L"Gamma", L"3"}}));
    EXPECT_TRUE(ListSelectedRows(list).empty());
    EXPECT_EQ(FindListRow(list, L"Beta"), 1);
    EXPECT_EQ(FindListRow(list, L"Delta"), -1);

    SelectListRow(list, 2);
    ExpectStatus(L"selected: Gamma");
    SelectListRow(list, 1);
    ExpectStatus(L"selected: Beta");
    EXPECT_EQ(ListSelectedRows(list), std::vector<int>{1});

    DoubleClickListRow(list, 0);
    ExpectStatus(L"activated: Alpha");
    EXPECT_EQ(ListSelectedRows(list), std::vector<int>{0});

    ExpectFailure([&] { SelectListRow(list, 3); }, {"has no row 3 (it has 3)"});

    // The owner-drawn button adds a row.
    Press(Item(IDC_ADD));
    ExpectStatus(L"added: Row 4");
    EXPECT_EQ(ListRowCount(list), 4);
    EXPECT_EQ(ListRow(list, 3), (std::vector<std::wstring>{L"Row 4", L"4"}));
}

TEST_F(TargetTest, TicksCheckBoxesAndChoosesComboItems)
{
    HWND check = Item(IDC_CHECK);
    EXPECT_FALSE(IsChecked(check));
    SetChecked(check, true);
    ExpectStatus(L"check: 1");
    SetChecked(check, true); // already ticked: not pressed again
    SetChecked(check, false);
    ExpectStatus(L"check: 0");
    EXPECT_EQ(CheckState(check), BST_UNCHECKED);

    HWND combo = Item(IDC_COMBO);
    EXPECT_EQ(ComboItems(combo), (std::vector<std::wstring>{L"Red", L"Green", L"Blue"}));
    EXPECT_EQ(ComboSelection(combo), 0);
    SelectComboItem(combo, L"Blue");
    ExpectStatus(L"combo: Blue");
    SelectComboItem(combo, 1);
    ExpectStatus(L"combo: Green");
    EXPECT_EQ(Text(combo), L"Green");
    ExpectFailure([&] { SelectComboItem(combo, L"Purple"); },
                  {"has no item 'Purple'; its items: 'Red', 'Green', 'Blue'"});
    ExpectFailure([&] { SelectComboItem(combo, 5); }, {"(it has 3)"});
    EXPECT_EQ(ComboSelection(combo), 1);
}

TEST_F(TargetTest, SetsTextOfAControlOnAPage)
{
    // The edit box sits on a page, a child dialog of the main window.
    HWND edit = Item(IDC_EDIT);
    EXPECT_NE(GetParent(edit), dialog_);
    const std::wstring text = L"Gr\u00FC\u00DFe \u4E2D\u6587 C:\\Data";
    SetText(edit, text);
    ExpectStatus(L"edit: " + text);
    EXPECT_EQ(Text(edit), text);
}

TEST_F(TargetTest, ReadsAndSetsTreeCheckMarks)
{
    HWND tree = Item(IDC_TREE);
    // "<depth><text><+ when checked, - when not>" of every item.
    std::vector<std::wstring> items;
    for (const TreeItem& item : TreeItems(tree))
        items.push_back(std::to_wstring(item.depth) + item.text + (item.checked ? L"+" : L"-"));
    EXPECT_EQ(items, (std::vector<std::wstring>{L"0Features-", L"1Alpha+", L"1Beta-", L"1Gamma+"}));

    SetTreeItemChecked(tree, FindTreeItem(tree, L"Beta").handle, true);
    SetTreeItemChecked(tree, FindTreeItem(tree, L"Alpha").handle, false);
    EXPECT_TRUE(FindTreeItem(tree, L"Beta").checked);
    EXPECT_FALSE(IsTreeItemChecked(tree, FindTreeItem(tree, L"Alpha").handle));
    ExpectFailure([&] { FindTreeItem(tree, L"Delta"); }, {"its items: 'Features'"});

    // The target itself reads the new marks when it closes.
    Press(Item(IDOK));
    target_->WaitForExit();
    EXPECT_EQ(ReadFile(stateFile_), "Features:0,Alpha:0,Beta:1,Gamma:1");
}

TEST_F(TargetTest, SwitchesTabsByClickAndByCtrlTab)
{
    HWND tabs = Item(IDC_TABS);
    EXPECT_EQ(TabTexts(tabs), (std::vector<std::wstring>{L"General", L"Advanced"}));
    EXPECT_EQ(CurrentTab(tabs), 0);
    EXPECT_FALSE(IsWindowVisible(Item(IDC_EXPERT)));

    ClickTab(tabs, 1);
    ExpectStatus(L"tab: Advanced");
    EXPECT_TRUE(IsWindowVisible(Item(IDC_EXPERT)));
    EXPECT_FALSE(IsWindowVisible(Item(IDC_EDIT)));
    SetChecked(Item(IDC_EXPERT), true);
    ExpectStatus(L"expert: 1");

    PressKey(dialog_, VK_TAB, Ctrl, [&] { return CurrentTab(tabs) == 0; });
    ExpectStatus(L"tab: General");
    EXPECT_TRUE(IsWindowVisible(Item(IDC_EDIT)));

    ClickTab(tabs, L"Advanced");
    EXPECT_EQ(CurrentTab(tabs), 1);
    ExpectFailure([&] { ClickTab(tabs, L"Colours"); }, {"its tabs: 'General', 'Advanced'"});
}

TEST_F(TargetTest, FindsReadsAndAnswersAMessageBox)
{
    // The box shares the dialog's caption; the driver must still tell them apart.
    Press(ControlWithText(dialog_, L"Message..."));
    HWND box = target_->WaitForMessageBox(Title);
    EXPECT_NE(box, dialog_);
    EXPECT_EQ(MessageBoxText(box), L"Apply the changes?\nThe list has 3 rows.");
    EXPECT_FALSE(IsWindowEnabled(dialog_)) << "the box is modal to the dialog";

    CloseMessageBox(box, IDNO);
    ExpectStatus(L"message: " + std::to_wstring(IDNO));
    EXPECT_TRUE(IsWindowEnabled(dialog_));
}

TEST_F(TargetTest, EnterConfirmsAndEscapeCancels)
{
    SelectListRow(Item(IDC_LIST), 0);
    PressKey(dialog_, VK_RETURN);
    EXPECT_EQ(target_->WaitForExit(), 100u);

    Launch();
    PressKey(dialog_, VK_ESCAPE);
    EXPECT_EQ(target_->WaitForExit(), static_cast<DWORD>(TARGET_CANCELLED));
}

// A PNG file of the window, or of the screen, as large as what it shows.
TEST_F(TargetTest, SavesScreenshotsOfTheWindowAndTheScreen)
{
    for (HWND window : {dialog_, HWND(nullptr)})
    {
        const std::wstring path = ScreenshotPath(window ? L"window" : L"screen");
        SCOPED_TRACE(Utf8(path));
        DeleteFileW(path.c_str());
        SaveScreenshot(path, window);
        const std::string png = ReadFile(path);
        ASSERT_GT(png.size(), 1000u);
        EXPECT_EQ(png.substr(0, 8), "\x89PNG\r\n\x1a\n");
        // Width and height, big-endian, from the header.
        auto number = [&](size_t at)
        {
            return int(uint8_t(png[at])) << 24 | int(uint8_t(png[at + 1])) << 16 |
                   int(uint8_t(png[at + 2])) << 8 | int(uint8_t(png[at + 3]));
        };
        RECT rect{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
        if (window)
            GetWindowRect(window, &rect);
        EXPECT_EQ(number(16), rect.right - rect.left);
        EXPECT_EQ(number(20), rect.bottom - rect.top);
    }
}

TEST_F(TargetTest, FailuresSayWhatWasExpectedAndWhatWasFound)
{
    ExpectFailure([&] { target_->WaitForWindow(L"No Such Window", 1s); },
                  {"window 'No Such Window' of e2e_target.exe did not appear within 1 s; "
                   "windows of the process: ",
                   "'E2E Target' (#32770, visible)"});
    ExpectFailure([&] { Control(dialog_, 4242); },
                  {"no control with id 4242 under 'E2E Target'", "1003 Button 'Enabled'"});
    ExpectFailure([&] { target_->ExpectNoWindow(2s); }, {"showed a window"});
    ExpectFailure([&] { target_->WaitForExit(300ms); },
                  {"did not end within 300 ms and was killed"});
    EXPECT_FALSE(target_->IsRunning());
}

TEST(TargetProcessTest, WatchesAProgramThatShowsNoWindow)
{
    TargetProcess quiet = TargetProcess::Start(TargetProgram, L"/quiet");
    quiet.ExpectNoWindow(5s);
    EXPECT_EQ(quiet.WaitForExit(), static_cast<DWORD>(TARGET_QUIET));
    ExpectFailure([&] { quiet.WaitForWindow(Title, 1s); },
                  {"did not appear: the process ended with exit code 7"});
    ExpectFailure([] { TargetProcess::Start(L"C:\\no\\such\\program.exe"); },
                  {"cannot start \"C:\\no\\such\\program.exe\""});
}

} // namespace
