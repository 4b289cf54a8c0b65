#pragma once
#include <cstdint>

// A fixed number of texts packed into one UTF-16 pool with an offset table.
// Reading outside the array, or an entry that holds nothing, gives the shared
// empty string; writing outside it is reported ("Set() out of bounds!",
// context "TextArray") and changes nothing.
class TextArray
{
public:
    explicit TextArray(int32_t count = 0);
    TextArray(const TextArray&) = delete;
    TextArray& operator=(const TextArray&) = delete;
    ~TextArray();

    int32_t Count() const { return count; }
    // Sets the number of entries; new entries are empty, cut ones are dropped.
    bool Resize(int32_t newCount);
    // Stores a copy of text (null: empty) at index. False when out of range.
    bool Set(int32_t index, const char16_t* text);
    // Never null.
    const char16_t* Get(int32_t index) const;

private:
    bool Compact(int32_t extra);

    char16_t* pool = nullptr;
    int32_t poolUsed = 0;
    int32_t poolCapacity = 0;
    // Per entry: start of its record in the pool, or -1 when it is empty.
    int32_t* offsets = nullptr;
    int32_t count = 0;
};
