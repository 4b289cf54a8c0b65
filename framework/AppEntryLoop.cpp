// The message loop, the modal stack, idle handlers and the wait cursor.
#include <algorithm>

#include "framework/AppEntry.h"
#include "framework/Window.h"

namespace
{
// Messages that arrive constantly, and the wake-up of EndModal: they do not
// end an idle period.
bool KeepsIdleCount(UINT message)
{
    return message == WM_MOUSEMOVE || message == WM_NCMOUSEMOVE || message == WM_PAINT ||
           message == WM_TIMER || message == WM_NULL;
}
} // namespace

WPARAM AppEntry::RunMessageLoop(Window* modalWindow)
{
    HWND disabledOwner = nullptr;
    HWND modalHandle = nullptr;
    int32_t depth = -1;
    if (modalWindow)
    {
        modalHandle = modalWindow->Handle();
        HWND owner = modalHandle ? GetWindow(modalHandle, GW_OWNER) : nullptr;
        modalStack.push_back(modalWindow);
        depth = ModalCount() - 1;
        if (owner && IsWindowEnabled(owner))
        {
            EnableWindow(owner, FALSE);
            disabledOwner = owner;
        }
    }

    // A modal loop ends once its window, or one beneath it, has left the
    // stack. A window destroyed without leaving it is taken off here.
    auto ended = [&]()
    {
        if (!modalWindow)
            return false;
        if (modalHandle && !IsWindow(modalHandle))
            EndModal(modalWindow);
        return ModalCount() <= depth;
    };

    MSG message = {};
    while (!ended())
    {
        bool received = false;
        if (!idleHandlers.empty())
        {
            while (!(received = PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)))
            {
                // The last registered handler first; handlers may remove
                // themselves while they run.
                bool moreIdle = false;
                for (size_t i = idleHandlers.size(); i-- > 0;)
                    if (i < idleHandlers.size())
                        moreIdle |= idleHandlers[i]->OnIdle(idleCounter);
                if (!moreIdle || ended())
                    break;
                ++idleCounter;
            }
            if (!received && ended())
                break;
        }
        if (!received && GetMessageW(&message, nullptr, 0, 0) == -1)
            break;

        if (message.message == WM_QUIT)
        {
            // The loops beneath this one end too.
            if (modalWindow)
                PostQuitMessage(int(message.wParam));
            break;
        }
        if (!KeepsIdleCount(message.message))
            idleCounter = 1;

        if (PreTranslate(message))
            continue;
        if (accelerators && mainFrame && mainFrame->Handle() &&
            TranslateAcceleratorW(mainFrame->Handle(), accelerators, &message))
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }

    if (disabledOwner)
        EnableWindow(disabledOwner, TRUE);
    return message.wParam;
}

bool AppEntry::PreTranslate(MSG& message)
{
    Window* target = modalStack.empty() ? mainFrame : modalStack.back();
    return target && target->PreTranslateMessage(message);
}

void AppEntry::EndModal(Window* window)
{
    for (size_t i = modalStack.size(); i-- > 0;)
    {
        if (modalStack[i] == window)
        {
            modalStack.resize(i);
            // The loop that runs the window may be blocked in GetMessageW:
            // a window closed from a sent message (another program's
            // BM_CLICK, a screen reader) leaves the queue without anything
            // that would wake it. An empty message does, and the loop then
            // sees that its window has gone.
            PostThreadMessageW(GetCurrentThreadId(), WM_NULL, 0, 0);
            return;
        }
    }
}

void AppEntry::AddIdleHandler(IdleHandler* handler)
{
    if (handler)
        idleHandlers.push_back(handler);
}

bool AppEntry::RemoveIdleHandler(IdleHandler* handler)
{
    auto it = std::find(idleHandlers.begin(), idleHandlers.end(), handler);
    if (it == idleHandlers.end())
        return false;
    idleHandlers.erase(it);
    return true;
}

void AppEntry::BeginWait(Window*)
{
    ++waitNesting;
    SetCursor(LoadCursorW(nullptr, IDC_WAIT));
}

void AppEntry::EndWait(Window* window)
{
    --waitNesting;
    if (waitNesting == 0 && window)
        SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    else if (waitNesting < 0)
    {
        DebugWarning(u"EndWait", u"Called too many times", 0);
        waitNesting = 0;
    }

    if (backgroundBusy > 0)
    {
        CriticalLock lock(guard);
        if (backgroundBusy > 0)
        {
            --backgroundBusy;
            if (backgroundBusy == 0)
                lastIdleTick = GetTickCount();
        }
    }
}

void AppEntry::AddBackgroundBusy()
{
    CriticalLock lock(guard);
    ++backgroundBusy;
}

int32_t AppEntry::BackgroundBusyCount()
{
    return backgroundBusy;
}

DWORD AppEntry::LastIdleTick()
{
    CriticalLock lock(guard);
    return lastIdleTick;
}
