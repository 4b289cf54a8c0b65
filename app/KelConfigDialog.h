#pragma once
#include "framework/StandardPropertyDialog.h"

// The editor's dialog: one tab per page, chosen by the product. Pages load
// their values when they are built and save them when the dialog is confirmed;
// the dialog itself writes nothing.
class KelConfigDialog : public StandardPropertyDialog
{
public:
    // `title` is the formatted window title; `settingsFileName` "KEL.INI" or
    // "QUORLIN.INI".
    KelConfigDialog(Window* parent, const KelText& title, KelText product,
                    const KelText& settingsFileName);
    ~KelConfigDialog() override;

    // The dialog adds no checks of its own to those of its pages.
    int32_t CanClose() override;

    const KelText& Product() const { return product; }

protected:
    // OK and Apply hold the settings file's update lock from before the first
    // page saves to after the last, and record the save in the history.
    bool OnCommand(int32_t id, int32_t code, HWND control) override;

private:
    KelText product;
    KelText settingsFileName;
};
