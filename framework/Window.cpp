#include "framework/Window.h"

#include <exception>

#include "framework/AppInterface.h"
#include "text/WideText.h"

namespace
{
bool failureReported = false;
} // namespace

void ReportHandlerFailure(const char* what)
{
    if (failureReported)
        return;
    failureReported = true;
    KelText detail = KelText::FromUtf8(what ? what : "unknown failure");
    if (AppInterface* app = GetApplication())
    {
        app->DebugWarning(u"Window procedure", detail, 0);
        app->ReportError(u"An internal error occurred; the last action may be incomplete.", detail);
    }
}

Window::~Window()
{
    // The system window may outlive this object: make sure it no longer
    // refers to it.
    if (hwnd && FromHandle(hwnd) == this)
    {
        if (GetWindowLongPtrW(hwnd, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&WindowProcedure))
            SetWindowLongPtrW(hwnd, GWLP_USERDATA, 0);
        else
            SetWindowLongPtrW(hwnd, DWLP_USER, 0);
    }
}

void Window::OnSizeChanged(int32_t, int32_t) {}

int32_t Window::Show(bool)
{
    if (!Exists())
        return 0;
    ShowWindow(hwnd, SW_SHOW);
    return 1;
}

int32_t Window::InitPage()
{
    return 0;
}

int32_t Window::ApplyPage(int32_t, int32_t, int32_t)
{
    return 0;
}

Control* Window::FindInvalidControl(int32_t, int32_t, int32_t)
{
    return nullptr;
}

int32_t Window::ApplyPageWith(int32_t pageIndex, int32_t reason, int32_t flags)
{
    return ApplyPage(pageIndex, reason, flags);
}

bool Window::PreTranslateMessage(MSG&)
{
    return false;
}

KelText Window::Text() const
{
    if (!hwnd)
        return KelText();
    int length = GetWindowTextLengthW(hwnd);
    if (length <= 0)
        return KelText();
    KelText text;
    text.Reserve(length + 1, false);
    GetWindowTextW(hwnd, AsWide(text.Buffer()), length + 1);
    text.Sync();
    return text;
}

void Window::SetText(const KelText& text)
{
    if (hwnd)
        SetWindowTextW(hwnd, AsWide(text));
}

void Window::SetVisible(bool visible)
{
    if (hwnd)
        ShowWindow(hwnd, visible ? SW_SHOW : SW_HIDE);
}

bool Window::IsVisible() const
{
    return hwnd && IsWindowVisible(hwnd);
}

void Window::Enable(bool enable)
{
    if (hwnd)
        EnableWindow(hwnd, enable ? TRUE : FALSE);
}

bool Window::IsEnabled() const
{
    return hwnd && IsWindowEnabled(hwnd);
}

void Window::Focus()
{
    if (hwnd)
        SetFocus(hwnd);
}

bool Window::HasFocus() const
{
    return hwnd && GetFocus() == hwnd;
}

RECT Window::ClientRect() const
{
    RECT rect = {};
    if (hwnd)
        GetClientRect(hwnd, &rect);
    return rect;
}

RECT Window::RectInParent() const
{
    RECT rect = {};
    if (!hwnd)
        return rect;
    GetWindowRect(hwnd, &rect);
    HWND parent = (GetWindowLongPtrW(hwnd, GWL_STYLE) & WS_CHILD) ? GetParent(hwnd) : nullptr;
    if (parent)
        MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

void Window::Move(const RECT& rect, bool repaint)
{
    if (hwnd)
        MoveWindow(hwnd, rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top,
                   repaint ? TRUE : FALSE);
}

LRESULT Window::Send(UINT message, WPARAM wParam, LPARAM lParam) const
{
    return hwnd ? SendMessageW(hwnd, message, wParam, lParam) : 0;
}

void Window::Destroy()
{
    if (hwnd && IsWindow(hwnd))
        DestroyWindow(hwnd);
}

void Window::DetachAndDestroy()
{
    HWND window = hwnd;
    if (!window || !IsWindow(window))
    {
        hwnd = nullptr;
        return;
    }
    if (FromHandle(window) == this)
    {
        if (GetWindowLongPtrW(window, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&WindowProcedure))
            SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        else
            SetWindowLongPtrW(window, DWLP_USER, 0);
    }
    hwnd = nullptr;
    DestroyWindow(window);
}

Window* Window::FromHandle(HWND window)
{
    if (!window)
        return nullptr;
    if (GetWindowLongPtrW(window, GWLP_WNDPROC) == reinterpret_cast<LONG_PTR>(&WindowProcedure))
        return reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (GetWindowLongPtrW(window, DWLP_DLGPROC) == reinterpret_cast<LONG_PTR>(&DialogProcedure))
        return reinterpret_cast<Window*>(GetWindowLongPtrW(window, DWLP_USER));
    return nullptr;
}

LRESULT Window::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    return DefWindowProcW(hwnd, message, wParam, lParam);
}

INT_PTR Window::DialogProc(UINT, WPARAM, LPARAM)
{
    return FALSE;
}

namespace
{
// Runs a handler so that no C++ exception reaches user32: a failure is
// reported and the message gets `fallback`'s answer instead.
template <typename Result, typename Handler, typename Fallback>
Result Guarded(Handler handler, Fallback fallback)
{
    try
    {
        return handler();
    }
    catch (const std::exception& failure)
    {
        ReportHandlerFailure(failure.what());
    }
    catch (...)
    {
        ReportHandlerFailure(nullptr);
    }
    return fallback();
}
} // namespace

// After the last message of a window: the object lets go of the handle.
void Window::Detach(Window* self, HWND window, int slot)
{
    SetWindowLongPtrW(window, slot, 0);
    self->hwnd = nullptr;
    Guarded<int>(
        [self]
        {
            self->OnHandleDestroyed();
            return 0;
        },
        [] { return 0; });
}

LRESULT CALLBACK Window::WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    Window* self = nullptr;
    if (message == WM_NCCREATE)
    {
        auto* create = reinterpret_cast<CREATESTRUCTW*>(lParam);
        self = static_cast<Window*>(create->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        if (self)
            self->hwnd = window;
    }
    else
        self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!self)
        return DefWindowProcW(window, message, wParam, lParam);

    const LRESULT result =
        Guarded<LRESULT>([&] { return self->WindowProc(message, wParam, lParam); },
                         [&] { return DefWindowProcW(window, message, wParam, lParam); });
    if (message == WM_NCDESTROY)
        Detach(self, window, GWLP_USERDATA);
    return result;
}

INT_PTR CALLBACK Window::DialogProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    Window* self = nullptr;
    if (message == WM_INITDIALOG)
    {
        self = reinterpret_cast<Window*>(lParam);
        SetWindowLongPtrW(window, DWLP_USER, lParam);
        if (self)
            self->hwnd = window;
    }
    else
        self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, DWLP_USER));
    // Messages before WM_INITDIALOG (WM_SETFONT, ...) get the default handling.
    if (!self)
        return FALSE;

    const INT_PTR result = Guarded<INT_PTR>(
        [&] { return self->DialogProc(message, wParam, lParam); }, [] { return INT_PTR(FALSE); });
    if (message == WM_NCDESTROY)
        Detach(self, window, DWLP_USER);
    return result;
}
