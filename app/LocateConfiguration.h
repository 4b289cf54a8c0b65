#pragma once
#include <cstdint>
#include <vector>

#include "text/KelText.h"

class AppEntry;
class SettingsContext;

// A configuration the user can pick: a folder that holds the settings file.
struct ConfigCandidate
{
    KelText name;   // shown to the user
    KelText folder; // "/" separators, trailing "/"
    // 1 for configurations registered by name, 0 for folders found otherwise.
    uint32_t flag = 0;
};

// The configurations of a product for a settings file name, in this order:
// those registered under the product's user key, then its machine key
// ("Configurations": value name = display name, data = folder), each group
// sorted by name; then every sub-folder of the shared documents folder that
// holds the file (named after the sub-folder). Only folders that hold the
// file are listed, and each folder only once.
std::vector<ConfigCandidate> GatherConfigurations(AppEntry& app, const KelText& product,
                                                  const KelText& fileName);

// Whether `folder` holds the settings file.
bool FolderHoldsFile(AppEntry& app, const KelText& folder, const KelText& fileName);

// Finds the configuration to edit and makes its settings file the current one
// of `context`. `fileName` is the settings file name (it may carry a folder);
// `descriptor` the product's path kinds (null: the default list);
// `alwaysPick` shows the picker even when the choice is clear; `create` makes
// a new configuration in the product's data folder when none exists;
// `configurationName` picks one by name. Answers 1 when a settings file was
// set, 0 when none was found (the user has then been told).
int32_t LocateConfiguration(SettingsContext& context, const KelText& fileName,
                            const int32_t* descriptor, void* reserved, const KelText& product,
                            int32_t alwaysPick, int32_t create, const char16_t* configurationName);

// Shows the configuration picker over `candidates` (the user may add more by
// browsing); answers the confirmed row, or -1 when cancelled.
int32_t RunConfigurationPicker(std::vector<ConfigCandidate>& candidates, const KelText& fileName,
                               const KelText& product);
