#include "framework/Layout.h"

#include <algorithm>

void Layout::Add(HWND control, uint32_t flags, SIZE clientSize)
{
    if (!control)
        return;
    Remove(control);
    RECT rect = {};
    GetWindowRect(control, &rect);
    MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&rect), 2);
    items.push_back({control, flags, rect, clientSize});
}

void Layout::Remove(HWND control)
{
    items.erase(std::remove_if(items.begin(), items.end(),
                               [control](const Item& item) { return item.control == control; }),
                items.end());
}

void Layout::Apply(int32_t width, int32_t height) const
{
    if (items.empty())
        return;
    HDWP moves = BeginDeferWindowPos(int(items.size()));
    for (const Item& item : items)
    {
        if (!IsWindow(item.control))
            continue;
        const int32_t dx = width - item.startClient.cx;
        const int32_t dy = height - item.startClient.cy;
        RECT rect = item.start;
        if (item.flags & kLayoutKeepRight)
            OffsetRect(&rect, dx, 0);
        else if (item.flags & kLayoutGrowWidth)
            rect.right = std::max(rect.left, rect.right + dx);
        if (item.flags & kLayoutKeepBottom)
            OffsetRect(&rect, 0, dy);
        else if (item.flags & kLayoutGrowHeight)
            rect.bottom = std::max(rect.top, rect.bottom + dy);
        const UINT flags = SWP_NOZORDER | SWP_NOACTIVATE;
        if (moves)
            moves = DeferWindowPos(moves, item.control, nullptr, rect.left, rect.top,
                                   rect.right - rect.left, rect.bottom - rect.top, flags);
        else
            SetWindowPos(item.control, nullptr, rect.left, rect.top, rect.right - rect.left,
                         rect.bottom - rect.top, flags);
    }
    if (moves)
        EndDeferWindowPos(moves);
}

void Layout::Scale(SIZE to, SIZE from)
{
    if (from.cx <= 0 || from.cy <= 0)
        return;
    for (Item& item : items)
    {
        RECT& r = item.start;
        r = {MulDiv(r.left, to.cx, from.cx), MulDiv(r.top, to.cy, from.cy),
             MulDiv(r.right, to.cx, from.cx), MulDiv(r.bottom, to.cy, from.cy)};
        item.startClient = {MulDiv(item.startClient.cx, to.cx, from.cx),
                            MulDiv(item.startClient.cy, to.cy, from.cy)};
    }
}
