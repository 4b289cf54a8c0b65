#include "platform/FileSystem.h"

#include "platform/FolderProbes.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstring>
#include <map>
#include <mutex>
#include <thread>

#include "platform/CodePage.h"

namespace
{
FileSystem* installed = nullptr;
std::atomic<uint32_t> lockWait{5000};
std::atomic<uint32_t> replaceWait{1000};

// The update locks this process holds, by lock file (letters folded, as the
// file systems of Windows fold them): how often each is taken and the handle
// of its lock file (null when the folder allowed none).
struct HeldLock
{
    int count = 0;
    void* handle = nullptr;
    FileSystem* owner = nullptr;
    std::u16string lockPath;
};
std::mutex heldMutex;
std::map<std::u16string, HeldLock>& HeldLocks()
{
    static std::map<std::u16string, HeldLock> held;
    return held;
}

std::u16string Folded(std::u16string_view path)
{
    std::u16string folded(path);
    for (char16_t& unit : folded)
        if (unit >= u'A' && unit <= u'Z')
            unit = char16_t(unit - u'A' + u'a');
        else if (unit == u'\\')
            unit = u'/';
    return folded;
}
} // namespace

std::string PathRef::ToUtf8() const
{
    const int32_t length = int32_t(View().size());
    if (length == 0)
        return {};
    std::string utf8(size_t(length) * 3, '\0');
    const int32_t written =
        CodePage::FromWide(CodePage::Utf8, text, length, utf8.data(), int32_t(utf8.size()));
    utf8.resize(size_t(written > 0 ? written : 0));
    return utf8;
}

size_t MemoryReader::Read(void* into, size_t size)
{
    const size_t count = std::min({size, piece, bytes.size() - at});
    std::memcpy(into, bytes.data() + at, count);
    at += count;
    return count;
}

FolderState FileSystem::ProbeFolder(PathRef folder, bool)
{
    const FileState state = Query(folder);
    if (!state.exists)
        return FolderState::Missing;
    return state.folder ? FolderState::Fine : FolderState::NotFolder;
}

std::unique_ptr<FileReader> FileSystem::OpenReader(PathRef path)
{
    std::string bytes;
    if (!ReadBytes(path, bytes))
        return nullptr;
    return std::make_unique<MemoryReader>(std::move(bytes));
}

std::u16string TemporaryPathFor(std::u16string_view target)
{
    return std::u16string(target) + u".~new";
}

std::u16string LockPathFor(std::u16string_view target)
{
    return std::u16string(target) + u".~lock";
}

uint32_t FileSystem::LockWait()
{
    return lockWait.load();
}

void FileSystem::SetLockWait(uint32_t milliseconds)
{
    lockWait.store(milliseconds);
}

uint32_t FileSystem::ReplaceWait()
{
    return replaceWait.load();
}

void FileSystem::SetReplaceWait(uint32_t milliseconds)
{
    replaceWait.store(milliseconds);
}

// ---------------------------------------------------------------------------
// the update lock

FileLock FileSystem::Lock(PathRef path)
{
    FileLock lock;
    if (path.IsEmpty())
        return lock;
    const std::u16string lockPath = LockPathFor(FinalPath(path));
    const std::u16string key = Folded(lockPath);
    {
        std::scoped_lock guard(heldMutex);
        const auto found = HeldLocks().find(key);
        if (found != HeldLocks().end())
        {
            ++found->second.count;
            lock.owner = this;
            lock.lockPath = key;
            lock.held = true;
            return lock;
        }
    }
    // Another program holds it: try again every few milliseconds, at first
    // often (a save takes milliseconds), then less so.
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(LockWait());
    std::chrono::milliseconds pause(2);
    for (;;)
    {
        void* handle = nullptr;
        const LockAttempt attempt = TryLockFile(PathRef(lockPath.c_str()), handle);
        if (attempt != LockAttempt::Busy)
        {
            std::scoped_lock guard(heldMutex);
            HeldLock& held = HeldLocks()[key];
            held.count = 1;
            held.handle = attempt == LockAttempt::Taken ? handle : nullptr;
            held.owner = this;
            held.lockPath = lockPath;
            lock.owner = this;
            lock.lockPath = key;
            lock.held = true;
            return lock;
        }
        if (std::chrono::steady_clock::now() >= until)
            return lock;
        std::this_thread::sleep_for(pause);
        pause = std::min(pause * 2, std::chrono::milliseconds(50));
    }
}

void FileSystem::Unlock(const std::u16string& key)
{
    HeldLock released;
    {
        std::scoped_lock guard(heldMutex);
        const auto found = HeldLocks().find(key);
        if (found == HeldLocks().end() || --found->second.count > 0)
            return;
        released = found->second;
        HeldLocks().erase(found);
    }
    if (released.handle)
        released.owner->UnlockFile(PathRef(released.lockPath.c_str()), released.handle);
}

FileLock::FileLock(FileLock&& other) noexcept
    : owner(other.owner), lockPath(std::move(other.lockPath)), held(other.held)
{
    other.held = false;
}

FileLock& FileLock::operator=(FileLock&& other) noexcept
{
    if (this != &other)
    {
        Release();
        owner = other.owner;
        lockPath = std::move(other.lockPath);
        held = other.held;
        other.held = false;
    }
    return *this;
}

void FileLock::Release()
{
    if (!held)
        return;
    held = false;
    owner->Unlock(lockPath);
}

// ---------------------------------------------------------------------------
// the one whole-file write

WriteResult FileSystem::WriteBytes(PathRef path, const void* data, size_t size)
{
    if (path.IsEmpty())
        return {WriteError::Failed};
    const std::u16string target = FinalPath(path);
    const PathRef targetRef(target.c_str());
    const FileLock lock = Lock(targetRef);
    if (!lock.Held())
        return {WriteError::Busy};
    const FileState state = Query(targetRef);
    if (state.folder)
        return {WriteError::Failed};
    if (state.exists && state.readOnly)
        return {WriteError::ReadOnly};

    const std::u16string temporary = TemporaryPathFor(target);
    const PathRef temporaryRef(temporary.c_str());
    Step step = WriteNew(temporaryRef, data, size);
    if (step == Step::Done)
    {
        // A file that any program has open cannot be replaced (on Windows as
        // under Wine, whatever it shares). Readers hold a settings file for a
        // moment only: try again for a while before writing in place, which
        // a reader could see half done.
        const auto until =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(ReplaceWait());
        while ((step = MoveOver(temporaryRef, targetRef)) == Step::Refused &&
               std::chrono::steady_clock::now() < until)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (step == Step::Done)
        return {};
    Remove(temporaryRef);
    if (step == Step::Failed)
        return {WriteError::Failed};

    // The folder takes no new file, or another program keeps the target open
    // (an editor, a virus scanner): the target
    // is written over in place. That write is not atomic, so the previous
    // bytes are read first and put back should it fail; a target that exists
    // but cannot be read is not written at all, since it could not be repaired.
    std::string previous;
    if (state.exists && !ReadBytes(targetRef, previous))
        return {WriteError::Failed};
    if (WriteInPlace(targetRef, data, size))
        return {};
    if (state.exists)
        WriteInPlace(targetRef, previous.data(), previous.size());
    else
        Remove(targetRef);
    return {WriteError::Failed};
}

FileSystem& GetFileSystem()
{
    return installed ? *installed : GetPlatformFileSystem();
}

FileSystem* SetFileSystem(FileSystem* fileSystem)
{
    // Probes still running inside the file system being replaced (a test's,
    // which goes next) finish first.
    FolderProbes::WaitUntilIdle(10000);
    FileSystem* previous = installed ? installed : &GetPlatformFileSystem();
    installed = fileSystem;
    return previous;
}
