#pragma once
#include <windows.h>

#include "text/KelText.h"

// Folder texts of the framework use "/" as separator and end in "/".

// `path` with every "\" turned into "/" and a trailing "/" ensured; empty
// text stays empty.
KelText NormaliseFolder(const KelText& path);

// `path` with every "/" turned into "\" (for interfaces that insist on it).
KelText WithBackslashes(const KelText& path);

// Splits a file path at its last separator ("/" or "\"): the folder
// (normalised, see NormaliseFolder) and the name after it.
void SplitFilePath(const KelText& path, KelText& folder, KelText& name);

// Creates a folder together with every missing parent. Answers whether the
// folder exists afterwards.
bool CreateFolderPath(const KelText& folder);

// A shell folder by its CSIDL number (26 roaming application data, 28 local
// application data, 46 shared documents), normalised; empty when unknown.
KelText KnownFolder(int csidl);

// The current directory, normalised, however long it is.
KelText ReadCurrentDirectory();

// The temporary folder, normalised.
KelText ReadTempFolder();

// The full path of a module (null: the executable).
KelText ReadModulePath(HMODULE module);
