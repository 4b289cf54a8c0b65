#pragma once
#include <windows.h>

#include <cstdint>
#include <vector>

// How a control follows its page when the page changes size. Without flags it
// keeps its place and size (at the top left).
enum LayoutFlags : uint32_t
{
    kLayoutFixed = 0,
    kLayoutGrowWidth = 1,  // the right edge follows the page's right edge
    kLayoutGrowHeight = 2, // the bottom edge follows the page's bottom edge
    kLayoutGrow = kLayoutGrowWidth | kLayoutGrowHeight,
    kLayoutKeepRight = 4,  // moves with the right edge, same width
    kLayoutKeepBottom = 8, // moves with the bottom edge, same height
};

// The layout of one page: for each control its rectangle and the page's
// client size when the control was added; Apply moves every control by the
// page's change in size as its flags say.
class Layout
{
public:
    // Adds (or replaces) a control; `clientSize` is the page's client size now.
    void Add(HWND control, uint32_t flags, SIZE clientSize);
    void Remove(HWND control);
    void Clear() { items.clear(); }
    bool IsEmpty() const { return items.empty(); }
    // Moves the controls for the client size (width, height).
    void Apply(int32_t width, int32_t height) const;
    // The page is shown at another resolution: every remembered rectangle and
    // size goes from the dialog base units `from` to `to` (DialogFrame).
    void Scale(SIZE to, SIZE from);

private:
    struct Item
    {
        HWND control;
        uint32_t flags;
        RECT start;
        SIZE startClient;
    };
    std::vector<Item> items;
};
