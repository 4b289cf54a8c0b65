#pragma once
#include <cstdint>

#include "framework/PropertyPage.h"
#include "text/KelText.h"

// The small modal dialog (template 502) that edits one web link of the web
// links page: its name (813), its address (814) and whether it is the default
// link (812). While the box is ticked the name is empty and its box disabled;
// clearing the box gives back the name it held. OK refuses an entry that
// LinkProblem rejects, with the alert and a box, and stays open; Cancel
// changes nothing.
class EditWebLink : public PropertyPage
{
public:
    // `link` is the text "name=address" to edit.
    EditWebLink(Window* owner, const KelText& link);
    ~EditWebLink() override;

    int32_t InitPage() override;
    // The base apply, then the checks; composes Link() when the entry is good.
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;

    // The edited link, "name=address", once OK has accepted.
    const KelText& Link() const { return link; }

    // What is wrong with an entry, as the number of the text that says so:
    // 9635 for an address that is empty (or only blanks), 9637 for a name
    // that is not the default link's and is empty (or only blanks) or holds
    // "=" (it would end at that sign); 0 when the entry is good. The name is
    // checked first, as it comes first in the dialog.
    static int32_t LinkProblem(bool isDefault, const KelText& name, const KelText& address);

    // Bound to the controls.
    int32_t isDefault = 0;
    KelText name;
    KelText address;

private:
    void DefaultClicked();

    KelText link;
    // The name the box held before the default-link box cleared it.
    KelText nameBeforeDefault;
};
