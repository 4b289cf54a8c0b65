// The program under test: started, watched for windows, waited for and, when
// it overstays, killed.
#include "tools/uidriver/UiDriver.h"

#include <utility>

namespace UiDriver
{

namespace
{

std::wstring SystemMessage(DWORD error)
{
    wchar_t* text = nullptr;
    DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                      FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, error, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    std::wstring message = length ? std::wstring(text, length) : L"";
    LocalFree(text);
    while (!message.empty() && (message.back() == L'\n' || message.back() == L'\r'))
        message.pop_back();
    return message + L" (error " + std::to_wstring(error) + L")";
}

std::wstring FileName(std::wstring_view path)
{
    size_t slash = path.find_last_of(L"\\/");
    return std::wstring(slash == std::wstring_view::npos ? path : path.substr(slash + 1));
}

} // namespace

TargetProcess TargetProcess::Start(std::wstring_view program, std::wstring_view arguments,
                                   std::wstring_view workingFolder)
{
    std::wstring commandLine = L"\"" + std::wstring(program) + L"\"";
    if (!arguments.empty())
        commandLine += L" " + std::wstring(arguments);
    std::wstring folder(workingFolder);

    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    TargetProcess target;
    target.name_ = FileName(program);
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                        folder.empty() ? nullptr : folder.c_str(), &startup, &target.info_))
        throw Error(L"cannot start " + commandLine + (folder.empty() ? L"" : L" in " + folder) +
                    L": " + SystemMessage(GetLastError()));
    return target;
}

TargetProcess::TargetProcess(TargetProcess&& other) noexcept
    : info_(std::exchange(other.info_, {})), name_(std::move(other.name_))
{
}

TargetProcess& TargetProcess::operator=(TargetProcess&& other) noexcept
{
    if (this != &other)
    {
        Close();
        info_ = std::exchange(other.info_, {});
        name_ = std::move(other.name_);
    }
    return *this;
}

TargetProcess::~TargetProcess()
{
    Close();
}

void TargetProcess::Close()
{
    if (!info_.hProcess)
        return;
    Kill();
    CloseHandle(info_.hThread);
    CloseHandle(info_.hProcess);
    info_ = {};
}

bool TargetProcess::IsRunning() const
{
    return info_.hProcess && WaitForSingleObject(info_.hProcess, 0) == WAIT_TIMEOUT;
}

void TargetProcess::Kill()
{
    if (IsRunning())
    {
        TerminateProcess(info_.hProcess, 1);
        WaitForSingleObject(info_.hProcess, 5000);
    }
}

DWORD TargetProcess::WaitForExit(Duration timeout)
{
    if (!info_.hProcess)
        throw Error(L"no process to wait for");
    if (WaitForSingleObject(info_.hProcess, static_cast<DWORD>(timeout.count())) != WAIT_OBJECT_0)
    {
        std::wstring windows = DescribeWindows();
        Kill();
        throw Error(name_ + L" (process " + std::to_wstring(Id()) + L") did not end within " +
                    DescribeDuration(timeout) + L" and was killed; its windows: " + windows);
    }
    DWORD code = 0;
    GetExitCodeProcess(info_.hProcess, &code);
    return code;
}

std::vector<WindowInfo> TargetProcess::Windows() const
{
    return TopLevelWindows(Id());
}

std::wstring TargetProcess::DescribeWindows() const
{
    return UiDriver::DescribeWindows(Windows());
}

HWND TargetProcess::FindWindowTitled(std::wstring_view title, TitleMatch match) const
{
    return FindTopLevelWindow(Id(), title, match);
}

HWND TargetProcess::WaitForWindow(std::wstring_view title, Duration timeout, TitleMatch match) const
{
    HWND found = nullptr;
    WaitUntil(
        [&]
        {
            found = FindWindowTitled(title, match);
            return found || !IsRunning();
        },
        timeout);
    if (found)
        return found;
    std::wstring what = L"window '" + std::wstring(title) + L"'" +
                        (match == TitleMatch::Prefix ? L"..." : L"") + L" of " + name_;
    if (!IsRunning())
    {
        DWORD code = 0;
        GetExitCodeProcess(info_.hProcess, &code);
        throw Error(what + L" did not appear: the process ended with exit code " +
                    std::to_wstring(code));
    }
    throw Error(what + L" did not appear within " + DescribeDuration(timeout) +
                L"; windows of the process: " + DescribeWindows());
}

HWND TargetProcess::WaitForMessageBox(std::wstring_view caption, Duration timeout) const
{
    // A message box is a standard dialog whose text is the static control
    // 0xFFFF. It is enabled while the window it blocks is not, which tells the
    // two apart even when they share the caption.
    HWND found = nullptr;
    auto isBox = [&]
    {
        for (const WindowInfo& info : Windows())
            if (info.visible && info.className == DialogClass && info.title == caption &&
                IsWindowEnabled(info.handle) && GetDlgItem(info.handle, 0xFFFF))
                found = info.handle;
        return found || !IsRunning();
    };
    if (!WaitUntil(isBox, timeout) || !found)
        throw Error(L"message box '" + std::wstring(caption) + L"' of " + name_ +
                    L" did not appear within " + DescribeDuration(timeout) +
                    (IsRunning() ? L"; windows of the process: " + DescribeWindows()
                                 : std::wstring(L": the process ended")));
    return found;
}

void TargetProcess::ExpectNoWindow(Duration period) const
{
    std::vector<WindowInfo> shown;
    WaitUntil(
        [&]
        {
            shown.clear();
            for (const WindowInfo& info : Windows())
                if (info.visible)
                    shown.push_back(info);
            return !shown.empty() || !IsRunning();
        },
        period);
    if (!shown.empty())
        throw Error(name_ + L" showed a window although none was expected: " +
                    UiDriver::DescribeWindows(shown));
}

} // namespace UiDriver
