#include "app/pages/FolderMarks.h"

#include <mutex>
#include <string>

struct ProbeInbox::Shared
{
    std::mutex guard;
    HWND window = nullptr;
    struct Waiting
    {
        int32_t tag;
        std::u16string folder;
        FolderAnswer answer;
    };
    std::vector<Waiting> waiting;
};

ProbeInbox::ProbeInbox() : shared(std::make_shared<Shared>()) {}

ProbeInbox::~ProbeInbox()
{
    Close();
}

void ProbeInbox::Open(HWND window)
{
    const std::scoped_lock lock(shared->guard);
    shared->window = window;
}

void ProbeInbox::Close()
{
    const std::scoped_lock lock(shared->guard);
    shared->window = nullptr;
    shared->waiting.clear();
}

void ProbeInbox::Ask(int32_t tag, const KelText& folder, bool needWrite)
{
    std::u16string path(folder.View());
    // The probe keeps the shared part alive, never the inbox or its page.
    FolderProbes::Start({path, needWrite},
                        [held = shared, tag, path](const FolderAnswer& answer)
                        {
                            const std::scoped_lock lock(held->guard);
                            if (!held->window)
                                return;
                            held->waiting.push_back({tag, path, answer});
                            PostMessageW(held->window, kAnswerMessage, 0, 0);
                        });
}

std::vector<ProbeInbox::Answer> ProbeInbox::Take()
{
    std::vector<Shared::Waiting> taken;
    {
        const std::scoped_lock lock(shared->guard);
        taken.swap(shared->waiting);
    }
    std::vector<Answer> answers;
    answers.reserve(taken.size());
    for (const Shared::Waiting& one : taken)
        answers.push_back({one.tag, KelText(one.folder.c_str()), one.answer});
    return answers;
}

HICON SmallWarningIcon()
{
    static const HICON icon = static_cast<HICON>(
        LoadImageW(nullptr, MAKEINTRESOURCEW(32515 /* OIC_WARNING */), IMAGE_ICON,
                   GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON), LR_SHARED));
    return icon;
}
