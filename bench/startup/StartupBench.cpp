// Start-up under Wine: how long EditKel.exe takes from its start to its first
// visible window (the configuration picker, "Select Configuration - Plotwise")
// beside a minimal program that shows one dialog ("Minimal Dialog"), and,
// when given, beside the same dialog built with EditKel's manifest after the
// library calls of EditKel's start-up (what the platform charges before any
// work of EditKel's own). All run in the same prefix with the same wine
// server, started in turn (the order turning one place each run, so that a
// drift of the machine touches all alike) after one warm-up start each; each
// program is ended as soon as its window shows.
//
//   StartupBench.exe <EditKel.exe> <MinimalDialog.exe> <demo configuration folder> [runs]
//                    [EditKelLibraries.exe]
//
// The demo folder is registered first as the configuration "Demo" of
// Plotwise for the current user, as the picker needs one to show.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include "app/Version.h"

#define STARTUP_WIDE_(text) L##text
#define STARTUP_WIDE(text) STARTUP_WIDE_(text)

namespace
{
struct Program
{
    std::wstring path;
    std::wstring arguments;
    std::wstring title; // of its first visible window, exactly
    std::vector<double> milliseconds;
};

struct Search
{
    DWORD process;
    const std::wstring* title;
    bool found;
};

BOOL CALLBACK LookAt(HWND window, LPARAM parameter)
{
    Search& search = *reinterpret_cast<Search*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != search.process || !IsWindowVisible(window))
        return TRUE;
    wchar_t title[256] = {};
    GetWindowTextW(window, title, 256);
    search.found = search.title->compare(title) == 0;
    return !search.found;
}

double Now()
{
    static LARGE_INTEGER frequency = []
    {
        LARGE_INTEGER f;
        QueryPerformanceFrequency(&f);
        return f;
    }();
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    return double(counter.QuadPart) * 1000.0 / double(frequency.QuadPart);
}

// Starts the program and answers the milliseconds until its window shows;
// negative when it did not within a minute.
double TimeStart(const Program& program)
{
    std::wstring commandLine = L"\"" + program.path + L"\" " + program.arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    const double start = Now();
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &started))
        return -1;
    double took = -1;
    Search search{started.dwProcessId, &program.title, false};
    while (Now() - start < 60000)
    {
        EnumWindows(LookAt, reinterpret_cast<LPARAM>(&search));
        if (search.found)
        {
            took = Now() - start;
            break;
        }
        if (WaitForSingleObject(started.hProcess, 1) == WAIT_OBJECT_0)
            break; // it ended without showing the window
    }
    TerminateProcess(started.hProcess, 0);
    WaitForSingleObject(started.hProcess, 10000);
    CloseHandle(started.hThread);
    CloseHandle(started.hProcess);
    return took;
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n == 0 ? -1 : n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

bool Register(const std::wstring& folder)
{
    const std::wstring key =
        L"Software\\Orvantix\\Brindlecove " STARTUP_WIDE(KEL_RELEASE) L"\\Plotwise\\Configurations";
    const std::wstring value = folder.back() == L'\\' ? folder : folder + L"\\";
    return RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"Demo", REG_SZ, value.c_str(),
                           DWORD((value.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}
} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count < 4)
    {
        std::fprintf(stderr, "usage: StartupBench <EditKel.exe> <MinimalDialog.exe> <demo folder> "
                             "[runs] [EditKelLibraries.exe]\n");
        return 2;
    }
    const int runs = count > 4 ? std::max(1, _wtoi(arguments[4])) : 9;
    if (!Register(arguments[3]))
    {
        std::fprintf(stderr, "cannot register the demo configuration\n");
        return 1;
    }
    std::vector<Program> programs = {
        {arguments[1], L"-app=Plotwise", L"Select Configuration - Plotwise", {}},
        {arguments[2], L"", L"Minimal Dialog", {}}};
    if (count > 5)
        programs.push_back({arguments[5], L"", L"Minimal Dialog", {}});
    const Program& editor = programs[0];
    const Program& minimal = programs[1];

    // One start each to warm up (the first start of a prefix loads much from disk).
    for (Program& program : programs)
        if (TimeStart(program) < 0)
        {
            std::fprintf(stderr, "%ls did not show its window\n", program.path.c_str());
            return 1;
        }
    for (int run = 0; run < runs; ++run)
        for (size_t turn = 0; turn < programs.size(); ++turn)
        {
            Program& program = programs[(turn + size_t(run)) % programs.size()];
            const double took = TimeStart(program);
            if (took < 0)
            {
                std::fprintf(stderr, "%ls did not show its window\n", program.path.c_str());
                return 1;
            }
            program.milliseconds.push_back(took);
        }

    std::printf("Start to first visible window under Wine, milliseconds (%d runs each):\n", runs);
    const wchar_t* names[] = {L"EditKel (the picker)", L"minimal dialog",
                              L"minimal dialog, EditKel's libraries"};
    for (size_t i = 0; i < programs.size(); ++i)
    {
        std::printf("  %-36ls median %7.1f  runs", names[i], Median(programs[i].milliseconds));
        for (double took : programs[i].milliseconds)
            std::printf(" %.0f", took);
        std::printf("\n");
    }
    const double ratio = Median(editor.milliseconds) / Median(minimal.milliseconds);
    std::printf("  EditKel / minimal dialog: %.2fx\n", ratio);
    double floor = -1;
    if (programs.size() > 2)
    {
        floor = Median(programs[2].milliseconds) / Median(minimal.milliseconds);
        std::printf("  minimal dialog with EditKel's libraries / minimal dialog: %.2fx\n"
                    "  EditKel / minimal dialog with EditKel's libraries: %.2fx\n",
                    floor, Median(editor.milliseconds) / Median(programs[2].milliseconds));
    }
    std::printf("\nSUMMARY|start-up under Wine: EditKel to the picker / a minimal dialog program "
                "(medians of %d)|%.2f|%.2f|x\n",
                runs, ratio, 1.10);
    if (floor > 0)
        std::printf("SUMMARY|  the same minimal dialog with EditKel's manifest and library calls "
                    "(no EditKel work) / minimal dialog|%.2f|%.2f|x\n",
                    floor, 1.10);
    std::fflush(stdout);
    return 0;
}
