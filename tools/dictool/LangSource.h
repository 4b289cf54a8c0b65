#pragma once
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "text/KelText.h"

class TextHolder;

// One language's source file in lang/ (format in lang/README.md): a UTF-8
// text file of header lines followed by one "number<TAB>text" line per text.
struct LangSource
{
    std::string fileName; // e.g. "Deutsch.txt"
    KelText name;         // the language name users pick, e.g. "Deutsch"
    uint32_t languageId = 0;
    uint32_t codePage = 0;
    std::map<uint32_t, KelText> texts;
};

// Problems are collected as one line of text each ("Deutsch.txt:12: ...").
using Problems = std::vector<std::string>;

// A path as UTF-8 text (for messages), and as a KelText (for the FileSystem seam).
std::string PathText(const std::filesystem::path& path);
KelText PathKelText(const std::filesystem::path& path);

// Parses a source file's bytes; false (with problems added) when the file is
// not in the exact form that Format writes.
bool ParseLangSource(const std::string& fileName, const std::string& bytes, LangSource& source,
                     Problems& problems);
// The file's bytes in canonical form.
std::string FormatLangSource(const LangSource& source);

// Reads every *.txt file of a folder, the English one first, then the others
// by file name.
bool ReadLangFolder(const std::filesystem::path& folder, std::vector<LangSource>& sources,
                    Problems& problems);

// Fills an empty dictionary with the languages and one entry per text number;
// the English texts become the entries' default texts.
bool BuildDictionary(const std::vector<LangSource>& sources, TextHolder& holder,
                     Problems& problems);
// The languages of a dictionary loaded in editing mode, as source files.
std::vector<LangSource> SourcesOf(const TextHolder& holder);

// Every number that a language lacks compared with the union of all languages,
// and every text whose placeholders (%s, %i, ...) differ from the English text.
// Answers the number of problems found.
size_t CheckSources(const std::vector<LangSource>& sources, Problems& problems);

// The conversion letters of a pattern's placeholders in order ("%%" excluded),
// "%d" counted as "%i".
std::string PlaceholdersOf(const KelText& text);
