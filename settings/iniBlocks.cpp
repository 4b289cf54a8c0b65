#include "settings/iniBlocks.h"

#include <algorithm>
#include <utility>

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
    const iniLine* header = lines.FindSection(section.View());
    if (!header)
    {
        KelText headerLine(u"[");
        headerLine += section;
        headerLine += u']';
        header = lines.InsertAfter(nullptr, headerLine.View());
        lines.InsertAfter(header, {}); // the empty line after the items
    }
    else
    {
        int32_t body = 0;
        for (const iniLine* line = header->Next(); line && !line->IsBoundary(); line = line->Next())
            ++body;
        lines.RemoveAfter(header, body);
        if (header->Next())
            lines.InsertAfter(header, {}); // keep the next section apart
    }
    // Each item after the one before, so all of them come before that empty line.
    const iniLine* at = header;
    for (int32_t index = 0;; ++index)
    {
        KelText item = GetItem(index);
        item.Trim();
        if (item.IsEmpty())
            break; // an empty item ends the written list
        at = lines.InsertAfter(at, item.View());
    }
}

void iniBlock::Read(iniLines& lines)
{
    const iniLine* header = lines.FindSection(section.View());
    ClearItems();
    int32_t added = 0;
    if (header)
    {
        for (const iniLine* at = header->Next(); at && !at->IsBoundary(); at = at->Next())
        {
            KelText line(at->c_str(), at->Length());
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
                         KelText defaultName_, KelText defaultValue_)
    : iniBlock(section_), names(names_), values(values_), defaultName(std::move(defaultName_)),
      defaultValue(std::move(defaultValue_))
{
}

iniEquBlock::~iniEquBlock() = default;

KelText iniEquBlock::GetItem(int32_t index) const
{
    if (!names || !values || index < 0 || index >= std::min(names->Count(), values->Count()))
        return KelText();
    const KelText& name = *names->At(index);
    const KelText& value = *values->At(index);
    KelText item;
    item.Reserve(name.Length() + 1 + value.Length(), false);
    item += name;
    item += u'=';
    item += value;
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
