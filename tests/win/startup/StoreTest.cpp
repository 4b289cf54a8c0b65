#include <gtest/gtest.h>

#include "app/ProductTable.h"
#include "app/ProgramMain.h"
#include "app/SettingsContext.h"
#include "settings/iniFile.h"
#include "tests/win/startup/StartupTestSupport.h"

namespace
{
std::vector<int32_t> KindsOf(const SettingsContext& store)
{
    std::vector<int32_t> kinds;
    for (int32_t i = 0; i < store.Kinds().Count(); ++i)
        kinds.push_back(store.Kinds().At(i));
    return kinds;
}

KelText ValueIn(const KelText& path, const char16_t* section, const char16_t* key)
{
    iniFile file(path);
    TextPtrArray values;
    file.List(section, key, &values);
    return values.Count() ? *values[0] : KelText(u"<absent>");
}
} // namespace

TEST(ProductTable, DescriptorsFileNamesAndSpelling)
{
    const int32_t* plotwise = FindProductDescriptor(u"PLOTWISE");
    ASSERT_NE(plotwise, nullptr);
    EXPECT_EQ(plotwise[0], 3);
    EXPECT_EQ(plotwise[12], 16);
    EXPECT_EQ(plotwise[13], -1);
    // Two products share one list; Cutwise and unknown products have none.
    EXPECT_EQ(FindProductDescriptor(u"Fieldpost"), FindProductDescriptor(u"cutwisecomponents"));
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

TEST(ProgramPathStore, KindsFollowTheDescriptor)
{
    SettingsContext& store = SettingsContext::Instance();
    store.SetSettingsFile(u"C:/nowhere/QUORLIN.INI", u"Ledgerline",
                          FindProductDescriptor(u"Ledgerline"));
    // Ledgerline lists Backup twice; the list is kept as it is.
    EXPECT_EQ(KindsOf(store), (std::vector<int32_t>{3, 38, 9, 35, 38, 4}));

    store.SetSettingsFile(u"C:/nowhere/KEL.INI", u"Cutwise", nullptr);
    EXPECT_EQ(store.Kinds().Count(), 20);
    EXPECT_EQ(store.Kinds().At(19), 16);
    EXPECT_EQ(store.Kinds().At(20), -1);

    EXPECT_TRUE(SettingsContext::KindName(45).SameAs(u"Rotary NC"));
    EXPECT_TRUE(SettingsContext::KindName(7).SameAs(u"ERROR"));
    EXPECT_TRUE(store.PathOf(47).IsEmpty());
}

TEST(ProgramPathStore, ReadsDefaultsSavesAndReloads)
{
    StartupFixture env;
    const KelText folder =
        env.ConfigFolder(u"paths", "; kept\r\n[PROGRAM PATHS]\r\nMain=C:\\Data\\Main\r\n"
                                   "Database = D:/db/\r\n\r\n[OTHER]\r\nX=1\r\n");
    const KelText path = folder + u"KEL.INI";
    SettingsContext& store = SettingsContext::Instance();
    store.SetSettingsFile(path, u"Plotwise", FindProductDescriptor(u"Plotwise"));

    // Folders are shown with "/" and a trailing "/"; kinds the file lacks show
    // their default inside the configuration folder ("Database = " is no key line).
    EXPECT_TRUE(store.PathOf(3).SameAs(u"C:/Data/Main/"));
    EXPECT_TRUE(store.PathOf(4).SameAs(folder + u"Projects/"));
    EXPECT_TRUE(store.PathOf(9).SameAs(folder + u"Database/"));

    store.SetPath(4, u"E:\\Jobs");
    EXPECT_TRUE(store.PathOf(4).SameAs(u"E:/Jobs/"));
    ASSERT_NE(store.Save(), 0);

    // The user's change is written, the untouched folder keeps its form, and
    // defaults stay out of the file.
    EXPECT_TRUE(ValueIn(path, u"PROGRAM PATHS", u"Project").SameAs(u"E:/Jobs/"));
    EXPECT_TRUE(ValueIn(path, u"PROGRAM PATHS", u"Main").SameAs(u"C:\\Data\\Main"));
    EXPECT_TRUE(ValueIn(path, u"PROGRAM PATHS", u"Images").SameAs(u"<absent>"));
    EXPECT_TRUE(ValueIn(path, u"OTHER", u"X").SameAs(u"1"));

    // A new settings file starts with an empty cache: the changes come from the file.
    store.SetPath(4, u"F:/Elsewhere/");
    store.SetSettingsFile(path, u"Plotwise", FindProductDescriptor(u"Plotwise"));
    EXPECT_TRUE(store.PathOf(4).SameAs(u"E:/Jobs/"));
}

TEST(ProgramPathStore, FailedSaveKeepsTheFileAndTheChange)
{
    StartupFixture env;
    const KelText folder = env.ConfigFolder(u"locked", "[PROGRAM PATHS]\r\nMain=C:/A/\r\n");
    const KelText path = folder + u"KEL.INI";
    SettingsContext& store = SettingsContext::Instance();
    store.SetSettingsFile(path, u"Shopwise", FindProductDescriptor(u"Shopwise"));
    store.SetPath(3, u"C:/B/");

    std::string before;
    ASSERT_TRUE(GetFileSystem().ReadBytes(path, before));
    // Another program holds the file open without sharing it.
    HANDLE lock = CreateFileW(AsWide(path), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(lock, INVALID_HANDLE_VALUE);
    EXPECT_EQ(store.Save(), 0);
    CloseHandle(lock);

    std::string after;
    ASSERT_TRUE(GetFileSystem().ReadBytes(path, after));
    EXPECT_EQ(after, before);
    EXPECT_TRUE(env.user.boxes.empty()); // the page that saves tells the user

    // Once the file is free again the kept change is saved.
    EXPECT_NE(store.Save(), 0);
    EXPECT_TRUE(ValueIn(path, u"PROGRAM PATHS", u"Main").SameAs(u"C:/B/"));
}
