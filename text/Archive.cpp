#include "text/Archive.h"

#include <algorithm>
#include <bit>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "platform/CodePage.h"
#include "platform/FileSystem.h"
#include "text/KelText.h"

static_assert(std::endian::native == std::endian::little,
              "the archive copies its little-endian integers and UTF-16 units directly");

namespace
{
constexpr char magic[4] = {'K', 'E', 'L', 'A'};

uint32_t NarrowCodePage(uint32_t flags)
{
    return (flags & Archive::NarrowUtf8) ? CodePage::Utf8 : CodePage::Ansi;
}

// A file is read in pieces of this size (more when one read needs more):
// large enough that the calls into the system cost little beside copying the
// bytes (in pieces of 128 KB, a one-language load of a large dictionary took
// 1.4 times its floor, in pieces of 1 MB 1.0 times), small enough that a load
// holds only a part of a large file at a time.
constexpr size_t kWindowBytes = size_t(1024) * 1024;
} // namespace

Archive::Archive() = default;

Archive::~Archive() = default;

// --- opening ------------------------------------------------------------------

void Archive::BeginWriting(uint32_t flags)
{
    Close();
    mode = Mode::Writing;
    ok = true;
    fileFlags = flags & KnownFlags;
    settings = fileFlags;
    frames.emplace_back();
    Put(magic, sizeof magic);
    WriteU32(Version);
    WriteU32(fileFlags);
    WriteU32(0);
}

bool Archive::OpenBytes(std::string bytes, uint32_t openSettings)
{
    Close();
    data = std::move(bytes);
    held = data.data();
    heldSize = totalSize = data.size();
    return Reopen(openSettings);
}

bool Archive::OpenFile(const KelText& path, uint32_t openSettings)
{
    Close();
    source = GetFileSystem().OpenReader(path);
    if (!source || source->Size() > uint64_t(SIZE_MAX / 2))
    {
        Close();
        return false;
    }
    totalSize = size_t(source->Size());
    return Reopen(openSettings);
}

bool Archive::Reopen(uint32_t openSettings)
{
    mode = Mode::Reading;
    ok = true;
    settings = openSettings & KnownFlags;
    fileFlags = 0;
    frames.assign(1, Frame());
    frames.back().end = totalSize;
    position = 0;
    if (source && heldStart > 0)
    {
        // The window has moved on: read the file again from its start.
        heldStart = heldSize = 0;
        if (!source->Rewind())
            return ok = false;
    }

    const char* header = Take(HeaderSize);
    if (!header || std::memcmp(header, magic, sizeof magic) != 0)
        return ok = false;
    uint32_t version = 0, flags = 0, reserved = 0;
    std::memcpy(&version, header + 4, 4);
    std::memcpy(&flags, header + 8, 4);
    std::memcpy(&reserved, header + 12, 4);
    if (version != Version || (flags & ~KnownFlags) != 0 || reserved != 0)
        return ok = false;
    fileFlags = flags;
    return true;
}

bool Archive::IsAlternativeFormat() const
{
    return IsReading() && ((fileFlags ^ settings) & NarrowTexts) != 0;
}

void Archive::Close()
{
    mode = Mode::Closed;
    ok = false;
    fileFlags = 0;
    settings = 0;
    data.clear();
    position = 0;
    frames.clear();
    held = nullptr;
    heldSize = heldStart = totalSize = 0;
    source.reset();
    window.reset();
    windowCapacity = 0;
}

// --- primitive access -------------------------------------------------------------

size_t Archive::Limit() const
{
    const Frame& frame = frames.back();
    return frame.blockOpen ? frame.blockEnd : frame.end;
}

const char* Archive::Take(size_t bytes)
{
    const char* at = Peek(bytes);
    if (at)
        position += bytes;
    return at;
}

const char* Archive::Peek(size_t bytes)
{
    if (!ok || !IsReading() || bytes > Limit() - position)
    {
        ok = false;
        return nullptr;
    }
    if (bytes == 0)
        return ""; // nothing to read, wherever the window stands
    if (position + bytes > heldStart + heldSize && !Fill(position + bytes))
    {
        ok = false;
        return nullptr;
    }
    return held + (position - heldStart);
}

const char* Archive::Held(size_t& available) const
{
    available = 0;
    if (!ok || !IsReading() || position < heldStart || position > heldStart + heldSize)
        return nullptr;
    available = std::min(heldStart + heldSize, Limit()) - position;
    return held ? held + (position - heldStart) : nullptr;
}

void Archive::Skip(size_t bytes)
{
    if (!ok || !IsReading() || bytes > Limit() - position)
        ok = false;
    else
        position += bytes;
}

bool Archive::Fill(size_t end)
{
    if (!source)
        return false; // bytes handed over are all there is
    // Keep the bytes from the read position on and drop those before it.
    const size_t heldEnd = heldStart + heldSize;
    const size_t kept = heldEnd > position ? heldEnd - position : 0;
    const size_t need = end - position;
    const size_t wanted = std::max(need, std::min(kWindowBytes, totalSize - position));
    if (windowCapacity < wanted)
    {
        std::unique_ptr<char[]> larger(new char[wanted]);
        if (kept)
            std::memcpy(larger.get(), held + (position - heldStart), kept);
        window = std::move(larger);
        windowCapacity = wanted;
    }
    else if (kept)
        std::memmove(window.get(), held + (position - heldStart), kept);
    held = window.get();
    // Bytes passed over since the window's end are read and dropped.
    for (size_t skip = position > heldEnd ? position - heldEnd : 0; skip > 0;)
    {
        const size_t got = source->Read(window.get(), std::min(skip, windowCapacity));
        if (got == 0)
            return false;
        skip -= got;
    }
    heldStart = position;
    heldSize = kept;
    while (heldSize < need)
    {
        const size_t got = source->Read(window.get() + heldSize, wanted - heldSize);
        if (got == 0)
            return false;
        heldSize += got;
    }
    return true;
}

void Archive::Put(const void* bytes, size_t count)
{
    if (!ok || !IsWriting())
    {
        ok = false;
        return;
    }
    data.append(static_cast<const char*>(bytes), count);
    position = data.size();
}

void Archive::Patch(size_t at, size_t value)
{
    if (value > UINT32_MAX)
    {
        ok = false;
        return;
    }
    const uint32_t size = uint32_t(value);
    std::memcpy(data.data() + at, &size, 4);
}

uint32_t Archive::ReadU32()
{
    uint32_t value = 0;
    if (const char* at = Take(4))
        std::memcpy(&value, at, 4);
    return value;
}

void Archive::WriteU32(uint32_t value)
{
    Put(&value, 4);
}

// --- values -------------------------------------------------------------------------

void Archive::Value(uint32_t& value)
{
    if (IsWriting())
        WriteU32(value);
    else
        value = ReadU32();
}

void Archive::Value(int32_t& value)
{
    uint32_t bits = uint32_t(value);
    Value(bits);
    value = int32_t(bits);
}

void Archive::Value(uint64_t& value)
{
    if (IsWriting())
    {
        Put(&value, 8);
        return;
    }
    value = 0;
    if (const char* at = Take(8))
        std::memcpy(&value, at, 8);
}

void Archive::Value(int64_t& value)
{
    uint64_t bits = uint64_t(value);
    Value(bits);
    value = int64_t(bits);
}

void Archive::Value(KelText& text)
{
    if (IsReading())
    {
        ReadText(&text);
        return;
    }
    const int32_t length = KelText::Measure(text.c_str());
    if (length == 0)
    {
        // Count 1 and the terminator alone, in the width of the archive's units.
        const char16_t terminator = 0;
        WriteU32(1);
        Put(&terminator, (settings & NarrowTexts) ? 1 : sizeof terminator);
        return;
    }
    if (!(settings & NarrowTexts))
    {
        WriteU32(uint32_t(length) + 1);
        Put(text.c_str(), (size_t(length) + 1) * sizeof(char16_t));
        return;
    }
    const uint32_t codePage = NarrowCodePage(settings);
    const int32_t bytes = CodePage::FromWide(codePage, text.c_str(), length, nullptr, 0);
    if (bytes <= 0 || bytes == INT32_MAX)
    {
        ok = false;
        return;
    }
    std::string narrow(size_t(bytes) + 1, '\0');
    CodePage::FromWide(codePage, text.c_str(), length, narrow.data(), bytes);
    WriteU32(uint32_t(bytes) + 1);
    Put(narrow.data(), narrow.size());
}

void Archive::SkipText()
{
    ReadText(nullptr);
}

// Reads one text into `text` (or only checks it when text is null).
void Archive::ReadText(KelText* text)
{
    if (text)
        *text = KelText();
    const uint32_t count = ReadU32();
    if (!ok || count == 0)
        return;
    if (IsAlternativeFormat())
    {
        ok = false;
        return;
    }
    const bool narrow = (settings & NarrowTexts) != 0;
    const size_t width = narrow ? 1 : 2;
    if (count > (Limit() - position) / width || count - 1 > uint32_t(INT32_MAX - 1))
    {
        ok = false;
        return;
    }
    const int32_t units = int32_t(count - 1);
    const char* at = Take(size_t(count) * width);
    if (!at)
        return;
    if (!narrow)
    {
        // No terminator, a 0 unit inside the text, or more units than any
        // text can hold.
        if (!IsWideText(at, count) || units > MaxTextUnits)
        {
            ok = false;
            return;
        }
        if (!text || units == 0)
            return;
        KelText read;
        if (reinterpret_cast<uintptr_t>(at) % alignof(char16_t) == 0)
            read.Append(reinterpret_cast<const char16_t*>(at), units);
        else
        {
            // Bytes at an odd place: copied into aligned units first.
            std::u16string aligned(size_t(units), u'\0');
            std::memcpy(aligned.data(), at, size_t(units) * 2);
            read.Append(aligned.data(), units);
        }
        if (read.Length() != units)
            ok = false; // out of memory
        else
            *text = std::move(read);
        return;
    }
    if (at[units] != 0 || std::memchr(at, 0, size_t(units)) != nullptr)
    {
        ok = false;
        return;
    }
    if (!text || units == 0)
        return;
    const uint32_t codePage = NarrowCodePage(settings);
    const int32_t needed = CodePage::ToWide(codePage, at, units, nullptr, 0);
    if (needed <= 0)
    {
        ok = false;
        return;
    }
    KelText read;
    if (!read.Reserve(needed, false))
    {
        ok = false;
        return;
    }
    CodePage::ToWide(codePage, at, units, read.Buffer(), needed);
    read.Buffer()[needed] = 0;
    read.Sync();
    *text = std::move(read);
}

#if defined(__SSE2__)
namespace
{
// Whether the `size` bytes at `bytes` (16 <= size <= 16 * chunks) hold a 0
// unit: `chunks` reads of 8 units, those that would pass the end read from
// the end instead. A fixed number of reads, so that texts of different
// lengths do not make the processor guess wrong about where a loop ends;
// four results gathered apart, so that the reads need not wait for each other.
template <size_t chunks>
bool HasZeroUnit(const char* bytes, size_t size)
{
    static_assert(chunks % 4 == 0);
    const __m128i zero = _mm_setzero_si128();
    __m128i found[4] = {zero, zero, zero, zero};
    for (size_t chunk = 0; chunk < chunks; ++chunk)
    {
        const __m128i units = _mm_loadu_si128(
            reinterpret_cast<const __m128i*>(bytes + std::min(chunk * 16, size - 16)));
        found[chunk % 4] = _mm_or_si128(found[chunk % 4], _mm_cmpeq_epi16(units, zero));
    }
    return _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(found[0], found[1]),
                                          _mm_or_si128(found[2], found[3]))) != 0;
}
} // namespace
#endif

bool Archive::IsWideText(const char* bytes, uint32_t count)
{
    if (count == 0)
        return false;
    // The units before the terminator hold no 0.
    const size_t size = size_t(count) * 2 - 2;
    if (bytes[size] != 0 || bytes[size + 1] != 0)
        return false;
#if defined(__SSE2__)
    if (size >= 16)
    {
        if (size <= 64)
            return !HasZeroUnit<4>(bytes, size);
        if (size <= 128)
            return !HasZeroUnit<8>(bytes, size);
        if (size <= 256)
            return !HasZeroUnit<16>(bytes, size);
        const __m128i zero = _mm_setzero_si128();
        __m128i found = zero;
        for (size_t at = 0; at + 16 <= size; at += 16)
            found = _mm_or_si128(
                found, _mm_cmpeq_epi16(
                           _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at)), zero));
        return _mm_movemask_epi8(found) == 0 && !HasZeroUnit<4>(bytes + size - 16, 16);
    }
#endif
    for (size_t at = 0; at < size; at += 2)
        if (bytes[at] == 0 && bytes[at + 1] == 0)
            return false;
    return true;
}

bool Archive::Count(uint32_t& count, size_t minimumBytes)
{
    Value(count);
    if (IsReading() && ok && minimumBytes > 0 && count > (Limit() - position) / minimumBytes)
        ok = false;
    return ok;
}

// --- blocks and records -----------------------------------------------------------

void Archive::CloseBlock(Frame& frame)
{
    if (!frame.blockOpen)
        return;
    if (IsWriting())
        Patch(frame.blockSizeAt, data.size() - frame.blockSizeAt - 4);
    else if (ok)
        position = frame.blockEnd;
    frame.blockOpen = false;
}

void Archive::Boundary()
{
    if (mode == Mode::Closed)
    {
        ok = false;
        return;
    }
    Frame& frame = frames.back();
    CloseBlock(frame);
    if (IsWriting())
    {
        frame.blockSizeAt = data.size();
        WriteU32(0);
        frame.blockOpen = true;
        return;
    }
    const uint32_t size = ReadU32();
    if (!ok || size > frame.end - position)
    {
        ok = false;
        return;
    }
    frame.blockEnd = position + size;
    frame.blockOpen = true;
}

bool Archive::BeginRecord(uint32_t& classTag)
{
    if (int(frames.size()) > MaxDepth)
        ok = false;
    if (IsWriting())
    {
        WriteU32(classTag);
        Frame frame;
        frame.sizeAt = data.size();
        WriteU32(0);
        frames.push_back(frame);
        return ok;
    }
    classTag = ReadU32();
    const uint32_t size = ReadU32();
    if (!ok || size > Limit() - position || (classTag == 0 && size != 0))
        return ok = false;
    Frame frame;
    frame.end = position + size;
    frames.push_back(frame);
    return true;
}

void Archive::EndRecord()
{
    if (frames.size() < 2)
    {
        ok = false;
        return;
    }
    Frame& frame = frames.back();
    CloseBlock(frame);
    if (IsWriting())
        Patch(frame.sizeAt, data.size() - frame.sizeAt - 4);
    else if (ok)
        position = frame.end;
    frames.pop_back();
}

Storable* Archive::ReadObject(StorableFactory factory)
{
    uint32_t tag = 0;
    if (!IsReading() || !BeginRecord(tag))
    {
        ok = false;
        return nullptr;
    }
    Storable* object = nullptr;
    if (tag != 0)
    {
        object = factory ? factory(tag) : nullptr;
        if (!object)
            ok = false;
        else
            object->Serialise(*this);
    }
    EndRecord();
    if (!ok)
    {
        delete object;
        return nullptr;
    }
    return object;
}

bool Archive::ReadInto(Storable& object, bool& present)
{
    present = false;
    uint32_t tag = 0;
    if (!IsReading() || !BeginRecord(tag))
        return ok = false;
    if (tag != 0)
    {
        if (tag != object.ClassTag())
            ok = false;
        else
            object.Serialise(*this);
        present = true;
    }
    EndRecord();
    return ok;
}

void Archive::WriteObject(Storable* object)
{
    if (!IsWriting())
    {
        ok = false;
        return;
    }
    uint32_t tag = object ? object->ClassTag() : 0;
    BeginRecord(tag);
    if (object)
        object->Serialise(*this);
    EndRecord();
}

// --- result -------------------------------------------------------------------------

const std::string& Archive::Finish()
{
    if (IsWriting() && !frames.empty())
    {
        while (frames.size() > 1)
            EndRecord();
        CloseBlock(frames.back());
    }
    return data;
}

bool Archive::SaveFile(const KelText& path)
{
    if (!IsWriting())
        return false;
    Finish();
    if (!ok)
        return false;
    // The file system's one write: the file keeps its previous bytes when
    // the write fails, and holds the old or the new archive at any moment.
    return bool(GetFileSystem().WriteBytes(path, data.data(), data.size()));
}
