#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "text/KelText.h"

class AppEntry;
class SettingsContext;
class TransferPage;

// What an import (or a look at one) did.
struct TransferOutcome
{
    // 0 done (no changes included), 1 the file has errors or the settings
    // could not be written.
    int32_t exitCode = 0;
    // One line per value that changes: "Section/Key: old -> new".
    std::vector<KelText> changes;
    // What the user is told, in order: errors, notes, the summary.
    std::vector<KelText> messages;
    // Whether anything was written (and stayed written).
    bool wrote = false;
};

// Exports and imports everything the configuration dialog edits for one
// product and configuration, through the pages' own value classes.
//
// Export writes one section per page, in the dialog's order, and one
// "Key = Value" line per value the page shows. A value that is not stored
// (the page shows its default), that the product's page cannot change or
// never stores, is written commented out with a note, so that the file is a
// complete description and an import never pins another machine's defaults.
//
// Import first checks the whole file; any error (reported with its line
// number) and nothing is written. Then it sets the values the file gives,
// leaves every other value as it is, and saves only the pages with a changed
// value, through their own save, in page order. Afterwards everything is read
// back and compared with what was meant; any difference, or a page that
// refuses, puts back everything as it was before the import.
class SettingsTransfer
{
public:
    enum class Mode
    {
        Apply,  // write the changes
        DryRun, // tell the changes and write nothing
        Diff,   // the same, worded as the changes an import would make
    };

    // `folder` is the configuration folder: it becomes the application's
    // settings folder, and the product's settings file in it the store's.
    SettingsTransfer(AppEntry& app, SettingsContext& store, const KelText& product,
                     const KelText& folder);
    ~SettingsTransfer();
    SettingsTransfer(const SettingsTransfer&) = delete;
    SettingsTransfer& operator=(const SettingsTransfer&) = delete;

    // The file's text. `timestamp` goes into the header.
    KelText Export(const KelText& timestamp);
    // Imports a file's bytes (UTF-8, or UTF-16 with its mark).
    TransferOutcome Import(const std::string& bytes, Mode mode);

    // One value of a page as it was read: the page and key, the items, and
    // whether it is stored (rather than the page's default).
    struct ViewEntry
    {
        size_t page;
        size_t key;
        std::vector<KelText> items;
        bool stored;
    };
    // Every value of the pages, read afresh from the configuration.
    std::vector<ViewEntry> ReadView();
    // One line per value that differs between two readings:
    // "Section/Key: old -> new".
    std::vector<KelText> Changes(const std::vector<ViewEntry>& before,
                                 const std::vector<ViewEntry>& after) const;
    // Adds the files and key trees that the pages write to `snapshot`.
    void AddPlaces(class StateSnapshot& snapshot) const;

private:
    std::vector<ViewEntry> View() const;

    AppEntry& app;
    KelText product;
    KelText folder;
    std::vector<std::unique_ptr<TransferPage>> pages;
};
