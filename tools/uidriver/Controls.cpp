// Windows, controls, buttons, combo boxes, keys and message boxes of another process.
#include "tools/uidriver/UiDriver.h"

#include <algorithm>
#include <thread>

namespace UiDriver
{

Error::Error(std::wstring_view message) : std::runtime_error(Utf8(message)) {}

std::string Utf8(std::wstring_view text)
{
    if (text.empty())
        return {};
    int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), nullptr,
                                   0, nullptr, nullptr);
    std::string result(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), result.data(), size,
                        nullptr, nullptr);
    return result;
}

std::wstring Wide(std::string_view utf8)
{
    if (utf8.empty())
        return {};
    int size =
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), nullptr, 0);
    std::wstring result(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()), result.data(),
                        size);
    return result;
}

std::wstring WindowsPath(std::string_view path)
{
    // Under Wine, kernel32 maps a Linux path to its drive letter form; on
    // Windows the build hands over Windows paths already.
    using ToDos = WCHAR*(CDECL*)(const char*);
    auto toDos = reinterpret_cast<ToDos>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_dos_file_name")));
    if (toDos && path.starts_with('/'))
    {
        std::string copy(path);
        if (WCHAR* dos = toDos(copy.c_str()))
        {
            std::wstring result(dos);
            HeapFree(GetProcessHeap(), 0, dos);
            return result;
        }
    }
    std::wstring result = Wide(path);
    std::replace(result.begin(), result.end(), L'/', L'\\');
    return result;
}

bool WaitUntil(const std::function<bool()>& condition, Duration timeout)
{
    auto end = std::chrono::steady_clock::now() + timeout;
    for (;;)
    {
        if (condition())
            return true;
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
}

std::wstring DescribeDuration(Duration duration)
{
    auto ms = duration.count();
    if (ms % 1000 == 0)
        return std::to_wstring(ms / 1000) + L" s";
    return std::to_wstring(ms) + L" ms";
}

namespace
{

std::wstring ClassOf(HWND window)
{
    wchar_t name[256] = {};
    GetClassNameW(window, name, 256);
    return name;
}

// Text for diagnostics: never throws, gives up quickly on a hung window.
std::wstring QuietText(HWND window)
{
    wchar_t buffer[512] = {};
    DWORD_PTR copied = 0;
    if (!SendMessageTimeoutW(window, WM_GETTEXT, 512, reinterpret_cast<LPARAM>(buffer),
                             SMTO_ABORTIFHUNG, 1000, &copied))
        GetWindowTextW(window, buffer, 512);
    return buffer;
}

std::wstring Hex(UINT value)
{
    wchar_t buffer[16];
    wsprintfW(buffer, L"0x%04X", value);
    return buffer;
}

int ControlId(HWND control)
{
    return static_cast<int>(GetWindowLongPtrW(control, GWLP_ID));
}

} // namespace

std::vector<WindowInfo> TopLevelWindows(DWORD processId)
{
    struct Search
    {
        DWORD processId;
        std::vector<WindowInfo> found;
    } search{processId, {}};
    EnumWindows(
        [](HWND window, LPARAM param) -> BOOL
        {
            auto& s = *reinterpret_cast<Search*>(param);
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            if (s.processId == 0 || owner == s.processId)
            {
                wchar_t title[512] = {};
                GetWindowTextW(window, title, 512);
                s.found.push_back(
                    {window, owner, title, ClassOf(window), IsWindowVisible(window) != FALSE});
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND FindTopLevelWindow(DWORD processId, std::wstring_view title, TitleMatch match)
{
    for (const WindowInfo& info : TopLevelWindows(processId))
    {
        bool matches =
            match == TitleMatch::Exact ? info.title == title : info.title.starts_with(title);
        if (matches && info.visible)
            return info.handle;
    }
    return nullptr;
}

std::wstring DescribeWindows(const std::vector<WindowInfo>& windows)
{
    if (windows.empty())
        return L"(none)";
    std::wstring text;
    for (const WindowInfo& info : windows)
    {
        if (!text.empty())
            text += L"; ";
        text += L"'" + info.title + L"' (" + info.className + L", " +
                (info.visible ? L"visible" : L"hidden") + L")";
    }
    return text;
}

std::wstring Describe(HWND window)
{
    if (!IsWindow(window))
        return L"(gone)";
    std::wstring text = L"'" + QuietText(window) + L"' (" + ClassOf(window);
    if (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD)
        text += L", id " + std::to_wstring(ControlId(window));
    return text + L")";
}

std::vector<ControlInfo> Controls(HWND root)
{
    std::vector<ControlInfo> result;
    std::function<void(HWND, int)> walk = [&](HWND parent, int depth)
    {
        for (HWND child = GetWindow(parent, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
        {
            result.push_back({child, ControlId(child), depth, ClassOf(child), QuietText(child),
                              IsWindowVisible(child) != FALSE, IsWindowEnabled(child) != FALSE});
            walk(child, depth + 1);
        }
    };
    walk(root, 1);
    return result;
}

std::wstring DescribeControls(HWND root)
{
    std::wstring text;
    for (const ControlInfo& info : Controls(root))
    {
        text += L"\n" + std::wstring(static_cast<size_t>(info.depth) * 2, L' ') +
                std::to_wstring(info.id) + L" " + info.className + L" '" + info.text + L"'";
        if (!info.visible)
            text += L" hidden";
        if (!info.enabled)
            text += L" disabled";
    }
    return text.empty() ? L"(none)" : text;
}

HWND FindControl(HWND root, int id)
{
    HWND hidden = nullptr;
    for (const ControlInfo& info : Controls(root))
    {
        if (info.id != id)
            continue;
        if (info.visible)
            return info.handle;
        if (!hidden)
            hidden = info.handle;
    }
    return hidden;
}

HWND Control(HWND root, int id)
{
    if (HWND control = FindControl(root, id))
        return control;
    throw Error(L"no control with id " + std::to_wstring(id) + L" under " + Describe(root) +
                L"; its controls:" + DescribeControls(root));
}

HWND ControlWithText(HWND root, std::wstring_view text)
{
    for (const ControlInfo& info : Controls(root))
        if (info.text == text)
            return info.handle;
    throw Error(L"no control with text '" + std::wstring(text) + L"' under " + Describe(root) +
                L"; its controls:" + DescribeControls(root));
}

LRESULT Send(HWND window, UINT message, WPARAM wParam, LPARAM lParam, Duration timeout)
{
    DWORD_PTR result = 0;
    if (!SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG,
                             static_cast<UINT>(timeout.count()), &result))
    {
        if (!IsWindow(window))
            throw Error(L"the window to receive message " + Hex(message) + L" no longer exists");
        throw Error(L"window " + Describe(window) + L" did not answer message " + Hex(message) +
                    L" within " + DescribeDuration(timeout));
    }
    return static_cast<LRESULT>(result);
}

std::wstring Text(HWND window)
{
    auto length = static_cast<size_t>(Send(window, WM_GETTEXTLENGTH));
    std::wstring text(length + 1, L'\0');
    auto copied = static_cast<size_t>(
        Send(window, WM_GETTEXT, length + 1, reinterpret_cast<LPARAM>(text.data())));
    text.resize(std::min(copied, length));
    return text;
}

void SetText(HWND window, std::wstring_view text)
{
    std::wstring copy(text);
    if (!Send(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(copy.c_str())))
        throw Error(L"window " + Describe(window) + L" refused the text '" + copy + L"'");
}

void Press(HWND button)
{
    if (!PostMessageW(button, BM_CLICK, 0, 0))
        throw Error(L"cannot press button " + Describe(button) + L" (error " +
                    std::to_wstring(GetLastError()) + L")");
}

int CheckState(HWND button)
{
    return static_cast<int>(Send(button, BM_GETCHECK));
}

bool IsChecked(HWND button)
{
    return CheckState(button) == BST_CHECKED;
}

void SetChecked(HWND checkBox, bool checked, Duration timeout)
{
    if (IsChecked(checkBox) == checked)
        return;
    if (!IsWindowEnabled(checkBox))
        throw Error(L"check box " + Describe(checkBox) + L" is disabled");
    Press(checkBox);
    if (!WaitUntil([&] { return IsChecked(checkBox) == checked; }, timeout))
        throw Error(L"check box " + Describe(checkBox) + L" is still " +
                    (checked ? L"clear" : L"ticked") + L" " + DescribeDuration(timeout) +
                    L" after it was pressed");
}

std::vector<std::wstring> ComboItems(HWND combo)
{
    std::vector<std::wstring> items;
    auto count = static_cast<int>(Send(combo, CB_GETCOUNT));
    for (int i = 0; i < count; ++i)
    {
        auto length = Send(combo, CB_GETLBTEXTLEN, static_cast<WPARAM>(i));
        if (length < 0)
            throw Error(L"combo box " + Describe(combo) + L" has no text for item " +
                        std::to_wstring(i));
        std::wstring text(static_cast<size_t>(length) + 1, L'\0');
        auto copied = Send(combo, CB_GETLBTEXT, static_cast<WPARAM>(i),
                           reinterpret_cast<LPARAM>(text.data()));
        text.resize(static_cast<size_t>(std::clamp<LRESULT>(copied, 0, length)));
        items.push_back(std::move(text));
    }
    return items;
}

int ComboSelection(HWND combo)
{
    return static_cast<int>(Send(combo, CB_GETCURSEL));
}

void SelectComboItem(HWND combo, int index)
{
    if (Send(combo, CB_SETCURSEL, static_cast<WPARAM>(index)) != index)
        throw Error(L"combo box " + Describe(combo) + L" has no item " + std::to_wstring(index) +
                    L" (it has " + std::to_wstring(Send(combo, CB_GETCOUNT)) + L")");
    // What a user's choice sends: the owner learns of it through CBN_SELCHANGE.
    PostMessageW(GetParent(combo), WM_COMMAND, MAKEWPARAM(ControlId(combo), CBN_SELCHANGE),
                 reinterpret_cast<LPARAM>(combo));
}

void SelectComboItem(HWND combo, std::wstring_view text)
{
    std::vector<std::wstring> items = ComboItems(combo);
    auto found = std::find(items.begin(), items.end(), text);
    if (found == items.end())
    {
        std::wstring list;
        for (const std::wstring& item : items)
            list += (list.empty() ? L"'" : L", '") + item + L"'";
        throw Error(L"combo box " + Describe(combo) + L" has no item '" + std::wstring(text) +
                    L"'; its items: " + (list.empty() ? L"(none)" : list));
    }
    SelectComboItem(combo, static_cast<int>(found - items.begin()));
}

namespace
{

LPARAM KeyParam(UINT virtualKey, bool up)
{
    auto scan = static_cast<LPARAM>(MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC));
    LPARAM param = 1 | (scan << 16);
    if (up)
        param |= (LPARAM{1} << 30) | (LPARAM{1} << 31);
    return param;
}

// Holds modifier keys down in the key state of another thread: the driver
// joins that thread's input state, whose keyboard state GetKeyState reads.
class HeldModifiers
{
public:
    HeldModifiers(DWORD thread, unsigned modifiers) : thread_(thread)
    {
        if (modifiers == NoModifier)
            return;
        MSG msg;
        PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE); // the driver thread needs a queue
        if (!AttachThreadInput(GetCurrentThreadId(), thread_, TRUE))
            throw Error(L"cannot hold modifier keys: the input state of thread " +
                        std::to_wstring(thread_) + L" cannot be shared (error " +
                        std::to_wstring(GetLastError()) + L")");
        if (modifiers & Shift)
            keys_.insert(keys_.end(), {VK_SHIFT, VK_LSHIFT});
        if (modifiers & Ctrl)
            keys_.insert(keys_.end(), {VK_CONTROL, VK_LCONTROL});
        if (modifiers & Alt)
            keys_.insert(keys_.end(), {VK_MENU, VK_LMENU});
        Set(0x80);
    }
    ~HeldModifiers()
    {
        if (keys_.empty())
            return;
        Set(0);
        AttachThreadInput(GetCurrentThreadId(), thread_, FALSE);
    }
    HeldModifiers(const HeldModifiers&) = delete;
    HeldModifiers& operator=(const HeldModifiers&) = delete;

    // The keys themselves, in the order they are pressed.
    std::vector<UINT> Pressed() const
    {
        std::vector<UINT> pressed;
        for (size_t i = 0; i < keys_.size(); i += 2)
            pressed.push_back(keys_[i]);
        return pressed;
    }

private:
    void Set(BYTE value)
    {
        BYTE state[256] = {};
        GetKeyboardState(state);
        for (UINT key : keys_)
            state[key] = value;
        SetKeyboardState(state);
    }

    DWORD thread_;
    std::vector<UINT> keys_;
};

} // namespace

void PressKey(HWND window, UINT virtualKey, unsigned modifiers, const std::function<bool()>& done,
              Duration timeout)
{
    DWORD thread = GetWindowThreadProcessId(window, nullptr);
    if (!thread)
        throw Error(L"cannot press a key: the window no longer exists");
    HWND target = window;
    GUITHREADINFO gui{};
    gui.cbSize = sizeof(gui);
    if (GetGUIThreadInfo(thread, &gui) && gui.hwndFocus &&
        (gui.hwndFocus == window || IsChild(window, gui.hwndFocus)))
        target = gui.hwndFocus;

    HeldModifiers held(thread, modifiers);
    std::vector<UINT> mods = held.Pressed();
    UINT keyDown = (modifiers & Alt) ? WM_SYSKEYDOWN : WM_KEYDOWN;
    UINT keyUp = (modifiers & Alt) ? WM_SYSKEYUP : WM_KEYUP;
    for (UINT key : mods)
        PostMessageW(target, keyDown, key, KeyParam(key, false));
    PostMessageW(target, keyDown, virtualKey, KeyParam(virtualKey, false));
    PostMessageW(target, keyUp, virtualKey, KeyParam(virtualKey, true));
    for (auto key = mods.rbegin(); key != mods.rend(); ++key)
        PostMessageW(target, keyUp, *key, KeyParam(*key, true));

    if (done)
        WaitUntil(done, timeout);
    else if (modifiers != NoModifier)
        // Nothing to watch: give the target a moment to take the keys while
        // the modifiers are still down.
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
}

std::wstring MessageBoxText(HWND box)
{
    if (HWND message = GetDlgItem(box, 0xFFFF))
        return Text(message);
    std::wstring text;
    for (const ControlInfo& info : Controls(box))
    {
        if (_wcsicmp(info.className.c_str(), L"Static") != 0 || info.text.empty())
            continue;
        if ((GetWindowLongPtrW(info.handle, GWL_STYLE) & SS_TYPEMASK) == SS_ICON)
            continue;
        if (!text.empty())
            text += L"\n";
        text += info.text;
    }
    return text;
}

void CloseMessageBox(HWND box, int buttonId, Duration timeout)
{
    Press(Control(box, buttonId));
    if (!WaitUntil([&] { return !IsWindow(box) || !IsWindowVisible(box); }, timeout))
        throw Error(L"message box " + Describe(box) + L" is still open " +
                    DescribeDuration(timeout) + L" after button " + std::to_wstring(buttonId) +
                    L" was pressed");
}

} // namespace UiDriver
