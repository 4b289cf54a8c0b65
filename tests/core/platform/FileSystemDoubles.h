#pragma once
// File systems that tests install over another one (the platform's unless
// given): one that passes every step through, for tests to override single
// steps, and one that stops the world after a chosen step of a write.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/FileSystem.h"
#include "platform/FolderProbes.h"

class PassThroughFiles : public FileSystem
{
public:
    explicit PassThroughFiles(FileSystem* inner = nullptr)
        : inner(inner ? *inner : GetPlatformFileSystem()), previous(SetFileSystem(this))
    {
    }
    ~PassThroughFiles() override { SetFileSystem(previous); }
    PassThroughFiles(const PassThroughFiles&) = delete;
    PassThroughFiles& operator=(const PassThroughFiles&) = delete;

    bool ReadBytes(PathRef path, std::string& bytes) override
    {
        return inner.ReadBytes(path, bytes);
    }
    std::unique_ptr<FileReader> OpenReader(PathRef path) override { return inner.OpenReader(path); }
    FileState Query(PathRef path) override { return inner.Query(path); }
    FolderState ProbeFolder(PathRef folder, bool needWrite) override
    {
        return inner.ProbeFolder(folder, needWrite);
    }
    std::u16string FinalPath(PathRef path) override { return inner.FinalPath(path); }
    Step WriteNew(PathRef temporary, const void* data, size_t size) override
    {
        return inner.WriteNew(temporary, data, size);
    }
    Step MoveOver(PathRef temporary, PathRef target) override
    {
        return inner.MoveOver(temporary, target);
    }
    bool WriteInPlace(PathRef path, const void* data, size_t size) override
    {
        return inner.WriteInPlace(path, data, size);
    }
    bool Remove(PathRef path) override { return inner.Remove(path); }
    LockAttempt TryLockFile(PathRef lockPath, void*& handle) override
    {
        return inner.TryLockFile(lockPath, handle);
    }
    void UnlockFile(PathRef lockPath, void* handle) override { inner.UnlockFile(lockPath, handle); }

protected:
    FileSystem& inner;

private:
    FileSystem* previous;
};

// Folder probes with answers of the test's choosing: a folder given an answer
// gets it; a folder set to hang keeps its probe waiting, as a server that does
// not answer does, until Release or `hangLimit` (then it answers
// Unreachable). Other folders are probed by the inner file system. Remove it
// only after FolderProbes::WaitUntilIdle.
class ProbingFiles : public PassThroughFiles
{
public:
    using PassThroughFiles::PassThroughFiles;
    ProbingFiles(const ProbingFiles&) = delete;
    ProbingFiles& operator=(const ProbingFiles&) = delete;
    // Lets hanging probes go and waits until none is inside.
    ~ProbingFiles() override
    {
        Release();
        FolderProbes::WaitUntilIdle(30000);
    }

    void Answer(const std::u16string& folder, FolderState state)
    {
        const std::scoped_lock lock(guard);
        answers[folder] = state;
    }
    void Hang(const std::u16string& folder, std::chrono::milliseconds limit)
    {
        const std::scoped_lock lock(guard);
        hanging.insert(folder);
        hangLimit = limit;
    }
    // Lets every hanging probe answer now.
    void Release()
    {
        {
            const std::scoped_lock lock(guard);
            released = true;
        }
        changed.notify_all();
    }
    // How many probes are hanging at this moment.
    int Hanging()
    {
        const std::scoped_lock lock(guard);
        return hangingNow;
    }

    FolderState ProbeFolder(PathRef folder, bool needWrite) override
    {
        const std::u16string name(folder.View());
        std::unique_lock<std::mutex> lock(guard);
        if (hanging.count(name))
        {
            ++hangingNow;
            changed.wait_for(lock, hangLimit, [this] { return released; });
            --hangingNow;
            return FolderState::Unreachable;
        }
        const auto found = answers.find(name);
        if (found != answers.end())
            return found->second;
        lock.unlock();
        return PassThroughFiles::ProbeFolder(folder, needWrite);
    }

private:
    std::mutex guard;
    std::condition_variable changed;
    std::map<std::u16string, FolderState> answers;
    std::set<std::u16string> hanging;
    std::chrono::milliseconds hangLimit{0};
    bool released = false;
    int hangingNow = 0;
};

// Thrown when the world stops; nothing after it reaches the files.
struct WorldStopped
{
};

// Counts every step that reaches the files and stops the world (throws
// WorldStopped, and lets no later step through) right after step `stopAfter`,
// or, when that step writes bytes, after its first `stopAtByte` bytes. Lock
// files are still closed after the stop, as the system closes the handles of
// a process that died.
class CrashingFiles : public PassThroughFiles
{
public:
    using PassThroughFiles::PassThroughFiles;

    struct Operation
    {
        bool writes = false;
        size_t size = 0;
    };

    // Arms the stop (-1: never) and forgets the steps seen.
    void StopAfter(int64_t step, size_t atByte = SIZE_MAX)
    {
        stopAfter = step;
        stopAtByte = atByte;
        stopped = false;
        seen.clear();
    }
    bool Stopped() const { return stopped; }
    // Every step of the last run (when nothing stopped it, the whole save).
    const std::vector<Operation>& Seen() const { return seen; }

    bool ReadBytes(PathRef path, std::string& bytes) override
    {
        Before();
        const bool read = PassThroughFiles::ReadBytes(path, bytes);
        After({});
        return read;
    }
    std::unique_ptr<FileReader> OpenReader(PathRef path) override
    {
        // Read whole, so that the read is one step.
        std::string bytes;
        if (!ReadBytes(path, bytes))
            return nullptr;
        return std::make_unique<MemoryReader>(std::move(bytes));
    }
    FileState Query(PathRef path) override
    {
        Before();
        const FileState state = PassThroughFiles::Query(path);
        After({});
        return state;
    }
    Step WriteNew(PathRef temporary, const void* data, size_t size) override
    {
        Before();
        if (StopsInside(size))
        {
            PassThroughFiles::WriteNew(temporary, data, stopAtByte);
            Stop();
        }
        const Step step = PassThroughFiles::WriteNew(temporary, data, size);
        After({true, size});
        return step;
    }
    Step MoveOver(PathRef temporary, PathRef target) override
    {
        Before();
        const Step step = PassThroughFiles::MoveOver(temporary, target);
        After({});
        return step;
    }
    bool WriteInPlace(PathRef path, const void* data, size_t size) override
    {
        Before();
        if (StopsInside(size))
        {
            PassThroughFiles::WriteInPlace(path, data, stopAtByte);
            Stop();
        }
        const bool written = PassThroughFiles::WriteInPlace(path, data, size);
        After({true, size});
        return written;
    }
    bool Remove(PathRef path) override
    {
        Before();
        const bool removed = PassThroughFiles::Remove(path);
        After({});
        return removed;
    }
    LockAttempt TryLockFile(PathRef lockPath, void*& handle) override
    {
        Before();
        const LockAttempt attempt = PassThroughFiles::TryLockFile(lockPath, handle);
        // Stopped right after taking it: the system closes the lock file.
        if (attempt == LockAttempt::Taken && int64_t(seen.size()) == stopAfter)
            PassThroughFiles::UnlockFile(lockPath, handle);
        After({});
        return attempt;
    }

private:
    void Before()
    {
        if (stopped)
            throw WorldStopped{};
    }
    bool StopsInside(size_t size) const
    {
        return int64_t(seen.size()) == stopAfter && stopAtByte < size;
    }
    void After(Operation operation)
    {
        seen.push_back(operation);
        if (int64_t(seen.size()) - 1 == stopAfter)
            Stop();
    }
    [[noreturn]] void Stop()
    {
        stopped = true;
        throw WorldStopped{};
    }

    int64_t stopAfter = -1;
    size_t stopAtByte = SIZE_MAX;
    bool stopped = false;
    std::vector<Operation> seen;
};

// The byte places inside a write of `size` bytes at which a crash is tried:
// all of the first and last `edge`, and every `step`-th one in between.
inline std::vector<size_t> CrashBytes(size_t size, size_t edge = 64, size_t step = 97)
{
    std::set<size_t> places;
    for (size_t at = 0; at < size; ++at)
        if (at < edge || at + edge >= size || at % step == 0)
            places.insert(at);
    return {places.begin(), places.end()};
}
