// The common options page as a user works it in EditKel.exe: the tabs in
// order, options changed and saved with OK, the same changes cancelled (in
// German), and a start folder without a settings file.
#include "app/pages/PageIds.h"
#include "tests/e2e/support/EditKelSession.h"

using namespace EditKelSession;

using CommonOptions = Scenario;

TEST_F(CommonOptions, LedgerlineTabsAndChangesSavedWithOk)
{
    TargetProcess editor = OpenDemo(L"Ledgerline");
    HWND page = ShowPage(dialog, L"Common Options", kCommonNumpad);
    EXPECT_EQ(TabTexts(Control(dialog, TabsId)),
              (std::vector<std::wstring>{L"Program Paths", L"Common Options", L"Message Prompts"}));

    // The demo's QUORLIN.INI has the keypad mode on; nothing else is stored.
    EXPECT_TRUE(IsChecked(Control(page, kCommonNumpad)));
    EXPECT_TRUE(IsChecked(Control(page, kCommonCachePatterns)));
    EXPECT_FALSE(IsWindowEnabled(Control(page, kCommonAutoLogin)));
    EXPECT_FALSE(IsWindowEnabled(Control(page, kCommonStartFolder)));
    EXPECT_EQ(Text(Control(page, kCommonLanguage)), L"English");
    const std::vector<std::wstring> languages = ComboItems(Control(page, kCommonLanguage));
    EXPECT_EQ(languages, (std::vector<std::wstring>{L"Deutsch", L"English", L"Français"}));

    SetChecked(Control(page, kCommonNumpad), false);
    SetChecked(Control(page, kCommonRegionalCsv), true);
    SetChecked(Control(page, kCommonCachePatterns), false);
    SelectComboItem(Control(page, kCommonLanguage), L"Deutsch");
    // The start folder: the demo folder itself holds the settings file.
    SetChecked(Control(page, kCommonUseStartFolder), true);
    EXPECT_TRUE(IsWindowEnabled(Control(page, kCommonStartFolder)));
    SetText(Control(page, kCommonStartFolder), demo.wstring() + L"\\");
    Screenshot(L"page", dialog, L"common");
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);

    EXPECT_EQ(SettingsValue(demo / L"QUORLIN.INI", L"GENERAL", L"NUMPAD"), L"OFF");
    EXPECT_EQ(SettingsValue(demo / L"QUORLIN.INI", L"SCANNER", L"PORT"), L"COM3");
    EXPECT_EQ(ReadDword(L"COMMON", L"RegionalCSV"), 1);
    EXPECT_EQ(ReadDword(L"COMMON", L"CachePatterns"), 0);
    EXPECT_EQ(ReadDword(L"COMMON", L"VirtualItemFolders"), 0);
    EXPECT_EQ(ReadDword(L"COMMON", L"FancyToolbars"), 0);
    EXPECT_EQ(ReadString(L"Ledgerline", L"Language"), L"Deutsch");
    EXPECT_EQ(ReadString(L"Ledgerline", L"StartIn"), demo.wstring() + L"\\");
}

// In German: the page's tab is translated; Cancel writes nothing.
TEST_F(CommonOptions, ShopwiseChangesCancelledInGermanWriteNothing)
{
    TargetProcess editor = OpenDemo(L"Shopwise", L"/l=Deutsch");
    HWND page = ShowPage(dialog, L"Allgemeine Optionen", kCommonNumpad);
    Screenshot(L"page", dialog, L"common");
    const std::string before = FileBytes(demo / L"KEL.INI");
    SetChecked(Control(page, kCommonNumpad), true);
    SetChecked(Control(page, kCommonVirtualFolders), true);
    SelectComboItem(Control(page, kCommonLanguage), L"Français");
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);

    EXPECT_EQ(FileBytes(demo / L"KEL.INI"), before);
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, UserKey(L"COMMON")));
    EXPECT_FALSE(ReadString(L"Shopwise", L"Language").has_value());
}

TEST_F(CommonOptions, ShopwiseStartFolderWithoutSettingsFileWarnsAndKeepsIt)
{
    TargetProcess editor = OpenDemo(L"Shopwise");
    HWND page = ShowPage(dialog, L"Common Options", kCommonNumpad);
    const std::wstring elsewhere = (demo / L"Reports").wstring() + L"\\";
    SetChecked(Control(page, kCommonUseStartFolder), true);
    SetText(Control(page, kCommonStartFolder), elsewhere);
    Press(Control(dialog, IDOK));

    HWND box = editor.WaitForMessageBox(L"Config Editor");
    EXPECT_NE(MessageBoxText(box).find(L"\"" + elsewhere + L"\""), std::wstring::npos);
    Screenshot(L"warning", box, L"common");
    CloseMessageBox(box, IDOK);
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(ReadString(L"Shopwise", L"StartIn"), elsewhere);
}

// The product's stored language is the editor's language unless "/l=" names
// another; the language box shows the stored text as it is spelt, OK keeps it
// when the user leaves the box alone, and a chosen item replaces it.
TEST_F(CommonOptions, TheStoredLanguageIsTheEditorsAndIsKeptAsSpelt)
{
    demo = SharedDemoCopy();
    RegisterConfiguration(L"Tallywise", L"Demo", demo);
    WriteString(L"Tallywise", L"Language", L"DEUTSCH");
    {
        TargetProcess editor = StartEditKel(L"-app=Tallywise");
        dialog = PickConfiguration(editor, L"Tallywise", L"Demo", PickerTitle(L"/l=Deutsch"));
        HWND page = ShowPage(dialog, L"Allgemeine Optionen", kCommonNumpad);
        EXPECT_EQ(Text(Control(dialog, IDCANCEL)), L"Abbrechen");
        EXPECT_EQ(Text(Control(page, kCommonLanguage)), L"DEUTSCH");
        Screenshot(L"stored-language", dialog, L"common");
        Press(Control(dialog, IDOK));
        EXPECT_EQ(editor.WaitForExit(), 0u);
        EXPECT_EQ(ReadString(L"Tallywise", L"Language"), L"DEUTSCH");
    }
    {
        TargetProcess editor = StartEditKel(L"-app=Tallywise /l=English");
        dialog = PickConfiguration(editor, L"Tallywise", L"Demo");
        HWND page = ShowPage(dialog, L"Common Options", kCommonNumpad);
        EXPECT_EQ(Text(Control(dialog, IDCANCEL)), L"Cancel");
        EXPECT_EQ(Text(Control(page, kCommonLanguage)), L"DEUTSCH");
        SelectComboItem(Control(page, kCommonLanguage), L"Fran\u00e7ais");
        Press(Control(dialog, IDOK));
        EXPECT_EQ(editor.WaitForExit(), 0u);
        EXPECT_EQ(ReadString(L"Tallywise", L"Language"), L"Fran\u00e7ais");
    }
    // A stored name that names no language of the dictionary: English.
    WriteString(L"Tallywise", L"Language", L"Klingon");
    {
        TargetProcess editor = StartEditKel(L"-app=Tallywise");
        dialog = PickConfiguration(editor, L"Tallywise", L"Demo");
        HWND page = ShowPage(dialog, L"Common Options", kCommonNumpad);
        EXPECT_EQ(Text(Control(page, kCommonLanguage)), L"Klingon");
        Press(Control(dialog, IDCANCEL));
        EXPECT_EQ(editor.WaitForExit(), 0u);
    }
}
