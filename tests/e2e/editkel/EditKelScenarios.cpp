// EditKel.exe as a user meets it: started with a product on its command line,
// a configuration picked in the picker, the dialog confirmed or cancelled.
// Every scenario starts from an empty "Brindlecove 2023" registry branch and
// shared documents folder of the test prefix (no other test uses them), and
// reaches the registry with plain Win32 calls rather than the product's code.
#include "tools/uidriver/UiDriver.h"

#include "app/Version.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <filesystem>
#include <fstream>

using namespace UiDriver;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

namespace
{
const wchar_t BranchPath[] = L"Software\\Orvantix\\Brindlecove 2023";
const std::wstring Version = L" Config Editor - " + Wide(KEL_VERSION_TEXT);
const int PickerList = 602;
const int SwitchTree = 1335;

std::wstring TestName()
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return Wide(info->name());
}

void Screenshot(const wchar_t* what, HWND window = nullptr)
{
    SaveScreenshot(WindowsPath(KEL_SCREENSHOT_DIR) + L"\\editkel-" + TestName() + L"-" + what +
                       L".png",
                   window);
}

fs::path SharedDocuments()
{
    wchar_t path[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, CSIDL_COMMON_DOCUMENTS, nullptr, 0, path);
    return fs::path(path) / L"Orvantix" / L"Brindlecove 2023";
}

// A fresh copy of the demo configuration, in a folder of the test's own.
fs::path DemoCopy(const wchar_t* name)
{
    wchar_t temp[MAX_PATH] = {};
    GetTempPathW(MAX_PATH, temp);
    const fs::path folder = fs::path(temp) / L"kel-e2e" / name;
    fs::remove_all(folder);
    fs::create_directories(folder);
    fs::copy(fs::path(WindowsPath(KEL_DEMO_DIR)), folder, fs::copy_options::recursive);
    return folder;
}

void RegisterConfiguration(const wchar_t* product, const wchar_t* name, const fs::path& folder)
{
    const std::wstring key = std::wstring(BranchPath) + L"\\" + product + L"\\Configurations";
    const std::wstring value = folder.wstring() + L"\\";
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), name, REG_SZ, value.c_str(),
                              DWORD((value.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

// A DWORD of the application's "COMMON\PROMPTS" key, or -1 when it is absent.
long long PromptValue(const wchar_t* name)
{
    const std::wstring key = std::wstring(BranchPath) + L"\\COMMON\\PROMPTS";
    DWORD value = 0, size = sizeof value;
    if (RegGetValueW(HKEY_CURRENT_USER, key.c_str(), name, RRF_RT_REG_DWORD, nullptr, &value,
                     &size) != ERROR_SUCCESS)
        return -1;
    return value;
}

TargetProcess StartEditKel(const std::wstring& arguments)
{
    const std::wstring program = WindowsPath(KEL_EDITKEL);
    return TargetProcess::Start(program, arguments, fs::path(program).parent_path().wstring());
}

class EditKel : public ::testing::Test
{
protected:
    void SetUp() override
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, BranchPath);
        std::error_code ignored;
        fs::remove_all(SharedDocuments(), ignored);
    }
    void TearDown() override { SetUp(); }

    // Picks the row named `name` in the picker and confirms it; answers the
    // configuration dialog that opens.
    HWND PickConfiguration(TargetProcess& editor, const wchar_t* product, const wchar_t* name)
    {
        HWND picker = editor.WaitForWindow(std::wstring(L"Select Configuration - ") + product);
        HWND list = Control(picker, PickerList);
        const int row = FindListRow(list, name);
        EXPECT_GE(row, 0) << "no row " << Utf8(name);
        SelectListRow(list, row);
        Screenshot(L"picker", picker);
        Press(Control(picker, IDOK));
        return editor.WaitForWindow(product + std::wstring(Version));
    }
};
} // namespace

TEST_F(EditKel, WithoutProductItEndsQuietly)
{
    for (const wchar_t* arguments : {L"", L"-app=Nonesuch", L"/l=Deutsch"})
    {
        TargetProcess editor = StartEditKel(arguments);
        editor.ExpectNoWindow(3s);
        EXPECT_EQ(editor.WaitForExit(), 0u) << Utf8(arguments);
    }
}

TEST_F(EditKel, PlotwiseDemoOpensTheTitledDialogAndOkSaves)
{
    RegisterConfiguration(L"Plotwise", L"Demo", DemoCopy(L"Demo"));
    // The product typed in another case is spelled canonically in the title.
    TargetProcess editor = StartEditKel(L"-app=pLOTWISE");
    HWND picker = editor.WaitForWindow(L"Select Configuration - Plotwise");
    const std::vector<std::vector<std::wstring>> rows = ListRows(Control(picker, PickerList));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0][0], L"Demo");
    EXPECT_NE(rows[0][1].find(L"kel-e2e\\Demo"), std::wstring::npos);

    HWND dialog = PickConfiguration(editor, L"Plotwise", L"Demo");
    EXPECT_EQ(Text(dialog), L"Plotwise" + Version);
    EXPECT_TRUE(GetWindowLongPtrW(dialog, GWL_STYLE) & WS_MINIMIZEBOX);

    // Switch off one message and confirm: every switch is written, as shown.
    HWND tree = Control(dialog, SwitchTree);
    const TreeItem item = FindTreeItem(tree, L"Specification invalid");
    EXPECT_TRUE(item.checked);
    SetTreeItemChecked(tree, item.handle, false);
    Screenshot(L"dialog", dialog);
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(PromptValue(L"BadSpec"), 0);
    EXPECT_EQ(PromptValue(L"BadCostTables"), 1);
    EXPECT_EQ(PromptValue(L"ConnectorLocks"), 1);
}

TEST_F(EditKel, CancelWritesNothing)
{
    RegisterConfiguration(L"Shopwise", L"Demo", DemoCopy(L"Demo"));
    TargetProcess editor = StartEditKel(L"-app=Shopwise");
    HWND dialog = PickConfiguration(editor, L"Shopwise", L"Demo");
    HWND tree = Control(dialog, SwitchTree);
    SetTreeItemChecked(tree, FindTreeItem(tree, L"Cost tables missing or invalid").handle, false);
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(PromptValue(L"BadCostTables"), -1);
}

TEST_F(EditKel, LedgerlineListsOnlyQuorlinConfigurations)
{
    RegisterConfiguration(L"Ledgerline", L"Demo", DemoCopy(L"Demo"));
    // A folder with KEL.INI alone does not serve Ledgerline.
    const fs::path kelOnly = DemoCopy(L"KelOnly");
    fs::remove(kelOnly / L"QUORLIN.INI");
    RegisterConfiguration(L"Ledgerline", L"KelOnly", kelOnly);

    TargetProcess editor = StartEditKel(L"-app=ledgerline");
    HWND picker = editor.WaitForWindow(L"Select Configuration - Ledgerline");
    HWND list = Control(picker, PickerList);
    ASSERT_EQ(ListRowCount(list), 1);
    EXPECT_EQ(ListCell(list, 0, 0), L"Demo");
    DoubleClickListRow(list, 0);
    HWND dialog = editor.WaitForWindow(L"Ledgerline" + Version);
    Screenshot(L"dialog", dialog);
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}

TEST_F(EditKel, CancelledPickerWithoutStartFolderEndsWithTheErrorBox)
{
    TargetProcess editor = StartEditKel(L"-app=Tallywise");
    HWND picker = editor.WaitForWindow(L"Select Configuration - Tallywise");
    EXPECT_EQ(ListRowCount(Control(picker, PickerList)), 0);
    Press(Control(picker, IDCANCEL));

    HWND box = editor.WaitForMessageBox(L"Tallywise");
    EXPECT_EQ(MessageBoxText(box), L"No configuration was found or selected - The configuration "
                                   L"editor cannot continue without a settings file.");
    Screenshot(L"error", box);
    CloseMessageBox(box, IDOK);
    EXPECT_EQ(editor.WaitForExit(), 0u);
}

TEST_F(EditKel, CancelledPickerKeepsTheStartFolder)
{
    const fs::path demo = DemoCopy(L"Demo");
    const std::wstring key = std::wstring(BranchPath) + L"\\Cutwise";
    const std::wstring folder = demo.wstring();
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"StartIn", REG_SZ, folder.c_str(),
                              DWORD((folder.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
    TargetProcess editor = StartEditKel(L"-app=Cutwise");
    Press(Control(editor.WaitForWindow(L"Select Configuration - Cutwise"), IDCANCEL));
    HWND dialog = editor.WaitForWindow(L"Cutwise" + Version);
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}
