// The UI driver against e2e_target.exe under Wine: each kind of control is
// worked from this process, and the target's status line, its state file and
// its exit code show that it saw what a user's action would have caused.
#include "tools/uidriver/UiDriver.h"

#include "E2eTargetIds.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>

using namespace UiDriver;
using namespace std::chrono_literals;

namespace
{

const wchar_t Title[] = L"E2E Target";

std::wstring TargetProgram()
{
    return WindowsPath(KEL_E2E_TARGET);
}

std::wstring TestName()
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return Wide(std::string(info->test_suite_name()) + "." + info->name());
}

std::wstring ScreenshotPath(const std::wstring& name)
{
    return WindowsPath(KEL_SCREENSHOT_DIR) + L"\\uidriver-" + name + L".png";
}

std::wstring FullPath(const std::wstring& name)
{
    wchar_t path[MAX_PATH] = {};
    GetFullPathNameW(name.c_str(), MAX_PATH, path, nullptr);
    return path;
}

std::string ReadFile(const std::wstring& path)
{
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The state file's lines as key -> value.
std::map<std::string, std::string> ReadState(const std::wstring& path)
{
    std::map<std::string, std::string> state;
    std::istringstream lines(ReadFile(path));
    for (std::string line; std::getline(lines, line);)
        if (size_t equals = line.find('='); equals != std::string::npos)
            state[line.substr(0, equals)] = line.substr(equals + 1);
    return state;
}

// What an Error says, for checking the message itself.
template <class Action>
std::string FailureOf(Action action)
{
    try
    {
        action();
    }
    catch (const Error& error)
    {
        return error.what();
    }
    return "(no failure)";
}

class TargetTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        stateFile_ = FullPath(L"uidriver-" + TestName() + L".state");
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
        target_.emplace(TargetProcess::Start(TargetProgram(), L"\"" + stateFile_ + L"\""));
        dialog_ = target_->WaitForWindow(Title);
    }

    HWND Item(int id) const { return Control(dialog_, id); }

    // The status line shows the last notification the target received.
    void ExpectStatus(const std::wstring& expected) const
    {
        std::wstring last;
        WaitUntil(
            [&]
            {
                last = Text(Item(IDC_STATUS));
                return last == expected;
            },
            5s);
        EXPECT_EQ(last, expected);
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

    EXPECT_NE(FailureOf([&] { SelectListRow(list, 3); }).find("has no row 3 (it has 3)"),
              std::string::npos);

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
    EXPECT_NE(FailureOf([&] { SelectComboItem(combo, L"Purple"); })
                  .find("has no item 'Purple'; its items: 'Red', 'Green', 'Blue'"),
              std::string::npos);
    EXPECT_NE(FailureOf([&] { SelectComboItem(combo, 5); }).find("(it has 3)"), std::string::npos);
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
    std::vector<TreeItem> items = TreeItems(tree);
    ASSERT_EQ(items.size(), 4u);
    const wchar_t* texts[] = {L"Features", L"Alpha", L"Beta", L"Gamma"};
    const bool checked[] = {false, true, false, true};
    for (size_t i = 0; i < items.size(); ++i)
    {
        EXPECT_EQ(items[i].text, texts[i]);
        EXPECT_EQ(items[i].depth, i == 0 ? 0 : 1);
        EXPECT_EQ(items[i].checked, checked[i]) << Utf8(texts[i]);
    }

    SetTreeItemChecked(tree, FindTreeItem(tree, L"Beta").handle, true);
    SetTreeItemChecked(tree, FindTreeItem(tree, L"Alpha").handle, false);
    EXPECT_TRUE(FindTreeItem(tree, L"Beta").checked);
    EXPECT_FALSE(IsTreeItemChecked(tree, FindTreeItem(tree, L"Alpha").handle));
    EXPECT_NE(FailureOf([&] { FindTreeItem(tree, L"Delta"); }).find("its items: 'Features'"),
              std::string::npos);

    // The target itself reads the new marks when it closes.
    Press(Item(IDOK));
    target_->WaitForExit();
    EXPECT_EQ(ReadState(stateFile_)["tree"], "Features:0,Alpha:0,Beta:1,Gamma:1");
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
    EXPECT_NE(
        FailureOf([&] { ClickTab(tabs, L"Colours"); }).find("its tabs: 'General', 'Advanced'"),
        std::string::npos);
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

TEST_F(TargetTest, OkReportsTheStateThroughExitCodeAndFile)
{
    SelectListRow(Item(IDC_LIST), 2);
    SetChecked(Item(IDC_CHECK), true);
    SelectComboItem(Item(IDC_COMBO), 1);
    SetText(Item(IDC_EDIT), L"done");
    ExpectStatus(L"edit: done");

    Press(Item(IDOK));
    EXPECT_EQ(target_->WaitForExit(), 3u * 100 + 10 + 1);
    std::map<std::string, std::string> state = ReadState(stateFile_);
    EXPECT_EQ(state["row"], "2");
    EXPECT_EQ(state["check"], "1");
    EXPECT_EQ(state["combo"], "Green");
    EXPECT_EQ(state["edit"], "done");
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

// The PNG file's size from its header.
std::pair<int, int> PngSize(const std::string& png)
{
    auto number = [&](size_t at)
    {
        return (static_cast<unsigned char>(png[at]) << 24) |
               (static_cast<unsigned char>(png[at + 1]) << 16) |
               (static_cast<unsigned char>(png[at + 2]) << 8) |
               static_cast<unsigned char>(png[at + 3]);
    };
    return {number(16), number(20)};
}

TEST_F(TargetTest, SavesScreenshotsOfTheWindowAndTheScreen)
{
    const std::string signature = "\x89PNG\r\n\x1a\n";
    std::wstring windowShot = ScreenshotPath(L"window");
    DeleteFileW(windowShot.c_str());
    SaveScreenshot(windowShot, dialog_);
    std::string png = ReadFile(windowShot);
    ASSERT_GT(png.size(), 1000u);
    EXPECT_EQ(png.substr(0, 8), signature);
    RECT rect{};
    GetWindowRect(dialog_, &rect);
    EXPECT_EQ(PngSize(png),
              std::make_pair(int(rect.right - rect.left), int(rect.bottom - rect.top)));

    std::wstring screenShot = ScreenshotPath(L"screen");
    DeleteFileW(screenShot.c_str());
    SaveScreenshot(screenShot);
    png = ReadFile(screenShot);
    ASSERT_GT(png.size(), 1000u);
    EXPECT_EQ(PngSize(png),
              std::make_pair(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)));
}

TEST_F(TargetTest, FailuresSayWhatWasExpectedAndWhatWasFound)
{
    std::string missing = FailureOf([&] { target_->WaitForWindow(L"No Such Window", 1s); });
    EXPECT_NE(missing.find("window 'No Such Window' of e2e_target.exe did not appear within 1 s; "
                           "windows of the process: "),
              std::string::npos)
        << missing;
    EXPECT_NE(missing.find("'E2E Target' (#32770, visible)"), std::string::npos) << missing;

    std::string control = FailureOf([&] { Control(dialog_, 4242); });
    EXPECT_NE(control.find("no control with id 4242 under 'E2E Target'"), std::string::npos)
        << control;
    EXPECT_NE(control.find("1003 Button 'Enabled'"), std::string::npos) << control;

    EXPECT_NE(FailureOf([&] { target_->ExpectNoWindow(2s); }).find("showed a window"),
              std::string::npos);

    std::string overdue = FailureOf([&] { target_->WaitForExit(300ms); });
    EXPECT_NE(overdue.find("did not end within 300 ms and was killed"), std::string::npos)
        << overdue;
    EXPECT_FALSE(target_->IsRunning());
}

TEST(TargetProcessTest, WatchesAProgramThatShowsNoWindow)
{
    TargetProcess quiet = TargetProcess::Start(TargetProgram(), L"/quiet");
    quiet.ExpectNoWindow(5s);
    EXPECT_EQ(quiet.WaitForExit(), static_cast<DWORD>(TARGET_QUIET));
    EXPECT_NE(FailureOf([&] { quiet.WaitForWindow(Title, 1s); })
                  .find("did not appear: the process ended with exit code 7"),
              std::string::npos);

    EXPECT_NE(FailureOf([] { TargetProcess::Start(L"C:\\no\\such\\program.exe"); })
                  .find("cannot start \"C:\\no\\such\\program.exe\""),
              std::string::npos);
}

} // namespace
