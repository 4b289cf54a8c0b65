#include "framework/StandardPropertyDialog.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "framework/AppEntry.h"
#include "framework/FrameworkResources.h"
#include "framework/RegistryKey.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"
#include "text/WideText.h"

namespace
{
// Dialog units of the frame's layout.
constexpr int32_t kMargin = 7;
constexpr int32_t kGap = 4;
constexpr int32_t kButtonWidth = 50;
constexpr int32_t kButtonHeight = 14;
// The page size assumed when no page has a template to measure.
constexpr SIZE kDefaultPage = {186, 167};

// The registry keeps the coordinates as DWORDs; negative ones (screens left
// of or above the main screen) go through their two's complement.
bool ReadCoordinate(const RegistryKey& key, const char16_t* name, int32_t& value)
{
    uint32_t stored = 0;
    if (key.ReadDword(name, stored) != RegistryRead::Ok)
        return false;
    value = int32_t(stored);
    return true;
}

void WriteIfChanged(RegistryKey& key, const char16_t* name, int32_t value)
{
    uint32_t stored = 0;
    if (key.ReadDword(name, stored) == RegistryRead::Ok && stored == uint32_t(value))
        return;
    key.WriteDword(name, uint32_t(value));
}
} // namespace

StandardPropertyDialog::StandardPropertyDialog(Window* owner, const KelText& title, int32_t view,
                                               int32_t apply, int32_t start, KelText key)
    : PropertyDialog(owner, kPropertyFrameTemplate, title), pageView(view), showApply(apply != 0),
      startPage(start), placementKey(std::move(key))
{
}

StandardPropertyDialog::~StandardPropertyDialog() = default;

int32_t StandardPropertyDialog::Show(bool modal)
{
    AppEntry* app = GetAppEntry();
    if (app && !app->MainFrame() && !Exists())
        app->SetMainFrame(this);
    return PropertyDialog::Show(modal);
}

KelText StandardPropertyDialog::PlacementKeyPath() const
{
    if (placementKey.IsEmpty())
        return KelText();
    // The application's branch of the current user; without an application
    // there is none and the place is not kept.
    AppEntry* app = GetAppEntry();
    return app ? app->GetRegistryKeyPath(placementKey, true) + u"Placement" : KelText();
}

// --- creation and layout -------------------------------------------------------------

BOOL StandardPropertyDialog::OnInitDialog()
{
    tabs.Attach(GetDlgItem(Handle(), kPropertyTabsId));
    current = -1;
    PropertyDialog::OnInitDialog();

    for (int32_t i = 0; i < PageCount(); ++i)
    {
        // Opened counts for this showing of the dialog.
        SetPageState(i, 0);
        InsertTab(i);
    }
    SetUpButtons();
    SetInitialSize();
    RestorePlacement();
    SelectPage(std::clamp(startPage, 0, std::max(0, PageCount() - 1)));
    // The system gives the focus to the first control of the page.
    return TRUE;
}

void StandardPropertyDialog::SetUpButtons()
{
    // The dictionary has these texts; without one the buttons still read well.
    auto ensureText = [this](int id, int32_t number, const char16_t* fallback)
    {
        if (ControlText(id).IsEmpty())
            SetControlText(id, DictTextOr(number, fallback));
    };
    ensureText(IDOK, kTextOk, u"OK");
    ensureText(IDCANCEL, kTextCancel, u"Cancel");
    ensureText(kPropertyApplyId, kTextApply, u"&Apply");
    ShowControl(kPropertyApplyId, showApply);
    SetControlText(kPropertyExtraId, extraCaption);
    ShowControl(kPropertyExtraId, showExtra);
}

void StandardPropertyDialog::SetInitialSize()
{
    // The largest page, in pixels of this dialog's font.
    SIZE units = {0, 0};
    for (int32_t i = 0; i < PageCount(); ++i)
    {
        DialogTemplate pageTemplate;
        if (!pageTemplate.Load(Page(i)->Template()))
            continue;
        units.cx = std::max(units.cx, pageTemplate.Size().cx);
        units.cy = std::max(units.cy, pageTemplate.Size().cy);
    }
    if (units.cx == 0 || units.cy == 0)
        units = kDefaultPage;
    RECT area = DialogUnitsToPixels(RECT{0, 0, units.cx, units.cy});
    // Wide enough for every tab in one row. A tab that starts beyond the
    // control's edge has no rectangle, so the control is first made wide
    // enough to hold them all (the layout gives it its real size afterwards).
    if (tabs.Count() > 0)
    {
        RECT now = {};
        GetWindowRect(tabs.Handle(), &now);
        SetWindowPos(tabs.Handle(), nullptr, 0, 0, 0x4000, now.bottom - now.top,
                     SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        area.right = std::max<LONG>(area.right, tabs.ItemRect(tabs.Count() - 1).right +
                                                    DialogUnitsToPixelsX(kGap));
    }
    // The tab control around that area, then margins and the button row.
    area = tabs.RectForDisplay(area);
    int32_t width = (area.right - area.left) + 2 * DialogUnitsToPixelsX(kMargin);
    // Wide enough for the buttons, the extra one set apart by a wider gap.
    int32_t buttons = 0;
    for (int id : {IDOK, IDCANCEL, kPropertyApplyId, kPropertyExtraId})
        if (IsControlVisible(id))
            ++buttons;
    const int32_t row =
        buttons * ButtonWidth() + DialogUnitsToPixelsX(2 * kMargin + (buttons + 2) * kGap);
    width = std::max(width, row);
    int32_t height = (area.bottom - area.top) + 2 * DialogUnitsToPixelsY(kMargin) +
                     DialogUnitsToPixelsY(kGap + kButtonHeight);
    RECT frame = {0, 0, width, height};
    AdjustWindowRectEx(&frame, DWORD(GetWindowLongPtrW(Handle(), GWL_STYLE)), FALSE,
                       DWORD(GetWindowLongPtrW(Handle(), GWL_EXSTYLE)));
    leastSize = {frame.right - frame.left, frame.bottom - frame.top};

    // Centred on the owner, else on the work area of its screen.
    HWND owner = GetWindow(Handle(), GW_OWNER);
    RECT around = {};
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromWindow(owner ? owner : Handle(), MONITOR_DEFAULTTOPRIMARY),
                    &monitor);
    if (owner && IsWindowVisible(owner) && !IsIconic(owner))
        GetWindowRect(owner, &around);
    else
        around = monitor.rcWork;
    int32_t x = (around.left + around.right - leastSize.cx) / 2;
    int32_t y = (around.top + around.bottom - leastSize.cy) / 2;
    x = std::max<int32_t>(monitor.rcWork.left,
                          std::min<int32_t>(x, monitor.rcWork.right - leastSize.cx));
    y = std::max<int32_t>(monitor.rcWork.top,
                          std::min<int32_t>(y, monitor.rcWork.bottom - leastSize.cy));
    SetWindowPos(Handle(), nullptr, x, y, leastSize.cx, leastSize.cy,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

void StandardPropertyDialog::OnSizeChanged(int32_t width, int32_t height)
{
    if (!tabs.Handle())
        return;
    const int32_t marginX = DialogUnitsToPixelsX(kMargin);
    const int32_t marginY = DialogUnitsToPixelsY(kMargin);
    const int32_t gapX = DialogUnitsToPixelsX(kGap);
    const int32_t buttonWidth = ButtonWidth();
    const int32_t buttonHeight = DialogUnitsToPixelsY(kButtonHeight);
    const int32_t buttonTop = height - marginY - buttonHeight;

    HDWP moves = BeginDeferWindowPos(6);
    auto place = [&moves](HWND window, int32_t x, int32_t y, int32_t cx, int32_t cy)
    {
        if (window && moves)
            moves = DeferWindowPos(moves, window, nullptr, x, y, std::max(0, cx), std::max(0, cy),
                                   SWP_NOZORDER | SWP_NOACTIVATE);
    };
    // OK, Cancel and Apply at the right, the extra button at the left.
    int32_t right = width - marginX;
    for (int id : {kPropertyApplyId, IDCANCEL, IDOK})
    {
        if (!IsControlVisible(id))
            continue;
        place(GetDlgItem(Handle(), id), right - buttonWidth, buttonTop, buttonWidth, buttonHeight);
        right -= buttonWidth + gapX;
    }
    place(GetDlgItem(Handle(), kPropertyExtraId), marginX, buttonTop, buttonWidth, buttonHeight);
    place(tabs.Handle(), marginX, marginY, width - 2 * marginX,
          buttonTop - DialogUnitsToPixelsY(kGap) - marginY);
    if (moves)
        EndDeferWindowPos(moves);

    if (PropertyPage* page = Page(current))
        PlacePage(page, true);
}

void StandardPropertyDialog::ChangeDpi(int32_t newDpi)
{
    const int32_t oldDpi = Dpi();
    if (!Handle() || newDpi <= 0 || newDpi == oldDpi)
        return;
    for (int32_t i = 0; i < PageCount(); ++i)
        if (Page(i)->Handle())
            Page(i)->ChangeDpi(newDpi);
    const SIZE oldUnits = BaseUnits();
    PropertyDialog::ChangeDpi(newDpi);
    const RECT least = ScaledByUnits(RECT{0, 0, leastSize.cx, leastSize.cy}, BaseUnits(), oldUnits);
    leastSize = {least.right, least.bottom};
    RECT client = {};
    GetClientRect(Handle(), &client);
    OnSizeChanged(client.right, client.bottom);
}

int32_t StandardPropertyDialog::ButtonWidth() const
{
    // The usual width, or wider where a caption needs it (German "Übernehmen").
    int32_t width = DialogUnitsToPixelsX(kButtonWidth);
    HDC dc = GetDC(Handle());
    if (!dc)
        return width;
    HGDIOBJ old = SelectObject(dc, HGDIOBJ(SendMessageW(Handle(), WM_GETFONT, 0, 0)));
    for (int id : {IDOK, IDCANCEL, kPropertyApplyId, kPropertyExtraId})
    {
        if (!IsControlVisible(id))
            continue;
        RECT text = {};
        DrawTextW(dc, AsWide(ControlText(id)), -1, &text, DT_CALCRECT | DT_SINGLELINE);
        width = std::max<int32_t>(width, text.right + DialogUnitsToPixelsX(2 * kGap));
    }
    SelectObject(dc, old);
    ReleaseDC(Handle(), dc);
    return width;
}

RECT StandardPropertyDialog::PageArea() const
{
    if (!tabs.Handle())
        return RECT{};
    RECT area = tabs.DisplayArea(tabs.ClientRect());
    MapWindowPoints(tabs.Handle(), Handle(), reinterpret_cast<POINT*>(&area), 2);
    return area;
}

void StandardPropertyDialog::PlacePage(PropertyPage* page, bool show)
{
    RECT area = PageArea();
    // Pages lie above the tab control, which clips them out of its painting.
    SetWindowPos(
        page->Handle(), HWND_TOP, area.left, area.top, std::max<LONG>(0, area.right - area.left),
        std::max<LONG>(0, area.bottom - area.top), SWP_NOACTIVATE | (show ? SWP_SHOWWINDOW : 0));
}

// --- pages ------------------------------------------------------------------------

bool StandardPropertyDialog::SelectPage(int32_t index)
{
    PropertyPage* page = Page(index);
    if (!page || !Handle())
        return false;
    if (!CreatePageWindow(page))
        return false;
    if (page->Dpi() != Dpi())
        page->ChangeDpi(Dpi());

    PropertyPage* previous = Page(current);
    HWND focus = GetFocus();
    const bool focusLeaves = previous && previous != page && previous->Handle() && focus &&
                             IsChild(previous->Handle(), focus);

    PlacePage(page, true);
    if (previous && previous != page)
        previous->SetVisible(false);
    current = index;
    if (PageState(index) == 0)
        SetPageState(index, 1);
    tabs.Select(index);
    if (focusLeaves)
        tabs.Focus();
    return true;
}

int32_t StandardPropertyDialog::ApplyCurrentPage()
{
    if (PropertyPage* page = Page(current))
        page->ApplyPageWith(current, kApplyCurrent, 0);
    return 0;
}

bool StandardPropertyDialog::BringPageToFront(PropertyPage* page)
{
    int32_t index = IndexOf(page);
    if (index < 0 || !Handle())
        return false;
    // During the dialog apply the first page that refuses stays in front.
    if (applying && frontTaken)
        return index == current;
    frontTaken = applying;
    return SelectPage(index);
}

void StandardPropertyDialog::InsertTab(int32_t index)
{
    tabs.Insert(index, Page(index)->Title());
}

void StandardPropertyDialog::OnPageAdded(int32_t index)
{
    // Pages added before the window exists get their tabs when it is made.
    if (tabs.Handle() && Handle())
    {
        InsertTab(index);
        if (current < 0)
            SelectPage(index);
    }
}

void StandardPropertyDialog::OnPageTitleChanged(PropertyPage* page)
{
    int32_t index = IndexOf(page);
    if (tabs.Handle() && index >= 0)
        tabs.SetItemText(index, page->Title());
}

// --- buttons -----------------------------------------------------------------------

void StandardPropertyDialog::SetExtraButton(const KelText& caption, int32_t show)
{
    extraCaption = caption;
    showExtra = show != 0;
    SetControlText(kPropertyExtraId, extraCaption);
    ShowControl(kPropertyExtraId, showExtra);
}

void StandardPropertyDialog::OnExtraButton()
{
    AppInterface* app = GetApplication();
    KelText notice = app ? app->GetTextByKind(1) : KelText();
    KelText version = app ? app->GetTextByKind(6) : KelText();
    KelText text = notice;
    if (!version.IsEmpty())
        text = notice.IsEmpty() ? version : KelText::Formatted(u"%s\n\n%s", notice, version);
    if (text.IsEmpty())
        text = Title();
    ShowAppMessageBox(Handle(), text, Title(), MB_OK | MB_ICONINFORMATION);
}

bool StandardPropertyDialog::OnCommand(int32_t id, int32_t code, HWND control)
{
    if (control && code != BN_CLICKED)
        return false;
    switch (id)
    {
    case IDOK:
        if (ApplyAllPages() == 0)
            Close(IDOK);
        return true;
    case IDCANCEL:
        Close(IDCANCEL);
        return true;
    case kPropertyApplyId:
        ApplyCurrentPage();
        return true;
    case kPropertyExtraId:
        OnExtraButton();
        return true;
    default:
        return false;
    }
}

bool StandardPropertyDialog::OnNotify(NMHDR& header, LRESULT& result)
{
    if (header.hwndFrom == tabs.Handle() && header.code == TCN_SELCHANGE)
    {
        SelectPage(tabs.Selection());
        result = 0;
        return true;
    }
    return PropertyDialog::OnNotify(header, result);
}

bool StandardPropertyDialog::PreTranslateMessage(MSG& message)
{
    if (message.message == WM_KEYDOWN && Exists() && PageCount() > 1 &&
        (message.hwnd == Handle() || IsChild(Handle(), message.hwnd)) &&
        GetKeyState(VK_CONTROL) < 0)
    {
        const bool tab = message.wParam == VK_TAB;
        if (tab || message.wParam == VK_NEXT || message.wParam == VK_PRIOR)
        {
            const bool back = message.wParam == VK_PRIOR || (tab && GetKeyState(VK_SHIFT) < 0);
            const int32_t count = PageCount();
            const int32_t from = current < 0 ? 0 : current;
            SelectPage((from + (back ? count - 1 : 1)) % count);
            return true;
        }
    }
    return PropertyDialog::PreTranslateMessage(message);
}

INT_PTR StandardPropertyDialog::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_GETMINMAXINFO:
        if (leastSize.cx > 0)
        {
            auto* limits = reinterpret_cast<MINMAXINFO*>(lParam);
            limits->ptMinTrackSize.x = leastSize.cx;
            limits->ptMinTrackSize.y = leastSize.cy;
        }
        return TRUE;
    case WM_DPICHANGED:
    {
        // Laid out for the new resolution first, so that the least size is
        // that resolution's; the rectangle Windows suggests is never refused
        // as too small (the sizes scale with rounding).
        ChangeDpi(HIWORD(wParam));
        const RECT& suggested = *reinterpret_cast<const RECT*>(lParam);
        leastSize = {std::min<LONG>(leastSize.cx, suggested.right - suggested.left),
                     std::min<LONG>(leastSize.cy, suggested.bottom - suggested.top)};
        return PropertyDialog::DialogProc(message, wParam, lParam);
    }
    case WM_DESTROY:
        SavePlacement();
        return PropertyDialog::DialogProc(message, wParam, lParam);
    default:
        return PropertyDialog::DialogProc(message, wParam, lParam);
    }
}

void StandardPropertyDialog::OnHandleDestroyed()
{
    tabs.Attach(nullptr);
    PropertyDialog::OnHandleDestroyed();
}

int StandardPropertyDialog::ShowCommand() const
{
    return restoreMaximized ? SW_SHOWMAXIMIZED : SW_SHOW;
}

// --- placement ---------------------------------------------------------------------

bool StandardPropertyDialog::RestorePlacement()
{
    restoreMaximized = false;
    KelText path = PlacementKeyPath();
    if (path.IsEmpty())
        return false;
    RegistryKey key(path);
    int32_t left = 0, top = 0, width = 0, height = 0, maximized = 0;
    if (!key.IsOpen() || !ReadCoordinate(key, u"Left", left) || !ReadCoordinate(key, u"Top", top) ||
        !ReadCoordinate(key, u"Width", width) || !ReadCoordinate(key, u"Height", height))
        return false;
    ReadCoordinate(key, u"Maximized", maximized);

    // Never smaller than the pages need, never larger than the screen it is
    // on, and moved onto that screen when it lies (partly) off it.
    width = std::max<int32_t>(width, leastSize.cx);
    height = std::max<int32_t>(height, leastSize.cy);
    RECT wanted = {left, top, left + width, top + height};
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    if (!GetMonitorInfoW(MonitorFromRect(&wanted, MONITOR_DEFAULTTONEAREST), &monitor))
        return false;
    const RECT& work = monitor.rcWork;
    width = std::max<int32_t>(leastSize.cx, std::min<int32_t>(width, work.right - work.left));
    height = std::max<int32_t>(leastSize.cy, std::min<int32_t>(height, work.bottom - work.top));
    left = std::max<int32_t>(work.left, std::min<int32_t>(left, work.right - width));
    top = std::max<int32_t>(work.top, std::min<int32_t>(top, work.bottom - height));
    SetWindowPos(Handle(), nullptr, left, top, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
    restoreMaximized = maximized != 0;
    return true;
}

void StandardPropertyDialog::SavePlacement()
{
    KelText path = PlacementKeyPath();
    if (path.IsEmpty() || !Handle())
        return;
    RECT rect = {};
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof(placement);
    const bool zoomed = IsZoomed(Handle()) != 0;
    if ((zoomed || IsIconic(Handle())) && GetWindowPlacement(Handle(), &placement))
    {
        // The normal position is kept relative to the main screen's work area.
        rect = placement.rcNormalPosition;
        MONITORINFO monitor = {};
        monitor.cbSize = sizeof(monitor);
        POINT origin = {0, 0};
        if (GetMonitorInfoW(MonitorFromPoint(origin, MONITOR_DEFAULTTOPRIMARY), &monitor))
            OffsetRect(&rect, monitor.rcWork.left, monitor.rcWork.top);
    }
    else
        GetWindowRect(Handle(), &rect);

    RegistryKey key;
    if (!key.Create(path))
        return;
    WriteIfChanged(key, u"Left", rect.left);
    WriteIfChanged(key, u"Top", rect.top);
    WriteIfChanged(key, u"Width", rect.right - rect.left);
    WriteIfChanged(key, u"Height", rect.bottom - rect.top);
    WriteIfChanged(key, u"Maximized", zoomed ? 1 : 0);
}
