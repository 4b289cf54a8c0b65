#pragma once
#include <cstdint>
#include <memory>
#include <vector>

#include "settings/iniFile.h"
#include "text/KelText.h"

// Where a registry field is kept: a branch of the current user, then a sub-key.
enum class FieldBranch : uint8_t
{
    Product,     // the product's branch ("...\Brindlecove 2023\<product>\")
    Application, // the application's branch, without product ("...\Brindlecove 2023\")
};

// How saving treats a field.
enum class SaveRule : uint8_t
{
    Always,          // written on every save, also when empty or 0
    DeleteWhenEmpty, // an empty text or 0 deletes the value; anything else is written
    Manual,          // loaded with the table; saved (as Always) only when the page's own
                     // code asks for it with Save
};

// One stored field of a page: the member it fills, its default, and where the
// value is kept (a registry value of the current user, or a key of the
// settings file through a typed entry).
class StoredField
{
public:
    enum class Kind : uint8_t
    {
        Dword,          // registry REG_DWORD <-> int32_t
        String,         // registry REG_SZ <-> KelText
        Choice,         // registry REG_SZ holding one of the option texts <-> index
        SettingsString, // settings file key <-> KelText
        SettingsChoice, // settings file key holding one of the option texts <-> index
        ValueList,      // every string value of a registry key, one item each; the page
                        // reads and writes them itself (Load and Save skip it)
    };

    // The value is kept only while `flag` is non-zero: with the flag 0, a save
    // deletes it whatever the rule says. Answers the field.
    StoredField& KeptWhile(const int32_t* flag)
    {
        keptWhile = flag;
        return *this;
    }

    // How the page shows the field; the Group Policy templates are made from
    // this. `controlId` is the control on the page's template: its label and
    // its kind (check box, edit box, list) come from the template.
    StoredField& ShownBy(int32_t controlId)
    {
        control = controlId;
        return *this;
    }
    // The dictionary texts of a choice's rows, in the order of the options.
    StoredField& OptionLabels(std::vector<int32_t> labels)
    {
        optionLabels = std::move(labels);
        return *this;
    }
    // A text shown by a check box: the ticked box stores `stored`, a cleared
    // one deletes the value.
    StoredField& CheckedAs(const KelText& stored)
    {
        checkedText = stored;
        return *this;
    }
    // The box can be switched off on the page, never on.
    StoredField& SwitchOffOnly()
    {
        switchOffOnly = true;
        return *this;
    }
    // The page shows the value but never writes it (for this product).
    StoredField& NeverWritten()
    {
        neverWritten = true;
        return *this;
    }
    // The page's box lists the dictionary's languages.
    StoredField& ListsLanguages()
    {
        languageNames = true;
        return *this;
    }

    Kind kind = Kind::Dword;
    FieldBranch branch = FieldBranch::Product;
    // Registry: the sub-key below the branch ("" for the branch itself).
    // Settings file: the section.
    KelText place;
    // The registry value's name, or the settings file key.
    KelText name;
    SaveRule rule = SaveRule::Always;
    // The member: `number` for Dword and the choices, `text` for the strings.
    int32_t* number = nullptr;
    KelText* text = nullptr;
    int32_t defaultNumber = 0;
    KelText defaultText;
    // The option texts of a choice; the member is an index into them.
    std::vector<const char16_t*> options;
    const int32_t* keptWhile = nullptr;
    int32_t control = 0;
    std::vector<int32_t> optionLabels;
    KelText checkedText;
    bool switchOffOnly = false;
    bool neverWritten = false;
    bool languageNames = false;

    bool IsRegistry() const
    {
        return kind == Kind::Dword || kind == Kind::String || kind == Kind::Choice;
    }
    // The option text of the member's index ("" outside the options).
    KelText OptionText() const;
    // The index of an option text (ASCII letters folded), or -1.
    int32_t OptionIndex(const KelText& value) const;
};

// The stored fields of a page, declared once each: member, default and place.
// Load fills every member (defaults first, then what is stored); Save writes
// a field by its rule. The page's special rules (inverted values, one-way
// boxes, product conditions) stay in the page's own code and use Manual
// fields or none.
//
// Registry fields are read from the current user's branches; a key that does
// not open, a missing value and a value of another type all leave the
// default. Saving creates the key when it writes; deleting a value of a key
// that does not exist creates nothing.
//
// Settings-file fields are typed entries of the table's settings document
// (OpenDocument); Load reads the document, SaveDocument writes it.
class FieldTable
{
public:
    // `product` names the branch of FieldBranch::Product fields.
    explicit FieldTable(KelText product);
    ~FieldTable();
    FieldTable(const FieldTable&) = delete;
    FieldTable& operator=(const FieldTable&) = delete;

    // --- registry fields ------------------------------------------------------
    StoredField& Dword(FieldBranch branch, const KelText& subKey, const KelText& name,
                       int32_t* member, int32_t defaultValue, SaveRule rule);
    StoredField& String(FieldBranch branch, const KelText& subKey, const KelText& name,
                        KelText* member, const KelText& defaultValue, SaveRule rule);
    StoredField& Choice(FieldBranch branch, const KelText& subKey, const KelText& name,
                        int32_t* member, std::vector<const char16_t*> options, int32_t defaultIndex,
                        SaveRule rule);

    // Every string value of a key (a list the page keeps itself).
    StoredField& ValueList(FieldBranch branch, const KelText& subKey);

    // The page's dialog template: the controls the fields are shown by.
    void ShownOn(int32_t templateId) { pageTemplate = templateId; }
    int32_t PageTemplate() const { return pageTemplate; }

    // --- settings-file fields -------------------------------------------------
    // The settings document that the settings fields belong to (its full path).
    void OpenDocument(const KelText& path);
    StoredField& SettingsString(const KelText& section, const KelText& key, KelText* member,
                                const KelText& defaultValue);
    StoredField& SettingsChoice(const KelText& section, const KelText& key, int32_t* member,
                                std::vector<const char16_t*> options, int32_t defaultIndex);

    // --- load and save --------------------------------------------------------
    // Every member takes its default, then its stored value.
    void Load();
    // Writes the settings document; answers whether the file was written.
    // True when the table has no document.
    // With report set, a failure is shown to the user (the document's own
    // message with the file's path).
    bool SaveDocument(int32_t report = 0);
    // Saves one registry field by its rule; answers whether its write or
    // delete succeeded. Settings fields are not written here.
    bool Save(const StoredField& field);
    // Saves every registry field that is not Manual, in the order declared;
    // every one is tried. Answers how many failed.
    int32_t SaveRegistry();

    // The full key text of a branch and sub-key (ends in "\").
    KelText KeyPath(FieldBranch branch, const KelText& subKey) const;
    const KelText& Product() const { return product; }
    iniFile* Document() const { return document.get(); }
    const std::vector<std::unique_ptr<StoredField>>& Fields() const { return fields; }

private:
    StoredField& Add(std::unique_ptr<StoredField> field);
    void SetDefault(StoredField& field);

    KelText product;
    std::vector<std::unique_ptr<StoredField>> fields;
    std::unique_ptr<iniFile> document;
    int32_t pageTemplate = 0;
};
