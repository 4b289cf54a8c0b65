#pragma once
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "framework/AppInterface.h"
#include "framework/CriticalSection.h"
#include "framework/GuardedArray.h"
#include "text/KelText.h"
#include "text/MessageSwitches.h"

class Window;

// Work done while the message queue is empty. Answers true to be called again
// before the loop waits for the next message.
class IdleHandler
{
public:
    virtual ~IdleHandler() = default;
    virtual bool OnIdle(int32_t idleCount) = 0;
};

// The application object of a windowed program: its folders, release,
// command line, registry branches, message switches, the modal message loop
// and the wait cursor. One per process, reached through GetAppEntry().
class AppEntry : public AppInterface
{
public:
    // Standalone: `instance` is the program's module. Hosted (no instance but
    // a host window): the program lives inside the host's window.
    // `resourceInstance` (optional) is where templates and strings come from.
    // `interaction` replaces the system's windows from the start (tests).
    AppEntry(HINSTANCE instance, HWND hostWindow = nullptr, HINSTANCE resourceInstance = nullptr,
             AppInteraction* interaction = nullptr);
    AppEntry(const AppEntry&) = delete;
    AppEntry& operator=(const AppEntry&) = delete;
    ~AppEntry() override;

    // Debug warnings are not shown or logged by this application.
    void DebugWarning(const KelText& title, const KelText& message, uint32_t flags) override;
    // 1 the kept notice, 3 the executable name, 5 the release, 6 the full
    // version; others as AppInterface.
    KelText GetTextByKind(int32_t kind) override;
    // Looks for `name` in the program folder, then in the executable folder.
    bool ResolveProgramFile(const KelText& name, KelText& fullPath) override;

    // The text of a registry key: "HKEY_CURRENT_USER\" or
    // "HKEY_LOCAL_MACHINE\", "Software\Orvantix\", then "Brindlecove
    // <release>\" once a release is registered, then "<subKey>\" when given.
    KelText GetRegistryKeyPath(const KelText& subKey, bool currentUser) const;
    // The same text for a given release (empty: none), before one is registered.
    static KelText RegistryKeyPathFor(const KelText& release, const KelText& subKey,
                                      bool currentUser);
    // The install folder of a product: the program folder when it holds the
    // executable (unless skipped), else the first existing folder of the
    // machine's "InstallPath", the user's "LastRun" and the user's
    // "InstallPath". Empty when none exists.
    KelText ResolveInstallPath(const KelText& product, bool skipProgramFolder);
    // Settles the release and the product's data folders (created unless
    // `createFolders` is false: a program that only reads, or shows what it
    // would write, leaves the disk as it is), the shared documents folder, the
    // program folder and the cloud flag, and registers the application's own
    // message switch.
    void RegisterRelease(const KelText& product, const KelText& release, bool checkCloud,
                         bool createFolders = true);
    // The user's "Language" value for the product; empty when absent.
    KelText GetLanguage(const KelText& product);

    // --- message switches -------------------------------------------------
    MsgSwitchList& MessageSwitches() { return messageSwitches; }
    // The key that keeps the switch states: the application key + "COMMON\PROMPTS".
    KelText SwitchKeyPath() const;
    // Whether messages of that switch are shown, read from the registry each
    // time. Unknown codes, and a missing key or value, are shown; a value
    // that is not a DWORD counts as switched off.
    bool IsSwitchShown(uint32_t code) const;
    // Stores a switch's state (creating the key). False for an unknown code
    // or when the registry refuses.
    bool SetSwitchShown(uint32_t code, bool shown);
    // The application's message box; answers the button pressed. With a
    // registered switchCode the message is shown only while its switch is on,
    // and the box offers "Don't Show This Message Again"; ticking it switches
    // the message off. A message that is switched off is not shown: the answer
    // is then the box's default button (the one MB_DEFBUTTONn selects, e.g.
    // IDOK or IDYES), as if the user had pressed Enter.
    int32_t ShowMessageBox(HWND owner, const KelText& text, const KelText& caption, uint32_t style,
                           uint32_t switchCode = 0);

    // --- message loop -------------------------------------------------------
    // Pumps messages until WM_QUIT or, with a modal window, until that window
    // (or one beneath it on the modal stack) has been taken off the stack. The
    // modal window's owner is disabled meanwhile. Answers the wParam of the
    // last message.
    WPARAM RunMessageLoop(Window* modalWindow = nullptr);
    // Lets the window on top of the modal stack (else the main frame) see a
    // message before it is dispatched (Window::PreTranslateMessage: dialogs
    // give the dialog manager its keyboard messages there). Answers true when
    // the window handled it; the loop then skips the message.
    bool PreTranslate(MSG& message);
    // Called by a closing modal window: takes it and every window above it off
    // the modal stack and wakes the message loop (a WM_NULL to the thread), so
    // that its loop ends at once even when nothing else is queued. Does
    // nothing for a window that is not on it.
    void EndModal(Window* window);
    int32_t ModalCount() const { return int32_t(modalStack.size()); }
    // Idle handlers are called last-registered first.
    void AddIdleHandler(IdleHandler* handler);
    bool RemoveIdleHandler(IdleHandler* handler);
    int32_t IdleCount() const { return idleCounter; }

    Window* MainFrame() const { return mainFrame; }
    void SetMainFrame(Window* frame) { mainFrame = frame; }
    HACCEL Accelerators() const { return accelerators; }
    void SetAccelerators(HACCEL table) { accelerators = table; }

    // --- wait cursor and background work -----------------------------------
    void BeginWait(Window* window = nullptr);
    void EndWait(Window* window = nullptr);
    int32_t WaitNesting() const { return waitNesting; }
    // Worker threads announce work; EndWait counts it down and notes the time
    // when the last piece is done.
    void AddBackgroundBusy();
    int32_t BackgroundBusyCount();
    DWORD LastIdleTick();

    // --- folders and names (folder texts use "/" and end in "/") -----------
    const KelText& ProgramFolder() const { return programFolder; }
    const KelText& StartupFolder() const { return startupFolder; }
    const KelText& UserDataFolder() const { return userDataFolder; }
    const KelText& TempFolder() const { return tempFolder; }
    const KelText& LocalDataRoot() const { return localDataRoot; }
    const KelText& RoamingDataRoot() const { return roamingDataRoot; }
    const KelText& LocalProductFolder() const { return localProductFolder; }
    const KelText& RoamingProductFolder() const { return roamingProductFolder; }
    const KelText& SharedDocumentsFolder() const { return sharedDocumentsFolder; }
    const KelText& ExecutableFolder() const { return executableFolder; }
    const KelText& ExecutableName() const { return executableName; }
    const KelText& Release() const { return release; }
    const KelText& CommandLine() const { return commandLine; }
    void SetCommandLine(const KelText& text) { commandLine = text; }
    bool IsCloudInstall() const { return cloudInstall; }
    // From the shell's settings, read when first asked for.
    bool IsSingleClickMode();

    // Where start-up creates a new configuration: the local product data folder.
    const KelText& NewConfigurationFolder() const { return localProductFolder; }
    const KelText& ApplicationName() const { return applicationName; }
    void SetApplicationName(const KelText& name) { applicationName = name; }
    const KelText& ProductName() const { return productName; }
    void SetProductName(const KelText& name) { productName = name; }
    const KelText& SettingsFolder() const { return settingsFolder; }
    // Stored normalised ("/" separators, trailing "/").
    void SetSettingsFolder(const KelText& folder);
    const KelText& ConfigurationName() const { return configurationName; }
    void SetConfigurationName(const KelText& name) { configurationName = name; }
    bool ConfigurationFlag() const { return configurationFlag; }
    void SetConfigurationFlag(bool flag) { configurationFlag = flag; }

    // --- the system -------------------------------------------------------------
    HINSTANCE Instance() const { return instance; }
    HINSTANCE ResourceInstance() const { return resourceInstance; }
    double DisplayScale() const { return displayScale; }
    UINT MouseWheelMessage() const { return mouseWheelMessage; }
    // 0 none, 1 "Riched32.dll", 2 "Riched20.dll". The library is loaded on
    // the first call (its window classes exist from then on), not at start.
    int32_t RichEditLevel();
    using GradientFillProc = BOOL(WINAPI*)(HDC, PTRIVERTEX, ULONG, PVOID, ULONG, ULONG);
    using AlphaBlendProc = BOOL(WINAPI*)(HDC, int, int, int, int, HDC, int, int, int, int,
                                         BLENDFUNCTION);
    using GetComboBoxInfoProc = BOOL(WINAPI*)(HWND, PCOMBOBOXINFO);
    // Null when the system lacks them. msimg32 is loaded on the first call.
    GradientFillProc GradientFillEntry();
    AlphaBlendProc AlphaBlendEntry();
    GetComboBoxInfoProc GetComboBoxInfoEntry() const { return getComboBoxInfo; }
    // Enters COM (single-threaded apartment) on the calling thread unless it
    // is in already; call it before the first COM object is made. The
    // application's own thread leaves COM when the object goes, another
    // thread when it ends. Answers whether COM can be used.
    bool EnsureCom();
    int32_t CommonControlsMajor() const { return commonControlsMajor; }
    int32_t CommonControlsMinor() const { return commonControlsMinor; }

    // The message about an old common-controls library, or empty text when
    // the version (5.80 and later) is good enough. Both parts 0 mean unknown.
    static KelText CommonControlsProblem(int32_t major, int32_t minor);
    // The full version text, "2023.0.0.F".
    static KelText VersionText(int32_t year, int32_t major, int32_t minor, char16_t build);

protected:
    HWND DefaultOwner() const override;

private:
    void ReadCommonControlsVersion();
    void ReadShellSettings();
    void SetUpRuntime();
    void LoadDrawingLibrary();

    KelText programFolder;
    KelText startupFolder;
    KelText userDataFolder;
    KelText tempFolder;
    CriticalSection guard;
    std::atomic<int32_t> backgroundBusy = 0;
    DWORD lastIdleTick = 0;
    std::vector<Window*> modalStack;
    int32_t waitNesting = 0;
    int32_t idleCounter = 1;
    std::vector<IdleHandler*> idleHandlers;
    HINSTANCE instance = nullptr;
    HINSTANCE resourceInstance = nullptr;
    double displayScale = 1.0;
    Window* mainFrame = nullptr;
    HACCEL accelerators = nullptr;
    KelText localDataRoot;
    KelText roamingDataRoot;
    KelText localProductFolder;
    KelText roamingProductFolder;
    KelText sharedDocumentsFolder;
    KelText executableFolder;
    KelText executableName;
    KelText release;
    KelText commandLine;
    bool cloudInstall = false;
    bool singleClickMode = false;
    MsgSwitchList messageSwitches;
    UINT mouseWheelMessage = 0;
    int32_t richEditLevel = 0;
    HMODULE msimg32 = nullptr;
    GradientFillProc gradientFill = nullptr;
    AlphaBlendProc alphaBlend = nullptr;
    HMODULE user32 = nullptr;
    GetComboBoxInfoProc getComboBoxInfo = nullptr;
    int32_t commonControlsMajor = 0;
    int32_t commonControlsMinor = 0;

    GuardedArray sharedArray;
    HMODULE richEdit = nullptr;
    DWORD threadId = 0;
    bool comTried = false;
    bool comInitialised = false;
    bool comUsable = false;
    bool richEditTried = false;
    bool msimg32Tried = false;
    bool shellSettingsRead = false;
    bool hosted = false;
    std::unique_ptr<Window> hostFrame;
    KelText applicationName;
    KelText productName;
    KelText settingsFolder;
    KelText configurationName;
    bool configurationFlag = false;
};
