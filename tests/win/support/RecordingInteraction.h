#pragma once
#include <windows.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <set>
#include <vector>

#include "framework/AppInteraction.h"
#include "text/KelText.h"

// A stand-in for the user in in-process tests: answers every modal
// interaction from a script and records what would have been shown. Unscripted
// message boxes answer their default button, unscripted folder browsers and
// modal choices are cancelled, and no key is down unless pressed.
class RecordingInteraction : public AppInteraction
{
public:
    struct Box
    {
        HWND owner;
        KelText text;
        KelText caption;
        uint32_t style;
        uint32_t switchCode;
        KelText checkLabel;
    };
    struct BoxAnswer
    {
        int32_t button;
        bool dontShowAgain;
    };
    struct AlertShown
    {
        HWND owner;
        uint32_t beepType;
    };
    struct BrowseShown
    {
        HWND owner;
        KelText title;
        KelText startFolder;
    };

    // --- the script ---------------------------------------------------------
    void AnswerBox(int32_t button, bool dontShowAgain = false)
    {
        boxAnswers.push_back({button, dontShowAgain});
    }
    // A folder to choose, or std::nullopt to cancel.
    void AnswerBrowse(std::optional<KelText> folder) { browseAnswers.push_back(std::move(folder)); }
    // The row to confirm, or -1 to cancel.
    void AnswerChoice(int32_t row) { choiceAnswers.push_back(row); }
    void PressKey(int virtualKey) { keysDown.insert(virtualKey); }
    void ReleaseKey(int virtualKey) { keysDown.erase(virtualKey); }

    // --- what was shown -----------------------------------------------------
    std::vector<Box> boxes;
    std::vector<AlertShown> alerts;
    std::vector<BrowseShown> browses;
    std::vector<KelText> choices;

    // --- AppInteraction -----------------------------------------------------
    int32_t ShowMessageBox(HWND owner, const KelText& text, const KelText& caption, uint32_t style,
                           uint32_t switchCode, const KelText& checkLabel,
                           bool& dontShowAgain) override;
    void Alert(HWND owner, uint32_t beepType) override;
    bool BrowseForFolder(HWND owner, const KelText& title, const KelText& startFolder,
                         KelText& chosen) override;
    bool IsKeyDown(int virtualKey) override;
    int32_t ChooseModal(const KelText& purpose, const std::function<int32_t()>& show) override;

private:
    std::deque<BoxAnswer> boxAnswers;
    std::deque<std::optional<KelText>> browseAnswers;
    std::deque<int32_t> choiceAnswers;
    std::set<int> keysDown;
};
