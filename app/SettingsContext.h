#pragma once
#include <cstdint>

#include "app/KindList.h"
#include "text/KelText.h"

// The open settings file of the process: its full path, the product, and the
// product's program path kinds. It is also the program-paths store: it reads
// the folders of section "PROGRAM PATHS" of the settings file, keeps the
// user's changes, and writes them back on Save.
//
// Each kind's folder is kept in a cache of 47 texts (kinds 0 to 46), cleared
// whenever a new settings file is set. A kind the file does not name shows a
// default folder inside the configuration folder (see DefaultFolder). Save
// writes every kind of the product: a default as the full folder it stands
// for, and folders that the file names and the user did not change exactly
// as they were read.
class SettingsContext
{
public:
    static constexpr int32_t kKindSlots = 47;

    // The process's store, created on first use.
    static SettingsContext& Instance();
    // A store of its own, for reading a configuration beside the one being
    // edited without touching the process's store.
    SettingsContext() = default;

    // Makes `path` the current settings file, for `product`, with the kinds
    // of `descriptor` (the default list when null). Clears the path cache.
    void SetSettingsFile(const KelText& path, const KelText& product, const int32_t* descriptor);
    const KelText& SettingsFile() const { return settingsFile; }
    // The folder of the settings file ("/" separators, trailing "/").
    KelText SettingsFolder() const;
    const KelText& Product() const { return product; }

    // The kinds in descriptor order.
    const KindList& Kinds() const { return kinds; }
    // The key name of a kind under "PROGRAM PATHS" ("Main", "Project", ...);
    // "ERROR" for a kind that has none.
    static KelText KindName(int32_t kind);
    // The folder that a kind shows when the file names none, relative to the
    // configuration folder ("" is the folder itself).
    static const char16_t* DefaultFolder(int32_t kind);

    // The folder of a kind for display: "/" separators and a trailing "/";
    // the kind's default when the file names none. Empty for kinds outside 0..46.
    KelText PathOf(int32_t kind);
    // Whether a kind has a folder of its own (the file names one, or SetPath
    // gave one) rather than showing its default. False outside 0..46.
    bool IsPathSet(int32_t kind);
    // Sets the folder of a kind (normalised). The file changes only on Save.
    void SetPath(int32_t kind, const KelText& folder);
    // Writes the folders of all the product's kinds to "PROGRAM PATHS",
    // defaults included. Answers nonzero on success, 0 when the file could
    // not be written (it then keeps its previous content).
    int32_t Save();

private:
    void LoadPaths();

    struct Slot
    {
        KelText text;         // as read from the file, or as set by the user
        bool known = false;   // the file names it or the user set it
        bool changed = false; // set by the user since the file was read
    };

    KelText settingsFile;
    KelText product;
    KindList kinds;
    Slot slots[kKindSlots];
    bool pathsLoaded = false;
};
