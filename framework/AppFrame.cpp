#include "framework/AppFrame.h"

#include <utility>

#include "framework/AppEntry.h"
#include "text/WideText.h"

namespace
{
const wchar_t kFrameClass[] = L"KelAppFrame";

HINSTANCE ProgramModule()
{
    AppEntry* app = GetAppEntry();
    return app && app->Instance() ? app->Instance() : GetModuleHandleW(nullptr);
}
} // namespace

AppFrame::AppFrame(Window* ownerWindow, KelText text) : owner(ownerWindow), title(std::move(text))
{
}

AppFrame::~AppFrame()
{
    Teardown();
}

void AppFrame::Teardown()
{
    ReleaseApplicationLinks();
    DetachAndDestroy();
}

void AppFrame::SetTitle(const KelText& text)
{
    title = text;
    SetText(text);
}

void AppFrame::SetStyleBits(DWORD add, DWORD remove)
{
    styleAdd = (styleAdd | add) & ~remove;
    styleRemove = (styleRemove | remove) & ~add;
    if (!Exists())
        return;
    LONG_PTR style = GetWindowLongPtrW(Handle(), GWL_STYLE);
    SetWindowLongPtrW(Handle(), GWL_STYLE, (style | LONG_PTR(add)) & ~LONG_PTR(remove));
    SetWindowPos(Handle(), nullptr, 0, 0, 0, 0,
                 SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

HWND AppFrame::OwnerHandle() const
{
    if (owner)
        return owner->Handle();
    AppEntry* app = GetAppEntry();
    Window* main = app ? app->MainFrame() : nullptr;
    return main && main != this ? main->Handle() : nullptr;
}

int32_t AppFrame::Show(bool runModal)
{
    modal = runModal;
    if (!Exists())
    {
        result = 0;
        if (!CreateHandle(OwnerHandle()))
        {
            modal = false;
            return 0;
        }
    }
    ShowWindow(Handle(), ShowCommand());
    if (!modal)
        return 1;
    return RunModal();
}

int32_t AppFrame::RunModal()
{
    if (AppEntry* app = GetAppEntry())
        app->RunMessageLoop(this);
    else
    {
        // Without an application object: a plain loop with the same
        // pre-translation.
        MSG message;
        while (Exists() && GetMessageW(&message, nullptr, 0, 0) > 0)
        {
            if (PreTranslateMessage(message))
                continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    // The loop can also end by WM_QUIT: the window goes with it.
    if (Exists())
        Destroy();
    modal = false;
    return result;
}

int32_t AppFrame::CanClose()
{
    return 1;
}

void AppFrame::Close(int32_t code)
{
    if (!CanClose())
        return;
    result = code;
    ReleaseApplicationLinks();
    // The owner comes back before this window goes, so that it is activated
    // instead of some other program's window.
    if (modal)
        if (HWND ownerWindow = GetWindow(Handle(), GW_OWNER))
            EnableWindow(ownerWindow, TRUE);
    Destroy();
}

void AppFrame::ReleaseApplicationLinks()
{
    AppEntry* app = GetAppEntry();
    if (!app)
        return;
    if (modal)
        app->EndModal(this);
    if (app->MainFrame() == this)
        app->SetMainFrame(nullptr);
}

bool AppFrame::CreateHandle(HWND ownerWindow)
{
    static ATOM frameClass = []
    {
        WNDCLASSEXW kind = {};
        kind.cbSize = sizeof(kind);
        kind.style = CS_HREDRAW | CS_VREDRAW | CS_DBLCLKS;
        kind.lpfnWndProc = &Window::WindowProcedure;
        kind.hInstance = ProgramModule();
        kind.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        kind.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        kind.lpszClassName = kFrameClass;
        return RegisterClassExW(&kind);
    }();
    if (!frameClass)
        return false;
    DWORD style = (WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN | styleAdd) & ~styleRemove & ~WS_VISIBLE;
    HWND window = CreateWindowExW(WS_EX_CONTROLPARENT, kFrameClass, AsWide(title), style,
                                  CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                                  ownerWindow, nullptr, ProgramModule(), this);
    return window != nullptr;
}

LRESULT AppFrame::WindowProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_SIZE:
        if (wParam != SIZE_MINIMIZED)
            OnSizeChanged(LOWORD(lParam), HIWORD(lParam));
        return 0;
    case WM_CLOSE:
        Close(IDCANCEL);
        return 0;
    default:
        return Window::WindowProc(message, wParam, lParam);
    }
}

void AppFrame::OnHandleDestroyed()
{
    ReleaseApplicationLinks();
}

int32_t ShowAppMessageBox(HWND owner, const KelText& text, const KelText& caption, uint32_t style,
                          uint32_t switchCode)
{
    if (AppEntry* app = GetAppEntry())
        return app->ShowMessageBox(owner, text, caption, style, switchCode);
    if (AppInterface* app = GetApplication())
    {
        bool unused = false;
        return app->Interaction().ShowMessageBox(owner, text, caption, style, 0, KelText(), unused);
    }
    return 0;
}
