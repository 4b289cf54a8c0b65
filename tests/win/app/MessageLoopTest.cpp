#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "framework/Window.h"
#include "tests/win/toolkit/ToolkitTestSupport.h"

namespace
{
HWND MakeWindow(HWND owner)
{
    static ATOM windowClass = []
    {
        WNDCLASSW kind = {};
        kind.lpfnWndProc = DefWindowProcW;
        kind.hInstance = GetModuleHandleW(nullptr);
        kind.lpszClassName = L"KelLoopTestWindow";
        return RegisterClassW(&kind);
    }();
    return CreateWindowExW(0, MAKEINTATOM(windowClass), L"", WS_POPUP, 0, 0, 50, 50, owner, nullptr,
                           GetModuleHandleW(nullptr), nullptr);
}

// An application object with its stand-in user, and nothing left in the
// thread's queue from earlier tests.
class MessageLoop : public ToolkitTest
{
protected:
    MessageLoop()
    {
        MSG drained;
        while (PeekMessageW(&drained, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&drained);
    }
};

struct Recorder : IdleHandler
{
    Recorder(std::string name, std::vector<std::string>& calls, std::function<bool(int32_t)> answer)
        : name(std::move(name)), calls(calls), answer(std::move(answer))
    {
    }
    bool OnIdle(int32_t count) override
    {
        calls.push_back(name + std::to_string(count));
        return answer(count);
    }
    std::string name;
    std::vector<std::string>& calls;
    std::function<bool(int32_t)> answer;
};
} // namespace

TEST_F(MessageLoop, ModalLoopEndsWhenItsWindowClosesAndReenablesTheOwner)
{
    HWND owner = MakeWindow(nullptr);
    HWND other = MakeWindow(nullptr);
    Window modal(MakeWindow(owner));
    bool ownerDisabledWhileModal = false;
    AfterStart(
        [&]
        {
            ownerDisabledWhileModal = !IsWindowEnabled(owner) && app.ModalCount() == 1;
            DestroyWindow(modal.Handle());
            app.EndModal(&modal);
        });

    EXPECT_NE(app.RunMessageLoop(&modal), kGaveUp);
    EXPECT_TRUE(ownerDisabledWhileModal);
    EXPECT_TRUE(IsWindowEnabled(owner));
    EXPECT_TRUE(IsWindow(other)); // other windows remain
    EXPECT_EQ(app.ModalCount(), 0);
    DestroyWindow(other);
    DestroyWindow(owner);
}

TEST_F(MessageLoop, ClosingAWindowBeneathEndsTheLoopsAboveIt)
{
    Window outer(MakeWindow(nullptr));
    Window inner(MakeWindow(outer.Handle()));
    WPARAM innerResult = 0;
    AfterStart(
        [&]
        {
            AfterStart([&] { app.EndModal(&outer); });
            innerResult = app.RunMessageLoop(&inner);
        });
    EXPECT_NE(app.RunMessageLoop(&outer), kGaveUp);
    EXPECT_NE(innerResult, kGaveUp);
    EXPECT_EQ(app.ModalCount(), 0);
    EXPECT_TRUE(IsWindowEnabled(outer.Handle()));
    DestroyWindow(inner.Handle());
    DestroyWindow(outer.Handle());
}

TEST_F(MessageLoop, IdleHandlersRunLastRegisteredFirstWhileAnyWantsMore)
{
    Window modal(MakeWindow(nullptr));
    std::vector<std::string> calls;
    Recorder first("first", calls,
                   [&](int32_t count)
                   {
                       if (count == 3)
                           app.EndModal(&modal);
                       return true;
                   });
    Recorder second("second", calls, [](int32_t) { return false; });
    app.AddIdleHandler(&first);
    app.AddIdleHandler(&second);

    EXPECT_NE(app.RunMessageLoop(&modal), kGaveUp);
    EXPECT_EQ(calls, (std::vector<std::string>{"second1", "first1", "second2", "first2", "second3",
                                               "first3"}));
    EXPECT_TRUE(app.RemoveIdleHandler(&first));
    EXPECT_TRUE(app.RemoveIdleHandler(&second));
    EXPECT_FALSE(app.RemoveIdleHandler(&second));
    DestroyWindow(modal.Handle());
}

namespace
{
struct WarningCounter : AppEntry
{
    WarningCounter(AppInteraction* user)
        : AppEntry(GetModuleHandleW(nullptr), nullptr, nullptr, user)
    {
    }
    void DebugWarning(const KelText& title, const KelText& message, uint32_t) override
    {
        warnings.push_back(title + u": " + message);
    }
    std::vector<KelText> warnings;
};
} // namespace

TEST(Wait, EndWaitTooOftenIsRepaired)
{
    RecordingInteraction user;
    WarningCounter app(&user);
    app.BeginWait();
    app.EndWait();
    app.EndWait();
    app.EndWait();
    EXPECT_EQ(app.WaitNesting(), 0);
    ASSERT_EQ(app.warnings.size(), 2u);
    EXPECT_TRUE(app.warnings[0].SameAs(u"EndWait: Called too many times"));
    EXPECT_TRUE(user.boxes.empty());

    // Background work is counted down by EndWait; the last piece notes the time.
    app.AddBackgroundBusy();
    app.AddBackgroundBusy();
    app.EndWait();
    EXPECT_EQ(app.BackgroundBusyCount(), 1);
    EXPECT_EQ(app.LastIdleTick(), 0u);
    app.EndWait();
    EXPECT_EQ(app.BackgroundBusyCount(), 0);
    EXPECT_NE(app.LastIdleTick(), 0u);
}
