#include "settings/iniFile.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include "platform/CodePage.h"
#include "platform/FileSystem.h"
#include "text/AppServices.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
constexpr char16_t kReplacement = 0xFFFD;
constexpr char16_t kByteOrderMark = 0xFEFF;

// Whether line begins with "[" and ends with "]".
bool IsHeaderLine(const iniLine& line)
{
    return line.IsBoundary() && line.c_str()[line.Length() - 1] == u']';
}

// A settings file decoded to UTF-16 as its bytes arrive, piece by piece, so
// that a large file is never held twice (once as bytes, once as units). The
// first bytes decide the encoding: EF BB BF is UTF-8, FF FE UTF-16
// little-endian (both marks skipped), anything else the ANSI code page.
// 8-bit text is converted up to places that three ASCII bytes precede: no
// character of UTF-8 or of a double-byte code page reaches over such a place,
// so the pieces convert exactly as the whole would.
class Decoder
{
public:
    // Reads and decodes everything `read` gives (pieces of at most the size
    // asked for, 0 at the end); `size` is what the file is expected to hold.
    template <typename Read>
    bool Run(Read read, uint64_t size)
    {
        std::string pending;
        // Pieces are read into a buffer that nothing fills first (growing
        // `pending` by a whole piece would clear 64 KB for every read): a
        // small file's expected size and a byte to see its end, at least 4 KB
        // in case the file has grown.
        const size_t bufferSize = size_t(std::clamp<uint64_t>(size + 1, 4096, kPiece));
        const std::unique_ptr<char[]> buffer(new char[bufferSize]);
        auto more = [&]()
        {
            const size_t got = read(buffer.get(), bufferSize);
            pending.append(buffer.get(), got);
            return got;
        };
        bool ended = false;
        while (pending.size() < 3 && !ended)
            ended = more() == 0;
        const auto* b = reinterpret_cast<const unsigned char*>(pending.data());
        if (pending.size() >= 2 && b[0] == 0xFF && b[1] == 0xFE)
            return Utf16(pending, ended, read, size);
        uint32_t codePage = CodePage::Ansi;
        if (pending.size() >= 3 && b[0] == 0xEF && b[1] == 0xBB && b[2] == 0xBF)
        {
            codePage = CodePage::Utf8;
            pending.erase(0, 3);
            size = size > 3 ? size - 3 : 0;
        }
        Reserve(size_t(std::min<uint64_t>(size, kMaxNarrowBytes)) + 1);
        for (;;)
        {
            // Convert up to the last place three ASCII bytes precede (all at the end).
            size_t place = pending.size();
            if (!ended)
                while (place >= 3 && !(IsAscii(pending[place - 1]) && IsAscii(pending[place - 2]) &&
                                       IsAscii(pending[place - 3])))
                    --place;
            if (place >= 3 || ended)
            {
                if (!Widen(codePage, pending.data(), place))
                    return false;
                pending.erase(0, place);
            }
            if (ended)
                return true;
            ended = more() == 0;
        }
    }

    std::unique_ptr<char16_t[]> units;
    size_t count = 0;

private:
    static constexpr size_t kPiece = size_t(64) * 1024;
    // 8-bit files are converted with 32-bit lengths.
    static constexpr uint64_t kMaxNarrowBytes = uint64_t(std::numeric_limits<int32_t>::max());

    static bool IsAscii(char byte) { return (unsigned char)byte < 0x80; }

    // Room for `wanted` units in all, and one more for a terminator.
    void Reserve(size_t wanted)
    {
        if (wanted + 1 <= capacity)
            return;
        const size_t larger = std::max(wanted + 1, capacity + capacity / 2);
        std::unique_ptr<char16_t[]> grown(new char16_t[larger]);
        if (count)
            std::memcpy(grown.get(), units.get(), count * sizeof(char16_t));
        units = std::move(grown);
        capacity = larger;
    }

    // Converts 8-bit text in codePage and appends it. False when a non-empty
    // text gives nothing (so that an unconvertible file is never taken for an
    // empty one), or the file is too large to convert.
    bool Widen(uint32_t codePage, const char* bytes, size_t size)
    {
        if (size == 0)
            return true;
        narrowBytes += size;
        if (narrowBytes > kMaxNarrowBytes)
            return false;
        // In the ANSI code pages and in UTF-8 no character takes more UTF-16
        // units than bytes. Should one ever do, ask for the size first.
        Reserve(count + size);
        int32_t written =
            CodePage::ToWide(codePage, bytes, int32_t(size), units.get() + count, int32_t(size));
        if (written < 1)
        {
            const int32_t needed = CodePage::ToWide(codePage, bytes, int32_t(size), nullptr, 0);
            if (needed < 1)
                return false;
            Reserve(count + size_t(needed));
            written = CodePage::ToWide(codePage, bytes, int32_t(size), units.get() + count, needed);
            if (written < 1)
                return false;
        }
        count += size_t(written);
        return true;
    }

    // UTF-16 little-endian: the bytes after the mark are read straight into
    // the units; a dangling last byte becomes U+FFFD.
    template <typename Read>
    bool Utf16(const std::string& first, bool ended, Read& read, uint64_t size)
    {
        size_t bytes = first.size() - 2;
        // Room for the expected units, a dangling byte's U+FFFD and the terminator.
        Reserve(size_t(std::max<uint64_t>(size, first.size()) - 2) / 2 + 2);
        std::memcpy(units.get(), first.data() + 2, bytes);
        while (!ended)
        {
            const size_t room = capacity * 2 - 4 - bytes;
            if (room < 2)
            {
                count = (bytes + 1) / 2;          // what Reserve keeps
                Reserve(capacity + capacity / 2); // the file has grown
                continue;
            }
            const size_t got =
                read(reinterpret_cast<char*>(units.get()) + bytes, std::min(kPiece, room));
            bytes += got;
            ended = got == 0;
        }
        count = bytes / 2;
        if constexpr (std::endian::native == std::endian::big)
            for (size_t i = 0; i < count; ++i)
                units[i] = char16_t((units[i] >> 8) | (units[i] << 8));
        if (bytes % 2)
            units[count++] = kReplacement;
        return true;
    }

    size_t capacity = 0;
    uint64_t narrowBytes = 0;
};
} // namespace

iniFile::iniFile(KelText path_) : path(std::move(path_)) {}

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
    if (path.IsEmpty())
        return 0;
    Clear();
    Decoder decoder;
    const std::unique_ptr<FileReader> reader = GetFileSystem().OpenReader(path);
    if (!reader)
        return 0;
    auto read = [&reader](char* into, size_t wanted) { return reader->Read(into, wanted); };
    if (!decoder.Run(read, reader->Size()) || reader->Failed())
        return 0;
    lines.Assign(std::move(decoder.units), decoder.count);
    loaded = 1;
    return 1;
}

int32_t iniFile::Save(int32_t report)
{
    if (path.IsEmpty())
        return 0;
    // The empty lines at the end are not written.
    const iniLine* last = nullptr;
    size_t total = 1;
    for (const iniLine* line = lines.First(); line; line = line->Next())
        if (!line->IsEmpty())
            last = line;
    for (const iniLine* line = lines.First(); last && line != last->Next(); line = line->Next())
        total += size_t(line->Length()) + 2;

    // The whole new content, built without the formatter (lines have no length
    // limit), each unit copied once into memory that nothing fills before.
    const std::unique_ptr<char16_t[]> content(new char16_t[total]);
    char16_t* out = content.get();
    *out++ = kByteOrderMark;
    for (const iniLine* line = lines.First(); last && line != last->Next(); line = line->Next())
    {
        // A line feed inside a line (only the program can put one there) would
        // split it in two, and could even start a section: it is written as a blank.
        const char16_t* in = line->c_str();
        for (int32_t i = 0, n = line->Length(); i < n; ++i)
            out[i] = in[i] == u'\n' ? u' ' : in[i];
        out += line->Length();
        *out++ = u'\r';
        *out++ = u'\n';
    }
    if constexpr (std::endian::native == std::endian::big)
        for (char16_t* unit = content.get(); unit != out; ++unit)
            *unit = char16_t((*unit >> 8) | (*unit << 8));

    // The file system's one write: the file holds either its previous or the
    // new content, whatever happens during the write.
    if (GetFileSystem().WriteBytes(path, content.get(), total * sizeof(char16_t)))
        return 1;
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
    // Read, change and write under the file's update lock, so that a save of
    // another program of ours cannot come between the read and the write and
    // have its lines lost.
    const FileLock lock = GetFileSystem().Lock(path);
    if (!lock.Held())
    {
        ReportWriteFailure(report);
        Clear();
        return 0;
    }
    if (!loaded)
    {
        loaded = Load();
        if (!loaded)
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
    const int32_t saved = Save(report);
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
