// The CAD options page (Plotwise) and the Tyx options page (the stand-alone
// products) as a user works them in EditKel.exe: the tabs in order, options
// changed and saved with OK, and changes cancelled in German and French.
#include "app/pages/PageIds.h"
#include "tests/e2e/support/EditKelSession.h"

using namespace EditKelSession;

using OptionPages = Scenario;

TEST_F(OptionPages, PlotwiseCadOptionsSavedWithOk)
{
    TargetProcess editor = OpenDemo(L"Plotwise");
    EXPECT_EQ(TabTexts(Control(dialog, TabsId)),
              (std::vector<std::wstring>{L"Program Paths", L"Plotwise", L"Common Options",
                                         L"Message Prompts"}));
    HWND page = ShowPage(dialog, L"Plotwise", kCadUseIcons);
    EXPECT_EQ(Text(Control(page, kCadDrawingDatabase)), L"Prompt");
    EXPECT_FALSE(IsWindowEnabled(Control(page, kCadIconsFolder)));

    SetChecked(Control(page, kCadUseIcons), true);
    SetText(Control(page, kCadIconsFolder), L"C:\\Icons\\");
    SelectComboItem(Control(page, kCadDrawingDatabase), L"Yes");
    SetChecked(Control(page, kCadKeepEstimatingOff), true);
    SetChecked(Control(page, kCadSkipMenuLoad), true);
    Screenshot(L"page", dialog, L"cad");
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);

    EXPECT_EQ(ReadString(L"Plotwise\\Toolbar", L"Icons"), L"C:\\Icons\\");
    EXPECT_EQ(ReadDword(L"Plotwise\\Toolbar", L"SkipMenuLoad"), 1);
    EXPECT_FALSE(ReadString(L"Plotwise\\Toolbar", L"MenuGroup").has_value());
    EXPECT_EQ(ReadString(L"Plotwise", L"UseDWGDatabase"), L"Yes");
    EXPECT_EQ(ReadString(L"Plotwise", L"StoreEstDatabase"), L"FALSE");
    EXPECT_EQ(ReadDword(L"Plotwise", L"SkipValidateButtons"), 0);
    EXPECT_EQ(ReadDword(L"Plotwise", L"ButtonLoadReport"), 0);
}

TEST_F(OptionPages, CutwiseTyxOptionsSavedWithOk)
{
    TargetProcess editor = OpenDemo(L"Cutwise");
    const std::vector<std::wstring> tabs = TabTexts(Control(dialog, TabsId));
    ASSERT_GE(tabs.size(), 4u);
    EXPECT_EQ(tabs[0], L"Program Paths");
    EXPECT_EQ(tabs[1], L"Cutwise");
    EXPECT_EQ(tabs[tabs.size() - 2], L"Common Options");
    HWND page = ShowPage(dialog, L"Cutwise", kTyxSupport);
    // The demo's KEL.INI allows editing catalogues.
    EXPECT_TRUE(IsChecked(Control(page, kTyxCanEditCats)));
    EXPECT_NE(Text(Control(page, kTyxSupport)).find(L"Workshop support"), std::wstring::npos);

    SetChecked(Control(page, kTyxQuickFullEdit), true);
    SetChecked(Control(page, kTyxHideWelcome), true);
    SetChecked(Control(page, kTyxUseCaption), true);
    SetText(Control(page, kTyxCaption), L"Cutting room");
    Screenshot(L"page", dialog, L"tyx");
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);

    EXPECT_EQ(SettingsValue(demo / L"KEL.INI", L"GENERAL", L"QUICKFULLEDIT"), L"YES");
    EXPECT_EQ(SettingsValue(demo / L"KEL.INI", L"GENERAL", L"CANEDITCATS"), L"YES");
    EXPECT_EQ(SettingsValue(demo / L"KEL.INI", L"DRAWING", L"LAYER DUCT"), L"M-DUCT");
    EXPECT_EQ(ReadDword(L"Cutwise", L"HideWelcomeScreen"), 1);
    EXPECT_EQ(ReadString(L"Cutwise", L"Caption"), L"Cutting room");
}

// Changes on both option pages in German and in French, then Cancel: the
// registry and the settings file stay as they were. Screenshots of both
// pages in both languages.
TEST_F(OptionPages, CancelInGermanAndFrenchWritesNothing)
{
    for (const wchar_t* language : {L"/l=Deutsch", L"/l=Fr"})
        for (const wchar_t* product : {L"Plotwise", L"Tallywise"})
        {
            SCOPED_TRACE(Utf8(product) + " " + Utf8(language));
            TargetProcess editor = OpenDemo(product, language);
            const std::string before = FileBytes(demo / L"KEL.INI");
            const bool cad = std::wstring(product) == L"Plotwise";
            HWND page = ShowPage(dialog, product, cad ? kCadUseIcons : kTyxSupport);
            Screenshot(language + 3, dialog, cad ? L"cad" : L"tyx");
            SetChecked(Control(page, cad ? kCadKeepEstimatingOff : kTyxUseCaption), true);
            if (!cad)
                SetText(Control(page, kTyxSupport), L"Call 215");
            Press(Control(dialog, IDCANCEL));
            EXPECT_EQ(editor.WaitForExit(), 0u);
            EXPECT_EQ(FileBytes(demo / L"KEL.INI"), before);
            for (const wchar_t* name : {L"StoreEstDatabase", L"UseDWGDatabase", L"Caption"})
                EXPECT_FALSE(ReadString(product, name).has_value()) << Utf8(name);
            for (const wchar_t* name : {L"SkipValidateButtons", L"HideWelcomeScreen"})
                EXPECT_EQ(ReadDword(product, name), -1) << Utf8(name);
        }
}
