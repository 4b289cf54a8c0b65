#pragma once
// kelcfg.exe started as a logon script starts it, without a console, its
// standard output and standard error read from files. Programs that include
// this header define KEL_KELCFG (the program).
#include <string>

#include "tests/e2e/support/EditKelSession.h"

namespace EditKelSession
{
struct Finished
{
    DWORD exitCode = 0;
    std::string out;
    std::string err;
};

// Runs kelcfg.exe with `arguments` and waits for it to end. Its output goes to
// files in a folder named `run`, so that runs at the same time keep apart.
inline Finished RunKelCfg(const std::wstring& arguments, const wchar_t* run = L"kelcfg-run")
{
    const fs::path folder = fs::temp_directory_path() / L"kel-e2e" / run;
    fs::create_directories(folder);
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    auto open = [&](const wchar_t* name)
    {
        return CreateFileW((folder / name).c_str(), GENERIC_WRITE,
                           FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit, CREATE_ALWAYS, 0, nullptr);
    };
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = open(L"out.txt");
    startup.hStdError = open(L"err.txt");
    const std::wstring program = WindowsPath(KEL_KELCFG);
    std::wstring command = L"\"" + program + L"\" " + arguments;
    PROCESS_INFORMATION process{};
    Finished finished{99, {}, {}};
    // No console: standard output and standard error are the two files.
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, DETACHED_PROCESS, nullptr,
                       fs::path(program).parent_path().c_str(), &startup, &process))
    {
        if (WaitForSingleObject(process.hProcess, 60000) != WAIT_OBJECT_0)
            TerminateProcess(process.hProcess, 98);
        GetExitCodeProcess(process.hProcess, &finished.exitCode);
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    CloseHandle(startup.hStdOutput);
    CloseHandle(startup.hStdError);
    finished.out = FileBytes(folder / L"out.txt");
    finished.err = FileBytes(folder / L"err.txt");
    return finished;
}
} // namespace EditKelSession
