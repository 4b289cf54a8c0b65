// EditKel.exe on other displays: moved onto a monitor of 144 dpi (150 %),
// where Windows sends the dialog WM_DPICHANGED with the rectangle it
// suggests, and under a high-contrast colour scheme.
#include <array>

#include "app/pages/PageIds.h"
#include "tests/e2e/support/EditKelSession.h"
#include "tools/uidriver/RemoteMemory.h"

using namespace EditKelSession;

using Display = Scenario;

namespace
{
int Height(HWND window)
{
    RECT rect = {};
    GetWindowRect(window, &rect);
    return rect.bottom - rect.top;
}

// A high-contrast scheme (white on black, as Windows' "High Contrast Black")
// for as long as it lives: classic drawing (no visual style, as Windows turns
// it off for such a scheme; programs started meanwhile see it) and the
// scheme's colours. The style and colours before it come back afterwards.
class HighContrastColours
{
public:
    HighContrastColours()
    {
        DWORD size = sizeof(themeActive);
        RegGetValueW(HKEY_CURRENT_USER, kThemeKey, L"ThemeActive", RRF_RT_REG_SZ, nullptr,
                     themeActive, &size);
        RegSetKeyValueW(HKEY_CURRENT_USER, kThemeKey, L"ThemeActive", REG_SZ, L"0", 2 * 2);
        for (size_t i = 0; i < kElements.size(); ++i)
            saved[i] = GetSysColor(kElements[i]);
        const std::array<COLORREF, 12> scheme = {
            RGB(0, 0, 0),       RGB(255, 255, 255), RGB(0, 0, 0),     RGB(255, 255, 255),
            RGB(26, 235, 255),  RGB(0, 0, 0),       RGB(63, 242, 63), RGB(255, 255, 255),
            RGB(255, 255, 255), RGB(0, 0, 0),       RGB(255, 255, 0), RGB(0, 0, 0)};
        SetSysColors(int(kElements.size()), kElements.data(), scheme.data());
    }
    HighContrastColours(const HighContrastColours&) = delete;
    HighContrastColours& operator=(const HighContrastColours&) = delete;
    ~HighContrastColours()
    {
        SetSysColors(int(kElements.size()), kElements.data(), saved.data());
        RegSetKeyValueW(HKEY_CURRENT_USER, kThemeKey, L"ThemeActive", REG_SZ, themeActive,
                        DWORD((wcslen(themeActive) + 1) * 2));
    }

private:
    static constexpr const wchar_t* kThemeKey =
        L"Software\\Microsoft\\Windows\\CurrentVersion\\ThemeManager";
    wchar_t themeActive[8] = L"1";
    static constexpr std::array<int, 12> kElements = {
        COLOR_WINDOW,    COLOR_WINDOWTEXT,    COLOR_BTNFACE,  COLOR_BTNTEXT,
        COLOR_HIGHLIGHT, COLOR_HIGHLIGHTTEXT, COLOR_GRAYTEXT, COLOR_3DLIGHT,
        COLOR_3DHILIGHT, COLOR_3DSHADOW,      COLOR_HOTLIGHT, COLOR_3DDKSHADOW};
    std::array<COLORREF, 12> saved = {};
};
} // namespace

TEST_F(Display, GermanPageMovedToAMonitorOf144DpiTakesTheSuggestedSize)
{
    TargetProcess editor = OpenDemo(L"Shopwise", L"/l=Deutsch");
    HWND page = ShowPage(dialog, L"Allgemeine Optionen", kCommonLanguage);
    HWND box = Control(page, kCommonRegionalCsv);
    const int boxBefore = Height(box);

    RECT now = {};
    GetWindowRect(dialog, &now);
    const RECT suggested = {now.left, now.top, now.left + (now.right - now.left) * 3 / 2,
                            now.top + (now.bottom - now.top) * 3 / 2};
    UiDriver::RemoteMemory rect(dialog, sizeof(RECT));
    rect.Put(suggested);
    Send(dialog, WM_DPICHANGED, MAKEWPARAM(144, 144), rect.Param());

    RECT after = {};
    GetWindowRect(dialog, &after);
    EXPECT_TRUE(EqualRect(&after, &suggested))
        << after.left << "," << after.top << "-" << after.right << "," << after.bottom << " for "
        << suggested.left << "," << suggested.top << "-" << suggested.right << ","
        << suggested.bottom;
    EXPECT_NEAR(double(Height(box)) / boxBefore, 1.5, 0.15);
    // The picture shows the page once it has painted at its new size.
    RedrawWindow(dialog, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    Send(dialog, WM_NULL);
    Sleep(300);
    Screenshot(L"page", dialog, L"display");
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}

TEST_F(Display, PagesPaintWithTheHighContrastSchemesColours)
{
    HighContrastColours scheme;
    TargetProcess editor = OpenDemo(L"Cutwise");
    HWND page = ShowPage(dialog, L"Cutwise", kTyxSupport);
    // A point of the page's own background, right of the last check box's
    // text. Other tests share the display: the dialog stays above their
    // windows (topmost) and paints before the point is read.
    RECT free = {};
    GetWindowRect(Control(page, kTyxHideWelcome), &free);
    SetWindowPos(dialog, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    RedrawWindow(dialog, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    Send(dialog, WM_NULL);
    Sleep(300);
    HDC screen = GetDC(nullptr);
    const COLORREF background = GetPixel(screen, free.right - 2, free.bottom + 6);
    ReleaseDC(nullptr, screen);
    SetWindowPos(dialog, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    EXPECT_EQ(background, GetSysColor(COLOR_BTNFACE));
    Screenshot(L"page", dialog, L"display");
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
}
