#include "app/deploy/TransferPages.h"

#include <algorithm>
#include <utility>

#include "app/ProductTable.h"
#include "app/SettingsContext.h"
#include "app/pages/EditCADOptions.h"
#include "app/pages/EditCommonOptions.h"
#include "app/pages/EditTyxOptions.h"
#include "app/pages/EditWebLink.h"
#include "app/pages/EditWebLinks.h"
#include "app/pages/ProgramPathsReport.h"
#include "framework/AppEntry.h"
#include "framework/FieldTable.h"
#include "framework/RegistryKey.h"
#include "settings/iniFile.h"
#include "text/TextNumbers.h"

namespace
{
using Items = std::vector<KelText>;

Items One(const KelText& value)
{
    return Items{value};
}

KelText First(const Items& items)
{
    return items.empty() ? KelText() : items.front();
}

KelText SwitchText(int32_t value)
{
    return KelText(value != 0 ? kTransferYes : kTransferNo);
}

bool IsYes(const Items& items)
{
    return First(items) == kTransferYes;
}

// Whether the field of that name is stored as the page reads it: a registry
// value of the field's type (a choice holding one of its texts), or a key of
// the settings file (a choice holding one of its texts). Anything else the
// page shows as its default.
bool FieldStored(const FieldTable& table, const char16_t* name)
{
    for (const auto& owned : table.Fields())
    {
        const StoredField& field = *owned;
        if (field.name != name)
            continue;
        if (field.IsRegistry())
        {
            const RegistryKey key(table.KeyPath(field.branch, field.place));
            if (!key.IsOpen())
                return false;
            if (field.kind == StoredField::Kind::Dword)
            {
                uint32_t number = 0;
                return key.ReadDword(field.name, number) == RegistryRead::Ok;
            }
            KelText text;
            if (key.ReadString(field.name, text) != RegistryRead::Ok)
                return false;
            return field.kind != StoredField::Kind::Choice || field.OptionIndex(text) >= 0;
        }
        if (!table.Document())
            return false;
        // A line feed never reaches a value read from a file: it marks "absent".
        const KelText absent(u"\n");
        KelText text;
        iniFile file(table.Document()->path);
        file.Add(new iniString(field.place, field.name, &text, absent));
        file.ReadAll();
        if (text.SameAs(absent))
            return false;
        return field.kind != StoredField::Kind::SettingsChoice || field.OptionIndex(text) >= 0;
    }
    return false;
}

TransferKey MakeKey(const char16_t* name, TransferType type, std::function<Items()> get,
                    std::function<void(const Items&)> set, std::function<bool()> stored)
{
    TransferKey key;
    key.name = name;
    key.type = type;
    if (type == TransferType::Switch)
        key.choices = {KelText(kTransferYes), KelText(kTransferNo)};
    key.get = std::move(get);
    key.set = std::move(set);
    key.stored = std::move(stored);
    return key;
}

// The keys of a value class bound to its members through the page's pointer
// to it, which Load replaces.
template <typename Values>
class ValueKeys
{
public:
    explicit ValueKeys(std::unique_ptr<Values>& values) : values(values) {}

    // A yes/no member (any non-zero value shows as "YES").
    TransferKey Switch(const char16_t* name, int32_t Values::*member) const
    {
        auto& held = values;
        return MakeKey(
            name, TransferType::Switch,
            [&held, member] { return One(SwitchText((*held).*member)); },
            [&held, member](const Items& items) { (*held).*member = IsYes(items) ? 1 : 0; },
            [&held, name] { return FieldStored(held->Fields(), name); });
    }

    // A member that indexes into `options`.
    TransferKey Choice(const char16_t* name, int32_t Values::*member,
                       const std::vector<const char16_t*>& options) const
    {
        auto& held = values;
        TransferKey key = MakeKey(
            name, TransferType::Choice,
            [&held, member, options]
            {
                const int32_t index = (*held).*member;
                return One(index >= 0 && size_t(index) < options.size()
                               ? KelText(options[size_t(index)])
                               : KelText());
            },
            [&held, member, options](const Items& items)
            {
                const KelText wanted = First(items);
                for (size_t i = 0; i < options.size(); ++i)
                    if (wanted == options[i])
                        (*held).*member = int32_t(i);
            },
            [&held, name] { return FieldStored(held->Fields(), name); });
        for (const char16_t* option : options)
            key.choices.emplace_back(option);
        return key;
    }

    // A text member, kept only while `use` (when given) is set: setting the
    // text sets `use` exactly when the text is not empty.
    TransferKey Text(const char16_t* name, KelText Values::*member,
                     int32_t Values::*use = nullptr) const
    {
        auto& held = values;
        return MakeKey(
            name, TransferType::Text,
            [&held, member, use]
            { return One(use && (*held).*use == 0 ? KelText() : (*held).*member); },
            [&held, member, use](const Items& items)
            {
                (*held).*member = First(items);
                if (use)
                    (*held).*use = First(items).IsEmpty() ? 0 : 1;
            },
            [&held, name] { return FieldStored(held->Fields(), name); });
    }

private:
    std::unique_ptr<Values>& values;
};

KelText ProductBranch(const AppEntry& app, const KelText& product)
{
    return app.GetRegistryKeyPath(product, true);
}

KelText ApplicationKey(const AppEntry& app, const char16_t* sub)
{
    return app.GetRegistryKeyPath(KelText(), true) + sub + u"\\";
}

// --- program paths -----------------------------------------------------------------

class ProgramPathsTransfer final : public TransferPage
{
public:
    ProgramPathsTransfer(SettingsContext& store, KelText product, KelText path)
        : store(store), product(std::move(product)), path(std::move(path))
    {
        Load();
        // Each kind once, in the product's order (a product may list one twice).
        std::vector<int32_t> listed;
        for (int32_t i = 0; i < store.Kinds().Count(); ++i)
        {
            const int32_t kind = store.Kinds().At(i);
            const KelText name = SettingsContext::KindName(kind);
            if (std::find(listed.begin(), listed.end(), kind) != listed.end() || name == u"ERROR")
                continue;
            listed.push_back(kind);
            TransferKey key = MakeKey(
                u"", TransferType::Folder, [this, kind] { return One(this->store.PathOf(kind)); },
                [this, kind](const Items& items) { this->store.SetPath(kind, First(items)); },
                [this, kind] { return IsOwnFolder(kind); });
            key.name = name;
            keys.push_back(std::move(key));
        }
    }

    KelText Section() const override { return KelText(u"Program Paths"); }
    void Load() override { store.SetSettingsFile(path, product, FindProductDescriptor(product)); }

    // Whether a kind has a folder of its own. The store's save writes every
    // kind, defaults included; a folder that is the kind's default inside
    // this configuration still counts as the default, so that an export never
    // pins this machine's default folders on another.
    bool IsOwnFolder(int32_t kind)
    {
        return store.IsPathSet(kind) &&
               store.PathOf(kind) != store.SettingsFolder() + SettingsContext::DefaultFolder(kind);
    }
    PageReport Save() override { return SaveProgramPaths(store); }
    TransferPlaces Places() const override { return {{path}, {}}; }

private:
    SettingsContext& store;
    KelText product;
    KelText path;
};

// --- CAD options (Plotwise) ---------------------------------------------------------

class CadOptionsTransfer final : public TransferPage
{
public:
    CadOptionsTransfer(AppEntry& app, KelText product) : app(app), product(std::move(product))
    {
        Load();
        using V = CadOptionsValues;
        const ValueKeys<V> make(values);
        keys.push_back(make.Text(u"Icons", &V::iconsFolder, &V::useIcons));
        keys.push_back(make.Text(u"MenuGroup", &V::menuGroup, &V::useMenuGroup));
        keys.push_back(make.Text(u"Pop0", &V::firstPopup, &V::useFirstPopup));
        keys.push_back(make.Switch(u"SkipMenuLoad", &V::skipMenuLoad));
        // The page's box means "do not store": stored as "FALSE", shown here
        // as the value's own meaning.
        TransferKey storeEstimating = make.Switch(u"StoreEstDatabase", &V::keepEstimatingOff);
        storeEstimating.get = [this] { return One(SwitchText(values->keepEstimatingOff == 0)); };
        storeEstimating.set = [this](const Items& items)
        { values->keepEstimatingOff = IsYes(items) ? 0 : 1; };
        keys.push_back(std::move(storeEstimating));
        keys.push_back(
            make.Choice(u"UseDWGDatabase", &V::drawingDatabase, {u"No", u"Yes", u"Prompt"}));
        keys.push_back(make.Switch(u"SkipValidateButtons", &V::skipValidateButtons));
        keys.push_back(make.Switch(u"ButtonLoadReport", &V::buttonLoadReport));
    }

    KelText Section() const override { return KelText(u"CAD Options"); }
    void Load() override
    {
        values = std::make_unique<CadOptionsValues>(product);
        values->Load();
        // The page starts with its boxes clear, so that only texts the user
        // ticks again are kept; an import keeps every text it does not give.
        values->useIcons = values->iconsFolder.IsEmpty() ? 0 : 1;
        values->useMenuGroup = values->menuGroup.IsEmpty() ? 0 : 1;
        values->useFirstPopup = values->firstPopup.IsEmpty() ? 0 : 1;
    }
    PageReport Save() override { return values->Save(); }
    TransferPlaces Places() const override { return {{}, {ProductBranch(app, product)}}; }

private:
    AppEntry& app;
    KelText product;
    std::unique_ptr<CadOptionsValues> values;
};

// --- product options (all products but Plotwise and Ledgerline) ---------------------

class TyxOptionsTransfer final : public TransferPage
{
public:
    TyxOptionsTransfer(AppEntry& app, KelText product) : app(app), product(std::move(product))
    {
        Load();
        using V = TyxOptionsValues;
        const ValueKeys<V> make(values);
        keys.push_back(make.Text(u"SUPPORT", &V::support));
        for (auto [name, member] : {std::pair{u"QUICKFULLEDIT", &V::quickFullEdit},
                                    std::pair{u"CANEDITCATS", &V::canEditCats},
                                    std::pair{u"PRINTWITHNONC", &V::printWithNonc}})
        {
            keys.push_back(make.Choice(name, member, {u"NO", u"YES"}));
            keys.back().type = TransferType::Switch;
            keys.back().access =
                values->CanEditPermissions() ? TransferAccess::Free : TransferAccess::Fixed;
        }
        keys.push_back(make.Text(u"Caption", &V::caption, &V::useCaption));
        keys.push_back(make.Text(u"Help File", &V::helpFile, &V::useHelpFile));
        keys.push_back(make.Switch(u"HideWelcomeScreen", &V::hideWelcomeScreen));
        keys.back().access =
            values->StoresWelcomeScreen() ? TransferAccess::Free : TransferAccess::NotStored;
    }

    KelText Section() const override { return KelText(u"Product Options"); }
    void Load() override
    {
        values = std::make_unique<TyxOptionsValues>(product);
        values->Load();
    }
    PageReport Save() override { return values->Save(); }
    TransferPlaces Places() const override
    {
        return {{values->SettingsPath()}, {ProductBranch(app, product)}};
    }

private:
    AppEntry& app;
    KelText product;
    std::unique_ptr<TyxOptionsValues> values;
};

// --- web links (all products but Plotwise and Ledgerline) ----------------------------

// The links in order, one "Link = name=address" line each ("Link = =address"
// for the default link). A file that gives links gives the whole list.
class WebLinksTransfer final : public TransferPage
{
public:
    explicit WebLinksTransfer(KelText product) : product(std::move(product))
    {
        Load();
        TransferKey key = MakeKey(
            u"Link", TransferType::List, [this] { return values->links; },
            [this](const Items& items) { values->links = items; },
            [this] { return !values->links.empty(); });
        // Blanks around the "=" are the file's, not the link's.
        key.canonical = [](const KelText& item)
        {
            KelText name = WebLinksValues::NameOf(item);
            KelText address = WebLinksValues::AddressOf(item);
            return item.Find(u'=') > 0 ? WebLinksValues::MakeLink(name.Trim(), address.Trim())
                                       : item;
        };
        // The link dialog's rules: an address, and a name unless it is the
        // default link (a name cannot hold "=": the first one ends it).
        key.itemProblem = [](const KelText& item)
        {
            const KelText name = WebLinksValues::NameOf(item);
            if (item.Find(u'=') <= 0)
                return int32_t(kTextLinkNeedsAddress);
            return EditWebLink::LinkProblem(name.IsEmpty(), name, WebLinksValues::AddressOf(item));
        };
        key.comment =
            u"One line per link, in order: \"Link = name=address\"; \"Link = =address\" is\n"
            u"the default link, and \"Link =\" alone stands for no links.";
        keys.push_back(std::move(key));
    }

    KelText Section() const override { return KelText(u"Web Links"); }
    void Load() override
    {
        values = std::make_unique<WebLinksValues>(product);
        values->Load();
    }
    PageReport Save() override { return values->Save(); }
    TransferPlaces Places() const override { return {{}, {values->KeyPath()}}; }

private:
    KelText product;
    std::unique_ptr<WebLinksValues> values;
};

// --- common options ------------------------------------------------------------------

class CommonOptionsTransfer final : public TransferPage
{
public:
    CommonOptionsTransfer(AppEntry& app, KelText product, KelText fileName)
        : app(app), product(std::move(product)), fileName(std::move(fileName))
    {
        Load();
        using V = CommonOptionsValues;
        const ValueKeys<V> make(values);

        TransferKey autoLogin = make.Switch(u"Auto Login", &V::autoLogin);
        autoLogin.access = TransferAccess::SwitchOffOnly;
        autoLogin.stored = [this] { return values->autoLogin != 0; };
        keys.push_back(std::move(autoLogin));

        TransferKey startIn = make.Text(u"StartIn", &V::startFolder, &V::useStartFolder);
        startIn.stored = [this] { return values->useStartFolder != 0; };
        keys.push_back(std::move(startIn));

        // "English" is the language of no stored value.
        TransferKey language = make.Text(u"Language", &V::language);
        language.get = [this]
        {
            const KelText& stored = values->language;
            return One(stored.IsEmpty() || stored == u"English" ? KelText(u"English") : stored);
        };
        language.stored = [this]
        { return !values->language.IsEmpty() && values->language != u"English"; };
        keys.push_back(std::move(language));

        keys.push_back(make.Switch(u"VirtualItemFolders", &V::virtualItemFolders));
        keys.push_back(make.Switch(u"CachePatterns", &V::cachePatterns));
        keys.push_back(make.Switch(u"FancyToolbars", &V::fancyToolbars));
        keys.push_back(make.Switch(u"RegionalCSV", &V::regionalCsv));
        keys.push_back(make.Choice(u"NUMPAD", &V::numpad, {u"OFF", u"ON"}));
    }

    KelText Section() const override { return KelText(u"Common Options"); }
    void Load() override
    {
        values = std::make_unique<CommonOptionsValues>(product, fileName);
        values->Load();
    }
    PageReport Save() override { return values->Save(); }
    TransferPlaces Places() const override
    {
        return {{values->SettingsPath()},
                {ProductBranch(app, product), ApplicationKey(app, u"COMMON"),
                 ApplicationKey(app, u"Start In")}};
    }

private:
    AppEntry& app;
    KelText product;
    KelText fileName;
    std::unique_ptr<CommonOptionsValues> values;
};

// --- message prompts -----------------------------------------------------------------

// The message-switch page has no value class: its rows are the application's
// switches, and applying it stores every row.
class MessagePromptsTransfer final : public TransferPage
{
public:
    explicit MessagePromptsTransfer(AppEntry& app) : app(app)
    {
        Load();
        const MsgSwitchList& switches = app.MessageSwitches();
        for (int32_t i = 0; i < switches.Count(); ++i)
        {
            const MsgSwitch* known = switches.At(i);
            if (!known)
                continue;
            const size_t row = size_t(i);
            const KelText name = known->name;
            TransferKey key = MakeKey(
                u"", TransferType::Switch, [this, row] { return One(SwitchText(shown[row])); },
                [this, row](const Items& items) { shown[row] = IsYes(items) ? 1 : 0; },
                [this, name]
                {
                    uint32_t state = 0;
                    return RegistryKey(this->app.SwitchKeyPath()).ReadDword(name, state) !=
                           RegistryRead::Absent;
                });
            key.name = name;
            keys.push_back(std::move(key));
        }
    }

    KelText Section() const override { return KelText(u"Message Prompts"); }
    void Load() override
    {
        shown.clear();
        const MsgSwitchList& switches = app.MessageSwitches();
        for (int32_t i = 0; i < switches.Count(); ++i)
        {
            const MsgSwitch* known = switches.At(i);
            shown.push_back(known && app.IsSwitchShown(known->code) ? 1 : 0);
        }
    }
    PageReport Save() override
    {
        const MsgSwitchList& switches = app.MessageSwitches();
        for (int32_t i = 0; i < switches.Count() && size_t(i) < shown.size(); ++i)
            if (const MsgSwitch* known = switches.At(i))
                app.SetSwitchShown(known->code, shown[size_t(i)] != 0);
        // Like the page, which closes also when the registry refuses.
        return PageReport::Accepted();
    }
    TransferPlaces Places() const override { return {{}, {app.SwitchKeyPath()}}; }

private:
    AppEntry& app;
    std::vector<int32_t> shown;
};
} // namespace

const TransferKey* TransferPage::FindKey(const KelText& name) const
{
    for (const TransferKey& key : keys)
        if (key.name == name)
            return &key;
    return nullptr;
}

std::vector<std::unique_ptr<TransferPage>> MakeTransferPages(AppEntry& app, SettingsContext& store,
                                                             const KelText& product)
{
    const KelText fileName = SettingsFileNameFor(product);
    std::vector<std::unique_ptr<TransferPage>> pages;
    // The pages of the configuration dialog, in its order.
    pages.push_back(
        std::make_unique<ProgramPathsTransfer>(store, product, app.SettingsFolder() + fileName));
    if (product == u"Plotwise")
        pages.push_back(std::make_unique<CadOptionsTransfer>(app, product));
    else if (product != u"Ledgerline")
    {
        pages.push_back(std::make_unique<TyxOptionsTransfer>(app, product));
        pages.push_back(std::make_unique<WebLinksTransfer>(product));
    }
    pages.push_back(std::make_unique<CommonOptionsTransfer>(app, product, fileName));
    pages.push_back(std::make_unique<MessagePromptsTransfer>(app));
    return pages;
}
