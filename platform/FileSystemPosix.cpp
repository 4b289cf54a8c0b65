#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/CodePage.h"
#include "platform/FileSystem.h"

namespace
{
struct FileCloser
{
    void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

class Descriptor
{
public:
    explicit Descriptor(int fd) : fd(fd) {}
    ~Descriptor()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Get() const { return fd; }
    int Release()
    {
        const int taken = fd;
        fd = -1;
        return taken;
    }

private:
    int fd;
};

class Reader final : public FileReader
{
public:
    Reader(File opened, uint64_t bytes) : file(std::move(opened)), size(bytes) {}
    uint64_t Size() const override { return size; }
    size_t Read(void* into, size_t count) override
    {
        return std::fread(into, 1, count, file.get());
    }
    bool Failed() const override { return std::ferror(file.get()) != 0; }
    bool Rewind() override { return std::fseek(file.get(), 0, SEEK_SET) == 0; }

private:
    File file;
    uint64_t size;
};

bool WriteAll(int fd, const void* data, size_t size)
{
    const char* at = static_cast<const char*>(data);
    while (size > 0)
    {
        const ssize_t written = ::write(fd, at, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        at += written;
        size -= size_t(written);
    }
    return true;
}

std::string FolderOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash ? slash : 1);
}

// A file without any write permission is what Windows calls read-only (and
// what Wine makes of that attribute).
bool IsReadOnlyMode(mode_t mode)
{
    return (mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

class PosixFileSystem final : public FileSystem
{
public:
    bool ReadBytes(PathRef path, std::string& bytes) override
    {
        bytes.clear();
        if (path.IsEmpty())
            return false;
        File file(std::fopen(path.ToUtf8().c_str(), "rb"));
        if (!file)
            return false;
        // Sized once from the file's size, so that a large file is not
        // copied again each time the text grows; read on in case it grew.
        struct stat info = {};
        if (::fstat(::fileno(file.get()), &info) == 0 && info.st_size > 0)
        {
            bytes.resize(size_t(info.st_size));
            bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
        }
        char chunk[65536];
        size_t got = 0;
        while ((got = std::fread(chunk, 1, sizeof chunk, file.get())) > 0)
            bytes.append(chunk, got);
        return !std::ferror(file.get());
    }

    std::unique_ptr<FileReader> OpenReader(PathRef path) override
    {
        if (path.IsEmpty())
            return nullptr;
        File file(std::fopen(path.ToUtf8().c_str(), "rb"));
        struct stat info = {};
        if (!file || ::fstat(::fileno(file.get()), &info) != 0)
            return nullptr;
        return std::make_unique<Reader>(std::move(file), uint64_t(info.st_size));
    }

    FileState Query(PathRef path) override
    {
        FileState state;
        struct stat info = {};
        if (path.IsEmpty() || ::stat(path.ToUtf8().c_str(), &info) != 0)
            return state;
        state.exists = true;
        state.folder = S_ISDIR(info.st_mode);
        state.readOnly = !state.folder && IsReadOnlyMode(info.st_mode);
        return state;
    }

    FolderState ProbeFolder(PathRef folder, bool needWrite) override
    {
        struct stat info = {};
        const std::string utf8 = folder.ToUtf8();
        if (folder.IsEmpty() || ::stat(utf8.c_str(), &info) != 0)
            return errno == EACCES ? FolderState::NotReadable : FolderState::Missing;
        if (!S_ISDIR(info.st_mode))
            return FolderState::NotFolder;
        if (::access(utf8.c_str(), R_OK | X_OK) != 0)
            return FolderState::NotReadable;
        if (needWrite && ::access(utf8.c_str(), W_OK | X_OK) != 0)
            return FolderState::NotWritable;
        return FolderState::Fine;
    }

    std::u16string FinalPath(PathRef path) override
    {
        const std::string utf8 = path.ToUtf8();
        struct stat info = {};
        if (::lstat(utf8.c_str(), &info) != 0 || !S_ISLNK(info.st_mode))
            return std::u16string(path.View());
        char resolved[PATH_MAX];
        if (!::realpath(utf8.c_str(), resolved))
            return std::u16string(path.View());
        const int32_t length = int32_t(std::char_traits<char>::length(resolved));
        std::u16string wide(size_t(length), u'\0');
        const int32_t written =
            CodePage::ToWide(CodePage::Utf8, resolved, length, wide.data(), length);
        wide.resize(size_t(written > 0 ? written : 0));
        return wide.empty() ? std::u16string(path.View()) : wide;
    }

    Step WriteNew(PathRef temporary, const void* data, size_t size) override
    {
        Descriptor fd(::open(temporary.ToUtf8().c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644));
        if (fd.Get() < 0)
            return errno == EACCES || errno == EPERM || errno == EROFS ? Step::Refused
                                                                       : Step::Failed;
        if (!WriteAll(fd.Get(), data, size) || ::fsync(fd.Get()) != 0)
            return Step::Failed;
        return ::close(fd.Release()) == 0 ? Step::Done : Step::Failed;
    }

    Step MoveOver(PathRef temporary, PathRef target) override
    {
        const std::string from = temporary.ToUtf8();
        const std::string to = target.ToUtf8();
        // The replacement takes the target's permissions.
        struct stat info = {};
        if (::stat(to.c_str(), &info) == 0)
            ::chmod(from.c_str(), info.st_mode & 07777);
        if (::rename(from.c_str(), to.c_str()) != 0)
            return errno == EACCES || errno == EPERM || errno == EBUSY ? Step::Refused
                                                                       : Step::Failed;
        // The rename itself reaches the disk with the folder.
        Descriptor folder(::open(FolderOf(to).c_str(), O_RDONLY | O_DIRECTORY));
        if (folder.Get() >= 0)
            ::fsync(folder.Get());
        return Step::Done;
    }

    bool WriteInPlace(PathRef path, const void* data, size_t size) override
    {
        Descriptor fd(::open(path.ToUtf8().c_str(), O_WRONLY | O_CREAT, 0644));
        if (fd.Get() < 0)
            return false;
        if (!WriteAll(fd.Get(), data, size) || ::ftruncate(fd.Get(), off_t(size)) != 0 ||
            ::fsync(fd.Get()) != 0)
            return false;
        return ::close(fd.Release()) == 0;
    }

    bool Remove(PathRef path) override
    {
        return ::unlink(path.ToUtf8().c_str()) == 0 || errno == ENOENT;
    }

    // An advisory lock on the lock file, which the holder removes before
    // closing. A waiter that got hold of a file that was removed meanwhile
    // (it compares the file it holds with the one the name now gives) starts
    // again with the new one. A crash releases the lock with the process; the
    // file it leaves is taken over by the next holder.
    LockAttempt TryLockFile(PathRef lockPath, void*& handle) override
    {
        const std::string path = lockPath.ToUtf8();
        Descriptor fd(::open(path.c_str(), O_RDWR | O_CREAT, 0644));
        if (fd.Get() < 0)
            return errno == EACCES || errno == EPERM || errno == EROFS ? LockAttempt::Unavailable
                                                                       : LockAttempt::Busy;
        if (::flock(fd.Get(), LOCK_EX | LOCK_NB) != 0)
            return LockAttempt::Busy;
        struct stat held = {}, named = {};
        if (::fstat(fd.Get(), &held) != 0 || ::stat(path.c_str(), &named) != 0 ||
            held.st_ino != named.st_ino || held.st_dev != named.st_dev)
            return LockAttempt::Busy;
        handle = reinterpret_cast<void*>(intptr_t(fd.Release()) + 1);
        return LockAttempt::Taken;
    }

    void UnlockFile(PathRef lockPath, void* handle) override
    {
        ::unlink(lockPath.ToUtf8().c_str());
        ::close(int(reinterpret_cast<intptr_t>(handle) - 1));
    }
};
} // namespace

FileSystem& GetPlatformFileSystem()
{
    // Never destroyed: a folder probe on a share that does not answer may
    // still be running in it while the program exits.
    static PosixFileSystem* const fileSystem = new PosixFileSystem;
    return *fileSystem;
}
