#pragma once
#include <cstdint>

#include "text/KelText.h"

class AppEntry;

// The editor's name and release as the application registers them, and the
// version shown in the dialog's title.
extern const char16_t kApplicationName[]; // "EditKel"
extern const char16_t kRelease[];         // KEL_RELEASE of app/Version.h
extern const char kVersionText[];         // KEL_VERSION_TEXT of app/Version.h

// The product named by the switch "-app=" (any case), in its canonical
// spelling; empty when the switch is missing or names no product.
KelText ProductFromCommandLine(const KelText& commandLine);

// The language to load: the one "/l=" names, else the product's stored
// "Language" (for the release), else "English".
KelText StartupLanguage(const KelText& commandLine, const KelText& product);

// Registers the eight message switches that the editor's pages show.
void RegisterEditorSwitches(AppEntry& app);

// Records the application's name and takes the product from the command line
// ("-app="). `product` is left empty when no product is named.
void RegisterApplication(AppEntry& app, KelText& product, const char16_t* applicationName,
                         const char16_t* release);

// The window title "%s Config Editor - %s" for a product.
KelText EditorTitle(const KelText& product);

// The editor: dictionary, switches, product, configuration, dialog. Answers 0
// on every path.
int32_t ProgramMain(AppEntry* app, const KelText& commandLine, int showCommand);

// Flips bit 0 of the process's user-mode exception policy when the system
// offers the two policy functions; does nothing otherwise.
void ToggleExceptionPolicy();
