#include "text/TextEntry.h"

NumberChain& NumberChain::operator=(const NumberChain& other)
{
    if (this != &other)
    {
        values = other.values;
        cachedIndex = -1;
    }
    return *this;
}

uint32_t NumberChain::At(int32_t index) const
{
    if (index < 0 || index >= Count())
        return 0;
    // Start from the cached position when it is at or before the wanted one.
    if (cachedIndex < 0 || cachedIndex > index)
    {
        cached = values.begin();
        cachedIndex = 0;
    }
    while (cachedIndex < index)
    {
        ++cached;
        ++cachedIndex;
    }
    return *cached;
}

void NumberChain::Add(uint32_t value)
{
    values.push_back(value);
}

void NumberChain::Clear()
{
    values.clear();
    cachedIndex = -1;
}

const KelText& TextEntry::Text(int32_t language) const
{
    static const KelText empty;
    return language >= 0 && language < TextCount() ? texts[size_t(language)] : empty;
}

void TextEntry::SetText(int32_t language, const KelText& text)
{
    if (language < 0)
        return;
    EnsureTexts(language + 1);
    texts[size_t(language)] = text;
}

void TextEntry::EnsureTexts(int32_t count)
{
    if (count > TextCount())
        texts.resize(size_t(count));
}

const KelText& TextEntry::TextFor(int32_t slot) const
{
    const KelText& own = Text(slot);
    return own.IsEmpty() ? defaultText : own;
}

bool TextEntry::Serialise(Archive& archive)
{
    const bool selective = archive.IsReading() && keptSlot != KeepAllTexts;
    auto field = [&](KelText& text, bool wanted)
    {
        if (selective && !wanted)
        {
            text = KelText();
            archive.SkipText();
        }
        else
            archive.Value(text);
    };
    archive.Value(defaultText);
    field(note, false);
    field(extra, false);
    archive.Boundary();
    archive.Value(number);
    archive.Value(category);
    archive.Value(data);
    archive.Value(attributes);
    archive.Boundary();

    uint32_t count = uint32_t(texts.size());
    if (archive.IsReading())
    {
        texts.clear();
        if (!archive.Count(count, Archive::MinTextSize))
            return false;
        texts.resize(count);
    }
    else
        archive.Value(count);
    for (size_t i = 0; i < texts.size(); ++i)
        field(texts[i], int32_t(i) == keptSlot);

    uint32_t linkCount = uint32_t(links.Count());
    if (archive.IsReading())
    {
        links.Clear();
        if (!archive.Count(linkCount, 4))
            return false;
        for (uint32_t i = 0; i < linkCount; ++i)
        {
            uint32_t value = 0;
            archive.Value(value);
            links.Add(value);
        }
    }
    else
    {
        archive.Value(linkCount);
        for (int32_t i = 0; i < links.Count(); ++i)
        {
            uint32_t value = links.At(i);
            archive.Value(value);
        }
    }
    return archive.Ok();
}
