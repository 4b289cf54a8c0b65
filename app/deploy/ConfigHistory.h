#pragma once
#include <cstdint>
#include <memory>
#include <vector>

#include "app/deploy/SettingsTransfer.h"
#include "app/deploy/StateSnapshot.h"
#include "text/KelText.h"

class AppEntry;
class SettingsContext;

// One recorded save: who saved which configuration when, what the save
// changed, and the whole state of the product's settings before and after it.
struct HistoryEntry
{
    KelText id;                   // the entry's name: a number that grows with every save
    KelText time;                 // local time, "YYYY-MM-DD hh:mm:ss"
    KelText user;                 // the Windows user
    KelText folder;               // the configuration folder
    KelText action;               // what saved: "OK", "Apply", "import", "undo <id>"
    std::vector<KelText> changes; // "Section/Key: old -> new"
    StateSnapshot before;
    StateSnapshot after;
};

// The history of a product's saves, kept per user under the local
// application-data folder, in "Orvantix/Brindlecove <release>/EditKel/
// History/<product>/" there, one file per save, the newest kKept of them.
class ConfigHistory
{
public:
    static constexpr size_t kKept = 30;

    ConfigHistory(AppEntry& app, const KelText& product);
    const KelText& Folder() const { return folder; }

    // Writes the entry as the newest (giving it its id and time), then drops
    // the oldest beyond kKept. False when it could not be written.
    bool Add(HistoryEntry& entry);
    // The entries, newest first. An entry that cannot be read is left out and
    // its id added to `damaged`.
    std::vector<HistoryEntry> Entries(std::vector<KelText>& damaged) const;

    // The entry's file and back; Parse answers false for bytes that are not
    // a whole entry.
    static std::string Serialise(const HistoryEntry& entry);
    static bool Parse(const std::string& bytes, HistoryEntry& entry);

    // Where every product's history is kept (empty: the local
    // application-data folder's). Tests keep theirs in a folder of their own.
    static void SetRoot(const KelText& folder);

private:
    std::vector<uint64_t> Ids() const;

    KelText folder;
};

// Records one save of a configuration: made before the save, it takes the
// state of everything the product's pages own and the values they show;
// Finish takes both again after the save and, when the save changed
// anything, adds the entry to the history.
class SaveRecord
{
public:
    enum class Outcome
    {
        Unchanged,  // nothing changed: nothing recorded
        Recorded,   // the entry is in the history
        NotWritten, // something changed but the history could not be written
    };

    SaveRecord(AppEntry& app, const KelText& product, const KelText& folder, const KelText& action);
    ~SaveRecord();
    SaveRecord(const SaveRecord&) = delete;
    SaveRecord& operator=(const SaveRecord&) = delete;

    Outcome Finish();
    // The history it records into.
    const ConfigHistory& History() const { return history; }

private:
    ConfigHistory history;
    std::unique_ptr<SettingsContext> store;
    std::unique_ptr<SettingsTransfer> transfer;
    HistoryEntry entry;
    std::vector<SettingsTransfer::ViewEntry> valuesBefore;
    bool started = false;
};

// The one-line summary of what a recorded save changed.
KelText HistorySummary(const HistoryEntry& entry);
// Whether two texts name the same configuration folder.
bool SameConfigurationFolder(const KelText& left, const KelText& right);
