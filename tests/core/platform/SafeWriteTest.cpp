// The one whole-file write: a crash at any step leaves the old or the new
// file, read-only files are refused, a target that cannot be replaced is
// written in place, and saves of the same file take turns.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "settings/iniFile.h"
#include "tests/core/CoreTestSupport.h"
#include "tests/core/dictionary/DictionarySupport.h"
#include "tests/core/platform/FileSystemDoubles.h"
#include "text/TextHolder.h"

namespace
{
struct CrashCount
{
    int points = 0;
    int torn = 0;
    int leftovers = 0; // files other than the target after the next save
};

// Runs `save` once to learn its steps, then again from `start` stopped after
// every step and inside every write at every chosen byte. After each stop the
// target must hold `before` or exactly what the full save wrote; then a save
// that runs to its end must leave nothing beside the target.
CrashCount CrashAtEveryStep(MemoryFiles& memory, const std::u16string& target,
                            const std::function<void()>& save)
{
    const std::map<std::u16string, std::string> start = memory.files;
    const std::string before = start.count(target) ? start.at(target) : std::string();
    CrashingFiles crashing(&memory);
    crashing.StopAfter(-1);
    save();
    const std::string after = memory.files[target];
    EXPECT_NE(after, before);
    const std::vector<CrashingFiles::Operation> steps = crashing.Seen();

    CrashCount count;
    auto tryStop = [&](int64_t step, size_t atByte)
    {
        memory.files = start;
        memory.locked.clear();
        crashing.StopAfter(step, atByte);
        try
        {
            save();
        }
        catch (const WorldStopped&) // NOLINT(bugprone-empty-catch): the crash it simulates
        {
        }
        ++count.points;
        const auto found = memory.files.find(target);
        const std::string now = found == memory.files.end() ? std::string() : found->second;
        if (now != before && now != after)
            ++count.torn;
        // The system released the lock with the process; the next save cleans up.
        EXPECT_TRUE(memory.locked.empty());
        crashing.StopAfter(-1);
        save();
        if (memory.files.size() != start.size() + (start.count(target) ? 0 : 1) ||
            memory.files[target] != after)
            ++count.leftovers;
    };
    for (size_t step = 0; step < steps.size(); ++step)
    {
        if (steps[step].writes)
            for (size_t atByte : CrashBytes(steps[step].size))
                tryStop(int64_t(step), atByte);
        tryStop(int64_t(step), SIZE_MAX);
    }
    return count;
}

std::string SettingsFile(int lines)
{
    std::string text = "[GENERAL]\r\nNUMPAD=OFF\r\n[PROGRAM PATHS]\r\n";
    for (int i = 0; i < lines; ++i)
        text += "Path" + std::to_string(i) + "=C:/Jobs/Folder " + std::to_string(i) + "/\r\n";
    return text;
}
} // namespace

TEST(SafeWrite, ACrashAtAnyStepLeavesTheOldOrTheNewFile)
{
    MemoryFiles memory;
    RecordingServices shown;

    // A settings save of a file of about 12 KB: read, edit, write.
    memory.files[u"KEL.INI"] = SettingsFile(300);
    KelText numpad(u"ON");
    auto saveSettings = [&]
    {
        iniFile file(u"KEL.INI");
        file.Add(new iniString(u"GENERAL", u"NUMPAD", &numpad, u"OFF"));
        file.WriteAll(nullptr, nullptr, 1);
    };
    const CrashCount settings = CrashAtEveryStep(memory, u"KEL.INI", saveSettings);
    EXPECT_GT(settings.points, 250);
    EXPECT_EQ(settings.torn, 0);
    EXPECT_EQ(settings.leftovers, 0);

    // A dictionary written over an older one.
    memory.files.clear();
    SampleFile(memory, u"diction.ary");
    TextHolder holder;
    ASSERT_TRUE(holder.Load(KelText(u"diction.ary"), KelText(u"all"), true));
    holder.Entry(0)->SetText(0, KelText(u"changed"));
    auto saveDictionary = [&] { holder.Save(KelText(u"diction.ary")); };
    const CrashCount dictionary = CrashAtEveryStep(memory, u"diction.ary", saveDictionary);
    EXPECT_GT(dictionary.points, 100);
    EXPECT_EQ(dictionary.torn, 0);
    EXPECT_EQ(dictionary.leftovers, 0);
    std::printf("crash points: settings %i, dictionary %i; torn files: %i\n", settings.points,
                dictionary.points, settings.torn + dictionary.torn);
}

TEST(SafeWrite, ReadOnlyFilesAreRefusedAndTargetsThatCannotBeReplacedAreWrittenInPlace)
{
    MemoryFiles memory;
    RecordingServices shown;
    memory.files[u"KEL.INI"] = "[GENERAL]\r\nNUMPAD=OFF\r\n";
    const std::string before = memory.files[u"KEL.INI"];

    memory.readOnly.insert(u"KEL.INI");
    EXPECT_EQ(memory.WriteBytes(u"KEL.INI", "x", 1).error, WriteError::ReadOnly);
    KelText numpad(u"ON");
    iniFile file(u"KEL.INI");
    file.Add(new iniString(u"GENERAL", u"NUMPAD", &numpad, u"OFF"));
    EXPECT_EQ(file.SaveEntries(nullptr, nullptr, 1), 0);
    EXPECT_EQ(memory.files[u"KEL.INI"], before);
    EXPECT_EQ(memory.files.size(), 1u);
    ASSERT_EQ(shown.errors.size(), 1u); // text 240 with the path
    EXPECT_EQ(shown.errors[0].second, u"KEL.INI");
    memory.readOnly.clear();

    // The target is held open without letting it be replaced: written in
    // place; when that write fails too, the previous bytes are put back.
    class Unreplaceable : public PassThroughFiles
    {
    public:
        using PassThroughFiles::PassThroughFiles;
        Step MoveOver(PathRef, PathRef) override { return Step::Refused; }
        bool WriteInPlace(PathRef path, const void* data, size_t size) override
        {
            ++inPlace;
            return failInPlace-- > 0 ? (PassThroughFiles::WriteInPlace(path, data, 1), false)
                                     : PassThroughFiles::WriteInPlace(path, data, size);
        }
        int inPlace = 0;
        int failInPlace = 0;
    } unreplaceable(&memory);
    EXPECT_TRUE(unreplaceable.WriteBytes(u"KEL.INI", "new", 3));
    EXPECT_EQ(memory.files[u"KEL.INI"], "new");
    EXPECT_EQ(memory.files.size(), 1u);
    unreplaceable.failInPlace = 1;
    EXPECT_EQ(unreplaceable.WriteBytes(u"KEL.INI", "newer", 5).error, WriteError::Failed);
    EXPECT_EQ(memory.files[u"KEL.INI"], "new");
    EXPECT_EQ(unreplaceable.inPlace, 3);
}

// The write in place is the last resort: it must never leave a half-written
// file, neither where there was none nor over a file it could not read first.
TEST(SafeWrite, AFailedWriteInPlaceLeavesNoHalfWrittenFile)
{
    MemoryFiles memory;
    class NoNewFiles : public PassThroughFiles
    {
    public:
        using PassThroughFiles::PassThroughFiles;
        Step WriteNew(PathRef, const void*, size_t) override { return Step::Refused; }
        bool WriteInPlace(PathRef path, const void* data, size_t) override
        {
            PassThroughFiles::WriteInPlace(path, data, 1); // torn after its first byte
            return false;
        }
    } noNewFiles(&memory);

    // No file before: the torn one is removed again.
    EXPECT_EQ(noNewFiles.WriteBytes(u"KEL.INI", "new", 3).error, WriteError::Failed);
    EXPECT_TRUE(memory.files.empty());

    // A file that cannot be read is not written, since it could not be repaired.
    memory.files[u"KEL.INI"] = "old";
    memory.unreadable = true;
    EXPECT_EQ(noNewFiles.WriteBytes(u"KEL.INI", "new", 3).error, WriteError::Failed);
    EXPECT_EQ(memory.files[u"KEL.INI"], "old");
    EXPECT_EQ(memory.writes, 1);
}

TEST(SafeWrite, SavesOfTheSameFileTakeTurns)
{
    MemoryFiles memory;
    RecordingServices shown;
    const uint32_t wait = FileSystem::LockWait();
    FileSystem::SetLockWait(100);

    // The lock is taken again at once inside the process (an import's saves).
    {
        const FileLock outer = memory.Lock(u"KEL.INI");
        ASSERT_TRUE(outer.Held());
        EXPECT_TRUE(memory.WriteBytes(u"KEL.INI", "a", 1));
        EXPECT_EQ(memory.locked.size(), 1u);
    }
    EXPECT_TRUE(memory.locked.empty());

    // Another program holds it past the wait: the save is refused, nothing
    // is written, and the user is told.
    void* handle = nullptr;
    ASSERT_EQ(memory.TryLockFile(LockPathFor(u"KEL.INI").c_str(), handle),
              FileSystem::LockAttempt::Taken);
    const auto started = std::chrono::steady_clock::now();
    EXPECT_EQ(memory.WriteBytes(u"KEL.INI", "b", 1).error, WriteError::Busy);
    EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(100));
    KelText numpad(u"ON");
    iniFile file(u"KEL.INI");
    file.Add(new iniString(u"GENERAL", u"NUMPAD", &numpad, u"OFF"));
    EXPECT_EQ(file.SaveEntries(nullptr, nullptr, 1), 0);
    EXPECT_EQ(memory.files[u"KEL.INI"], "a");
    EXPECT_EQ(shown.errors.size(), 1u);
    memory.UnlockFile(LockPathFor(u"KEL.INI").c_str(), handle);
    EXPECT_EQ(file.SaveEntries(nullptr, nullptr, 1), 1);
    FileSystem::SetLockWait(wait);
}

// Real files of this platform's implementation: a target that cannot be
// replaced is written over in place, and a shorter content leaves nothing of
// the longer one after it; a folder is never written.
TEST(SafeWrite, RealFilesWrittenInPlaceLoseTheirOldTail)
{
    namespace fs = std::filesystem;
    const fs::path folder =
        fs::temp_directory_path() /
        ("kel-in-place-" +
         std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    fs::create_directories(folder);
    const std::u16string target = (folder / "KEL.INI").u16string();
    class Unreplaceable : public PassThroughFiles
    {
    public:
        Step MoveOver(PathRef, PathRef) override { return Step::Refused; }
    } unreplaceable;
    const uint32_t wait = FileSystem::ReplaceWait();
    FileSystem::SetReplaceWait(0);

    ASSERT_TRUE(unreplaceable.WriteBytes(target.c_str(), "[GENERAL]\r\nNUMPAD=OFF\r\n", 23));
    ASSERT_TRUE(unreplaceable.WriteBytes(target.c_str(), "[A]\r\n", 5));
    std::string bytes;
    ASSERT_TRUE(GetPlatformFileSystem().ReadBytes(target.c_str(), bytes));
    EXPECT_EQ(bytes, "[A]\r\n");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);

    EXPECT_EQ(GetPlatformFileSystem().WriteBytes(folder.u16string(), "x", 1).error,
              WriteError::Failed);
    EXPECT_TRUE(fs::is_directory(folder));
    fs::remove_all(folder);
    FileSystem::SetReplaceWait(wait);
}

#ifndef _WIN32
// Real files of the portable implementation: the permissions and the file a
// symbolic link points to are kept, and nothing is left beside the target.
TEST(SafeWrite, RealFilesKeepTheirPermissionsAndLinks)
{
    namespace fs = std::filesystem;
    const fs::path folder =
        fs::temp_directory_path() /
        ("kel-safe-write-" +
         std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
    fs::create_directories(folder);
    const fs::path real = folder / "real.ini";
    const fs::path link = folder / "KEL.INI";
    FileSystem& files = GetPlatformFileSystem();
    ASSERT_TRUE(files.WriteBytes(real.u16string(), "old", 3));
    fs::permissions(real, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    fs::create_symlink(real, link);

    ASSERT_TRUE(files.WriteBytes(link.u16string(), "new", 3));
    EXPECT_TRUE(fs::is_symlink(link));
    std::string bytes;
    ASSERT_TRUE(files.ReadBytes(real.u16string(), bytes));
    EXPECT_EQ(bytes, "new");
    EXPECT_EQ(fs::status(real).permissions() & fs::perms::all,
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);

    fs::permissions(real, fs::perms::owner_read);
    EXPECT_EQ(files.WriteBytes(link.u16string(), "newer", 5).error, WriteError::ReadOnly);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 2);
    fs::remove_all(folder);
}
#endif
