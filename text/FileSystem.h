#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

class KelText;

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
    // The file opened for reading piece by piece; null when it cannot be
    // opened. Unless an implementation reads from the file itself, the whole
    // file is read with ReadBytes and handed out from memory.
    virtual std::unique_ptr<FileReader> OpenReader(const KelText& path);
};

// The installed file system (the platform's unless a test installed another).
FileSystem& GetFileSystem();
// Installs `fileSystem` (null: the platform's) and answers the previous one.
FileSystem* SetFileSystem(FileSystem* fileSystem);
// The platform's own implementation.
FileSystem& GetPlatformFileSystem();
