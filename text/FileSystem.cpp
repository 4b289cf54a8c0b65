#include "text/FileSystem.h"

#include <algorithm>
#include <cstring>

namespace
{
FileSystem* installed = nullptr;

} // namespace

size_t MemoryReader::Read(void* into, size_t size)
{
    const size_t count = std::min({size, piece, bytes.size() - at});
    std::memcpy(into, bytes.data() + at, count);
    at += count;
    return count;
}

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
