#pragma once
#include "framework/PageReport.h"

class SettingsContext;

// What the program paths page tells the user when it saves, without a window:
// the page shows the report, a program without windows prints it.

// Writes the store's folders to its settings file; answers an accepted report,
// or the "not saved" report when the file could not be written.
PageReport SaveProgramPaths(SettingsContext& store);

// The paths were not saved: the alert, then an error box (caption 9632,
// text 9633); the page refuses to close.
PageReport ProgramPathsNotSaved();
