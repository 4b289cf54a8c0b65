#include "settings/iniBlocks.h"

#include <algorithm>

// ---------------------------------------------------------------------------
// iniBlock

iniBlock::iniBlock(const KelText& section_) : iniStruct(section_, KelText()) {}

iniBlock::~iniBlock() = default;

KelText iniBlock::GetItem(int32_t) const
{
    return KelText();
}

void iniBlock::AddItem(const char16_t*, int32_t) {}

void iniBlock::ClearItems() {}

void iniBlock::Write(iniLines& lines)
{
    const int32_t header = lines.FindSection(section);
    int32_t pos;
    if (header < 0)
    {
        KelText headerLine(u"[");
        headerLine += section;
        headerLine += u']';
        lines.Insert(0, std::move(headerLine));
        lines.Insert(1, KelText()); // the empty line after the items
        pos = 1;
    }
    else
    {
        pos = header + 1;
        lines.Remove(pos, lines.SectionEnd(header) - pos);
        if (pos < lines.Count())
            lines.Insert(pos, KelText()); // keep the next section apart
    }
    for (int32_t index = 0;; ++index)
    {
        KelText item = GetItem(index);
        item.Trim();
        if (item.IsEmpty())
            break; // an empty item ends the written list
        lines.Insert(pos++, std::move(item));
    }
}

void iniBlock::Read(iniLines& lines)
{
    const int32_t header = lines.FindSection(section);
    ClearItems();
    int32_t added = 0;
    if (header >= 0)
    {
        const int32_t end = lines.SectionEnd(header);
        for (int32_t pos = header + 1; pos < end; ++pos)
        {
            KelText line = lines[pos];
            line.Trim();
            if (!line.IsEmpty())
                AddItem(line.c_str(), added++);
        }
    }
    if (added == 0)
        AddItem(nullptr, 0);
}

// ---------------------------------------------------------------------------
// iniEquBlock

iniEquBlock::iniEquBlock(const KelText& section_, TextPtrArray* names_, TextPtrArray* values_,
                         const KelText& defaultName_, const KelText& defaultValue_)
    : iniBlock(section_), names(names_), values(values_), defaultName(defaultName_),
      defaultValue(defaultValue_)
{
}

iniEquBlock::~iniEquBlock() = default;

KelText iniEquBlock::GetItem(int32_t index) const
{
    if (!names || !values || index < 0 || index >= std::min(names->Count(), values->Count()))
        return KelText();
    KelText item(*names->At(index));
    item += u'=';
    item += *values->At(index);
    return item;
}

void iniEquBlock::AddItem(const char16_t* text, int32_t index)
{
    if (!names || !values)
        return;
    KelText name;
    KelText value;
    if (!text)
    {
        name = defaultName;
        value = defaultValue;
    }
    else
    {
        const KelText line(text);
        const int32_t equals = line.Find(u'=');
        if (equals <= 1)
            return; // no "=", or "=" first: no name
        name = line.Sub(1, equals - 1);
        value = line.Sub(equals + 1, line.Length());
    }
    name.Trim();
    value.Trim();
    if (name.IsEmpty())
        return;
    names->InsertAt(index, new KelText(std::move(name)));
    values->InsertAt(index, new KelText(std::move(value)));
}

void iniEquBlock::ClearItems()
{
    if (names)
        names->Clear();
    if (values)
        values->Clear();
}

// ---------------------------------------------------------------------------
// iniStringArray

iniStringArray::iniStringArray(const KelText& section_, TextLinkedList* target_)
    : iniBlock(section_), target(target_)
{
}

iniStringArray::~iniStringArray() = default;

KelText iniStringArray::GetItem(int32_t index) const
{
    const KelText* item = target ? target->At(index) : nullptr;
    return item ? *item : KelText();
}

void iniStringArray::AddItem(const char16_t* text, int32_t index)
{
    if (target && text)
        target->InsertAt(index, KelText(text));
}

void iniStringArray::ClearItems()
{
    if (target)
        target->Clear();
}

// ---------------------------------------------------------------------------
// iniStringList

iniStringList::iniStringList(const KelText& section_, TextPtrArray* target_)
    : iniBlock(section_), target(target_)
{
}

iniStringList::~iniStringList() = default;

KelText iniStringList::GetItem(int32_t index) const
{
    const KelText* item = target ? target->At(index) : nullptr;
    return item ? *item : KelText();
}

void iniStringList::AddItem(const char16_t* text, int32_t index)
{
    if (target && text)
        target->InsertAt(index, new KelText(text));
}

void iniStringList::ClearItems()
{
    if (target)
        target->Clear();
}
