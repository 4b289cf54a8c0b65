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
    // Through void (*)(), the type that stands for any function (gcc's
    // -Wcast-function-type lets it pass); a data pointer such as void* need
    // not hold a function's address.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

// ole32.dll, loaded on the first call and kept for the rest of the process:
// COM is used only by some windows (the folder browser), so programs do not
// link it and pay for it at start.
HMODULE ComLibrary();

// An export of ole32.dll as a typed pointer; null when it is missing.
template <typename Function>
Function ComEntry(const char* name)
{
    return GetProc<Function>(ComLibrary(), name);
}

// Enters COM (single-threaded apartment) on the calling thread. Answers
// whether COM can be used there; `entered` tells whether a CoUninitialize on
// this thread is owed.
bool EnterCom(bool& entered);

// EnterCom once per thread; the thread leaves COM when it ends.
bool EnterComOnThisThread();
