// kelcfg.exe started as a logon script starts it, its standard output and
// standard error read from files. Every scenario starts from an empty
// "Brindlecove 2023" registry branch and shared documents folder of the test
// prefix (see EditKelSession.h).
#include "tests/e2e/support/KelCfgRun.h"

#include <fstream>

using namespace EditKelSession;

namespace
{
bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

using KelCfg = Scenario;
} // namespace

TEST_F(KelCfg, AWrongCommandLineEndsWithTwoAndTheUsage)
{
    for (const wchar_t* arguments : {L"", L"export", L"export -app=Teapot", L"import -app=Shopwise",
                                     L"export -app=Shopwise --dry-run"})
    {
        const Finished run = RunKelCfg(arguments);
        EXPECT_EQ(run.exitCode, 2u) << Utf8(arguments);
        EXPECT_TRUE(Holds(run.err, "Usage:\r\n  kelcfg export -app=<product>")) << run.err;
        EXPECT_TRUE(run.out.empty()) << run.out;
    }
    // In the dictionary's language.
    const Finished german = RunKelCfg(L"copy /l=Deutsch");
    EXPECT_EQ(german.exitCode, 2u);
    EXPECT_TRUE(Holds(german.err, "Unbekannter Befehl \"copy\".\r\nAufruf:")) << german.err;
}

TEST_F(KelCfg, ExportsTheDemoConfigurationOfShopwise)
{
    const fs::path demo = DemoCopy(L"Demo");
    RegisterConfiguration(L"Shopwise", L"Demo", demo);

    const Finished run = RunKelCfg(L"export -app=Shopwise");
    EXPECT_EQ(run.exitCode, 0u) << run.err;
    EXPECT_TRUE(run.err.empty()) << run.err;
    EXPECT_TRUE(Holds(run.out, "# EditKel settings of Shopwise\r\n")) << run.out;
    EXPECT_TRUE(Holds(run.out, "# Editor version: " KEL_VERSION_TEXT "\r\n"));
    EXPECT_TRUE(Holds(run.out, "[Program Paths]\r\nMain = C:/users/Public/Documents/Orvantix/"
                               "Brindlecove 2023/Demo/\r\nBackup = D:/Backup/Brindlecove/\r\n"))
        << run.out;
    EXPECT_TRUE(Holds(run.out, "SUPPORT = Workshop support: J\xC3\xBCrgen Wei\xC3\x9F, extension "
                               "214\r\n# QUICKFULLEDIT = NO   (only Cutwise can change this)\r\n"));
    EXPECT_TRUE(Holds(run.out, "NUMPAD = OFF\r\n\r\n[Message Prompts]\r\n# BadCostTables = YES   "
                               "(default)\r\n"));

    // The same into a file, with a line on standard error.
    const fs::path file = demo / L"Shopwise settings.txt";
    const Finished toFile = RunKelCfg(L"export \"-app=Shopwise\" \"" + file.wstring() + L"\"");
    EXPECT_EQ(toFile.exitCode, 0u) << toFile.err;
    EXPECT_TRUE(toFile.out.empty());
    EXPECT_TRUE(Holds(toFile.err, "The settings of Shopwise were exported to")) << toFile.err;
    EXPECT_TRUE(Holds(FileBytes(file), "[Message Prompts]\r\n"));
}

TEST_F(KelCfg, AnImportIsRefusedWholeOrAppliedWithTheChangesListed)
{
    const fs::path demo = DemoCopy(L"Demo");
    const fs::path file = demo / L"settings.txt";
    const std::wstring command =
        L"-app=Shopwise \"-config=" + demo.wstring() + L"\" \"" + file.wstring() + L"\"";

    std::ofstream(file, std::ios::binary)
        << "[Common Options]\nLanguage = Deutsch\nNUMPAD = maybe\n";
    const std::string before = FileBytes(demo / L"KEL.INI");
    Finished run = RunKelCfg(L"import " + command);
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_EQ(run.err, "line 3: \"NUMPAD\" must be one of OFF, ON\r\n"
                       "The file has errors; nothing was written.\r\n");
    EXPECT_FALSE(ReadString(L"Shopwise", L"Language"));
    EXPECT_EQ(FileBytes(demo / L"KEL.INI"), before);

    std::ofstream(file, std::ios::binary) << "[Common Options]\nLanguage = Deutsch\nNUMPAD = ON\n"
                                             "[Message Prompts]\nBadSpec = NO\n";
    run = RunKelCfg(L"import " + command + L" --dry-run");
    EXPECT_EQ(run.exitCode, 0u) << run.err;
    EXPECT_EQ(run.out, "Common Options/Language: English (default) -> Deutsch\r\n"
                       "Common Options/NUMPAD: OFF -> ON\r\n"
                       "Message Prompts/BadSpec: YES (default) -> NO\r\n");
    EXPECT_FALSE(ReadString(L"Shopwise", L"Language"));

    run = RunKelCfg(L"import " + command);
    EXPECT_EQ(run.exitCode, 0u) << run.err;
    EXPECT_EQ(run.err, "Values changed: 3.\r\n");
    EXPECT_EQ(ReadString(L"Shopwise", L"Language"), L"Deutsch");
    EXPECT_EQ(PromptValue(L"BadSpec"), 0);
    EXPECT_EQ(SettingsValue(demo / L"KEL.INI", L"GENERAL", L"NUMPAD"), L"ON");

    // Now the product's language is German; nothing is left to change.
    run = RunKelCfg(L"diff " + command);
    EXPECT_EQ(run.exitCode, 0u);
    EXPECT_TRUE(run.out.empty());
    EXPECT_EQ(run.err, "Keine \xC3\x84nderungen.\r\n");
}

TEST_F(KelCfg, SeveralConfigurationsAreListedInsteadOfGuessed)
{
    RegisterConfiguration(L"Tallywise", L"Demo", DemoCopy(L"Demo"));
    RegisterConfiguration(L"Tallywise", L"Other", DemoCopy(L"Other"));
    const Finished run = RunKelCfg(L"export -app=Tallywise");
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_TRUE(run.out.empty());
    EXPECT_TRUE(Holds(run.err, "Tallywise has several configurations; choose one with "
                               "-config=<folder>:\r\n  Demo  "))
        << run.err;
    EXPECT_TRUE(Holds(run.err, "\r\n  Other  ")) << run.err;
}
