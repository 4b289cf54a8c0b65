// Nothing is lost: a malformed file is refused as a whole with the line of
// every error, a dry run and a diff write nothing, and a failure part-way
// through an import (a registry key that refuses, a settings file that cannot
// be written) puts back every value already written.
#include <string>

#include "platform/FileSystem.h"
#include "tests/core/platform/FileSystemDoubles.h"
#include "tests/win/deploy/TransferTestSupport.h"

namespace
{
// A file that changes a value on every page of Shopwise.
const char changesEveryPage[] = "[Program Paths]\nDXF = D:/DXF\n"
                                "[Product Options]\nSUPPORT = Call 214\n"
                                "[Common Options]\nLanguage = Deutsch\nFancyToolbars = YES\n"
                                "[Message Prompts]\nBadSpec = NO\n";

class ImportSafety : public TransferTest
{
protected:
    ImportSafety() : config(Configuration(u"config", u"Shopwise"))
    {
        PutString(ProductKey(u"Shopwise"), u"Caption", u"Acme");
        PutDword(AppKey(u"COMMON"), u"CachePatterns", 0);
    }
    KelText config;
};

// Writes through the platform, but fails the write that follows the first
// `allowed` ones (the writes after it, such as putting things back, go through).
class RefusingWrites : public PassThroughFiles
{
public:
    explicit RefusingWrites(int allowed) : allowed(allowed) {}
    Step WriteNew(PathRef temporary, const void* data, size_t size) override
    {
        return allowed-- == 0 ? Step::Failed : PassThroughFiles::WriteNew(temporary, data, size);
    }

private:
    int allowed;
};
} // namespace

TEST_F(ImportSafety, EveryKindOfMalformedFileIsRefusedWithItsLineAndNothingIsWritten)
{
    struct Row
    {
        std::string file;
        std::string said;
    };
    const Row rows[] = {
        {"Language = Deutsch\n", "line 1: the value comes before the first [Section]"},
        {"[Common Options]\nLanguage\n", "line 2: the line is neither a [Section]"},
        {"[Common Options\n", "line 1: the line is neither a [Section]"},
        {"# fine\n\n[Plotwise]\nIcons = x\n", "line 3: Shopwise has no section [Plotwise]"},
        {"[CAD Options]\n", "line 1: Shopwise has no section [CAD Options]"},
        {"[Common Options]\nColour = red\n",
         "line 2: section [Common Options] has no key \"Colour\""},
        {"[Common Options]\nNUMPAD = maybe\n", "line 2: \"NUMPAD\" must be one of OFF, ON"},
        {"[Message Prompts]\nBadSpec = 0\n", "line 2: \"BadSpec\" must be one of YES, NO"},
        {"[Common Options]\nLanguage = Deutsch\nlanguage = Fran\xC3\xA7"
         "ais\n",
         "line 3: \"Language\" is already given on line 2"},
        {"[Common Options]\n[Program Paths]\n[common options]\n",
         "line 3: section [Common Options] is already given on line 1"},
        {"[Program Paths]\nDXF =\n", "line 2: \"DXF\" needs a folder"},
        {"[Program Paths]\nDXF = C:/DXF/   (default)\n",
         "line 2: remove the note \"(default)\" from the value of \"DXF\""},
        {"[Common Options]\nLanguage = Fran\xE7"
         "ais\n",
         "line 2: the text is not UTF-8"},
    };
    const std::vector<std::string> before = State(config);
    for (const Row& row : rows)
    {
        // A valid change after the error: not even that is written.
        const TransferOutcome outcome =
            Import(u"Shopwise", config, row.file + "[Product Options]\nSUPPORT = x\n");
        const std::string said = Said(outcome);
        EXPECT_EQ(outcome.exitCode, 1) << row.file;
        EXPECT_NE(said.find(row.said), std::string::npos) << row.file << said;
        EXPECT_NE(said.find("The file has errors; nothing was written."), std::string::npos);
        EXPECT_TRUE(outcome.changes.empty()) << said;
        EXPECT_EQ(State(config), before) << row.file;
    }
}

TEST_F(ImportSafety, ADryRunAndADiffTellTheChangesAndWriteNothing)
{
    const std::vector<std::string> before = State(config);
    const TransferOutcome dryRun =
        Import(u"Shopwise", config, changesEveryPage, SettingsTransfer::Mode::DryRun);
    const TransferOutcome diff =
        Import(u"Shopwise", config, changesEveryPage, SettingsTransfer::Mode::Diff);
    EXPECT_EQ(State(config), before);
    EXPECT_EQ(dryRun.exitCode, 0);
    EXPECT_EQ(diff.exitCode, 0);
    EXPECT_FALSE(dryRun.wrote || diff.wrote);
    EXPECT_EQ(Said(dryRun), Said(diff) + "Dry run: nothing was written.\n");

    const TransferOutcome applied = Import(u"Shopwise", config, changesEveryPage);
    EXPECT_EQ(applied.changes.size(), 5u);
    EXPECT_EQ(Said(applied),
              Said(diff).substr(0, Said(diff).find("Values that")) + "Values changed: 5.\n");
    EXPECT_NE(State(config), before);
    EXPECT_EQ(Said(Import(u"Shopwise", config, changesEveryPage, SettingsTransfer::Mode::Diff)),
              "No changes.\n");
}

// The message prompts come last: a volatile "COMMON" key takes the common
// options' values but refuses the non-volatile "COMMON\PROMPTS" key, after the
// program paths, the product options and the common options have been written.
TEST_F(ImportSafety, AFailureInTheLastPagePutsBackEverythingWritten)
{
    HKEY root = nullptr;
    KelText common;
    ASSERT_TRUE(RegistryKey::SplitPath(AppKey(u"COMMON"), root, common));
    RegDeleteTreeW(root, AsWide(common));
    HKEY volatileKey = nullptr;
    ASSERT_EQ(RegCreateKeyExW(root, AsWide(common), 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                              nullptr, &volatileKey, nullptr),
              ERROR_SUCCESS);
    RegSetValueExW(volatileKey, L"CachePatterns", 0, REG_SZ, reinterpret_cast<const BYTE*>(L"0"),
                   4);
    RegCloseKey(volatileKey);
    const std::vector<std::string> before = State(config);

    const TransferOutcome outcome = Import(u"Shopwise", config, changesEveryPage);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_FALSE(outcome.wrote);
    EXPECT_NE(Said(outcome).find("The settings could not be written: Message Prompts/BadSpec was "
                                 "not stored as meant\nEverything that had been written was put "
                                 "back as it was.\n"),
              std::string::npos)
        << Said(outcome);
    EXPECT_EQ(State(config), before);
}

// The pages' saves of the settings file reach the disk in one write at the
// end; when that write fails, the registry values the pages wrote go back too.
TEST_F(ImportSafety, ASettingsFileThatCannotBeWrittenPutsBackEverything)
{
    const std::vector<std::string> before = State(config);
    TransferOutcome outcome;
    {
        RefusingWrites refusing(0);
        outcome = Import(u"Shopwise", config, changesEveryPage);
    }
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(Said(outcome).find("The settings could not be written: The file \""),
              std::string::npos)
        << Said(outcome);
    EXPECT_EQ(State(config), before);

    // The snapshot cannot read a file held open without sharing: nothing starts.
    HANDLE held = CreateFileW(AsWide(WithBackslashes(config + u"KEL.INI")), GENERIC_READ, 0,
                              nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    outcome = Import(u"Shopwise", config, changesEveryPage);
    CloseHandle(held);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(State(config), before);
}
