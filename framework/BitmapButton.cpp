#include "framework/BitmapButton.h"

#include <commctrl.h>
#include <uxtheme.h>
#include <vssym32.h>

#include "framework/AccessibleName.h"
#include "framework/FormDialog.h"
#include "framework/SharedImageList.h"
#include "text/AccessKey.h"

namespace
{
// The button face: themed when the application runs with visual styles,
// classic otherwise. Answers the rectangle inside the border.
RECT DrawFace(HWND button, HDC dc, RECT rect, bool pushed, bool disabled, bool isDefault)
{
    HTHEME theme = IsAppThemed() ? OpenThemeData(button, L"BUTTON") : nullptr;
    if (theme)
    {
        int state = disabled    ? PBS_DISABLED
                    : pushed    ? PBS_PRESSED
                    : isDefault ? PBS_DEFAULTED
                                : PBS_NORMAL;
        if (IsThemeBackgroundPartiallyTransparent(theme, BP_PUSHBUTTON, state))
            DrawThemeParentBackground(button, dc, &rect);
        DrawThemeBackground(theme, dc, BP_PUSHBUTTON, state, &rect, nullptr);
        RECT content = rect;
        GetThemeBackgroundContentRect(theme, dc, BP_PUSHBUTTON, state, &rect, &content);
        CloseThemeData(theme);
        return content;
    }
    UINT flags = DFCS_BUTTONPUSH | DFCS_ADJUSTRECT | (pushed ? DFCS_PUSHED : 0) |
                 (disabled ? DFCS_INACTIVE : 0);
    DrawFrameControl(dc, &rect, DFC_BUTTON, flags);
    return rect;
}
} // namespace

BitmapButton::BitmapButton(FormDialog& page, int32_t id, int32_t imageIndex,
                           std::function<void()> onClick)
    : Control(page, id), image(imageIndex), clicked(std::move(onClick))
{
    if (!Handle())
        return;
    // A template button of another kind becomes owner-drawn.
    LONG_PTR style = GetWindowLongPtrW(Handle(), GWL_STYLE);
    if ((style & BS_TYPEMASK) != BS_OWNERDRAW)
        Send(BM_SETSTYLE, (style & ~LONG_PTR(BS_TYPEMASK)) | BS_OWNERDRAW, TRUE);
    SetToolTip(Text());
}

void BitmapButton::SetImage(int32_t index)
{
    image = index;
    if (Handle())
        InvalidateRect(Handle(), nullptr, TRUE);
}

void BitmapButton::SetToolTip(const KelText& text)
{
    // The access-key mark means nothing in a tip. The picture says nothing
    // to a screen reader either: the tip is what it announces.
    const KelText tip = WithoutAccessKey(text);
    Page().ToolTips().SetToolText(*this, tip);
    SetAccessibleName(Handle(), tip);
}

bool BitmapButton::OnCommand(int32_t code)
{
    if (code != BN_CLICKED || !clicked)
        return false;
    clicked();
    return true;
}

bool BitmapButton::OnDrawItem(DRAWITEMSTRUCT& item)
{
    if (item.CtlType != ODT_BUTTON)
        return false;
    HDC dc = item.hDC;
    const bool pushed = (item.itemState & ODS_SELECTED) != 0;
    const bool disabled = (item.itemState & ODS_DISABLED) != 0;
    const bool focused = (item.itemState & ODS_FOCUS) != 0;
    RECT content = DrawFace(item.hwndItem, dc, item.rcItem, pushed, disabled, focused);

    HIMAGELIST images = SharedImageListForDpi(Page().Dpi());
    if (images && image >= 0 && image < ImageList_GetImageCount(images))
    {
        int width = 0;
        int height = 0;
        ImageList_GetIconSize(images, &width, &height);
        int x = (item.rcItem.left + item.rcItem.right - width) / 2;
        int y = (item.rcItem.top + item.rcItem.bottom - height) / 2;
        if (pushed)
        {
            ++x;
            ++y;
        }
        if (disabled)
        {
            // The system's embossed grey rendering of the picture.
            HICON icon = ImageList_GetIcon(images, image, ILD_NORMAL);
            if (icon)
            {
                DrawStateW(dc, nullptr, nullptr, reinterpret_cast<LPARAM>(icon), 0, x, y, width,
                           height, DST_ICON | DSS_DISABLED);
                DestroyIcon(icon);
            }
        }
        else
            ImageList_Draw(images, image, dc, x, y, ILD_TRANSPARENT);
    }

    if (focused && !(item.itemState & ODS_NOFOCUSRECT))
    {
        RECT focus = content;
        InflateRect(&focus, -1, -1);
        DrawFocusRect(dc, &focus);
    }
    return true;
}
