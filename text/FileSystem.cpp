#include "text/FileSystem.h"

namespace
{
FileSystem* installed = nullptr;
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
