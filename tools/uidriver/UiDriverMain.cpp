// uidriver.exe: the UI driver from the command line, for looking at and
// poking the windows of a running program by hand (under Wine its output
// reaches the Linux terminal). Windows are named by the start of their title.
#include "tools/uidriver/UiDriver.h"

#include <cstdio>
#include <cwchar>

using namespace UiDriver;

namespace
{

const char Usage[] = "usage: uidriver <command> ...\n"
                     "  windows [pid]                 top-level windows (of one process)\n"
                     "  controls <title>              every control under the window\n"
                     "  list <title> <id>             rows of a list view\n"
                     "  tree <title> <id>             items and check marks of a tree view\n"
                     "  tabs <title> <id>             tabs of a tab control\n"
                     "  text <title> <id> [new text]  read or set a control's text\n"
                     "  press <title> <id>            press a button\n"
                     "  select <title> <id> <row>     select one row of a list view (0-based)\n"
                     "  tab <title> <id> <index>      switch a tab control to a tab (0-based)\n"
                     "  wait <title> [seconds]        wait until such a window is visible\n"
                     "  screenshot <file.png> [title] save the screen or one window\n"
                     "<title> is the start of a visible window's title, in any process.\n";

void Print(const std::wstring& text)
{
    std::printf("%s\n", Utf8(text).c_str());
}

HWND Window(const wchar_t* title)
{
    if (HWND window = FindTopLevelWindow(0, title, TitleMatch::Prefix))
        return window;
    throw Error(L"no visible window titled '" + std::wstring(title) + L"...'");
}

HWND ControlOf(const wchar_t* title, const wchar_t* id)
{
    return Control(Window(title), static_cast<int>(std::wcstol(id, nullptr, 10)));
}

int Run(int count, wchar_t** args)
{
    std::wstring command = count > 1 ? args[1] : L"";
    if (command == L"windows" && count <= 3)
    {
        DWORD pid = count == 3 ? static_cast<DWORD>(std::wcstoul(args[2], nullptr, 10)) : 0;
        for (const WindowInfo& info : TopLevelWindows(pid))
            Print(std::to_wstring(info.processId) + L"\t" +
                  (info.visible ? L"visible" : L"hidden") + L"\t" + info.className + L"\t'" +
                  info.title + L"'");
    }
    else if (command == L"controls" && count == 3)
        Print(DescribeControls(Window(args[2])).substr(1));
    else if (command == L"list" && count == 4)
    {
        HWND list = ControlOf(args[2], args[3]);
        for (const std::vector<std::wstring>& row : ListRows(list))
        {
            std::wstring line;
            for (const std::wstring& cell : row)
                line += (line.empty() ? L"" : L"\t") + cell;
            Print(line);
        }
    }
    else if (command == L"tree" && count == 4)
    {
        for (const TreeItem& item : TreeItems(ControlOf(args[2], args[3])))
            Print(std::wstring(static_cast<size_t>(item.depth) * 2, L' ') +
                  (item.checked ? L"[x] " : L"[ ] ") + item.text);
    }
    else if (command == L"tabs" && count == 4)
    {
        HWND tabs = ControlOf(args[2], args[3]);
        std::vector<std::wstring> texts = TabTexts(tabs);
        int current = CurrentTab(tabs);
        for (size_t i = 0; i < texts.size(); ++i)
            Print((static_cast<int>(i) == current ? L"* " : L"  ") + texts[i]);
    }
    else if (command == L"text" && (count == 4 || count == 5))
    {
        HWND control = ControlOf(args[2], args[3]);
        if (count == 5)
            SetText(control, args[4]);
        else
            Print(Text(control));
    }
    else if (command == L"press" && count == 4)
        Press(ControlOf(args[2], args[3]));
    else if (command == L"select" && count == 5)
        SelectListRow(ControlOf(args[2], args[3]),
                      static_cast<int>(std::wcstol(args[4], nullptr, 10)));
    else if (command == L"tab" && count == 5)
        ClickTab(ControlOf(args[2], args[3]), static_cast<int>(std::wcstol(args[4], nullptr, 10)));
    else if (command == L"wait" && (count == 3 || count == 4))
    {
        const long seconds = count == 4 ? std::wcstol(args[3], nullptr, 10) : 10;
        if (!WaitUntil([&]
                       { return FindTopLevelWindow(0, args[2], TitleMatch::Prefix) != nullptr; },
                       std::chrono::seconds(seconds)))
            throw Error(L"no visible window titled '" + std::wstring(args[2]) + L"...' within " +
                        std::to_wstring(seconds) + L" s");
    }
    else if (command == L"screenshot" && (count == 3 || count == 4))
        SaveScreenshot(args[2], count == 4 ? Window(args[3]) : nullptr);
    else
    {
        std::fputs(Usage, stderr);
        return 2;
    }
    return 0;
}

} // namespace

int wmain(int count, wchar_t** args)
{
    try
    {
        return Run(count, args);
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "uidriver: %s\n", error.what());
        return 1;
    }
}
