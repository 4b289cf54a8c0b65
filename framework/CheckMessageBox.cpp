#include "framework/CheckMessageBox.h"

#include <algorithm>
#include <vector>

#include "framework/AppInteraction.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"
#include "text/WideText.h"

namespace
{
struct BoxState
{
    const KelText* text;
    const KelText* caption;
    const KelText* checkLabel;
    uint32_t style;
    int32_t ids[3];
    int32_t count;
    int32_t defaultId;
    int32_t escapeId;
    bool checked;
    HFONT font;
    int bandTop;
};

KelText ButtonLabel(int32_t id)
{
    switch (id)
    {
    case IDOK:
        return DictText(kTextOk);
    case IDCANCEL:
        return DictText(kTextCancel);
    case IDNO:
        return DictText(kTextNo);
    case IDYES:
        return DictText(kTextYes);
    case IDRETRY:
    case IDTRYAGAIN:
        return DictText(kTextRetry);
    case IDABORT:
        return DictText(kTextAbort);
    case IDCONTINUE:
        return DictText(kTextContinue);
    case IDIGNORE:
        return u"Ignore";
    default:
        return KelText();
    }
}

const wchar_t* IconFor(uint32_t style)
{
    switch (style & MB_ICONMASK)
    {
    case MB_ICONHAND:
        return IDI_HAND;
    case MB_ICONQUESTION:
        return IDI_QUESTION;
    case MB_ICONEXCLAMATION:
        return IDI_EXCLAMATION;
    case MB_ICONASTERISK:
        return IDI_ASTERISK;
    default:
        return nullptr;
    }
}

SIZE TextExtent(HDC dc, const KelText& text)
{
    SIZE size = {0, 0};
    GetTextExtentPoint32W(dc, AsWide(text), text.Length(), &size);
    return size;
}

HWND AddControl(HWND dialog, const wchar_t* className, const KelText& text, DWORD style, int id,
                const RECT& place, HFONT font)
{
    HWND control =
        CreateWindowExW(0, className, AsWide(text), WS_CHILD | WS_VISIBLE | style, place.left,
                        place.top, place.right - place.left, place.bottom - place.top, dialog,
                        HMENU(INT_PTR(id)), GetModuleHandleW(nullptr), nullptr);
    if (control)
        SendMessageW(control, WM_SETFONT, WPARAM(font), FALSE);
    return control;
}

// Sizes the box to its contents, creates its controls and centres it over the
// owner (or the screen).
void LayOut(HWND dialog, BoxState& box)
{
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof(metrics);
    if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0))
        box.font = CreateFontIndirectW(&metrics.lfMessageFont);
    HFONT font = box.font ? box.font : HFONT(GetStockObject(DEFAULT_GUI_FONT));

    HDC dc = GetDC(dialog);
    HGDIOBJ previousFont = SelectObject(dc, font);
    const int dpi = GetDeviceCaps(dc, LOGPIXELSY);
    auto scale = [dpi](int value) { return MulDiv(value, dpi, 96); };

    const int margin = scale(16);
    const int gap = scale(8);
    const wchar_t* iconName = IconFor(box.style);
    HICON icon = iconName ? LoadIconW(nullptr, iconName) : nullptr;
    const int iconSize = icon ? GetSystemMetrics(SM_CXICON) : 0;

    // The message, word-wrapped at a readable width.
    RECT textRect = {0, 0, scale(420), 0};
    DrawTextW(dc, AsWide(*box.text), box.text->Length(), &textRect,
              DT_CALCRECT | DT_WORDBREAK | DT_EXPANDTABS | DT_NOPREFIX | DT_EDITCONTROL);
    const int textWidth = std::max<int>(textRect.right, scale(120));
    const int textHeight = std::max<int>(textRect.bottom, 1);

    // Buttons share one width, wide enough for the longest caption.
    TEXTMETRICW textMetrics = {};
    GetTextMetricsW(dc, &textMetrics);
    int buttonWidth = scale(88);
    for (int32_t i = 0; i < box.count; ++i)
        buttonWidth =
            std::max<int>(buttonWidth, TextExtent(dc, ButtonLabel(box.ids[i])).cx + scale(24));
    const int buttonHeight = std::max<int>(scale(26), textMetrics.tmHeight + scale(10));
    const int buttonsWidth = box.count * buttonWidth + (box.count - 1) * gap;

    const int checkWidth =
        TextExtent(dc, *box.checkLabel).cx + GetSystemMetrics(SM_CXMENUCHECK) + scale(12);
    const int checkHeight =
        std::max<int>(textMetrics.tmHeight, GetSystemMetrics(SM_CYMENUCHECK)) + scale(4);

    SelectObject(dc, previousFont);
    ReleaseDC(dialog, dc);

    const int textLeft = margin + (icon ? iconSize + scale(12) : 0);
    const int contentHeight = std::max(iconSize, textHeight);
    const int bandHeight = buttonHeight + 2 * scale(11);
    const int clientWidth = std::max(textLeft + textWidth + margin,
                                     margin + checkWidth + 2 * gap + buttonsWidth + margin);
    box.bandTop = margin + contentHeight + margin;
    const int clientHeight = box.bandTop + bandHeight;

    // The message area.
    if (icon)
    {
        RECT place = {margin, margin, margin + iconSize, margin + iconSize};
        HWND iconControl =
            AddControl(dialog, L"STATIC", KelText(), SS_ICON, kCheckBoxIconId, place, font);
        SendMessageW(iconControl, STM_SETICON, WPARAM(icon), 0);
    }
    const int textTop = margin + (contentHeight - textHeight) / 2;
    RECT textPlace = {textLeft, textTop, textLeft + textWidth, textTop + textHeight};
    AddControl(dialog, L"STATIC", *box.text, SS_LEFT | SS_NOPREFIX | SS_EDITCONTROL,
               kCheckBoxTextId, textPlace, font);

    // The band: the buttons on the right, the check box on the left.
    const int buttonTop = box.bandTop + scale(11);
    int left = clientWidth - margin - buttonsWidth;
    for (int32_t i = 0; i < box.count; ++i)
    {
        RECT place = {left, buttonTop, left + buttonWidth, buttonTop + buttonHeight};
        DWORD kind = box.ids[i] == box.defaultId ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
        AddControl(dialog, L"BUTTON", ButtonLabel(box.ids[i]),
                   kind | WS_TABSTOP | (i ? 0 : WS_GROUP), box.ids[i], place, font);
        left += buttonWidth + gap;
    }
    const int checkTop = box.bandTop + (bandHeight - checkHeight) / 2;
    RECT checkPlace = {margin, checkTop, margin + checkWidth, checkTop + checkHeight};
    AddControl(dialog, L"BUTTON", *box.checkLabel, BS_AUTOCHECKBOX | WS_TABSTOP | WS_GROUP,
               kCheckBoxId, checkPlace, font);

    // Outer size and place.
    RECT frame = {0, 0, clientWidth, clientHeight};
    AdjustWindowRectEx(&frame, DWORD(GetWindowLongPtrW(dialog, GWL_STYLE)), FALSE,
                       DWORD(GetWindowLongPtrW(dialog, GWL_EXSTYLE)));
    const int width = frame.right - frame.left;
    const int height = frame.bottom - frame.top;

    HWND owner = GetWindow(dialog, GW_OWNER);
    HMONITOR monitor = MonitorFromWindow(owner ? owner : dialog, MONITOR_DEFAULTTOPRIMARY);
    MONITORINFO screen = {};
    screen.cbSize = sizeof(screen);
    GetMonitorInfoW(monitor, &screen);
    RECT over = screen.rcWork;
    if (owner && IsWindowVisible(owner) && !IsIconic(owner))
        GetWindowRect(owner, &over);
    int x = (over.left + over.right - width) / 2;
    int y = (over.top + over.bottom - height) / 2;
    x = std::max<int>(screen.rcWork.left, std::min<int>(x, screen.rcWork.right - width));
    y = std::max<int>(screen.rcWork.top, std::min<int>(y, screen.rcWork.bottom - height));
    SetWindowPos(dialog, nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

INT_PTR CALLBACK BoxProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* box = reinterpret_cast<BoxState*>(GetWindowLongPtrW(dialog, DWLP_USER));
    switch (message)
    {
    case WM_INITDIALOG:
    {
        box = reinterpret_cast<BoxState*>(lParam);
        SetWindowLongPtrW(dialog, DWLP_USER, lParam);
        SetWindowTextW(dialog, AsWide(*box->caption));
        LayOut(dialog, *box);
        if (!box->escapeId)
            EnableMenuItem(GetSystemMenu(dialog, FALSE), SC_CLOSE, MF_BYCOMMAND | MF_GRAYED);
        if (box->style & (MB_TOPMOST | MB_SYSTEMMODAL))
            SetWindowPos(dialog, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
        if (box->style & MB_SETFOREGROUND)
            SetForegroundWindow(dialog);
        SendMessageW(dialog, DM_SETDEFID, WPARAM(box->defaultId), 0);
        SetFocus(GetDlgItem(dialog, box->defaultId));
        MessageBeep(box->style & MB_ICONMASK);
        return FALSE; // the focus is set
    }
    case WM_ERASEBKGND:
    {
        if (!box)
            break;
        // The message on the window colour, the buttons on a band below it.
        RECT client;
        GetClientRect(dialog, &client);
        RECT upper = client;
        upper.bottom = box->bandTop;
        RECT band = client;
        band.top = box->bandTop;
        FillRect(HDC(wParam), &upper, GetSysColorBrush(COLOR_WINDOW));
        FillRect(HDC(wParam), &band, GetSysColorBrush(COLOR_BTNFACE));
        SetWindowLongPtrW(dialog, DWLP_MSGRESULT, TRUE);
        return TRUE;
    }
    case WM_CTLCOLORSTATIC:
    {
        int id = GetDlgCtrlID(HWND(lParam));
        if (id != kCheckBoxTextId && id != kCheckBoxIconId)
            break;
        SetBkColor(HDC(wParam), GetSysColor(COLOR_WINDOW));
        SetTextColor(HDC(wParam), GetSysColor(COLOR_WINDOWTEXT));
        return INT_PTR(GetSysColorBrush(COLOR_WINDOW));
    }
    case WM_COMMAND:
    {
        if (!box)
            break;
        int32_t id = LOWORD(wParam);
        if (id == kCheckBoxId)
            return TRUE;
        if (std::find(box->ids, box->ids + box->count, id) == box->ids + box->count)
        {
            // Not one of the buttons: only Esc and the close box (IDCANCEL)
            // count, and only when the box allows them.
            if (id != IDCANCEL || !box->escapeId)
                return TRUE;
            id = box->escapeId;
        }
        box->checked = IsDlgButtonChecked(dialog, kCheckBoxId) == BST_CHECKED;
        EndDialog(dialog, id);
        return TRUE;
    }
    case WM_DESTROY:
        if (box && box->font)
        {
            DeleteObject(box->font);
            box->font = nullptr;
        }
        break;
    default:
        break;
    }
    return FALSE;
}
} // namespace

int32_t ShowCheckMessageBox(HWND owner, const KelText& text, const KelText& caption, uint32_t style,
                            const KelText& checkLabel, bool& checked)
{
    BoxState box = {};
    box.text = &text;
    box.caption = &caption;
    box.checkLabel = &checkLabel;
    box.style = style;
    box.count = MessageBoxButtons(style, box.ids);
    box.defaultId = MessageBoxDefaultButton(style);
    box.escapeId = MessageBoxEscapeButton(style);
    checked = false;

    // An empty in-memory template: the controls are made and placed when the
    // dialog opens, measured in pixels with the message font.
    std::vector<WORD> data(16, 0);
    auto* header = reinterpret_cast<DLGTEMPLATE*>(data.data());
    header->style = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_3DLOOK;
    header->dwExtendedStyle = WS_EX_DLGMODALFRAME | WS_EX_WINDOWEDGE;
    if (style & (MB_TOPMOST | MB_SYSTEMMODAL))
        header->dwExtendedStyle |= WS_EX_TOPMOST;
    header->cdit = 0;
    header->cx = 200;
    header->cy = 80;
    // After the header: no menu, the standard class, an empty title (all zero).

    INT_PTR result =
        DialogBoxIndirectParamW(GetModuleHandleW(nullptr), header, owner, BoxProc, LPARAM(&box));
    if (result <= 0)
    {
        checked = false;
        return MessageBoxW(owner, AsWide(text), AsWide(caption), style);
    }
    checked = box.checked;
    return int32_t(result);
}
