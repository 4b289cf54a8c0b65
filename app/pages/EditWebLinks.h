#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/FieldTable.h"
#include "framework/PageReport.h"
#include "framework/PropertyPage.h"
#include "text/KelText.h"

class ListView;

// The product's web links, in order, kept in the product's per-user branch
// under the key "WebLinks". No window is needed: the page edits `links`, and
// the deployment tool and the tests use the class on its own.
//
// A link is one text "name=address": the name is everything before the first
// "=", the address everything after it; a text without "=" is all name. A
// link whose name is empty is the default link.
//
// In the registry each link is one string value named "<position>:<name>"
// with the address as data; positions count from 0. Reading splits the name
// at its first ":" and orders the links by that number, never by the order
// in which the registry lists the values. A value whose name has no usable
// number (no ":", or not only digits before it) is still a link: its whole
// name is the link's name, and it comes after the numbered ones. Values of
// other types are no links: they are neither shown nor changed.
class WebLinksValues
{
public:
    explicit WebLinksValues(KelText product);

    // Replaces `links` with what the key holds now.
    void Load();
    // Makes the key hold exactly `links`: one value per link, named from its
    // place in the list, and no other string value (so a removed link never
    // returns). Nothing is written when the key holds that already. When a
    // value cannot be written, what was written is undone and the answer is
    // the error box; the page refuses.
    PageReport Save();

    // The full key text of the product's "WebLinks" key (ends in "\").
    KelText KeyPath() const;
    const KelText& ProductName() const { return product; }
    // The stored list, with its place (the policy templates read it).
    const FieldTable& Fields() const { return fields; }

    // The links in order, each "name=address".
    std::vector<KelText> links;

    // --- link texts -----------------------------------------------------------
    static KelText NameOf(const KelText& link);
    static KelText AddressOf(const KelText& link);
    static KelText MakeLink(const KelText& name, const KelText& address);
    // The name as a list shows it: the default link's is dictionary text 9640.
    static KelText ShownName(const KelText& link);
    // The registry value name of `link` at `position`.
    static KelText ValueName(size_t position, const KelText& link);

private:
    KelText product;
    FieldTable fields;
};

// The web links were not saved: the page comes to the front, the alert, then
// an error box (caption 9632, text 9665); the page refuses to close.
PageReport WebLinksNotSaved();

// The web links page (template 505), shown for every product but Plotwise and
// Ledgerline: the list of links (806, several rows may be selected) growing
// with the page, and beside it the buttons move up (807), add (809), edit
// (810), delete (811) and move down (808), each with its tool tip. A double
// click on a row edits it. The page changes only its list; OK writes it.
class EditWebLinks : public PropertyPage
{
public:
    EditWebLinks(Window* owner, const KelText& product);
    ~EditWebLinks() override;

    // Relays out the controls, then shares the list's width among the columns.
    void OnSizeChanged(int32_t width, int32_t height) override;
    int32_t InitPage() override;
    // The base apply, then the list's save. When either fails: the alert and
    // the error box, and a nonzero answer (the dialog stays open).
    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override;

    // The buttons' actions; each does nothing unless the selection allows it
    // (see UpdateButtons).
    void MoveUp();
    void MoveDown();
    // Runs the link dialog on a new link named with text 136; a confirmed
    // link goes in at the selected row (that row and those below move down),
    // or at the end when not exactly one row is selected, and is selected.
    void Add();
    // Runs the link dialog on the one selected link.
    void Edit();
    // Asks, then removes every selected link.
    void Delete();

    WebLinksValues& Values() { return values; }

private:
    ListView* LinkList() const;
    // Row `row` shows link `row` of the values.
    void ShowRow(int32_t row);
    // Move up and down need one row that is not the first (last); edit needs
    // one row; delete at least one; add is always possible.
    void UpdateButtons();
    void Move(int32_t step);
    // The selected row when exactly one is selected, else -1.
    int32_t SingleSelection() const;
    // Runs the link dialog modally on `link`; true and the edited link when
    // OK closed it.
    bool RunLinkDialog(KelText& link);
    void FitColumns();

    WebLinksValues values;
};
