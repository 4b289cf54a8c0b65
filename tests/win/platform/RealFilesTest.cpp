// The safe write on real files under Wine.
#include <windows.h>

#include <chrono>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/FileSystem.h"

namespace fs = std::filesystem;

namespace
{
class RealFiles : public ::testing::Test
{
protected:
    void SetUp() override
    {
        folder = fs::temp_directory_path() /
                 (L"kel-real-files-" +
                  std::to_wstring(std::chrono::steady_clock::now().time_since_epoch().count()));
        fs::create_directories(folder);
        target = (folder / L"KEL.INI").u16string();
    }
    void TearDown() override
    {
        SetFileAttributesW(Wide(), FILE_ATTRIBUTE_NORMAL);
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    const wchar_t* Wide() const { return reinterpret_cast<const wchar_t*>(target.c_str()); }
    std::string Bytes() const
    {
        std::string bytes;
        GetPlatformFileSystem().ReadBytes(target.c_str(), bytes);
        return bytes;
    }
    // The names in the folder besides the target.
    int Others() const
    {
        int count = 0;
        for (const auto& entry : fs::directory_iterator(folder))
            count += entry.path().filename() != L"KEL.INI";
        return count;
    }

    fs::path folder;
    std::u16string target;
    FileSystem& files = GetPlatformFileSystem();
};
} // namespace

TEST_F(RealFiles, AReplacementKeepsTheTargetsAttributesAndLeavesNothingBehind)
{
    ASSERT_TRUE(files.WriteBytes(target.c_str(), "old", 3));
    ASSERT_TRUE(SetFileAttributesW(Wide(), FILE_ATTRIBUTE_HIDDEN));
    ASSERT_TRUE(files.WriteBytes(target.c_str(), "new", 3));
    EXPECT_EQ(Bytes(), "new");
    EXPECT_NE(GetFileAttributesW(Wide()) & FILE_ATTRIBUTE_HIDDEN, 0u);
    EXPECT_EQ(Others(), 0);

    // Read-only: refused, the attribute kept, nothing written.
    ASSERT_TRUE(SetFileAttributesW(Wide(), FILE_ATTRIBUTE_READONLY));
    EXPECT_EQ(files.WriteBytes(target.c_str(), "newer", 5).error, WriteError::ReadOnly);
    EXPECT_EQ(Bytes(), "new");
    EXPECT_NE(GetFileAttributesW(Wide()) & FILE_ATTRIBUTE_READONLY, 0u);
    EXPECT_EQ(Others(), 0);
}

TEST_F(RealFiles, ATargetHeldOpenWithoutDeleteSharingIsWrittenInPlace)
{
    ASSERT_TRUE(files.WriteBytes(target.c_str(), "old content", 11));
    // As another program reads it (the C library's fopen shares reading and
    // writing, not deleting), for longer than a write waits.
    const uint32_t wait = FileSystem::ReplaceWait();
    FileSystem::SetReplaceWait(20);
    HANDLE held = CreateFileW(Wide(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(files.WriteBytes(target.c_str(), "new", 3));
    FileSystem::SetReplaceWait(wait);
    CloseHandle(held);
    EXPECT_EQ(Bytes(), "new");
    EXPECT_EQ(Others(), 0);

    // Held without any sharing: cannot be read first, so nothing is written.
    held = CreateFileW(Wide(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    EXPECT_EQ(files.WriteBytes(target.c_str(), "newer", 5).error, WriteError::Failed);
    CloseHandle(held);
    EXPECT_EQ(Bytes(), "new");
    EXPECT_EQ(Others(), 0);

    // Any reader keeps the file from being replaced, whatever it shares (as on
    // Windows): the write tries again for a while, then goes in place.
    held = CreateFileW(Wide(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                       nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    const std::u16string temporary = TemporaryPathFor(target);
    ASSERT_EQ(files.WriteNew(temporary.c_str(), "newest", 6), FileSystem::Step::Done);
    EXPECT_EQ(files.MoveOver(temporary.c_str(), target.c_str()), FileSystem::Step::Refused);
    files.Remove(temporary.c_str());
    FileSystem::SetReplaceWait(20);
    EXPECT_TRUE(files.WriteBytes(target.c_str(), "newest", 6));
    FileSystem::SetReplaceWait(wait);
    CloseHandle(held);
    EXPECT_EQ(Bytes(), "newest");
    EXPECT_EQ(Others(), 0);
}

TEST_F(RealFiles, TheLockFileIsExclusiveAndGoesWithItsHolder)
{
    const std::u16string lockPath = LockPathFor(target);
    void* first = nullptr;
    void* second = nullptr;
    ASSERT_EQ(files.TryLockFile(lockPath.c_str(), first), FileSystem::LockAttempt::Taken);
    EXPECT_EQ(files.TryLockFile(lockPath.c_str(), second), FileSystem::LockAttempt::Busy);
    EXPECT_EQ(Others(), 1);

    // Another holder past the wait: the write is refused.
    const uint32_t wait = FileSystem::LockWait();
    FileSystem::SetLockWait(50);
    EXPECT_EQ(files.WriteBytes(target.c_str(), "x", 1).error, WriteError::Busy);
    FileSystem::SetLockWait(wait);
    EXPECT_FALSE(fs::exists(folder / L"KEL.INI"));

    files.UnlockFile(lockPath.c_str(), first);
    EXPECT_EQ(Others(), 0);
    ASSERT_EQ(files.TryLockFile(lockPath.c_str(), second), FileSystem::LockAttempt::Taken);
    files.UnlockFile(lockPath.c_str(), second);
}
