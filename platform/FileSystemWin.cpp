#include <windows.h>

#include <aclapi.h>

#include <memory>
#include <string>

#include "platform/FileSystem.h"

namespace
{
const wchar_t* Wide(PathRef path)
{
    return reinterpret_cast<const wchar_t*>(path.c_str());
}

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
    HANDLE Release()
    {
        const HANDLE taken = handle;
        handle = INVALID_HANDLE_VALUE;
        return taken;
    }

private:
    HANDLE handle;
};

// Readers let others read, write and replace the file while they read it, so
// that reading never holds up a save (whose replacement needs delete access).
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE OpenForReading(PathRef path)
{
    return CreateFileW(Wide(path), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                       FILE_ATTRIBUTE_NORMAL, nullptr);
}

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

bool WriteWhole(HANDLE file, const void* data, size_t size)
{
    DWORD written = 0;
    return size == 0 ||
           (WriteFile(file, data, DWORD(size), &written, nullptr) && written == DWORD(size));
}

// Errors that mean "not possible here" rather than "failed": the folder takes
// no new file, or the target is open in a program that does not let it be
// replaced.
bool IsRefusal(DWORD error)
{
    return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ||
           error == ERROR_LOCK_VIOLATION || error == ERROR_WRITE_PROTECT ||
           error == ERROR_NOT_SUPPORTED;
}

// The attributes that a replacement takes over from the file it replaces.
constexpr DWORD kKeptAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                  FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

// Gives `temporary` the creation time and the access rules (DACL) of `target`.
void CarryOver(PathRef target, PathRef temporary)
{
    Handle from(CreateFileW(Wide(target), FILE_READ_ATTRIBUTES | READ_CONTROL, kShareAll, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    Handle to(CreateFileW(Wide(temporary), FILE_WRITE_ATTRIBUTES | WRITE_DAC, 0, nullptr,
                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!from.Valid() || !to.Valid())
        return;
    FILETIME created;
    if (GetFileTime(from.Get(), &created, nullptr, nullptr))
        SetFileTime(to.Get(), &created, nullptr, nullptr);
    PACL dacl = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetSecurityInfo(from.Get(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                        &dacl, nullptr, &descriptor) == ERROR_SUCCESS)
    {
        SECURITY_DESCRIPTOR_CONTROL control = 0;
        DWORD revision = 0;
        const bool isProtected = GetSecurityDescriptorControl(descriptor, &control, &revision) &&
                                 (control & SE_DACL_PROTECTED);
        // An inherited DACL is inherited by the replacement from the same
        // folder anyway; only rules of the file's own are copied.
        if (dacl && (isProtected || !(control & SE_DACL_AUTO_INHERITED)))
            SetSecurityInfo(to.Get(), SE_FILE_OBJECT,
                            DACL_SECURITY_INFORMATION |
                                (isProtected ? PROTECTED_DACL_SECURITY_INFORMATION
                                             : UNPROTECTED_DACL_SECURITY_INFORMATION),
                            nullptr, nullptr, dacl, nullptr);
        LocalFree(descriptor);
    }
}

// Errors that mean the drive or share itself does not answer.
bool IsUnreachable(DWORD error)
{
    switch (error)
    {
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_NETNAME_DELETED:
    case ERROR_NETWORK_UNREACHABLE:
    case ERROR_HOST_UNREACHABLE:
    case ERROR_BAD_NET_RESP:
    case ERROR_UNEXP_NET_ERR:
    case ERROR_REM_NOT_LIST:
    case ERROR_DEV_NOT_EXIST:
    case ERROR_SEM_TIMEOUT:
    case ERROR_NOT_READY:
    case ERROR_INVALID_DRIVE:
    case ERROR_NO_NET_OR_BAD_PATH:
        return true;
    default:
        return false;
    }
}

// The root of a path: "X:\" or "\\server\share\"; empty for a relative path.
std::wstring RootOf(const std::wstring& path)
{
    if (path.size() >= 2 && path[1] == L':')
        return path.substr(0, 2) + L"\\";
    if (path.starts_with(L"\\\\"))
    {
        size_t end = path.find(L'\\', 2);
        if (end != std::wstring::npos)
            end = path.find(L'\\', end + 1);
        return end == std::wstring::npos ? path + L"\\" : path.substr(0, end + 1);
    }
    return std::wstring();
}

// Whether the drive or share that holds `path` is there.
bool RootReachable(const std::wstring& path)
{
    const std::wstring root = RootOf(path);
    if (root.empty())
        return true;
    if (root.size() == 3 && GetDriveTypeW(root.c_str()) == DRIVE_NO_ROOT_DIR)
        return false;
    return GetFileAttributesW(root.c_str()) != INVALID_FILE_ATTRIBUTES;
}

// Critical-error boxes off for this thread while the object lives: a drive
// without a medium answers "not there" rather than asking the user.
class QuietErrors
{
public:
    QuietErrors()
    {
        SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previous);
    }
    ~QuietErrors() { SetThreadErrorMode(previous, nullptr); }
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;

private:
    DWORD previous = 0;
};

class WindowsFileSystem final : public FileSystem
{
public:
    bool ReadBytes(PathRef path, std::string& bytes) override
    {
        bytes.clear();
        if (path.IsEmpty())
            return false;
        Handle file(OpenForReading(path));
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

    std::unique_ptr<FileReader> OpenReader(PathRef path) override
    {
        if (path.IsEmpty())
            return nullptr;
        Handle file(OpenForReading(path));
        LARGE_INTEGER size;
        if (!file.Valid() || !GetFileSizeEx(file.Get(), &size))
            return nullptr;
        return std::make_unique<Reader>(file.Release(), uint64_t(size.QuadPart));
    }

    FileState Query(PathRef path) override
    {
        FileState state;
        if (path.IsEmpty())
            return state;
        // A drive without a medium answers "not there" rather than asking the user.
        const UINT previous = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
        const DWORD attributes = GetFileAttributesW(Wide(path));
        SetErrorMode(previous);
        if (attributes == INVALID_FILE_ATTRIBUTES)
            return state;
        state.exists = true;
        state.folder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        state.readOnly = !state.folder && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
        return state;
    }

    FolderState ProbeFolder(PathRef folder, bool needWrite) override
    {
        std::wstring path(Wide(folder));
        for (wchar_t& unit : path)
            if (unit == L'/')
                unit = L'\\';
        while (path.size() > 1 && path.back() == L'\\' && path != RootOf(path))
            path.pop_back();
        if (path.empty())
            return FolderState::Missing;
        const QuietErrors quiet;
        const DWORD attributes = GetFileAttributesW(path.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES)
        {
            const DWORD error = GetLastError();
            if (error == ERROR_ACCESS_DENIED)
                return FolderState::NotReadable;
            if (IsUnreachable(error) || !RootReachable(path))
                return FolderState::Unreachable;
            return FolderState::Missing;
        }
        if (!(attributes & FILE_ATTRIBUTE_DIRECTORY))
            return FolderState::NotFolder;
        const std::wstring inside = path.back() == L'\\' ? path : path + L"\\";
        WIN32_FIND_DATAW found;
        const HANDLE listing = FindFirstFileW((inside + L"*").c_str(), &found);
        if (listing != INVALID_HANDLE_VALUE)
            FindClose(listing);
        else if (GetLastError() == ERROR_ACCESS_DENIED)
            return FolderState::NotReadable;
        if (needWrite)
        {
            // The one sure answer for this user, this share's permissions and
            // a write-protected medium alike: make a file, which goes again
            // when it is closed.
            const std::wstring probe = inside + L"~kelprobe-" +
                                       std::to_wstring(GetCurrentProcessId()) + L"-" +
                                       std::to_wstring(GetCurrentThreadId()) + L".tmp";
            const HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                            FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_TEMPORARY |
                                                FILE_FLAG_DELETE_ON_CLOSE,
                                            nullptr);
            if (file != INVALID_HANDLE_VALUE)
                CloseHandle(file);
            else
            {
                const DWORD error = GetLastError();
                if (error == ERROR_ACCESS_DENIED || error == ERROR_WRITE_PROTECT ||
                    error == ERROR_NETWORK_ACCESS_DENIED)
                    return FolderState::NotWritable;
            }
        }
        return FolderState::Fine;
    }

    std::u16string FinalPath(PathRef path) override
    {
        std::u16string given(path.View());
        const DWORD attributes = GetFileAttributesW(Wide(path));
        if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
            return given;
        Handle file(CreateFileW(Wide(path), 0, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        wchar_t buffer[4096];
        const DWORD length =
            file.Valid() ? GetFinalPathNameByHandleW(file.Get(), buffer, 4096, FILE_NAME_NORMALIZED)
                         : 0;
        if (length == 0 || length >= 4096)
            return given;
        std::u16string final(reinterpret_cast<const char16_t*>(buffer), length);
        // "\\?\C:\..." and "\\?\UNC\server\..." back to the usual forms.
        if (final.starts_with(u"\\\\?\\UNC\\"))
            final = u"\\\\" + final.substr(8);
        else if (final.starts_with(u"\\\\?\\"))
            final = final.substr(4);
        return final;
    }

    Step WriteNew(PathRef temporary, const void* data, size_t size) override
    {
        if (size > 0x7FFFFFFF)
            return Step::Failed;
        // Hidden while it exists; CREATE_ALWAYS also takes over a hidden one
        // that a crash left behind.
        Handle file(CreateFileW(Wide(temporary), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_HIDDEN, nullptr));
        if (!file.Valid())
            return IsRefusal(GetLastError()) ? Step::Refused : Step::Failed;
        if (!WriteWhole(file.Get(), data, size) || !FlushFileBuffers(file.Get()))
            return Step::Failed;
        return CloseHandle(file.Release()) ? Step::Done : Step::Failed;
    }

    // MoveFileExW rather than ReplaceFileW: under Wine, ReplaceFileW renames
    // the target away before it moves the replacement in, so for a moment a
    // reader finds no file at all; MoveFileExW is one rename onto the target
    // on Windows and under Wine alike. What ReplaceFileW would keep of the
    // target (attributes, creation time, its own access rules) is carried
    // over to the replacement first.
    Step MoveOver(PathRef temporary, PathRef target) override
    {
        const DWORD attributes = GetFileAttributesW(Wide(target));
        DWORD kept = 0;
        if (attributes != INVALID_FILE_ATTRIBUTES)
        {
            CarryOver(target, temporary);
            kept = attributes & kKeptAttributes;
        }
        SetFileAttributesW(Wide(temporary), kept ? kept : FILE_ATTRIBUTE_NORMAL);
        if (MoveFileExW(Wide(temporary), Wide(target),
                        MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return Step::Done;
        return IsRefusal(GetLastError()) ? Step::Refused : Step::Failed;
    }

    bool WriteInPlace(PathRef path, const void* data, size_t size) override
    {
        if (size > 0x7FFFFFFF)
            return false;
        // OPEN_ALWAYS and SetEndOfFile rather than CREATE_ALWAYS: the latter
        // refuses hidden files and would empty the file before anything is written.
        Handle file(CreateFileW(Wide(path), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
        return file.Valid() && WriteWhole(file.Get(), data, size) && SetEndOfFile(file.Get()) &&
               FlushFileBuffers(file.Get());
    }

    bool Remove(PathRef path) override
    {
        if (DeleteFileW(Wide(path)))
            return true;
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    }

    // Opened without sharing and deleted when its handle closes, which the
    // system also does for a process that crashed.
    LockAttempt TryLockFile(PathRef lockPath, void*& handle) override
    {
        // Access is also denied to a lock file whose deletion is pending (its
        // holder is closing it), and that file may be gone a moment later:
        // only a denial met again with no lock file there means a folder
        // that takes no new file.
        for (int attempt = 0; attempt < 3; ++attempt)
        {
            const HANDLE file = CreateFileW(
                Wide(lockPath), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr, OPEN_ALWAYS,
                FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
            if (file != INVALID_HANDLE_VALUE)
            {
                handle = file;
                return LockAttempt::Taken;
            }
            const DWORD error = GetLastError();
            if (error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION)
                return LockAttempt::Busy;
            if (error != ERROR_ACCESS_DENIED)
                return LockAttempt::Unavailable;
            if (GetFileAttributesW(Wide(lockPath)) != INVALID_FILE_ATTRIBUTES)
                return LockAttempt::Busy;
            Sleep(1);
        }
        return LockAttempt::Unavailable;
    }

    void UnlockFile(PathRef, void* handle) override { CloseHandle(static_cast<HANDLE>(handle)); }
};
} // namespace

FileSystem& GetPlatformFileSystem()
{
    // Never destroyed: a folder probe on a share that does not answer may
    // still be running in it while the program exits.
    static WindowsFileSystem* const fileSystem = new WindowsFileSystem;
    return *fileSystem;
}
