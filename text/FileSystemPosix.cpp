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
        char chunk[65536];
        size_t got;
        while ((got = std::fread(chunk, 1, sizeof chunk, file.get())) > 0)
            bytes.append(chunk, got);
        return !std::ferror(file.get());
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
