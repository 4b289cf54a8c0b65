// Hand-written files go through the pages' own rules: English is kept as no
// value, "StoreEstDatabase" is stored inverted, automatic login only goes off,
// the welcome screen is stored for Cutwise and Tallywise only, the
// permissions change for Cutwise only, web links are one list renumbered from
// 0, and values the file does not give keep what they had, also where the page
// itself would drop them.
#include "tests/win/deploy/TransferTestSupport.h"

namespace
{
class PageRules : public TransferTest
{
protected:
    // Imports into the test's configuration (made on first use), whose
    // settings file SettingsValue reads.
    TransferOutcome Apply(const KelText& product, const std::string& file)
    {
        if (folder.IsEmpty())
            folder = Configuration(u"config", product);
        settingsPath = folder + SettingsFileNameFor(product);
        return Import(product, folder, file);
    }
};
} // namespace

TEST_F(PageRules, EnglishIsStoredAsNoValueAndAutomaticLoginOnlyGoesOff)
{
    PutString(ProductKey(u"Shopwise"), u"Language", u"Deutsch");
    PutString(ProductKey(u"Shopwise", u"Login"), u"Auto Login", u"1");

    TransferOutcome outcome =
        Apply(u"Shopwise", "[Common Options]\nLanguage = english\nAuto Login = no\n");
    ASSERT_EQ(outcome.exitCode, 0) << Said(outcome);
    ASSERT_EQ(outcome.changes.size(), 2u) << Said(outcome);
    EXPECT_TRUE(outcome.changes[0].SameAs(u"Common Options/Auto Login: YES -> NO"));
    EXPECT_TRUE(outcome.changes[1].SameAs(u"Common Options/Language: Deutsch -> English"));
    EXPECT_TRUE(GetString(ProductKey(u"Shopwise"), u"Language").SameAs(u"<absent>"));
    EXPECT_TRUE(GetString(ProductKey(u"Shopwise", u"Login"), u"Auto Login").SameAs(u"<absent>"));

    // Off now, so it cannot be switched on again; nothing of the file is written.
    const std::vector<std::string> before = State(folder);
    outcome = Apply(u"Shopwise", "[Common Options]\nLanguage = Deutsch\nAuto Login = YES\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(Said(outcome).find("line 3: automatic login can be switched off here, never on"),
              std::string::npos)
        << Said(outcome);
    EXPECT_EQ(State(folder), before);
}

TEST_F(PageRules, StoreEstDatabaseIsStoredInvertedAndUntouchedTextsAreKept)
{
    PutString(ProductKey(u"Plotwise", u"Toolbar"), u"Icons", u"D:/Icons/");
    PutString(ProductKey(u"Plotwise"), u"StoreEstDatabase", u"true");

    // The page starts with its text boxes clear and would drop "Icons"; the
    // file does not name it, so it stays.
    TransferOutcome outcome = Apply(u"Plotwise", "[CAD Options]\nStoreEstDatabase = No\n");
    ASSERT_EQ(outcome.exitCode, 0) << Said(outcome);
    EXPECT_EQ(GetString(ProductKey(u"Plotwise"), u"StoreEstDatabase").ToUtf8(), "FALSE");
    EXPECT_EQ(GetString(ProductKey(u"Plotwise", u"Toolbar"), u"Icons").ToUtf8(), "D:/Icons/");
    EXPECT_EQ(GetString(ProductKey(u"Plotwise"), u"UseDWGDatabase").ToUtf8(), "Prompt");

    outcome = Apply(u"Plotwise", "[CAD Options]\nStoreEstDatabase = YES\nIcons =\n");
    ASSERT_EQ(outcome.exitCode, 0) << Said(outcome);
    EXPECT_EQ(GetString(ProductKey(u"Plotwise"), u"StoreEstDatabase").ToUtf8(), "<absent>");
    EXPECT_EQ(GetString(ProductKey(u"Plotwise", u"Toolbar"), u"Icons").ToUtf8(), "<absent>");
}

TEST_F(PageRules, WelcomeScreenAndPermissionsFollowTheProduct)
{
    const std::string file = "[Product Options]\nHideWelcomeScreen = YES\n";
    for (const char16_t* product : {u"Cutwise", u"Tallywise"})
    {
        const TransferOutcome outcome = Apply(product, file);
        EXPECT_EQ(outcome.exitCode, 0) << Said(outcome);
        EXPECT_EQ(GetDword(ProductKey(product), u"HideWelcomeScreen"), 1)
            << KelText(product).ToUtf8();
    }
    // Fieldpost may tick the box but never stores it; the others cannot.
    for (const char16_t* product : {u"Fieldpost", u"Shopwise", u"CutwiseComponents"})
    {
        const TransferOutcome outcome = Apply(product, file);
        EXPECT_EQ(outcome.exitCode, 0) << Said(outcome);
        EXPECT_TRUE(outcome.changes.empty()) << Said(outcome);
        EXPECT_NE(Said(outcome).find("line 2: " + KelText(product).ToUtf8() +
                                     " does not store \"HideWelcomeScreen\""),
                  std::string::npos)
            << Said(outcome);
        EXPECT_EQ(GetDword(ProductKey(product), u"HideWelcomeScreen"), -1);
    }

    const std::string permissions = "[Product Options]\nCANEDITCATS = YES\nSUPPORT = Call 214\n";
    const std::vector<std::string> before = State(folder);
    TransferOutcome outcome = Apply(u"Shopwise", permissions);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(Said(outcome).find("line 2: only Cutwise can change \"CANEDITCATS\""),
              std::string::npos)
        << Said(outcome);
    EXPECT_EQ(State(folder), before);

    outcome = Apply(u"Cutwise", permissions);
    EXPECT_EQ(outcome.exitCode, 0) << Said(outcome);
    EXPECT_EQ(SettingsValue(u"GENERAL", u"CANEDITCATS").ToUtf8(), "YES");
    EXPECT_EQ(SettingsValue(u"GENERAL", u"SUPPORT").ToUtf8(), "Call 214");
}

TEST_F(PageRules, OnlyValuesThatDifferAreChangesAndDefaultFoldersAreNotPinned)
{
    const KelText config = Configuration(u"config", u"Ledgerline");
    // The default folder written out, a switch in another case, a value equal
    // to what is stored: nothing to change, nothing written.
    const std::string file = "[Program Paths]\nDatabase = " + config.ToUtf8() +
                             "Database\n[Common Options]\nCachePatterns = yes\nNUMPAD = off\n";
    const std::vector<std::string> before = State(config);
    const TransferOutcome outcome = Import(u"Ledgerline", config, file);
    EXPECT_EQ(outcome.exitCode, 0) << Said(outcome);
    EXPECT_TRUE(outcome.changes.empty()) << Said(outcome);
    EXPECT_EQ(Said(outcome), "No changes.\n");
    EXPECT_EQ(State(config), before);
}

TEST_F(PageRules, WebLinksAreOneListStoredInItsNewOrder)
{
    const KelText links = ProductKey(u"Fieldpost", u"WebLinks");
    PutString(links, u"4:Shop", u"https://shop.example/");
    PutString(links, u"9:", u"https://kel.example/");

    // No links in the file: the links stay.
    TransferOutcome outcome = Apply(u"Fieldpost", "[Web Links]\n[Common Options]\nNUMPAD = ON\n");
    ASSERT_EQ(outcome.exitCode, 0) << Said(outcome);
    EXPECT_EQ(GetString(links, u"4:Shop").ToUtf8(), "https://shop.example/");

    outcome =
        Apply(u"Fieldpost", "[Web Links]\nLink = =https://kel.example/\n"
                            "Link = Shop = https://shop.example/\nLink = Docs=https://d/?a=b\n");
    ASSERT_EQ(outcome.exitCode, 0) << Said(outcome);
    EXPECT_EQ(Said(outcome),
              "Web Links/Link 1: Shop=https://shop.example/ -> =https://kel.example/\n"
              "Web Links/Link 2: =https://kel.example/ -> Shop=https://shop.example/\n"
              "Web Links/Link 3: (none) -> Docs=https://d/?a=b\n"
              "Values changed: 3.\n");
    EXPECT_EQ(GetString(links, u"0:").ToUtf8(), "https://kel.example/");
    EXPECT_EQ(GetString(links, u"1:Shop").ToUtf8(), "https://shop.example/");
    EXPECT_EQ(GetString(links, u"2:Docs").ToUtf8(), "https://d/?a=b");
    EXPECT_EQ(GetString(links, u"4:Shop").ToUtf8(), "<absent>");

    // The link dialog's rules, and the empty list that stands alone.
    const std::vector<std::string> before = State(folder);
    outcome = Apply(u"Fieldpost",
                    "[Web Links]\nLink = Shop\nLink = Shop=\nLink = Docs=https://d/\nLink =\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(Said(outcome).find("line 2: a web link is \"name=address\""), std::string::npos);
    EXPECT_NE(Said(outcome).find("line 3: a web link is \"name=address\""), std::string::npos);
    EXPECT_NE(Said(outcome).find("line 5: \"Link =\" without a value stands for no links"),
              std::string::npos)
        << Said(outcome);
    EXPECT_EQ(State(folder), before);

    outcome = Apply(u"Fieldpost", "[Web Links]\nLink =\n");
    ASSERT_EQ(outcome.exitCode, 0) << Said(outcome);
    EXPECT_EQ(outcome.changes.size(), 3u);
    EXPECT_FALSE(RegistryKey(links).IsOpen() && !RegistryKey(links).ValueNames().empty());
}
