#include "tests/win/support/RecordingInteraction.h"

int32_t RecordingInteraction::ShowMessageBox(HWND owner, const KelText& text,
                                             const KelText& caption, uint32_t style,
                                             uint32_t switchCode, const KelText& checkLabel,
                                             bool& dontShowAgain)
{
    boxes.push_back({owner, text, caption, style, switchCode, checkLabel});
    dontShowAgain = false;
    if (boxAnswers.empty())
        return MessageBoxDefaultButton(style);
    BoxAnswer answer = boxAnswers.front();
    boxAnswers.pop_front();
    // Only a box that offers the check box can have it ticked.
    dontShowAgain = answer.dontShowAgain && switchCode != 0;
    return answer.button;
}

void RecordingInteraction::Alert(HWND owner, uint32_t beepType)
{
    alerts.push_back({owner, beepType});
}

bool RecordingInteraction::BrowseForFolder(HWND owner, const KelText& title,
                                           const KelText& startFolder, KelText& chosen)
{
    browses.push_back({owner, title, startFolder});
    if (browseAnswers.empty())
        return false;
    std::optional<KelText> answer = std::move(browseAnswers.front());
    browseAnswers.pop_front();
    if (!answer)
        return false;
    chosen = *answer;
    return true;
}

bool RecordingInteraction::IsKeyDown(int virtualKey)
{
    return keysDown.count(virtualKey) != 0;
}

int32_t RecordingInteraction::ChooseModal(const KelText& purpose, const std::function<int32_t()>&)
{
    choices.push_back(purpose);
    if (choiceAnswers.empty())
        return -1;
    int32_t row = choiceAnswers.front();
    choiceAnswers.pop_front();
    return row;
}
