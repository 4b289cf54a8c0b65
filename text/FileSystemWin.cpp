#include <windows.h>

#include <memory>

#include "text/FileSystem.h"
#include "text/WideText.h"

namespace
{
class Handle
{
public:
    explicit Handle(HANDLE h) : handle(h) {}
    ~Handle()
    {
        if (handle != INVALID_HANDLE_VALUE)
            CloseHandle(handle);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    bool Valid() const { return handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return handle; }

private:
    HANDLE handle;
};

class Reader final : public FileReader
{
public:
    Reader(HANDLE opened, uint64_t bytes) : file(opened), size(bytes) {}
    uint64_t Size() const override { return size; }
    size_t Read(void* into, size_t count) override
    {
        DWORD got = 0;
        const DWORD wanted = DWORD(count < 0x40000000 ? count : 0x40000000);
        if (!ReadFile(file.Get(), into, wanted, &got, nullptr))
        {
            failed = true;
            return 0;
        }
        return got;
    }
    bool Failed() const override { return failed; }
    bool Rewind() override
    {
        LARGE_INTEGER start{};
        return SetFilePointerEx(file.Get(), start, nullptr, FILE_BEGIN) != FALSE;
    }

private:
    Handle file;
    uint64_t size;
    bool failed = false;
};

class WindowsFileSystem final : public FileSystem
{
public:
    bool ReadBytes(const KelText& path, std::string& bytes) override
    {
        bytes.clear();
        if (path.IsEmpty())
            return false;
        Handle file(CreateFileW(AsWide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file.Valid())
            return false;
        LARGE_INTEGER size;
        if (!GetFileSizeEx(file.Get(), &size) || size.QuadPart > 0x7FFFFFFF)
            return false;
        bytes.resize(size_t(size.QuadPart));
        DWORD got = 0;
        if (!bytes.empty() &&
            (!ReadFile(file.Get(), bytes.data(), DWORD(bytes.size()), &got, nullptr) ||
             got != bytes.size()))
        {
            bytes.clear();
            return false;
        }
        return true;
    }

    std::unique_ptr<FileReader> OpenReader(const KelText& path) override
    {
        if (path.IsEmpty())
            return nullptr;
        HANDLE file = CreateFileW(AsWide(path), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE)
            return nullptr;
        LARGE_INTEGER size;
        if (!GetFileSizeEx(file, &size))
        {
            CloseHandle(file);
            return nullptr;
        }
        return std::make_unique<Reader>(file, uint64_t(size.QuadPart));
    }

    bool WriteBytes(const KelText& path, const void* data, size_t size) override
    {
        if (path.IsEmpty() || size > 0x7FFFFFFF)
            return false;
        // OPEN_ALWAYS and SetEndOfFile rather than CREATE_ALWAYS: the latter
        // refuses hidden files and would empty the file before anything is written.
        Handle file(CreateFileW(AsWide(path), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file.Valid())
            return false;
        DWORD written = 0;
        if (size &&
            (!WriteFile(file.Get(), data, DWORD(size), &written, nullptr) || written != size))
            return false;
        return SetEndOfFile(file.Get()) != FALSE;
    }

    bool Exists(const KelText& path) override
    {
        if (path.IsEmpty())
            return false;
        const UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
        const DWORD attributes = GetFileAttributesW(AsWide(path));
        SetErrorMode(previous);
        return attributes != INVALID_FILE_ATTRIBUTES;
    }
};
} // namespace

FileSystem& GetPlatformFileSystem()
{
    static WindowsFileSystem fileSystem;
    return fileSystem;
}
