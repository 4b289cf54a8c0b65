#include "settings/iniLines.h"

#include <algorithm>
#include <new>

iniLines::~iniLines()
{
    Clear();
}

const KelText& iniLines::Line(int32_t pos) const
{
    static const KelText none;
    return (pos >= 0 && pos < Count()) ? *items[size_t(pos)] : none;
}

KelText* iniLines::MakeLine(KelText&& text)
{
    void* place;
    if (!freeSlots.empty())
    {
        place = freeSlots.back();
        freeSlots.pop_back();
    }
    else
    {
        if (blockUsed == blockSize)
        {
            // Blocks grow with the document: small files stay small.
            blockSize = std::clamp(blockSize * 2, 64, 4096);
            blocks.push_back(std::make_unique_for_overwrite<Slot[]>(size_t(blockSize)));
            blockUsed = 0;
        }
        place = &blocks.back()[size_t(blockUsed++)];
    }
    return new (place) KelText(std::move(text));
}

void iniLines::DestroyLine(KelText* line)
{
    line->~KelText();
    freeSlots.push_back(line);
}

// ---------------------------------------------------------------------------
// grammar helpers

bool iniLines::KeyOf(const KelText& line, std::u16string_view& key)
{
    const std::u16string_view text = line.View();
    const size_t equals = text.find(u'=');
    if (equals == std::u16string_view::npos)
        return false;
    key = text.substr(0, equals);
    return true;
}

bool iniLines::SameFolded(std::u16string_view a, std::u16string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (KelText::Fold(a[i]) != KelText::Fold(b[i]))
            return false;
    return true;
}

std::u16string iniLines::Folded(std::u16string_view text)
{
    std::u16string folded(text);
    for (char16_t& ch : folded)
        ch = KelText::Fold(ch);
    return folded;
}

// ---------------------------------------------------------------------------
// index

void iniLines::DropIndex() const
{
    indexed = false;
    segments.clear();
    headers.clear();
}

void iniLines::BuildIndex() const
{
    DropIndex();
    int32_t pos = 0;
    for (const KelText* line : items)
    {
        // The plain buffer: this runs over every line of a large file.
        const char16_t* text = line->c_str();
        if (text[0] == u'[')
        {
            segments.push_back(std::make_unique<Segment>(pos));
            if (text[line->Length() - 1] == u']')
                headers.try_emplace(Folded(line->View()), segments.back().get());
        }
        ++pos;
    }
    indexed = true;
}

iniLines::SegmentList::iterator iniLines::FirstFrom(int32_t pos) const
{
    return std::lower_bound(segments.begin(), segments.end(), pos,
                            [](const std::unique_ptr<Segment>& segment, int32_t value)
                            { return segment->start < value; });
}

int32_t iniLines::EndOf(SegmentList::iterator segment) const
{
    const auto next = std::next(segment);
    return next == segments.end() ? Count() : (*next)->start;
}

void iniLines::BuildKeys(SegmentList::iterator segment) const
{
    Segment& s = **segment;
    const int32_t end = EndOf(segment);
    s.keys.clear();
    std::u16string_view key;
    for (int32_t pos = s.start + 1; pos < end; ++pos)
        if (KeyOf(*items[size_t(pos)], key))
            s.keys.try_emplace(Folded(key), end - pos);
    s.keysBuilt = true;
}

void iniLines::Forget(Segment* segment)
{
    segment->keys.clear();
    segment->keysBuilt = false;
}

// ---------------------------------------------------------------------------
// editing

void iniLines::Insert(int32_t pos, KelText text)
{
    pos = std::clamp(pos, 0, Count());
    KelText* line = MakeLine(std::move(text));
    items.insert(items.begin() + pos, line);
    if (!indexed)
        return;

    // Every section that started at or after pos moves down one line.
    auto first = FirstFrom(pos);
    for (auto it = first; it != segments.end(); ++it)
        ++(*it)->start;
    // The section whose body receives the line (none before the first header).
    const bool hasOwner = first != segments.begin();
    Segment* owner = hasOwner ? std::prev(first)->get() : nullptr;

    if (IsBoundary(*line))
    {
        // A new section starts here and takes over the owner's lines after it.
        if (owner)
            Forget(owner);
        auto fresh = std::make_unique<Segment>(pos);
        Segment* added = fresh.get();
        segments.insert(first, std::move(fresh));
        if (line->At(line->Length() - 1) == u']')
        {
            auto [slot, inserted] = headers.try_emplace(Folded(line->View()), added);
            if (!inserted && slot->second->start > pos)
                slot->second = added;
        }
        return;
    }
    if (!owner || !owner->keysBuilt)
        return;
    if (pos == owner->start + 1)
    {
        // First line of the body: distances from the end stay right, and a
        // key line here is the first one of its key.
        std::u16string_view key;
        if (KeyOf(*line, key))
            owner->keys.insert_or_assign(Folded(key), EndOf(std::prev(first)) - pos);
    }
    else
    {
        Forget(owner);
    }
}

void iniLines::Replace(int32_t pos, KelText text)
{
    if (pos < 0 || pos >= Count())
        return;
    KelText* line = items[size_t(pos)];
    if (indexed)
    {
        const bool was = IsBoundary(*line);
        const bool now = IsBoundary(text);
        if (was || now)
        {
            if (!(was && now && SameFolded(line->View(), text.View())))
                DropIndex();
        }
        else if (const auto first = FirstFrom(pos); first != segments.begin())
        {
            Segment* owner = std::prev(first)->get();
            std::u16string_view oldKey, newKey;
            const bool hadKey = KeyOf(*line, oldKey);
            const bool hasKey = KeyOf(text, newKey);
            if (owner->keysBuilt && (hadKey != hasKey || (hadKey && !SameFolded(oldKey, newKey))))
                Forget(owner);
        }
    }
    *line = std::move(text);
}

void iniLines::Remove(int32_t pos, int32_t count)
{
    if (pos < 0)
    {
        count += pos;
        pos = 0;
    }
    count = std::min(count, Count() - pos);
    if (count <= 0)
        return;
    if (indexed)
    {
        bool boundary = false;
        for (int32_t i = pos; i < pos + count && !boundary; ++i)
            boundary = IsBoundary(*items[size_t(i)]);
        if (boundary)
        {
            DropIndex();
        }
        else
        {
            // The lines all lie in one section's body (or before the first header).
            const auto first = FirstFrom(pos);
            if (first != segments.begin())
            {
                const auto ownerIt = std::prev(first);
                Segment* owner = ownerIt->get();
                if (owner->keysBuilt)
                {
                    if (pos == owner->start + 1 && pos + count == EndOf(ownerIt))
                        owner->keys.clear(); // the whole body: known to hold no key
                    else
                        Forget(owner);
                }
            }
            for (auto it = first; it != segments.end(); ++it)
                (*it)->start -= count;
        }
    }
    const auto first = items.begin() + pos;
    for (auto it = first; it != first + count; ++it)
        DestroyLine(*it);
    items.erase(first, first + count);
}

void iniLines::Clear()
{
    for (KelText* line : items)
        line->~KelText();
    items.clear();
    freeSlots.clear();
    blocks.clear();
    blockSize = blockUsed = 0;
    DropIndex();
}

// ---------------------------------------------------------------------------
// searches

int32_t iniLines::FindSection(const KelText& section) const
{
    if (!indexed)
        BuildIndex();
    std::u16string header;
    header.reserve(size_t(section.Length()) + 2);
    header += u'[';
    header += Folded(section.View());
    header += u']';
    const auto found = headers.find(header);
    return found == headers.end() ? -1 : found->second->start;
}

int32_t iniLines::SectionEnd(int32_t header) const
{
    if (header >= Count())
        return Count();
    if (!indexed)
        BuildIndex();
    const auto next = FirstFrom(std::max(header, -1) + 1);
    return next == segments.end() ? Count() : (*next)->start;
}

int32_t iniLines::FindKey(int32_t header, const KelText& key) const
{
    if (header < 0 || header >= Count())
        return -1;
    if (!indexed)
        BuildIndex();
    const auto segment = FirstFrom(header);
    if (segment == segments.end() || (*segment)->start != header)
    {
        // Not a line that begins with "[": no index for it, scan.
        const int32_t end = SectionEnd(header);
        std::u16string_view lineKey;
        for (int32_t pos = header + 1; pos < end; ++pos)
            if (KeyOf(*items[size_t(pos)], lineKey) && SameFolded(lineKey, key.View()))
                return pos;
        return -1;
    }
    if (!(*segment)->keysBuilt)
        BuildKeys(segment);
    const auto& keys = (*segment)->keys;
    const auto found = keys.find(Folded(key.View()));
    return found == keys.end() ? -1 : EndOf(segment) - found->second;
}
