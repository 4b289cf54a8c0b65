#pragma once
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "framework/DialogFrame.h"
#include "framework/IndexedList.h"
#include "framework/PropertyPage.h"

// A dialog that holds pages and applies them together. It owns its pages;
// beside the page array it keeps the page-state list, one 32-bit state per
// page in page order: 0 while the user has not opened the page, non-zero once
// the page has been shown. Only opened pages are applied, because a page
// never shown has neither controls nor changes.
class PropertyDialog : public DialogFrame
{
public:
    PropertyDialog(Window* owner, const TemplateName& frameTemplate, const KelText& title);
    PropertyDialog(const PropertyDialog&) = delete;
    PropertyDialog& operator=(const PropertyDialog&) = delete;
    ~PropertyDialog() override;

    // Appends a page and takes it. A page whose template is missing is not
    // added (it is deleted). Answers the page's index, -1 when not added.
    int32_t AddPage(std::unique_ptr<PropertyPage> page);
    // Makes a page T(this, args...) and appends it; answers the page, or null
    // when it was not added.
    template <typename T, typename... Args>
    T* MakePage(Args&&... args)
    {
        auto page = std::make_unique<T>(this, std::forward<Args>(args)...);
        T* made = page.get();
        return AddPage(std::move(page)) < 0 ? nullptr : made;
    }
    int32_t PageCount() const { return int32_t(pages.size()); }
    PropertyPage* Page(int32_t index) const;
    int32_t IndexOf(const PropertyPage* page) const;

    // The state of a page in the page-state list (0 outside).
    int32_t PageState(int32_t index);
    void SetPageState(int32_t index, int32_t state);

    // The dialog apply (OK): every page in page order, index 0 first; a page
    // with state 0 is skipped, the others are asked through ApplyPage and get
    // their applied flag when they answer 0. Every page is asked even after a
    // refusal; the answers are OR-ed. 0 sets the dialog's applied flag.
    int32_t ApplyAllPages();
    bool IsApplied() const { return applied; }

    // Makes a page the visible one where the dialog can; answers whether the
    // page is in front afterwards. Base: whether it is visible.
    virtual bool BringPageToFront(PropertyPage* page);
    // A page's title changed (the tab follows).
    virtual void OnPageTitleChanged(PropertyPage* page);
    // A page was appended (also after the window exists).
    virtual void OnPageAdded(int32_t index);

protected:
    // Makes the window of a page (once) inside the dialog; answers whether it exists.
    bool CreatePageWindow(PropertyPage* page);

    // While ApplyAllPages runs: only the first refusing page comes to the front.
    bool applying = false;
    bool frontTaken = false;

private:
    std::vector<std::unique_ptr<PropertyPage>> pages;
    IndexedList<int32_t> pageStates;
    bool applied = false;
};
