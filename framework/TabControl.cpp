#include "framework/TabControl.h"

#include <commctrl.h>

#include "text/WideText.h"

bool TabControl::Attach(HWND control)
{
    SetHandle(control);
    return control != nullptr;
}

int32_t TabControl::Count() const
{
    return int32_t(Send(TCM_GETITEMCOUNT));
}

int32_t TabControl::Insert(int32_t index, const KelText& text)
{
    TCITEMW item = {};
    item.mask = TCIF_TEXT;
    item.pszText = const_cast<wchar_t*>(AsWide(text));
    if (index < 0 || index > Count())
        index = Count();
    auto inserted = int32_t(Send(TCM_INSERTITEMW, WPARAM(index), reinterpret_cast<LPARAM>(&item)));
    return inserted < 0 ? -1 : inserted;
}

void TabControl::SetItemText(int32_t index, const KelText& text)
{
    TCITEMW item = {};
    item.mask = TCIF_TEXT;
    item.pszText = const_cast<wchar_t*>(AsWide(text));
    Send(TCM_SETITEMW, WPARAM(index), reinterpret_cast<LPARAM>(&item));
}

KelText TabControl::ItemText(int32_t index) const
{
    wchar_t buffer[256] = {};
    TCITEMW item = {};
    item.mask = TCIF_TEXT;
    item.pszText = buffer;
    item.cchTextMax = 256;
    if (index < 0 || index >= Count() ||
        !Send(TCM_GETITEMW, WPARAM(index), reinterpret_cast<LPARAM>(&item)))
        return KelText();
    return FromWide(buffer);
}

int32_t TabControl::Selection() const
{
    return Handle() ? int32_t(Send(TCM_GETCURSEL)) : -1;
}

void TabControl::Select(int32_t index)
{
    if (Selection() != index)
        Send(TCM_SETCURSEL, WPARAM(index));
}

RECT TabControl::ItemRect(int32_t index) const
{
    RECT rect = {};
    if (index < 0 || index >= Count() ||
        !Send(TCM_GETITEMRECT, WPARAM(index), reinterpret_cast<LPARAM>(&rect)))
        return RECT{};
    return rect;
}

RECT TabControl::DisplayArea(const RECT& rect) const
{
    RECT area = rect;
    Send(TCM_ADJUSTRECT, FALSE, reinterpret_cast<LPARAM>(&area));
    return area;
}

RECT TabControl::RectForDisplay(const RECT& area) const
{
    RECT rect = area;
    Send(TCM_ADJUSTRECT, TRUE, reinterpret_cast<LPARAM>(&rect));
    return rect;
}
