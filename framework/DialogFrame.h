#pragma once
#include <windows.h>

#include <cstdint>

#include "framework/AppFrame.h"
#include "framework/DialogTemplate.h"

// A dialog built from a template in the resources. Its window is created
// modelessly and, when shown modally, runs through the application's message
// loop (not DialogBox), so that the application keeps one modal stack.
// Captions and control texts of the form "^N" are replaced by dictionary text
// N when the window is created.
class DialogFrame : public AppFrame
{
public:
    DialogFrame(Window* owner, TemplateName templateName, const KelText& title = KelText());
    DialogFrame(const DialogFrame&) = delete;
    DialogFrame& operator=(const DialogFrame&) = delete;
    ~DialogFrame() override;

    const TemplateName& Template() const { return templateName; }

    // Gives the dialog manager the keyboard messages of this dialog (Tab,
    // arrows, Enter, Esc, mnemonics).
    bool PreTranslateMessage(MSG& message) override;

    // --- the dialog's controls by id (no effect, false or empty text when
    // the dialog has no such control) ---------------------------------------
    bool HasControl(int32_t id) const;
    void EnableControl(int32_t id, bool enable = true);
    bool IsControlEnabled(int32_t id) const;
    void ShowControl(int32_t id, bool show = true);
    bool IsControlVisible(int32_t id) const;
    KelText ControlText(int32_t id) const;
    void SetControlText(int32_t id, const KelText& text);
    // Check boxes and radio buttons.
    bool IsControlChecked(int32_t id) const;
    void SetControlChecked(int32_t id, bool checked);
    void FocusControl(int32_t id);
    // The control's rectangle in this dialog's client coordinates.
    RECT ControlRect(int32_t id) const;

    // The resolution (dots per inch) the dialog is laid out for: its
    // monitor's, taken when the window is made and on every WM_DPICHANGED.
    int32_t Dpi() const { return dpi; }
    // Lays the dialog out for another resolution: a font of the same point
    // size made for `newDpi`, every control moved and sized by the ratio, the
    // window's icons for the new size. The window itself keeps its rectangle
    // (WM_DPICHANGED then takes the one Windows suggests).
    virtual void ChangeDpi(int32_t newDpi);

    // The dialog base units now: the pixels of 4 horizontal and 8 vertical
    // dialog units (they follow the font through ChangeDpi).
    SIZE BaseUnits() const { return baseUnits; }

    // Converts dialog units of this dialog to pixels (at its current resolution).
    RECT DialogUnitsToPixels(const RECT& units) const;
    int32_t DialogUnitsToPixelsX(int32_t units) const;
    int32_t DialogUnitsToPixelsY(int32_t units) const;

protected:
    // Top-level (or owned) dialog from the template.
    bool CreateHandle(HWND ownerWindow) override;
    // A child dialog of `parent` from the template made into a child page.
    bool CreateChild(HWND parent);
    // Last changes to the template before the window is made from it.
    virtual void PrepareTemplate(DialogTemplate& dialogTemplate);

    INT_PTR DialogProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    // After the window and its template controls exist: translates the
    // references, sets the title, then runs InitPage. Answers what
    // WM_INITDIALOG answers (TRUE: the system sets the focus).
    virtual BOOL OnInitDialog();
    // WM_COMMAND. Base: IDOK and IDCANCEL close the dialog with that code.
    virtual bool OnCommand(int32_t id, int32_t code, HWND control);
    // WM_NOTIFY; `result` goes back to the sender.
    virtual bool OnNotify(NMHDR& header, LRESULT& result);

private:
    bool CreateFrom(DialogTemplate& dialogTemplate, HWND parent);
    void SetIcons();

    TemplateName templateName;
    // The resolution now and when the window was made (MapDialogRect keeps
    // the units of the font the window was made with).
    int32_t dpi = 96;
    int32_t createdDpi = 96;
    SIZE baseUnits = {0, 0};
    SIZE createdUnits = {0, 0};
    // The template's font (the dialog manager's) and its size in points,
    // taken at the first change; the font made for another resolution,
    // owned while the window uses it.
    HFONT createdFont = nullptr;
    int32_t fontPoints = 0;
    HFONT scaledFont = nullptr;
};

// A rectangle laid out in dialog units `from` (pixels per 4 horizontal and 8
// vertical units) as it lies in units `to`.
RECT ScaledByUnits(const RECT& rect, SIZE to, SIZE from);
