#include <memory>
#include <tuple>

#include "framework/BitmapButton.h"
#include "framework/FrameworkResources.h"
#include "framework/ListView.h"
#include "framework/RegistryKey.h"
#include "framework/SharedImageList.h"
#include "tests/win/app/AppTestHelpers.h"
#include "tests/win/toolkit/ToolkitTestSupport.h"
#include "text/TextHolder.h"

namespace
{
// A dialog of three counting pages; page 0 is shown first.
class Dialog : public ToolkitTest
{
protected:
    Dialog()
    {
        dialog =
            std::make_unique<StandardPropertyDialog>(nullptr, u"Toolkit test", 0, 1, 0, KelText());
        for (int32_t id : {kFirstPage, kSecondPage, kThirdPage})
            pages.push_back(dialog->MakePage<CountingPage>(id, u"Page"));
    }
    HWND Window() const { return dialog->Handle(); }

    std::vector<CountingPage*> pages;
};

// A page with a list and a bitmap button that follow the page's size.
class ListPage : public PropertyPage
{
public:
    explicit ListPage(::Window* owner) : PropertyPage(owner, kFirstPage, u"List") {}
    int32_t InitPage() override
    {
        list = &AddControl<ListView>(kListId);
        list->AddColumn(u"Name", 60);
        list->AddColumn(u"Value", 60);
        for (int32_t i = 0; i < 3; ++i)
            list->SetItemText(list->AddRow(u"row", 100 + i), 1, u"value");
        list->OnSelectionChanged([this] { ++selectionChanges; });
        button = &AddControl<BitmapButton>(kButtonId, 19, [this] { ++clicks; });
        SetLayout(*list, kLayoutGrow);
        SetLayout(*button, kLayoutKeepRight);
        return 0;
    }
    ListView* list = nullptr;
    BitmapButton* button = nullptr;
    int selectionChanges = 0;
    int clicks = 0;
};

using PageLayout = ToolkitTest;
using Placement = ToolkitTest;

RECT Frame(HWND window)
{
    RECT frame = {};
    GetWindowRect(window, &frame);
    return frame;
}
} // namespace

TEST_F(Dialog, RefusalKeepsTheDialogOpenUntilEveryOpenedPageAccepts)
{
    ASSERT_EQ(dialog->Show(false), 1);
    ChooseTab(Window(), 1);
    CountingPage& refusing = *pages[1];
    Tick(refusing.Item(kCheckId), true);
    SetTextOf(refusing.Item(kEditId), u"bad");
    ChooseTab(Window(), 0);
    SetTextOf(pages[0]->Item(kEditId), u"fine");

    Click(Window(), IDOK);
    // Every opened page was asked; the one never opened was not.
    EXPECT_EQ(pages[0]->applies, 1);
    EXPECT_EQ(refusing.applies, 1);
    EXPECT_EQ(pages[2]->applies, 0);
    EXPECT_EQ(dialog->PageState(2), 0);
    // Still open, the refusing page in front with the focus on its edit.
    ASSERT_TRUE(dialog->Exists());
    EXPECT_EQ(dialog->CurrentPage(), 1);
    EXPECT_EQ(GetFocus(), refusing.Item(kEditId));
    ASSERT_EQ(user.alerts.size(), 1u);
    EXPECT_EQ(user.alerts[0].owner, refusing.Handle());
    EXPECT_EQ(user.alerts[0].beepType, uint32_t(MB_ICONHAND));
    // Nothing of the refusing page was written, the accepting page was.
    EXPECT_EQ(refusing.flag, 0);
    EXPECT_TRUE(refusing.text.SameAs(u"start"));
    EXPECT_TRUE(pages[0]->text.SameAs(u"fine"));
    EXPECT_TRUE(pages[0]->IsApplied());
    EXPECT_FALSE(dialog->IsApplied());

    SetTextOf(refusing.Item(kEditId), u"good");
    Click(Window(), IDOK);
    EXPECT_FALSE(dialog->Exists());
    EXPECT_EQ(dialog->Result(), IDOK);
    EXPECT_TRUE(dialog->IsApplied());
    EXPECT_EQ(refusing.flag, 1);
    EXPECT_TRUE(refusing.text.SameAs(u"good"));
    EXPECT_EQ(pages[2]->applies, 0);
    EXPECT_EQ(app.ModalCount(), 0);
}

TEST_F(Dialog, ApplyTakesTheCurrentPageAndCancelWritesNothing)
{
    ASSERT_EQ(dialog->Show(false), 1);
    Tick(pages[0]->Item(kCheckId), true);
    ChooseTab(Window(), 1);
    SetTextOf(pages[1]->Item(kEditId), u"applied");

    Click(Window(), kPropertyApplyId);
    EXPECT_EQ(pages[0]->applies, 0);
    EXPECT_EQ(pages[0]->flag, 0);
    EXPECT_EQ(pages[1]->applies, 1);
    EXPECT_EQ(pages[1]->lastReason, kApplyCurrent);
    EXPECT_TRUE(pages[1]->text.SameAs(u"applied"));
    EXPECT_TRUE(dialog->Exists());

    // A refusing current page: Apply still answers 0 and the dialog stays.
    SetTextOf(pages[1]->Item(kEditId), u"bad");
    EXPECT_EQ(dialog->ApplyCurrentPage(), 0);
    EXPECT_EQ(user.alerts.size(), 1u);

    SetTextOf(pages[1]->Item(kEditId), u"cancelled");
    Click(Window(), IDCANCEL);
    EXPECT_FALSE(dialog->Exists());
    EXPECT_EQ(dialog->Result(), IDCANCEL);
    EXPECT_EQ(pages[0]->flag, 0);
    EXPECT_TRUE(pages[1]->text.SameAs(u"applied"));
    EXPECT_FALSE(dialog->IsApplied());
}

TEST_F(Dialog, TemplatesTakeDictionaryTextsAndMissingPagesAreLeftOut)
{
    EXPECT_EQ(
        dialog->AddPage(std::make_unique<CountingPage>(dialog.get(), kMissingTemplate, u"Gone")),
        -1);
    EXPECT_EQ(dialog->PageCount(), 3);
    dialog->SetExtraButton(u"&Help", 1);
    ASSERT_EQ(dialog->Show(false), 1);

    // "^47" is dictionary text 47 (its built-in text without a dictionary);
    // plain texts stay, also one that holds a "^" elsewhere.
    ASSERT_FALSE(TextHolder::Instance().IsLoaded());
    EXPECT_TRUE(TextOf(pages[0]->Item(kCheckId)).SameAs(DictText(47)));
    EXPECT_TRUE(TextOf(pages[0]->Item(kPlainId)).SameAs(u"Plain ^ text"));
    EXPECT_TRUE(TextOf(pages[0]->Item(kListId)).SameAs(u"List1"));
    EXPECT_TRUE(TextOf(GetDlgItem(Window(), IDCANCEL)).SameAs(DictText(48)));

    // A page written as a window of its own becomes a child of the dialog.
    ChooseTab(Window(), 2);
    LONG_PTR style = GetWindowLongPtrW(pages[2]->Handle(), GWL_STYLE);
    EXPECT_TRUE(style & WS_CHILD);
    EXPECT_FALSE(style & (WS_POPUP | WS_CAPTION));
    EXPECT_EQ(GetParent(pages[2]->Handle()), Window());

    // The extra button shows the product notice, captioned with the title.
    HWND extra = GetDlgItem(Window(), kPropertyExtraId);
    EXPECT_TRUE(IsWindowVisible(extra));
    EXPECT_TRUE(TextOf(extra).SameAs(u"&Help"));
    Click(Window(), kPropertyExtraId);
    ASSERT_EQ(user.boxes.size(), 1u);
    EXPECT_TRUE(user.boxes[0].caption.SameAs(u"Toolkit test"));
    EXPECT_TRUE(user.boxes[0].text.StartsWith(app.GetTextByKind(6).c_str()));
}

TEST_F(PageLayout, ListGrowsAndButtonsKeepTheirEdgeAndCallbacksArrive)
{
    ListPage* page = &Open<ListPage>();
    HWND list = page->list->Handle();
    HWND button = page->button->Handle();
    RECT pageBefore = page->ClientRect();
    RECT listBefore = RectIn(list, page->Handle());
    RECT buttonBefore = RectIn(button, page->Handle());

    Grow(dialog->Handle(), 120, 80);
    RECT pageAfter = page->ClientRect();
    RECT listAfter = RectIn(list, page->Handle());
    RECT buttonAfter = RectIn(button, page->Handle());
    const LONG grownX = pageAfter.right - pageBefore.right;
    const LONG grownY = pageAfter.bottom - pageBefore.bottom;
    EXPECT_EQ(grownX, 120);
    EXPECT_EQ(grownY, 80);
    EXPECT_EQ(listAfter.right - listAfter.left, listBefore.right - listBefore.left + grownX);
    EXPECT_EQ(listAfter.bottom - listAfter.top, listBefore.bottom - listBefore.top + grownY);
    EXPECT_EQ(pageAfter.right - buttonAfter.right, pageBefore.right - buttonBefore.right);
    EXPECT_EQ(buttonAfter.top, buttonBefore.top);
    EXPECT_EQ(buttonAfter.right - buttonAfter.left, buttonBefore.right - buttonBefore.left);

    // Selection changes and clicks reach the page's handlers.
    LVITEMW state = {};
    state.stateMask = LVIS_SELECTED;
    state.state = LVIS_SELECTED;
    SendMessageW(list, LVM_SETITEMSTATE, 1, reinterpret_cast<LPARAM>(&state));
    EXPECT_GE(page->selectionChanges, 1);
    EXPECT_EQ(page->list->SelectedRows(), std::vector<int32_t>{1});
    EXPECT_EQ(page->list->ItemData(1), 101);
    EXPECT_TRUE(page->list->ItemText(2, 1).SameAs(u"value"));
    SendMessageW(button, BM_CLICK, 0, 0);
    EXPECT_EQ(page->clicks, 1);
    EXPECT_TRUE(page->ToolTips().ToolText(*page->button).SameAs(u"Move up"));
    // The shared images, made once for the whole process.
    EXPECT_EQ(SharedImageList(), SharedImageList());
    EXPECT_GE(ImageList_GetImageCount(SharedImageList()), 22);
}

TEST_F(Placement, IsRememberedAndKeptOnTheScreen)
{
    const KelText key = UniqueName(u"Placement");
    const KelText stored = app.GetRegistryKeyPath(key, true) + u"Placement";
    RegistryCleanup cleanup({app.GetRegistryKeyPath(key, true)});
    auto open = [&key]
    {
        auto dialog = std::make_unique<StandardPropertyDialog>(nullptr, u"Placement", 0, 1, 0, key);
        dialog->MakePage<CountingPage>(kSecondPage, u"Page");
        EXPECT_EQ(dialog->Show(false), 1);
        return dialog;
    };
    dialog = open();
    const RECT start = Frame(dialog->Handle());
    SetWindowPos(dialog->Handle(), nullptr, 40, 30, start.right - start.left + 50,
                 start.bottom - start.top + 20, SWP_NOZORDER);
    const RECT placed = Frame(dialog->Handle());
    Click(dialog->Handle(), IDCANCEL);
    dialog.reset();
    EXPECT_EQ(int32_t(GetDword(stored, u"Left")), placed.left);
    EXPECT_EQ(int32_t(GetDword(stored, u"Width")), placed.right - placed.left);

    dialog = open();
    const RECT restored = Frame(dialog->Handle());
    EXPECT_EQ(std::tie(restored.left, restored.top, restored.right, restored.bottom),
              std::tie(placed.left, placed.top, placed.right, placed.bottom));
    dialog->Destroy();
    dialog.reset();

    // A place far off every screen comes back onto one.
    PutDword(stored, u"Left", uint32_t(-5000));
    PutDword(stored, u"Top", 90000);
    dialog = open();
    const RECT onScreen = Frame(dialog->Handle());
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof(monitor);
    GetMonitorInfoW(MonitorFromWindow(dialog->Handle(), MONITOR_DEFAULTTONEAREST), &monitor);
    EXPECT_GE(onScreen.left, monitor.rcWork.left);
    EXPECT_GE(onScreen.top, monitor.rcWork.top);
    EXPECT_LE(onScreen.bottom, monitor.rcWork.bottom);
}

TEST_F(Dialog, RunsModallyWithTheKeyboardOfTheDialogManager)
{
    // Ctrl+Tab goes to the next page, then Esc cancels: both reach the
    // dialog only through the message loop's pre-translation.
    int32_t pageAfterCtrlTab = -1;
    AfterStart(
        [&]
        {
            BYTE keys[256] = {};
            GetKeyboardState(keys);
            keys[VK_CONTROL] = 0x80;
            SetKeyboardState(keys);
            HWND box = pages[0]->Item(kCheckId);
            PostMessageW(box, WM_KEYDOWN, VK_TAB, 0);
            AfterStart(
                [&, keys]() mutable
                {
                    pageAfterCtrlTab = dialog->CurrentPage();
                    keys[VK_CONTROL] = 0;
                    SetKeyboardState(keys);
                    PostMessageW(pages[1]->Item(kCheckId), WM_KEYDOWN, VK_ESCAPE, 0);
                });
        });
    EXPECT_EQ(dialog->Show(true), IDCANCEL);
    EXPECT_EQ(pageAfterCtrlTab, 1);
    EXPECT_FALSE(dialog->Exists());
    EXPECT_EQ(app.ModalCount(), 0);
    EXPECT_EQ(app.MainFrame(), nullptr);
    EXPECT_EQ(pages[1]->applies, 0);
}

TEST_F(Dialog, PageRunsOnItsOwnAsAForm)
{
    // A page outside any dialog is a small modal dialog: OK applies it and
    // closes only when it accepts.
    CountingPage form(nullptr, kFormTemplate, KelText());
    AfterStart(
        [&]
        {
            SetTextOf(form.Item(kEditId), u"bad");
            Click(form.Handle(), IDOK);
            AfterStart(
                [&]
                {
                    EXPECT_TRUE(form.Exists());
                    SetTextOf(form.Item(kEditId), u"kept");
                    Tick(form.Item(kCheckId), true);
                    Click(form.Handle(), IDOK);
                });
        });
    EXPECT_EQ(form.Show(true), IDOK);
    EXPECT_EQ(form.Result(), IDOK);
    EXPECT_EQ(form.lastReason, kApplyStandalone);
    EXPECT_EQ(user.alerts.size(), 1u);
    EXPECT_TRUE(form.text.SameAs(u"kept"));
    EXPECT_EQ(form.flag, 1);
    EXPECT_EQ(app.ModalCount(), 0);
}

TEST_F(PageLayout, TheDialogIsWideEnoughForAllItsTabs)
{
    // Long tab captions, as in German: the last tab starts beyond the width
    // that the pages alone would give the dialog.
    for (const char16_t* second : {u"Kurz", u"Ein deutlich längerer Name"})
    {
        StandardPropertyDialog dialog(nullptr, u"Tabs", 0, 1, 0, KelText());
        for (const char16_t* title :
             {u"Programmpfade", second, u"Allgemeine Optionen", u"Meldungen"})
            dialog.MakePage<CountingPage>(kSecondPage, title);
        dialog.Show(false);
        HWND tabs = GetDlgItem(dialog.Handle(), kPropertyTabsId);
        RECT last = {}, client = {};
        ASSERT_TRUE(SendMessageW(tabs, TCM_GETITEMRECT, 3, reinterpret_cast<LPARAM>(&last)));
        GetClientRect(tabs, &client);
        EXPECT_LE(last.right, client.right) << KelText(second).ToUtf8();
    }
}
