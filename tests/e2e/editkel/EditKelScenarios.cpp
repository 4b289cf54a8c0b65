// EditKel.exe as a user meets it: started with a product on its command line,
// a configuration picked in the picker, the dialog confirmed or cancelled.
// Every scenario starts from an empty "Brindlecove 2023" registry branch and
// shared documents folder of the test prefix (see EditKelSession.h).
#include "tests/e2e/support/EditKelSession.h"

using namespace EditKelSession;
using namespace std::chrono_literals;

using EditKel = Scenario;
using SentClick = Scenario;

TEST_F(EditKel, WithoutProductItEndsQuietly)
{
    for (const wchar_t* arguments : {L"", L"-app=Nonesuch", L"/l=Deutsch"})
    {
        TargetProcess editor = StartEditKel(arguments);
        editor.ExpectNoWindow(3s);
        EXPECT_EQ(editor.WaitForExit(), 0u) << Utf8(arguments);
    }
}

TEST_F(EditKel, PlotwiseDemoOpensTheTitledDialogAndOkSaves)
{
    RegisterConfiguration(L"Plotwise", L"Demo", SharedDemoCopy());
    // The product typed in another case is spelled canonically in the title.
    TargetProcess editor = StartEditKel(L"-app=pLOTWISE");
    HWND picker = editor.WaitForWindow(L"Select Configuration - Plotwise");
    const std::vector<std::vector<std::wstring>> rows = ListRows(Control(picker, PickerList));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0][0], L"Demo");
    EXPECT_NE(rows[0][1].find(L"\\Documents\\Orvantix\\Brindlecove 2023\\Demo"), std::wstring::npos)
        << Utf8(rows[0][1]);

    HWND dialog = PickConfiguration(editor, L"Plotwise", L"Demo");
    EXPECT_EQ(Text(dialog), L"Plotwise" + TitleTail);
    EXPECT_TRUE(GetWindowLongPtrW(dialog, GWL_STYLE) & WS_MINIMIZEBOX);

    // Switch off one message and confirm: every switch is written, as shown.
    HWND tree = ShowSwitchTree(dialog);
    const TreeItem item = FindTreeItem(tree, L"Specification invalid");
    EXPECT_TRUE(item.checked);
    SetTreeItemChecked(tree, item.handle, false);
    Screenshot(L"dialog", dialog);
    Press(Control(dialog, IDOK));
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(PromptValue(L"BadSpec"), 0);
    EXPECT_EQ(PromptValue(L"BadCostTables"), 1);
    EXPECT_EQ(PromptValue(L"ConnectorLocks"), 1);
}

// A double click picks the configuration; a switch turned off and then
// cancelled writes nothing.
TEST_F(EditKel, LedgerlineListsOnlyQuorlinConfigurationsAndCancelWritesNothing)
{
    RegisterConfiguration(L"Ledgerline", L"Demo", DemoCopy(L"Demo"));
    // A folder with KEL.INI alone does not serve Ledgerline.
    const fs::path kelOnly = DemoCopy(L"KelOnly");
    fs::remove(kelOnly / L"QUORLIN.INI");
    RegisterConfiguration(L"Ledgerline", L"KelOnly", kelOnly);

    TargetProcess editor = StartEditKel(L"-app=ledgerline");
    HWND picker = editor.WaitForWindow(L"Select Configuration - Ledgerline");
    HWND list = Control(picker, PickerList);
    ASSERT_EQ(ListRowCount(list), 1);
    EXPECT_EQ(ListCell(list, 0, 0), L"Demo");
    DoubleClickListRow(list, 0);
    HWND dialog = editor.WaitForWindow(L"Ledgerline" + TitleTail);
    Screenshot(L"dialog", dialog);
    HWND tree = ShowSwitchTree(dialog);
    SetTreeItemChecked(tree, FindTreeItem(tree, L"Cost tables missing or invalid").handle, false);
    Press(Control(dialog, IDCANCEL));
    EXPECT_EQ(editor.WaitForExit(), 0u);
    EXPECT_EQ(PromptValue(L"BadCostTables"), -1);
}

TEST_F(EditKel, CancelledPickerWithoutStartFolderEndsWithTheErrorBox)
{
    TargetProcess editor = StartEditKel(L"-app=Tallywise");
    HWND picker = editor.WaitForWindow(L"Select Configuration - Tallywise");
    EXPECT_EQ(ListRowCount(Control(picker, PickerList)), 0);
    Press(Control(picker, IDCANCEL));

    HWND box = editor.WaitForMessageBox(L"Tallywise");
    EXPECT_EQ(MessageBoxText(box), L"No configuration was found or selected - The configuration "
                                   L"editor cannot continue without a settings file.");
    Screenshot(L"error", box);
    CloseMessageBox(box, IDOK);
    EXPECT_EQ(editor.WaitForExit(), 0u);
}

// Buttons pressed the way a screen reader or a UI-automation tool presses
// them: BM_CLICK sent (not posted) from this process, with no input after it.
// The window that follows, or the end of the program, must come at once: the
// editor's modal loops may not wait for some other message to notice that
// their window has closed. With a start folder, cancelling the picker goes on
// to the dialog.
TEST_F(SentClick, OkAndCancelOfThePickerAndOfTheDialog)
{
    // Far below the time a loop would wait for a stray message, far above what
    // the next window needs.
    constexpr Duration AtOnce = 3s;
    RegisterConfiguration(L"Plotwise", L"Demo", DemoCopy(L"Demo"));
    WriteString(L"Cutwise", L"StartIn", DemoCopy(L"StartIn").wstring());
    for (const auto& [product, button] : {std::pair{L"Plotwise", IDOK}, {L"Cutwise", IDCANCEL}})
    {
        SCOPED_TRACE(Utf8(product));
        TargetProcess editor = StartEditKel(L"-app=" + std::wstring(product));
        HWND picker = editor.WaitForWindow(L"Select Configuration - " + std::wstring(product));
        HWND list = Control(picker, PickerList);
        if (button == IDOK)
            SelectListRow(list, FindListRow(list, L"Demo"));
        // Send returns once the button's owner has handled the click.
        Send(Control(picker, button), BM_CLICK);
        HWND dialog = editor.WaitForWindow(product + TitleTail, AtOnce);
        Send(Control(dialog, button), BM_CLICK);
        EXPECT_EQ(editor.WaitForExit(AtOnce), 0u);
    }
}
