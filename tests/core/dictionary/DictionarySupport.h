#pragma once
#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "text/AppServices.h"
#include "text/FileSystem.h"
#include "text/KelText.h"
#include "text/TextHolder.h"

// Files kept in memory, installed as the FileSystem while a test runs. Read
// piece by piece, they come in pieces of at most `piece` bytes, so that the
// archive's reading window has to move on many times even in a small file.
class MemoryFiles : public FileSystem
{
public:
    MemoryFiles() { previous = SetFileSystem(this); }
    ~MemoryFiles() override { SetFileSystem(previous); }

    bool ReadBytes(const KelText& path, std::string& bytes) override
    {
        const auto found = files.find(std::u16string(path.View()));
        if (found == files.end())
            return false;
        bytes = found->second;
        return true;
    }
    bool WriteBytes(const KelText& path, const void* data, size_t size) override
    {
        files[std::u16string(path.View())].assign(static_cast<const char*>(data), size);
        return true;
    }
    bool Exists(const KelText& path) override { return files.count(std::u16string(path.View())); }
    std::unique_ptr<FileReader> OpenReader(const KelText& path) override
    {
        const auto found = files.find(std::u16string(path.View()));
        if (found == files.end())
            return nullptr;
        return std::make_unique<MemoryReader>(found->second, piece);
    }

    std::map<std::u16string, std::string> files;
    size_t piece = 7;

private:
    FileSystem* previous;
};

// Records what the dictionary hands to the application.
class RecordingServices : public AppServices
{
public:
    RecordingServices() { previous = SetAppServices(this); }
    ~RecordingServices() override { SetAppServices(previous); }

    void ReportError(const KelText& message, const KelText& context) override
    {
        errors.emplace_back(message.ToUtf8(), context.ToUtf8());
    }
    bool ResolveProgramFile(const KelText& name, KelText& fullPath) override
    {
        const auto found = programFiles.find(name.ToUtf8());
        if (found == programFiles.end())
            return false;
        fullPath = KelText::FromUtf8(found->second);
        return true;
    }
    void SetDictionaryNotice(const KelText& text) override
    {
        notice = text.ToUtf8();
        ++notices;
    }

    std::vector<std::pair<std::string, std::string>> errors;
    std::map<std::string, std::string> programFiles;
    std::string notice;
    int notices = 0;

private:
    AppServices* previous;
};

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
