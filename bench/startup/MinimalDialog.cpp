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
// Built with KEL_PROPERTY_DIALOG (and the manifest), OK in the dialog opens
// a property dialog, "Minimal Property Dialog", with as many empty pages as
// the command line says (default 5): the reference for the time from the
// picker's OK to EditKel's configuration dialog.
#include <windows.h>
#if defined(KEL_EDITKEL_LIBRARIES) || defined(KEL_PROPERTY_DIALOG)
#include <commctrl.h>
#include <shlobj.h>
#endif
#include <cstdlib>
#include <string>
#include <vector>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace
{
INT_PTR CALLBACK DialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG)
        return TRUE;
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
    alignas(4) std::uint16_t buffer[256] = {};
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
    at = reinterpret_cast<std::uint16_t*>((reinterpret_cast<std::uintptr_t>(at) + 3) &
                                          ~std::uintptr_t(3));
    auto* button = reinterpret_cast<DLGITEMTEMPLATE*>(at);
    button->style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON;
    button->x = 75;
    button->y = 55;
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
