#pragma once
#include <windows.h>

#include <cstdint>

#include "framework/Window.h"
#include "text/KelText.h"

// A top-level (or owned) window of the application that can be shown
// modelessly or run modally through the application's message loop. Dialogs
// derive from it; on its own it makes a plain frame window of the toolkit's
// window class.
class AppFrame : public Window
{
public:
    explicit AppFrame(Window* owner = nullptr, KelText title = KelText());
    AppFrame(const AppFrame&) = delete;
    AppFrame& operator=(const AppFrame&) = delete;
    ~AppFrame() override;

    // Records the modal flag, creates the window when it does not exist yet
    // (owner: the given owner, else the application's main frame unless that
    // is this window) and shows it. Modeless: answers 1 (0 when the window
    // could not be created). Modal: runs the application's message loop until
    // the window is closed and answers the code it was closed with.
    int32_t Show(bool modal) override;

    // Closes the window with a result code, when CanClose agrees: a modal
    // window leaves the application's modal stack and its owner is enabled
    // again; the window is destroyed.
    virtual void Close(int32_t code);
    // Whether the window may close now; 1 yes, 0 no. Base: 1.
    virtual int32_t CanClose();

    bool IsModal() const { return modal; }
    // The code the window was last closed with (0 before).
    int32_t Result() const { return result; }
    Window* Owner() const { return owner; }
    void SetOwner(Window* window) { owner = window; }
    // The title given at construction or set since. Setting it renames an
    // existing window as well.
    const KelText& Title() const { return title; }
    virtual void SetTitle(const KelText& text);
    // Window style bits to add and to remove: kept for creation and applied at
    // once to an existing window (WS_MINIMIZEBOX, ...).
    void SetStyleBits(DWORD add, DWORD remove = 0);

protected:
    // Makes the system window (hidden). Base: a frame of the toolkit's class.
    virtual bool CreateHandle(HWND ownerWindow);
    // How Show shows the window.
    virtual int ShowCommand() const { return SW_SHOW; }
    // The owner that Show uses (see Show).
    HWND OwnerHandle() const;
    // Leaves the modal stack (when modal) and gives up the main-frame role.
    void ReleaseApplicationLinks();
    // The end of the window's ties to this object: ReleaseApplicationLinks,
    // then the system window is cut from the object (later messages get
    // default handling) and destroyed. ~AppFrame runs it, so no message
    // reaches a half-destroyed object; a class whose members own child
    // windows runs it first in its own destructor (see PropertyDialog).
    void Teardown();

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnHandleDestroyed() override;

    DWORD styleAdd = 0;
    DWORD styleRemove = 0;

private:
    int32_t RunModal();

    Window* owner;
    KelText title;
    bool modal = false;
    int32_t result = 0;
};

// The application's message box (AppEntry::ShowMessageBox, or the plain seam
// of another application object). Answers the button pressed, 0 without an
// application.
int32_t ShowAppMessageBox(HWND owner, const KelText& text, const KelText& caption, uint32_t style,
                          uint32_t switchCode = 0);
