#include "framework/SystemLibrary.h"

#include <objbase.h>

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

HMODULE ComLibrary()
{
    static const HMODULE module = LoadSystemLibrary(L"ole32.dll");
    return module;
}

bool EnterCom(bool& entered)
{
    auto enter = ComEntry<HRESULT(WINAPI*)(LPVOID)>("CoInitialize");
    const HRESULT result = enter ? enter(nullptr) : E_NOTIMPL;
    // Entered (also again: S_FALSE) means one CoUninitialize is owed. A thread
    // that its host put in the other apartment model can use COM all the same.
    entered = SUCCEEDED(result);
    return entered || result == RPC_E_CHANGED_MODE;
}

bool EnterComOnThisThread()
{
    // One per thread: entered on the first call, left when the thread ends.
    struct Apartment
    {
        bool tried = false;
        bool usable = false;
        bool entered = false;
        Apartment() = default;
        Apartment(const Apartment&) = delete;
        Apartment& operator=(const Apartment&) = delete;
        ~Apartment()
        {
            if (entered)
                if (auto leave = ComEntry<void(WINAPI*)()>("CoUninitialize"))
                    leave();
        }
    };
    thread_local Apartment apartment;
    if (!apartment.tried)
    {
        apartment.tried = true;
        apartment.usable = EnterCom(apartment.entered);
    }
    return apartment.usable;
}
