#include "settings/iniFile.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <string>

#include "text/AppServices.h"
#include "text/CodePage.h"
#include "text/FileSystem.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
constexpr char16_t kReplacement = 0xFFFD;
constexpr char16_t kByteOrderMark = 0xFEFF;

// Converts 8-bit text in codePage to UTF-16. False when a non-empty text
// gives nothing (so that an unconvertible file is never taken for an empty one).
bool Widen(uint32_t codePage, const char* bytes, size_t size, std::u16string& units)
{
    units.clear();
    if (size == 0)
        return true;
    if (size > size_t(std::numeric_limits<int32_t>::max()))
        return false;
    // One pass: in the ANSI code pages and in UTF-8 no character takes more
    // UTF-16 units than bytes. Should one ever do, ask for the size first.
    units.resize(size);
    int32_t written = CodePage::ToWide(codePage, bytes, int32_t(size), units.data(), int32_t(size));
    if (written < 1)
    {
        const int32_t needed = CodePage::ToWide(codePage, bytes, int32_t(size), nullptr, 0);
        if (needed < 1)
            return false;
        units.resize(size_t(needed));
        written = CodePage::ToWide(codePage, bytes, int32_t(size), units.data(), needed);
        if (written < 1)
            return false;
    }
    units.resize(size_t(written));
    return true;
}

// Whether line begins with "[" and ends with "]".
bool IsHeaderLine(const iniLine& line)
{
    return line.IsBoundary() && line.c_str()[line.Length() - 1] == u']';
}

// The file's bytes as UTF-16, the encoding chosen by the byte-order mark.
bool Decode(const std::string& bytes, std::u16string& units)
{
    const auto* b = reinterpret_cast<const unsigned char*>(bytes.data());
    const size_t size = bytes.size();
    if (size >= 3 && b[0] == 0xEF && b[1] == 0xBB && b[2] == 0xBF)
        return Widen(CodePage::Utf8, bytes.data() + 3, size - 3, units);
    if (size >= 2 && b[0] == 0xFF && b[1] == 0xFE)
    {
        const size_t count = (size - 2) / 2;
        units.resize(count);
        for (size_t i = 0; i < count; ++i)
            units[i] = char16_t(b[2 + 2 * i] | (b[3 + 2 * i] << 8));
        if ((size - 2) % 2)
            units.push_back(kReplacement); // a dangling last byte
        return true;
    }
    return Widen(CodePage::Ansi, bytes.data(), size, units);
}
} // namespace

iniFile::iniFile(const KelText& path_) : path(path_) {}

iniFile::~iniFile() = default;

void iniFile::Add(iniStruct* entry)
{
    entries.Add(entry);
}

void iniFile::Clear()
{
    lines.Clear();
    lastWasWrite = 1;
    loaded = 0;
}

// ---------------------------------------------------------------------------
// reading and writing the file

int32_t iniFile::Load()
{
    return LoadFrom(nullptr);
}

int32_t iniFile::LoadFrom(std::string* keep)
{
    std::string read;
    std::string& bytes = keep ? *keep : read;
    bytes.clear();
    if (path.IsEmpty())
        return 0;
    Clear();
    if (!GetFileSystem().ReadBytes(path, bytes))
        return 0;
    std::u16string units;
    if (!Decode(bytes, units))
        return 0;
    std::string().swap(read); // the bytes are not needed any more: less held at once
    lines.Assign(std::move(units));
    loaded = 1;
    return 1;
}

int32_t iniFile::Save(int32_t report)
{
    return SaveOver(nullptr, report);
}

int32_t iniFile::SaveOver(const std::string* previous, int32_t report)
{
    if (path.IsEmpty())
        return 0;
    // The empty lines at the end are not written.
    const iniLine* last = nullptr;
    size_t total = 1;
    for (const iniLine* line = lines.First(); line; line = line->Next())
    {
        total += size_t(line->Length()) + 2;
        if (!line->IsEmpty())
            last = line;
    }

    // The whole new content, built without the formatter (lines have no length limit).
    std::u16string content;
    content.reserve(total);
    content += kByteOrderMark;
    for (const iniLine* line = lines.First(); last && line != last->Next(); line = line->Next())
    {
        // A line feed inside a line (only the program can put one there) would
        // split it in two, and could even start a section: it is written as a blank.
        const size_t from = content.size();
        content += line->View();
        std::replace(content.begin() + ptrdiff_t(from), content.end(), u'\n', u' ');
        content += u"\r\n";
    }
    if constexpr (std::endian::native == std::endian::big)
        for (char16_t& unit : content)
            unit = char16_t((unit >> 8) | (unit << 8));

    // Written in one operation; on failure the previous content is put back.
    FileSystem& files = GetFileSystem();
    bool existed = true;
    std::string readNow;
    if (!previous)
    {
        existed = files.Exists(path);
        if (existed && !files.ReadBytes(path, readNow))
        {
            ReportWriteFailure(report); // what would be lost cannot be saved first
            return 0;
        }
        previous = &readNow;
    }
    if (files.WriteBytes(path, content.data(), content.size() * sizeof(char16_t)))
        return 1;
    if (existed || files.Exists(path))
        files.WriteBytes(path, previous->data(), previous->size());
    ReportWriteFailure(report);
    return 0;
}

void iniFile::ReportWriteFailure(int32_t report) const
{
    if (!report)
        return;
    AppServices* services = GetAppServices();
    if (!services)
        return;
    const char16_t* message = DictText(kTextFileNotWritable);
    services->ReportError(KelText(message), path);
}

// ---------------------------------------------------------------------------
// entries

bool iniFile::Matches(const iniStruct& entry, const char16_t* section, const char16_t* key) const
{
    return (!section || entry.section == section) && (!key || entry.key == key);
}

int32_t iniFile::ReadAll(const char16_t* section, const char16_t* key, int32_t)
{
    if (!loaded)
        loaded = Load();
    const int32_t result = loaded;
    for (iniStruct* entry : entries)
        if (Matches(*entry, section, key))
            entry->Read(lines);
    Clear();
    lastWasWrite = 0;
    return result;
}

int32_t iniFile::WriteAll(const char16_t* section, const char16_t* key, int32_t report)
{
    // Callers of WriteAll learn nothing of a failure (the report, when asked
    // for, has told the user); SaveEntries tells.
    SaveEntries(section, key, report);
    return 1;
}

int32_t iniFile::SaveEntries(const char16_t* section, const char16_t* key, int32_t report)
{
    // The bytes just read are the content to put back should the write fail.
    std::string previous;
    bool known = false;
    if (!loaded)
    {
        known = LoadFrom(&previous) != 0;
        if (!known)
        {
            if (!path.IsEmpty() && GetFileSystem().Exists(path))
            {
                // There is a file, but it could not be read: starting from an
                // empty document would replace its contents.
                ReportWriteFailure(report);
                Clear();
                return 0;
            }
            Clear();
            loaded = 1;
        }
    }
    // Last added first: new sections and keys go in at the top of the file or
    // directly after their header, so they end up in the order of adding.
    for (int32_t i = entries.Count() - 1; i >= 0; --i)
        if (iniStruct* entry = entries[i]; Matches(*entry, section, key))
            entry->Write(lines);
    const int32_t saved = SaveOver(known ? &previous : nullptr, report);
    Clear();
    return saved;
}

// ---------------------------------------------------------------------------
// direct access

int32_t iniFile::List(const char16_t* section, const char16_t* key, TextPtrArray* out, int32_t)
{
    if (!loaded)
        loaded = Load();
    if (!out)
        return 0;
    int32_t added = 0;
    if (!section || !*section)
    {
        for (const iniLine* at = lines.First(); at; at = at->Next())
        {
            const std::u16string_view line = at->View();
            if (at->IsBoundary() && line.find(u']') == line.size() - 1)
            {
                out->Add(new KelText(line.data() + 1, int32_t(line.size()) - 2));
                ++added;
            }
        }
        return added;
    }
    const iniLine* header = lines.FindSection(std::u16string_view(section));
    if (!header)
        return 0;
    const KelText wanted(key);
    for (const iniLine* at = header->Next(); at; at = at->Next())
    {
        if (IsHeaderLine(*at))
            break;
        if (at->IsEmpty())
            continue;
        const KelText line(at->c_str(), at->Length());
        const int32_t equals = line.Find(u'=');
        if (wanted.IsEmpty())
        {
            out->Add(new KelText(equals ? line.Sub(1, equals - 1) : line));
            ++added;
        }
        else if (equals &&
                 iniLines::SameFolded(line.View().substr(0, size_t(equals - 1)), wanted.View()))
        {
            out->Add(new KelText(line.Sub(equals + 1, line.Length())));
            return 1;
        }
    }
    return added;
}

int32_t iniFile::SetValue(const char16_t* section, const char16_t* key, const char16_t* value,
                          int32_t)
{
    if (!loaded)
        Load();
    const iniLine* header = lines.FindSection(KelText(section).View());
    if (!header)
        return 0;
    const KelText wanted(key);
    for (const iniLine* at = header->Next(); at; at = at->Next())
    {
        if (at->IsEmpty())
            continue;
        // Only a line that is just "[" passes this end test, so the scan runs
        // on through later sections; a long-standing rule that callers know.
        if (at->View() == u"[")
            break;
        if (at->Length() >= wanted.Length() &&
            iniLines::SameFolded(at->View().substr(0, size_t(wanted.Length())), wanted.View()))
        {
            KelText replaced(wanted);
            replaced += u'=';
            replaced += value;
            lines.Replace(at, replaced.View());
            return 1;
        }
    }
    return 0;
}
