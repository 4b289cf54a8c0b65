#include "text/TextHolder.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/FileSystem.h"
#include "text/AppServices.h"
#include "text/CommandLine.h"

namespace
{
struct Fallback
{
    int32_t number;
    const char16_t* text;
};

const Fallback fallbacks[] = {
    {47, u"Ok"},
    {48, u"Cancel"},
    {65, u"No"},
    {66, u"Yes"},
    {274, u"Warning"},
    {290, u"Problem"},
    {1492, u"Continue"},
    {1786, u"Close"},
    {3817, u"Yes to All"},
    {3909, u"Retry"},
    {3912, u"No to All"},
    {4550, u"Abort"},
    {6069, u"Don't Show This Message Again"},
    {6144, u"Quit"},
};

bool IsDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

// Decimal digits from `text`, up to the first non-digit; values beyond
// INT32_MAX give -1. `used` counts the digits.
int32_t ReadNumber(const char16_t* text, int32_t& used)
{
    int64_t value = 0;
    used = 0;
    while (IsDigit(text[used]))
    {
        if (value <= INT32_MAX)
            value = value * 10 + (text[used] - u'0');
        ++used;
    }
    return value > INT32_MAX ? -1 : int32_t(value);
}
} // namespace

TextHolder::TextHolder() = default;

TextHolder::~TextHolder()
{
    Clear();
}

TextHolder& TextHolder::Instance()
{
    static TextHolder holder;
    return holder;
}

// --- lookups --------------------------------------------------------------------

const char16_t* TextHolder::Lookup(int32_t number) const
{
    if (number < 0)
        return nullptr;
    uint32_t offset = 0;
    if (size_t(number) < index.size())
        offset = index[size_t(number)];
    else
    {
        const auto found = std::lower_bound(
            largeNumbers.begin(), largeNumbers.end(), uint32_t(number),
            [](const LargeNumber& item, uint32_t wanted) { return item.number < wanted; });
        if (found != largeNumbers.end() && found->number == uint32_t(number))
            offset = found->offset;
    }
    return offset ? pool.get() + offset - 1 : nullptr;
}

const char16_t* TextHolder::Text(int32_t number, bool mayBeAbsent) const
{
    if (const char16_t* text = Lookup(number))
        return text;
    if (mayBeAbsent)
        return nullptr;
    for (const Fallback& fallback : fallbacks)
        if (fallback.number == number)
            return fallback.text;
    return KelText::EmptyText();
}

const char16_t* TextHolder::ReferenceText(const char16_t* reference, bool mayBeAbsent) const
{
    if (IsReference(reference))
    {
        int32_t used = 0;
        if (const char16_t* text = Lookup(ReadNumber(reference + 1, used)))
            return text;
    }
    return mayBeAbsent ? nullptr : KelText::EmptyText();
}

// --- languages ------------------------------------------------------------------

int32_t TextHolder::SelectLanguage(const PointerList<KelText>& names, const KelText& asked)
{
    if (asked.IsEmpty() || asked == u"English")
        return DefaultLanguage;
    if (asked == u"all")
        return AllLanguages;
    if (asked.At(0) == u'#' && asked.Length() > 1)
    {
        int32_t used = 0;
        const int32_t position = ReadNumber(asked.c_str() + 1, used);
        if (used == asked.Length() - 1)
        {
            if (position >= 1 && position <= names.Count())
                return position - 1;
            return DefaultLanguage; // 0, or a position the list lacks
        }
    }
    for (int32_t i = 0; i < names.Count(); ++i)
        if (names.At(i) && *names.At(i) == asked)
            return i;
    for (int32_t i = 0; i < names.Count(); ++i)
        if (names.At(i) && names.At(i)->StartsWith(asked.c_str()))
            return i;
    return DefaultLanguage;
}

KelText TextHolder::LanguageFromCommandLine(const KelText& commandLine)
{
    return CommandLineSwitch(commandLine, u"/l=");
}

const char16_t* TextHolder::LanguageName(int32_t position) const
{
    const KelText* name = names.At(position);
    return name ? name->c_str() : KelText::EmptyText();
}

KelText TextHolder::CurrentLanguageName() const
{
    if (languageSlot == DefaultLanguage)
        return KelText(u"English");
    if (languageSlot == AllLanguages)
        return KelText(u"all");
    if (languageSlot >= 0)
        return KelText(LanguageName(languageSlot));
    return KelText();
}

// --- objects ----------------------------------------------------------------------

TextEntry* TextHolder::FindEntry(uint32_t number) const
{
    int32_t low = 0, high = entries.Count();
    while (low < high)
    {
        const int32_t middle = low + (high - low) / 2;
        const TextEntry* entry = entries.At(middle);
        if (entry && entry->Number() < number)
            low = middle + 1;
        else
            high = middle;
    }
    TextEntry* found = entries.At(low);
    return found && found->Number() == number ? found : nullptr;
}

TextEntry* TextHolder::FindEntry(const KelText& text) const
{
    const int32_t slot = languageSlot == AllLanguages ? DefaultLanguage : languageSlot;
    for (TextEntry* entry : entries)
        if (entry && entry->TextFor(slot) == text)
            return entry;
    return nullptr;
}

void TextHolder::AddEntry(TextEntry* entry)
{
    if (!entry)
        return;
    int32_t position = entries.Count();
    while (position > 0 && entries.At(position - 1) &&
           entries.At(position - 1)->Number() > entry->Number())
        --position;
    entries.Insert(position, entry);
}

void TextHolder::AddLanguage(TextLanguage* language)
{
    if (!language)
        return;
    names.Add(new KelText(language->Name()));
    languages.Add(language);
}

Storable* TextHolder::CreateObject(uint32_t classTag)
{
    switch (classTag)
    {
    case TextEntry::Tag:
        return new TextEntry;
    case TextCatagory::Tag:
        return new TextCatagory;
    case TextLanguage::Tag:
        return new TextLanguage;
    default:
        return nullptr;
    }
}

// --- loading ----------------------------------------------------------------------

void TextHolder::ReleaseTable()
{
    pool.reset();
    poolSize = poolCapacity = 0;
    std::vector<uint32_t>().swap(index);
    std::vector<LargeNumber>().swap(largeNumbers);
    numberLimit = 0;
}

void TextHolder::Clear()
{
    ReleaseTable();
    entries.Clear();
    categories.Clear();
    languages.Clear();
    names.Clear();
    languageSlot = NoLanguage;
    loaded = false;
}

bool TextHolder::AddToTable(uint32_t number, const KelText& text)
{
    return AddToTable(number, text.c_str(), size_t(text.Length()));
}

bool TextHolder::ReservePool(size_t units)
{
    // Offsets into the pool are 32-bit and 1-based.
    units = std::min<size_t>(units, UINT32_MAX - 1);
    if (units <= poolCapacity)
        return true;
    std::unique_ptr<char16_t[]> larger(new (std::nothrow) char16_t[units]);
    if (!larger)
        return false;
    if (poolSize)
        std::memcpy(larger.get(), pool.get(), poolSize * sizeof(char16_t));
    pool = std::move(larger);
    poolCapacity = units;
    return true;
}

bool TextHolder::AddToTable(uint32_t number, const void* units, size_t length)
{
    // An empty text is kept as one: only a number without an entry is absent.
    const size_t needed = poolSize + length + 1;
    if (number >= index.size() || needed > poolCapacity)
        return AddToTableGrowing(number, units, length);
    index[number] = uint32_t(poolSize) + 1;
    if (number >= uint32_t(numberLimit))
        numberLimit = int32_t(number + 1); // below DirectNumbers
    std::memcpy(pool.get() + poolSize, units, length * sizeof(char16_t));
    poolSize = needed;
    pool[needed - 1] = 0;
    return true;
}

bool TextHolder::AddToTableGrowing(uint32_t number, const void* units, size_t length)
{
    const size_t needed = poolSize + length + 1;
    if (needed > poolCapacity && !ReservePool(std::max(needed, poolCapacity * 2)))
        return false;
    if (needed > poolCapacity)
        return false; // beyond the most a pool can hold
    if (number < DirectNumbers)
    {
        // Grown by doubling, with every new slot empty, so that numbers
        // arriving in ascending order neither copy nor resize it each time.
        if (number >= index.size())
            index.resize(
                std::min<size_t>(DirectNumbers, std::max<size_t>(number + 1, index.size() * 2)));
        return AddToTable(number, units, length);
    }
    largeNumbers.push_back({number, uint32_t(poolSize) + 1});
    if (number >= uint32_t(numberLimit))
        numberLimit = int32_t(std::min<int64_t>(int64_t(number) + 1, INT32_MAX));
    std::memcpy(pool.get() + poolSize, units, length * sizeof(char16_t));
    poolSize = needed;
    pool[needed - 1] = 0;
    return true;
}

void TextHolder::FinishTable()
{
    std::stable_sort(largeNumbers.begin(), largeNumbers.end(),
                     [](const LargeNumber& left, const LargeNumber& right)
                     { return left.number < right.number; });
    auto kept = largeNumbers.begin();
    for (auto at = largeNumbers.begin(); at != largeNumbers.end(); ++at)
        if (at + 1 == largeNumbers.end() || (at + 1)->number != at->number)
            *kept++ = *at;
    largeNumbers.erase(kept, largeNumbers.end());
}

bool TextHolder::Load(const KelText& fileName, const KelText& language, bool reportFailures)
{
    askedName = fileName;
    fullPath = fileName;
    AppServices* services = GetAppServices();
    if (!GetFileSystem().Exists(fileName) && services)
    {
        KelText resolved;
        if (services->ResolveProgramFile(fileName, resolved) && !resolved.IsEmpty())
            fullPath = resolved;
    }
    Clear();
    askedLanguage = language;

    Archive archive;
    bool opened = archive.OpenFile(fullPath);
    if (opened && archive.IsAlternativeFormat())
        opened = archive.Reopen(archive.FileFlags());
    if (!opened || !Serialise(archive))
    {
        Clear();
        if (reportFailures && services)
            services->ReportError(KelText(u"Error Opening Specified Dictionary"), fullPath);
        return false;
    }
    loaded = true;
    if (services)
        services->SetDictionaryNotice(KelText::Formatted(u"%s\n\n%s", Text(324), Text(323)));
    return true;
}

bool TextHolder::Save(const KelText& fileName, uint32_t archiveFlags)
{
    Archive archive;
    archive.BeginWriting(archiveFlags);
    return Serialise(archive) && archive.SaveFile(fileName);
}

bool TextHolder::Serialise(Archive& archive)
{
    if (archive.IsWriting())
        return WriteTo(archive);
    if (!archive.IsReading())
        return false;
    if (!ReadFrom(archive))
    {
        archive.Fail();
        return false;
    }
    return true;
}

bool TextHolder::WriteTo(Archive& archive)
{
    uint32_t count = uint32_t(languages.Count());
    archive.Value(count);
    for (TextLanguage* language : languages)
    {
        KelText name = language ? language->Name() : KelText();
        archive.Value(name);
    }
    archive.Boundary();
    archive.List(entries);
    archive.Boundary();
    archive.List(categories);
    archive.Boundary();
    archive.List(languages);
    return archive.Ok();
}

bool TextHolder::ReadFrom(Archive& archive)
{
    // a. the language names, and from them the language slot
    uint32_t nameCount = 0;
    if (!archive.Count(nameCount, Archive::MinTextSize) || !names.Reserve(int32_t(nameCount)))
        return false;
    for (uint32_t i = 0; i < nameCount && archive.Ok(); ++i)
    {
        KelText* name = new KelText;
        archive.Value(*name);
        names.Add(name);
    }
    if (!archive.Ok())
        return false;
    languageSlot = SelectLanguage(names, askedLanguage);

    // b. the entries
    archive.Boundary();
    if (languageSlot == AllLanguages)
    {
        entries.Clear();
        if (!archive.List(entries))
            return false;
        // Files are written in order: sorting is only needed when they are not.
        const auto byNumber = [](const TextEntry* left, const TextEntry* right)
        { return (left ? left->Number() : 0) < (right ? right->Number() : 0); };
        // NOLINTNEXTLINE(bugprone-nondeterministic-pointer-iteration-order): by number, not address
        if (!std::is_sorted(entries.begin(), entries.end(), byNumber))
            entries.Sort(byNumber);
        for (const TextEntry* entry : entries)
            if (entry && !AddToTable(entry->Number(), entry->DefaultText()))
                return false;
    }
    else if (!ReadEntriesCompact(archive))
        return false;
    FinishTable();

    // c. the categories
    archive.Boundary();
    if (!archive.List(categories))
        return false;

    // d. the languages
    archive.Boundary();
    if (!archive.List(languages))
        return false;

    if (languageSlot != AllLanguages)
    {
        // Only the compact table is kept in the ordinary mode.
        categories.Clear();
        languages.Clear();
        return true;
    }
    categories.Sort([](const TextCatagory* left, const TextCatagory* right)
                    { return (left ? left->Number() : 0) < (right ? right->Number() : 0); });
    if (languages.Count() == 0)
        for (const KelText* name : names)
            languages.Add(new TextLanguage(name ? *name : KelText()));
    for (TextEntry* entry : entries)
        if (entry)
            entry->EnsureTexts(languages.Count());
    return true;
}

namespace
{
// Reads the parts of one record's body held in memory, each bounded by the
// end of the part that encloses it (the record, or its open block), as the
// archive's own reads are.
class RecordBytes
{
public:
    RecordBytes(const char* body, size_t size) : at(body), end(body + size), limit(end) {}

    size_t Left() const { return size_t(limit - at); }

    bool U32(uint32_t& value)
    {
        if (Left() < 4)
            return false;
        std::memcpy(&value, at, 4);
        at += 4;
        return true;
    }
    bool Pass(size_t bytes)
    {
        if (Left() < bytes)
            return false;
        at += bytes;
        return true;
    }
    // A block boundary: closes the open block (reading goes on at its end)
    // and opens the next one, which may run to the end of the record.
    bool Boundary()
    {
        if (blockOpen)
            at = limit;
        limit = end;
        uint32_t size = 0;
        if (!U32(size) || size > size_t(end - at))
            return false;
        limit = at + size;
        blockOpen = true;
        return true;
    }
    // A wide text: its units and how many there are (without the
    // terminator); the empty text for a count of 0.
    bool Text(const char*& units, size_t& length)
    {
        uint32_t count = 0;
        if (!U32(count))
            return false;
        units = at;
        length = 0;
        if (count == 0)
            return true;
        if (count > Left() / 2 || count - 1 > uint32_t(Archive::MaxTextUnits) ||
            !Archive::IsWideText(at, count))
            return false;
        length = count - 1;
        at += size_t(count) * 2;
        return true;
    }

private:
    const char* at;
    const char* end;
    const char* limit;
    bool blockOpen = false;
};

// The text an entry record gives one language, and the entry's number.
struct KeptText
{
    uint32_t number = 0;
    const char* units = nullptr;
    size_t length = 0;
};

// Reads the body of one entry record (`size` bytes after its header) with
// every check that reading it into a TextEntry makes, and finds the text of
// language `slot`, or the default text when that one is empty. The fields in
// TextEntry's order: default text, note, extra; block: number, category,
// data, attributes; block: the language texts and the linked numbers.
bool ReadEntryRecord(const char* body, size_t size, int32_t slot, KeptText& kept)
{
    RecordBytes record(body, size);
    const char *defaultUnits = nullptr, *units = nullptr;
    size_t defaultLength = 0, length = 0;
    uint32_t textCount = 0, linkCount = 0;
    bool read = record.Text(defaultUnits, defaultLength) && record.Text(units, length) &&
                record.Text(units, length) && record.Boundary() && record.U32(kept.number) &&
                record.Pass(4 + 8 + 4) && record.Boundary() && record.U32(textCount) &&
                textCount <= record.Left() / Archive::MinTextSize;
    kept.length = 0;
    for (uint32_t i = 0; read && i < textCount; ++i)
    {
        read = record.Text(units, length);
        if (int32_t(i) == slot)
        {
            kept.units = units;
            kept.length = length;
        }
    }
    if (!read || !record.U32(linkCount) || linkCount > record.Left() / 4)
        return false;
    if (kept.length == 0)
    {
        kept.units = defaultUnits;
        kept.length = defaultLength;
    }
    return true;
}
} // namespace

bool TextHolder::ReadEntriesCompact(Archive& archive)
{
    uint32_t count = 0;
    if (!archive.Count(count, Archive::RecordHeaderSize))
        return false;
    // Room for the texts of one language at once, so that the pool is not
    // moved while it fills: an entry holds a text per language and a default
    // text of about the same length each, so a quarter more than the file's
    // share per text is seldom outgrown (the pool still grows when it is).
    const size_t share = archive.TotalBytes() / 2 / size_t(std::max(names.Count() + 1, 1));
    if (!ReservePool(std::min<size_t>(archive.TotalBytes() / 2, share + share / 4) + 1))
        return false;
    if (!archive.WideTexts() || archive.IsAlternativeFormat())
    {
        TextEntry entry;
        entry.KeepOnlyText(languageSlot);
        for (uint32_t i = 0; i < count; ++i)
        {
            bool present = false;
            if (!archive.ReadInto(entry, present))
                return false;
            if (present && !AddToTable(entry.Number(), entry.TextFor(languageSlot)))
                return false;
        }
        return true;
    }

    // Wide records are read straight from the archive's bytes: as many as
    // are whole in memory at a time, then the archive reads the next one in.
    for (uint32_t i = 0; i < count;)
    {
        size_t available = 0;
        const char* bytes = archive.Held(available);
        const size_t remaining = archive.Remaining();
        size_t used = 0;
        for (; i < count && available - used >= Archive::RecordHeaderSize; ++i)
        {
            const char* header = bytes + used;
            uint32_t tag = 0, size = 0;
            std::memcpy(&tag, header, 4);
            std::memcpy(&size, header + 4, 4);
            if (size > remaining - used - Archive::RecordHeaderSize || (tag == 0 && size != 0) ||
                (tag != 0 && tag != TextEntry::Tag))
            {
                archive.Fail();
                return false;
            }
            if (size > available - used - Archive::RecordHeaderSize)
                break; // not whole in memory yet
            used += Archive::RecordHeaderSize + size;
            if (tag == 0)
                continue; // no object
            const char* body = header + Archive::RecordHeaderSize;
            KeptText kept;
            if (!ReadEntryRecord(body, size, languageSlot, kept))
            {
                archive.Fail();
                return false;
            }
            if (!AddToTable(kept.number, kept.units, kept.length))
                return false;
            // Before the pool fills up: room for all texts, as many as the
            // texts so far let expect (rather than twice what there is).
            if (poolSize > poolCapacity - poolCapacity / 16 &&
                !ReservePool(size_t(double(poolSize) / (i + 1) * count * 1.1) + 64))
                return false;
        }
        archive.Skip(used);
        if (i == count)
            break;
        // The next record reaches past the bytes in memory: read it in whole.
        const char* header = archive.Peek(Archive::RecordHeaderSize);
        uint32_t size = 0;
        if (header)
            std::memcpy(&size, header + 4, 4);
        if (!header || size > archive.Remaining() - Archive::RecordHeaderSize ||
            !archive.Peek(Archive::RecordHeaderSize + size))
        {
            archive.Fail();
            return false;
        }
    }
    return archive.Ok();
}
