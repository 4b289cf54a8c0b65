#include "app/pages/EditWebLink.h"

#include <windows.h>

#include "app/pages/EditWebLinks.h"
#include "app/pages/PageIds.h"
#include "framework/Control.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
bool IsBlank(const KelText& text)
{
    KelText trimmed(text);
    return trimmed.Trim().IsEmpty();
}
} // namespace

EditWebLink::EditWebLink(Window* owner, const KelText& linkText)
    : PropertyPage(owner, TemplateName(kWebLinkTemplate),
                   DictTextOr(kTextLinkDialogTitle, u"Edit Web Link")),
      name(WebLinksValues::NameOf(linkText)), address(WebLinksValues::AddressOf(linkText)),
      link(linkText)
{
    isDefault = name.IsEmpty() ? 1 : 0;
}

EditWebLink::~EditWebLink() = default;

int32_t EditWebLink::LinkProblem(bool isDefault, const KelText& name, const KelText& address)
{
    if (!isDefault && (IsBlank(name) || name.Find(u'=') > 0))
        return kTextLinkBadName;
    if (IsBlank(address))
        return kTextLinkNeedsAddress;
    return 0;
}

int32_t EditWebLink::InitPage()
{
    AddControl<EditBox>(kLinkName, &name);
    AddControl<EditBox>(kLinkAddress, &address);
    AddControl<CheckBox>(kLinkIsDefault, &isDefault).OnClick([this] { DefaultClicked(); });
    EnableControl(kLinkName, isDefault == 0);
    return 0;
}

void EditWebLink::DefaultClicked()
{
    if (IsControlChecked(kLinkIsDefault))
    {
        // The default link has no name: keep what was typed for a change of mind.
        const KelText typed = ControlText(kLinkName);
        if (!typed.IsEmpty())
            nameBeforeDefault = typed;
        SetControlText(kLinkName, KelText());
        EnableControl(kLinkName, false);
    }
    else
    {
        EnableControl(kLinkName, true);
        if (ControlText(kLinkName).IsEmpty())
            SetControlText(kLinkName, nameBeforeDefault);
    }
}

int32_t EditWebLink::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    if (const int32_t answer = PropertyPage::ApplyPage(pageIndex, reason, flags))
        return answer;
    if (isDefault != 0)
        name = KelText();
    if (const int32_t problem = LinkProblem(isDefault != 0, name, address))
    {
        const int32_t offending = problem == kTextLinkNeedsAddress ? kLinkAddress : kLinkName;
        FocusControl(offending);
        if (auto* edit = dynamic_cast<EditBox*>(FindControl(offending)))
            edit->SelectAll();
        const KelText text =
            problem == kTextLinkNeedsAddress
                ? DictTextOr(problem, u"Enter the address of the web link.")
                : DictTextOr(problem, u"Enter a name for the link, or mark it as the default "
                                      u"link. A name must not contain \"=\".");
        return Report(PageReport::Refused(
            text, DictTextOr(kTextInvalidLinkCaption, u"Invalid Web Link"), false, true));
    }
    link = WebLinksValues::MakeLink(name, address);
    return 0;
}
