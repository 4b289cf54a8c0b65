#include "framework/FieldTable.h"

#include <map>
#include <utility>

#include "framework/AppEntry.h"
#include "framework/RegistryKey.h"

// --- StoredField ---------------------------------------------------------------

KelText StoredField::OptionText() const
{
    if (!number || *number < 0 || size_t(*number) >= options.size())
        return KelText();
    return KelText(options[size_t(*number)]);
}

int32_t StoredField::OptionIndex(const KelText& value) const
{
    for (size_t i = 0; i < options.size(); ++i)
        if (value == options[i])
            return int32_t(i);
    return -1;
}

// --- FieldTable -------------------------------------------------------------------

FieldTable::FieldTable(KelText productName) : product(std::move(productName)) {}

FieldTable::~FieldTable() = default;

StoredField& FieldTable::Add(std::unique_ptr<StoredField> field)
{
    fields.push_back(std::move(field));
    return *fields.back();
}

namespace
{
std::unique_ptr<StoredField> NewField(StoredField::Kind kind, FieldBranch branch,
                                      const KelText& place, const KelText& name, SaveRule rule)
{
    auto field = std::make_unique<StoredField>();
    field->kind = kind;
    field->branch = branch;
    field->place = place;
    field->name = name;
    field->rule = rule;
    return field;
}
} // namespace

StoredField& FieldTable::Dword(FieldBranch branch, const KelText& subKey, const KelText& name,
                               int32_t* member, int32_t defaultValue, SaveRule rule)
{
    auto field = NewField(StoredField::Kind::Dword, branch, subKey, name, rule);
    field->number = member;
    field->defaultNumber = defaultValue;
    return Add(std::move(field));
}

StoredField& FieldTable::String(FieldBranch branch, const KelText& subKey, const KelText& name,
                                KelText* member, const KelText& defaultValue, SaveRule rule)
{
    auto field = NewField(StoredField::Kind::String, branch, subKey, name, rule);
    field->text = member;
    field->defaultText = defaultValue;
    return Add(std::move(field));
}

StoredField& FieldTable::Choice(FieldBranch branch, const KelText& subKey, const KelText& name,
                                int32_t* member, std::vector<const char16_t*> options,
                                int32_t defaultIndex, SaveRule rule)
{
    auto field = NewField(StoredField::Kind::Choice, branch, subKey, name, rule);
    field->number = member;
    field->options = std::move(options);
    field->defaultNumber = defaultIndex;
    return Add(std::move(field));
}

StoredField& FieldTable::ValueList(FieldBranch branch, const KelText& subKey)
{
    return Add(NewField(StoredField::Kind::ValueList, branch, subKey, KelText(), SaveRule::Manual));
}

void FieldTable::OpenDocument(const KelText& path)
{
    document = std::make_unique<iniFile>(path);
}

StoredField& FieldTable::SettingsString(const KelText& section, const KelText& key, KelText* member,
                                        const KelText& defaultValue)
{
    auto field = NewField(StoredField::Kind::SettingsString, FieldBranch::Product, section, key,
                          SaveRule::Always);
    field->text = member;
    field->defaultText = defaultValue;
    if (document)
        document->Add(new iniString(section, key, member, defaultValue));
    return Add(std::move(field));
}

StoredField& FieldTable::SettingsChoice(const KelText& section, const KelText& key, int32_t* member,
                                        std::vector<const char16_t*> options, int32_t defaultIndex)
{
    auto field = NewField(StoredField::Kind::SettingsChoice, FieldBranch::Product, section, key,
                          SaveRule::Always);
    field->number = member;
    field->options = std::move(options);
    field->defaultNumber = defaultIndex;
    // The entry points at the field's own option list, which lives as long as
    // the table (and so as long as the document).
    if (document)
        document->Add(new iniStrOpt(section, key, field->options.data(), member,
                                    int32_t(field->options.size()), defaultIndex));
    return Add(std::move(field));
}

KelText FieldTable::KeyPath(FieldBranch branch, const KelText& subKey) const
{
    const KelText branchName = branch == FieldBranch::Product ? product : KelText();
    AppEntry* app = GetAppEntry();
    KelText path = app ? app->GetRegistryKeyPath(branchName, true)
                       : AppEntry::RegistryKeyPathFor(KelText(), branchName, true);
    if (!subKey.IsEmpty())
        path += subKey + u"\\";
    return path;
}

void FieldTable::SetDefault(StoredField& field)
{
    if (field.number)
        *field.number = field.defaultNumber;
    if (field.text)
        *field.text = field.defaultText;
}

void FieldTable::Load()
{
    for (auto& field : fields)
        SetDefault(*field);
    if (document)
        document->ReadAll();

    // Each key is opened once, for reading only.
    std::map<std::u16string, RegistryKey> keys;
    for (auto& owned : fields)
    {
        StoredField& field = *owned;
        if (!field.IsRegistry())
            continue;
        const KelText path = KeyPath(field.branch, field.place);
        auto [at, made] = keys.try_emplace(std::u16string(path.View()));
        if (made)
            at->second.Open(path);
        const RegistryKey& key = at->second;
        if (!key.IsOpen())
            continue;
        switch (field.kind)
        {
        case StoredField::Kind::Dword:
        {
            uint32_t value = 0;
            if (field.number && key.ReadDword(field.name, value) == RegistryRead::Ok)
                *field.number = int32_t(value);
            break;
        }
        case StoredField::Kind::String:
        {
            KelText value;
            if (field.text && key.ReadString(field.name, value) == RegistryRead::Ok)
                *field.text = value;
            break;
        }
        case StoredField::Kind::Choice:
        {
            KelText value;
            if (field.number && key.ReadString(field.name, value) == RegistryRead::Ok)
                if (const int32_t index = field.OptionIndex(value); index >= 0)
                    *field.number = index;
            break;
        }
        default:
            break;
        }
    }
}

bool FieldTable::SaveDocument(int32_t report)
{
    return !document || document->SaveEntries(nullptr, nullptr, report) != 0;
}

bool FieldTable::Save(const StoredField& field)
{
    if (!field.IsRegistry())
        return true;
    bool keep = !field.keptWhile || *field.keptWhile != 0;
    if (keep && field.rule == SaveRule::DeleteWhenEmpty)
    {
        switch (field.kind)
        {
        case StoredField::Kind::Dword:
            keep = field.number && *field.number != 0;
            break;
        case StoredField::Kind::String:
            keep = field.text && !field.text->IsEmpty();
            break;
        default:
            keep = !field.OptionText().IsEmpty();
            break;
        }
    }

    const KelText path = KeyPath(field.branch, field.place);
    RegistryKey key;
    if (!keep)
    {
        // Nothing to delete in a key that does not exist; it is not made for it.
        if (!RegistryKey::Exists(path))
            return true;
        return key.Open(path, RegistryKey::Access::Write) && key.DeleteValue(field.name);
    }
    if (!key.Create(path))
        return false;
    switch (field.kind)
    {
    case StoredField::Kind::Dword:
        return key.WriteDword(field.name, uint32_t(field.number ? *field.number : 0));
    case StoredField::Kind::String:
        return key.WriteString(field.name, field.text ? *field.text : KelText());
    default:
        return key.WriteString(field.name, field.OptionText());
    }
}

int32_t FieldTable::SaveRegistry()
{
    int32_t failed = 0;
    for (const auto& field : fields)
        if (field->IsRegistry() && field->rule != SaveRule::Manual && !Save(*field))
            ++failed;
    return failed;
}
