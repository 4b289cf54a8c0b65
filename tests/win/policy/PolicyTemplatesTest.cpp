// The Group Policy templates the build made (bin/PolicyDefinitions): every
// reference of the ADMX resolves in each ADML, and the policies are exactly
// the registry values the pages read and write, each once, with the key,
// value name and kind its field table gives.
#include <gtest/gtest.h>
#include <windows.h>

#include <functional>
#include <map>
#include <set>

#include "app/ProductTable.h"
#include "app/ProgramMain.h"
#include "app/Version.h"
#include "app/pages/EditCADOptions.h"
#include "app/pages/EditCommonOptions.h"
#include "app/pages/EditTyxOptions.h"
#include "app/pages/EditWebLinks.h"
#include "framework/AppEntry.h"
#include "framework/FieldTable.h"
#include "tests/win/policy/PolicyXml.h"

namespace
{
using PolicyXml::Element;

const std::string kFolder = KEL_POLICY_DIR;
const char* const kCultures[] = {"en-US", "de-DE", "fr-FR"};

std::string Key(const KelText& fullPath)
{
    std::string key = fullPath.ToUtf8();
    key.erase(0, std::string("HKEY_CURRENT_USER\\").size());
    while (!key.empty() && key.back() == '\\')
        key.pop_back();
    return key;
}

// What a policy must look like for one stored value.
struct Expected
{
    std::string kind; // "boolean", "string-boolean", "switch-off", "enum", "text", "list"
    std::vector<std::string> options;
    std::string checked;
};

class PolicyTemplates : public ::testing::Test
{
protected:
    void SetUp() override
    {
        SetApplication(new AppEntry(GetModuleHandleW(nullptr)));
        GetAppEntry()->SetApplicationName(KelText(kApplicationName));
        RegisterEditorSwitches(*GetAppEntry());
        GetAppEntry()->RegisterRelease(KelText(), KelText(kRelease), false);
        admx = PolicyXml::Load(kFolder + "/EditKel.admx");
    }
    void TearDown() override { DestroyApplication(); }

    void AddTable(const FieldTable& table)
    {
        for (const auto& owned : table.Fields())
        {
            const StoredField& field = *owned;
            if ((!field.IsRegistry() && field.kind != StoredField::Kind::ValueList) ||
                field.neverWritten)
                continue;
            Expected expected;
            switch (field.kind)
            {
            case StoredField::Kind::Dword:
                expected.kind = "boolean";
                break;
            case StoredField::Kind::Choice:
                expected.kind = "enum";
                for (const char16_t* option : field.options)
                    expected.options.push_back(KelText(option).ToUtf8());
                break;
            case StoredField::Kind::ValueList:
                expected.kind = "list";
                break;
            default:
                expected.kind = field.switchOffOnly            ? "switch-off"
                                : !field.checkedText.IsEmpty() ? "string-boolean"
                                                               : "text";
                expected.checked = field.checkedText.ToUtf8();
                break;
            }
            fields[Key(table.KeyPath(field.branch, field.place)) + "|" + field.name.ToUtf8()] =
                expected;
        }
    }

    // Every value the pages of every product keep in the registry, by
    // "key|value name" (a list by "key|").
    void CollectFields()
    {
        for (const ProductRow& row : productTable)
        {
            const KelText product(row.name);
            if (product == u"Plotwise")
                AddTable(CadOptionsValues(product).Fields());
            else if (product != u"Ledgerline")
            {
                AddTable(TyxOptionsValues(product).Fields());
                AddTable(WebLinksValues(product).Fields());
            }
            AddTable(CommonOptionsValues(product, SettingsFileNameFor(product)).Fields());
        }
        const MsgSwitchList& switches = GetAppEntry()->MessageSwitches();
        for (int32_t i = 0; i < switches.Count(); ++i)
            fields[Key(GetAppEntry()->SwitchKeyPath()) + "|" + switches.At(i)->name.ToUtf8()] =
                Expected{"boolean", {}, {}};
    }

    std::unique_ptr<Element> admx;
    std::map<std::string, Expected> fields;
};

// The kind of a policy and the value it names, read as Group Policy reads it.
std::pair<std::string, Expected> Describe(const Element& policy)
{
    const std::string key = policy.Attr("key");
    Expected found;
    if (!policy.Attr("valueName").empty())
    {
        const Element* on = policy.Child("enabledValue");
        found.kind = on && on->Child("string") ? "string-boolean" : "boolean";
        if (on && on->Child("string"))
            found.checked = on->Child("string")->text;
        return {key + "|" + policy.Attr("valueName"), found};
    }
    if (const Element* off = policy.Child("disabledList"))
    {
        const Element* item = off->Child("item");
        found.kind = policy.Child("enabledList") ? "other" : "switch-off";
        return {(item ? item->Attr("key") : key) + "|" + (item ? item->Attr("valueName") : ""),
                found};
    }
    const Element* elements = policy.Child("elements");
    if (!elements || elements->children.size() != 1)
        return {key + "|?", {"other", {}, {}}};
    const Element& element = *elements->children.front();
    if (element.name == "enum")
    {
        found.kind = "enum";
        for (const Element* item : element.All("item"))
            if (const Element* text = item->Child("value")->Child("string"))
                found.options.push_back(text->text);
    }
    else
        found.kind = element.name;
    const std::string elementKey = element.Attr("key").empty() ? key : element.Attr("key");
    return {elementKey + "|" + element.Attr("valueName"), found};
}

TEST_F(PolicyTemplates, EveryReferenceResolvesInEachLanguage)
{
    std::set<std::string> strings;
    std::set<std::string> presentations;
    const auto collect = [&](const std::string& value)
    {
        if (value.starts_with("$(string."))
            strings.insert(value.substr(9, value.size() - 10));
        if (value.starts_with("$(presentation."))
            presentations.insert(value.substr(15, value.size() - 16));
    };
    std::vector<const Element*> all;
    admx->FindAll("policyDefinitions", all);
    ASSERT_EQ(all.size(), 1u);
    std::function<void(const Element&)> walk = [&](const Element& element)
    {
        for (const auto& [name, value] : element.attributes)
            collect(value);
        for (const auto& child : element.children)
            walk(*child);
    };
    walk(*admx);
    EXPECT_GT(strings.size(), 50u);

    // Each category's parent exists, and each policy's category.
    std::set<std::string> categories;
    for (const Element* category : admx->All("category"))
        categories.insert(category->Attr("name"));
    for (const Element* parent : admx->All("parentCategory"))
        EXPECT_TRUE(categories.count(parent->Attr("ref"))) << parent->Attr("ref");

    for (const char* culture : kCultures)
    {
        SCOPED_TRACE(culture);
        const auto adml = PolicyXml::Load(kFolder + "/" + culture + "/EditKel.adml");
        std::map<std::string, std::string> texts;
        for (const Element* text : adml->All("string"))
        {
            if (!text->Attr("id").empty())
            {
                EXPECT_TRUE(texts.emplace(text->Attr("id"), text->text).second)
                    << "twice: " << text->Attr("id");
            }
        }
        for (const std::string& id : strings)
            EXPECT_FALSE(texts[id].empty()) << "no text for " << id;
        std::map<std::string, const Element*> shown;
        for (const Element* presentation : adml->All("presentation"))
            shown[presentation->Attr("id")] = presentation;
        for (const std::string& id : presentations)
            ASSERT_TRUE(shown.count(id)) << "no presentation " << id;
        // Each presentation shows the elements of its policy by their ids.
        for (const Element* policy : admx->All("policy"))
        {
            const Element* elements = policy->Child("elements");
            const std::string presentation = policy->Attr("presentation");
            if (!elements)
            {
                EXPECT_TRUE(presentation.empty()) << policy->Attr("name");
                continue;
            }
            const Element* view = shown[presentation.substr(15, presentation.size() - 16)];
            ASSERT_TRUE(view) << policy->Attr("name");
            for (const auto& element : elements->children)
            {
                bool found = false;
                for (const auto& control : view->children)
                    found = found || control->Attr("refId") == element->Attr("id");
                EXPECT_TRUE(found) << policy->Attr("name") << " " << element->Attr("id");
            }
        }
    }
}

TEST_F(PolicyTemplates, PoliciesAreExactlyThePagesRegistryValues)
{
    CollectFields();
    std::map<std::string, int> seen;
    for (const Element* policy : admx->All("policy"))
    {
        EXPECT_EQ(policy->Attr("class"), "User") << policy->Attr("name");
        const auto [value, found] = Describe(*policy);
        SCOPED_TRACE(policy->Attr("name") + " " + value);
        ++seen[value];
        auto at = fields.find(value);
        ASSERT_NE(at, fields.end()) << "no page reads this value";
        EXPECT_EQ(found.kind, at->second.kind);
        EXPECT_EQ(found.options, at->second.options);
        EXPECT_EQ(found.checked, at->second.checked);
    }
    for (const auto& [value, expected] : fields)
        EXPECT_EQ(seen[value], 1) << value;
    // Spot checks of names that users and scripts already rely on.
    const std::string branch = "Software\\Orvantix\\Brindlecove " + std::string(KEL_RELEASE);
    EXPECT_EQ(seen[branch + "\\Plotwise|UseDWGDatabase"], 1);
    EXPECT_EQ(seen[branch + "\\COMMON|CachePatterns"], 1);
    EXPECT_EQ(seen[branch + "\\COMMON\\PROMPTS|BadSpec"], 1);
    EXPECT_EQ(seen[branch + "\\Cutwise\\WebLinks|"], 1);
    // The page never writes the welcome screen of Fieldpost or Shopwise.
    EXPECT_EQ(seen[branch + "\\Fieldpost|HideWelcomeScreen"], 0);
    EXPECT_EQ(seen[branch + "\\Tallywise|HideWelcomeScreen"], 1);
}
} // namespace
