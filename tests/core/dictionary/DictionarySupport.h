#pragma once
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/core/CoreTestSupport.h"
#include "text/TextHolder.h"

// A dictionary test's stand-ins. Files are read in pieces of 7 bytes, so that
// the archive's reading window has to move on many times even in a small file.
class DictionaryTest : public ::testing::Test
{
protected:
    bool Load(const char16_t* name, const char16_t* language)
    {
        return holder.Load(KelText(name), KelText(language), true);
    }

    MemoryFiles files{7};
    RecordingServices services;
    TextHolder holder;
};

inline uint32_t U32At(const std::string& bytes, size_t at)
{
    uint32_t value = 0;
    std::memcpy(&value, bytes.data() + at, 4);
    return value;
}

inline std::string WithU32(std::string bytes, size_t at, uint32_t value)
{
    std::memcpy(bytes.data() + at, &value, 4);
    return bytes;
}

inline void AppendU32(std::string& bytes, uint32_t value)
{
    bytes.append(reinterpret_cast<const char*>(&value), 4);
}

// Saves a dictionary file: the language names, the entries block that
// `entries` writes, then no categories and no language objects.
template <typename WriteEntries>
bool SaveDictionary(const char16_t* path, std::vector<KelText> names, WriteEntries entries)
{
    Archive archive;
    archive.BeginWriting();
    uint32_t count = uint32_t(names.size()), none = 0;
    archive.Value(count);
    for (KelText& name : names)
        archive.Value(name);
    archive.Boundary();
    entries(archive);
    for (int block = 0; block < 2; ++block)
    {
        archive.Boundary();
        archive.Value(none);
    }
    return archive.SaveFile(KelText(path));
}

inline std::string Utf8(const char16_t* text)
{
    return text ? KelText(text).ToUtf8() : std::string("(null)");
}

// A small three-language dictionary: English (the default texts), Deutsch and
// Français, with a few texts missing in some languages, a category, and the
// extra fields filled, so that load and save have something to carry.
inline void FillSample(TextHolder& holder)
{
    const char* const names[] = {"English", "Deutsch", "Français"};
    for (int i = 0; i < 3; ++i)
    {
        TextLanguage* language = new TextLanguage(KelText::FromUtf8(names[i]));
        language->Description() = KelText::FromUtf8(std::string(names[i]) + ".txt");
        language->SetAttributes(1031u + uint32_t(i), 1252);
        holder.AddLanguage(language);
    }
    struct Row
    {
        uint32_t number;
        const char* texts[3];
    };
    const Row rows[] = {
        {6070, {"Message Prompts", "Meldungen", "Messages"}},
        {47, {"OK", "OK", "OK"}},
        {6069, {"Never again", "Nie wieder", ""}},
        {324, {"Notice title", "Hinweis", "Avis"}},
        {323, {"Copyright line", "", ""}},
        {9709, {"The folder \"%s\" lacks %s.", "Der Ordner „%s“ hat kein %s.", ""}},
        {0, {"Zero", "Null", "Zéro"}},
    };
    for (const Row& row : rows)
    {
        TextEntry* entry = new TextEntry(row.number);
        for (int i = 0; i < 3; ++i)
            entry->SetText(i, KelText::FromUtf8(row.texts[i]));
        entry->DefaultText() = entry->Text(0);
        holder.AddEntry(entry);
    }
    TextEntry* entry = holder.FindEntry(6070);
    entry->Note() = KelText(u"note");
    entry->Extra() = KelText(u"extra");
    entry->SetCategory(7);
    entry->SetAttributes(0x55);
    entry->SetData(0x0123456789ABCDEFull);
    entry->Links().Add(47);
    entry->Links().Add(324);
    TextCatagory* later = new TextCatagory(9, KelText(u"Later"));
    later->Members() = {47};
    holder.AddCategory(later);
    TextCatagory* category = new TextCatagory(7, KelText(u"Prompts"));
    category->Members() = {6069, 6070};
    holder.AddCategory(category);
}

// The sample saved as a dictionary file into `files` under `path`.
inline std::string SampleFile(MemoryFiles& files, const char16_t* path, uint32_t flags = 0)
{
    TextHolder holder;
    FillSample(holder);
    holder.Save(KelText(path), flags);
    return files.files[path];
}
