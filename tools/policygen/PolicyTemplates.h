#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "text/KelText.h"

// The Group Policy administrative templates of the editor's options: one
// .admx file and one .adml file per dictionary language, made from the
// pages' field tables, the pages' dialog templates (label and kind of each
// control) and the dictionary. Nothing here lists an option of its own.

// A registry value as a policy writes it.
struct PolicyValue
{
    enum class Type
    {
        None,    // the policy writes nothing in this state
        Delete,  // removes the value
        Decimal, // REG_DWORD
        String,  // REG_SZ
    };
    Type type = Type::None;
    uint32_t number = 0;
    KelText text;
};

// One user policy.
struct Policy
{
    enum class Kind
    {
        Boolean,       // a check box: enabled and disabled values
        SwitchOffOnly, // a check box the page only clears: disabled deletes, enabled writes nothing
        Enum,          // a drop-down list of stored texts
        Text,          // an edit box
        Suggestions,   // an edit box with suggested texts (an editable combo box)
        List,          // every string value of a key: value name and data per entry
    };
    Kind kind = Kind::Boolean;
    std::u16string id;       // policy name, also its string and presentation ids
    std::u16string category; // category id
    KelText key;             // below HKEY_CURRENT_USER, without a trailing "\"
    KelText valueName;
    PolicyValue enabled;
    PolicyValue disabled;
    // Enum: the stored texts and the rows' labels, and the default row.
    std::vector<KelText> items;
    std::vector<KelText> itemLabels;
    int32_t defaultItem = -1;
    std::vector<KelText> suggestions;
    // In the current dictionary language.
    KelText displayName;
    KelText explain;
    KelText elementLabel;
    KelText defaultText;
};

struct PolicyCategory
{
    std::u16string id;
    std::u16string parent; // empty: top level
    KelText displayName;
};

struct PolicySet
{
    std::vector<PolicyCategory> categories;
    std::vector<Policy> policies;
    KelText supportedOn;
    KelText displayName;
    KelText description;
};

// Every policy of every product, with texts in the dictionary's current
// language. The application object must exist with its release registered
// and the editor's message switches; the dialog templates come from its
// resources. Throws std::runtime_error when a field's control is missing
// from its template or is of a kind no policy can show.
PolicySet MakePolicySet(const std::vector<KelText>& languageNames);

// The file texts (UTF-8). `revision` is "major.minor".
std::string AdmxText(const PolicySet& set, const std::string& revision);
std::string AdmlText(const PolicySet& set, const std::string& revision);

// The culture name of a Windows language id ("en-US" for 1033).
KelText CultureName(uint32_t languageId);
