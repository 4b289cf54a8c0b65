// The history of saves: OK in the editor's dialog, an import and an undo
// each record the state before them, so that an undo puts file and registry
// back exactly and can itself be undone; only the newest 30 saves are kept;
// undo refuses over a save that the history does not know unless forced;
// a damaged entry is skipped with a message.
#include <string>

#include "app/KelConfigDialog.h"
#include "app/deploy/ConfigHistory.h"
#include "app/deploy/KelCfgCommand.h"
#include "app/pages/EditCommonOptions.h"
#include "app/pages/PageIds.h"
#include "framework/RegistryKey.h"
#include "tests/win/deploy/TransferTestSupport.h"

namespace
{
class Console : public CfgConsole
{
public:
    void Out(const KelText& text) override { out += text.ToUtf8(); }
    void Err(const KelText& line) override { err += line.ToUtf8() + "\n"; }
    std::string out;
    std::string err;
};

class History : public TransferTest
{
protected:
    History() : config(Configuration(u"config", u"Shopwise"))
    {
        ConfigHistory::SetRoot(tree.Folder(u"history"));
        app.SetApplicationName(u"EditKel");
        UseSettings(nullptr);
    }

public:
    History(const History&) = delete;
    History& operator=(const History&) = delete;
    ~History() override { ConfigHistory::SetRoot(KelText()); }

protected:
    // kelcfg with the arguments, on the test's configuration; answers the
    // exit code and keeps what it said in `console`.
    int Run(std::vector<KelText> arguments)
    {
        console = Console();
        arguments.emplace_back(u"-app=Shopwise");
        arguments.push_back(u"-config=" + config);
        KelCfgRequest request;
        if (ParseKelCfgArguments(arguments, request, console) != CfgParsed::Run)
            return kCfgUsage;
        return RunKelCfg(app, request, console, u"2024-01-02 03:04");
    }
    int ImportText(const std::string& text)
    {
        const KelText file = tree.Folder(u"import") + u"import.txt";
        GetFileSystem().WriteBytes(file, text.data(), text.size());
        return Run({u"import", file});
    }

    // The editor's dialog on the common options page: sets one switch and
    // presses OK.
    void OkWithSwitch(int id, bool ticked)
    {
        dialog = std::make_unique<KelConfigDialog>(nullptr, u"EditKel", u"Shopwise", u"KEL.INI");
        ASSERT_EQ(dialog->Show(false), 1);
        int32_t common = -1;
        for (int32_t i = 0; i < dialog->PageCount(); ++i)
            if (dynamic_cast<EditCommonOptions*>(dialog->Page(i)))
                common = i;
        ASSERT_TRUE(dialog->SelectPage(common));
        ::Tick(GetDlgItem(dialog->Page(common)->Handle(), id), ticked);
        Ok();
        EXPECT_FALSE(DialogOpen());
        dialog.reset();
    }

    std::vector<HistoryEntry> Entries()
    {
        std::vector<KelText> damaged;
        return ConfigHistory(app, u"Shopwise").Entries(damaged);
    }

    KelText config;
    Console console;
};
} // namespace

TEST_F(History, OkImportUndoAndUndoOfTheUndoPutBackFileAndRegistryExactly)
{
    // The dialog keeps its place on the screen, which is no setting: it is
    // there before the first save.
    dialog = std::make_unique<KelConfigDialog>(nullptr, u"EditKel", u"Shopwise", u"KEL.INI");
    ASSERT_EQ(dialog->Show(false), 1);
    Cancel();
    dialog.reset();
    const std::vector<std::string> original = State(config);
    OkWithSwitch(kCommonFancyToolbars, true);
    const std::vector<std::string> afterOk = State(config);
    ASSERT_NE(afterOk, original);

    ASSERT_EQ(ImportText("[Program Paths]\nDXF = D:/DXF\n[Common Options]\nNUMPAD = ON\n"), 0)
        << console.err;
    const std::vector<std::string> afterImport = State(config);
    ASSERT_NE(afterImport[afterImport.size() - 2], afterOk[afterOk.size() - 2]) << "file unchanged";

    // An OK that changes nothing is not recorded.
    OkWithSwitch(kCommonFancyToolbars, true);
    EXPECT_EQ(Entries().size(), 2u);

    EXPECT_EQ(Run({u"undo"}), 0) << console.err;
    EXPECT_EQ(State(config), afterOk);
    EXPECT_EQ(Run({u"undo"}), 0) << console.err; // the undo itself is undone
    EXPECT_EQ(State(config), afterImport);

    // The newest entry first, each with what its save changed.
    ASSERT_EQ(Run({u"history"}), 0);
    const std::vector<HistoryEntry> entries = Entries();
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[0].action.ToUtf8(), "undo " + entries[1].id.ToUtf8());
    EXPECT_EQ(entries[2].action.ToUtf8(), "import");
    EXPECT_EQ(entries[3].action.ToUtf8(), "OK");
    EXPECT_EQ(console.out.find(entries[0].id.ToUtf8()), 0u) << console.out;
    EXPECT_NE(console.out.find("  OK: Common Options/FancyToolbars: NO (default) -> YES\r\n"),
              std::string::npos)
        << console.out;
    EXPECT_NE(console.out.find("  import: Program Paths/DXF: "), std::string::npos);
    EXPECT_NE(console.out.find(" (and 1 more)\r\n"), std::string::npos);
    EXPECT_NE(console.out.find(WithBackslashes(config).ToUtf8()), std::string::npos);

    // A named entry puts back the state before that save.
    EXPECT_EQ(Run({u"undo", entries[3].id}), 0) << console.err;
    EXPECT_EQ(State(config), original);
    EXPECT_EQ(Run({u"undo", u"12345"}), 1);
    EXPECT_NE(console.err.find("No recorded save \"12345\" of Shopwise."), std::string::npos);
}

TEST_F(History, ThirtyOneSavesKeepTheNewestThirty)
{
    for (int i = 0; i < 31; ++i)
        ASSERT_EQ(ImportText(i % 2 ? "[Common Options]\nNUMPAD = OFF\n"
                                   : "[Common Options]\nNUMPAD = ON\n"),
                  0)
            << console.err;
    const std::vector<HistoryEntry> entries = Entries();
    ASSERT_EQ(entries.size(), 30u);
    for (size_t i = 1; i < entries.size(); ++i)
        EXPECT_GT(entries[i - 1].id.ToUtf8(), entries[i].id.ToUtf8());
    // The newest is the last import (ON -> OFF is odd: the 31st set ON).
    EXPECT_EQ(entries[0].changes.at(0).ToUtf8(), "Common Options/NUMPAD: OFF -> ON");
}

TEST_F(History, UndoRefusesOverASaveOutsideTheHistoryUnlessForced)
{
    const std::vector<std::string> original = State(config);
    ASSERT_EQ(ImportText("[Program Paths]\nDXF = D:/DXF\n"), 0) << console.err;
    // Another program writes the file without recording it.
    const std::string outside = Bytes(config + u"KEL.INI") + "[OTHER]\r\nX=1\r\n";
    GetFileSystem().WriteBytes(config + u"KEL.INI", outside.data(), outside.size());
    const std::vector<std::string> changed = State(config);

    EXPECT_EQ(Run({u"undo"}), 1);
    EXPECT_NE(console.err.find("was changed by a save that is not in the history; nothing was put "
                               "back. Add --force"),
              std::string::npos)
        << console.err;
    EXPECT_EQ(State(config), changed);
    EXPECT_EQ(Run({u"history", u"--force"}), kCfgUsage);

    EXPECT_EQ(Run({u"undo", u"--force"}), 0) << console.err;
    EXPECT_EQ(State(config), original);
    EXPECT_EQ(Entries().size(), 2u);
}

TEST_F(History, AHistoryThatCannotBeWrittenNeverStopsTheSave)
{
    // A file where the history's folder would be.
    const KelText blocker = tree.Folder(u"blocked") + u"file";
    GetFileSystem().WriteBytes(blocker, "x", 1);
    ConfigHistory::SetRoot(blocker);
    EXPECT_EQ(ImportText("[Common Options]\nNUMPAD = ON\n"), 0);
    EXPECT_NE(console.err.find("Warning: the history could not be written to"), std::string::npos)
        << console.err;
    EXPECT_NE(console.err.find("Values changed: 1."), std::string::npos);
}

TEST_F(History, ADamagedEntryIsSkippedWithAMessage)
{
    const std::vector<std::string> original = State(config);
    ASSERT_EQ(ImportText("[Common Options]\nNUMPAD = ON\n"), 0);
    ASSERT_EQ(ImportText("[Common Options]\nFancyToolbars = YES\n"), 0);
    const std::vector<HistoryEntry> entries = Entries();
    ASSERT_EQ(entries.size(), 2u);

    // Cut anywhere, an entry is refused by its reader, never misread.
    const std::string whole = ConfigHistory::Serialise(entries[0]);
    for (size_t size = 0; size < whole.size(); ++size)
    {
        HistoryEntry read;
        ASSERT_FALSE(ConfigHistory::Parse(whole.substr(0, size), read)) << size;
    }
    HistoryEntry again;
    ASSERT_TRUE(ConfigHistory::Parse(whole, again));
    EXPECT_EQ(ConfigHistory::Serialise(again), whole);

    const KelText folder = ConfigHistory(app, u"Shopwise").Folder();
    const std::string damaged = whole.substr(0, whole.size() / 2);
    GetFileSystem().WriteBytes(folder + entries[0].id + u".khist", damaged.data(), damaged.size());
    EXPECT_EQ(Run({u"history"}), 0);
    EXPECT_NE(console.err.find("The history entry " + entries[0].id.ToUtf8() +
                               " is damaged and was skipped."),
              std::string::npos)
        << console.err;
    EXPECT_EQ(console.out.find(entries[1].id.ToUtf8()), 0u) << console.out;

    // Undo goes to the newest entry that can be read (the second import
    // changed the registry only, so the file is as the first one left it).
    EXPECT_EQ(Run({u"undo"}), 0) << console.err;
    EXPECT_NE(console.err.find("is damaged and was skipped."), std::string::npos);
    EXPECT_EQ(State(config), original);
}

// A state kept as bytes and put back later: values of every type (empty,
// binary, several strings, a name that differs only in case), sub-keys,
// a key tree that did not exist, and the settings file.
TEST_F(History, AStateKeptAsBytesIsPutBackExactly)
{
    const KelText branch = ProductKey(u"Shopwise", u"Kept");
    RegistryKey key;
    ASSERT_TRUE(key.Create(branch + u"Sub\\Deeper"));
    ASSERT_TRUE(key.WriteRaw(u"Empty", REG_BINARY, std::string()));
    ASSERT_TRUE(key.Create(branch));
    ASSERT_TRUE(key.WriteRaw(u"Bytes", REG_BINARY, std::string("\0\xFF\x01", 3)));
    ASSERT_TRUE(key.WriteRaw(u"Many", REG_MULTI_SZ, std::string("a\0\0\0b\0\0\0\0\0", 10)));
    ASSERT_TRUE(key.WriteString(u"Text", u"t\u00e9xt"));
    key.Close();
    const std::vector<std::string> before = State(config);

    StateSnapshot taken;
    taken.AddRegistryTree(branch);
    taken.AddRegistryTree(ProductKey(u"Shopwise", u"NotThere"));
    taken.AddFile(config + u"KEL.INI");
    KelText unreadable;
    ASSERT_TRUE(taken.Take(unreadable)) << unreadable.ToUtf8();
    StateSnapshot kept;
    ASSERT_TRUE(kept.FromBytes(taken.ToBytes()));
    EXPECT_TRUE(kept == taken);

    ASSERT_TRUE(key.Create(branch));
    key.WriteRaw(u"Bytes", REG_DWORD, std::string(4, '\0'));
    key.DeleteValue(u"TEXT");
    key.WriteString(u"Added", u"x");
    key.Close();
    RegistryKey::DeleteTree(branch + u"Sub");
    ASSERT_TRUE(key.Create(ProductKey(u"Shopwise", u"NotThere\\Below")));
    key.Close();
    GetFileSystem().WriteBytes(config + u"KEL.INI", "changed", 7);
    ASSERT_NE(State(config), before);

    EXPECT_TRUE(kept.Restore().empty());
    EXPECT_EQ(State(config), before);
    EXPECT_TRUE(kept.Unchanged());
    EXPECT_FALSE(RegistryKey::Exists(ProductKey(u"Shopwise", u"NotThere")));

    // Bytes that are not a whole snapshot give none, at any length.
    const std::string whole = taken.ToBytes();
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_FALSE(kept.FromBytes(whole.substr(0, size))) << size;
}
