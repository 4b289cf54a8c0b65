#include "framework/FormDialog.h"

#include "framework/AppEntry.h"

FormDialog::FormDialog(Window* owner, const TemplateName& templateName, const KelText& title)
    : DialogFrame(owner, templateName, title), toolTip(*this)
{
}

// The control objects go first; the window, cut from this object, follows in
// ~AppFrame, so it never notifies a control object that is gone.
FormDialog::~FormDialog() = default;

void FormDialog::Adopt(std::unique_ptr<Control> control)
{
    if (control->IsBound())
        bound.push_back(control.get());
    controls.push_back(std::move(control));
}

Control* FormDialog::FindControl(int32_t id) const
{
    for (const auto& control : controls)
        if (control->Id() == id)
            return control.get();
    return nullptr;
}

void FormDialog::LoadBoundValues()
{
    for (Control* control : bound)
        control->LoadValue();
}

void FormDialog::OnSizeChanged(int32_t width, int32_t height)
{
    layout.Apply(width, height);
}

Control* FormDialog::FindInvalidControl(int32_t, int32_t, int32_t)
{
    for (Control* control : bound)
        if (!control->IsValid())
            return control;
    return nullptr;
}

int32_t FormDialog::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    if (Control* invalid = FindInvalidControl(pageIndex, reason, flags))
    {
        if (BringToFront())
        {
            invalid->Focus();
            if (auto* edit = dynamic_cast<EditBox*>(invalid))
                edit->SelectAll();
        }
        Alert(MB_ICONHAND);
        return 1;
    }
    for (Control* control : bound)
        if (control->IsChanged())
            control->StoreValue();
    applied = true;
    return 0;
}

void FormDialog::SetLayout(int32_t id, uint32_t flags)
{
    if (Handle())
        layout.Add(GetDlgItem(Handle(), id), flags, SIZE{ClientRect().right, ClientRect().bottom});
}

void FormDialog::SetLayout(const Window& control, uint32_t flags)
{
    layout.Add(control.Handle(), flags, SIZE{ClientRect().right, ClientRect().bottom});
}

void FormDialog::Alert(uint32_t beepType)
{
    if (AppInterface* app = GetApplication())
        app->Alert(Handle(), beepType);
    else
        MessageBeep(beepType);
}

int32_t FormDialog::ShowMessageBox(const KelText& text, const KelText& caption, uint32_t style,
                                   uint32_t switchCode)
{
    return ShowAppMessageBox(Handle(), text, caption, style, switchCode);
}

bool FormDialog::BrowseFolder(const KelText& title, const KelText& startFolder, KelText& chosen)
{
    AppInterface* app = GetApplication();
    return app && app->BrowseForFolder(Handle(), title, startFolder, chosen);
}

bool FormDialog::BrowseForEditFolder(int32_t editId, KelText& folder, const KelText& title)
{
    Control* edit = FindControl(editId);
    if (edit)
        edit->StoreValue();
    KelText start = folder;
    if (start.IsEmpty())
        if (AppEntry* app = GetAppEntry())
            start = app->SettingsFolder();
    KelText chosen;
    if (!BrowseFolder(title, start, chosen))
        return false;
    folder = chosen;
    if (edit)
        edit->LoadValue();
    return true;
}

int32_t FormDialog::Report(const PageReport& report)
{
    if (report.toFront)
        BringToFront();
    if (report.alert)
        Alert(MB_ICONHAND);
    if (report.HasBox())
        ShowMessageBox(report.text, report.caption, report.style);
    return report.refuse ? 1 : 0;
}

bool FormDialog::BringToFront()
{
    return true;
}

BOOL FormDialog::OnInitDialog()
{
    // A window made anew gets new control objects from InitPage.
    controls.clear();
    bound.clear();
    layout.Clear();
    return DialogFrame::OnInitDialog();
}

bool FormDialog::OnCommand(int32_t id, int32_t code, HWND control)
{
    if (control)
        if (Control* target = FindControl(id))
            if (target->OnCommand(code))
                return true;
    if (id == IDOK && (!control || code == BN_CLICKED))
    {
        // On its own the form closes only when it accepts.
        if (ApplyPage(-1, kApplyStandalone, 0) == 0)
            Close(IDOK);
        return true;
    }
    return DialogFrame::OnCommand(id, code, control);
}

bool FormDialog::OnNotify(NMHDR& header, LRESULT& result)
{
    if (Control* target = FindControl(int32_t(header.idFrom)))
        if (target->Handle() == header.hwndFrom && target->OnNotify(header, result))
            return true;
    return DialogFrame::OnNotify(header, result);
}

void FormDialog::ChangeDpi(int32_t newDpi)
{
    const SIZE oldUnits = BaseUnits();
    DialogFrame::ChangeDpi(newDpi);
    layout.Scale(BaseUnits(), oldUnits);
}

INT_PTR FormDialog::DialogProc(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_DRAWITEM)
    {
        auto& item = *reinterpret_cast<DRAWITEMSTRUCT*>(lParam);
        Control* target = FindControl(int32_t(item.CtlID));
        return target && target->OnDrawItem(item);
    }
    return DialogFrame::DialogProc(message, wParam, lParam);
}

void FormDialog::OnHandleDestroyed()
{
    for (const auto& control : controls)
        control->Detach();
    toolTip.Detach();
    DialogFrame::OnHandleDestroyed();
}
