#pragma once
#include <cstdint>
#include <memory>
#include <vector>

#include "text/Archive.h"
#include "text/KelText.h"
#include "text/PointerList.h"
#include "text/TextCatagory.h"
#include "text/TextEntry.h"
#include "text/TextLanguage.h"

// The language dictionary: every user-visible text by number, in the language
// chosen at load. One per process (Instance); tools and tests may make their own.
//
// A dictionary file is an Archive (text/Archive.h) whose body is, in order:
//   a. u32 count of language names, then the names (texts);
//   b. block boundary, owned list of TextEntry records (count and records);
//   c. block boundary, owned list of TextCatagory records;
//   d. block boundary, owned list of TextLanguage records.
// Text numbers are any 32-bit unsigned values.
//
// Ordinary mode (any language but "all"): only a compact table is kept, a pool
// of the chosen language's texts, each followed by a 0, and 1-based offsets
// into it (0: no text): an index with one slot per number for the numbers
// below DirectNumbers, and a table sorted by number for the few larger ones,
// so that a large number costs no more memory than a small one. An entry
// whose text and default text are both empty keeps its empty text. Editing
// mode ("all") keeps every entry (sorted by number), category (sorted by
// number) and language, and fills the compact table with the default texts,
// so lookups work there too.
class TextHolder : public Storable
{
public:
    static constexpr uint32_t Tag = 4;
    // Language slots: the editing mode, the default texts, not chosen yet.
    static constexpr int32_t AllLanguages = 2147483647;
    static constexpr int32_t DefaultLanguage = -1;
    static constexpr int32_t NoLanguage = -2;
    // Numbers below this have a slot of their own in the index (4 MB at most).
    static constexpr uint32_t DirectNumbers = 1000000;

    TextHolder();
    ~TextHolder() override;
    TextHolder(const TextHolder&) = delete;
    TextHolder& operator=(const TextHolder&) = delete;

    // The process's dictionary, created empty on first use.
    static TextHolder& Instance();

    // --- lookups ----------------------------------------------------------------
    // The text of `number` in the current language. Never null unless
    // mayBeAbsent is set: a number the dictionary lacks gives its built-in
    // fallback (47 "Ok", 48 "Cancel", ...) or the shared empty string.
    const char16_t* Text(int32_t number, bool mayBeAbsent = false) const;
    // The text named by a reference: '^' followed by decimal digits, read up to
    // the first non-digit ("^" alone reads as 0). A null text, a text without
    // the caret, or a number without a stored text gives null when mayBeAbsent
    // is set and the shared empty string otherwise; no fallback applies.
    const char16_t* ReferenceText(const char16_t* reference, bool mayBeAbsent = false) const;
    // Whether a text is a reference (starts with '^').
    static bool IsReference(const char16_t* text) { return text && text[0] == u'^'; }
    // Whether a dictionary file has been loaded.
    bool IsLoaded() const { return loaded; }
    // One more than the highest number held, 0 when empty; at most INT32_MAX,
    // since numbers are asked for as 32-bit signed values.
    int32_t Count() const { return numberLimit; }

    // --- loading and saving ----------------------------------------------------
    // Loads `fileName` (resolved through the application's program folders when
    // it names no existing file) in `language` (see SelectLanguage). On success
    // hands texts 324 and 323 ("%s\n\n%s") to the application as its notice.
    // On failure the dictionary is left empty (fallbacks are served), the
    // failure is reported once when reportFailures is set ("Error Opening
    // Specified Dictionary" with the path), and the answer is false.
    bool Load(const KelText& fileName, const KelText& language, bool reportFailures);
    // Writes the dictionary's objects (languages, entries, categories) to a
    // file; the previous file is kept when the write fails.
    bool Save(const KelText& fileName, uint32_t archiveFlags = 0);
    // Empties the dictionary.
    void Clear();

    bool Serialise(Archive& archive) override;
    uint32_t ClassTag() const override { return Tag; }
    // Makes an empty dictionary object for an archive's class tag.
    static Storable* CreateObject(uint32_t classTag);

    // --- languages ----------------------------------------------------------------
    // The language slot for an asked name, given the file's language names. In
    // order, ignoring ASCII case: "all" is the editing mode; "English" (or an
    // empty name) the default texts (-1); '#' and digits a 1-based position in
    // the list (0: -1); else the first name equal to the asked one, else the
    // first that begins with it. Anything unresolved gives -1.
    static int32_t SelectLanguage(const PointerList<KelText>& names, const KelText& asked);
    // The language named on a command line by the switch "/l=" (any case): the
    // text after it up to the next blank outside quotes, quotes removed. Empty
    // when there is no such switch.
    static KelText LanguageFromCommandLine(const KelText& commandLine);
    // The language slot in use: NoLanguage before a load, DefaultLanguage,
    // AllLanguages or a position in the language names.
    int32_t LanguageSlot() const { return languageSlot; }
    // The language names read from the file, in the file's order (every mode).
    int32_t LanguageCount() const { return names.Count(); }
    const char16_t* LanguageName(int32_t position) const;
    // "English" for the default texts, "all" in editing mode, else the chosen
    // name; empty before a load.
    KelText CurrentLanguageName() const;
    const KelText& AskedName() const { return askedName; }
    const KelText& FullPath() const { return fullPath; }

    // --- objects (editing mode, or built by a program before Save) ---------------
    int32_t EntryCount() const { return entries.Count(); }
    TextEntry* Entry(int32_t position) const { return entries.At(position); }
    // The entry of a number (kept in ascending order), or null.
    TextEntry* FindEntry(uint32_t number) const;
    // The first entry whose text in the current language equals `text`
    // (ignoring ASCII case), or null.
    TextEntry* FindEntry(const KelText& text) const;
    // Takes the entry, keeping the ascending order (after equal numbers).
    void AddEntry(TextEntry* entry);
    int32_t CategoryCount() const { return categories.Count(); }
    TextCatagory* Category(int32_t position) const { return categories.At(position); }
    void AddCategory(TextCatagory* category) { categories.Add(category); }
    int32_t LanguageObjectCount() const { return languages.Count(); }
    TextLanguage* Language(int32_t position) const { return languages.At(position); }
    void AddLanguage(TextLanguage* language);

private:
    bool ReadFrom(Archive& archive);
    bool WriteTo(Archive& archive);
    bool ReadEntriesCompact(Archive& archive);
    bool AddToTable(uint32_t number, const KelText& text);
    // `length` UTF-16 units from `units` (any alignment).
    bool AddToTable(uint32_t number, const void* units, size_t length);
    // AddToTable where the pool or the index must grow first, or the number
    // is a large one.
    bool AddToTableGrowing(uint32_t number, const void* units, size_t length);
    // Makes room in the pool for `units` units in all.
    bool ReservePool(size_t units);
    // Sorts the table of large numbers once all are added; of equal numbers
    // the one added last stays, as in the index.
    void FinishTable();
    // The text of a number in the compact table, or null.
    const char16_t* Lookup(int32_t number) const;
    void ReleaseTable();

    PointerList<TextLanguage> languages;
    PointerList<TextCatagory> categories;
    PointerList<TextEntry> entries;
    PointerList<KelText> names;
    // The compact table of the current language.
    struct LargeNumber
    {
        uint32_t number;
        uint32_t offset;
    };
    std::unique_ptr<char16_t[]> pool; // grown by hand: appending copies each text once
    size_t poolSize = 0;
    size_t poolCapacity = 0;
    std::vector<uint32_t> index;
    std::vector<LargeNumber> largeNumbers;
    int32_t numberLimit = 0; // see Count()
    KelText askedName;
    KelText fullPath;
    KelText askedLanguage;
    int32_t languageSlot = NoLanguage;
    bool loaded = false;
};

// Shorthand for TextHolder::Instance().Text(number).
inline const char16_t* DictText(int32_t number)
{
    return TextHolder::Instance().Text(number);
}

// The dictionary's text of that number, or `fallback` when the dictionary
// has none (or only an empty one): for the toolkit's own windows, which must
// read well also before a dictionary is loaded.
inline KelText DictTextOr(int32_t number, const char16_t* fallback)
{
    const char16_t* text = TextHolder::Instance().Text(number, true);
    return KelText(text && *text ? text : fallback);
}
