// Buttons pressed the way a screen reader or a UI-automation tool presses
// them: BM_CLICK sent (not posted) from this process, with no input after it.
// The window that follows, or the end of the program, must come at once: the
// editor's modal loops may not wait for some other message to notice that
// their window has closed.
#include "tests/e2e/support/EditKelSession.h"

using namespace EditKelSession;
using namespace std::chrono_literals;

namespace
{
// Far below the time the loop would wait for a stray message, far above what
// the next window needs.
constexpr Duration AtOnce = 3s;

// Returns once the button's owner has handled the click.
void SendClick(HWND button)
{
    Send(button, BM_CLICK);
}

class SentClick : public Scenario
{
};
} // namespace

TEST_F(SentClick, OkOfThePickerAndOfTheDialog)
{
    RegisterConfiguration(L"Plotwise", L"Demo", DemoCopy(L"Demo"));
    TargetProcess editor = StartEditKel(L"-app=Plotwise");
    HWND picker = editor.WaitForWindow(L"Select Configuration - Plotwise");
    HWND list = Control(picker, PickerList);
    SelectListRow(list, FindListRow(list, L"Demo"));

    SendClick(Control(picker, IDOK));
    HWND dialog = editor.WaitForWindow(L"Plotwise" + TitleTail, AtOnce);
    SendClick(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(AtOnce), 0u);
}

TEST_F(SentClick, CancelOfThePickerAndOfTheDialog)
{
    // With a start folder, cancelling the picker goes on to the dialog.
    WriteString(L"Cutwise", L"StartIn", DemoCopy(L"Demo").wstring());
    TargetProcess editor = StartEditKel(L"-app=Cutwise");
    HWND picker = editor.WaitForWindow(L"Select Configuration - Cutwise");

    SendClick(Control(picker, IDCANCEL));
    HWND dialog = editor.WaitForWindow(L"Cutwise" + TitleTail, AtOnce);
    SendClick(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(AtOnce), 0u);
}
