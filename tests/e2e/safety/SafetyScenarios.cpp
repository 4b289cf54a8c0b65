// A configuration that several programs of ours change at once, as a shared
// KEL.INI on an office server meets them: two kelcfg imports at the same time
// while a third program keeps reading the file, lines of other programs kept
// by the editor's OK, and a read-only settings file refused by kelcfg.
#include <atomic>
#include <fstream>
#include <thread>

#include "tests/e2e/support/KelCfgRun.h"

using namespace EditKelSession;

namespace
{
constexpr int CommonNumpad = 802;

class Safety : public Scenario
{
protected:
    std::wstring Config() const { return L"\"-config=" + demo.wstring() + L"\""; }
    fs::path Ini() const { return demo / L"KEL.INI"; }
    // Imports `text` into the demo copy for Shopwise; `run` keeps the files of
    // runs at the same time apart.
    Finished Import(const std::string& text, const wchar_t* run)
    {
        const fs::path file = fs::temp_directory_path() / L"kel-e2e" / run / L"import.txt";
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary | std::ios::trunc) << text;
        return RunKelCfg(L"import -app=Shopwise " + Config() + L" \"" + file.wstring() + L"\"",
                         run);
    }
};

// Whether the bytes are a whole settings file as the programs write it: the
// mark, then lines that end in CR LF, the sections of the demo among them.
bool Parses(const std::string& bytes)
{
    if (bytes.size() < 4 || !bytes.starts_with("\xFF\xFE") || bytes.size() % 2 != 0)
        return false;
    const std::wstring text(reinterpret_cast<const wchar_t*>(bytes.data() + 2),
                            (bytes.size() - 2) / 2);
    return text.size() >= 2 && text.ends_with(L"\r\n") &&
           text.find(L"\r\n[PROGRAM PATHS]\r\n") != std::wstring::npos &&
           text.find(L"[GENERAL]\r\n") != std::wstring::npos;
}
} // namespace

TEST_F(Safety, TwoImportsAtOnceKeepEachOthersValuesWhileAnotherProgramReads)
{
    demo = DemoCopy(L"Concurrent");
    // The first save turns the demo's ANSI file into the programs' UTF-16 one.
    ASSERT_EQ(Import("[Common Options]\nNUMPAD = ON\n", L"first").exitCode, 0u);
    ASSERT_TRUE(Parses(FileBytes(Ini())));

    constexpr int Rounds = 100;
    std::atomic<int> running{2};
    std::atomic<int> reads{0}, torn{0};
    std::thread reader(
        [&]
        {
            while (running > 0)
            {
                ++reads;
                if (!Parses(FileBytes(Ini())))
                    ++torn;
            }
        });
    // Each side sets options the other never touches: one on the same page
    // (a program path each) and one on a page of its own.
    struct Side
    {
        const wchar_t* name;
        std::wstring pathKey;
        int failed = 0;
        int lost = 0;
        std::string said;  // what the first failed import said
        std::string found; // what was read the first time the value was missing
    };
    Side sides[2] = {{L"importer-a", L"DXF", 0, 0, {}, {}},
                     {L"importer-b", L"Images", 0, 0, {}, {}}};
    auto importing = [&](Side& side, bool first)
    {
        for (int round = 0; round < Rounds; ++round)
        {
            const std::string folder = (first ? "D:/A/" : "D:/B/") + std::to_string(round) + "/";
            const std::string other =
                first ? std::string("[Common Options]\nNUMPAD = ") + (round % 2 ? "ON" : "OFF")
                      : "[Product Options]\nSUPPORT = B " + std::to_string(round);
            std::string text = "[Program Paths]\n";
            text.append(Utf8(side.pathKey)).append(" = ").append(folder).append("\n");
            text.append(other).append("\n");
            const Finished run = Import(text, side.name);
            if (run.exitCode != 0 && side.failed++ == 0)
                side.said = run.err;
            // Until this side's next import, nothing may take its value away.
            const std::string bytes = FileBytes(Ini());
            const auto value = SettingsValue(Ini(), L"PROGRAM PATHS", side.pathKey);
            if (value != std::wstring(folder.begin(), folder.end()) && side.lost++ == 0)
                side.found = "round " + std::to_string(round) + ", import exit " +
                             std::to_string(run.exitCode) + ", value " +
                             (value ? Utf8(*value) : std::string("missing")) + ", file of " +
                             std::to_string(bytes.size()) + " bytes";
        }
        --running;
    };
    std::thread a(importing, std::ref(sides[0]), true);
    std::thread b(importing, std::ref(sides[1]), false);
    a.join();
    b.join();
    reader.join();

    std::printf("two writers: %i imports each, %i reads, torn reads %i, failed imports %i/%i, "
                "values lost %i/%i\n",
                Rounds, reads.load(), torn.load(), sides[0].failed, sides[1].failed, sides[0].lost,
                sides[1].lost);
    EXPECT_EQ(torn.load(), 0);
    EXPECT_GT(reads.load(), Rounds);
    for (const Side& side : sides)
    {
        EXPECT_EQ(side.failed, 0) << Utf8(side.name) << ": " << side.said;
        EXPECT_EQ(side.lost, 0) << Utf8(side.name) << ": " << side.found;
    }
    EXPECT_EQ(SettingsValue(Ini(), L"PROGRAM PATHS", L"DXF"), L"D:/A/99/");
    EXPECT_EQ(SettingsValue(Ini(), L"PROGRAM PATHS", L"Images"), L"D:/B/99/");
    EXPECT_EQ(SettingsValue(Ini(), L"GENERAL", L"NUMPAD"), L"ON");
    EXPECT_EQ(SettingsValue(Ini(), L"GENERAL", L"SUPPORT"), L"B 99");
    // No temporary or lock file is left beside the settings file.
    EXPECT_FALSE(fs::exists(demo / L"KEL.INI.~new"));
    EXPECT_FALSE(fs::exists(demo / L"KEL.INI.~lock"));
}

TEST_F(Safety, LinesOfOtherProgramsWrittenWhileTheDialogIsOpenSurviveItsOk)
{
    TargetProcess editor = OpenDemo(L"Shopwise");
    // Another program adds a section of its own, and kelcfg changes a value
    // of a page the user does not open.
    {
        std::string bytes = FileBytes(Ini());
        bytes += "[Scanner]\r\nPORT=COM3\r\n";
        std::ofstream(Ini(), std::ios::binary | std::ios::trunc) << bytes;
    }
    ASSERT_EQ(Import("[Product Options]\nSUPPORT = Changed meanwhile\n", L"meanwhile").exitCode,
              0u);

    HWND page = ShowPage(dialog, L"Common Options", CommonNumpad);
    SetChecked(Control(page, CommonNumpad), true);
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);

    EXPECT_EQ(SettingsValue(Ini(), L"GENERAL", L"NUMPAD"), L"ON");
    EXPECT_EQ(SettingsValue(Ini(), L"Scanner", L"PORT"), L"COM3");
    EXPECT_EQ(SettingsValue(Ini(), L"GENERAL", L"SUPPORT"), L"Changed meanwhile");
}

TEST_F(Safety, KelcfgRefusesAReadOnlySettingsFileAndChangesNothing)
{
    demo = DemoCopy(L"ReadOnly");
    const std::string before = FileBytes(Ini());
    ASSERT_TRUE(SetFileAttributesW(Ini().c_str(), FILE_ATTRIBUTE_READONLY));

    const Finished run = Import("[Common Options]\nLanguage = Deutsch\nNUMPAD = ON\n", L"ro");
    EXPECT_EQ(run.exitCode, 1u);
    EXPECT_NE(run.err.find("read-only"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(Utf8(Ini().wstring())), std::string::npos) << run.err;
    EXPECT_EQ(FileBytes(Ini()), before);
    EXPECT_EQ(ReadString(L"Shopwise", L"Language"), std::nullopt);
    EXPECT_NE(GetFileAttributesW(Ini().c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
    SetFileAttributesW(Ini().c_str(), FILE_ATTRIBUTE_NORMAL);
}
