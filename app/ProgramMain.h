#pragma once
#include <windows.h>

#include <cstdint>

#include "text/KelText.h"

class AppEntry;
class AppInteraction;

// The editor's name and release as the application registers them, and the
// version shown in the dialog's title.
extern const char16_t kApplicationName[]; // "EditKel"
extern const char16_t kRelease[];         // KEL_RELEASE of app/Version.h
extern const char kVersionText[];         // KEL_VERSION_TEXT of app/Version.h

// The product named by the switch "-app=" (any case; the switch or its value
// may be quoted, see CommandLineSwitch), in its canonical spelling; empty when
// the switch is missing or names no product.
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

// EditKel.exe from its process entry: flips the exception policy, makes the
// application object (answering the user through `interaction` when given,
// for tests; the real windows otherwise) with the command line, runs
// ProgramMain and destroys the object. An exception that escapes any of it is
// reported (RunGuarded); the answer is 0 on every path.
int32_t RunEditKel(HINSTANCE instance, const KelText& commandLine, int showCommand,
                   AppInteraction* interaction = nullptr);

// Flips bit 0 of the process's user-mode exception policy when the system
// offers the two policy functions; does nothing otherwise.
void ToggleExceptionPolicy();
