#pragma once
#include <windows.h>

#include <cstdint>

#include "text/KelText.h"

class Control;

// Why a page is applied: the second argument of ApplyPage and its relatives.
enum ApplyReason : int32_t
{
    kApplyConfirm = 0,    // the dialog's OK: every opened page, in page order
    kApplyCurrent = 1,    // the dialog's Apply: the current page only
    kApplyStandalone = 2, // OK of a page that runs as a dialog of its own
};

// The toolkit's window base: wraps a window handle that it does not own (the
// window's lifetime is the system's). Windows get their behaviour by deriving from
// this class; a Window cannot be copied, because the system window refers to
// exactly one C++ object.
//
// Windows created by the toolkit refer back to their object: one static window
// procedure and one dialog procedure store `this` when the window is created
// (GWLP_USERDATA, DWLP_USER) and hand every later message to the virtual
// handlers WindowProc and DialogProc. No C++ exception leaves a handler: the
// procedures catch it, report it once and answer as if it was not handled.
class Window
{
public:
    explicit Window(HWND handle = nullptr) : hwnd(handle) {}
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window();

    // The virtual operations of windows, dialogs and pages, in this order.

    // The client area has a new size: relay out the controls.
    virtual void OnSizeChanged(int32_t width, int32_t height);
    // Shows the window (base: an existing one, without creating it). Frames
    // create their window first and run it through the application's message
    // loop when `modal` is set; see AppFrame::Show. Answers 1 when the window
    // is shown (modeless) or the code it was closed with (modal), 0 on failure.
    virtual int32_t Show(bool modal);
    // Called once after a page's window and its template controls exist: the
    // page makes its control objects, fills them and sets its layout. Answers 0.
    virtual int32_t InitPage();
    // Validates and stores a page. Answers 0 when the page accepts, non-zero
    // when it refuses (the dialog then stays open). `pageIndex` is the page's
    // place in its dialog (-1 outside one), `reason` an ApplyReason, `flags`
    // 0 from the toolkit.
    virtual int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags);
    // The first bound control whose content is invalid, or null.
    virtual Control* FindInvalidControl(int32_t pageIndex, int32_t reason, int32_t flags);
    // Apply with the caller's arguments; pages forward to ApplyPage.
    virtual int32_t ApplyPageWith(int32_t pageIndex, int32_t reason, int32_t flags);
    // Sees a message of the application's message loop before it is
    // dispatched; answers true when it has handled it (the loop then skips
    // it). Dialogs give the dialog manager its keyboard handling here.
    virtual bool PreTranslateMessage(MSG& message);

    // The wrapped window, null before creation or after it was destroyed.
    HWND Handle() const { return hwnd; }
    bool Exists() const { return hwnd && IsWindow(hwnd); }

    // --- common operations (no effect without a window) ----------------------
    KelText Text() const;
    void SetText(const KelText& text);
    void SetVisible(bool visible);
    bool IsVisible() const;
    void Enable(bool enable = true);
    bool IsEnabled() const;
    void Focus();
    bool HasFocus() const;
    // The client rectangle (0, 0, width, height).
    RECT ClientRect() const;
    // The window rectangle in the client coordinates of its parent (screen
    // coordinates for a top-level window).
    RECT RectInParent() const;
    void Move(const RECT& rect, bool repaint = true);
    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const;
    // Destroys the system window (when there is one).
    void Destroy();

    // The object of a window created by the toolkit, or null.
    static Window* FromHandle(HWND window);

protected:
    // Derived classes set the handle once the system window exists.
    void SetHandle(HWND handle) { hwnd = handle; }

    // Messages of a window made with the toolkit's window class. Base:
    // DefWindowProcW.
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    // Messages of a dialog made by the toolkit; answers as a dialog procedure
    // does (TRUE when handled). Base: FALSE.
    virtual INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam);
    // The system window is gone (after WM_NCDESTROY); Handle() is null again.
    virtual void OnHandleDestroyed() {}

    // The procedures to pass to the system: creation data (lpCreateParams of
    // CreateWindowExW, the init parameter of the dialog functions) is `this`.
    static void Detach(Window* self, HWND window, int slot);
    static LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);
    static INT_PTR CALLBACK DialogProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam);

    // Cuts the link from the system window to this object (the window then
    // gets default handling) and destroys it. For destructors.
    void DetachAndDestroy();

private:
    HWND hwnd;
};

// Reports a C++ exception caught at a window procedure's boundary. The first
// one of the process is shown to the user; later ones are dropped, because a
// handler that fails keeps failing and a box per message helps nobody.
void ReportHandlerFailure(const char* what);
