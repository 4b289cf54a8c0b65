#pragma once
#include <functional>
#include <memory>
#include <vector>

#include "framework/PageReport.h"
#include "text/KelText.h"

class AppEntry;
class SettingsContext;

// The pages of the configuration dialog as kelcfg sees them: each page is a
// section of the settings file, each value it shows a key. The values are
// read, changed and written through the pages' own window-free value classes
// (and the program-paths store), so every rule of a page holds for an import
// as it holds for OK in the dialog.

// How a value is written in the file.
enum class TransferType
{
    Text,   // any text, empty included
    Folder, // a folder; never empty
    Switch, // "YES" or "NO"
    Choice, // one of the key's choices
    List,   // one line per item, in order (web links)
};

// What the product's page lets the user do with a value.
enum class TransferAccess
{
    Free,
    // Shown but not editable for this product (the permissions outside
    // Cutwise): an import must not change it.
    Fixed,
    // Can be switched off, never on (automatic login).
    SwitchOffOnly,
    // Editable or shown, but this product's page never stores it (the welcome
    // screen outside Cutwise and Tallywise): a different value is left alone.
    NotStored,
};

// One value of a page. `get` and `set` work on the page's values as they are
// loaded now; a scalar value is one item.
struct TransferKey
{
    KelText name;
    TransferType type = TransferType::Text;
    // The texts a Switch or Choice accepts, in the file's spelling.
    std::vector<KelText> choices;
    TransferAccess access = TransferAccess::Free;
    std::function<std::vector<KelText>()> get;
    std::function<void(const std::vector<KelText>&)> set;
    // Whether the value is stored, rather than shown as the page's default.
    std::function<bool()> stored;
    // For a List: an item as the page keeps it (from the file's spelling), and
    // what is wrong with it (0: nothing) as a text number.
    std::function<KelText(const KelText&)> canonical;
    std::function<int32_t(const KelText&)> itemProblem;
    // A comment that an export writes before the value (empty: none).
    KelText comment;
};

// What a page writes: settings files (full paths) and registry key trees
// (full key texts, as GetRegistryKeyPath builds them).
struct TransferPlaces
{
    std::vector<KelText> files;
    std::vector<KelText> keys;
};

class TransferPage
{
public:
    virtual ~TransferPage() = default;

    // The section name in the file.
    virtual KelText Section() const = 0;
    // Reads every value afresh, as the page does when it is made.
    virtual void Load() = 0;
    // Writes every value back by the page's rules; answers what the page
    // would tell the user, and whether it refuses.
    virtual PageReport Save() = 0;
    virtual TransferPlaces Places() const = 0;

    // The page's values in the order the page shows them.
    const std::vector<TransferKey>& Keys() const { return keys; }
    const TransferKey* FindKey(const KelText& name) const;

protected:
    std::vector<TransferKey> keys;
};

// The pages of a product, in the configuration dialog's order: program paths,
// then CAD options (Plotwise) or the product options and web links (every
// product but Ledgerline), then common options and message prompts. The
// configuration is the application's settings folder; `store` becomes the
// program-paths store of the product's settings file there. Every page is
// loaded.
std::vector<std::unique_ptr<TransferPage>> MakeTransferPages(AppEntry& app, SettingsContext& store,
                                                             const KelText& product);

// The file's spelling of a switch.
inline const char16_t kTransferYes[] = u"YES";
inline const char16_t kTransferNo[] = u"NO";
