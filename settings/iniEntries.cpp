#include "settings/iniEntries.h"

#include <utility>

#include "text/AppServices.h"

namespace
{
bool IsDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

// The header line of section: "[" + section + "]".
KelText HeaderLine(const KelText& section)
{
    KelText line;
    line.Reserve(section.Length() + 2, false);
    line += u'[';
    line += section;
    line += u']';
    return line;
}
} // namespace

// ---------------------------------------------------------------------------
// iniStruct

iniStruct::iniStruct(KelText section_, KelText key_)
    : section(std::move(section_)), key(std::move(key_))
{
}

iniStruct::~iniStruct() = default;

KelText iniStruct::GetText() const
{
    return KelText();
}

void iniStruct::SetText(const char16_t*) {}

void iniStruct::Write(iniLines& lines)
{
    // Built by concatenation: a line may be longer than any formatted text.
    const KelText value = GetText();
    KelText line;
    line.Reserve(key.Length() + 1 + value.Length(), false);
    line += key;
    line += u'=';
    line += value;

    const iniLine* header = lines.FindSection(section.View());
    if (!header)
    {
        const iniLine* blank = lines.InsertAfter(nullptr, {});
        const iniLine* added = lines.InsertAfter(blank, HeaderLine(section).View());
        lines.InsertAfter(added, line.View());
        return;
    }
    if (const iniLine* found = lines.FindKey(header, key.View()))
        lines.Replace(found, line.View());
    else
        lines.InsertAfter(header, line.View());
}

void iniStruct::Read(iniLines& lines)
{
    const iniLine* header = lines.FindSection(section.View());
    const iniLine* found = header ? lines.FindKey(header, key.View()) : nullptr;
    if (!found)
    {
        SetText(nullptr);
        return;
    }
    // The value after the first "=", blanks and tabs trimmed from both ends.
    std::u16string_view value = found->View();
    value.remove_prefix(value.find(u'=') + 1);
    while (!value.empty() && (value.front() == u' ' || value.front() == u'\t'))
        value.remove_prefix(1);
    while (!value.empty() && (value.back() == u' ' || value.back() == u'\t'))
        value.remove_suffix(1);
    const KelText text(value.data(), int32_t(value.size()));
    SetText(text.c_str()); // an empty value is empty text, not null
}

// ---------------------------------------------------------------------------
// iniInteger

iniInteger::iniInteger(const KelText& section_, const KelText& key_, int32_t* target_,
                       int32_t defaultValue_)
    : iniStruct(section_, key_), target(target_), defaultValue(defaultValue_)
{
}

iniInteger::iniInteger(const KelText& section_, const KelText& key_, uint32_t* altTarget_,
                       int32_t defaultValue_)
    : iniStruct(section_, key_), altTarget(altTarget_), defaultValue(defaultValue_)
{
}

iniInteger::~iniInteger() = default;

KelText iniInteger::GetText() const
{
    int32_t value = defaultValue;
    if (target)
        value = *target;
    else if (altTarget)
        value = int32_t(*altTarget);
    KelText text;
    text.SetNumber(value);
    return text;
}

void iniInteger::SetText(const char16_t* text)
{
    const int32_t value = text ? KelText(text).IntValue() : defaultValue;
    if (target)
        *target = value;
    else if (altTarget)
        *altTarget = uint32_t(value);
}

// ---------------------------------------------------------------------------
// iniHex

iniHex::iniHex(const KelText& section_, const KelText& key_, uint32_t* target_,
               uint32_t defaultValue_)
    : iniStruct(section_, key_), target(target_), defaultValue(defaultValue_)
{
}

iniHex::~iniHex() = default;

KelText iniHex::GetText() const
{
    uint32_t value = target ? *target : defaultValue;
    char16_t digits[9];
    int32_t first = 8;
    digits[8] = 0;
    do
    {
        digits[--first] = u"0123456789ABCDEF"[value & 0xF];
        value >>= 4;
    } while (value);
    return KelText(digits + first);
}

void iniHex::SetText(const char16_t* text)
{
    if (target)
        *target = text ? uint32_t(KelText(text).HexValue()) : defaultValue;
}

// ---------------------------------------------------------------------------
// iniReal

iniReal::iniReal(const KelText& section_, const KelText& key_, double* target_,
                 const double* defaultValue_)
    : iniStruct(section_, key_), target(target_), defaultValue(defaultValue_ ? *defaultValue_ : 0.0)
{
}

iniReal::~iniReal() = default;

KelText iniReal::GetText() const
{
    // The file's numbers do not depend on the user's decimal mark.
    const DecimalMarkScope mark(u'.');
    KelText text;
    text.SetReal(target ? *target : defaultValue, 8);
    return text;
}

void iniReal::SetText(const char16_t* text)
{
    if (!target)
        return;
    const DecimalMarkScope mark(u'.');
    *target = text ? KelText(text).RealValue() : defaultValue;
}

// ---------------------------------------------------------------------------
// iniColor

iniColor::iniColor(const KelText& section_, const KelText& key_, uint32_t* target_,
                   uint32_t defaultValue_)
    : iniStruct(section_, key_), target(target_), defaultValue(defaultValue_)
{
}

iniColor::~iniColor() = default;

KelText iniColor::GetText() const
{
    const uint32_t value = target ? *target : defaultValue;
    return KelText::Formatted(u"%i %i %i", int32_t(value & 0xFF), int32_t((value >> 8) & 0xFF),
                              int32_t((value >> 16) & 0xFF));
}

void iniColor::SetText(const char16_t* text)
{
    if (!target)
        return;
    if (!text)
    {
        *target = defaultValue;
        return;
    }
    uint32_t parts[3] = {0, 0, 0};
    const char16_t* at = text;
    for (uint32_t& part : parts)
    {
        // The next integer: a digit, or a sign directly followed by one.
        while (*at && !IsDigit(*at) && !((*at == u'-' || *at == u'+') && IsDigit(at[1])))
            ++at;
        if (!*at)
            break;
        const bool negative = *at == u'-';
        if (!IsDigit(*at))
            ++at;
        // Unsigned arithmetic wraps modulo 2^32, which keeps the low 8 bits exact.
        uint32_t value = 0;
        while (IsDigit(*at))
            value = value * 10 + uint32_t(*at++ - u'0');
        part = (negative ? 0u - value : value) & 0xFF;
    }
    *target = MakeColor(parts[0], parts[1], parts[2]);
}

// ---------------------------------------------------------------------------
// iniString

iniString::iniString(const KelText& section_, const KelText& key_, KelText* target_,
                     KelText defaultValue_)
    : iniStruct(section_, key_), target(target_), defaultValue(std::move(defaultValue_))
{
}

iniString::~iniString() = default;

KelText iniString::GetText() const
{
    return target ? *target : defaultValue;
}

void iniString::SetText(const char16_t* text)
{
    if (!target)
        return;
    if (text)
        *target = text;
    else
        *target = defaultValue;
}

// ---------------------------------------------------------------------------
// iniStrOpt

iniStrOpt::iniStrOpt(const KelText& section_, const KelText& key_, const char16_t* const* options_,
                     int32_t* target_, int32_t count_, int32_t defaultValue_)
    : iniStruct(section_, key_), target(target_),
      defaultValue((defaultValue_ < 0 || defaultValue_ >= count_) ? 0 : defaultValue_),
      count(count_), options(options_)
{
}

iniStrOpt::~iniStrOpt() = default;

KelText iniStrOpt::GetText() const
{
    int32_t index = target ? *target : defaultValue;
    if (index <= 0 && index >= count)
        index = defaultValue;
    if (!options || index < 0 || index >= count)
        return KelText();
    return KelText(options[index]);
}

void iniStrOpt::SetText(const char16_t* text)
{
    if (!target)
        return;
    int32_t index = defaultValue;
    if (text && options)
    {
        const KelText value(text);
        for (int32_t i = 0; i < count; ++i)
            if (options[i] && value == options[i])
                index = i; // the last match wins
    }
    *target = index;
}
