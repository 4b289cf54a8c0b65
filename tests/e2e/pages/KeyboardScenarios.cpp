// The keyboard as a user without a mouse works EditKel.exe: on one page of
// every product, Alt+the access key of a label puts the focus on the control
// the label names.
#include "app/pages/PageIds.h"
#include "tests/e2e/support/EditKelSession.h"

using namespace EditKelSession;

using Keyboard = Scenario;

namespace
{
HWND FocusOf(HWND window)
{
    GUITHREADINFO gui{};
    gui.cbSize = sizeof(gui);
    return GetGUIThreadInfo(GetWindowThreadProcessId(window, nullptr), &gui) ? gui.hwndFocus
                                                                             : nullptr;
}

struct LabelKey
{
    const wchar_t* product;
    const wchar_t* tab;
    UINT key;    // the English label's access key
    int control; // the control the label names
};
} // namespace

TEST_F(Keyboard, AltAndTheKeyOfALabelFocusesItsControl)
{
    const LabelKey cases[] = {
        {L"Plotwise", L"Plotwise", 'D', kCadDrawingDatabase}, // "Use &drawing database:"
        {L"Shopwise", L"Shopwise", 'U', kTyxSupport},         // "S&upport information:"
        {L"Tallywise", L"Tallywise", 'U', kTyxSupport},
        {L"Cutwise", L"Cutwise", 'U', kTyxSupport},
        {L"CutwiseComponents", L"CutwiseComponents", 'U', kTyxSupport},
        {L"Fieldpost", L"Fieldpost", 'U', kTyxSupport},
        {L"Ledgerline", L"Common Options", 'L', kCommonLanguage}, // "&Language:"
    };
    for (const LabelKey& label : cases)
    {
        SCOPED_TRACE(Utf8(label.product));
        TargetProcess editor = OpenDemo(label.product);
        HWND page = ShowPage(dialog, label.tab, label.control);
        HWND target = Control(page, label.control);
        auto focused = [&]
        {
            HWND focus = FocusOf(dialog);
            return focus == target || (focus && IsChild(target, focus));
        };
        EXPECT_FALSE(focused());
        PressKey(dialog, label.key, Alt, focused);
        EXPECT_TRUE(focused()) << "the focus is on " << Utf8(Describe(FocusOf(dialog)));
        Screenshot((L"focus-" + std::wstring(label.product)).c_str(), dialog, L"keyboard");
        Press(Control(dialog, IDCANCEL));
        EXPECT_EQ(editor.WaitForExit(), 0u);
    }
}
