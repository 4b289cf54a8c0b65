#pragma once
#include <windows.h>

#include <cstdint>
#include <functional>

#include "text/KelText.h"

// Every modal interaction with the user that a test cannot click through:
// message boxes, the alert, the folder browser, a modal choice (such as the
// configuration picker) and the state of the modifier keys. The application
// object reaches them only through this interface. The system implementation
// shows the real thing; tests install a double that answers from a script and
// records what would have been shown.
class AppInteraction
{
public:
    virtual ~AppInteraction() = default;

    // Shows a message box and answers the button pressed (IDOK, IDYES, ...).
    // `style` holds the MB_ type, icon and default-button flags. With a
    // non-zero switchCode the box also offers the "don't show again" check
    // box labelled checkLabel; `dontShowAgain` tells whether it was ticked.
    virtual int32_t ShowMessageBox(HWND owner, const KelText& text, const KelText& caption,
                                   uint32_t style, uint32_t switchCode, const KelText& checkLabel,
                                   bool& dontShowAgain) = 0;

    // Draws attention to a refused action: flashes the owner's top-level
    // window twice, 500 ms apart, then sounds MessageBeep(beepType).
    virtual void Alert(HWND owner, uint32_t beepType) = 0;

    // Lets the user pick a folder, starting in startFolder (may be empty).
    // Answers true and the folder (normalised: "/" separators, trailing "/").
    virtual bool BrowseForFolder(HWND owner, const KelText& title, const KelText& startFolder,
                                 KelText& chosen) = 0;

    // Whether a key (VK_MENU, VK_SHIFT, VK_CONTROL, ...) is held down now.
    virtual bool IsKeyDown(int virtualKey) = 0;

    // A modal choice among rows, named by `purpose` (for example
    // "configuration"). The system implementation runs `show`, which shows the
    // real dialog and answers the confirmed row or -1 when cancelled.
    virtual int32_t ChooseModal(const KelText& purpose, const std::function<int32_t()>& show) = 0;
};

// The implementation that shows the real windows.
class SystemInteraction : public AppInteraction
{
public:
    int32_t ShowMessageBox(HWND owner, const KelText& text, const KelText& caption, uint32_t style,
                           uint32_t switchCode, const KelText& checkLabel,
                           bool& dontShowAgain) override;
    void Alert(HWND owner, uint32_t beepType) override;
    bool BrowseForFolder(HWND owner, const KelText& title, const KelText& startFolder,
                         KelText& chosen) override;
    bool IsKeyDown(int virtualKey) override;
    int32_t ChooseModal(const KelText& purpose, const std::function<int32_t()>& show) override;
};

// --- the buttons of a message-box style ------------------------------------

// The button ids that the MB_ type of `style` shows, left to right; answers
// their number (1 to 3). Unknown types show OK.
int32_t MessageBoxButtons(uint32_t style, int32_t (&ids)[3]);
// The button that Enter presses: the one MB_DEFBUTTON1..3 selects, the first
// when the style selects a button it does not have.
int32_t MessageBoxDefaultButton(uint32_t style);
// What Esc and the close box answer: IDCANCEL when there is a Cancel button,
// IDOK for a box with only OK, otherwise 0 (Esc does nothing).
int32_t MessageBoxEscapeButton(uint32_t style);
