#include <sys/stat.h>

#include <cstdio>
#include <memory>

#include "text/FileSystem.h"
#include "text/KelText.h"

namespace
{
struct FileCloser
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

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

class PosixFileSystem final : public FileSystem
{
public:
    bool ReadBytes(const KelText& path, std::string& bytes) override
    {
        bytes.clear();
        if (path.IsEmpty())
            return false;
        File file(std::fopen(path.ToUtf8().c_str(), "rb"));
        if (!file)
            return false;
        // Sized once from the file's size, so that a large file is not
        // copied again each time the text grows; read on in case it grew.
        struct stat info;
        if (::fstat(::fileno(file.get()), &info) == 0 && info.st_size > 0)
        {
            bytes.resize(size_t(info.st_size));
            bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
        }
        char chunk[65536];
        size_t got;
        while ((got = std::fread(chunk, 1, sizeof chunk, file.get())) > 0)
            bytes.append(chunk, got);
        return !std::ferror(file.get());
    }

    std::unique_ptr<FileReader> OpenReader(const KelText& path) override
    {
        if (path.IsEmpty())
            return nullptr;
        File file(std::fopen(path.ToUtf8().c_str(), "rb"));
        struct stat info;
        if (!file || ::fstat(::fileno(file.get()), &info) != 0)
            return nullptr;
        return std::make_unique<Reader>(std::move(file), uint64_t(info.st_size));
    }

    bool WriteBytes(const KelText& path, const void* data, size_t size) override
    {
        if (path.IsEmpty())
            return false;
        File file(std::fopen(path.ToUtf8().c_str(), "wb"));
        if (!file)
            return false;
        if (size && std::fwrite(data, 1, size, file.get()) != size)
            return false;
        return std::fclose(file.release()) == 0;
    }

    bool Exists(const KelText& path) override
    {
        struct stat info;
        return !path.IsEmpty() && ::stat(path.ToUtf8().c_str(), &info) == 0;
    }
};
} // namespace

FileSystem& GetPlatformFileSystem()
{
    static PosixFileSystem fileSystem;
    return fileSystem;
}
