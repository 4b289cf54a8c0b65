#include "settings/iniLines.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace
{
char16_t Fold(char16_t ch)
{
    return (ch >= u'a' && ch <= u'z') ? char16_t(ch - 32) : ch;
}

// FNV-1a over the folded units, continued from `hash`.
constexpr uint64_t kHashStart = 14695981039346656037ull;

uint64_t HashFolded(std::u16string_view text, uint64_t hash = kHashStart)
{
    for (const char16_t ch : text)
        hash = (hash ^ Fold(ch)) * 1099511628211ull;
    return hash;
}

// Whether line is a header line, "[" ... "]".
bool IsHeader(const iniLine& line)
{
    return line.IsBoundary() && line.c_str()[line.Length() - 1] == u']';
}

// The hash that a header line for `section` has: that of "[" + section + "]".
uint64_t HeaderHash(std::u16string_view section)
{
    return HashFolded(u"]", HashFolded(section, HashFolded(u"[")));
}

// The first unit at or after `at` that is a line feed or a 0; `end` when there
// is none. Eight units at a time where the processor allows.
char16_t* NextBreak(char16_t* at, char16_t* end)
{
#if defined(__SSE2__)
    const __m128i feed = _mm_set1_epi16(u'\n'), zero = _mm_setzero_si128();
    for (; end - at >= 8; at += 8)
    {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        const int found = _mm_movemask_epi8(
            _mm_or_si128(_mm_cmpeq_epi16(units, feed), _mm_cmpeq_epi16(units, zero)));
        if (found)
            return at + std::countr_zero(unsigned(found)) / 2;
    }
#endif
    while (at != end && *at != u'\n' && *at != 0)
        ++at;
    return at;
}

// The number of line feeds in [at, end).
size_t CountFeeds(const char16_t* at, const char16_t* end)
{
    size_t feeds = 0;
#if defined(__SSE2__)
    // Counted in eight lanes (each match subtracts -1), summed every 32,768 steps.
    const __m128i feed = _mm_set1_epi16(u'\n');
    while (end - at >= 8)
    {
        __m128i lanes = _mm_setzero_si128();
        for (int step = 0; step < 32768 && end - at >= 8; ++step, at += 8)
            lanes = _mm_sub_epi16(
                lanes,
                _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(at)), feed));
        alignas(16) uint16_t counts[8];
        _mm_store_si128(reinterpret_cast<__m128i*>(counts), lanes);
        for (const uint16_t count : counts)
            feeds += count;
    }
#endif
    return feeds + size_t(std::count(at, end, u'\n'));
}

bool IsHeaderFor(const iniLine& line, std::u16string_view section)
{
    const std::u16string_view text = line.View();
    return text.size() == section.size() + 2 && IsHeader(line) &&
           iniLines::SameFolded(text.substr(1, section.size()), section);
}
} // namespace

// The lines from one line that begins with "[" up to the next one.
struct iniLines::Segment
{
    explicit Segment(iniLine* line) : header(line) {}
    iniLine* header;
    // Key lines by their folded key: the first one of each key in the segment.
    Table keys;
    bool keysBuilt = false;
    // Searches made by a plain scan, before the table pays for its making.
    uint32_t scans = 0;
};

// ---------------------------------------------------------------------------
// hash tables

namespace
{
template <typename TableType>
void Grow(TableType& table)
{
    using Slot = typename TableType::Slot;
    const size_t size = table.slots.empty() ? 16 : table.slots.size() * 2;
    std::vector<Slot> old;
    old.swap(table.slots);
    table.slots.assign(size, Slot{0, nullptr});
    for (const Slot& slot : old)
        if (slot.line)
        {
            size_t at = size_t(slot.hash) & (size - 1);
            while (table.slots[at].line)
                at = (at + 1) & (size - 1);
            table.slots[at] = slot;
        }
}

// The slot that holds the line `same` accepts under `hash`, or the free slot
// where it would go (with room made for it).
template <typename TableType, typename Same>
typename TableType::Slot& Lookup(TableType& table, uint64_t hash, Same same)
{
    if ((table.used + 1) * 4 > table.slots.size() * 3)
        Grow(table);
    const size_t mask = table.slots.size() - 1;
    for (size_t at = size_t(hash) & mask;; at = (at + 1) & mask)
    {
        auto& slot = table.slots[at];
        if (!slot.line || (slot.hash == hash && same(*slot.line)))
            return slot;
    }
}

// The line `same` accepts under `hash`, or null; never changes the table.
template <typename TableType, typename Same>
iniLine* Find(const TableType& table, uint64_t hash, Same same)
{
    if (table.slots.empty())
        return nullptr;
    const size_t mask = table.slots.size() - 1;
    for (size_t at = size_t(hash) & mask;; at = (at + 1) & mask)
    {
        const auto& slot = table.slots[at];
        if (!slot.line)
            return nullptr;
        if (slot.hash == hash && same(*slot.line))
            return slot.line;
    }
}

// Enters line under hash; an existing entry that `same` accepts is replaced
// only when `replace` is set. Answers the line now entered.
template <typename TableType, typename Same>
iniLine* Enter(TableType& table, uint64_t hash, iniLine* line, Same same, bool replace)
{
    auto& slot = Lookup(table, hash, same);
    if (!slot.line)
    {
        slot = {hash, line};
        ++table.used;
    }
    else if (replace)
        slot.line = line;
    return slot.line;
}

// An empty table with room for `expected` entries without growing.
template <typename TableType>
void Prepare(TableType& table, size_t expected)
{
    size_t size = 16;
    while (size * 3 < expected * 4 + 4)
        size *= 2;
    table.slots.assign(size, {0, nullptr});
    table.used = 0;
}

template <typename TableType>
void Empty(TableType& table)
{
    table.slots.clear();
    table.used = 0;
}
} // namespace

// ---------------------------------------------------------------------------
// grammar helpers

bool iniLines::KeyOf(std::u16string_view line, std::u16string_view& key)
{
    const size_t equals = line.find(u'=');
    if (equals == std::u16string_view::npos)
        return false;
    key = line.substr(0, equals);
    return true;
}

bool iniLines::SameFolded(std::u16string_view a, std::u16string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i] && Fold(a[i]) != Fold(b[i]))
            return false;
    return true;
}

// ---------------------------------------------------------------------------
// lines and their storage

iniLines::iniLines() = default;

iniLines::~iniLines()
{
    Clear();
}

iniLine* iniLines::NewLine(std::u16string_view text)
{
    iniLine* line = nullptr;
    if (freeLines)
    {
        line = freeLines;
        freeLines = line->next;
        *line = iniLine();
    }
    else
    {
        if (blockUsed == blockSize)
        {
            // Blocks grow with the document: small files stay small.
            blockSize = std::clamp(blockSize * 2, 64, 4096);
            blocks.emplace_back(new iniLine[size_t(blockSize)]);
            blockUsed = 0;
        }
        line = &blocks.back()[size_t(blockUsed++)];
    }
    SetText(line, text);
    return line;
}

void iniLines::FreeText(iniLine* line)
{
    line->text = u"";
    line->length = 0;
    line->owned = 0;
}

char16_t* iniLines::TextRoom(size_t units)
{
    // Texts share blocks; a long one has a block of its own.
    constexpr size_t kBlock = size_t(32) * 1024;
    if (units > kBlock / 4)
    {
        textBlocks.emplace_back(new char16_t[units]);
        return textBlocks.back().get();
    }
    if (units > textLeft)
    {
        textBlocks.emplace_back(new char16_t[kBlock]);
        textNext = textBlocks.back().get();
        textLeft = kBlock;
    }
    char16_t* room = textNext;
    textNext += units;
    textLeft -= units;
    return room;
}

void iniLines::SetText(iniLine* line, std::u16string_view text)
{
    if (text.empty())
    {
        FreeText(line);
        return;
    }
    // A line's own text is written over when the new one fits in its place.
    char16_t* copy = line->owned && line->length >= text.size() ? const_cast<char16_t*>(line->text)
                                                                : TextRoom(text.size() + 1);
    std::memcpy(copy, text.data(), text.size() * sizeof(char16_t));
    copy[text.size()] = 0;
    line->text = copy;
    line->length = uint32_t(text.size()) & 0x7FFFFFFF;
    line->owned = 1;
}

void iniLines::LinkAfter(iniLine* at, iniLine* line)
{
    iniLine*& link = at ? at->next : head;
    line->next = link;
    link = line;
    ++count;
    ordered = false;
}

void iniLines::Clear()
{
    head = nullptr;
    count = 0;
    loadedText.reset();
    textBlocks.clear();
    textNext = nullptr;
    textLeft = 0;
    blocks.clear();
    blockSize = blockUsed = 0;
    freeLines = nullptr;
    DropIndex();
    ordered = false;
    std::vector<const iniLine*>().swap(order);
}

void iniLines::Assign(std::unique_ptr<char16_t[]> text, size_t size)
{
    Clear();
    loadedText = std::move(text);
    char16_t* const begin = loadedText.get();
    char16_t* const end = begin + size;
    *end = 0; // the last line's terminator

    // One record per line, all in one block.
    const size_t feeds = CountFeeds(begin, end);
    const size_t total = feeds + (begin != end && end[-1] != u'\n' ? 1 : 0);
    if (total == 0)
    {
        indexed = true; // an empty document has an empty index
        return;
    }
    iniLine* records = new iniLine[total];
    blocks.emplace_back(records);
    blockSize = blockUsed = int32_t(total);

    // One pass: split at LF (dropping a CR before it), turn every NUL, which
    // would end a line early, into the replacement character, and index the
    // sections on the way.
    iniLine* line = records;
    int32_t current = -1;
    auto add = [&](char16_t* start, char16_t* stop)
    {
        *stop = 0; // the CR or LF, or the text's own terminator
        line->text = start;
        line->length = uint32_t(stop - start) & 0x7FFFFFFF;
        line->next = line + 1;
        if (*start == u'[')
        {
            current = OpenSegment(line);
        }
        line->segment = current;
        ++line;
    };
    char16_t* start = begin;
    for (char16_t* at = begin; (at = NextBreak(at, end)) != end;)
    {
        if (*at == 0)
        {
            *at++ = 0xFFFD;
            continue;
        }
        add(start, (at > start && at[-1] == u'\r') ? at - 1 : at);
        start = ++at;
    }
    if (start != end) // a last line without line end
        add(start, end);
    line[-1].next = nullptr;
    head = records;
    count = int32_t(total);
    indexed = true;
}

const iniLine& iniLines::operator[](int32_t pos) const
{
    static const iniLine none;
    if (pos < 0 || pos >= count)
        return none;
    if (!ordered)
        BuildOrder();
    return *order[size_t(pos)];
}

void iniLines::BuildOrder() const
{
    order.clear();
    order.reserve(size_t(count));
    for (const iniLine* line = head; line; line = line->next)
        order.push_back(line);
    ordered = true;
}

// ---------------------------------------------------------------------------
// index

iniLines::Segment* iniLines::NewSegment(iniLine* header) const
{
    segments.push_back(std::make_unique<Segment>(header));
    return segments.back().get();
}

int32_t iniLines::OpenSegment(iniLine* line) const
{
    NewSegment(line);
    if (IsHeader(*line))
        Enter(
            headers, HashFolded(line->View()), line,
            [line](const iniLine& other) { return SameFolded(other.View(), line->View()); }, false);
    return int32_t(segments.size()) - 1;
}

iniLines::Segment* iniLines::SegmentOf(const iniLine* line) const
{
    return line && line->segment >= 0 ? segments[size_t(line->segment)].get() : nullptr;
}

void iniLines::DropIndex() const
{
    indexed = false;
    segments.clear();
    Empty(headers);
}

void iniLines::BuildIndex() const
{
    DropIndex();
    int32_t current = -1;
    for (iniLine* line = head; line; line = line->next)
    {
        if (line->IsBoundary())
        {
            current = OpenSegment(line);
        }
        line->segment = current;
    }
    indexed = true;
}

void iniLines::BuildKeys(Segment& segment) const
{
    size_t body = 0;
    for (iniLine* line = segment.header->next; line && !line->IsBoundary(); line = line->next)
        ++body;
    Prepare(segment.keys, body);
    std::u16string_view key;
    for (iniLine* line = segment.header->next; line && !line->IsBoundary(); line = line->next)
        if (KeyOf(line->View(), key))
            Enter(
                segment.keys, HashFolded(key), line,
                [key](const iniLine& other)
                {
                    std::u16string_view otherKey;
                    return KeyOf(other.View(), otherKey) && SameFolded(otherKey, key);
                },
                false);
    segment.keysBuilt = true;
}

void iniLines::Forget(Segment& segment)
{
    Empty(segment.keys);
    segment.keysBuilt = false;
}

// ---------------------------------------------------------------------------
// editing

const iniLine* iniLines::InsertAfter(const iniLine* at_, std::u16string_view text)
{
    iniLine* at = const_cast<iniLine*>(at_);
    iniLine* line = NewLine(text);
    LinkAfter(at, line);
    if (!indexed)
        return line;

    // The segment that `at` belongs to (the one it starts, when it begins
    // with "["): the new line lands in its body.
    Segment* owner = SegmentOf(at);
    if (line->IsBoundary())
    {
        // A new segment starts here and takes over the owner's lines after it.
        Segment* added = NewSegment(line);
        line->segment = int32_t(segments.size()) - 1;
        bool moved = false;
        std::u16string_view key;
        for (iniLine* next = line->next; next && !next->IsBoundary(); next = next->next)
        {
            next->segment = line->segment;
            moved = true;
            if (KeyOf(next->View(), key))
                Enter(
                    added->keys, HashFolded(key), next,
                    [key](const iniLine& other)
                    {
                        std::u16string_view otherKey;
                        return KeyOf(other.View(), otherKey) && SameFolded(otherKey, key);
                    },
                    false);
        }
        added->keysBuilt = true;
        if (owner && moved)
            Forget(*owner);
        if (IsHeader(*line))
        {
            // Before every other header when no line before it begins with "[".
            const iniLine* first = Enter(
                headers, HashFolded(line->View()), line,
                [line](const iniLine& other) { return SameFolded(other.View(), line->View()); },
                owner == nullptr);
            if (first != line && owner)
                DropIndex(); // an earlier or later twin: which comes first is not known here
        }
        return line;
    }

    line->segment = at ? at->segment : -1;
    std::u16string_view key;
    if (!owner || !owner->keysBuilt || !KeyOf(line->View(), key))
        return line;
    auto same = [key](const iniLine& other)
    {
        std::u16string_view otherKey;
        return KeyOf(other.View(), otherKey) && SameFolded(otherKey, key);
    };
    // Directly after the header, a key line is the first of its key; elsewhere
    // it is only when the segment holds no other line of that key.
    if (Enter(owner->keys, HashFolded(key), line, same, at == owner->header) != line)
        Forget(*owner);
    return line;
}

void iniLines::Replace(const iniLine* line_, std::u16string_view text)
{
    iniLine* line = const_cast<iniLine*>(line_);
    if (indexed)
    {
        const bool was = line->IsBoundary();
        const bool now = !text.empty() && text[0] == u'[';
        if (was || now)
        {
            if (!(was && now && SameFolded(line->View(), text)))
                DropIndex();
        }
        else if (Segment* owner = SegmentOf(line); owner && owner->keysBuilt)
        {
            std::u16string_view oldKey, newKey;
            const bool hadKey = KeyOf(line->View(), oldKey);
            const bool hasKey = KeyOf(text, newKey);
            if (hadKey != hasKey || (hadKey && !SameFolded(oldKey, newKey)))
                Forget(*owner);
        }
    }
    SetText(line, text);
}

void iniLines::RemoveAfter(const iniLine* at_, int32_t n)
{
    iniLine* at = const_cast<iniLine*>(at_);
    iniLine*& link = at ? at->next : head;
    iniLine* first = link;
    iniLine* last = nullptr;
    int32_t removed = 0;
    bool boundary = false;
    for (iniLine* line = first; line && removed < n; line = line->next)
    {
        boundary = boundary || line->IsBoundary();
        last = line;
        ++removed;
    }
    if (removed == 0)
        return;
    iniLine* after = last->next;

    if (indexed)
    {
        if (boundary)
            DropIndex();
        else if (Segment* owner = SegmentOf(at); owner && owner->keysBuilt)
        {
            // The lines all lie in the body of at's segment.
            if (at == owner->header && (!after || after->IsBoundary()))
                Empty(owner->keys); // the whole body: known to hold no key
            else
                Forget(*owner);
        }
    }

    link = after;
    for (iniLine* line = first; line != after;)
    {
        iniLine* next = line->next;
        FreeText(line);
        line->segment = -1;
        line->next = freeLines;
        freeLines = line;
        line = next;
    }
    count -= removed;
    ordered = false;
}

// ---------------------------------------------------------------------------
// searches

const iniLine* iniLines::FindSection(std::u16string_view section) const
{
    if (!indexed)
        BuildIndex();
    return Find(headers, HeaderHash(section),
                [section](const iniLine& line) { return IsHeaderFor(line, section); });
}

const iniLine* iniLines::FindKey(const iniLine* header, std::u16string_view key) const
{
    // A line's key is the text before its first "=", which holds no "=": a
    // key with one matches no line. Otherwise a line matches when the "="
    // stands right after the key's length and the text before it is the key.
    if (!header || key.find(u'=') != std::u16string_view::npos)
        return nullptr;
    auto same = [key](const iniLine& line)
    {
        return line.Length() > int32_t(key.size()) && line.c_str()[key.size()] == u'=' &&
               SameFolded(line.View().substr(0, key.size()), key);
    };
    auto scan = [header, &same]() -> const iniLine*
    {
        for (const iniLine* line = header->next; line && !line->IsBoundary(); line = line->next)
            if (same(*line))
                return line;
        return nullptr;
    };
    if (!header->IsBoundary())
        return scan(); // not a line that begins with "[": no index for it
    if (!indexed)
        BuildIndex();
    Segment& segment = *SegmentOf(header);
    if (!segment.keysBuilt)
    {
        // A section searched once or twice is scanned; one searched more
        // often gets its table (which then costs one lookup per search).
        if (++segment.scans < 3)
            return scan();
        BuildKeys(segment);
    }
    return Find(segment.keys, HashFolded(key), same);
}
