// The formatting engine behind KelText::Format: the Microsoft wide-printf
// meanings, computed by our own code (std::to_chars for floating point) so that
// the output is the same natively and on Windows, whatever C runtime is linked.
#include "text/TextFormat.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/CodePage.h"

namespace
{
using Kind = FormatArg::Kind;

bool IsHighSurrogate(char16_t ch)
{
    return ch >= 0xD800 && ch <= 0xDBFF;
}

bool IsLowSurrogate(char16_t ch)
{
    return ch >= 0xDC00 && ch <= 0xDFFF;
}

// The output buffer. Everything is written through it; once a unit does not
// fit, the output is full and later writes are dropped.
class Sink
{
public:
    Sink(char16_t* out, int32_t capacity) : out(out), limit(capacity - 1) {}

    bool Full() const { return full; }
    int32_t Room() const { return limit - used; }
    char16_t* Cursor() { return out + used; }

    void Units(const char16_t* units, int64_t count)
    {
        if (count <= 0 || full)
            return;
        const int64_t fits = count < Room() ? count : Room();
        std::memcpy(out + used, units, size_t(fits) * sizeof(char16_t));
        used += int32_t(fits);
        if (fits < count)
            Cut(units[fits]);
    }

    void Ascii(const char* text, int64_t count)
    {
        if (count <= 0 || full)
            return;
        const int64_t fits = count < Room() ? count : Room();
        for (int64_t i = 0; i < fits; ++i)
            out[used++] = char16_t(static_cast<unsigned char>(text[i]));
        if (fits < count)
            full = true;
    }

    void Repeat(char16_t ch, int64_t count)
    {
        if (count <= 0 || full)
            return;
        const int64_t fits = count < Room() ? count : Room();
        for (int64_t i = 0; i < fits; ++i)
            out[used++] = ch;
        if (fits < count)
            Cut(ch);
    }

    // Takes `count` units that were written straight to Cursor().
    void Advance(int32_t count) { used += count; }

    // The output is full; `rejected` is the first unit that did not fit. A
    // high surrogate whose low half was cut off goes too.
    void Cut(char16_t rejected)
    {
        full = true;
        if (used > 0 && IsHighSurrogate(out[used - 1]) && IsLowSurrogate(rejected))
            --used;
    }

    // Full after a narrow text was converted in part, `converted` units of it
    // written: a high surrogate it ended with cannot be completed any more.
    void CutAfterPartialText(int32_t converted)
    {
        full = true;
        if (converted > 0 && IsHighSurrogate(out[used - 1]))
            --used;
    }

    int32_t Finish()
    {
        out[used] = 0;
        return used;
    }

private:
    char16_t* out;
    int32_t limit;
    int32_t used = 0;
    bool full = false;
};

enum class Size : uint8_t
{
    None,
    hh,
    h,
    l,
    ll,
    L,
    I,
    I32,
    I64,
    j,
    z,
    t,
    w,
};

struct Directive
{
    bool left = false;
    bool plus = false;
    bool space = false;
    bool alternate = false;
    bool zero = false;
    int32_t width = 0;
    int32_t precision = -1; // none
    Size size = Size::None;
    char16_t type = 0;
};

// The bits an integer directive keeps of its value.
int IntegerBits(Size size)
{
    switch (size)
    {
    case Size::hh:
        return 8;
    case Size::h:
        return 16;
    case Size::ll:
    case Size::L:
    case Size::I:
    case Size::I64:
    case Size::j:
    case Size::z:
    case Size::t:
        return 64;
    default:
        return 32;
    }
}

// A real converted toward zero, saturating at the limits of int64_t (or of
// uint64_t for unsigned directives); NaN is 0.
uint64_t RealToBits(double value, bool isSigned)
{
    if (std::isnan(value))
        return 0;
    if (value <= -9223372036854775808.0)
        return uint64_t(std::numeric_limits<int64_t>::min());
    if (value >= 9223372036854775808.0)
    {
        if (isSigned)
            return uint64_t(std::numeric_limits<int64_t>::max());
        if (value >= 18446744073709551616.0)
            return std::numeric_limits<uint64_t>::max();
        return uint64_t(value);
    }
    return uint64_t(int64_t(value));
}

// The 64 bits of an argument used as an integer (text counts as 0).
uint64_t IntegerOf(const FormatArg& arg, bool isSigned = true)
{
    switch (arg.kind)
    {
    case Kind::Signed:
        return uint64_t(arg.asSigned);
    case Kind::Unsigned:
        return arg.asUnsigned;
    case Kind::Real:
        return RealToBits(arg.asReal, isSigned);
    case Kind::Pointer:
        return uint64_t(reinterpret_cast<uintptr_t>(arg.asPointer));
    default:
        return 0;
    }
}

double RealOf(const FormatArg& arg)
{
    switch (arg.kind)
    {
    case Kind::Signed:
        return double(arg.asSigned);
    case Kind::Unsigned:
        return double(arg.asUnsigned);
    case Kind::Real:
        return arg.asReal;
    case Kind::Pointer:
        return double(reinterpret_cast<uintptr_t>(arg.asPointer));
    default:
        return 0;
    }
}

// The value of a '*': an int, as the C runtime would read it.
int32_t StarValue(const FormatArg* arg)
{
    if (!arg)
        return 0;
    if (arg->kind == Kind::Real)
    {
        const double value = arg->asReal;
        if (std::isnan(value))
            return 0;
        if (value >= 2147483647.0)
            return std::numeric_limits<int32_t>::max();
        if (value <= -2147483648.0)
            return std::numeric_limits<int32_t>::min();
        return int32_t(value);
    }
    return int32_t(uint32_t(IntegerOf(*arg)));
}

// One formatted number: a prefix (sign, 0x), zeros, digits, more zeros (for
// precisions beyond what the digit buffer holds) and a tail (the exponent).
struct Field
{
    char prefix[4] = {};
    int prefixLength = 0;
    int64_t zeros = 0;
    const char* digits = nullptr;
    int64_t digitCount = 0;
    int64_t innerZeros = 0;
    const char* tail = nullptr;
    int64_t tailCount = 0;
    bool zeroPadding = true; // whether the 0 flag may pad this field

    void Prefix(char ch) { prefix[prefixLength++] = ch; }
};

void PutField(Sink& sink, const Directive& d, const Field& field)
{
    const int64_t total =
        field.prefixLength + field.zeros + field.digitCount + field.innerZeros + field.tailCount;
    const int64_t padding = d.width > total ? d.width - total : 0;
    const bool zeroPad = d.zero && !d.left && field.zeroPadding;
    if (!d.left && !zeroPad)
        sink.Repeat(u' ', padding);
    sink.Ascii(field.prefix, field.prefixLength);
    if (zeroPad)
        sink.Repeat(u'0', padding);
    sink.Repeat(u'0', field.zeros);
    sink.Ascii(field.digits, field.digitCount);
    sink.Repeat(u'0', field.innerZeros);
    sink.Ascii(field.tail, field.tailCount);
    if (d.left)
        sink.Repeat(u' ', padding);
}

// Text padded to the width: blanks, or zeros with the 0 flag, as the Microsoft
// runtime does for every type.
void PadText(Sink& sink, const Directive& d, int64_t units, bool before)
{
    const int64_t padding = d.width > units ? d.width - units : 0;
    if (before && !d.left)
        sink.Repeat(d.zero ? u'0' : u' ', padding);
    else if (!before && d.left)
        sink.Repeat(u' ', padding);
}

void PutWideText(Sink& sink, const Directive& d, const char16_t* text)
{
    if (!text)
        text = u"(null)";
    int64_t units = 0;
    if (d.precision >= 0)
        while (units < d.precision && text[units])
            ++units;
    else
        while (text[units])
            ++units;
    PadText(sink, d, units, true);
    sink.Units(text, units);
    PadText(sink, d, units, false);
}

// Narrow text in the system code page, converted straight into the output.
void PutNarrowText(Sink& sink, const Directive& d, const char* text)
{
    if (!text)
    {
        PutWideText(sink, d, nullptr);
        return;
    }
    // The precision counts bytes, as the Microsoft runtime does.
    int32_t bytes = 0;
    const int32_t most = d.precision >= 0 ? d.precision : std::numeric_limits<int32_t>::max();
    while (bytes < most && text[bytes])
        ++bytes;
    const int32_t units = bytes ? CodePage::ToWide(CodePage::Ansi, text, bytes, nullptr, 0) : 0;
    PadText(sink, d, units, true);
    if (sink.Full())
        return;
    if (units > sink.Room())
    {
        // Too long for what is left: a code page never makes more units than
        // bytes, so the first Room() bytes fill the rest of the output.
        const int32_t room = sink.Room();
        const int32_t converted =
            room ? CodePage::ToWide(CodePage::Ansi, text, room, sink.Cursor(), room) : 0;
        sink.Advance(converted);
        sink.CutAfterPartialText(converted);
        return;
    }
    if (units > 0)
        sink.Advance(CodePage::ToWide(CodePage::Ansi, text, bytes, sink.Cursor(), units));
    PadText(sink, d, units, false);
}

// d i u o x X p
void PutInteger(Sink& sink, Directive d, uint64_t bits)
{
    const char16_t type = d.type;
    const bool isSigned = type == u'd' || type == u'i';
    const int size = IntegerBits(d.size);
    bool negative = false;
    uint64_t magnitude = bits;
    if (size < 64)
    {
        const int unused = 64 - size;
        if (isSigned)
        {
            const int64_t value = int64_t(bits << unused) >> unused;
            negative = value < 0;
            magnitude = negative ? 0 - uint64_t(value) : uint64_t(value);
        }
        else
            magnitude = bits & ((uint64_t(1) << size) - 1);
    }
    else if (isSigned && int64_t(bits) < 0)
    {
        negative = true;
        magnitude = 0 - bits;
    }

    const unsigned radix = (type == u'o')                                   ? 8
                           : (type == u'x' || type == u'X' || type == u'p') ? 16
                                                                            : 10;
    const char* hexits = (type == u'x') ? "0123456789abcdef" : "0123456789ABCDEF";
    char buffer[24];
    char* end = buffer + sizeof buffer;
    char* first = end;
    for (uint64_t rest = magnitude; rest; rest /= radix)
        *--first = hexits[rest % radix];

    Field field;
    field.digits = first;
    field.digitCount = end - first;
    if (negative)
        field.Prefix('-');
    else if (isSigned && d.plus)
        field.Prefix('+');
    else if (isSigned && d.space)
        field.Prefix(' ');
    if (d.alternate && radix == 16 && magnitude != 0)
    {
        field.Prefix('0');
        field.Prefix(type == u'x' ? 'x' : 'X');
    }
    const int64_t precision = d.precision >= 0 ? d.precision : 1;
    if (d.precision >= 0)
        field.zeroPadding = false;
    field.zeros = precision > field.digitCount ? precision - field.digitCount : 0;
    // '#' puts a 0 before a non-zero octal value that does not start with one.
    if (d.alternate && radix == 8 && magnitude != 0 && field.zeros == 0 && *first != '0')
        field.zeros = 1;
    PutField(sink, d, field);
}

// Fraction digits beyond this many are exact zeros for every double (the
// smallest subnormal has 1074), so larger precisions add zeros without
// asking std::to_chars for them.
constexpr int kDigitsCap = 1100;
// Integer part (309), point, kDigitsCap digits, exponent, and room to insert a point.
constexpr int kRealBuffer = 1536;

void Upper(char* text, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
        if (text[i] >= 'a' && text[i] <= 'z')
            text[i] = char(text[i] - 32);
}

// Inserts '.' at `at` in text[0..length).
void InsertPoint(char* text, int64_t& length, int64_t at)
{
    std::memmove(text + at + 1, text + at, size_t(length - at));
    text[at] = '.';
    ++length;
}

// Index of the exponent marker ('e' or 'p'), or length when there is none.
int64_t ExponentAt(const char* text, int64_t length, char marker)
{
    int64_t at = 0;
    while (at < length && text[at] != marker)
        ++at;
    return at;
}

// e E f F g G a A
void PutReal(Sink& sink, const Directive& d, double value)
{
    const char16_t type = d.type;
    const bool upper = type == u'E' || type == u'F' || type == u'G' || type == u'A';
    const char lower = char(upper ? type + 32 : type);

    Field field;
    if (std::signbit(value) && !std::isnan(value))
        field.Prefix('-');
    else if (d.plus)
        field.Prefix('+');
    else if (d.space)
        field.Prefix(' ');

    if (!std::isfinite(value))
    {
        field.digits = std::isnan(value) ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf");
        field.digitCount = 3;
        field.zeroPadding = false;
        PutField(sink, d, field);
        return;
    }

    const double magnitude = std::fabs(value);
    char buffer[kRealBuffer];
    char* const bufferEnd = buffer + kRealBuffer - 1; // one spare for an inserted point
    int64_t length = 0;
    // The digits before the exponent (all of them for fixed notation): where
    // the zeros of large precisions go, and where '#' makes sure of a point.
    int64_t pointFrom = 0;
    int64_t extraZeros = 0;

    auto convert = [&](std::chars_format format, int64_t precision)
    { length = std::to_chars(buffer, bufferEnd, magnitude, format, int(precision)).ptr - buffer; };

    if (lower == 'f')
    {
        const int64_t precision = d.precision >= 0 ? d.precision : 6;
        const int64_t asked = precision < kDigitsCap ? precision : kDigitsCap;
        convert(std::chars_format::fixed, asked);
        extraZeros = precision - asked;
        pointFrom = length;
    }
    else if (lower == 'e')
    {
        const int64_t precision = d.precision >= 0 ? d.precision : 6;
        const int64_t asked = precision < kDigitsCap ? precision : kDigitsCap;
        convert(std::chars_format::scientific, asked);
        extraZeros = precision - asked;
        pointFrom = ExponentAt(buffer, length, 'e');
    }
    else if (lower == 'a')
    {
        // 13 hex digits hold every bit of a double's fraction.
        const int64_t precision = d.precision >= 0 ? d.precision : 13;
        const int64_t asked = precision < 13 ? precision : 13;
        convert(std::chars_format::hex, asked);
        extraZeros = precision - asked;
        pointFrom = ExponentAt(buffer, length, 'p');
        field.Prefix('0');
        field.Prefix('x');
    }
    else // g
    {
        const int64_t precision = d.precision > 0 ? d.precision : (d.precision == 0 ? 1 : 6);
        int64_t asked = precision - 1 < kDigitsCap ? precision - 1 : kDigitsCap;
        convert(std::chars_format::scientific, asked);
        const int64_t e = ExponentAt(buffer, length, 'e');
        int exponent = 0;
        const char* digits = buffer + e + 1;
        if (*digits == '+')
            ++digits;
        std::from_chars(digits, buffer + length, exponent);
        if (exponent < precision && exponent >= -4)
        {
            const int64_t fraction = precision - 1 - exponent;
            asked = fraction < kDigitsCap ? fraction : kDigitsCap;
            convert(std::chars_format::fixed, asked);
            extraZeros = fraction - asked;
            pointFrom = length;
        }
        else
        {
            extraZeros = precision - 1 - asked;
            pointFrom = e;
        }
        if (!d.alternate)
        {
            // Trailing zeros of the fraction go, and the point with them.
            extraZeros = 0;
            if (std::memchr(buffer, '.', size_t(pointFrom)))
            {
                int64_t cut = pointFrom;
                while (buffer[cut - 1] == '0')
                    --cut;
                if (buffer[cut - 1] == '.')
                    --cut;
                std::memmove(buffer + cut, buffer + pointFrom, size_t(length - pointFrom));
                length -= pointFrom - cut;
                pointFrom = cut;
            }
        }
    }

    if (d.alternate && !std::memchr(buffer, '.', size_t(pointFrom)))
    {
        InsertPoint(buffer, length, pointFrom);
        ++pointFrom;
    }
    if (upper)
    {
        Upper(field.prefix, field.prefixLength);
        Upper(buffer, length);
    }
    // The digits end where the exponent (or the text) begins.
    field.digits = buffer;
    field.digitCount = pointFrom;
    field.innerZeros = extraZeros;
    field.tail = buffer + pointFrom;
    field.tailCount = length - pointFrom;
    PutField(sink, d, field);
}

// One character: a UTF-16 unit, or a narrow one converted from the code page.
void PutCharacter(Sink& sink, const Directive& d, const FormatArg& arg, bool narrow)
{
    char16_t unit[2] = {};
    int32_t units = 1;
    if (arg.kind == Kind::WideText)
    {
        units = (arg.asWide && arg.asWide[0]) ? 1 : 0;
        if (units)
            unit[0] = arg.asWide[0];
    }
    else
    {
        char byte = 0;
        if (arg.kind == Kind::NarrowText)
            byte = arg.asNarrow ? arg.asNarrow[0] : 0;
        else if (narrow)
            byte = char(IntegerOf(arg));
        else
            unit[0] = char16_t(IntegerOf(arg));
        if (arg.kind == Kind::NarrowText && !byte)
            units = 0;
        else if (arg.kind == Kind::NarrowText || narrow)
            units = CodePage::ToWide(CodePage::Ansi, &byte, 1, unit, 2);
    }
    PadText(sink, d, units, true);
    sink.Units(unit, units);
    PadText(sink, d, units, false);
}

bool IsDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

// Reads digits into a non-negative int, saturating.
int32_t ReadNumber(const char16_t*& p)
{
    int64_t value = 0;
    while (IsDigit(*p))
    {
        value = value * 10 + (*p++ - u'0');
        if (value > std::numeric_limits<int32_t>::max())
            value = std::numeric_limits<int32_t>::max();
    }
    return int32_t(value);
}

Size ReadSize(const char16_t*& p)
{
    switch (*p)
    {
    case u'h':
        ++p;
        if (*p == u'h')
        {
            ++p;
            return Size::hh;
        }
        return Size::h;
    case u'l':
        ++p;
        if (*p == u'l')
        {
            ++p;
            return Size::ll;
        }
        return Size::l;
    case u'I':
        ++p;
        if (p[0] == u'3' && p[1] == u'2')
        {
            p += 2;
            return Size::I32;
        }
        if (p[0] == u'6' && p[1] == u'4')
        {
            p += 2;
            return Size::I64;
        }
        return Size::I;
    case u'L':
        ++p;
        return Size::L;
    case u'j':
        ++p;
        return Size::j;
    case u'z':
        ++p;
        return Size::z;
    case u't':
        ++p;
        return Size::t;
    case u'w':
        ++p;
        return Size::w;
    default:
        return Size::None;
    }
}

bool IsKnownType(char16_t type)
{
    switch (type)
    {
    case u'd':
    case u'i':
    case u'u':
    case u'o':
    case u'x':
    case u'X':
    case u'e':
    case u'E':
    case u'f':
    case u'F':
    case u'g':
    case u'G':
    case u'a':
    case u'A':
    case u'c':
    case u'C':
    case u's':
    case u'S':
    case u'p':
    case u'n':
        return true;
    default:
        return false;
    }
}

// The arguments, taken in order.
class ArgList
{
public:
    ArgList(const FormatArg* args, int32_t count) : args(args), count(args ? count : 0) {}

    // The next argument, or null when there is none.
    const FormatArg* Next() { return next < count ? &args[next++] : nullptr; }
    int32_t Position() const { return next; }
    void Rewind(int32_t position) { next = position; }

private:
    const FormatArg* args;
    int32_t count;
    int32_t next = 0;
};

void Convert(Sink& sink, Directive& d, const FormatArg& arg)
{
    switch (d.type)
    {
    case u'd':
    case u'i':
        PutInteger(sink, d, IntegerOf(arg));
        return;
    case u'u':
    case u'o':
    case u'x':
    case u'X':
        PutInteger(sink, d, IntegerOf(arg, false));
        return;
    case u'p':
        d.precision = 16;
        d.size = Size::I64;
        PutInteger(sink, d, IntegerOf(arg, false));
        return;
    case u'e':
    case u'E':
    case u'f':
    case u'F':
    case u'g':
    case u'G':
    case u'a':
    case u'A':
        PutReal(sink, d, RealOf(arg));
        return;
    case u'c':
    case u'C':
    {
        const bool narrow = d.type == u'c' ? (d.size == Size::h || d.size == Size::hh)
                                           : (d.size != Size::l && d.size != Size::w);
        PutCharacter(sink, d, arg, narrow);
        return;
    }
    case u's':
    case u'S':
        switch (arg.kind)
        {
        case Kind::WideText:
            PutWideText(sink, d, arg.asWide);
            return;
        case Kind::NarrowText:
            PutNarrowText(sink, d, arg.asNarrow);
            return;
        case Kind::Pointer:
            if (!arg.asPointer)
            {
                PutWideText(sink, d, nullptr);
                return;
            }
            d.type = u'p';
            Convert(sink, d, arg);
            return;
        case Kind::Unsigned:
            d.type = u'u';
            d.size = Size::I64;
            PutInteger(sink, d, arg.asUnsigned);
            return;
        default:
            d.type = u'd';
            d.size = Size::I64;
            PutInteger(sink, d, IntegerOf(arg));
            return;
        }
    default: // n
        return;
    }
}
} // namespace

int32_t FormatInto(char16_t* out, int32_t capacity, const char16_t* pattern, const FormatArg* args,
                   int32_t count)
{
    if (!out || capacity < 1)
        return 0;
    Sink sink(out, capacity);
    ArgList list(args, count);
    const char16_t* p = pattern;
    while (p && *p && !sink.Full())
    {
        const char16_t* run = p;
        while (*p && *p != u'%')
            ++p;
        sink.Units(run, p - run);
        if (!*p)
            break;

        const char16_t* start = p++;
        if (*p == u'%')
        {
            sink.Units(p++, 1);
            continue;
        }
        const int32_t firstArg = list.Position();
        Directive d;
        for (;; ++p)
        {
            if (*p == u'-')
                d.left = true;
            else if (*p == u'+')
                d.plus = true;
            else if (*p == u' ')
                d.space = true;
            else if (*p == u'#')
                d.alternate = true;
            else if (*p == u'0')
                d.zero = true;
            else
                break;
        }
        if (*p == u'*')
        {
            ++p;
            const int32_t width = StarValue(list.Next());
            if (width < 0)
            {
                d.left = true;
                d.width = width == std::numeric_limits<int32_t>::min()
                              ? std::numeric_limits<int32_t>::max()
                              : -width;
            }
            else
                d.width = width;
        }
        else
            d.width = ReadNumber(p);
        if (*p == u'.')
        {
            ++p;
            if (*p == u'*')
            {
                ++p;
                const FormatArg* arg = list.Next();
                const int32_t precision = arg ? StarValue(arg) : -1;
                d.precision = precision < 0 ? -1 : precision;
            }
            else
                d.precision = ReadNumber(p);
        }
        d.size = ReadSize(p);
        d.type = *p;
        if (!IsKnownType(d.type))
        {
            // Copied as written; the arguments its '*'s took are given back.
            if (*p)
                ++p;
            sink.Units(start, p - start);
            list.Rewind(firstArg);
            continue;
        }
        ++p;
        const FormatArg* arg = list.Next();
        if (arg && arg->kind != Kind::Missing)
            Convert(sink, d, *arg);
    }
    return sink.Finish();
}
