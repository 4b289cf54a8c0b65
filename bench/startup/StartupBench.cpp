// Start-up under Wine, measured side by side with reference programs in the
// same prefix and the same wine server:
//
// 1. From the start of a program to its first visible window: EditKel.exe to
//    its configuration picker ("Select Configuration - Plotwise") beside a
//    minimal program that shows one dialog ("Minimal Dialog"), the same
//    dialog with EditKel's manifest (common controls 6) and nothing else, and
//    that dialog after the library calls that EditKel's start-up makes (what
//    the platform charges before any work of EditKel's own), and the dialog
//    with the manifest holding the picker's controls (a list among them):
//    the floor under EditKel's time.
// 2. From the picker's OK to the configuration dialog shown, for the product
//    with the most pages, beside a minimal program whose dialog's OK opens a
//    property dialog with as many empty pages ("Minimal Property Dialog"),
//    and beside the same property dialog whose first page holds the controls
//    of EditKel's first page: the floor under EditKel's time.
//
// Every program is started in turn, the order turning one place each run so
// that a drift of the machine touches all alike, after one warm-up start
// each; each program is ended as soon as the window timed shows.
//
//   StartupBench.exe <EditKel.exe> <demo configuration folder> <runs> <MinimalDialog.exe>
//                    <ManifestDialog.exe> <EditKelLibraries.exe> <PropertyDialog.exe>
//                    <PageControlsDialog.exe> <PickerControlsDialog.exe>
//
// The demo folder is registered first as the configuration "Demo" of the
// products measured, for the current user, as the picker needs one to show.
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
// The product whose configuration dialog has the most pages.
const wchar_t* const kDialogProduct = L"Shopwise";

struct Program
{
    const char* name; // as printed
    std::wstring path;
    std::wstring arguments;
    std::wstring title; // of the first visible window, exactly
    // When set: the first window's OK is posted, and the time is measured
    // from then until a window of this title shows.
    std::wstring nextTitle;
    std::vector<double> milliseconds;
};

struct Search
{
    DWORD process;
    const std::wstring* title;
    HWND found;
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
    if (search.title->compare(title) == 0)
        search.found = window;
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

// Waits (at most a minute from `start`) until the process shows a window of
// that title; null when it does not or the process ends.
HWND WaitForWindow(HANDLE process, DWORD processId, const std::wstring& title, double start)
{
    Search search{processId, &title, nullptr};
    while (Now() - start < 60000)
    {
        EnumWindows(LookAt, reinterpret_cast<LPARAM>(&search));
        if (search.found)
            return search.found;
        if (WaitForSingleObject(process, 1) == WAIT_OBJECT_0)
            return nullptr;
    }
    return nullptr;
}

// Runs the program once and answers the milliseconds measured; negative when
// a window did not show within a minute. `pages` receives the tab count of
// the second window, when there is one.
double TimeRun(const Program& program, int* pages = nullptr)
{
    std::wstring commandLine = L"\"" + program.path + L"\" " + program.arguments;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    double start = Now();
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &started))
        return -1;
    double took = -1;
    if (HWND first = WaitForWindow(started.hProcess, started.dwProcessId, program.title, start))
    {
        took = Now() - start;
        if (!program.nextTitle.empty())
        {
            // As a click on OK does it (mouse input from outside is posted).
            took = -1;
            start = Now();
            PostMessageW(first, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED),
                         LPARAM(GetDlgItem(first, IDOK)));
            if (HWND next =
                    WaitForWindow(started.hProcess, started.dwProcessId, program.nextTitle, start))
            {
                took = Now() - start;
                if (pages)
                {
                    HWND tabs = FindWindowExW(next, nullptr, L"SysTabControl32", nullptr);
                    *pages =
                        tabs ? int(SendMessageW(tabs, 0x1304 /* TCM_GETITEMCOUNT */, 0, 0)) : 0;
                }
            }
        }
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

bool Register(const std::wstring& product, const std::wstring& folder)
{
    const std::wstring key = L"Software\\Orvantix\\Brindlecove " STARTUP_WIDE(KEL_RELEASE) L"\\" +
                             product + L"\\Configurations";
    const std::wstring value = folder.back() == L'\\' ? folder : folder + L"\\";
    return RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"Demo", REG_SZ, value.c_str(),
                           DWORD((value.size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

void Summary(const char* what, double value, double target)
{
    std::printf("SUMMARY|%s|%.2f|%.2f|x\n", what, value, target);
}
} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count < 10)
    {
        std::fprintf(stderr, "usage: StartupBench <EditKel.exe> <demo folder> <runs> "
                             "<MinimalDialog.exe> <ManifestDialog.exe> <EditKelLibraries.exe> "
                             "<PropertyDialog.exe> <PageControlsDialog.exe> "
                             "<PickerControlsDialog.exe>\n");
        return 2;
    }
    const int runs = std::max(1, _wtoi(arguments[3]));
    if (!Register(L"Plotwise", arguments[2]) || !Register(kDialogProduct, arguments[2]))
    {
        std::fprintf(stderr, "cannot register the demo configuration\n");
        return 1;
    }
    const std::wstring product = kDialogProduct;
    enum
    {
        Editor,
        Minimal,
        Manifest,
        Libraries,
        EditorDialog,
        PropertyDialog,
        ControlsDialog,
        PickerControls
    };
    std::vector<Program> programs = {
        {"EditKel (the picker)",
         arguments[1],
         L"-app=Plotwise",
         L"Select Configuration - Plotwise",
         L"",
         {}},
        {"minimal dialog", arguments[4], L"", L"Minimal Dialog", L"", {}},
        {"minimal dialog, EditKel's manifest", arguments[5], L"", L"Minimal Dialog", L"", {}},
        {"minimal dialog, EditKel's library calls", arguments[6], L"", L"Minimal Dialog", L"", {}},
        {"EditKel, picker OK to the dialog",
         arguments[1],
         L"-app=" + product,
         L"Select Configuration - " + product,
         product + L" Config Editor - " STARTUP_WIDE(KEL_VERSION_TEXT),
         {}},
        {"minimal property dialog, OK to it",
         arguments[7],
         L"",
         L"Minimal Dialog",
         L"Minimal Property Dialog",
         {}},
        {"the same, first page with EditKel's controls",
         arguments[8],
         L"",
         L"Minimal Dialog",
         L"Minimal Property Dialog",
         {}},
        {"minimal dialog, the picker's controls", arguments[9], L"", L"Minimal Dialog", L"", {}}};

    // One run each to warm up (the first start of a prefix loads much from
    // disk); the editor's run also tells how many pages its dialog has.
    int pages = 0;
    for (size_t i = 0; i < programs.size(); ++i)
    {
        if (i == PropertyDialog || i == ControlsDialog)
            programs[i].arguments = std::to_wstring(pages);
        if (TimeRun(programs[i], i == EditorDialog ? &pages : nullptr) < 0 ||
            (i == EditorDialog && pages <= 0))
        {
            std::fprintf(stderr, "%ls %ls did not show its windows\n", programs[i].path.c_str(),
                         programs[i].arguments.c_str());
            return 1;
        }
    }
    for (int run = 0; run < runs; ++run)
        for (size_t turn = 0; turn < programs.size(); ++turn)
        {
            Program& program = programs[(turn + size_t(run)) % programs.size()];
            const double took = TimeRun(program);
            if (took < 0)
            {
                std::fprintf(stderr, "%ls did not show its windows\n", program.path.c_str());
                return 1;
            }
            program.milliseconds.push_back(took);
        }

    std::printf("Under Wine, milliseconds (%d runs each; start to first window, or OK to the "
                "dialog):\n",
                runs);
    std::vector<double> medians;
    for (const Program& program : programs)
    {
        medians.push_back(Median(program.milliseconds));
        std::printf("  %-40s median %7.1f  runs", program.name, medians.back());
        for (double took : program.milliseconds)
            std::printf(" %.0f", took);
        std::printf("\n");
    }
    const double plain = medians[Editor] / medians[Minimal];
    const double manifest = medians[Editor] / medians[Manifest];
    const double floor = medians[Libraries] / medians[Manifest];
    const double pickerFloor = medians[PickerControls] / medians[Manifest];
    const double dialog = medians[EditorDialog] / medians[PropertyDialog];
    const double controls = medians[ControlsDialog] / medians[PropertyDialog];
    std::printf("  EditKel / minimal dialog: %.2fx\n"
                "  EditKel / minimal dialog with EditKel's manifest: %.2fx\n"
                "  minimal dialog with EditKel's manifest / minimal dialog: %.2fx\n"
                "  minimal dialog with EditKel's library calls / with the manifest: %.2fx\n"
                "  minimal dialog with the picker's controls / with the manifest: %.2fx\n"
                "  EditKel / minimal dialog with the picker's controls: %.2fx\n"
                "  %ls dialog (%d pages), picker OK to shown / minimal property dialog with %d "
                "empty pages: %.2fx\n"
                "  minimal property dialog, first page with EditKel's controls / with empty "
                "pages: %.2fx\n"
                "  %ls dialog / minimal property dialog with EditKel's controls: %.2fx\n\n",
                plain, manifest, medians[Manifest] / medians[Minimal], floor, pickerFloor,
                medians[Editor] / medians[PickerControls], product.c_str(), pages, pages, dialog,
                controls, product.c_str(), medians[EditorDialog] / medians[ControlsDialog]);

    char row[200];
    (void)std::snprintf(
        row, sizeof row,
        "start-up under Wine: EditKel to the picker / minimal dialog with EditKel's "
        "manifest (medians of %d)",
        runs);
    Summary(row, manifest, 1.10);
    Summary("  its floor: that dialog after EditKel's start-up library calls / with the manifest",
            floor, 1.10);
    Summary("  its floor: that dialog holding the picker's controls / with the manifest",
            pickerFloor, 1.10);
    (void)std::snprintf(
        row, sizeof row,
        "start-up under Wine: picker OK to the %ls dialog / minimal property dialog "
        "with %d pages",
        product.c_str(), pages);
    Summary(row, dialog, 1.50);
    Summary("  its floor: that property dialog, first page with EditKel's controls / empty pages",
            controls, 1.50);
    (void)std::fflush(stdout);
    return 0;
}
