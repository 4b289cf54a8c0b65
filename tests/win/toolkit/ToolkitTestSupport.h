#pragma once
// Helpers of the toolkit tests: an application object with a recording user,
// a page with bound controls that counts its applies, and the ways a user
// drives a dialog (clicks, texts, tabs), all through window messages.
#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <utility>

#include "framework/AppEntry.h"
#include "framework/FrameworkResources.h"
#include "framework/PropertyPage.h"
#include "framework/StandardPropertyDialog.h"
#include "tests/win/support/RecordingInteraction.h"
#include "tests/win/toolkit/ToolkitTestIds.h"
#include "text/WideText.h"

// A page with a check box bound to `flag` and an edit bound to `text` that
// refuses the text "bad".
class CountingPage : public PropertyPage
{
public:
    CountingPage(Window* owner, int32_t templateId, const KelText& title)
        : PropertyPage(owner, templateId, title)
    {
    }

    int32_t InitPage() override
    {
        AddControl<CheckBox>(kCheckId, &flag, 1);
        AddControl<EditBox>(kEditId, &text)
            .SetValidator([](const KelText& value) { return value != u"bad"; });
        return 0;
    }
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override
    {
        ++applies;
        lastReason = reason;
        return PropertyPage::ApplyPage(pageIndex, reason, flags);
    }

    HWND Item(int id) const { return GetDlgItem(Handle(), id); }

    int32_t flag = 0;
    KelText text = u"start";
    int applies = 0;
    int32_t lastReason = -1;
};

// Ends a modal loop that failed to end by itself, so that the test fails
// instead of hanging; the loop answers kGaveUp.
constexpr WPARAM kGaveUp = 7777;
inline void CALLBACK GiveUp(HWND, UINT, UINT_PTR, DWORD)
{
    PostQuitMessage(int(kGaveUp));
}

inline KelText TextOf(HWND window)
{
    wchar_t buffer[256] = {};
    GetWindowTextW(window, buffer, 256);
    return FromWide(buffer);
}

inline void SetTextOf(HWND window, const char16_t* text)
{
    SendMessageW(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(AsWide(text)));
}

inline void Tick(HWND box, bool ticked)
{
    SendMessageW(box, BM_SETCHECK, ticked ? BST_CHECKED : BST_UNCHECKED, 0);
}

inline void Click(HWND dialog, int id)
{
    SendMessageW(GetDlgItem(dialog, id), BM_CLICK, 0, 0);
}

// What a click on a tab does: the tab control changes its selection and
// tells its parent.
inline void ChooseTab(HWND dialog, int index)
{
    HWND tabs = GetDlgItem(dialog, kPropertyTabsId);
    SendMessageW(tabs, TCM_SETCURSEL, WPARAM(index), 0);
    NMHDR header = {tabs, UINT_PTR(GetDlgCtrlID(tabs)), UINT(TCN_SELCHANGE)};
    SendMessageW(dialog, WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

inline RECT RectIn(HWND window, HWND parent)
{
    RECT rect = {};
    GetWindowRect(window, &rect);
    MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

// Makes a window wider by dx and taller by dy, as a user's drag would.
inline void Grow(HWND window, int dx, int dy)
{
    RECT frame = {};
    GetWindowRect(window, &frame);
    SetWindowPos(window, nullptr, 0, 0, frame.right - frame.left + dx,
                 frame.bottom - frame.top + dy, SWP_NOMOVE | SWP_NOZORDER);
}

// Runs an action from the message loop of a modal window (a thread timer).
inline std::function<void()>& PendingAction()
{
    static std::function<void()> action;
    return action;
}
inline void CALLBACK RunPendingAction(HWND, UINT, UINT_PTR timer, DWORD)
{
    KillTimer(nullptr, timer);
    auto action = std::move(PendingAction());
    if (action)
        action();
}
inline void AfterStart(std::function<void()> action)
{
    PendingAction() = std::move(action);
    SetTimer(nullptr, 0, 30, RunPendingAction);
}

// The application object of a test, installed as the process's one, with a
// recording stand-in for the user, and a dialog to hold a page under test.
class ToolkitTest : public ::testing::Test
{
protected:
    ToolkitTest()
        : app(GetModuleHandleW(nullptr), nullptr, nullptr, &user), previous(SetApplication(&app)),
          safety(SetTimer(nullptr, 0, 10000, GiveUp))
    {
    }

public:
    ToolkitTest(const ToolkitTest&) = delete;
    ToolkitTest& operator=(const ToolkitTest&) = delete;
    ~ToolkitTest() override
    {
        KillTimer(nullptr, safety);
        MSG quit;
        PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
        SetApplication(previous);
    }

protected:
    // Builds a dialog holding one page T(dialog, args...), shows it (modeless)
    // and answers the page.
    template <typename T, typename... Args>
    T& Open(Args&&... args)
    {
        dialog = std::make_unique<StandardPropertyDialog>(nullptr, u"Pages", 0, 1, 0, KelText());
        T* page = dialog->MakePage<T>(std::forward<Args>(args)...);
        EXPECT_NE(page, nullptr);
        EXPECT_EQ(dialog->Show(false), 1);
        return *page;
    }
    void Ok() { Click(dialog->Handle(), IDOK); }
    void Cancel() { Click(dialog->Handle(), IDCANCEL); }
    void Apply() { Click(dialog->Handle(), kPropertyApplyId); }
    bool DialogOpen() const { return dialog && dialog->Exists(); }

    RecordingInteraction user;
    AppEntry app;
    AppInterface* previous = nullptr;
    UINT_PTR safety = 0;
    std::unique_ptr<StandardPropertyDialog> dialog;
};
