// The program paths page as a user works it in EditKel.exe, with the real
// folder browser: a folder browsed and saved with OK, the same change
// cancelled in German, and the warning mark of a folder that is not there.
#include <algorithm>

#include "tests/e2e/support/EditKelSession.h"

using namespace EditKelSession;

namespace
{
constexpr int PathList = 800;
constexpr int PathBrowse = 801;
constexpr int BrowserFileName = 1152;

// A folder as the editor keeps it: "/" separators and a trailing "/".
std::wstring StoreForm(const fs::path& folder)
{
    std::wstring text = folder.wstring() + L"/";
    std::replace(text.begin(), text.end(), L'\\', L'/');
    return text;
}

class ProgramPaths : public Scenario
{
protected:
    // Opens the browser on the row of `kind`, titled "<kind><titleTail>",
    // and confirms `folder` in it (typed into its file-name box), or cancels
    // it when `folder` is empty.
    void Browse(TargetProcess& editor, const wchar_t* kind, const fs::path& folder,
                const wchar_t* titleTail = L" Folder")
    {
        HWND list = Control(dialog, PathList);
        SelectListRow(list, FindListRow(list, kind));
        Press(Control(dialog, PathBrowse));
        HWND browser = editor.WaitForWindow(kind + std::wstring(titleTail));
        Screenshot(L"browser", browser, L"paths");
        if (!folder.empty())
            SetText(Control(browser, BrowserFileName), folder.wstring());
        Press(Control(browser, folder.empty() ? IDCANCEL : IDOK));
        ASSERT_TRUE(WaitUntil([&] { return !IsWindow(browser); }, DefaultWait));
    }
    std::wstring Shown(const wchar_t* kind) const
    {
        HWND list = Control(dialog, PathList);
        return ListCell(list, FindListRow(list, kind), 1);
    }
    // The row is rewritten once the browser has returned: wait for it.
    bool Shows(const wchar_t* kind, const std::wstring& folder) const
    {
        return WaitUntil([&] { return Shown(kind) == folder; }, DefaultWait);
    }
};
} // namespace

TEST_F(ProgramPaths, BrowsedFolderSavedWithOk)
{
    for (const auto& [product, file] :
         {std::pair{L"Ledgerline", L"QUORLIN.INI"}, {L"Shopwise", L"KEL.INI"}})
    {
        SCOPED_TRACE(Utf8(product));
        TargetProcess editor = OpenDemo(product);
        const fs::path settings = demo / file;
        const auto main = SettingsValue(settings, L"PROGRAM PATHS", L"Main");
        Browse(editor, L"Project", demo / L"Jobs");
        EXPECT_TRUE(Shows(L"Project", StoreForm(demo / L"Jobs")));
        Screenshot(product, dialog, L"paths");
        Press(Control(dialog, IDOK));
        EXPECT_EQ(editor.WaitForExit(), 0u);
        EXPECT_EQ(SettingsValue(settings, L"PROGRAM PATHS", L"Project"), StoreForm(demo / L"Jobs"));
        EXPECT_EQ(SettingsValue(settings, L"PROGRAM PATHS", L"Main"), main);
    }
}

// In German (the tab and the browser's title translated), a browsed folder
// is cancelled with the dialog: nothing is written.
TEST_F(ProgramPaths, GermanPageAndCancelWritesNothing)
{
    TargetProcess editor = OpenDemo(L"Shopwise", L"/l=Deutsch");
    EXPECT_EQ(TabTexts(Control(dialog, TabsId)).at(0), L"Programmpfade");
    Screenshot(L"page", dialog, L"paths");
    const std::string before = FileBytes(demo / L"KEL.INI");
    const std::wstring shown = Shown(L"Main");
    Browse(editor, L"Main", {}, L" Ordner");
    EXPECT_EQ(Shown(L"Main"), shown);
    Browse(editor, L"Main", demo / L"Reports", L" Ordner");
    EXPECT_TRUE(Shows(L"Main", StoreForm(demo / L"Reports")));
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(FileBytes(demo / L"KEL.INI"), before);
}

// The demo's backup folder (on a drive D: that holds no such folder) gets the
// warning mark once its probe answered; the folders that exist do not.
TEST_F(ProgramPaths, MissingFolderIsMarked)
{
    // Shopwise's default folders made in the demo, so that only Backup lacks its own.
    demo = SharedDemoCopy();
    for (const wchar_t* folder : {L"DXF", L"Images", L"Items", L"Scripts", L"Profiles", L"Download",
                                  L"Common", L"Textures"})
        fs::create_directories(demo / folder);
    RegisterConfiguration(L"Shopwise", L"Demo", demo);
    TargetProcess editor = StartEditKel(L"-app=Shopwise");
    dialog = PickConfiguration(editor, L"Shopwise", L"Demo", PickerTitle({}));
    HWND list = Control(dialog, PathList);
    const int backup = FindListRow(list, L"Backup");
    ASSERT_GE(backup, 0);
    EXPECT_TRUE(WaitUntil([&] { return ListImage(list, backup) == 0; }, DefaultWait));
    for (int row = 0; row < ListRowCount(list); ++row)
    {
        if (row != backup)
        {
            EXPECT_NE(ListImage(list, row), 0) << Utf8(ListCell(list, row, 0));
        }
    }
    EXPECT_EQ(ListColumnCount(list), 2);
    Screenshot(L"marked", dialog, L"paths");
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}
