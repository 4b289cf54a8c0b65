#include "framework/AppEntry.h"

#include <commctrl.h>
#include <objbase.h>
#include <shlobj.h>
#include <shlwapi.h>

#include "framework/Folders.h"
#include "framework/SystemLibrary.h"
#include "framework/Window.h"
#include "text/WideText.h"

namespace
{
// The first unit of a locale setting, or `fallback` when it is empty.
char16_t LocaleUnit(LCTYPE type, char16_t fallback)
{
    wchar_t buffer[8] = {};
    if (GetLocaleInfoW(LOCALE_USER_DEFAULT, type, buffer, 8) > 1)
        return char16_t(buffer[0]);
    return fallback;
}
} // namespace

AppEntry::AppEntry(HINSTANCE givenInstance, HWND hostWindow, HINSTANCE givenResources,
                   AppInteraction* interaction)
    : AppInterface(interaction), sharedArray(u"KEL_SafeThreadArrayAccess"),
      threadId(GetCurrentThreadId())
{
    typeTag = kAppEntryTag;

    // Before any DLL is loaded by name: never from the current folder.
    RestrictDllSearch();

    // Numbers shown to the user follow the user's locale.
    TextConventions& conventions = GetTextConventions();
    conventions.thousandsSeparator = LocaleUnit(LOCALE_STHOUSAND, conventions.thousandsSeparator);
    conventions.decimalMark = LocaleUnit(LOCALE_SDECIMAL, conventions.decimalMark);

    ReadCommonControlsVersion();

    if (!givenInstance && hostWindow)
    {
        // Hosted: the program runs inside another program's window.
        hosted = true;
        instance = reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(hostWindow, GWLP_HINSTANCE));
        resourceInstance = givenResources ? givenResources : instance;
        hostFrame = std::make_unique<Window>(hostWindow);
        mainFrame = hostFrame.get();
        if (HDC dc = GetDC(hostWindow))
        {
            displayScale = GetDeviceCaps(dc, LOGPIXELSX) / 96.0;
            ReleaseDC(hostWindow, dc);
        }
    }
    else
    {
        instance = givenInstance;
        resourceInstance = givenResources ? givenResources : givenInstance;
        if (!givenResources)
        {
            KelText problem = CommonControlsProblem(commonControlsMajor, commonControlsMinor);
            if (!problem.IsEmpty())
            {
                // Reported once; start-up goes on.
                bool unused = false;
                Interaction().ShowMessageBox(DefaultOwner(), problem, u"Problem", MB_ICONHAND, 0,
                                             KelText(), unused);
            }
            INITCOMMONCONTROLSEX controls = {};
            controls.dwSize = sizeof(controls);
            controls.dwICC = 0x45FF;
            InitCommonControlsEx(&controls);
            // COM is entered on first use (EnsureCom): the first screen needs none.
            SetProcessDPIAware();
        }
    }
    SetUpRuntime();
}

AppEntry::~AppEntry()
{
    if (richEdit)
        FreeLibrary(richEdit);
    if (msimg32)
        FreeLibrary(msimg32);
    if (user32)
        FreeLibrary(user32);
    if (comInitialised)
        ComEntry<void(WINAPI*)()>("CoUninitialize")();
}

void AppEntry::ReadCommonControlsVersion()
{
    HMODULE comctl = LoadSystemLibrary(L"comctl32.dll");
    auto getVersion = GetProc<DLLGETVERSIONPROC>(comctl, "DllGetVersion");
    if (getVersion)
    {
        DLLVERSIONINFO info = {};
        info.cbSize = sizeof(info);
        if (getVersion(&info) >= 0)
        {
            commonControlsMajor = int32_t(info.dwMajorVersion);
            commonControlsMinor = int32_t(info.dwMinorVersion);
        }
    }
    else
    {
        // Libraries before DllGetVersion existed.
        commonControlsMajor = 4;
        commonControlsMinor = 0;
    }
    if (comctl)
        FreeLibrary(comctl);
}

bool AppEntry::IsSingleClickMode()
{
    if (!shellSettingsRead)
        ReadShellSettings();
    return singleClickMode;
}

void AppEntry::ReadShellSettings()
{
    shellSettingsRead = true;
    // Without the shell's answer the classic double-click behaviour stays.
    SHELLFLAGSTATE state = {};
    state.fWin95Classic = TRUE;
    HMODULE shell = LoadSystemLibrary(L"shell32.dll");
    using GetSettingsProc = void(WINAPI*)(SHELLFLAGSTATE*, DWORD);
    if (auto getSettings = GetProc<GetSettingsProc>(shell, "SHGetSettings"))
        getSettings(&state, SSF_DOUBLECLICKINWEBVIEW | SSF_WIN95CLASSIC);
    if (shell)
        FreeLibrary(shell);
    singleClickMode = !state.fWin95Classic && !state.fDoubleClickInWebView;
}

void AppEntry::SetUpRuntime()
{
    mouseWheelMessage = RegisterWindowMessageW(L"MSWHEEL_ROLLMSG");
    startupFolder = ReadCurrentDirectory();
    programFolder = startupFolder;
    tempFolder = ReadTempFolder();
    SplitFilePath(ReadModulePath(nullptr), executableFolder, executableName);

    user32 = LoadSystemLibrary(L"user32.dll");
    getComboBoxInfo = GetProc<GetComboBoxInfoProc>(user32, "GetComboBoxInfo");
    // The drawing and rich-edit libraries are loaded when first asked for.
}

void AppEntry::LoadDrawingLibrary()
{
    if (msimg32Tried)
        return;
    msimg32Tried = true;
    msimg32 = LoadSystemLibrary(L"msimg32.dll");
    gradientFill = GetProc<GradientFillProc>(msimg32, "GradientFill");
    alphaBlend = GetProc<AlphaBlendProc>(msimg32, "AlphaBlend");
}

AppEntry::GradientFillProc AppEntry::GradientFillEntry()
{
    LoadDrawingLibrary();
    return gradientFill;
}

AppEntry::AlphaBlendProc AppEntry::AlphaBlendEntry()
{
    LoadDrawingLibrary();
    return alphaBlend;
}

int32_t AppEntry::RichEditLevel()
{
    if (richEditTried)
        return richEditLevel;
    // The rich-edit window classes exist once their library is loaded: a
    // window that wants one asks for the level before it is created.
    richEditTried = true;
    richEdit = LoadSystemLibrary(L"Riched20.dll");
    richEditLevel = 2;
    if (!richEdit)
    {
        richEdit = LoadSystemLibrary(L"Riched32.dll");
        richEditLevel = richEdit ? 1 : 0;
    }
    return richEditLevel;
}

bool AppEntry::EnsureCom()
{
    if (GetCurrentThreadId() != threadId)
        return EnterComOnThisThread();
    if (!comTried)
    {
        comTried = true;
        comUsable = EnterCom(comInitialised);
    }
    return comUsable;
}

void AppEntry::DebugWarning(const KelText&, const KelText&, uint32_t)
{
    // Deliberately silent: the editor never shows or logs debug warnings.
}

KelText AppEntry::GetTextByKind(int32_t kind)
{
    switch (kind)
    {
    case 3:
        return executableName;
    case 5:
        return release;
    case 6:
        return VersionText(2023, 0, 0, u'F');
    default:
        return AppInterface::GetTextByKind(kind);
    }
}

bool AppEntry::ResolveProgramFile(const KelText& name, KelText& fullPath)
{
    if (name.IsEmpty())
        return false;
    const bool absolute = name.At(1) == u':' || name.At(0) == u'/' || name.At(0) == u'\\';
    if (absolute)
    {
        if (!PathExists(name))
            return false;
        fullPath = name;
        return true;
    }
    for (const KelText* folder : {&programFolder, &executableFolder})
    {
        if (folder->IsEmpty())
            continue;
        KelText candidate = *folder + name;
        if (PathExists(candidate))
        {
            fullPath = candidate;
            return true;
        }
    }
    return false;
}

void AppEntry::SetSettingsFolder(const KelText& folder)
{
    settingsFolder = NormaliseFolder(folder);
}

HWND AppEntry::DefaultOwner() const
{
    return mainFrame ? mainFrame->Handle() : nullptr;
}

KelText AppEntry::CommonControlsProblem(int32_t major, int32_t minor)
{
    if (major >= 6 || (major == 5 && minor >= 80))
        return KelText();
    KelText version =
        major == 0 && minor == 0 ? KelText(u"Unknown") : KelText::Formatted(u"%i.%i", major, minor);
    return KelText::Formatted(u"Incorrect Version: COMCTL32.DLL (%s)\n\nVersion 5.80 or above is "
                              u"required to run this program, which can be obtained by upgrading "
                              u"internet explorer to version 5 or above",
                              version);
}

KelText AppEntry::VersionText(int32_t year, int32_t major, int32_t minor, char16_t build)
{
    return KelText::Formatted(u"%i.%i.%i.%c", year, major, minor, build);
}
