#pragma once
#include <windows.h>

// System DLLs that the program loads by name come from the system folder
// only, never from the current or the program folder.

// Restricts the process's DLL search to the safe default folders (application
// and system folders) when the system offers SetDefaultDllDirectories.
// Answers whether it did.
bool RestrictDllSearch();

// Loads a system DLL (a bare name such as L"msimg32.dll") from the system
// folder. Null when it is not there. Release with FreeLibrary.
HMODULE LoadSystemLibrary(const wchar_t* name);

// An exported function as a typed pointer; null when the module or the
// export is missing.
template <typename Function>
Function GetProc(HMODULE module, const char* name)
{
    if (!module)
        return nullptr;
    // Through void*: the casts between function pointer types are deliberate.
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}
