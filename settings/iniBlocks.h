#pragma once
#include <cstdint>

#include "settings/PtrArray.h"
#include "settings/TextLinkedList.h"
#include "settings/iniEntries.h"

// Block entries bind a whole section: every non-empty line of it (blanks and
// tabs trimmed) is one item of a list.
//
// Writing replaces the section's body with the items GetItem(0), GetItem(1),
// ... (trimmed) up to the first empty one: an empty item ends the written
// list, and the items after it are not written. When another section follows,
// one empty line is kept before it. A missing section is inserted at the top
// of the document: the header, the items, one empty line.
//
// Reading clears the items and adds one per non-empty line of the section; a
// missing section, or one without a non-empty line, asks for the default item
// (AddItem with null).
class iniBlock : public iniStruct
{
public:
    explicit iniBlock(const KelText& section);
    ~iniBlock() override;
    void Write(iniLines& lines) override;
    void Read(iniLines& lines) override;
    // The text of item index in its file form; empty outside the list.
    virtual KelText GetItem(int32_t index) const;
    // Parses one line and inserts it as item index (clamped to the list);
    // null asks for the default item.
    virtual void AddItem(const char16_t* text, int32_t index);
    // Deletes all items.
    virtual void ClearItems();
};

// A section of name=value lines kept as two parallel lists. A line is split
// at its first "=" and both parts are trimmed; a line whose name is empty
// (no "=", or "=" first) is dropped. The default item is the pair
// defaultName=defaultValue, added only when defaultName is not empty.
class iniEquBlock : public iniBlock
{
public:
    iniEquBlock(const KelText& section, TextPtrArray* names, TextPtrArray* values,
                KelText defaultName, KelText defaultValue);
    ~iniEquBlock() override;
    // name + "=" + value, for indexes below the shorter list's length.
    KelText GetItem(int32_t index) const override;
    void AddItem(const char16_t* text, int32_t index) override;
    void ClearItems() override;

    TextPtrArray* names;
    TextPtrArray* values;
    KelText defaultName;
    KelText defaultValue;
};

// A section of plain lines kept as a linked list of texts; no default item.
class iniStringArray : public iniBlock
{
public:
    iniStringArray(const KelText& section, TextLinkedList* target);
    ~iniStringArray() override;
    KelText GetItem(int32_t index) const override;
    void AddItem(const char16_t* text, int32_t index) override;
    void ClearItems() override;

    TextLinkedList* target;
};

// A section of plain lines kept as an owning array of texts; no default item.
class iniStringList : public iniBlock
{
public:
    iniStringList(const KelText& section, TextPtrArray* target);
    ~iniStringList() override;
    KelText GetItem(int32_t index) const override;
    void AddItem(const char16_t* text, int32_t index) override;
    void ClearItems() override;

    TextPtrArray* target;
};
