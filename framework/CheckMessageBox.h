#pragma once
#include <windows.h>

#include <cstdint>

#include "text/KelText.h"

// A message box with a check box (such as "Don't Show This Message Again")
// between the message and the buttons. It behaves like the system's message
// box: the icon, buttons and default button come from the MB_ flags of
// `style`, Enter presses the default button, Esc and the close box answer as
// MessageBoxEscapeButton says, and the icon's sound plays when it opens.
// Button captions come from the dictionary. Answers the button pressed and
// whether the check box was ticked; falls back to the system's plain message
// box (and `checked` false) when the dialog cannot be created.
int32_t ShowCheckMessageBox(HWND owner, const KelText& text, const KelText& caption, uint32_t style,
                            const KelText& checkLabel, bool& checked);

// Control ids of the box, for tests that drive it.
constexpr int kCheckBoxId = 1000;
constexpr int kCheckBoxTextId = 1001;
constexpr int kCheckBoxIconId = 1002;
