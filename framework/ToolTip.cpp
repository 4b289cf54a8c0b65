#include "framework/ToolTip.h"

#include <commctrl.h>

#include "framework/FormDialog.h"
#include "text/WideText.h"

namespace
{
// The structure size that every common-controls version accepts.
const UINT kToolInfoSize = TTTOOLINFOW_V2_SIZE;

TTTOOLINFOW ToolFor(HWND page, HWND control)
{
    TTTOOLINFOW tool = {};
    tool.cbSize = kToolInfoSize;
    tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS;
    tool.hwnd = page;
    tool.uId = reinterpret_cast<UINT_PTR>(control);
    return tool;
}
} // namespace

bool ToolTip::Make()
{
    if (Exists())
        return true;
    if (!page.Handle())
        return false;
    HWND window = CreateWindowExW(
        WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX,
        CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, page.Handle(), nullptr,
        reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(page.Handle(), GWLP_HINSTANCE)), nullptr);
    SetHandle(window);
    if (window)
        SendMessageW(window, TTM_SETMAXTIPWIDTH, 0, 400);
    return window != nullptr;
}

bool ToolTip::SetToolText(const Window& control, const KelText& text)
{
    if (!control.Handle() || !Make())
        return false;
    TTTOOLINFOW tool = ToolFor(page.Handle(), control.Handle());
    Send(TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
    if (text.IsEmpty())
        return true;
    tool.lpszText = const_cast<wchar_t*>(AsWide(text));
    return Send(TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool)) != 0;
}

KelText ToolTip::ToolText(const Window& control) const
{
    if (!Handle() || !control.Handle())
        return KelText();
    wchar_t buffer[1024] = {};
    TTTOOLINFOW tool = ToolFor(page.Handle(), control.Handle());
    tool.lpszText = buffer;
    if (!Send(TTM_GETTOOLINFOW, 0, reinterpret_cast<LPARAM>(&tool)))
        return KelText();
    Send(TTM_GETTEXTW, 1024, reinterpret_cast<LPARAM>(&tool));
    return FromWide(buffer);
}
