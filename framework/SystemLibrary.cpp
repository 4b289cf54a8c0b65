#include "framework/SystemLibrary.h"

#include <string>

bool RestrictDllSearch()
{
    using SetDirectoriesProc = BOOL(WINAPI*)(DWORD);
    // kernel32 is always loaded; the export exists from Windows 8 and on
    // Windows 7 with its loader update.
    auto setDirectories =
        GetProc<SetDirectoriesProc>(GetModuleHandleW(L"kernel32.dll"), "SetDefaultDllDirectories");
    return setDirectories && setDirectories(LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
}

HMODULE LoadSystemLibrary(const wchar_t* name)
{
    HMODULE module = LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module || GetLastError() != ERROR_INVALID_PARAMETER)
        return module;

    // A loader without the search flags: name the file in the system folder.
    wchar_t folder[MAX_PATH];
    UINT length = GetSystemDirectoryW(folder, MAX_PATH);
    if (length == 0 || length >= MAX_PATH)
        return nullptr;
    std::wstring path(folder, length);
    path += L'\\';
    path += name;
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}
