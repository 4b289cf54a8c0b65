#include "framework/PropertyPage.h"

#include <uxtheme.h>

#include "framework/PropertyDialog.h"

PropertyPage::PropertyPage(Window* owner, const TemplateName& templateName, const KelText& title,
                           int32_t flags)
    : FormDialog(owner, templateName, title), pageFlags(flags)
{
}

PropertyPage::~PropertyPage() = default;

int32_t PropertyPage::ApplyPageWith(int32_t pageIndex, int32_t reason, int32_t flags)
{
    return ApplyPage(pageIndex, reason, flags);
}

void PropertyPage::SetTitle(const KelText& text)
{
    if (container)
    {
        // Inside a dialog the title is the tab's caption, not a window caption.
        AppFrame::SetTitle(text);
        container->OnPageTitleChanged(this);
    }
    else
        AppFrame::SetTitle(text);
}

bool PropertyPage::BringToFront()
{
    return container ? container->BringPageToFront(this) : true;
}

BOOL PropertyPage::OnInitDialog()
{
    if (container)
    {
        // The tab's body background behind the page when visual styles are on.
        EnableThemeDialogTexture(Handle(), ETDT_ENABLETAB);
    }
    return FormDialog::OnInitDialog();
}

bool PropertyPage::OnCommand(int32_t id, int32_t code, HWND control)
{
    // Inside a dialog, OK and Cancel are the dialog's: the page itself never
    // closes.
    if (container && (id == IDOK || id == IDCANCEL))
    {
        if (!control || code == BN_CLICKED)
            container->Send(WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), 0);
        return true;
    }
    return FormDialog::OnCommand(id, code, control);
}
