#include <gtest/gtest.h>

#include "app/ProductTable.h"
#include "app/ProgramMain.h"
#include "app/SettingsContext.h"
#include "tests/win/startup/StartupTestSupport.h"

TEST(ProductTable, DescriptorsFileNamesAndSpelling)
{
    // Any spelling finds the product; Cutwise and unknown products have no list.
    EXPECT_EQ(FindProductDescriptor(u"PLOTWISE"), FindProductDescriptor(u"Plotwise"));
    EXPECT_NE(FindProductDescriptor(u"PLOTWISE"), nullptr);
    EXPECT_EQ(FindProductDescriptor(u"Cutwise"), nullptr);
    EXPECT_EQ(FindProductDescriptor(u"Nonesuch"), nullptr);

    EXPECT_TRUE(CanonicalProductName(u"lEDGERLINE").SameAs(u"Ledgerline"));
    EXPECT_TRUE(CanonicalProductName(u"Plot").IsEmpty());
    EXPECT_TRUE(SettingsFileNameFor(u"ledgerline").SameAs(u"QUORLIN.INI"));
    EXPECT_TRUE(SettingsFileNameFor(u"Shopwise").SameAs(u"KEL.INI"));
}

TEST(ProductTable, CommandLineLanguageAndTitle)
{
    EXPECT_TRUE(ProductFromCommandLine(u"/l=Deutsch -APP=ledgerLINE").SameAs(u"Ledgerline"));
    // Quoted as shortcuts and scripts write it: the whole switch, or its value.
    EXPECT_TRUE(ProductFromCommandLine(u"-app=\"Plotwise\" /l=x").SameAs(u"Plotwise"));
    EXPECT_TRUE(ProductFromCommandLine(u"\"-app=Plotwise\"").SameAs(u"Plotwise"));
    EXPECT_TRUE(ProductFromCommandLine(u"\"/l=Deutsch\" \"-APP=shopwise\"").SameAs(u"Shopwise"));
    // A switch-like piece of a quoted program path is no switch.
    EXPECT_TRUE(ProductFromCommandLine(u"\"C:\\x -app=Cutwise\\EditKel.exe\" -app=Plotwise")
                    .SameAs(u"Plotwise"));
    EXPECT_TRUE(ProductFromCommandLine(u"-app=Plotwise2").IsEmpty());
    EXPECT_TRUE(ProductFromCommandLine(u"/l=Deutsch").IsEmpty());
    EXPECT_TRUE(EditorTitle(u"Plotwise").SameAs(u"Plotwise Config Editor - 23.0.1.1019 2023"));

    // "/l=" wins; otherwise the product's stored language of the release; else English.
    // A product name of this test's own: the "2023" branch belongs to the end-to-end tests.
    StartupFixture env;
    const KelText product = UniqueName(u"LanguageProbe");
    const KelText key = AppEntry::RegistryKeyPathFor(u"2023", product, true);
    RegistryCleanup cleanup({key});
    EXPECT_TRUE(StartupLanguage(u"-app=Tallywise", product).SameAs(u"English"));
    RegistryKey stored;
    ASSERT_TRUE(stored.Create(key));
    ASSERT_TRUE(stored.WriteString(u"Language", u"Deutsch"));
    EXPECT_TRUE(StartupLanguage(u"-app=Tallywise", product).SameAs(u"Deutsch"));
    EXPECT_TRUE(StartupLanguage(u"-app=Tallywise /l=Fran", product).SameAs(u"Fran"));
}

// (The page test checks a product's own list, Backup twice included.)
TEST(ProgramPathStore, WithoutADescriptorEveryKindIsListed)
{
    SettingsContext& store = SettingsContext::Instance();
    store.SetSettingsFile(u"C:/nowhere/KEL.INI", u"Cutwise", nullptr);
    EXPECT_EQ(store.Kinds().Count(), 20);
    EXPECT_EQ(store.Kinds().At(20), -1);
    EXPECT_TRUE(SettingsContext::KindName(7).SameAs(u"ERROR"));
    EXPECT_TRUE(store.PathOf(47).IsEmpty());
}

// How the store shows, changes and saves folders is checked through the
// program paths page; here what the page cannot show.
TEST(ProgramPathStore, SpacedKeyIsNoKeyLineAndANewFileEmptiesTheCache)
{
    StartupFixture env;
    const KelText folder = env.ConfigFolder(u"paths", "[PROGRAM PATHS]\r\nDatabase = D:/db/\r\n");
    const KelText path = folder + u"KEL.INI";
    SettingsContext& store = SettingsContext::Instance();
    store.SetSettingsFile(path, u"Plotwise", FindProductDescriptor(u"Plotwise"));
    // "Database = " is no key line: the default inside the configuration folder shows.
    EXPECT_TRUE(store.PathOf(9).SameAs(folder + u"Database/"));

    // A new settings file starts with an empty cache: the changes come from the file.
    store.SetPath(4, u"E:\\Jobs");
    ASSERT_NE(store.Save(), 0);
    store.SetPath(4, u"F:/Elsewhere/");
    store.SetSettingsFile(path, u"Plotwise", FindProductDescriptor(u"Plotwise"));
    EXPECT_TRUE(store.PathOf(4).SameAs(u"E:/Jobs/"));
}
