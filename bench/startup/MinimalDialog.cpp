// The least a Win32 program does to show a dialog: one modal dialog from a
// template held in memory, titled "Minimal Dialog", with an OK button. The
// start-up benchmark sets EditKel.exe's way to its first window beside this.
//
// Built with KEL_EDITKEL_LIBRARIES (and EditKel's manifest, which asks for
// common controls 6) the same dialog first makes the library calls that
// EditKel's start-up makes before any work of its own: common controls and
// COM initialised, the shell's settings and a known folder asked for, the
// optional drawing and rich-edit libraries loaded, themes looked at. That
// program shows what the platform charges any program set up like EditKel.
#include <windows.h>
#if defined(KEL_EDITKEL_LIBRARIES)
#include <commctrl.h>
#include <initializer_list>
#include <shlobj.h>
#include <uxtheme.h>
#endif

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
    CoInitialize(nullptr);
    SHELLFLAGSTATE state = {};
    SHGetSettings(&state, SSF_DOUBLECLICKINWEBVIEW | SSF_WIN95CLASSIC);
    for (const wchar_t* library : {L"msimg32.dll", L"Riched20.dll"})
        LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    IsAppThemed();
    wchar_t folder[MAX_PATH];
    SHGetFolderPathW(nullptr, CSIDL_COMMON_DOCUMENTS, nullptr, SHGFP_TYPE_CURRENT, folder);
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
    return 0;
}
