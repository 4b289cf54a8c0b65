// The program paths page as a user works it in EditKel.exe, with the real
// folder browser: a folder browsed and saved with OK, the same change
// cancelled, and the page in English and German.
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
    // Opens the browser on the row of `kind`, titled "<kind> Folder", and
    // confirms `folder` in it (typed into its file-name box), or cancels it
    // when `folder` is empty.
    void Browse(TargetProcess& editor, const wchar_t* kind, const fs::path& folder)
    {
        HWND list = Control(dialog, PathList);
        SelectListRow(list, FindListRow(list, kind));
        Press(Control(dialog, PathBrowse));
        HWND browser = editor.WaitForWindow(kind + std::wstring(L" Folder"));
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

    HWND dialog = nullptr;
};

struct Product
{
    const wchar_t* name;
    const wchar_t* settingsFile;
};
const Product Products[] = {{L"Ledgerline", L"QUORLIN.INI"}, {L"Shopwise", L"KEL.INI"}};
} // namespace

TEST_F(ProgramPaths, BrowsedFolderSavedWithOk)
{
    for (const Product& product : Products)
    {
        SCOPED_TRACE(Utf8(product.name));
        TargetProcess editor = OpenDemo(product.name, dialog);
        const fs::path settings = demo / product.settingsFile;
        const auto main = SettingsValue(settings, L"PROGRAM PATHS", L"Main");
        Browse(editor, L"Project", demo / L"Jobs");
        EXPECT_TRUE(Shows(L"Project", StoreForm(demo / L"Jobs")));
        Screenshot(product.name, dialog, L"paths");
        Press(Control(dialog, IDOK));
        EXPECT_EQ(editor.WaitForExit(), 0u);
        EXPECT_EQ(SettingsValue(settings, L"PROGRAM PATHS", L"Project"), StoreForm(demo / L"Jobs"));
        EXPECT_EQ(SettingsValue(settings, L"PROGRAM PATHS", L"Main"), main);
    }
}

TEST_F(ProgramPaths, CancelWritesNothing)
{
    for (const Product& product : Products)
    {
        SCOPED_TRACE(Utf8(product.name));
        TargetProcess editor = OpenDemo(product.name, dialog);
        const std::string before = FileBytes(demo / product.settingsFile);
        const std::wstring shown = Shown(L"Main");
        Browse(editor, L"Main", {});
        EXPECT_EQ(Shown(L"Main"), shown);
        Browse(editor, L"Main", demo / L"Reports");
        EXPECT_TRUE(Shows(L"Main", StoreForm(demo / L"Reports")));
        Press(Control(dialog, IDCANCEL));
        EXPECT_EQ(editor.WaitForExit(), 0u);
        EXPECT_EQ(FileBytes(demo / product.settingsFile), before);
    }
}

TEST_F(ProgramPaths, GermanPage)
{
    demo = DemoCopy(L"Demo");
    RegisterConfiguration(L"Shopwise", L"Demo", demo);
    TargetProcess editor = StartEditKel(L"-app=Shopwise /l=Deutsch");
    HWND picker = editor.WaitForWindow(L"Konfiguration ausw\u00e4hlen - Shopwise");
    SelectListRow(Control(picker, PickerList), 0);
    Press(Control(picker, IDOK));
    dialog = editor.WaitForWindow(L"Shopwise" + TitleTail);
    EXPECT_EQ(TabTexts(Control(dialog, TabsId)).at(0), L"Programmpfade");
    Screenshot(L"page", dialog, L"paths");
    Press(Control(dialog, PathBrowse));
    HWND browser = editor.WaitForWindow(L"Main Ordner");
    Screenshot(L"browser", browser, L"paths");
    Press(Control(browser, IDCANCEL));
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(browser); }, DefaultWait));
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}
