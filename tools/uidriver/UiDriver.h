#pragma once
// Drives the user interface of another process: the end-to-end tests start a
// program, wait for its windows and work its controls from outside, the way a
// user would, then read what it did.
//
// Everything that waits has a timeout. Failures throw UiDriver::Error with a
// message that says what was expected and what was found instead (for example
// the windows the process did show), so a test never hangs and its log tells
// why it failed.
//
// Mouse clicks and button presses are posted, never sent: a press that opens a
// modal dialog would otherwise block the driver until that dialog closes, and
// Wine refuses WM_NOTIFY sent across processes. Messages that carry pointers
// (list view, tree view and tab control items) go through memory allocated in
// the target process. Plain Win32 queries such as IsWindowEnabled and
// IsWindowVisible work across processes as they are.
#ifndef _WIN32
#error "the UI driver is for Windows builds only"
#endif

#include <windows.h>

#include <commctrl.h>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace UiDriver
{
using Duration = std::chrono::milliseconds;

// How long a wait lasts unless the caller says otherwise.
inline constexpr Duration DefaultWait{10000};
// How long one message sent to the target may take before it counts as hung.
inline constexpr Duration MessageWait{5000};

class Error : public std::runtime_error
{
public:
    explicit Error(std::wstring_view message);
};

// UTF-16 <-> UTF-8, for messages and for paths handed over by the build.
std::string Utf8(std::wstring_view text);
std::wstring Wide(std::string_view utf8);

// A path as the build knows it (a Linux path when the tests run under Wine)
// turned into one that Windows programs accept. Windows paths come back as
// they are.
std::wstring WindowsPath(std::string_view path);

// Polls `condition` every 20 ms until it holds or `timeout` has passed; says
// whether it held.
bool WaitUntil(const std::function<bool()>& condition, Duration timeout);

// "10 s", "500 ms": durations in messages.
std::wstring DescribeDuration(Duration duration);

// ---------------------------------------------------------------------------
// Windows and controls
// ---------------------------------------------------------------------------

enum class TitleMatch
{
    Exact,
    Prefix
};

struct WindowInfo
{
    HWND handle = nullptr;
    DWORD processId = 0;
    std::wstring title;
    std::wstring className;
    bool visible = false;
};

// Top-level windows of one process (processId 0: of every process).
std::vector<WindowInfo> TopLevelWindows(DWORD processId);
// The first visible top-level window of the process whose title matches.
HWND FindTopLevelWindow(DWORD processId, std::wstring_view title, TitleMatch match);
// One line per window: 'title' (class, visible|hidden).
std::wstring DescribeWindows(const std::vector<WindowInfo>& windows);
// 'title' (class, id N) of one window or control.
std::wstring Describe(HWND window);

struct ControlInfo
{
    HWND handle = nullptr;
    int id = 0;
    int depth = 1; // 1 for a direct child, 2 for a child of a child, ...
    std::wstring className;
    std::wstring text;
    bool visible = false;
    bool enabled = false;
};

// Every descendant of `root`, parents before their children.
std::vector<ControlInfo> Controls(HWND root);
std::wstring DescribeControls(HWND root);

// The control with this id anywhere under `root` (property pages are child
// dialogs, so their controls are grandchildren). When several share the id,
// a visible one wins. FindControl answers nullptr, Control throws.
HWND FindControl(HWND root, int id);
HWND Control(HWND root, int id);
// The control under `root` whose text is exactly `text` (a button by caption).
HWND ControlWithText(HWND root, std::wstring_view text);

// Sends a message with a timeout; throws when the target does not answer.
LRESULT Send(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0,
             Duration timeout = MessageWait);

// Window text through WM_GETTEXT / WM_SETTEXT (both cross process boundaries).
std::wstring Text(HWND window);
void SetText(HWND window, std::wstring_view text);

// ---------------------------------------------------------------------------
// Buttons, check boxes, combo boxes, keys
// ---------------------------------------------------------------------------

// Posts BM_CLICK: the button's owner gets BN_CLICKED as from a mouse click.
void Press(HWND button);
int CheckState(HWND button); // BST_UNCHECKED, BST_CHECKED or BST_INDETERMINATE
bool IsChecked(HWND button);
// Presses the check box when its state differs, then waits for the new state.
void SetChecked(HWND checkBox, bool checked, Duration timeout = DefaultWait);

std::vector<std::wstring> ComboItems(HWND combo);
int ComboSelection(HWND combo); // CB_ERR (-1) when nothing is selected
// Selects the item and tells the owner (CBN_SELCHANGE), as a user's choice would.
void SelectComboItem(HWND combo, int index);
void SelectComboItem(HWND combo, std::wstring_view text);

enum Modifier : unsigned
{
    NoModifier = 0,
    Shift = 1,
    Ctrl = 2,
    Alt = 4
};

// Posts a key press (WM_KEYDOWN, WM_KEYUP) with the given modifiers held.
// The keys go to the keyboard focus of the window's thread when that focus
// lies inside `window`, else to `window` itself. While modifiers are held the
// target thread's key state shows them down (GetKeyState), as dialog loops
// check it for Ctrl+Tab and the like; `done` says when the target has acted on
// the key, and the modifiers are released then (or after `timeout`, without
// failing: the caller checks the outcome).
void PressKey(HWND window, UINT virtualKey, unsigned modifiers = NoModifier,
              const std::function<bool()>& done = {}, Duration timeout = DefaultWait);

// ---------------------------------------------------------------------------
// List views (report view)
// ---------------------------------------------------------------------------

int ListRowCount(HWND list);
int ListColumnCount(HWND list);
std::wstring ListCell(HWND list, int row, int column);
// The image index of a row's first column (I_IMAGENONE or -1: none).
int ListImage(HWND list, int row);
std::vector<std::wstring> ListRow(HWND list, int row);
std::vector<std::vector<std::wstring>> ListRows(HWND list);
// The row whose first column is `text`, -1 when none.
int FindListRow(HWND list, std::wstring_view text);
std::vector<int> ListSelectedRows(HWND list);
// Makes `row` the only selected row and the focused one, and scrolls it into view.
void SelectListRow(HWND list, int row);
// Selects the row, then posts a double click on its label.
void DoubleClickListRow(HWND list, int row);

// ---------------------------------------------------------------------------
// Tree views with check boxes
// ---------------------------------------------------------------------------

struct TreeItem
{
    HTREEITEM handle = nullptr;
    int depth = 0; // 0 for a root item
    std::wstring text;
    bool checked = false;
};

// Every item, depth first in display order.
std::vector<TreeItem> TreeItems(HWND tree);
// The first item whose text is exactly `text`; throws when there is none.
TreeItem FindTreeItem(HWND tree, std::wstring_view text);
bool IsTreeItemChecked(HWND tree, HTREEITEM item);
// Sets the check box image (state image 1 unchecked, 2 checked).
void SetTreeItemChecked(HWND tree, HTREEITEM item, bool checked);

// ---------------------------------------------------------------------------
// Tab controls
// ---------------------------------------------------------------------------

std::vector<std::wstring> TabTexts(HWND tabs);
int CurrentTab(HWND tabs);
// Posts a left click on the tab item and waits until it is the current tab.
void ClickTab(HWND tabs, int index, Duration timeout = DefaultWait);
void ClickTab(HWND tabs, std::wstring_view text, Duration timeout = DefaultWait);

// ---------------------------------------------------------------------------
// Message boxes
// ---------------------------------------------------------------------------

inline constexpr wchar_t DialogClass[] = L"#32770";

// The message text of a message box (its static texts, icon excluded).
std::wstring MessageBoxText(HWND box);
// Presses the button with this id (IDOK, IDCANCEL, IDYES, ...) and waits
// until the box has gone.
void CloseMessageBox(HWND box, int buttonId, Duration timeout = DefaultWait);

// ---------------------------------------------------------------------------
// Screenshots
// ---------------------------------------------------------------------------

// Saves the screen as a PNG file, or only the rectangle of `window` (brought
// to the top and repainted first). Missing folders of `path` are created.
void SaveScreenshot(const std::wstring& path, HWND window = nullptr);

// ---------------------------------------------------------------------------
// The program under test
// ---------------------------------------------------------------------------

class TargetProcess
{
public:
    // Starts `program` with `arguments` (already quoted as needed) in
    // `workingFolder` (empty: the driver's own). The environment is inherited.
    static TargetProcess Start(std::wstring_view program, std::wstring_view arguments = {},
                               std::wstring_view workingFolder = {});

    TargetProcess(TargetProcess&& other) noexcept;
    TargetProcess& operator=(TargetProcess&& other) noexcept;
    TargetProcess(const TargetProcess&) = delete;
    TargetProcess& operator=(const TargetProcess&) = delete;
    // A process still running is killed: a test never leaves one behind.
    ~TargetProcess();

    DWORD Id() const { return info_.dwProcessId; }
    HANDLE Handle() const { return info_.hProcess; }
    bool IsRunning() const;

    // Waits for the process to end and returns its exit code. On timeout the
    // process is killed and Error says so, with the windows it still showed.
    DWORD WaitForExit(Duration timeout = DefaultWait);
    void Kill();

    std::vector<WindowInfo> Windows() const;
    std::wstring DescribeWindows() const;
    HWND FindWindowTitled(std::wstring_view title, TitleMatch match = TitleMatch::Exact) const;
    // Waits for a visible top-level window; on timeout Error lists the
    // windows the process has, or says that it has ended.
    HWND WaitForWindow(std::wstring_view title, Duration timeout = DefaultWait,
                       TitleMatch match = TitleMatch::Exact) const;
    // A message box with this caption (a "#32770" dialog with the message
    // box's text control, enabled while its owner is blocked).
    HWND WaitForMessageBox(std::wstring_view caption, Duration timeout = DefaultWait) const;
    // Watches for `period`: throws when a visible window appears. Returns
    // early when the process ends, since no window can follow.
    void ExpectNoWindow(Duration period) const;

private:
    TargetProcess() = default;
    void Close();

    PROCESS_INFORMATION info_{};
    std::wstring name_;
};

} // namespace UiDriver
