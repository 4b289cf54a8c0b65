#pragma once
// Reads the generated Group Policy templates back for the tests: a small
// element tree of an XML file (elements, attributes, text; comments and the
// declaration skipped; the five predefined entities), and what Group Policy
// writes to the registry for a setting of a policy, read from the ADMX alone.
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace PolicyXml
{
struct Element
{
    std::string name;
    std::map<std::string, std::string> attributes;
    std::string text;
    std::vector<std::unique_ptr<Element>> children;

    std::string Attr(const std::string& key) const
    {
        auto at = attributes.find(key);
        return at == attributes.end() ? std::string() : at->second;
    }
    const Element* Child(const std::string& childName) const
    {
        for (const auto& child : children)
            if (child->name == childName)
                return child.get();
        return nullptr;
    }
    // Every element of that name in the tree below, in document order.
    void FindAll(const std::string& wanted, std::vector<const Element*>& found) const
    {
        for (const auto& child : children)
        {
            if (child->name == wanted)
                found.push_back(child.get());
            child->FindAll(wanted, found);
        }
    }
    std::vector<const Element*> All(const std::string& wanted) const
    {
        std::vector<const Element*> found;
        FindAll(wanted, found);
        return found;
    }
};

inline std::string Unescape(const std::string& text)
{
    static const std::pair<const char*, char> entities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string out;
    for (size_t i = 0; i < text.size(); ++i)
    {
        bool replaced = false;
        if (text[i] == '&')
            for (const auto& [entity, c] : entities)
                if (text.compare(i, std::char_traits<char>::length(entity), entity) == 0)
                {
                    out += c;
                    i += std::char_traits<char>::length(entity) - 1;
                    replaced = true;
                    break;
                }
        if (!replaced)
            out += text[i];
    }
    return out;
}

inline std::unique_ptr<Element> Parse(const std::string& xml)
{
    auto root = std::make_unique<Element>();
    std::vector<Element*> open{root.get()};
    size_t at = 0;
    while (at < xml.size())
    {
        const size_t lt = xml.find('<', at);
        if (lt == std::string::npos)
            break;
        open.back()->text += Unescape(xml.substr(at, lt - at));
        if (xml.compare(lt, 4, "<!--") == 0 || xml.compare(lt, 2, "<?") == 0)
        {
            const size_t end = xml.find(xml[lt + 1] == '?' ? "?>" : "-->", lt);
            if (end == std::string::npos)
                throw std::runtime_error("unterminated comment or declaration");
            at = end + (xml[lt + 1] == '?' ? 2 : 3);
            continue;
        }
        const size_t gt = xml.find('>', lt);
        if (gt == std::string::npos)
            throw std::runtime_error("unterminated tag");
        std::string tag = xml.substr(lt + 1, gt - lt - 1);
        at = gt + 1;
        if (tag[0] == '/')
        {
            if (open.size() < 2 || open.back()->name != tag.substr(1))
                throw std::runtime_error("mismatched end tag " + tag);
            open.pop_back();
            continue;
        }
        const bool empty = !tag.empty() && tag.back() == '/';
        if (empty)
            tag.pop_back();
        auto element = std::make_unique<Element>();
        size_t i = tag.find_first_of(" \t\n");
        element->name = tag.substr(0, i);
        while (i != std::string::npos && i < tag.size())
        {
            const size_t nameStart = tag.find_first_not_of(" \t\n", i);
            if (nameStart == std::string::npos)
                break;
            const size_t eq = tag.find('=', nameStart);
            const size_t quote = tag.find('"', eq);
            const size_t close = tag.find('"', quote + 1);
            if (eq == std::string::npos || quote == std::string::npos || close == std::string::npos)
                throw std::runtime_error("bad attribute in <" + element->name + ">");
            element->attributes[tag.substr(nameStart, eq - nameStart)] =
                Unescape(tag.substr(quote + 1, close - quote - 1));
            i = close + 1;
        }
        Element* raw = element.get();
        open.back()->children.push_back(std::move(element));
        if (!empty)
            open.push_back(raw);
    }
    if (open.size() != 1)
        throw std::runtime_error("unclosed element " + open.back()->name);
    return root;
}

inline std::unique_ptr<Element> Load(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path);
    std::stringstream bytes;
    bytes << file.rdbuf();
    return Parse(bytes.str());
}

// --- what Group Policy writes ----------------------------------------------------------

struct RegistryWrite
{
    enum class Type
    {
        Delete,
        DeleteAll, // every value of the key (a list that replaces)
        Dword,
        String,
    };
    Type type;
    std::string key; // below HKEY_CURRENT_USER
    std::string name;
    unsigned long number = 0;
    std::string text;
};

inline RegistryWrite MakeWrite(RegistryWrite::Type type, const std::string& key,
                               const std::string& name, unsigned long number = 0,
                               const std::string& text = {})
{
    return RegistryWrite{type, key, name, number, text};
}

// A setting of a policy: enabled or disabled, with the values of its elements
// (an enum's item index, a text, a list's name/value pairs).
struct Setting
{
    bool enabled = true;
    int item = -1;
    std::string text;
    std::vector<std::pair<std::string, std::string>> entries;
};

inline void AddValue(const Element* holder, const std::string& key, const std::string& name,
                     std::vector<RegistryWrite>& writes)
{
    if (!holder)
        return;
    if (holder->Child("delete"))
        writes.push_back(MakeWrite(RegistryWrite::Type::Delete, key, name));
    else if (const Element* decimal = holder->Child("decimal"))
        writes.push_back(
            MakeWrite(RegistryWrite::Type::Dword, key, name, std::stoul(decimal->Attr("value"))));
    else if (const Element* text = holder->Child("string"))
        writes.push_back(MakeWrite(RegistryWrite::Type::String, key, name, 0, text->text));
}

inline void AddList(const Element* list, const std::string& key, std::vector<RegistryWrite>& writes)
{
    if (!list)
        return;
    for (const Element* item : list->All("item"))
    {
        const std::string itemKey = item->Attr("key").empty() ? key : item->Attr("key");
        AddValue(item->Child("value"), itemKey, item->Attr("valueName"), writes);
    }
}

// The registry writes of a setting, as the Group Policy client makes them
// from the policy's definition.
inline std::vector<RegistryWrite> WritesOf(const Element& policy, const Setting& setting)
{
    std::vector<RegistryWrite> writes;
    const std::string key = policy.Attr("key");
    const std::string valueName = policy.Attr("valueName");
    AddValue(policy.Child(setting.enabled ? "enabledValue" : "disabledValue"), key, valueName,
             writes);
    AddList(policy.Child(setting.enabled ? "enabledList" : "disabledList"), key, writes);
    if (const Element* elements = policy.Child("elements"))
        for (const auto& element : elements->children)
        {
            const std::string elementKey =
                element->Attr("key").empty() ? key : element->Attr("key");
            const std::string name = element->Attr("valueName");
            if (!setting.enabled)
            {
                writes.push_back(MakeWrite(element->name == "list" ? RegistryWrite::Type::DeleteAll
                                                                   : RegistryWrite::Type::Delete,
                                           elementKey, name));
                continue;
            }
            if (element->name == "enum")
            {
                const std::vector<const Element*> items = element->All("item");
                AddValue(items.at(size_t(setting.item))->Child("value"), elementKey, name, writes);
            }
            else if (element->name == "text")
                writes.push_back(
                    MakeWrite(RegistryWrite::Type::String, elementKey, name, 0, setting.text));
            else if (element->name == "list")
            {
                if (element->Attr("additive") != "true")
                    writes.push_back(MakeWrite(RegistryWrite::Type::DeleteAll, elementKey, ""));
                for (const auto& [entryName, data] : setting.entries)
                    writes.push_back(
                        MakeWrite(RegistryWrite::Type::String, elementKey, entryName, 0, data));
            }
        }
    return writes;
}

inline const Element* FindPolicy(const Element& admx, const std::string& name)
{
    for (const Element* policy : admx.All("policy"))
        if (policy->Attr("name") == name)
            return policy;
    return nullptr;
}
} // namespace PolicyXml
