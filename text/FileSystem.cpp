#include "text/FileSystem.h"

#include <algorithm>
#include <cstring>

namespace
{
FileSystem* installed = nullptr;

// A file's bytes read at once, handed out in pieces.
class MemoryReader final : public FileReader
{
public:
    explicit MemoryReader(std::string content) : bytes(std::move(content)) {}
    uint64_t Size() const override { return bytes.size(); }
    size_t Read(void* into, size_t size) override
    {
        const size_t count = std::min(size, bytes.size() - at);
        std::memcpy(into, bytes.data() + at, count);
        at += count;
        return count;
    }
    bool Rewind() override
    {
        at = 0;
        return true;
    }

private:
    std::string bytes;
    size_t at = 0;
};
} // namespace

std::unique_ptr<FileReader> FileSystem::OpenReader(const KelText& path)
{
    std::string bytes;
    if (!ReadBytes(path, bytes))
        return nullptr;
    return std::make_unique<MemoryReader>(std::move(bytes));
}

FileSystem& GetFileSystem()
{
    return installed ? *installed : GetPlatformFileSystem();
}

FileSystem* SetFileSystem(FileSystem* fileSystem)
{
    FileSystem* previous = installed ? installed : &GetPlatformFileSystem();
    installed = fileSystem;
    return previous;
}
