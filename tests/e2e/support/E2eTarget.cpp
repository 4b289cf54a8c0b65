// e2e_target.exe: one dialog with a list view, an owner-drawn button, a check
// box, a combo box, a tab control whose pages are child dialogs (an edit box
// and a checked tree view on the first, a check box on the second) and a
// button that opens a message box. Every notification it receives is shown in
// a status line, so a driver can see that its actions arrived as a user's
// would. OK writes the tree's check marks to the file named on the command
// line and exits with a code made from the other controls' state.
//
//   e2e_target.exe [state file]   the dialog
//   e2e_target.exe /quiet         no window: ends at once with TARGET_QUIET
#include "E2eTargetIds.h"

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace
{

HWND dialog;
HWND pages[2];
const wchar_t* const PageNames[2] = {L"General", L"Advanced"};
std::wstring stateFile;

HWND Item(int id)
{
    HWND control = GetDlgItem(dialog, id);
    for (int i = 0; !control && i < 2; ++i)
        control = GetDlgItem(pages[i], id);
    return control;
}

std::wstring TextOf(HWND window)
{
    wchar_t buffer[512] = {};
    GetWindowTextW(window, buffer, 512);
    return buffer;
}

void Status(const std::wstring& text)
{
    SetWindowTextW(Item(IDC_STATUS), text.c_str());
}

std::wstring ListText(int row, int column)
{
    wchar_t buffer[256] = {};
    ListView_GetItemText(Item(IDC_LIST), row, column, buffer, 256);
    return buffer;
}

void AddRow(const wchar_t* name, const wchar_t* value)
{
    HWND list = Item(IDC_LIST);
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = ListView_GetItemCount(list);
    item.pszText = const_cast<wchar_t*>(name);
    int row = ListView_InsertItem(list, &item);
    ListView_SetItemText(list, row, 1, const_cast<wchar_t*>(value));
}

void ShowPage(int index)
{
    for (int i = 0; i < 2; ++i)
        ShowWindow(pages[i], i == index ? SW_SHOW : SW_HIDE);
    Status(std::wstring(L"tab: ") + PageNames[index]);
}

// The tree's items in display order, for the state file.
std::vector<std::pair<HTREEITEM, std::wstring>> treeItems;

HTREEITEM AddTreeItem(HWND tree, HTREEITEM parent, const wchar_t* text, bool checked)
{
    TVINSERTSTRUCTW insert{};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT;
    insert.item.pszText = const_cast<wchar_t*>(text);
    HTREEITEM item = TreeView_InsertItem(tree, &insert);
    TreeView_SetCheckState(tree, item, checked);
    treeItems.emplace_back(item, text);
    return item;
}

void FillTree()
{
    HWND tree = Item(IDC_TREE);
    // A check box style from the template loses its states under Wine: set it now.
    SetWindowLongPtrW(tree, GWL_STYLE, GetWindowLongPtrW(tree, GWL_STYLE) | TVS_CHECKBOXES);
    HTREEITEM root = AddTreeItem(tree, TVI_ROOT, L"Features", false);
    AddTreeItem(tree, root, L"Alpha", true);
    AddTreeItem(tree, root, L"Beta", false);
    AddTreeItem(tree, root, L"Gamma", true);
    TreeView_Expand(tree, root, TVE_EXPAND);
}

bool Checked(int id)
{
    return SendMessageW(Item(id), BM_GETCHECK, 0, 0) == BST_CHECKED;
}

// The tree's check marks, which the test reads back: "<text>:<0|1>,...".
void WriteState()
{
    std::wstring text;
    for (const auto& [item, name] : treeItems)
        text += (text.empty() ? L"" : L",") + name + L":" +
                (TreeView_GetCheckState(Item(IDC_TREE), item) == 1 ? L"1" : L"0");
    std::string utf8(text.size() * 3, '\0');
    utf8.resize(size_t(WideCharToMultiByte(CP_UTF8, 0, text.c_str(), int(text.size()), utf8.data(),
                                           int(utf8.size()), nullptr, nullptr)));
    if (!stateFile.empty())
        std::ofstream(std::filesystem::path(stateFile), std::ios::binary) << utf8;
}

void Finish(int exitCode)
{
    DestroyWindow(dialog);
    PostQuitMessage(exitCode);
}

void DrawAddButton(const DRAWITEMSTRUCT& draw)
{
    RECT rect = draw.rcItem;
    FillRect(draw.hDC, &rect, GetSysColorBrush(COLOR_BTNFACE));
    DrawEdge(draw.hDC, &rect, (draw.itemState & ODS_SELECTED) ? EDGE_SUNKEN : EDGE_RAISED, BF_RECT);
    SetBkMode(draw.hDC, TRANSPARENT);
    DrawTextW(draw.hDC, L"+ Add", -1, &rect, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

void OnCommand(int id, int code)
{
    switch (id)
    {
    case IDC_CHECK:
    case IDC_EXPERT:
        if (code == BN_CLICKED)
            Status((id == IDC_CHECK ? L"check: " : L"expert: ") +
                   std::wstring(Checked(id) ? L"1" : L"0"));
        break;
    case IDC_COMBO:
        if (code == CBN_SELCHANGE)
            Status(L"combo: " + TextOf(Item(IDC_COMBO)));
        break;
    case IDC_EDIT:
        if (code == EN_CHANGE)
            Status(L"edit: " + TextOf(Item(IDC_EDIT)));
        break;
    case IDC_ADD:
    {
        std::wstring number = std::to_wstring(ListView_GetItemCount(Item(IDC_LIST)) + 1);
        AddRow((L"Row " + number).c_str(), number.c_str());
        Status(L"added: Row " + number);
        break;
    }
    case IDC_MESSAGE:
    {
        std::wstring text = L"Apply the changes?\nThe list has " +
                            std::to_wstring(ListView_GetItemCount(Item(IDC_LIST))) + L" rows.";
        int answer =
            MessageBoxW(dialog, text.c_str(), L"E2E Target", MB_YESNOCANCEL | MB_ICONQUESTION);
        Status(L"message: " + std::to_wstring(answer));
        break;
    }
    case IDOK:
        WriteState();
        Finish((ListView_GetNextItem(Item(IDC_LIST), -1, LVNI_SELECTED) + 1) * 100 +
               (Checked(IDC_CHECK) ? 10 : 0) +
               static_cast<int>(SendMessageW(Item(IDC_COMBO), CB_GETCURSEL, 0, 0)));
        break;
    case IDCANCEL:
        Finish(TARGET_CANCELLED);
        break;
    default:
        break;
    }
}

void OnNotify(const NMHDR& header)
{
    if (header.idFrom == IDC_LIST && header.code == LVN_ITEMCHANGED)
    {
        const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
        if ((change.uNewState & LVIS_SELECTED) && !(change.uOldState & LVIS_SELECTED))
            Status(L"selected: " + ListText(change.iItem, 0));
    }
    else if (header.idFrom == IDC_LIST && header.code == NM_DBLCLK)
    {
        const auto& click = reinterpret_cast<const NMITEMACTIVATE&>(header);
        if (click.iItem >= 0)
            Status(L"activated: " + ListText(click.iItem, 0));
    }
    else if (header.idFrom == IDC_TABS && header.code == TCN_SELCHANGE)
        ShowPage(TabCtrl_GetCurSel(header.hwndFrom));
}

INT_PTR CALLBACK PageProc(HWND, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG)
        return TRUE;
    if (message == WM_COMMAND)
    {
        OnCommand(LOWORD(wParam), HIWORD(wParam));
        return TRUE;
    }
    return FALSE;
}

void CreatePages()
{
    HWND tabs = Item(IDC_TABS);
    for (int i = 0; i < 2; ++i)
    {
        TCITEMW item{};
        item.mask = TCIF_TEXT;
        item.pszText = const_cast<wchar_t*>(PageNames[i]);
        TabCtrl_InsertItem(tabs, i, &item);
    }
    RECT area{};
    GetWindowRect(tabs, &area);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&area), 2);
    TabCtrl_AdjustRect(tabs, FALSE, &area);
    int templates[2] = {IDD_PAGE_GENERAL, IDD_PAGE_ADVANCED};
    for (int i = 0; i < 2; ++i)
    {
        pages[i] = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(templates[i]),
                                      dialog, PageProc, 0);
        SetWindowPos(pages[i], HWND_TOP, area.left, area.top, area.right - area.left,
                     area.bottom - area.top, 0);
    }
}

void Initialise()
{
    HWND list = Item(IDC_LIST);
    const wchar_t* headings[2] = {L"Name", L"Value"};
    for (int i = 0; i < 2; ++i)
    {
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH;
        column.pszText = const_cast<wchar_t*>(headings[i]);
        column.cx = i == 0 ? 120 : 80;
        ListView_InsertColumn(list, i, &column);
    }
    AddRow(L"Alpha", L"1");
    AddRow(L"Beta", L"2");
    AddRow(L"Gamma", L"3");

    HWND combo = Item(IDC_COMBO);
    for (const wchar_t* colour : {L"Red", L"Green", L"Blue"})
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(colour));
    SendMessageW(combo, CB_SETCURSEL, 0, 0);

    CreatePages();
    FillTree();
    ShowPage(0);
}

INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_INITDIALOG:
        dialog = window;
        Initialise();
        return TRUE;
    case WM_COMMAND:
        OnCommand(LOWORD(wParam), HIWORD(wParam));
        return TRUE;
    case WM_NOTIFY:
        OnNotify(*reinterpret_cast<const NMHDR*>(lParam));
        return TRUE;
    case WM_DRAWITEM:
        if (wParam == IDC_ADD)
        {
            DrawAddButton(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
            return TRUE;
        }
        break;
    default:
        break;
    }
    return FALSE;
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show)
{
    int count = 0;
    wchar_t** args = CommandLineToArgvW(GetCommandLineW(), &count);
    std::wstring argument = count > 1 ? args[1] : L"";
    LocalFree(static_cast<void*>(args));
    if (argument == L"/quiet")
    {
        Sleep(300);
        return TARGET_QUIET;
    }
    stateFile = argument;

    INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_LISTVIEW_CLASSES | ICC_TAB_CLASSES |
                                                      ICC_TREEVIEW_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&classes);
    if (!CreateDialogParamW(instance, MAKEINTRESOURCEW(IDD_TARGET), nullptr, DialogProc, 0))
        return 1;
    ShowWindow(dialog, show);

    MSG msg{};
    while (GetMessageW(&msg, nullptr, 0, 0) > 0)
    {
        // Ctrl+Tab moves to the next tab, as in a property sheet.
        if (msg.message == WM_KEYDOWN && msg.wParam == VK_TAB && GetKeyState(VK_CONTROL) < 0 &&
            (msg.hwnd == dialog || IsChild(dialog, msg.hwnd)))
        {
            HWND tabs = Item(IDC_TABS);
            int next = (TabCtrl_GetCurSel(tabs) + 1) % TabCtrl_GetItemCount(tabs);
            TabCtrl_SetCurSel(tabs, next);
            ShowPage(next);
            continue;
        }
        if (IsDialogMessageW(dialog, &msg))
            continue;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    return static_cast<int>(msg.wParam);
}
