#include "app/pages/EditWebLinks.h"

#include <windows.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "app/pages/EditWebLink.h"
#include "app/pages/PageIds.h"
#include "framework/BitmapButton.h"
#include "framework/ListView.h"
#include "framework/RegistryKey.h"
#include "text/AccessKey.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"
#include "text/WideText.h"

namespace
{
const char16_t kWebLinksKey[] = u"WebLinks";

// Pictures of the application's image list.
constexpr int32_t kUpImage = 19;
constexpr int32_t kAddImage = 16;
constexpr int32_t kEditImage = 12;
constexpr int32_t kDeleteImage = 10;
constexpr int32_t kDownImage = 21;

// A string value of the key.
struct StoredValue
{
    KelText name;
    KelText data;
};

// Every string value of an open key (values of other types are left out).
std::vector<StoredValue> StringValues(const RegistryKey& key)
{
    std::vector<StoredValue> values;
    for (const KelText& name : key.ValueNames())
    {
        KelText data;
        if (key.ReadString(name, data) == RegistryRead::Ok)
            values.push_back({name, data});
    }
    return values;
}

// Value names are the same to the registry when they differ only in case, in
// any alphabet, not only in ASCII.
bool SameValueName(const KelText& left, const KelText& right)
{
    return CompareStringOrdinal(AsWide(left), left.Length(), AsWide(right), right.Length(), TRUE) ==
           CSTR_EQUAL;
}

// The position of a value name "<digits>:<name>": true, the number (as large
// as it may be, held at the largest position beyond 64 bits) and the name
// after the ":". False for any other value name.
bool SplitValueName(const KelText& valueName, uint64_t& position, KelText& name)
{
    const int32_t colon = valueName.Find(u':');
    if (colon <= 1)
        return false;
    uint64_t number = 0;
    for (int32_t i = 0; i < colon - 1; ++i)
    {
        const char16_t unit = valueName.At(i);
        if (unit < u'0' || unit > u'9')
            return false;
        const uint64_t digit = uint64_t(unit - u'0');
        const uint64_t most = std::numeric_limits<uint64_t>::max();
        number = number > (most - digit) / 10 ? most : number * 10 + digit;
    }
    position = number;
    name = valueName.Sub(colon + 1, valueName.Length() - colon);
    return true;
}

struct ReadLink
{
    bool numbered;
    uint64_t position;
    KelText valueName;
    KelText link;
};

} // namespace

// --- WebLinksValues -----------------------------------------------------------------

WebLinksValues::WebLinksValues(KelText productName)
    : product(std::move(productName)), fields(product)
{
    fields.ShownOn(kWebLinksTemplate);
    fields.ValueList(FieldBranch::Product, kWebLinksKey).ShownBy(kLinkList);
}

KelText WebLinksValues::KeyPath() const
{
    return fields.KeyPath(FieldBranch::Product, kWebLinksKey);
}

KelText WebLinksValues::NameOf(const KelText& link)
{
    const int32_t equals = link.Find(u'=');
    return equals > 0 ? link.Sub(1, equals - 1) : link;
}

KelText WebLinksValues::AddressOf(const KelText& link)
{
    const int32_t equals = link.Find(u'=');
    return equals > 0 ? link.Sub(equals + 1, link.Length() - equals) : KelText();
}

KelText WebLinksValues::MakeLink(const KelText& name, const KelText& address)
{
    return name + u"=" + address;
}

KelText WebLinksValues::ShownName(const KelText& link)
{
    const KelText name = NameOf(link);
    // The text is also the link dialog's check box, with its access key.
    return name.IsEmpty() ? WithoutAccessKey(DictTextOr(kTextDefaultLink, u"Default Link")) : name;
}

KelText WebLinksValues::ValueName(size_t position, const KelText& link)
{
    KelText number;
    number.SetNumber(int64_t(position));
    return number + u":" + NameOf(link);
}

void WebLinksValues::Load()
{
    links.clear();
    RegistryKey key(KeyPath());
    if (!key.IsOpen())
        return;
    std::vector<ReadLink> read;
    for (const StoredValue& value : StringValues(key))
    {
        ReadLink entry{false, 0, value.name, KelText()};
        KelText name;
        entry.numbered = SplitValueName(value.name, entry.position, name);
        // A stored name that holds "=" is read as the link text reads it.
        entry.link = MakeLink(entry.numbered ? name : value.name, value.data);
        read.push_back(std::move(entry));
    }
    // Numbered links by their number, then the others; equal places by value
    // name, so that the order does not depend on how the registry lists them.
    std::sort(read.begin(), read.end(),
              [](const ReadLink& left, const ReadLink& right)
              {
                  if (left.numbered != right.numbered)
                      return left.numbered;
                  if (left.position != right.position)
                      return left.position < right.position;
                  return left.valueName.View() < right.valueName.View();
              });
    for (ReadLink& entry : read)
        links.push_back(std::move(entry.link));
}

PageReport WebLinksValues::Save()
{
    std::vector<StoredValue> wanted;
    wanted.reserve(links.size());
    for (size_t i = 0; i < links.size(); ++i)
        wanted.push_back({ValueName(i, links[i]), AddressOf(links[i])});

    // The whole list is written every time, in its current order, replacing
    // what was there.
    const KelText path = KeyPath();
    RegistryKey key;
    if (!key.Create(path))
        return WebLinksNotSaved();
    const std::vector<StoredValue> stored = StringValues(key);

    std::vector<KelText> written;
    bool ok = true;
    for (const StoredValue& value : wanted)
    {
        // A name that changed only in case: the registry would keep the old
        // spelling when the value is written over.
        for (const StoredValue& there : stored)
            if (SameValueName(there.name, value.name) && !there.name.SameAs(value.name))
                ok = key.DeleteValue(there.name) && ok;
        if (!ok || !key.WriteString(value.name, value.data))
        {
            ok = false;
            break;
        }
        written.push_back(value.name);
    }
    // Every other string value was a link that is no longer in the list.
    if (ok)
        for (const StoredValue& there : stored)
            if (std::none_of(wanted.begin(), wanted.end(),
                             [&there](const StoredValue& value)
                             { return SameValueName(there.name, value.name); }))
                ok = key.DeleteValue(there.name) && ok;
    if (ok)
        return PageReport::Accepted();

    // Undo, so that the key holds the old list rather than a mixture.
    for (const KelText& name : written)
        key.DeleteValue(name);
    for (const StoredValue& there : stored)
        key.WriteString(there.name, there.data);
    return WebLinksNotSaved();
}

PageReport WebLinksNotSaved()
{
    // The box must show also without a dictionary: it is the only sign that
    // the links were not written.
    return PageReport::Refused(DictTextOr(kTextWebLinksTitle, u"Web Links"),
                               DictTextOr(kTextSaveFailedCaption, u"Unable to Save Settings"), true,
                               true);
}

// --- EditWebLinks ---------------------------------------------------------------------

EditWebLinks::EditWebLinks(Window* owner, const KelText& product)
    : PropertyPage(owner, TemplateName(kWebLinksTemplate), KelText()), values(product)
{
    values.Load();
    SetTitle(DictTextOr(kTextWebLinksTitle, u"Web Links"));
}

EditWebLinks::~EditWebLinks() = default;

ListView* EditWebLinks::LinkList() const
{
    auto* list = dynamic_cast<ListView*>(FindControl(kLinkList));
    return list && list->Handle() ? list : nullptr;
}

int32_t EditWebLinks::InitPage()
{
    ListView& list = AddControl<ListView>(kLinkList);
    list.AddColumn(DictTextOr(kTextLinkName, u"Name"));
    list.AddColumn(DictTextOr(kTextLinkAddress, u"Address"));
    for (size_t i = 0; i < values.links.size(); ++i)
        ShowRow(list.AddRow(KelText()));
    list.SetFullRowSelect(true);
    if (list.RowCount() > 0)
        list.SelectOnly(0);
    list.OnSelectionChanged([this] { UpdateButtons(); });
    list.OnDoubleClick([this] { Edit(); });

    // The tips are set here, not taken from the template's texts, so that no
    // button goes without one when the dictionary lacks its text.
    struct Button
    {
        int32_t id;
        int32_t image;
        int32_t tip;
        const char16_t* fallback;
        void (EditWebLinks::*action)();
    };
    const Button buttons[] = {
        {kLinkUp, kUpImage, kTextMoveUp, u"Move Up", &EditWebLinks::MoveUp},
        {kLinkAdd, kAddImage, kTextAddLink, u"Add", &EditWebLinks::Add},
        {kLinkEdit, kEditImage, kTextEditLink, u"Edit", &EditWebLinks::Edit},
        {kLinkDelete, kDeleteImage, kTextDeleteLink, u"Delete", &EditWebLinks::Delete},
        {kLinkDown, kDownImage, kTextMoveDown, u"Move Down", &EditWebLinks::MoveDown},
    };
    for (const Button& button : buttons)
    {
        auto action = button.action;
        AddControl<BitmapButton>(button.id, button.image, [this, action] { (this->*action)(); })
            .SetToolTip(DictTextOr(button.tip, button.fallback));
    }
    UpdateButtons();

    SetLayout(kLinkList, kLayoutGrow);
    for (const Button& button : buttons)
        SetLayout(button.id, kLayoutKeepRight);
    FitColumns();
    return 0;
}

void EditWebLinks::OnSizeChanged(int32_t width, int32_t height)
{
    PropertyPage::OnSizeChanged(width, height);
    FitColumns();
}

void EditWebLinks::FitColumns()
{
    if (ListView* list = LinkList())
    {
        const RECT client = list->ClientRect();
        const int32_t width = client.right - client.left;
        list->SetColumnWidth(0, width * 2 / 5);
        list->SetColumnWidth(1, width - width * 2 / 5);
    }
}

void EditWebLinks::ShowRow(int32_t row)
{
    ListView* list = LinkList();
    if (!list || row < 0 || size_t(row) >= values.links.size())
        return;
    const KelText& link = values.links[size_t(row)];
    list->SetItemText(row, 0, WebLinksValues::ShownName(link));
    list->SetItemText(row, 1, WebLinksValues::AddressOf(link));
}

int32_t EditWebLinks::SingleSelection() const
{
    const ListView* list = LinkList();
    return list && list->SelectedCount() == 1 ? list->FirstSelected() : -1;
}

void EditWebLinks::UpdateButtons()
{
    const ListView* list = LinkList();
    const int32_t selected = list ? list->SelectedCount() : 0;
    const int32_t row = SingleSelection();
    const int32_t last = list ? list->RowCount() - 1 : -1;
    EnableControl(kLinkUp, row > 0);
    EnableControl(kLinkDown, row >= 0 && row < last);
    EnableControl(kLinkAdd, true);
    EnableControl(kLinkEdit, row >= 0);
    EnableControl(kLinkDelete, selected > 0);
}

void EditWebLinks::MoveUp()
{
    Move(-1);
}

void EditWebLinks::MoveDown()
{
    Move(1);
}

void EditWebLinks::Move(int32_t step)
{
    ListView* list = LinkList();
    const int32_t row = SingleSelection();
    const int32_t target = row + step;
    if (!list || row < 0 || target < 0 || size_t(target) >= values.links.size())
        return;
    std::swap(values.links[size_t(row)], values.links[size_t(target)]);
    ShowRow(row);
    ShowRow(target);
    list->SelectOnly(target);
    UpdateButtons();
}

bool EditWebLinks::RunLinkDialog(KelText& link)
{
    EditWebLink dialog(this, link);
    if (dialog.Show(true) != IDOK)
        return false;
    link = dialog.Link();
    return true;
}

void EditWebLinks::Add()
{
    ListView* list = LinkList();
    if (!list)
        return;
    KelText link = WebLinksValues::MakeLink(DictTextOr(kTextNewLinkName, u"New Link"), KelText());
    if (!RunLinkDialog(link))
        return;
    const int32_t selected = SingleSelection();
    const auto at = selected >= 0 ? size_t(selected) : values.links.size();
    values.links.insert(values.links.begin() + std::ptrdiff_t(at), link);
    list->InsertRow(int32_t(at), KelText());
    for (auto row = int32_t(at); size_t(row) < values.links.size(); ++row)
        ShowRow(row);
    list->RedrawRows(int32_t(at), list->RowCount() - 1);
    list->SelectOnly(int32_t(at));
    UpdateButtons();
}

void EditWebLinks::Edit()
{
    const int32_t row = SingleSelection();
    if (row < 0 || size_t(row) >= values.links.size())
        return;
    KelText link = values.links[size_t(row)];
    if (!RunLinkDialog(link))
        return;
    values.links[size_t(row)] = link;
    ShowRow(row);
    UpdateButtons();
}

void EditWebLinks::Delete()
{
    ListView* list = LinkList();
    if (!list)
        return;
    const std::vector<int32_t> rows = list->SelectedRows();
    if (rows.empty())
        return;
    const KelText question = DictTextOr(kTextDeleteLinks, u"Delete the selected web links");
    KelText text;
    if (rows.size() > 1)
        text.Format(u"%s - %i ?", question.c_str(), int32_t(rows.size()));
    else
        text.Format(u"%s ?", question.c_str());
    if (ShowMessageBox(text, DictTextOr(kTextWebLinksTitle, u"Web Links"),
                       MB_YESNO | MB_ICONQUESTION) != IDYES)
        return;
    for (auto row = rows.rbegin(); row != rows.rend(); ++row)
    {
        if (size_t(*row) < values.links.size())
            values.links.erase(values.links.begin() + *row);
        list->DeleteRow(*row);
    }
    // The row that took the first removed one's place, or the new last row.
    if (list->RowCount() > 0)
        list->SelectOnly(std::min(rows.front(), list->RowCount() - 1));
    UpdateButtons();
}

int32_t EditWebLinks::ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags)
{
    // A refusal of the base apply is reported like a failed save: the links
    // have not been written either way.
    const int32_t refused = PropertyPage::ApplyPage(pageIndex, reason, flags);
    const int32_t answer = Report(refused ? WebLinksNotSaved() : values.Save());
    return refused ? refused : answer;
}
