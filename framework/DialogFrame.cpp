#include "framework/DialogFrame.h"

#include <utility>

#include "text/WideText.h"

DialogFrame::DialogFrame(Window* owner, const TemplateName& name, const KelText& title)
    : AppFrame(owner, title), templateName(name)
{
}

DialogFrame::~DialogFrame() = default;

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
    if (Handle())
        MapDialogRect(Handle(), &rect);
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

BOOL DialogFrame::OnInitDialog()
{
    TranslateReferences(Handle());
    // Top-level dialogs show the program's icon (resource 1) when it has one.
    if (!(GetWindowLongPtrW(Handle(), GWL_STYLE) & WS_CHILD))
    {
        HINSTANCE program = GetModuleHandleW(nullptr);
        for (auto [kind, metric] :
             {std::pair{ICON_SMALL, SM_CXSMICON}, std::pair{ICON_BIG, SM_CXICON}})
        {
            const int size = GetSystemMetrics(metric);
            if (HANDLE icon =
                    LoadImageW(program, MAKEINTRESOURCEW(1), IMAGE_ICON, size, size, LR_SHARED))
                SendMessageW(Handle(), WM_SETICON, WPARAM(kind), LPARAM(icon));
        }
    }
    if (!Title().IsEmpty())
        SetText(Title());
    InitPage();
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
