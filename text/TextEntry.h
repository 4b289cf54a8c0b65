#pragma once
#include <cstdint>
#include <list>
#include <vector>

#include "text/Archive.h"
#include "text/KelText.h"

// A list of 32-bit numbers walked by position. The last position reached is
// cached, so walking the list in order costs one step per element.
// Copying takes the numbers and not the cached position, which points into
// the other list; moving is that same copy on purpose (no move members).
class NumberChain // NOLINT(cppcoreguidelines-special-member-functions)
{
public:
    NumberChain() = default;
    NumberChain(const NumberChain& other) : values(other.values) {}
    NumberChain& operator=(const NumberChain& other);

    int32_t Count() const { return int32_t(values.size()); }
    // The value at position index (0-based); 0 outside the list.
    uint32_t At(int32_t index) const;
    void Add(uint32_t value);
    void Clear();

private:
    std::list<uint32_t> values;
    mutable std::list<uint32_t>::const_iterator cached;
    mutable int32_t cachedIndex = -1;
};

// The texts of one dictionary number in every language of the dictionary.
//
// Record (read and written in this order): default text, note, extra text;
// block boundary; number (u32), category (u32), data (u64), attributes (u32);
// block boundary; count of language texts (u32) and the texts; count of linked
// numbers (u32) and the numbers (u32 each).
class TextEntry : public Storable
{
public:
    static constexpr uint32_t Tag = 1;

    TextEntry() = default;
    explicit TextEntry(uint32_t number) : number(number) {}

    uint32_t Number() const { return number; }
    void SetNumber(uint32_t value) { number = value; }
    // The category number this entry belongs to.
    uint32_t Category() const { return category; }
    void SetCategory(uint32_t value) { category = value; }
    // Further values carried through load and save unchanged.
    uint32_t Attributes() const { return attributes; }
    void SetAttributes(uint32_t value) { attributes = value; }
    uint64_t Data() const { return data; }
    void SetData(uint64_t value) { data = value; }

    // Used when the chosen language has no text for the entry.
    KelText& DefaultText() { return defaultText; }
    const KelText& DefaultText() const { return defaultText; }
    // Two further texts carried through load and save unchanged.
    KelText& Note() { return note; }
    KelText& Extra() { return extra; }

    // Texts by language position (the dictionary's language order).
    int32_t TextCount() const { return int32_t(texts.size()); }
    // The shared empty text outside the array.
    const KelText& Text(int32_t language) const;
    // Grows the array to hold `language` when needed.
    void SetText(int32_t language, const KelText& text);
    // Makes sure there is a (possibly empty) text for each of `count` languages.
    void EnsureTexts(int32_t count);
    // The text for a language slot: that language's text when the slot is in
    // range and the text is not empty, else the default text.
    const KelText& TextFor(int32_t slot) const;

    // Reading only what one language needs: with a slot set, Serialise keeps
    // only the default text and that slot's text and passes over the others
    // (checking them all the same). KeepAllTexts reads everything.
    static constexpr int32_t KeepAllTexts = -3;
    void KeepOnlyText(int32_t slot) { keptSlot = slot; }

    NumberChain& Links() { return links; }
    const NumberChain& Links() const { return links; }

    bool Serialise(Archive& archive) override;
    uint32_t ClassTag() const override { return Tag; }

private:
    std::vector<KelText> texts;
    NumberChain links;
    KelText defaultText;
    KelText note;
    KelText extra;
    uint32_t number = 0;
    uint32_t category = 0;
    uint32_t attributes = 0;
    uint64_t data = 0;
    int32_t keptSlot = KeepAllTexts;
};
