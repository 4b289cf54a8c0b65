// The least a Win32 program does to show a dialog: one modal dialog from a
// template held in memory, titled "Minimal Dialog", with an OK button. The
// start-up benchmark sets EditKel.exe's way to its first window beside this.
//
// Built with EditKel's manifest (common controls 6) alone, it shows what the
// manifest costs. Built with KEL_EDITKEL_LIBRARIES as well, the same dialog
// first makes the library calls that EditKel's start-up makes before its
// first window: common controls initialised and the known folders asked for
// (the shell). That program shows what the platform charges any program set
// up like EditKel.
//
// Built with KEL_PICKER_CONTROLS (and the manifest), the dialog holds the
// controls of EditKel's configuration picker instead of the lone OK button: a
// line of text, a report list of two columns with one row, Browse, OK and
// Cancel. That program shows what showing those controls costs any program.
//
// Built with KEL_PROPERTY_DIALOG (and the manifest), OK in the dialog opens
// a property dialog, "Minimal Property Dialog", with as many empty pages as
// the command line says (default 5): the reference for the time from the
// picker's OK to EditKel's configuration dialog.
#include <windows.h>
#if defined(KEL_EDITKEL_LIBRARIES) || defined(KEL_PROPERTY_DIALOG) || defined(KEL_PICKER_CONTROLS)
#include <commctrl.h>
#include <shlobj.h>
#endif
#include <cstdlib>
#include <string>
#include <vector>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace
{
#if defined(KEL_PICKER_CONTROLS)
void FillPicker(HWND dialog);
#endif

INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG)
    {
#if defined(KEL_PICKER_CONTROLS)
        FillPicker(dialog);
#endif
        return TRUE;
    }
    if (message == WM_COMMAND && (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL))
    {
        EndDialog(dialog, 0);
        return TRUE;
    }
    return FALSE;
}

// Appends a string in the template's form: UTF-16 with its 0, on WORDs.
void Put(std::uint16_t*& at, const wchar_t* text)
{
    const size_t length = std::wcslen(text) + 1;
    std::memcpy(at, text, length * sizeof(wchar_t));
    at += length;
}

#if defined(KEL_PAGE_CONTROLS) || defined(KEL_PICKER_CONTROLS)
// Appends one control to a dialog template at `at` (DWORD-aligned first).
void PutControl(std::uint16_t*& at, DWORD style, short x, short y, short cx, short cy, WORD id,
                const wchar_t* className, const wchar_t* title = L"")
{
    at = reinterpret_cast<std::uint16_t*>((reinterpret_cast<std::uintptr_t>(at) + 3) &
                                          ~std::uintptr_t(3));
    auto* item = reinterpret_cast<DLGITEMTEMPLATE*>(at);
    item->style = style;
    item->x = x;
    item->y = y;
    item->cx = cx;
    item->cy = cy;
    item->id = id;
    at = reinterpret_cast<std::uint16_t*>(item + 1);
    Put(at, className);
    Put(at, title);
    *at++ = 0; // no creation data
}

// The two columns of a report list.
void AddColumns(HWND list, const std::array<const wchar_t*, 2>& headings,
                const std::array<int, 2>& widths)
{
    for (int column = 0; column < 2; ++column)
    {
        LVCOLUMNW heading = {};
        heading.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_SUBITEM;
        heading.cx = widths[size_t(column)];
        heading.pszText = const_cast<wchar_t*>(headings[size_t(column)]);
        heading.iSubItem = column;
        SendMessageW(list, LVM_INSERTCOLUMNW, WPARAM(column), reinterpret_cast<LPARAM>(&heading));
    }
}
#endif

#if defined(KEL_PICKER_CONTROLS)
constexpr int kPickerList = 100;

// Fills the picker's list as EditKel does for one registered configuration.
void FillPicker(HWND dialog)
{
    HWND list = GetDlgItem(dialog, kPickerList);
    AddColumns(list, {L"Name", L"Folder"}, {80, 160});
    SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
    LVITEMW item = {};
    item.mask = LVIF_TEXT | LVIF_STATE;
    item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    item.pszText = const_cast<wchar_t*>(L"Demo");
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    item.mask = LVIF_TEXT;
    item.iSubItem = 1;
    item.pszText = const_cast<wchar_t*>(L"C:\\Demo\\");
    SendMessageW(list, LVM_SETITEMTEXTW, 0, reinterpret_cast<LPARAM>(&item));
}
#endif

#if defined(KEL_EDITKEL_LIBRARIES)
void MakeEditKelLibraryCalls()
{
    INITCOMMONCONTROLSEX controls = {sizeof controls, 0x45FF};
    InitCommonControlsEx(&controls);
    wchar_t folder[MAX_PATH];
    for (int known : {CSIDL_LOCAL_APPDATA, CSIDL_APPDATA, CSIDL_COMMON_DOCUMENTS})
        SHGetFolderPathW(nullptr, known, nullptr, SHGFP_TYPE_CURRENT, folder);
}
#endif

#if defined(KEL_PROPERTY_DIALOG)
INT_PTR CALLBACK EmptyPageProc(HWND, UINT message, WPARAM, LPARAM)
{
    return message == WM_INITDIALOG;
}

#if defined(KEL_PAGE_CONTROLS)
constexpr int kList = 100;
constexpr int kButton = 101;

// Fills the first page's controls as EditKel's program paths page does.
void FillControls(HWND page)
{
    HWND list = GetDlgItem(page, kList);
    AddColumns(list, {L"Kind", L"Folder"}, {120, 120});
    const int iconSize = GetSystemMetrics(SM_CXSMICON);
    HIMAGELIST marks = ImageList_Create(iconSize, iconSize, ILC_COLOR32 | ILC_MASK, 1, 0);
    ImageList_AddIcon(marks, LoadIconW(nullptr, IDI_WARNING));
    SendMessageW(list, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(marks));
    for (int row = 0; row < 10; ++row)
    {
        std::wstring kind = L"Kind " + std::to_wstring(row + 1);
        std::wstring folder = L"C:\\Program Files\\Folder " + std::to_wstring(row + 1);
        LVITEMW item = {};
        item.mask = LVIF_TEXT | LVIF_IMAGE | LVIF_PARAM;
        item.iItem = row;
        item.iImage = I_IMAGENONE;
        item.lParam = row;
        item.pszText = kind.data();
        SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
        item.mask = LVIF_TEXT;
        item.iSubItem = 1;
        item.pszText = folder.data();
        SendMessageW(list, LVM_SETITEMTEXTW, WPARAM(row), reinterpret_cast<LPARAM>(&item));
    }
    SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
    SendMessageW(list, LVM_SETCOLUMNWIDTH, 0, MAKELPARAM(LVSCW_AUTOSIZE_USEHEADER, 0));

    HWND tips =
        CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                        WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, CW_USEDEFAULT, CW_USEDEFAULT,
                        CW_USEDEFAULT, CW_USEDEFAULT, page, nullptr, nullptr, nullptr);
    TTTOOLINFOW tool = {};
    tool.cbSize = sizeof tool;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = page;
    tool.uId = reinterpret_cast<UINT_PTR>(GetDlgItem(page, kButton));
    tool.lpszText = const_cast<wchar_t*>(L"Browse");
    SendMessageW(tips, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
}

// The button draws an icon of an image list, as EditKel's bitmap buttons do.
void DrawButton(const DRAWITEMSTRUCT& draw)
{
    static HIMAGELIST images = []
    {
        const int size = GetSystemMetrics(SM_CXSMICON);
        HIMAGELIST list = ImageList_Create(size, size, ILC_COLOR32 | ILC_MASK, 1, 0);
        ImageList_AddIcon(list, LoadIconW(nullptr, IDI_APPLICATION));
        return list;
    }();
    DrawFrameControl(draw.hDC, const_cast<RECT*>(&draw.rcItem), DFC_BUTTON, DFCS_BUTTONPUSH);
    ImageList_Draw(images, 0, draw.hDC, draw.rcItem.left + 2, draw.rcItem.top + 2, ILD_TRANSPARENT);
}

INT_PTR CALLBACK ControlsPageProc(HWND page, UINT message, WPARAM, LPARAM lParam)
{
    if (message == WM_INITDIALOG)
    {
        FillControls(page);
        return TRUE;
    }
    if (message == WM_DRAWITEM)
    {
        DrawButton(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
        return TRUE;
    }
    return FALSE;
}

#endif

// A property dialog of `count` empty pages, each from one template in memory.
void ShowPropertyDialog(int count)
{
    alignas(4) static std::uint16_t buffer[64] = {};
    auto* page = reinterpret_cast<DLGTEMPLATE*>(buffer);
    page->style = DS_SETFONT | DS_CONTROL | WS_CHILD;
    page->cx = 300;
    page->cy = 200;
    std::uint16_t* at = reinterpret_cast<std::uint16_t*>(page + 1);
    *at++ = 0; // no menu
    *at++ = 0; // the standard dialog class
    *at++ = 0; // no caption
    *at++ = 8;
    Put(at, L"MS Shell Dlg");

#if defined(KEL_PAGE_CONTROLS)
    // The first page: the program paths page's template, list and button.
    alignas(4) static std::uint16_t first[256] = {};
    auto* controls = reinterpret_cast<DLGTEMPLATE*>(first);
    controls->style = DS_SETFONT | DS_CONTROL | WS_CHILD;
    controls->cdit = 2;
    controls->cx = 186;
    controls->cy = 121;
    std::uint16_t* place = reinterpret_cast<std::uint16_t*>(controls + 1);
    *place++ = 0; // no menu
    *place++ = 0; // the standard dialog class
    *place++ = 0; // no caption
    *place++ = 8;
    Put(place, L"MS Shell Dlg");
    PutControl(place,
               WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL |
                   LVS_SHOWSELALWAYS | LVS_NOSORTHEADER,
               4, 4, 160, 112, kList, WC_LISTVIEWW);
    PutControl(place, WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_OWNERDRAW, 168, 4, 16, 16, kButton,
               L"Button");
#endif
    std::vector<HPROPSHEETPAGE> pages;
    std::vector<std::wstring> names;
    for (int i = 0; i < count; ++i)
        names.push_back(L"Page " + std::to_wstring(i + 1));
    for (int i = 0; i < count; ++i)
    {
        PROPSHEETPAGEW sheetPage = {};
        sheetPage.dwSize = sizeof sheetPage;
        sheetPage.dwFlags = PSP_DLGINDIRECT | PSP_USETITLE;
        sheetPage.pResource = page;
        sheetPage.pszTitle = names[size_t(i)].c_str();
        sheetPage.pfnDlgProc = EmptyPageProc;
#if defined(KEL_PAGE_CONTROLS)
        if (i == 0)
        {
            sheetPage.pResource = controls;
            sheetPage.pfnDlgProc = ControlsPageProc;
        }
#endif
        pages.push_back(CreatePropertySheetPageW(&sheetPage));
    }
    PROPSHEETHEADERW header = {};
    header.dwSize = sizeof header;
    header.dwFlags = PSH_NOCONTEXTHELP;
    header.pszCaption = L"Minimal Property Dialog";
    header.nPages = UINT(pages.size());
    header.phpage = pages.data();
    PropertySheetW(&header);
}
#endif
} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int)
{
#if defined(KEL_EDITKEL_LIBRARIES)
    MakeEditKelLibraryCalls();
#endif
#if defined(KEL_PICKER_CONTROLS)
    INITCOMMONCONTROLSEX classes = {sizeof classes, ICC_LISTVIEW_CLASSES};
    InitCommonControlsEx(&classes);
#endif
    alignas(4) std::uint16_t buffer[512] = {};
    auto* dialog = reinterpret_cast<DLGTEMPLATE*>(buffer);
    dialog->style = DS_MODALFRAME | DS_SETFONT | DS_CENTER | WS_POPUP | WS_CAPTION | WS_SYSMENU;
    dialog->cdit = 1;
    dialog->cx = 200;
    dialog->cy = 80;
    std::uint16_t* at = reinterpret_cast<std::uint16_t*>(dialog + 1);
    *at++ = 0; // no menu
    *at++ = 0; // the standard dialog class
    Put(at, L"Minimal Dialog");
    *at++ = 8; // point size of the font
    Put(at, L"MS Shell Dlg");
#if defined(KEL_PICKER_CONTROLS)
    // The picker's template: its text, list and buttons.
    dialog->cdit = 5;
    dialog->cx = 260;
    dialog->cy = 140;
    PutControl(at, WS_CHILD | WS_VISIBLE, 7, 7, 246, 16, 0xFFFF, L"Static",
               L"Select the configuration to edit.");
    PutControl(at,
               WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP | LVS_REPORT | LVS_SINGLESEL |
                   LVS_SHOWSELALWAYS,
               7, 26, 246, 86, kPickerList, WC_LISTVIEWW);
    PutControl(at, WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, 7, 119, 50, 14, 101,
               L"Button", L"&Browse...");
    PutControl(at, WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_PUSHBUTTON, 203, 119, 50, 14, IDCANCEL,
               L"Button", L"Cancel");
#endif
    at = reinterpret_cast<std::uint16_t*>((reinterpret_cast<std::uintptr_t>(at) + 3) &
                                          ~std::uintptr_t(3));
    auto* button = reinterpret_cast<DLGITEMTEMPLATE*>(at);
    button->style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON;
#if defined(KEL_PICKER_CONTROLS)
    button->x = 149;
    button->y = 119;
#else
    button->x = 75;
    button->y = 55;
#endif
    button->cx = 50;
    button->cy = 14;
    button->id = IDOK;
    at = reinterpret_cast<std::uint16_t*>(button + 1);
    *at++ = 0xFFFF;
    *at++ = 0x0080; // the button class
    Put(at, L"OK");
    *at++ = 0; // no creation data
    DialogBoxIndirectParamW(instance, dialog, nullptr, DialogProc, 0);
#if defined(KEL_PROPERTY_DIALOG)
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    ShowPropertyDialog(count > 1 ? std::max(1, _wtoi(arguments[1])) : 5);
#endif
    return 0;
}
