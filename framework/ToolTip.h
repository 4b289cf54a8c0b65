#pragma once
#include <windows.h>

#include "framework/Window.h"
#include "text/KelText.h"

class FormDialog;

// The tool-tip control of a page: one per page, with one text per control.
// The window is made on first use and goes with the page.
class ToolTip : public Window
{
public:
    explicit ToolTip(FormDialog& page) : page(page) {}

    // Shows `text` when the mouse rests on `control`; replaces an earlier
    // text of the same control. An empty text removes the tip.
    bool SetToolText(const Window& control, const KelText& text);
    KelText ToolText(const Window& control) const;
    // A tip for a part of `owner`: shown while the mouse rests within `rect`
    // (client coordinates of `owner`); `id` tells the parts of one owner
    // apart. An empty text removes the tip.
    bool SetAreaText(const Window& owner, UINT_PTR id, const RECT& rect, const KelText& text);
    // Moves the area of a tip that exists.
    void MoveArea(const Window& owner, UINT_PTR id, const RECT& rect);
    KelText AreaText(const Window& owner, UINT_PTR id) const;
    // The tool-tip window is gone with its page.
    void Detach() { SetHandle(nullptr); }

private:
    bool Make();

    FormDialog& page;
};
