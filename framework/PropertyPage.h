#pragma once
#include <cstdint>

#include "framework/FormDialog.h"

class PropertyDialog;

// One page of a property dialog, built from a dialog template. Inside a
// dialog (PropertyDialog::AddPage) the template becomes a child window of the
// dialog, made when the page is first shown; its title is the page's tab
// caption. A page that belongs to no dialog can also run on its own as a
// small dialog (Show), with OK and Cancel as FormDialog has them.
class PropertyPage : public FormDialog
{
public:
    // `owner` is the dialog the page goes into, or the window that owns it
    // when it runs on its own. `title` is the tab caption (a page usually sets
    // a dictionary text afterwards with SetTitle); `flags` is kept for the page.
    PropertyPage(Window* owner, const TemplateName& templateName, const KelText& title,
                 int32_t flags = 0);
    ~PropertyPage() override;

    // Pages forward to ApplyPage with the same arguments.
    int32_t ApplyPageWith(int32_t pageIndex, int32_t reason, int32_t flags) override;

    // The dialog holding the page, null when it runs on its own.
    PropertyDialog* Container() const { return container; }
    // Renames the page and its tab.
    void SetTitle(const KelText& text) override;
    int32_t Flags() const { return pageFlags; }

    // Makes the page the current page of its dialog (see FormDialog).
    bool BringToFront() override;

protected:
    bool OnCommand(int32_t id, int32_t code, HWND control) override;
    BOOL OnInitDialog() override;

private:
    friend class PropertyDialog;
    // Makes the page's window as a child of its dialog's window.
    bool CreatePageWindow(HWND dialogWindow) { return CreateChild(dialogWindow); }

    PropertyDialog* container = nullptr;
    int32_t pageFlags;
};
