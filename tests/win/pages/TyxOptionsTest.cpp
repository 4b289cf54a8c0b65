// The Tyx options page in a real dialog: the switches of KEL.INI, the caption
// and help file kept while their boxes are ticked, which products may change
// what, and a KEL.INI that cannot be written.
#include "app/pages/EditTyxOptions.h"
#include "app/pages/PageIds.h"
#include "tests/win/pages/PageTestSupport.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
class TyxOptionsPage : public PageTest
{
protected:
    EditTyxOptions& OpenPage(const KelText& product) { return Open<EditTyxOptions>(product); }
};
} // namespace

TEST_F(TyxOptionsPage, MissingGeneralSectionReadsAsNoAndOkWritesAllFourKeys)
{
    UseSettings("[OTHER]\r\nA=1\r\n", u"Cutwise");
    EditTyxOptions& page = OpenPage(u"Cutwise");
    EXPECT_EQ(Ticks(page, {kTyxQuickFullEdit, kTyxCanEditCats, kTyxPrintWithNonc, kTyxUseCaption,
                           kTyxUseHelpFile, kTyxHideWelcome}),
              "000000");
    EXPECT_TRUE(page.ControlText(kTyxSupport).IsEmpty());
    EXPECT_FALSE(page.IsControlEnabled(kTyxCaption));

    Click(page.Handle(), kTyxCanEditCats);
    SetTextOf(GetDlgItem(page.Handle(), kTyxSupport), u"Call 214");
    Ok();
    EXPECT_FALSE(DialogOpen());
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"SUPPORT").SameAs(u"Call 214"));
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"QUICKFULLEDIT").SameAs(u"NO"));
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"CANEDITCATS").SameAs(u"YES"));
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"PRINTWITHNONC").SameAs(u"NO"));
    EXPECT_TRUE(SettingsValue(u"OTHER", u"A").SameAs(u"1"));
    // Cutwise stores the welcome screen, also when it is off.
    EXPECT_EQ(GetDword(ProductKey(u"Cutwise"), u"HideWelcomeScreen"), 0);
    EXPECT_TRUE(GetString(ProductKey(u"Cutwise"), u"Caption").SameAs(u"<absent>"));
}

// Which boxes each product may change, and where the welcome screen is stored.
TEST_F(TyxOptionsPage, ProductRules)
{
    struct Row
    {
        const char16_t* product;
        bool permissions;
        bool welcomeEditable;
        bool welcomeStored;
    };
    const Row rows[] = {
        {u"Cutwise", true, true, true},
        {u"Tallywise", false, true, true},
        {u"Fieldpost", false, true, false},
        {u"Shopwise", false, false, false},
        {u"CutwiseComponents", false, false, false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(KelText(row.product).ToUtf8());
        UseSettings("[GENERAL]\r\n", row.product);
        PutDword(ProductKey(row.product), u"HideWelcomeScreen", 7);
        EditTyxOptions& page = OpenPage(row.product);
        EXPECT_TRUE(page.IsControlVisible(kTyxQuickFullEdit));
        EXPECT_EQ(Enabled(page, {kTyxQuickFullEdit, kTyxCanEditCats, kTyxPrintWithNonc}),
                  row.permissions ? "111" : "000");
        EXPECT_EQ(page.IsControlEnabled(kTyxHideWelcome), row.welcomeEditable);
        EXPECT_TRUE(page.IsControlChecked(kTyxHideWelcome));
        if (row.welcomeEditable)
            Click(page.Handle(), kTyxHideWelcome); // off
        Ok();
        EXPECT_EQ(GetDword(ProductKey(row.product), u"HideWelcomeScreen"),
                  row.welcomeStored ? 0 : 7);
    }
}

TEST_F(TyxOptionsPage, CaptionAndHelpFileAreKeptWhileTicked)
{
    UseSettings("[GENERAL]\r\n", u"Shopwise");
    PutString(ProductKey(u"Shopwise"), u"Caption", u"Shop floor");
    PutString(ProductKey(u"Shopwise"), u"Help File", u"C:/Help/shop.chm");
    EditTyxOptions& page = OpenPage(u"Shopwise");
    EXPECT_TRUE(page.IsControlChecked(kTyxUseCaption));
    EXPECT_TRUE(page.IsControlEnabled(kTyxHelpFile));
    EXPECT_TRUE(page.ControlText(kTyxCaption).SameAs(u"Shop floor"));

    Click(page.Handle(), kTyxUseCaption);
    EXPECT_FALSE(page.IsControlEnabled(kTyxCaption));
    SetTextOf(GetDlgItem(page.Handle(), kTyxHelpFile), u"D:/help.chm");
    Ok();
    EXPECT_TRUE(GetString(ProductKey(u"Shopwise"), u"Caption").SameAs(u"<absent>"));
    EXPECT_TRUE(GetString(ProductKey(u"Shopwise"), u"Help File").SameAs(u"D:/help.chm"));
}

TEST_F(TyxOptionsPage, UnwritableSettingsFileRefusesAndWritesNoRegistryValue)
{
    // The page always edits KEL.INI, also for a product started on another file.
    UseSettings("[GENERAL]\r\nSUPPORT=x\r\n", u"Tallywise");
    const std::string before = FileBytes();
    EditTyxOptions& page = OpenPage(u"Tallywise");
    // Read-only: refused before anything is written.
    ASSERT_TRUE(SetFileAttributesW(AsWide(settingsPath), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(page.ControlText(kTyxSupport).SameAs(u"x"));
    Click(page.Handle(), kTyxHideWelcome);
    Click(page.Handle(), kTyxUseCaption);
    SetTextOf(GetDlgItem(page.Handle(), kTyxCaption), u"Tally");
    Ok();

    EXPECT_TRUE(DialogOpen());
    ASSERT_EQ(user.boxes.size(), 1u);
    EXPECT_TRUE(user.boxes[0].text.SameAs(DictText(kTextSaveFailedCaption)));
    EXPECT_TRUE(user.boxes[0].caption.SameAs(
        KelText::Formatted(u"%s %s", u"Tallywise", DictText(kTextOptions))));
    EXPECT_EQ(user.boxes[0].style & MB_ICONMASK, UINT(MB_ICONHAND));
    EXPECT_TRUE(GetString(ProductKey(u"Tallywise"), u"Caption").SameAs(u"<absent>"));
    EXPECT_EQ(GetDword(ProductKey(u"Tallywise"), u"HideWelcomeScreen"), -1);
    EXPECT_EQ(FileBytes(), before);
    SetFileAttributesW(AsWide(settingsPath), FILE_ATTRIBUTE_NORMAL);
    // Once the file is free, OK saves everything and closes.
    Ok();
    EXPECT_FALSE(DialogOpen());
    EXPECT_TRUE(GetString(ProductKey(u"Tallywise"), u"Caption").SameAs(u"Tally"));
}

TEST_F(TyxOptionsPage, OddSwitchTextsAndValuesOfTheWrongType)
{
    UseSettings("[general]\r\nquickfulledit=yes\r\nCANEDITCATS= YES \r\nPRINTWITHNONC=maybe\r\n",
                u"Cutwise");
    PutDword(ProductKey(u"Cutwise"), u"Caption", 5);
    PutString(ProductKey(u"Cutwise"), u"HideWelcomeScreen", u"1");
    EditTyxOptions& page = OpenPage(u"Cutwise");
    EXPECT_EQ(Ticks(page, {kTyxQuickFullEdit, kTyxCanEditCats, kTyxPrintWithNonc, kTyxUseCaption,
                           kTyxHideWelcome}),
              "11000");
    Ok();
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"QUICKFULLEDIT").SameAs(u"YES"));
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"CANEDITCATS").SameAs(u"YES"));
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"PRINTWITHNONC").SameAs(u"NO"));
    // The caption is not in use, so it goes; the welcome screen is stored as
    // the DWORD that Cutwise keeps.
    EXPECT_EQ(GetDword(ProductKey(u"Cutwise"), u"Caption"), -1);
    EXPECT_EQ(GetDword(ProductKey(u"Cutwise"), u"HideWelcomeScreen"), 0);
}
