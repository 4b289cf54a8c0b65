#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/PathRef.h"

// A file read from its start, piece by piece, so that a large file need not
// be held in memory at once.
class FileReader
{
public:
    virtual ~FileReader() = default;
    // The file's size in bytes when it was opened.
    virtual uint64_t Size() const = 0;
    // Reads up to `size` bytes from where the last read ended and answers how
    // many it read: 0 at the end of the file or on a failure.
    virtual size_t Read(void* into, size_t size) = 0;
    // Whether a read failed (rather than met the end of the file).
    virtual bool Failed() const { return false; }
    // Starts again from the first byte; false when that fails.
    virtual bool Rewind() = 0;
};

// Bytes held in memory, handed out as a file: at most `piece` bytes a read
// (tests and fuzzers use small pieces to try every split of a file).
class MemoryReader final : public FileReader
{
public:
    explicit MemoryReader(std::string content, size_t piece = SIZE_MAX)
        : bytes(std::move(content)), piece(piece == 0 ? 1 : piece)
    {
    }
    uint64_t Size() const override { return bytes.size(); }
    size_t Read(void* into, size_t size) override;
    bool Rewind() override
    {
        at = 0;
        return true;
    }

private:
    std::string bytes;
    size_t piece;
    size_t at = 0;
};

// Why a whole-file write did not happen.
enum class WriteError
{
    None,
    ReadOnly, // the file has the read-only attribute: refused before anything was written
    Busy,     // another program of ours kept the file's update lock past the wait
    Failed,   // the system refused or failed the write; the file keeps its previous bytes
};

// The outcome of a whole-file write; true when the file holds the new bytes.
struct WriteResult
{
    WriteError error = WriteError::None;
    explicit operator bool() const { return error == WriteError::None; }
};

// What Query tells of a path.
struct FileState
{
    bool exists = false;
    bool folder = false;
    bool readOnly = false;
};

// What a folder probe found (see FileSystem::ProbeFolder).
enum class FolderState
{
    Fine,
    Missing,     // no file or folder of that name
    NotFolder,   // a file, not a folder
    NotReadable, // the folder's entries cannot be listed by this user
    NotWritable, // this user cannot make a file in it (asked only when writing is needed)
    Unreachable, // its drive or network share does not answer as there
    NoAnswer,    // the probe did not finish within its time limit (see FolderProbes)
};

class FileSystem;

// The update lock of one file, held while the object lives (see
// FileSystem::Lock). Movable, not copyable.
class FileLock
{
public:
    FileLock() = default;
    ~FileLock() { Release(); }
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    // Whether the lock is held (also when the folder allows no lock file: the
    // update then goes on without one, see FileSystem::Lock).
    bool Held() const { return held; }
    // Gives the lock up before the object goes.
    void Release();

private:
    friend class FileSystem;
    FileSystem* owner = nullptr;
    std::u16string lockPath;
    bool held = false;
};

// The file operations of the portable layers. Each platform provides one
// implementation; tests may install their own (for example to make a write
// fail part-way, or to stop the world after any single operation).
//
// Every whole-file write of the programs goes through WriteBytes, which is
// implemented once, here, over the steps that each platform provides:
// - The new bytes go to a temporary file beside the target ("<name>.~new"),
//   flushed to disk, which then replaces the target in one step that keeps
//   its attributes. A reader, or a crash at any moment, sees either the old
//   or the new file, never a mixture.
// - A target with the read-only attribute is refused before anything is
//   written; the attribute is never cleared.
// - Where replacing is not possible (the folder refuses new files, or another
//   program keeps the target open past ReplaceWait: a file that is open
//   cannot be replaced), the target is written over in place, and its
//   previous bytes are put back when that write fails.
// - The write holds the target's update lock (see Lock); the temporary file
//   is removed after a failure, and one that a crash left behind is replaced
//   by the next write of that file.
class FileSystem
{
public:
    virtual ~FileSystem() = default;
    // The whole file. False when it cannot be opened or read.
    virtual bool ReadBytes(PathRef path, std::string& bytes) = 0;
    // Whether a file or folder of that name exists.
    virtual bool Exists(PathRef path) { return Query(path).exists; }
    // Whether `folder` is there and usable by this user: a folder, its
    // entries readable, and with `needWrite` a new file can be made in it.
    // May take long on a network share that does not answer: callers that
    // must not wait use FolderProbes. Base: from Query alone.
    virtual FolderState ProbeFolder(PathRef folder, bool needWrite);
    // The file opened for reading piece by piece; null when it cannot be
    // opened. Unless an implementation reads from the file itself, the whole
    // file is read with ReadBytes and handed out from memory.
    virtual std::unique_ptr<FileReader> OpenReader(PathRef path);

    // Writes `size` bytes as the file's whole content, creating the file when
    // it is missing (see above). When `path` is a symbolic link, the file it
    // points to is written.
    WriteResult WriteBytes(PathRef path, const void* data, size_t size);

    // Takes the update lock of `path`: programs of ours that change the same
    // file take turns, so that each one's read-change-write starts from the
    // file as the one before left it. The lock is a file beside the target
    // ("<name>.~lock") opened exclusively and removed when closed, so a crash
    // never leaves a stale lock: the system closes the handle and the file
    // goes. A lock this process already holds is taken again at once (a save
    // inside an import that holds the lock). Waits up to LockWait
    // milliseconds for another holder; the answer is not Held when it waited
    // in vain. A folder that allows no new file cannot hold a lock file: the
    // answer is then held without one (the write goes in place anyway).
    FileLock Lock(PathRef path);
    // How long Lock waits for another holder (5 seconds unless a test sets it).
    static uint32_t LockWait();
    static void SetLockWait(uint32_t milliseconds);
    // How long a write keeps trying to replace a target that another program
    // has open before it writes in place (1 second unless a test sets it).
    static uint32_t ReplaceWait();
    static void SetReplaceWait(uint32_t milliseconds);

    // ---- The steps of a write, one implementation per platform. Callers use
    // WriteBytes and Lock; only those and test doubles use these.

    enum class Step
    {
        Done,
        Refused, // not possible here (no new file allowed, target held open): write in place
        Failed,  // the system failed it (disk full, ...)
    };
    enum class LockAttempt
    {
        Taken,
        Busy,        // someone holds it: try again
        Unavailable, // no lock file can be made in that folder
    };

    virtual FileState Query(PathRef path) = 0;
    // The file a path ends at when symbolic links are followed (the path
    // itself when it is no link or cannot be followed).
    virtual std::u16string FinalPath(PathRef path) { return std::u16string(path.View()); }
    // Creates (or empties) `temporary`, writes the bytes, flushes them to
    // disk and closes it.
    virtual Step WriteNew(PathRef temporary, const void* data, size_t size) = 0;
    // Gives `temporary` the attributes of `target` (when it exists) and puts
    // it in the target's place in one step, flushed through to disk.
    virtual Step MoveOver(PathRef temporary, PathRef target) = 0;
    // Writes the bytes over the file's content in place (creating it when it
    // is missing) and sets its end there.
    virtual bool WriteInPlace(PathRef path, const void* data, size_t size) = 0;
    // Deletes a file; true when it is gone (also when it was not there).
    virtual bool Remove(PathRef path) = 0;
    // Opens the lock file exclusively; `handle` is what UnlockFile is given.
    virtual LockAttempt TryLockFile(PathRef lockPath, void*& handle) = 0;
    // Closes the lock file, which removes it.
    virtual void UnlockFile(PathRef lockPath, void* handle) = 0;

private:
    friend class FileLock;
    void Unlock(const std::u16string& lockPath);
};

// The names of the files that a write makes beside its target.
std::u16string TemporaryPathFor(std::u16string_view target);
std::u16string LockPathFor(std::u16string_view target);

// The installed file system (the platform's unless a test installed another).
FileSystem& GetFileSystem();
// Installs `fileSystem` (null: the platform's) and answers the previous one.
// Waits first (up to 10 seconds) for folder probes still inside a file system.
FileSystem* SetFileSystem(FileSystem* fileSystem);
// The platform's own implementation.
FileSystem& GetPlatformFileSystem();
