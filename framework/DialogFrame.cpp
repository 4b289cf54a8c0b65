#include "framework/DialogFrame.h"

#include <commctrl.h>

#include <utility>

#include "framework/AccessibleName.h"
#include "framework/SystemLibrary.h"
#include "text/WideText.h"

DialogFrame::DialogFrame(Window* owner, TemplateName name, const KelText& title)
    : AppFrame(owner, title), templateName(std::move(name))
{
}

DialogFrame::~DialogFrame()
{
    // The window goes first (AppFrame), then the font it used.
    Teardown();
    if (scaledFont)
        DeleteObject(scaledFont);
}

namespace
{
// The functions of per-monitor resolution (Windows 10 and later), looked up
// in user32, which every program has loaded.
template <typename Function>
Function User32Function(const char* name)
{
    return GetProc<Function>(GetModuleHandleW(L"user32.dll"), name);
}

int32_t WindowDpi(HWND window)
{
    static auto dpiForWindow = User32Function<UINT(WINAPI*)(HWND)>("GetDpiForWindow");
    UINT dpi = dpiForWindow && window ? dpiForWindow(window) : 0;
    if (dpi == 0)
    {
        HDC screen = GetDC(nullptr);
        dpi = screen ? UINT(GetDeviceCaps(screen, LOGPIXELSY)) : 96;
        if (screen)
            ReleaseDC(nullptr, screen);
    }
    return dpi > 0 ? int32_t(dpi) : 96;
}

int32_t MetricForDpi(int index, int32_t dpi)
{
    static auto metricForDpi = User32Function<int(WINAPI*)(int, UINT)>("GetSystemMetricsForDpi");
    return metricForDpi ? metricForDpi(index, UINT(dpi))
                        : MulDiv(GetSystemMetrics(index), dpi, WindowDpi(nullptr));
}

// The dialog base units of a font, as the dialog manager takes them: the
// average width of the letters and the height of a line.
SIZE FontBaseUnits(HFONT font)
{
    HDC dc = GetDC(nullptr);
    HGDIOBJ old = SelectObject(dc, font);
    TEXTMETRICW metrics = {};
    GetTextMetricsW(dc, &metrics);
    SIZE letters = {};
    GetTextExtentPoint32W(dc, L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", 52,
                          &letters);
    SelectObject(dc, old);
    ReleaseDC(nullptr, dc);
    return {(letters.cx / 26 + 1) / 2, metrics.tmHeight};
}
} // namespace

RECT ScaledByUnits(const RECT& r, SIZE to, SIZE from)
{
    if (from.cx <= 0 || from.cy <= 0)
        return r;
    return {MulDiv(r.left, to.cx, from.cx), MulDiv(r.top, to.cy, from.cy),
            MulDiv(r.right, to.cx, from.cx), MulDiv(r.bottom, to.cy, from.cy)};
}

bool DialogFrame::PreTranslateMessage(MSG& message)
{
    return Exists() && IsDialogMessageW(Handle(), &message);
}

// --- controls by id ---------------------------------------------------------

namespace
{
HWND Item(HWND dialog, int32_t id)
{
    return dialog ? GetDlgItem(dialog, id) : nullptr;
}
} // namespace

bool DialogFrame::HasControl(int32_t id) const
{
    return Item(Handle(), id) != nullptr;
}

void DialogFrame::EnableControl(int32_t id, bool enable)
{
    if (HWND control = Item(Handle(), id))
        EnableWindow(control, enable ? TRUE : FALSE);
}

bool DialogFrame::IsControlEnabled(int32_t id) const
{
    HWND control = Item(Handle(), id);
    return control && IsWindowEnabled(control);
}

void DialogFrame::ShowControl(int32_t id, bool show)
{
    if (HWND control = Item(Handle(), id))
        ShowWindow(control, show ? SW_SHOW : SW_HIDE);
}

bool DialogFrame::IsControlVisible(int32_t id) const
{
    HWND control = Item(Handle(), id);
    // The control's own style: the dialog itself may be hidden.
    return control && (GetWindowLongPtrW(control, GWL_STYLE) & WS_VISIBLE);
}

KelText DialogFrame::ControlText(int32_t id) const
{
    return Window(Item(Handle(), id)).Text();
}

void DialogFrame::SetControlText(int32_t id, const KelText& text)
{
    if (HWND control = Item(Handle(), id))
        SetWindowTextW(control, AsWide(text));
}

bool DialogFrame::IsControlChecked(int32_t id) const
{
    HWND control = Item(Handle(), id);
    return control && SendMessageW(control, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void DialogFrame::SetControlChecked(int32_t id, bool checked)
{
    if (HWND control = Item(Handle(), id))
        SendMessageW(control, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

void DialogFrame::FocusControl(int32_t id)
{
    if (HWND control = Item(Handle(), id))
        SetFocus(control);
}

RECT DialogFrame::ControlRect(int32_t id) const
{
    return Window(Item(Handle(), id)).RectInParent();
}

RECT DialogFrame::DialogUnitsToPixels(const RECT& units) const
{
    RECT rect = units;
    if (Handle() && dpi == createdDpi)
        MapDialogRect(Handle(), &rect);
    else if (Handle())
        rect = ScaledByUnits(units, baseUnits, SIZE{4, 8});
    return rect;
}

int32_t DialogFrame::DialogUnitsToPixelsX(int32_t units) const
{
    return DialogUnitsToPixels(RECT{0, 0, units, 0}).right;
}

int32_t DialogFrame::DialogUnitsToPixelsY(int32_t units) const
{
    return DialogUnitsToPixels(RECT{0, 0, 0, units}).bottom;
}

void DialogFrame::PrepareTemplate(DialogTemplate& dialogTemplate)
{
    DWORD style = (dialogTemplate.Style() | styleAdd) & ~styleRemove & ~WS_VISIBLE;
    dialogTemplate.SetStyle(style);
}

bool DialogFrame::CreateHandle(HWND ownerWindow)
{
    DialogTemplate dialogTemplate;
    if (!dialogTemplate.Load(templateName))
        return false;
    PrepareTemplate(dialogTemplate);
    return CreateFrom(dialogTemplate, ownerWindow);
}

bool DialogFrame::CreateChild(HWND parent)
{
    DialogTemplate dialogTemplate;
    if (!parent || !dialogTemplate.Load(templateName))
        return false;
    dialogTemplate.MakeChild();
    return CreateFrom(dialogTemplate, parent);
}

bool DialogFrame::CreateFrom(DialogTemplate& dialogTemplate, HWND parent)
{
    HWND window = CreateDialogIndirectParamW(dialogTemplate.Module(), dialogTemplate.Data(), parent,
                                             &Window::DialogProcedure,
                                             reinterpret_cast<LPARAM>(static_cast<Window*>(this)));
    if (!window)
        return false;
    // WM_INITDIALOG has run; a handler may already have closed the window.
    return Exists();
}

void DialogFrame::SetIcons()
{
    // Top-level dialogs show the program's icon (resource 1) when it has one.
    if (GetWindowLongPtrW(Handle(), GWL_STYLE) & WS_CHILD)
        return;
    HINSTANCE program = GetModuleHandleW(nullptr);
    for (auto [kind, metric] : {std::pair{ICON_SMALL, SM_CXSMICON}, std::pair{ICON_BIG, SM_CXICON}})
    {
        const int size = MetricForDpi(metric, dpi);
        if (HANDLE icon =
                LoadImageW(program, MAKEINTRESOURCEW(1), IMAGE_ICON, size, size, LR_SHARED))
            SendMessageW(Handle(), WM_SETICON, WPARAM(kind), LPARAM(icon));
    }
}

void DialogFrame::ChangeDpi(int32_t newDpi)
{
    if (!Handle() || newDpi <= 0 || newDpi == dpi)
        return;
    const int32_t oldDpi = dpi;
    // The same face at the same point size, made for the new resolution.
    HFONT font = nullptr;
    LOGFONTW face = {};
    if (!createdFont)
    {
        // The template's font: its size in points gives the height at every resolution.
        createdFont = reinterpret_cast<HFONT>(SendMessageW(Handle(), WM_GETFONT, 0, 0));
        if (createdFont && GetObjectW(createdFont, sizeof(face), &face))
            fontPoints = MulDiv(face.lfHeight < 0 ? -face.lfHeight : face.lfHeight, 72, createdDpi);
    }
    if (newDpi == createdDpi)
        font = createdFont;
    else if (createdFont && fontPoints > 0 && GetObjectW(createdFont, sizeof(face), &face))
    {
        face.lfHeight = -MulDiv(fontPoints, newDpi, 72);
        face.lfWidth = 0;
        font = CreateFontIndirectW(&face);
    }
    // The dialog units of the new font: every control moves and grows as if
    // the template had been laid out with it. Child dialogs (pages) are
    // placed by their dialog and change their own controls.
    const SIZE oldUnits = baseUnits;
    const SIZE newUnits =
        newDpi == createdDpi ? createdUnits
        : font               ? FontBaseUnits(font)
               : SIZE{MulDiv(oldUnits.cx, newDpi, oldDpi), MulDiv(oldUnits.cy, newDpi, oldDpi)};
    for (HWND child = GetWindow(Handle(), GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
    {
        wchar_t kind[32] = {};
        GetClassNameW(child, kind, 32);
        RECT rect = Window(child).RectInParent();
        // A combo box's height is that of its open list.
        RECT dropped = {};
        if (lstrcmpiW(kind, L"ComboBox") == 0 &&
            SendMessageW(child, CB_GETDROPPEDCONTROLRECT, 0, LPARAM(&dropped)))
            rect.bottom = rect.top + (dropped.bottom - dropped.top);
        rect = ScaledByUnits(rect, newUnits, oldUnits);
        SetWindowPos(child, nullptr, rect.left, rect.top, rect.right - rect.left,
                     rect.bottom - rect.top, SWP_NOZORDER | SWP_NOACTIVATE);
        if (lstrcmpW(kind, L"#32770") == 0)
            continue;
        if (font)
            SendMessageW(child, WM_SETFONT, WPARAM(font), FALSE);
        if (lstrcmpiW(kind, WC_LISTVIEWW) == 0)
        {
            HWND header = reinterpret_cast<HWND>(SendMessageW(child, LVM_GETHEADER, 0, 0));
            const int columns = int(SendMessageW(header, HDM_GETITEMCOUNT, 0, 0));
            for (int i = 0; i < columns; ++i)
            {
                const int width = int(SendMessageW(child, LVM_GETCOLUMNWIDTH, WPARAM(i), 0));
                SendMessageW(child, LVM_SETCOLUMNWIDTH, WPARAM(i),
                             MAKELPARAM(MulDiv(width, newUnits.cx, oldUnits.cx), 0));
            }
        }
        InvalidateRect(child, nullptr, TRUE);
    }
    if (font)
    {
        // The dialog answers WM_GETFONT with the new font from now on.
        if (scaledFont)
            DeleteObject(scaledFont);
        scaledFont = font == createdFont ? nullptr : font;
    }
    dpi = newDpi;
    baseUnits = newUnits;
    SetIcons();
    InvalidateRect(Handle(), nullptr, TRUE);
}

BOOL DialogFrame::OnInitDialog()
{
    dpi = createdDpi = WindowDpi(Handle());
    RECT units = {0, 0, 4, 8};
    MapDialogRect(Handle(), &units);
    baseUnits = createdUnits = {units.right, units.bottom};
    // The dialog lays itself out on a change of resolution (ChangeDpi); the
    // system's own rescaling of dialogs (Windows 10 1703 and later) is off.
    using DialogDpiBehavior = BOOL(WINAPI*)(HWND, int, int);
    static auto dialogDpiBehavior = User32Function<DialogDpiBehavior>("SetDialogDpiChangeBehavior");
    if (dialogDpiBehavior)
        dialogDpiBehavior(Handle(), 1 /* DDC_DISABLE_ALL */, 1);
    TranslateReferences(Handle());
    SetIcons();
    if (!Title().IsEmpty())
        SetText(Title());
    InitPage();
    // Controls that no label names are named after their check box or the
    // dialog (a page: its tab caption).
    NameUnlabelledControls(Handle(), Title());
    return TRUE;
}

bool DialogFrame::OnCommand(int32_t id, int32_t, HWND)
{
    if (id == IDOK || id == IDCANCEL)
    {
        Close(id);
        return true;
    }
    return false;
}

bool DialogFrame::OnNotify(NMHDR&, LRESULT&)
{
    return false;
}

INT_PTR DialogFrame::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_INITDIALOG:
        return OnInitDialog();
    case WM_SIZE:
        if (wParam != SIZE_MINIMIZED)
            OnSizeChanged(LOWORD(lParam), HIWORD(lParam));
        return TRUE;
    case WM_DPICHANGED:
    {
        // Another monitor's resolution: lay out for it, then take the
        // rectangle Windows suggests.
        ChangeDpi(HIWORD(wParam));
        const RECT& suggested = *reinterpret_cast<const RECT*>(lParam);
        SetWindowPos(Handle(), nullptr, suggested.left, suggested.top,
                     suggested.right - suggested.left, suggested.bottom - suggested.top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
        return TRUE;
    }
    case WM_GETFONT:
        // The font made for another resolution than the window's first.
        if (!scaledFont)
            return FALSE;
        SetWindowLongPtrW(Handle(), DWLP_MSGRESULT, LONG_PTR(scaledFont));
        return TRUE;
    case WM_GETOBJECT:
        // An accessibility client is looking: it gets the controls' names.
        PublishAccessibleNames();
        return FALSE;
    case WM_DESTROY:
        ForgetAccessibleNames(Handle());
        return FALSE;
    case WM_CLOSE:
        // The close box and Alt+F4 are Cancel.
        OnCommand(IDCANCEL, BN_CLICKED, nullptr);
        return TRUE;
    case WM_COMMAND:
        return OnCommand(LOWORD(wParam), HIWORD(wParam), reinterpret_cast<HWND>(lParam));
    case WM_NOTIFY:
    {
        LRESULT result = 0;
        if (!OnNotify(*reinterpret_cast<NMHDR*>(lParam), result))
            return FALSE;
        SetWindowLongPtrW(Handle(), DWLP_MSGRESULT, result);
        return TRUE;
    }
    default:
        return FALSE;
    }
}
