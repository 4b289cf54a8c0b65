#pragma once
#include <windows.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "framework/Control.h"
#include "framework/DialogFrame.h"
#include "framework/Layout.h"
#include "framework/PageReport.h"
#include "framework/ToolTip.h"

// A dialog with controls bound to members: it owns its control objects (made
// in InitPage), keeps the bound ones in order, lays the controls out when its
// size changes and applies in two steps: first every bound control must be
// valid, then the changed ones write their members. It also offers the
// application's alert, message box and folder browser with itself as owner.
//
// Run on its own (Show), OK applies the form and closes it when the form
// accepts; Cancel closes it and changes nothing.
class FormDialog : public DialogFrame
{
public:
    FormDialog(Window* owner, const TemplateName& templateName, const KelText& title = KelText());
    ~FormDialog() override;

    // Relays out the controls (see SetLayout). Pages that size list columns
    // call this first.
    void OnSizeChanged(int32_t width, int32_t height) override;
    // As DialogFrame, and the layout's rectangles follow.
    void ChangeDpi(int32_t newDpi) override;
    // The base apply: when FindInvalidControl names a control, the page comes
    // to the front, that control gets the focus, the alert sounds and the
    // answer is 1 (no member is written). Otherwise every bound control that
    // changed writes its member, the applied flag is set and the answer is 0.
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;
    // The first bound control that is not valid, or null.
    Control* FindInvalidControl(int32_t pageIndex, int32_t reason, int32_t flags) override;

    // --- controls ------------------------------------------------------------
    // Makes a control object T(*this, args...) that the form owns; a bound
    // one joins the bound controls. Answers it.
    template <typename T, typename... Args>
    T& AddControl(Args&&... args)
    {
        auto control = std::make_unique<T>(*this, std::forward<Args>(args)...);
        T& made = *control;
        Adopt(std::move(control));
        return made;
    }
    // The control object with that id, or null.
    Control* FindControl(int32_t id) const;
    const std::vector<Control*>& BoundControls() const { return bound; }
    // Copies every bound member into its control.
    void LoadBoundValues();

    bool IsApplied() const { return applied; }
    void SetApplied(bool value) { applied = value; }

    // --- layout ---------------------------------------------------------------
    // How a control (by id or object) follows the form's size: LayoutFlags.
    void SetLayout(int32_t id, uint32_t flags);
    void SetLayout(const Window& control, uint32_t flags);
    // The form's tool-tip control (made on first use).
    ToolTip& ToolTips() { return toolTip; }

    // --- the user, through the application ------------------------------------
    // The alert for a refused action (flash of the top-level window, beep).
    void Alert(uint32_t beepType = MB_ICONHAND);
    // The application's message box with the form as owner; answers the button.
    int32_t ShowMessageBox(const KelText& text, const KelText& caption, uint32_t style,
                           uint32_t switchCode = 0);
    // The folder browser with the form as owner; true and the folder when the
    // user confirms.
    bool BrowseFolder(const KelText& title, const KelText& startFolder, KelText& chosen);
    // Browses for the folder of a bound edit box: the box's text goes into its
    // member `folder` first; the browser starts there, or at the
    // application's settings folder when it is empty; a confirmed folder goes
    // into the member and the box. Answers whether the user confirmed.
    bool BrowseForEditFolder(int32_t editId, KelText& folder, const KelText& title);

    // Tells the user what a save reported: the form comes to the front, the
    // alert sounds and the box shows, as far as the report asks. Answers what
    // the page answers: 1 when the report refuses, else 0.
    int32_t Report(const PageReport& report);

    // Makes the form visible to the user (a page becomes its dialog's current
    // page). Answers whether it is in front now; a form run on its own is.
    virtual bool BringToFront();

protected:
    BOOL OnInitDialog() override;
    bool OnCommand(int32_t id, int32_t code, HWND control) override;
    bool OnNotify(NMHDR& header, LRESULT& result) override;
    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnHandleDestroyed() override;

private:
    void Adopt(std::unique_ptr<Control> control);

    std::vector<std::unique_ptr<Control>> controls;
    std::vector<Control*> bound;
    Layout layout;
    ToolTip toolTip;
    bool applied = false;
};
