#pragma once
#include <cstdint>
#include <string>

#include "settings/PtrArray.h"
#include "settings/iniBlocks.h"
#include "settings/iniEntries.h"
#include "settings/iniLines.h"
#include "text/KelText.h"

// A settings file held as its list of raw lines, with the typed entries that
// bind its keys to the program's variables. The file is never parsed into a
// tree: comments, unknown keys, blank lines and the order of everything the
// entries do not touch survive a rewrite unchanged. The line grammar is the
// one iniLines describes (no comment syntax; keys match the untrimmed text
// before the first "=", ASCII letters folded; a line without "=" is no key
// line; a section ends at the next line that begins with "[").
//
// Usage: construct with the file's full path, Add the entries, ReadAll to fill
// their variables, later WriteAll to put them back. ReadAll and WriteAll read
// the file afresh and keep none of it afterwards.
//
// Reading. The first bytes decide the encoding: EF BB BF is UTF-8, FF FE is
// UTF-16 little-endian (both marks are skipped), anything else is 8-bit text in
// the system's ANSI code page. Lines end at LF; a CR directly before the LF
// belongs to the line end, a CR anywhere else is part of the line. A final line
// without line end is read like any other. Two kinds of unit cannot be held
// as they are:
// - A NUL character (from any encoding) is read as U+FFFD, the replacement
//   character, so that the rest of its line and of the file is kept; the line
//   is written back with U+FFFD in its place.
// - In a UTF-16 file, unpaired surrogates are kept as they are and written
//   back unchanged; in a UTF-8 file, encoded surrogates and every other
//   invalid sequence read as U+FFFD. A UTF-16 file of odd length ends with
//   one U+FFFD for its last byte.
//
// Writing. Always UTF-16 little-endian with FF FE, every line followed by
// CR LF; the empty lines at the end of the document are not written. Lines of
// any length are written whole. A line feed inside a line (which no line read
// from a file holds, but a value set by the program may) is written as a
// blank, so that every line of the document stays one line of the file. The new content is built in
// memory and written through the file system's one write, which replaces the file in one step: the
// file holds its previous or its new content whatever happens, a read-only file is refused, and a
// failed write leaves the previous content (and no new file). On failure, with report set, the user
// is shown dictionary text 240 with the path. WriteAll and SaveEntries read, change and write under
// the file's update lock (see FileSystem::Lock), so that two programs of ours saving the same file
// keep each other's lines; a lock that stays taken past the wait is the same failure. WriteAll on a
// file that exists but cannot be read does not start from an empty document, which would lose the
// file's contents: it writes nothing and reports the same failure.
class iniFile
{
public:
    explicit iniFile(KelText path);
    ~iniFile();
    iniFile(const iniFile&) = delete;
    iniFile& operator=(const iniFile&) = delete;

    // Appends an entry and takes ownership of it; null is ignored.
    void Add(iniStruct* entry);
    // Reads the file into lines. 1 on success; 0 when path is empty (then
    // nothing changes) or the file cannot be read (then lines is empty).
    int32_t Load();
    // Writes lines to the file. 1 on success, 0 on failure (shown to the user
    // when report is set).
    int32_t Save(int32_t report = 0);
    // Deletes all lines; lastWasWrite becomes 1, loaded 0.
    void Clear();

    // Fills the variables of the matching entries (null section or key: any)
    // from the file; entries whose key is missing take their defaults.
    // Answers 1 when the file was read, 0 when it is missing or unreadable.
    int32_t ReadAll(const char16_t* section = nullptr, const char16_t* key = nullptr,
                    int32_t report = 0);
    // Writes the matching entries into the file, the last added first, so that
    // new sections and keys appear in the order of adding. A missing file
    // becomes a new one. Always answers 1; only report reaches the save.
    int32_t WriteAll(const char16_t* section = nullptr, const char16_t* key = nullptr,
                     int32_t report = 0);
    // The same write, answering whether the file was written: 1 when it was,
    // 0 when it could not be (the file then keeps its previous content).
    int32_t SaveEntries(const char16_t* section = nullptr, const char16_t* key = nullptr,
                        int32_t report = 0);
    // Appends to out: with no section, the names of all sections (lines that
    // begin with "[" and whose first "]" is their last character), in file
    // order; with a section and no key, the text before the first "=" of each
    // non-empty line of the section (the whole line when it has none); with
    // both, the untrimmed value of the first key line. The section ends at the
    // next line that begins with "[" and ends with "]". Answers the number of
    // texts appended. The lines stay loaded.
    int32_t List(const char16_t* section, const char16_t* key, TextPtrArray* out,
                 int32_t report = 0);
    // Replaces, in the loaded lines, the first non-empty line after the
    // section's header that begins with key (a prefix test, ASCII letters
    // folded) by key + "=" + value. The scan does not stop at the section's
    // end (only a line that is just "[" stops it), so it can reach into later
    // sections. Answers the number of lines changed (0 or 1); does not save.
    int32_t SetValue(const char16_t* section, const char16_t* key, const char16_t* value,
                     int32_t report = 0);

    KelText path;
    // 1 after construction, Clear and WriteAll; 0 after ReadAll.
    int32_t lastWasWrite = 1;
    // 1 while lines holds the file's contents (or a deliberately empty document).
    int32_t loaded = 0;
    PtrArray<iniStruct> entries;
    iniLines lines;

private:
    bool Matches(const iniStruct& entry, const char16_t* section, const char16_t* key) const;
    void ReportWriteFailure(int32_t report) const;
};
