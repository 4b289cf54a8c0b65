#pragma once
#include <windows.h>

#include <cstdint>

#include "text/KelText.h"

// What saving a page asks the page to tell the user, and whether the page
// refuses to close. The pages' window-free value classes answer it from their
// Save; the page shows it (FormDialog::Report); a program without windows
// prints its text.
struct PageReport
{
    // The page answers non-zero: the dialog stays open.
    bool refuse = false;
    // The page comes to the front before anything is shown.
    bool toFront = false;
    // The alert (flash and beep) comes before the box.
    bool alert = false;
    // The box: its message, caption and style (no box when both the message
    // and the style are empty; a box whose text is missing from the
    // dictionary still shows).
    KelText text;
    KelText caption;
    uint32_t style = 0;

    bool HasBox() const { return style != 0 || !text.IsEmpty(); }

    // Nothing to tell; the page accepts.
    static PageReport Accepted() { return PageReport(); }
    // An error box (MB_ICONHAND); the page refuses.
    static PageReport Refused(const KelText& text, const KelText& caption, bool toFront, bool alert)
    {
        return PageReport{true, toFront, alert, text, caption, MB_OK | MB_ICONHAND};
    }
    // A box that only informs; the page accepts.
    static PageReport Notice(const KelText& text, const KelText& caption, uint32_t style)
    {
        return PageReport{false, false, false, text, caption, style};
    }
};
