#pragma once
#include <cstdint>
#include <vector>

#include "app/LocateConfiguration.h"
#include "framework/FormDialog.h"
#include "framework/ListView.h"

// The configuration picker: a modal dialog listing each configuration's name
// and folder. OK (or a double click) confirms the selected row; Cancel picks
// none. "Browse..." adds another folder, provided it holds the settings file.
class ConfigPicker : public FormDialog
{
public:
    ConfigPicker(std::vector<ConfigCandidate>& candidates, KelText fileName, KelText product);

    int32_t InitPage() override;
    // Confirms the selected row; refuses (alert) when none is selected.
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;
    void OnSizeChanged(int32_t width, int32_t height) override;

    // The confirmed row, -1 when none.
    int32_t Chosen() const { return chosen; }

protected:
    bool OnCommand(int32_t id, int32_t code, HWND control) override;

private:
    void AddRow(const ConfigCandidate& candidate);
    void Browse();
    void UpdateButtons();

    std::vector<ConfigCandidate>& candidates;
    KelText fileName;
    KelText product;
    ListView* list = nullptr;
    int32_t chosen = -1;
};
