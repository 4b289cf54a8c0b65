#pragma once
#include <cstddef>
#include <string>

class KelText;

// The file operations that the portable layers need. Each platform provides
// one implementation; tests may install their own (for example to make a
// write fail part-way).
class FileSystem
{
public:
    virtual ~FileSystem() = default;
    // The whole file. False when it cannot be opened or read.
    virtual bool ReadBytes(const KelText& path, std::string& bytes) = 0;
    // Writes `size` bytes as the file's whole content, creating the file when
    // it is missing. False on any failure; the file may then hold part of the
    // new content, which callers that must not lose data repair.
    virtual bool WriteBytes(const KelText& path, const void* data, size_t size) = 0;
    // Whether a file or folder of that name exists.
    virtual bool Exists(const KelText& path) = 0;
};

// The installed file system (the platform's unless a test installed another).
FileSystem& GetFileSystem();
// Installs `fileSystem` (null: the platform's) and answers the previous one.
FileSystem* SetFileSystem(FileSystem* fileSystem);
// The platform's own implementation.
FileSystem& GetPlatformFileSystem();
