#pragma once
#include <windows.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/FolderProbes.h"
#include "text/KelText.h"

// Folder probes whose answers come back to a page's window. A probe runs in
// the background (FolderProbes) and never holds up the page; its answer is
// kept here and kAnswerMessage is posted to the window, which then takes the
// answers on its own thread. Once the inbox is closed (the page or its window
// went) later answers are dropped: nothing is posted to a window that may be
// gone, and nothing touches the page.
class ProbeInbox
{
public:
    // Posted to the window when answers are waiting (wParam and lParam 0).
    static constexpr UINT kAnswerMessage = WM_APP + 0x125;

    struct Answer
    {
        int32_t tag = 0;
        KelText folder;
        FolderAnswer answer;
    };

    ProbeInbox();
    ~ProbeInbox();
    ProbeInbox(const ProbeInbox&) = delete;
    ProbeInbox& operator=(const ProbeInbox&) = delete;

    // Answers go to `window` from now on.
    void Open(HWND window);
    // No answer goes anywhere any more.
    void Close();
    // Probes `folder`; its answer comes back with `tag`.
    void Ask(int32_t tag, const KelText& folder, bool needWrite);
    // The answers that came since the last call, in their order.
    std::vector<Answer> Take();

private:
    struct Shared;
    std::shared_ptr<Shared> shared;
};

// The small warning icon of the system (not to be destroyed).
HICON SmallWarningIcon();
