#pragma once
#include <windows.h>

#include <cstdint>

#include "framework/Window.h"
#include "text/KelText.h"

// A tab control (SysTabControl32) of a dialog: its tabs, the selected one,
// and the conversion between the control's rectangle and the area where the
// selected tab's body is shown. It wraps a control that the dialog made from
// its template; the window belongs to the dialog.
class TabControl : public Window
{
public:
    TabControl() = default;
    // Wraps the control (null: none); answers whether there is one.
    bool Attach(HWND control);

    int32_t Count() const;
    // Inserts a tab before `index` (appends when out of range); answers its
    // index, -1 on failure.
    int32_t Insert(int32_t index, const KelText& text);
    void SetItemText(int32_t index, const KelText& text);
    KelText ItemText(int32_t index) const;
    // The selected tab, -1 when none.
    int32_t Selection() const;
    void Select(int32_t index);
    // A tab's rectangle in the control's client coordinates (empty outside).
    RECT ItemRect(int32_t index) const;
    // The body area for the control's window rectangle `rect`, and the other
    // way round (both in the same coordinates).
    RECT DisplayArea(const RECT& rect) const;
    RECT RectForDisplay(const RECT& area) const;
};
