#pragma once
#include <cstdint>

#include "settings/iniLines.h"
#include "text/KelText.h"

// Typed settings entries: each binds one section and key of a settings file
// to a variable of the program, knows the variable's text form and the
// default the variable takes when the file lacks the key. Entries are made
// with new and handed to an iniFile, which owns them; the variables (targets)
// belong to the caller. A null target is tolerated: reading changes nothing,
// writing uses the default.
//
// Scalar entries write their key line as key + "=" + GetText(), and read the
// value after the first "=" with blanks and tabs trimmed.

// The base of every entry; its text form is empty.
class iniStruct
{
public:
    iniStruct(KelText section, KelText key);
    iniStruct(const iniStruct&) = delete;
    iniStruct& operator=(const iniStruct&) = delete;

    // The target's current value in its file form.
    virtual KelText GetText() const;
    // Parses text into the target; null stores the default.
    virtual void SetText(const char16_t* text);
    virtual ~iniStruct();
    // Puts the key line into the document: replaces the key's line in its
    // section, or inserts it directly after the header; a missing section is
    // inserted at the top as an empty line, the header and the key line.
    virtual void Write(iniLines& lines);
    // Fills the target from the document, or with the default when the
    // section or the key is missing.
    virtual void Read(iniLines& lines);

    KelText section;
    KelText key;
};

// A signed 32-bit integer, written in decimal; reads the leading decimal
// integer of the value ("42abc" is 42, no digits is 0).
class iniInteger : public iniStruct
{
public:
    iniInteger(const KelText& section, const KelText& key, int32_t* target, int32_t defaultValue);
    // The same for an unsigned 32-bit variable (a DWORD-style flag or count):
    // it holds the same 32 bits, so -1 in the file reads as 0xFFFFFFFF and
    // 0xFFFFFFFF writes as -1.
    iniInteger(const KelText& section, const KelText& key, uint32_t* altTarget,
               int32_t defaultValue);
    KelText GetText() const override;
    void SetText(const char16_t* text) override;
    ~iniInteger() override;

    int32_t* target = nullptr;
    uint32_t* altTarget = nullptr;
    int32_t defaultValue;
};

// A 32-bit value in upper-case hexadecimal without prefix or leading zeros
// (0 is written "0"); reads up to 16 hexadecimal digits from the start of the
// value and keeps the low 32 bits.
class iniHex : public iniStruct
{
public:
    iniHex(const KelText& section, const KelText& key, uint32_t* target, uint32_t defaultValue);
    KelText GetText() const override;
    void SetText(const char16_t* text) override;
    ~iniHex() override;

    uint32_t* target;
    uint32_t defaultValue;
};

// A floating value with "." as the decimal mark and 8 decimal places
// ("2.50000000"), whatever the user's locale; the text reads back to the same
// 8 places.
class iniReal : public iniStruct
{
public:
    // The default is copied from *defaultValue (null: 0).
    iniReal(const KelText& section, const KelText& key, double* target, const double* defaultValue);
    KelText GetText() const override;
    void SetText(const char16_t* text) override;
    ~iniReal() override;

    double* target;
    double defaultValue;
};

// A colour (red in the lowest byte, then green, then blue) written as
// "red green blue" in decimal; each of the three is read as the next integer
// in the text and cut to its lowest 8 bits. Missing numbers read as 0.
class iniColor : public iniStruct
{
public:
    iniColor(const KelText& section, const KelText& key, uint32_t* target, uint32_t defaultValue);
    KelText GetText() const override;
    void SetText(const char16_t* text) override;
    ~iniColor() override;

    // The colour value of the three components.
    static uint32_t MakeColor(uint32_t red, uint32_t green, uint32_t blue)
    {
        return (red & 0xFF) | ((green & 0xFF) << 8) | ((blue & 0xFF) << 16);
    }

    uint32_t* target;
    uint32_t defaultValue;
};

// A text, written and read unchanged (the value is already trimmed on reading).
class iniString : public iniStruct
{
public:
    iniString(const KelText& section, const KelText& key, KelText* target, KelText defaultValue);
    KelText GetText() const override;
    void SetText(const char16_t* text) override;
    ~iniString() override;

    KelText* target;
    KelText defaultValue;
};

// An index into a table of option texts ("NO", "YES"), written as the option
// text. Reading takes the index of the option that equals the value (ASCII
// letters folded; the last one when several do), the default when none does.
class iniStrOpt : public iniStruct
{
public:
    // A default outside 0..count-1 becomes 0.
    iniStrOpt(const KelText& section, const KelText& key, const char16_t* const* options,
              int32_t* target, int32_t count, int32_t defaultValue);
    // The option at the current index. The default takes the index's place
    // only when the index is both at most 0 and not below count (which only a
    // table without options allows); there is no other range check, so an
    // index outside the table, like a missing table, gives the empty text.
    KelText GetText() const override;
    void SetText(const char16_t* text) override;
    ~iniStrOpt() override;

    int32_t* target;
    int32_t defaultValue;
    int32_t count;
    const char16_t* const* options;
};
