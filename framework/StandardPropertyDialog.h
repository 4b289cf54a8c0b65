#pragma once
#include <windows.h>

#include <cstdint>

#include "framework/PropertyDialog.h"
#include "framework/TabControl.h"

// The application's tabbed property dialog: a resizable top-level dialog with
// a tab control that shows the pages in the order added, OK (the dialog
// apply; closes only when every opened page accepts), Cancel (closes, applies
// nothing), Apply (applies the current page) and an optional extra button.
// Its size fits the largest page and is also its least size; where it was on
// the screen, and how big, is remembered in the registry under the placement
// key and restored (kept on the screen) the next time.
//
// Keyboard: Tab and Shift+Tab move through the controls of the page and the
// dialog, Ctrl+Tab and Ctrl+Shift+Tab (or Ctrl+Page Down / Page Up) to the
// next and previous page, Enter is OK, Esc is Cancel, Alt+letter the
// mnemonics. A page is made when it is first shown.
class StandardPropertyDialog : public PropertyDialog
{
public:
    // `pageView` chooses how pages are picked (0: tabs; no other view exists
    // yet, other values also give tabs); `showApply` 1 shows the Apply
    // button; `startPage` is the page shown first. `placementKey` names the
    // registry key, below the application's key of the current user, that
    // keeps the window's place (empty: not kept).
    StandardPropertyDialog(Window* owner, const KelText& title, int32_t pageView, int32_t showApply,
                           int32_t startPage, KelText placementKey);
    ~StandardPropertyDialog() override;

    // As AppFrame::Show; the dialog also becomes the application's main
    // frame while it exists when there is none.
    int32_t Show(bool modal) override;
    // Gives the keyboard's page switching and the dialog manager their messages.
    bool PreTranslateMessage(MSG& message) override;

    int32_t PageView() const { return pageView; }
    // The index of the page shown, -1 when none.
    int32_t CurrentPage() const { return current; }
    // Shows a page (making its window when it is first shown) and marks it
    // opened. False for an index outside the pages.
    bool SelectPage(int32_t index);
    // Apply of the current page (the Apply button): its ApplyPageWith, when
    // the current index names a page. Answers 0 whatever the page answered.
    int32_t ApplyCurrentPage();

    // The extra button at the left of the button row: caption and whether it
    // is shown (1) or hidden (0).
    void SetExtraButton(const KelText& caption, int32_t show);
    // What the extra button does. Base: shows the application's product
    // notice and version in a message box.
    virtual void OnExtraButton();

    // The full key text where the placement is kept: the application's key
    // of the current user + the placement key + "Placement" (empty without a
    // placement key or an application).
    KelText PlacementKeyPath() const;

    // As DialogFrame, for the frame and every page made so far (pages made
    // later take the dialog's resolution when they are made).
    void ChangeDpi(int32_t newDpi) override;

    bool BringPageToFront(PropertyPage* page) override;
    void OnPageTitleChanged(PropertyPage* page) override;
    void OnPageAdded(int32_t index) override;

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(int32_t id, int32_t code, HWND control) override;
    bool OnNotify(NMHDR& header, LRESULT& result) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnSizeChanged(int32_t width, int32_t height) override;
    int ShowCommand() const override;
    void OnHandleDestroyed() override;

private:
    void InsertTab(int32_t index);
    // The tab's display area in the dialog's client coordinates.
    RECT PageArea() const;
    // The width of the buttons of the row, in pixels: all alike.
    int32_t ButtonWidth() const;
    void PlacePage(PropertyPage* page, bool show);
    void SetUpButtons();
    void SetInitialSize();
    bool RestorePlacement();
    void SavePlacement();

    TabControl tabs;
    int32_t current = -1;
    int32_t pageView;
    bool showApply;
    int32_t startPage;
    KelText placementKey;
    KelText extraCaption;
    bool showExtra = false;
    bool restoreMaximized = false;
    SIZE leastSize = {0, 0};
};
