#include <cstring>
#include <type_traits>

#include "platform/CodePage.h"

namespace
{
// Windows-1252 bytes 0x80..0x9F; the five unassigned bytes map to the C1
// controls of the same value, as Windows does.
const char16_t cp1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

const uint32_t invalidSequence = ~0u;

// Decodes one UTF-8 sequence whose lead byte `lead` (0x80 or above) was just
// taken; `at` points after it. Advances over the bytes that belong to the
// sequence as far as they are valid and answers the code point, or
// invalidSequence. The grouping of bad bytes (which of them become one U+FFFD)
// is the one Wine uses.
uint32_t DecodeUtf8(unsigned char lead, const unsigned char*& at, const unsigned char* end)
{
    static const unsigned char following[128] = {
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
        0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
        1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, 2, 2,
        2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    };
    static const unsigned char leadMask[4] = {0x7F, 0x1F, 0x0F, 0x07};

    const unsigned length = following[lead - 0x80];
    uint32_t value = lead & leadMask[length];
    const unsigned char* last = at + length;
    if (last > end)
    {
        at = end;
        return invalidSequence;
    }
    unsigned char bits = 0;
    switch (length)
    {
    case 3:
        bits = last[-3] ^ 0x80;
        if (bits >= 0x40)
            break;
        value = (value << 6) | bits;
        ++at;
        if (value < 0x10)
            break;
        [[fallthrough]];
    case 2:
        bits = last[-2] ^ 0x80;
        if (bits >= 0x40)
            break;
        value = (value << 6) | bits;
        if (value >= (0x110000 >> 6))
            break;
        ++at;
        if (value < 0x20)
            break;
        if (value >= (0xD800 >> 6) && value <= (0xDFFF >> 6))
            break;
        [[fallthrough]];
    case 1:
        bits = last[-1] ^ 0x80;
        if (bits >= 0x40)
            break;
        value = (value << 6) | bits;
        ++at;
        if (value < 0x80)
            break;
        return value;
    default:
        break;
    }
    return invalidSequence;
}

// Stores `count` units at target[written] when the caller wants them (targetSize
// non-zero) and they fit; answers false when the target is full.
template <typename Unit>
bool Put(Unit* target, int32_t targetSize, int32_t& written, const Unit* units, int count)
{
    if (targetSize)
    {
        if (written + count > targetSize)
            return false;
        for (int i = 0; i < count; ++i)
            target[written + i] = units[i];
    }
    written += count;
    return true;
}

// Copies the run of ASCII units from `at` on (they convert one to one).
// Answers the run's length, or -1 when it does not fit the target.
template <typename From, typename To>
int32_t CopyAsciiRun(const From* at, const From* end, To* target, int32_t targetSize,
                     int32_t& written)
{
    const From* run = at;
    while (run < end && static_cast<uint32_t>(static_cast<std::make_unsigned_t<From>>(*run)) < 0x80)
        ++run;
    const int32_t count = int32_t(run - at);
    if (targetSize)
    {
        if (written + count > targetSize)
            return -1;
        for (int32_t i = 0; i < count; ++i)
            target[written + i] = To(at[i]);
    }
    written += count;
    return count;
}

char ToCp1252(char16_t ch)
{
    if (ch < 0x80 || (ch >= 0xA0 && ch <= 0xFF))
        return char(ch);
    for (int i = 0; i < 32; ++i)
        if (cp1252High[i] == ch)
            return char(0x80 + i);
    return '?';
}
} // namespace

namespace CodePage
{
int32_t ToWide(uint32_t codePage, const char* source, int32_t sourceLength, char16_t* target,
               int32_t targetSize)
{
    if (!source || targetSize < 0 || (targetSize > 0 && !target))
        return 0;
    if (sourceLength < 0)
        sourceLength = int32_t(std::strlen(source)) + 1;
    if (sourceLength == 0)
        return 0;
    const auto* at = reinterpret_cast<const unsigned char*>(source);
    const unsigned char* end = at + sourceLength;
    int32_t written = 0;
    while (at < end)
    {
        const int32_t run = CopyAsciiRun(at, end, target, targetSize, written);
        if (run < 0)
            return 0;
        at += run;
        if (at == end)
            break;
        const unsigned char byte = *at++;
        char16_t units[2];
        int count = 1;
        if (codePage != Utf8)
            units[0] = (byte < 0xA0) ? cp1252High[byte - 0x80] : char16_t(byte);
        else
        {
            const uint32_t value = DecodeUtf8(byte, at, end);
            if (value == invalidSequence)
                units[0] = 0xFFFD;
            else if (value >= 0x10000)
            {
                units[0] = char16_t(0xD800 + ((value - 0x10000) >> 10));
                units[1] = char16_t(0xDC00 + ((value - 0x10000) & 0x3FF));
                count = 2;
            }
            else
                units[0] = char16_t(value);
        }
        if (!Put(target, targetSize, written, units, count))
            return 0;
    }
    return written;
}

int32_t FromWide(uint32_t codePage, const char16_t* source, int32_t sourceLength, char* target,
                 int32_t targetSize)
{
    if (!source || targetSize < 0 || (targetSize > 0 && !target))
        return 0;
    if (sourceLength < 0)
    {
        sourceLength = 0;
        while (source[sourceLength])
            ++sourceLength;
        ++sourceLength;
    }
    if (sourceLength == 0)
        return 0;
    int32_t written = 0;
    for (int32_t i = 0; i < sourceLength; ++i)
    {
        const int32_t run =
            CopyAsciiRun(source + i, source + sourceLength, target, targetSize, written);
        if (run < 0)
            return 0;
        i += run;
        if (i == sourceLength)
            break;
        uint32_t value = source[i];
        char bytes[4];
        int count = 1;
        if (codePage != Utf8)
            bytes[0] = ToCp1252(char16_t(value));
        else
        {
            if (value >= 0xD800 && value <= 0xDBFF && i + 1 < sourceLength &&
                source[i + 1] >= 0xDC00 && source[i + 1] <= 0xDFFF)
            {
                value = 0x10000 + ((value - 0xD800) << 10) + (source[i + 1] - 0xDC00);
                ++i;
            }
            else if (value >= 0xD800 && value <= 0xDFFF)
                value = 0xFFFD;
            if (value < 0x80)
                bytes[0] = char(value);
            else if (value < 0x800)
            {
                bytes[0] = char(0xC0 | (value >> 6));
                bytes[1] = char(0x80 | (value & 0x3F));
                count = 2;
            }
            else if (value < 0x10000)
            {
                bytes[0] = char(0xE0 | (value >> 12));
                bytes[1] = char(0x80 | ((value >> 6) & 0x3F));
                bytes[2] = char(0x80 | (value & 0x3F));
                count = 3;
            }
            else
            {
                bytes[0] = char(0xF0 | (value >> 18));
                bytes[1] = char(0x80 | ((value >> 12) & 0x3F));
                bytes[2] = char(0x80 | ((value >> 6) & 0x3F));
                bytes[3] = char(0x80 | (value & 0x3F));
                count = 4;
            }
        }
        if (!Put(target, targetSize, written, bytes, count))
            return 0;
    }
    return written;
}
} // namespace CodePage
