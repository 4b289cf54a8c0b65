#include "tools/policygen/PolicyTemplates.h"

#include <windows.h>

#include <map>
#include <memory>
#include <set>
#include <stdexcept>

#include "app/ProductTable.h"
#include "app/pages/EditCADOptions.h"
#include "app/pages/EditCommonOptions.h"
#include "app/pages/EditTyxOptions.h"
#include "app/pages/EditWebLinks.h"
#include "framework/AppEntry.h"
#include "framework/DialogTemplate.h"
#include "framework/FieldTable.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
// --- the controls of a page's dialog template ------------------------------------------

struct TemplateItem
{
    int32_t id = 0;
    uint16_t classAtom = 0; // 0x80 button, 0x81 edit, 0x82 static, 0x85 combo box
    std::u16string className;
    DWORD style = 0;
    KelText text;
};

constexpr uint16_t kButtonAtom = 0x80;
constexpr uint16_t kEditAtom = 0x81;
constexpr uint16_t kComboAtom = 0x85;

// Reads a string-or-ordinal field; answers the ordinal (0 for a string) and
// moves `at` past it.
uint16_t ReadNameOrOrdinal(const WORD*& at, std::u16string& text)
{
    text.clear();
    if (*at == 0xFFFF)
    {
        const uint16_t ordinal = at[1];
        at += 2;
        return ordinal;
    }
    while (*at)
        text.push_back(char16_t(*at++));
    ++at;
    return 0;
}

const WORD* AlignDword(const WORD* at)
{
    return reinterpret_cast<const WORD*>((reinterpret_cast<uintptr_t>(at) + 3) & ~uintptr_t(3));
}

// The items of an extended dialog template (DLGTEMPLATEEX), in template order.
std::vector<TemplateItem> TemplateItems(int32_t templateId)
{
    DialogTemplate dialog;
    if (!dialog.Load(TemplateName(templateId)) || !dialog.IsExtended())
        throw std::runtime_error("dialog template " + std::to_string(templateId) +
                                 " is missing or not an extended template");
    const WORD* at = reinterpret_cast<const WORD*>(dialog.Data());
    const DWORD style = *reinterpret_cast<const DWORD*>(at + 6);
    const WORD count = at[8];
    at += 13; // dlgVer, signature, helpID, exStyle, style, cDlgItems, x, y, cx, cy
    std::u16string skipped;
    ReadNameOrOrdinal(at, skipped); // menu
    ReadNameOrOrdinal(at, skipped); // class
    ReadNameOrOrdinal(at, skipped); // title
    if (style & (DS_SETFONT | DS_SHELLFONT))
    {
        at += 3; // point size, weight, italic and charset
        ReadNameOrOrdinal(at, skipped);
    }
    std::vector<TemplateItem> items;
    for (WORD i = 0; i < count; ++i)
    {
        at = AlignDword(at);
        TemplateItem item;
        item.style = *reinterpret_cast<const DWORD*>(at + 4);
        item.id = *reinterpret_cast<const int32_t*>(at + 10);
        at += 12; // helpID, exStyle, style, x, y, cx, cy, id
        item.classAtom = ReadNameOrOrdinal(at, item.className);
        std::u16string title;
        ReadNameOrOrdinal(at, title);
        item.text = KelText(title.c_str());
        const WORD extra = *at++;
        at = reinterpret_cast<const WORD*>(reinterpret_cast<const BYTE*>(at) + extra);
        items.push_back(std::move(item));
    }
    return items;
}

// A control's text as a label: the dictionary text of a reference, without
// the access-key marks and a closing colon.
KelText LabelText(const KelText& text)
{
    const std::u16string resolved(ResolveTextReference(text).View());
    std::u16string label;
    for (size_t i = 0; i < resolved.size(); ++i)
    {
        if (resolved[i] == u'&' && i + 1 < resolved.size())
            ++i;
        label.push_back(resolved[i]);
    }
    while (!label.empty() &&
           (label.back() == u':' || label.back() == u' ' || label.back() == u'\u00A0'))
        label.pop_back();
    return KelText(label.c_str());
}

// --- building the policies -------------------------------------------------------------

std::u16string IdPart(const KelText& text)
{
    std::u16string id;
    for (char16_t c : text.View())
        if ((c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9'))
            id.push_back(c);
    return id;
}

// The key text below HKEY_CURRENT_USER, without the closing "\".
KelText UserKey(const KelText& fullPath)
{
    std::u16string key(fullPath.View());
    const std::u16string root = u"HKEY_CURRENT_USER\\";
    if (!key.starts_with(root))
        throw std::runtime_error("a policy key is not a key of the current user");
    key.erase(0, root.size());
    while (!key.empty() && key.back() == u'\\')
        key.pop_back();
    return KelText(key.c_str());
}

KelText Text(int32_t number)
{
    return KelText(DictText(number));
}

std::string Narrow(const KelText& text)
{
    return text.ToUtf8();
}

class Builder
{
public:
    explicit Builder(const std::vector<KelText>& languages) : languages(languages) {}

    PolicySet Build()
    {
        AppEntry& app = *GetAppEntry();
        const KelText release = app.GetTextByKind(5);
        set.supportedOn = KelText::Formatted(DictText(kTextPolicySupportedOn), release.c_str());
        set.displayName = KelText::Formatted(u"%s %s", DictText(kTextFamilyName), release.c_str());
        set.description = KelText::Formatted(DictText(kTextPolicyDescription), release.c_str());

        AddCategory(u"Brindlecove", u"", set.displayName);
        AddCategory(u"Common", u"Brindlecove", Text(kTextCommonOptionsTitle));
        AddCategory(u"Prompts", u"Brindlecove", Text(kTextSwitchesTitle));
        // The pages of each product, in the configuration dialog's order.
        for (const ProductRow& row : productTable)
        {
            const KelText product(row.name);
            const std::u16string id = IdPart(product);
            AddCategory(id, u"Brindlecove", product);
            if (product == u"Plotwise")
                AddPage(id + u"_Options", id,
                        KelText::Formatted(u"%s %s", row.name, DictText(kTextOptions)),
                        CadOptionsValues(product).Fields());
            else if (product != u"Ledgerline")
            {
                AddPage(id + u"_Options", id,
                        KelText::Formatted(u"%s %s", row.name, DictText(kTextOptions)),
                        TyxOptionsValues(product).Fields());
                AddPage(id + u"_WebLinks", id, Text(kTextWebLinksTitle),
                        WebLinksValues(product).Fields());
            }
            AddPage(id + u"_Common", id, Text(kTextCommonOptionsTitle),
                    CommonOptionsValues(product, SettingsFileNameFor(product)).Fields());
        }
        AddMessageSwitches(app);
        DropEmptyCategories();
        return std::move(set);
    }

private:
    void AddCategory(const std::u16string& id, const std::u16string& parent, const KelText& name)
    {
        set.categories.push_back(PolicyCategory{id, parent, name});
    }

    void AddPage(const std::u16string& categoryId, const std::u16string& parentId,
                 const KelText& name, const FieldTable& table)
    {
        AddCategory(categoryId, parentId, name);
        const std::vector<TemplateItem> items = TemplateItems(table.PageTemplate());
        for (const auto& owned : table.Fields())
        {
            const StoredField& field = *owned;
            if ((!field.IsRegistry() && field.kind != StoredField::Kind::ValueList) ||
                field.neverWritten)
                continue;
            // Values of the application's branch are the same for every
            // product: one policy, in the shared category.
            const bool shared = field.branch == FieldBranch::Application;
            const KelText key = UserKey(table.KeyPath(field.branch, field.place));
            if (!known
                     .insert(std::u16string(key.View()) + u"\n" + std::u16string(field.name.View()))
                     .second)
                continue;
            Policy policy = FromField(field, items);
            policy.key = key;
            policy.category = shared ? u"Common" : categoryId;
            policy.id = (shared ? std::u16string(u"Common") : parentId) + u"_" +
                        (field.kind == StoredField::Kind::ValueList ? IdPart(field.place)
                                                                    : IdPart(field.name));
            Finish(policy, shared);
        }
    }

    Policy FromField(const StoredField& field, const std::vector<TemplateItem>& items)
    {
        size_t at = 0;
        while (at < items.size() && items[at].id != field.control)
            ++at;
        if (field.control == 0 || at == items.size())
            throw std::runtime_error("the field \"" + Narrow(field.name) +
                                     "\" names no control of its page's template");
        const TemplateItem& control = items[at];
        const bool checkBox =
            control.classAtom == kButtonAtom &&
            ((control.style & 0xF) == BS_AUTOCHECKBOX || (control.style & 0xF) == BS_CHECKBOX);
        Policy policy;
        policy.valueName = field.name;
        // A check box carries its own label; any other control the label
        // before it (a static text or the check box that switches it on).
        policy.displayName = LabelText(checkBox || at == 0 ? control.text : items[at - 1].text);
        policy.elementLabel = policy.displayName;

        if (field.kind == StoredField::Kind::ValueList)
        {
            policy.kind = Policy::Kind::List;
            policy.displayName = Text(kTextWebLinksTitle);
            policy.elementLabel = policy.displayName;
        }
        else if (checkBox && field.kind == StoredField::Kind::Dword)
        {
            policy.kind = Policy::Kind::Boolean;
            policy.enabled = {PolicyValue::Type::Decimal, 1, {}};
            policy.disabled = field.rule == SaveRule::DeleteWhenEmpty
                                  ? PolicyValue{PolicyValue::Type::Delete, 0, {}}
                                  : PolicyValue{PolicyValue::Type::Decimal, 0, {}};
            policy.defaultText = Text(field.defaultNumber != 0 ? kTextYes : kTextNo);
        }
        else if (checkBox && field.kind == StoredField::Kind::String && field.switchOffOnly)
        {
            policy.kind = Policy::Kind::SwitchOffOnly;
            policy.disabled = {PolicyValue::Type::Delete, 0, {}};
            policy.defaultText = Text(kTextNo);
        }
        else if (checkBox && field.kind == StoredField::Kind::String &&
                 !field.checkedText.IsEmpty())
        {
            policy.kind = Policy::Kind::Boolean;
            policy.enabled = {PolicyValue::Type::String, 0, field.checkedText};
            policy.disabled = {PolicyValue::Type::Delete, 0, {}};
            policy.defaultText = Text(kTextNo);
        }
        else if (control.classAtom == kComboAtom && (control.style & 3) == CBS_DROPDOWNLIST &&
                 field.kind == StoredField::Kind::Choice)
        {
            if (field.optionLabels.size() != field.options.size())
                throw std::runtime_error("the choice \"" + Narrow(field.name) +
                                         "\" lacks the labels of its rows");
            policy.kind = Policy::Kind::Enum;
            for (size_t i = 0; i < field.options.size(); ++i)
            {
                policy.items.emplace_back(field.options[i]);
                policy.itemLabels.push_back(Text(field.optionLabels[i]));
            }
            policy.defaultItem = field.defaultNumber;
            policy.defaultText = policy.itemLabels.at(size_t(field.defaultNumber));
        }
        else if (control.classAtom == kComboAtom && field.kind == StoredField::Kind::String &&
                 field.languageNames)
        {
            policy.kind = Policy::Kind::Suggestions;
            policy.suggestions = languages;
            policy.defaultText = languages.empty() ? KelText() : languages.front();
        }
        else if (control.classAtom == kEditAtom && field.kind == StoredField::Kind::String)
        {
            policy.kind = Policy::Kind::Text;
            policy.defaultText =
                field.defaultText.IsEmpty() ? Text(kTextPolicyEmpty) : field.defaultText;
        }
        else
            throw std::runtime_error("the field \"" + Narrow(field.name) +
                                     "\" is shown by a control no policy can show");
        return policy;
    }

    void AddMessageSwitches(AppEntry& app)
    {
        const KelText key = UserKey(app.SwitchKeyPath());
        const MsgSwitchList& switches = app.MessageSwitches();
        for (int32_t i = 0; i < switches.Count(); ++i)
        {
            const MsgSwitch* known = switches.At(i);
            if (!known)
                continue;
            Policy policy;
            policy.kind = Policy::Kind::Boolean;
            policy.id = u"Prompt_" + IdPart(known->name);
            policy.category = u"Prompts";
            policy.key = key;
            policy.valueName = known->name;
            policy.displayName = known->text;
            policy.enabled = {PolicyValue::Type::Decimal, 1, {}};
            policy.disabled = {PolicyValue::Type::Decimal, 0, {}};
            // A switch without a stored value is shown.
            policy.defaultText = Text(kTextYes);
            Finish(policy, true);
        }
    }

    // The explain text, and the check that every id is used once.
    void Finish(Policy& policy, bool everyProduct)
    {
        if (!ids.insert(policy.id).second)
            throw std::runtime_error("two policies would be named " +
                                     Narrow(KelText(policy.id.c_str())));
        KelText explain = policy.displayName + u"\n\n";
        switch (policy.kind)
        {
        case Policy::Kind::Boolean:
            explain += Text(kTextPolicyBoolean);
            break;
        case Policy::Kind::SwitchOffOnly:
            explain += Text(kTextPolicySwitchOffOnly);
            break;
        case Policy::Kind::List:
            explain += Text(kTextPolicyWebLinks);
            break;
        default:
            explain += Text(kTextPolicySetting);
            break;
        }
        explain += u"\n\n";
        if (policy.kind != Policy::Kind::List)
            explain +=
                KelText::Formatted(DictText(kTextPolicyDefault), policy.defaultText.c_str()) +
                u"\n";
        explain +=
            KelText::Formatted(DictText(kTextPolicyRegistry), policy.key.c_str(),
                               policy.kind == Policy::Kind::List ? u"*" : policy.valueName.c_str());
        explain += u"\n\n";
        if (everyProduct)
            explain += Text(kTextPolicyEveryProduct) + u" ";
        explain += Text(kTextPolicySameValue);
        policy.explain = explain;
        set.policies.push_back(std::move(policy));
    }

    void DropEmptyCategories()
    {
        // A category is kept while a policy or a kept category is in it.
        std::set<std::u16string> used;
        for (const Policy& policy : set.policies)
            used.insert(policy.category);
        for (bool grew = true; grew;)
        {
            grew = false;
            for (const PolicyCategory& category : set.categories)
                if (used.count(category.id) && !category.parent.empty() &&
                    used.insert(category.parent).second)
                    grew = true;
        }
        std::erase_if(set.categories,
                      [&used](const PolicyCategory& category) { return !used.count(category.id); });
    }

    std::vector<KelText> languages;
    PolicySet set;
    std::set<std::u16string> known;
    std::set<std::u16string> ids;
};

// --- writing the files ---------------------------------------------------------------

std::string Escaped(const KelText& text)
{
    std::string out;
    for (char c : text.ToUtf8())
        switch (c)
        {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\r':
            break;
        default:
            out += c;
        }
    return out;
}

std::string Escaped(const std::u16string& text)
{
    return Escaped(KelText(text.c_str()));
}

std::string StringRef(const std::u16string& id)
{
    return "$(string." + Escaped(id) + ")";
}

std::string ValueXml(const PolicyValue& value)
{
    switch (value.type)
    {
    case PolicyValue::Type::Delete:
        return "<delete />";
    case PolicyValue::Type::Decimal:
        return "<decimal value=\"" + std::to_string(value.number) + "\" />";
    case PolicyValue::Type::String:
        return "<string>" + Escaped(value.text) + "</string>";
    default:
        return {};
    }
}

const char kNamespaces[] = "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
                           "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                           "revision=\"%s\" schemaVersion=\"1.0\" "
                           "xmlns=\"http://schemas.microsoft.com/GroupPolicy/2006/07/"
                           "PolicyDefinitions\"";

std::string Header(const char* element, const std::string& revision)
{
    std::string attributes(kNamespaces);
    attributes.replace(attributes.find("%s"), 2, revision);
    return std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<") + element + " " +
           attributes + ">\n";
}

bool HasElement(const Policy& policy)
{
    return policy.kind != Policy::Kind::Boolean && policy.kind != Policy::Kind::SwitchOffOnly;
}

std::u16string ItemId(const Policy& policy, size_t index)
{
    return policy.id + u"_" + IdPart(policy.items[index]);
}
} // namespace

PolicySet MakePolicySet(const std::vector<KelText>& languageNames)
{
    return Builder(languageNames).Build();
}

std::string AdmxText(const PolicySet& set, const std::string& revision)
{
    std::string x = Header("policyDefinitions", revision);
    x += "  <policyNamespaces>\n"
         "    <target prefix=\"editkel\" namespace=\"Orvantix.Policies.EditKel\" />\n"
         "  </policyNamespaces>\n";
    x += "  <resources minRequiredRevision=\"" + revision + "\" />\n";
    x += "  <supportedOn>\n    <definitions>\n"
         "      <definition name=\"SUPPORTED_EditKel\" "
         "displayName=\"$(string.SUPPORTED_EditKel)\" />\n"
         "    </definitions>\n  </supportedOn>\n";
    x += "  <categories>\n";
    for (const PolicyCategory& category : set.categories)
    {
        x += "    <category name=\"" + Escaped(category.id) + "\" displayName=\"" +
             StringRef(u"Category_" + category.id) + "\"";
        if (category.parent.empty())
            x += " />\n";
        else
            x += ">\n      <parentCategory ref=\"" + Escaped(category.parent) +
                 "\" />\n    </category>\n";
    }
    x += "  </categories>\n  <policies>\n";
    for (const Policy& policy : set.policies)
    {
        x += "    <policy name=\"" + Escaped(policy.id) + "\" class=\"User\" displayName=\"" +
             StringRef(policy.id) + "\" explainText=\"" + StringRef(policy.id + u"_Explain") + "\"";
        if (HasElement(policy))
            x += " presentation=\"$(presentation." + Escaped(policy.id) + ")\"";
        x += " key=\"" + Escaped(policy.key) + "\"";
        if (policy.kind == Policy::Kind::Boolean)
            x += " valueName=\"" + Escaped(policy.valueName) + "\"";
        x += ">\n      <parentCategory ref=\"" + Escaped(policy.category) + "\" />\n";
        x += "      <supportedOn ref=\"SUPPORTED_EditKel\" />\n";
        if (policy.kind == Policy::Kind::Boolean)
        {
            x += "      <enabledValue>" + ValueXml(policy.enabled) + "</enabledValue>\n";
            x += "      <disabledValue>" + ValueXml(policy.disabled) + "</disabledValue>\n";
        }
        if (policy.kind == Policy::Kind::SwitchOffOnly)
            x += "      <disabledList>\n        <item key=\"" + Escaped(policy.key) +
                 "\" valueName=\"" + Escaped(policy.valueName) + "\">\n          <value>" +
                 ValueXml(policy.disabled) + "</value>\n        </item>\n      </disabledList>\n";
        if (HasElement(policy))
        {
            x += "      <elements>\n";
            switch (policy.kind)
            {
            case Policy::Kind::Enum:
                x += "        <enum id=\"Value\" valueName=\"" + Escaped(policy.valueName) +
                     "\" required=\"true\">\n";
                for (size_t i = 0; i < policy.items.size(); ++i)
                    x += "          <item displayName=\"" + StringRef(ItemId(policy, i)) +
                         "\">\n            <value>" +
                         ValueXml({PolicyValue::Type::String, 0, policy.items[i]}) +
                         "</value>\n          </item>\n";
                x += "        </enum>\n";
                break;
            case Policy::Kind::List:
                x += "        <list id=\"Value\" key=\"" + Escaped(policy.key) +
                     "\" additive=\"false\" explicitValue=\"true\" />\n";
                break;
            default:
                x += "        <text id=\"Value\" valueName=\"" + Escaped(policy.valueName) +
                     "\" maxLength=\"1023\" />\n";
                break;
            }
            x += "      </elements>\n";
        }
        x += "    </policy>\n";
    }
    x += "  </policies>\n</policyDefinitions>\n";
    return x;
}

std::string AdmlText(const PolicySet& set, const std::string& revision)
{
    std::string x = Header("policyDefinitionResources", revision);
    x += "  <displayName>" + Escaped(set.displayName) + "</displayName>\n";
    x += "  <description>" + Escaped(set.description) + "</description>\n";
    x += "  <resources>\n    <stringTable>\n";
    auto text = [&x](const std::u16string& id, const KelText& value)
    { x += "      <string id=\"" + Escaped(id) + "\">" + Escaped(value) + "</string>\n"; };
    text(u"SUPPORTED_EditKel", set.supportedOn);
    for (const PolicyCategory& category : set.categories)
        text(u"Category_" + category.id, category.displayName);
    for (const Policy& policy : set.policies)
    {
        text(policy.id, policy.displayName);
        text(policy.id + u"_Explain", policy.explain);
        for (size_t i = 0; i < policy.items.size(); ++i)
            text(ItemId(policy, i), policy.itemLabels[i]);
    }
    x += "    </stringTable>\n    <presentationTable>\n";
    for (const Policy& policy : set.policies)
    {
        if (!HasElement(policy))
            continue;
        x += "      <presentation id=\"" + Escaped(policy.id) + "\">\n";
        const std::string label = Escaped(policy.elementLabel);
        switch (policy.kind)
        {
        case Policy::Kind::Enum:
            x += "        <dropdownList refId=\"Value\" noSort=\"true\" defaultItem=\"" +
                 std::to_string(policy.defaultItem) + "\">" + label + "</dropdownList>\n";
            break;
        case Policy::Kind::List:
            x += "        <listBox refId=\"Value\">" + label + "</listBox>\n";
            break;
        case Policy::Kind::Suggestions:
            x += "        <comboBox refId=\"Value\" noSort=\"true\">\n          <label>" + label +
                 "</label>\n          <default>" + Escaped(policy.defaultText) + "</default>\n";
            for (const KelText& suggestion : policy.suggestions)
                x += "          <suggestion>" + Escaped(suggestion) + "</suggestion>\n";
            x += "        </comboBox>\n";
            break;
        default:
            x += "        <textBox refId=\"Value\">\n          <label>" + label +
                 "</label>\n        </textBox>\n";
            break;
        }
        x += "      </presentation>\n";
    }
    x += "    </presentationTable>\n  </resources>\n</policyDefinitionResources>\n";
    return x;
}

KelText CultureName(uint32_t languageId)
{
    wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
    if (LCIDToLocaleName(LCID(languageId), name, LOCALE_NAME_MAX_LENGTH, 0) > 0)
        return KelText(reinterpret_cast<const char16_t*>(name));
    return KelText(u"en-US");
}
