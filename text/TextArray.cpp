#include "text/TextArray.h"

#include <cstring>

#include "text/AppServices.h"
#include "text/KelText.h"
#include "text/TextHeap.h"

TextArray::TextArray(int32_t initialCount)
{
    Resize(initialCount);
}

TextArray::~TextArray()
{
    GetTextHeap().Free(pool);
    GetTextHeap().Free(offsets);
}

bool TextArray::Resize(int32_t newCount)
{
    if (newCount < 0)
        return false;
    const size_t keep = size_t(newCount < count ? newCount : count) * sizeof(int32_t);
    void* fresh = GetTextHeap().Reallocate(offsets, size_t(newCount) * sizeof(int32_t), keep);
    if (!fresh)
        return false;
    offsets = static_cast<int32_t*>(fresh);
    for (int32_t i = count; i < newCount; ++i)
        offsets[i] = -1;
    count = newCount;
    return true;
}

bool TextArray::Set(int32_t index, const char16_t* text)
{
    if (index < 0 || index >= count)
    {
        if (AppServices* services = GetAppServices())
            services->ReportError(KelText(u"Set() out of bounds!"), KelText(u"TextArray"));
        return false;
    }
    const int32_t units = KelText::Measure(text);
    if (units == 0)
    {
        offsets[index] = -1;
        return true;
    }
    // The text may live in our own pool; keep a copy while the pool moves.
    KelText copy(text, units);
    if (poolUsed + units + 1 > poolCapacity && !Compact(units + 1))
        return false;
    offsets[index] = poolUsed;
    std::memcpy(pool + poolUsed, copy.c_str(), size_t(units + 1) * sizeof(char16_t));
    poolUsed += units + 1;
    return true;
}

const char16_t* TextArray::Get(int32_t index) const
{
    if (index < 0 || index >= count || offsets[index] < 0)
        return KelText::EmptyText();
    const char16_t* record = pool + offsets[index];
    // A record shorter than two units (just a terminator) holds nothing.
    if (record[0] == 0)
        return KelText::EmptyText();
    return record;
}

// Rebuilds the pool with only the live records and room for `extra` more units.
bool TextArray::Compact(int32_t extra)
{
    int32_t live = 0;
    for (int32_t i = 0; i < count; ++i)
        if (offsets[i] >= 0)
            live += KelText::Measure(pool + offsets[i]) + 1;
    int32_t capacity = live + extra;
    capacity += capacity / 2 + 64;
    auto* fresh =
        static_cast<char16_t*>(GetTextHeap().Allocate(size_t(capacity) * sizeof(char16_t)));
    if (!fresh)
        return false;
    int32_t used = 0;
    for (int32_t i = 0; i < count; ++i)
    {
        if (offsets[i] < 0)
            continue;
        const int32_t units = KelText::Measure(pool + offsets[i]) + 1;
        std::memcpy(fresh + used, pool + offsets[i], size_t(units) * sizeof(char16_t));
        offsets[i] = used;
        used += units;
    }
    GetTextHeap().Free(pool);
    pool = fresh;
    poolUsed = used;
    poolCapacity = capacity;
    return true;
}
