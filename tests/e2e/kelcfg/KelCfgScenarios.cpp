// kelcfg.exe started as a logon script starts it, its standard output and
// standard error read from files. Every scenario starts from an empty
// "Brindlecove 2023" registry branch and shared documents folder of the test
// prefix (see EditKelSession.h).
#include "tests/e2e/support/KelCfgRun.h"

#include <fstream>
#include <string>
#include <vector>

using namespace EditKelSession;

namespace
{
bool Holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// Every key and value below `key` (names, types and data), one line each.
void DescribeKey(HKEY root, const std::wstring& key, std::string& out)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS)
        return;
    out += Utf8(key) + "\n";
    wchar_t name[16384];
    BYTE data[65536];
    for (DWORD i = 0;; ++i)
    {
        DWORD nameLength = 16384, type = 0, size = sizeof data;
        if (RegEnumValueW(opened, i, name, &nameLength, nullptr, &type, data, &size) !=
            ERROR_SUCCESS)
            break;
        out += "  " + Utf8(name) + " " + std::to_string(type) + " " +
               std::string(reinterpret_cast<const char*>(data), size) + "\n";
    }
    std::vector<std::wstring> subKeys;
    for (DWORD i = 0;; ++i)
    {
        DWORD nameLength = 16384;
        if (RegEnumKeyExW(opened, i, name, &nameLength, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            break;
        subKeys.emplace_back(name);
    }
    RegCloseKey(opened);
    const std::wstring prefix = key + L"\\";
    for (const std::wstring& sub : subKeys)
        DescribeKey(root, prefix + sub, out);
}

fs::path KnownFolder(int csidl)
{
    wchar_t path[MAX_PATH] = {};
    SHGetFolderPathW(nullptr, csidl, nullptr, 0, path);
    return path;
}

// What a command that writes nothing must leave as it was: the vendor's
// registry branches of the user and of the machine, and every folder and file
// (with its bytes) of the vendor's local and roaming data folders, the shared
// documents and `configuration`.
std::string Snapshot(const fs::path& configuration)
{
    std::string out;
    DescribeKey(HKEY_CURRENT_USER, L"Software\\Orvantix", out);
    DescribeKey(HKEY_LOCAL_MACHINE, L"Software\\Orvantix", out);
    for (const fs::path& root :
         {KnownFolder(CSIDL_LOCAL_APPDATA) / L"Orvantix", KnownFolder(CSIDL_APPDATA) / L"Orvantix",
          SharedDocuments(), configuration})
    {
        std::error_code absent;
        for (auto entry = fs::recursive_directory_iterator(root, absent);
             entry != fs::recursive_directory_iterator(); ++entry)
            out += Utf8(entry->path().wstring()) + "\n" +
                   (entry->is_regular_file() ? FileBytes(entry->path()) + "\n" : "");
    }
    return out;
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

TEST_F(KelCfg, HelpAndVersionGoToStandardOutputAndEndWithZero)
{
    for (const wchar_t* arguments : {L"--help", L"-h", L"/?"})
    {
        const Finished run = RunKelCfg(arguments);
        EXPECT_EQ(run.exitCode, 0u) << Utf8(arguments);
        EXPECT_EQ(run.out.find("Usage:\r\n  kelcfg export -app=<product>"), 0u) << run.out;
        EXPECT_TRUE(run.err.empty()) << run.err;
    }
    const Finished diffHelp = RunKelCfg(L"diff --help");
    EXPECT_EQ(diffHelp.exitCode, 0u);
    EXPECT_EQ(diffHelp.out.find("Usage:\r\n  kelcfg diff -app=<product>"), 0u) << diffHelp.out;
    EXPECT_FALSE(Holds(diffHelp.out, "kelcfg import"));

    const Finished version = RunKelCfg(L"--version");
    EXPECT_EQ(version.exitCode, 0u);
    EXPECT_EQ(version.out, "kelcfg " KEL_VERSION_TEXT "\r\n");
    EXPECT_TRUE(version.err.empty());

    // An unknown option or command: one line naming it, then the usage.
    for (const char* unknown : {"--frobnicate", "frobnicate"})
    {
        const Finished run = RunKelCfg(Wide(unknown));
        EXPECT_EQ(run.exitCode, 2u);
        EXPECT_TRUE(run.out.empty());
        EXPECT_EQ(
            run.err.find(std::string(unknown[0] == '-' ? "Unknown option" : "Unknown command") +
                         " \"" + unknown + "\".\r\nUsage:\r\n"),
            0u)
            << run.err;
    }
}

TEST_F(KelCfg, ADryRunADiffAndAnExportLeaveDiskAndRegistryAsTheyWere)
{
    const fs::path demo = DemoCopy(L"Demo");
    RegisterConfiguration(L"Shopwise", L"Demo", demo);
    // The product's data folders, which a writing start of the editor makes.
    for (int csidl : {CSIDL_LOCAL_APPDATA, CSIDL_APPDATA})
        fs::remove_all(KnownFolder(csidl) / L"Orvantix" / (L"Brindlecove " + Wide(KEL_RELEASE)) /
                       L"Shopwise");
    const fs::path file = demo / L"settings.txt";
    std::ofstream(file, std::ios::binary) << "[Common Options]\nLanguage = Deutsch\nNUMPAD = ON\n"
                                             "[Program Paths]\nReports = D:/Elsewhere/\n";
    const std::string before = Snapshot(demo);

    const std::wstring quoted = L" \"" + file.wstring() + L"\"";
    for (const std::wstring& command :
         {L"import --dry-run -app=Shopwise" + quoted, L"diff -app=Shopwise" + quoted,
          std::wstring(L"export -app=Shopwise")})
    {
        const Finished run = RunKelCfg(command);
        EXPECT_EQ(run.exitCode, 0u) << Utf8(command) << run.err;
        EXPECT_TRUE(Holds(run.out, command[0] == L'e'
                                       ? "[Common Options]"
                                       : "Common Options/Language: English (default) -> Deutsch"))
            << run.out;
        EXPECT_EQ(Snapshot(demo), before) << Utf8(command);
    }
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

TEST_F(KelCfg, CheckTellsTheProblemsOfAConfigurationAsLinesOrJson)
{
    // Every folder of Shopwise's kinds there: no problem, exit code 0.
    const fs::path config = DemoCopy(L"Check");
    std::string paths = "[PROGRAM PATHS]\r\n";
    for (const char* kind : {"Main", "Backup", "DXF", "Database", "Project", "Reports", "Images",
                             "Items", "Scripts", "Profiles", "Download", "Common", "Textures"})
    {
        fs::create_directories(config / "folders" / kind);
        paths += std::string(kind) + "=" + Utf8((config / "folders" / kind).wstring()) + "\r\n";
    }
    std::ofstream(config / L"KEL.INI", std::ios::binary) << "[GENERAL]\r\nNUMPAD=OFF\r\n" << paths;
    const std::wstring command = L"check -app=Shopwise \"-config=" + config.wstring() + L"\"";
    Finished run = RunKelCfg(command);
    EXPECT_EQ(run.exitCode, 0u) << run.out << run.err;
    EXPECT_TRUE(Holds(run.out, "No problems were found in the configuration of Shopwise"))
        << run.out;

    // A folder gone, one on a drive that is not there, the settings file
    // read-only and a switch stored as text.
    fs::remove_all(config / "folders" / "Backup");
    std::string moved = paths;
    const std::string reports = Utf8((config / "folders" / "Reports").wstring());
    moved.replace(moved.find(reports), reports.size(), "Q:\\Reports");
    std::ofstream(config / L"KEL.INI", std::ios::binary) << "[GENERAL]\r\nNUMPAD=OFF\r\n" << moved;
    SetFileAttributesW((config / L"KEL.INI").c_str(), FILE_ATTRIBUTE_READONLY);
    HKEY common = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, (BranchPath + L"\\COMMON").c_str(), 0, nullptr, 0, KEY_WRITE,
                    nullptr, &common, nullptr);
    RegSetValueExW(common, L"CachePatterns", 0, REG_SZ, reinterpret_cast<const BYTE*>(L"1"), 4);
    RegCloseKey(common);

    run = RunKelCfg(command);
    EXPECT_EQ(run.exitCode, 1u) << run.out << run.err;
    EXPECT_TRUE(Holds(run.out, "Backup \"")) << run.out;
    EXPECT_TRUE(Holds(run.out, "\": the folder does not exist\r\n")) << run.out;
    EXPECT_TRUE(Holds(run.out, "Reports \"Q:\\Reports\\\": its drive or network share is not "
                               "reachable\r\n"))
        << run.out;
    EXPECT_TRUE(Holds(run.out, "\": the settings file is read-only")) << run.out;
    EXPECT_TRUE(Holds(run.out, "CachePatterns \"1\": stored as REG_SZ where the programs expect "
                               "REG_DWORD"))
        << run.out;
    EXPECT_TRUE(Holds(run.out, "Problems found in the configuration of Shopwise in \"")) << run.out;
    EXPECT_TRUE(Holds(run.out, "\": 4.\r\n")) << run.out;

    run = RunKelCfg(command + L" --format=json");
    EXPECT_EQ(run.exitCode, 1u) << run.err;
    EXPECT_EQ(run.out.find("{\r\n  \"product\": \"Shopwise\",\r\n  \"configuration\": \""), 0u)
        << run.out;
    // The first object is one literal written over several lines.
    // NOLINTBEGIN(bugprone-suspicious-missing-comma)
    for (const char* object :
         {"{\"area\": \"program-paths\", \"option\": \"Reports\", \"value\": "
          "\"Q:\\\\Reports\\\\\", "
          "\"problem\": \"not-reachable\", \"reason\": \"its drive or network share is not "
          "reachable\"}",
          "\"option\": \"Backup\"", "\"problem\": \"missing\"",
          "{\"area\": \"settings-file\", \"option\": \"KEL.INI\"", "\"problem\": \"read-only\"",
          "\"value\": \"1\", \"problem\": \"wrong-type\""})
        EXPECT_TRUE(Holds(run.out, object)) << object << "\n" << run.out;
    // NOLINTEND(bugprone-suspicious-missing-comma)
    SetFileAttributesW((config / L"KEL.INI").c_str(), FILE_ATTRIBUTE_NORMAL);

    // A format the command does not know, or a command without formats.
    EXPECT_EQ(RunKelCfg(command + L" --format=xml").exitCode, 2u);
    EXPECT_EQ(RunKelCfg(L"export -app=Shopwise --format=json").exitCode, 2u);
}
