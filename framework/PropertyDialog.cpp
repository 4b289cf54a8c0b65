#include "framework/PropertyDialog.h"

PropertyDialog::PropertyDialog(Window* owner, const TemplateName& frameTemplate,
                               const KelText& title)
    : DialogFrame(owner, frameTemplate, title)
{
}

PropertyDialog::~PropertyDialog()
{
    // The window, and with it the pages' windows, goes while the pages still
    // exist to see their windows close.
    Teardown();
}

int32_t PropertyDialog::AddPage(std::unique_ptr<PropertyPage> page)
{
    if (!page || !DialogTemplate::Exists(page->Template()))
        return -1;
    page->container = this;
    page->SetOwner(this);
    pages.push_back(std::move(page));
    pageStates.Append(0);
    OnPageAdded(PageCount() - 1);
    return PageCount() - 1;
}

PropertyPage* PropertyDialog::Page(int32_t index) const
{
    return index >= 0 && index < PageCount() ? pages[size_t(index)].get() : nullptr;
}

int32_t PropertyDialog::IndexOf(const PropertyPage* page) const
{
    for (int32_t i = 0; i < PageCount(); ++i)
        if (pages[size_t(i)].get() == page)
            return i;
    return -1;
}

int32_t PropertyDialog::PageState(int32_t index)
{
    int32_t* state = pageStates.At(index);
    return state ? *state : 0;
}

void PropertyDialog::SetPageState(int32_t index, int32_t state)
{
    if (int32_t* value = pageStates.At(index))
        *value = state;
}

int32_t PropertyDialog::ApplyAllPages()
{
    if (pages.empty())
    {
        applied = true;
        return 0;
    }
    applying = true;
    frontTaken = false;
    int32_t total = 0;
    for (int32_t index = 0; index < PageCount(); ++index)
    {
        pageStates.MoveTo(index);
        int32_t* state = pageStates.Current();
        if (!state || *state == 0)
            continue;
        PropertyPage* page = pages[size_t(index)].get();
        int32_t answer = page->ApplyPage(index, kApplyConfirm, 0);
        if (answer == 0)
            page->SetApplied(true);
        total |= answer;
    }
    applying = false;
    if (total == 0)
        applied = true;
    return total;
}

bool PropertyDialog::BringPageToFront(PropertyPage* page)
{
    return page && page->IsVisible();
}

void PropertyDialog::OnPageTitleChanged(PropertyPage*) {}

void PropertyDialog::OnPageAdded(int32_t) {}

bool PropertyDialog::CreatePageWindow(PropertyPage* page)
{
    if (!page)
        return false;
    if (page->Exists())
        return true;
    return Handle() && page->CreatePageWindow(Handle());
}
