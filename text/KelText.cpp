#include "text/KelText.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <memory>

#include "text/AppServices.h"
#include "text/EncodedText.h"
#include "text/TextHeap.h"

namespace
{
// Written with 0 before every hand-out, so that a caller who wrote through the
// pointer cannot leave it non-empty for the next one.
char16_t sharedEmpty[1] = {0};

// The value left in the buffer field of a destroyed text.
const uintptr_t destroyedMark = 0x12345678;

int32_t RoundedCapacity(int32_t n)
{
    const int32_t need = n + 1;
    int32_t granule = 16384;
    if (need <= 64)
        granule = 16;
    else if (need <= 512)
        granule = 128;
    else if (need <= 4096)
        granule = 1024;
    return need + granule - (need % granule);
}

bool IsAsciiLetter(char16_t ch)
{
    return (ch >= u'a' && ch <= u'z') || (ch >= u'A' && ch <= u'Z');
}

bool IsDigit(char16_t ch)
{
    return ch >= u'0' && ch <= u'9';
}

bool IsBlank(char16_t ch)
{
    return ch == u' ' || ch == u'\t';
}
} // namespace

// ---------------------------------------------------------------------------
// construction

KelText::KelText(const char16_t* text) : KelText()
{
    SetUnits(text, Measure(text));
}

KelText::KelText(const char16_t* text, int32_t count) : KelText()
{
    int32_t available = 0;
    if (text)
        while (available < count && text[available])
            ++available;
    SetUnits(text, available);
}

KelText::KelText(const KelText& other) : KelText()
{
    SetUnits(other.buffer, other.length);
}

KelText::KelText(KelText&& other) noexcept
    : buffer(other.buffer), length(other.length), capacity(other.capacity)
{
    other.buffer = nullptr;
    other.length = 0;
    other.capacity = 0;
}

KelText::~KelText()
{
    if (length != 0)
    {
        length = 0;
        Reserve(0, false);
    }
    // A volatile store, so that the compiler cannot drop it as dead.
    *reinterpret_cast<char16_t* volatile*>(&buffer) = reinterpret_cast<char16_t*>(destroyedMark);
}

void KelText::SetUnits(const char16_t* text, int32_t count)
{
    if (!text || count <= 0)
    {
        Reserve(0, false);
        length = 0;
        return;
    }
    if (buffer && text >= buffer && text < buffer + capacity)
    {
        // A tail of our own text (s = s.CharAt(3)): it already fits, and the
        // two ranges may overlap.
        std::memmove(buffer, text, size_t(count) * sizeof(char16_t));
        buffer[count] = 0;
        length = count;
        return;
    }
    if (!Reserve(count, false))
        return;
    std::memcpy(buffer, text, size_t(count) * sizeof(char16_t));
    buffer[count] = 0;
    length = count;
}

KelText& KelText::operator=(const char16_t* text)
{
    if (text && text == buffer)
        return *this;
    SetUnits(text, Measure(text));
    return *this;
}

KelText& KelText::operator=(const KelText& other)
{
    if (this == &other || other.buffer == buffer)
        return *this;
    if (!other.buffer || other.length == 0)
    {
        Reserve(0, false);
        length = 0;
        return *this;
    }
    if (!Reserve(other.length, false))
        return *this;
    length = other.length;
    std::memcpy(buffer, other.buffer, size_t(length + 1) * sizeof(char16_t));
    return *this;
}

KelText& KelText::operator=(KelText&& other) noexcept
{
    if (&other == this)
        return *this;
    Reserve(0, false);
    buffer = other.buffer;
    length = other.length;
    capacity = other.capacity;
    other.buffer = nullptr;
    other.length = 0;
    other.capacity = 0;
    return *this;
}

// ---------------------------------------------------------------------------
// storage

bool KelText::Reserve(int32_t n, bool keep)
{
    if (n <= 0)
    {
        GetTextHeap().Free(buffer);
        buffer = nullptr;
        capacity = 0;
        return true;
    }
    // Beyond this the rounded size no longer fits the capacity field.
    if (n > std::numeric_limits<int32_t>::max() - 16385)
        return false;
    const int32_t wanted = RoundedCapacity(n);
    if (wanted <= capacity)
        return true;
    const size_t copy = keep && buffer ? size_t(capacity) * sizeof(char16_t) : 0;
    void* fresh = GetTextHeap().Reallocate(buffer, size_t(wanted) * sizeof(char16_t), copy);
    if (!fresh)
        return false;
    buffer = static_cast<char16_t*>(fresh);
    if (!copy)
        buffer[0] = 0;
    capacity = wanted;
    return true;
}

bool KelText::Sync()
{
    if (!buffer)
    {
        length = 0;
        return false;
    }
    int32_t measured = 0;
    while (measured < capacity - 1 && buffer[measured])
        ++measured;
    buffer[measured] = 0;
    length = measured;
    Reserve(length, true);
    return true;
}

// ---------------------------------------------------------------------------
// access

const char16_t* KelText::EmptyText()
{
    sharedEmpty[0] = 0;
    return sharedEmpty;
}

int32_t KelText::Measure(const char16_t* text)
{
    if (!text)
        return 0;
    int32_t n = 0;
    while (text[n])
        ++n;
    return n;
}

const char16_t* KelText::c_str() const
{
    return buffer ? buffer : EmptyText();
}

char16_t KelText::At(int32_t index) const
{
    return (buffer && index >= 0 && index < length) ? buffer[index] : char16_t(0);
}

// ---------------------------------------------------------------------------
// concatenation

KelText& KelText::Append(const char16_t* text, int32_t count)
{
    if (!text || count <= 0 || count > std::numeric_limits<int32_t>::max() - length)
        return *this;
    // `text` may point into our own buffer, which Reserve can move.
    const bool inside = buffer && text >= buffer && text < buffer + capacity;
    const ptrdiff_t offset = inside ? text - buffer : 0;
    if (!Reserve(length + count, true))
        return *this;
    if (inside)
        text = buffer + offset;
    std::memmove(buffer + length, text, size_t(count) * sizeof(char16_t));
    length += count;
    buffer[length] = 0;
    return *this;
}

KelText& KelText::operator+=(const KelText& text)
{
    return Append(text.buffer, text.length);
}

KelText& KelText::operator+=(const char16_t* text)
{
    return Append(text, Measure(text));
}

KelText& KelText::operator+=(char16_t ch)
{
    return Append(&ch, 1);
}

KelText operator+(const KelText& left, const KelText& right)
{
    KelText result;
    result.Reserve(left.length + right.length, false);
    result.Append(left.buffer, left.length);
    result.Append(right.buffer, right.length);
    return result;
}

KelText operator+(const KelText& left, const char16_t* right)
{
    KelText result(left);
    result += right;
    return result;
}

KelText operator+(const KelText& left, char16_t right)
{
    KelText result(left);
    result += right;
    return result;
}

KelText operator+(const char16_t* left, const KelText& right)
{
    if (!left)
        return right;
    KelText result(left);
    result += right;
    return result;
}

// ---------------------------------------------------------------------------
// formatting

FormatArg::FormatArg(const KelText& text) : kind(Kind::WideText), asWide(text.c_str()) {}

KelText& KelText::FormatList(const char16_t* pattern, const FormatArg* args, int32_t count)
{
    TextHeap& heap = GetTextHeap();
    auto* scratch =
        pattern ? static_cast<char16_t*>(heap.Allocate(kFormatLimit * sizeof(char16_t))) : nullptr;
    // Formatted before the old text is released: an argument may be this text.
    if (scratch)
        FormatInto(scratch, kFormatLimit, pattern, args, count);
    Reserve(0, false);
    length = 0;
    if (!scratch)
        return *this;
    // The result is taken up to its terminator: a %c of 0 ends the text there.
    SetUnits(scratch, Measure(scratch));
    heap.Free(scratch);
    return *this;
}

// ---------------------------------------------------------------------------
// comparison

bool KelText::operator==(const char16_t* text) const
{
    if (!buffer)
        return !text || !text[0];
    if (!text)
        return length == 0;
    const char16_t* own = buffer;
    while (*own && *text)
    {
        if (Fold(*own) != Fold(*text))
            return false;
        ++own;
        ++text;
    }
    return *own == *text;
}

bool KelText::operator==(const KelText& other) const
{
    if (!buffer || !other.buffer)
        return !buffer && !other.buffer;
    if (length != other.length)
        return false;
    // Both ends at once: names that differ near their end are rejected early.
    int32_t front = 0;
    int32_t back = length - 1;
    while (front <= back)
    {
        if (Fold(buffer[front]) != Fold(other.buffer[front]))
            return false;
        if (Fold(buffer[back]) != Fold(other.buffer[back]))
            return false;
        ++front;
        --back;
    }
    return true;
}

bool KelText::SameAs(const KelText& other) const
{
    return View() == other.View();
}

bool KelText::StartsWith(const char16_t* prefix) const
{
    const int32_t n = Measure(prefix);
    if (n > length)
        return false;
    for (int32_t i = 0; i < n; ++i)
        if (Fold(buffer[i]) != Fold(prefix[i]))
            return false;
    return true;
}

// ---------------------------------------------------------------------------
// editing

KelText& KelText::Trim(int side, char16_t ch)
{
    if (!buffer || length == 0)
        return *this;
    auto trimmed = [ch](char16_t c) { return ch ? c == ch : IsBlank(c); };
    int32_t first = 0;
    int32_t last = length;
    if (side != 1)
        while (first < last && trimmed(buffer[first]))
            ++first;
    if (side != -1)
        while (last > first && trimmed(buffer[last - 1]))
            --last;
    if (first == 0 && last == length)
        return *this;
    KelText copy(buffer + first, last - first);
    *this = std::move(copy);
    return *this;
}

KelText& KelText::Pad(int32_t width, uint32_t mode, int32_t maxLen, char16_t ch)
{
    if (maxLen != 0 && length > maxLen)
        Mid(1, maxLen);
    const int32_t missing = width - length;
    if (missing <= 0)
        return *this;
    switch (mode)
    {
    case 0:
    {
        const int32_t left = missing / 2;
        InsertChars(ch, 1, left);
        InsertChars(ch, 0, missing - left);
        break;
    }
    case 1:
        InsertChars(ch, 1, missing);
        break;
    case 0xFFFFFFFFu:
        InsertChars(ch, 0, missing);
        break;
    default:
        break;
    }
    return *this;
}

KelText& KelText::ToLower()
{
    for (int32_t i = 0; i < length; ++i)
        if (buffer[i] >= u'A' && buffer[i] <= u'Z')
            buffer[i] = char16_t(buffer[i] + 32);
    return *this;
}

KelText& KelText::ToUpper()
{
    for (int32_t i = 0; i < length; ++i)
        buffer[i] = Fold(buffer[i]);
    return *this;
}

KelText& KelText::Capitalise(bool breakOnPunctuation)
{
    bool wordStart = true;
    for (int32_t i = 0; i < length; ++i)
    {
        const char16_t ch = buffer[i];
        const bool letter = IsAsciiLetter(ch) || ch > 0x7F;
        if (letter || IsDigit(ch) || ch == u'-')
        {
            if (IsAsciiLetter(ch))
                buffer[i] =
                    wordStart ? Fold(ch) : char16_t((ch >= u'A' && ch <= u'Z') ? ch + 32 : ch);
            wordStart = false;
        }
        else if (ch == u'.' || breakOnPunctuation)
        {
            wordStart = true;
        }
    }
    return *this;
}

KelText& KelText::Reverse()
{
    if (buffer)
        std::reverse(buffer, buffer + length);
    return *this;
}

// ---------------------------------------------------------------------------
// positions

const char16_t* KelText::CharAt(int32_t pos) const
{
    if (!buffer || pos < 1 || pos > length)
        return EmptyText();
    return buffer + pos - 1;
}

int32_t KelText::Find(const char16_t* needle, int32_t start, bool ignoreCase) const
{
    const int32_t n = Measure(needle);
    if (n == 0 || !buffer)
        return 0;
    if (start < 0)
        start += length;
    if (start < 1)
        start = 1;
    for (int32_t i = start - 1; i + n <= length; ++i)
    {
        int32_t k = 0;
        if (ignoreCase)
            while (k < n && Fold(buffer[i + k]) == Fold(needle[k]))
                ++k;
        else
            while (k < n && buffer[i + k] == needle[k])
                ++k;
        if (k == n)
            return i + 1;
    }
    return 0;
}

int32_t KelText::Find(char16_t ch, int32_t start) const
{
    const char16_t needle[2] = {ch, 0};
    return Find(needle, start);
}

KelText& KelText::Mid(int32_t from, int32_t to)
{
    auto normal = [this](int32_t value)
    {
        if (value < 1)
            value += length;
        return value < 1 ? 1 : value;
    };
    from = normal(from);
    to = normal(to);
    const int32_t first = std::min(from, to);
    const int32_t last = std::min(std::max(from, to), length);
    if (first > last)
    {
        *this = KelText();
        return *this;
    }
    if (first == 1 && last == length)
        return *this;
    KelText part(buffer + first - 1, last - first + 1);
    *this = std::move(part);
    return *this;
}

KelText& KelText::InsertChars(char16_t ch, int32_t pos, int32_t count)
{
    if (count <= 0 || count > std::numeric_limits<int32_t>::max() - length)
        return *this;
    if (pos <= 0)
        pos += length + 1;
    pos = std::clamp(pos, 1, length + 1);
    if (!Reserve(length + count, true))
        return *this;
    char16_t* at = buffer + pos - 1;
    std::memmove(at + count, at, size_t(length - pos + 1) * sizeof(char16_t));
    std::fill(at, at + count, ch);
    length += count;
    buffer[length] = 0;
    return *this;
}

KelText& KelText::Delete(int32_t pos, int32_t count)
{
    if (pos < 1 || pos > length || count <= 0)
        return *this;
    count = std::min(count, length - pos + 1);
    KelText result(buffer, pos - 1);
    result.Append(buffer + pos - 1 + count, length - (pos - 1 + count));
    *this = std::move(result);
    return *this;
}

KelText KelText::Sub(int32_t pos, int32_t count) const
{
    if (pos < 1)
    {
        count += pos - 1;
        pos = 1;
    }
    if (pos > length || count <= 0)
        return KelText();
    return KelText(buffer + pos - 1, std::min(count, length - pos + 1));
}

// ---------------------------------------------------------------------------
// numbers

KelText& KelText::SetNumber(int64_t value, bool group)
{
    if (value >= 0 && value <= 9)
    {
        const char16_t digit[2] = {char16_t(u'0' + value), 0};
        return *this = digit;
    }
    char narrow[32];
    const auto result = std::to_chars(narrow, narrow + sizeof narrow, value);
    const int32_t digits = int32_t(result.ptr - narrow);
    const char16_t separator = GetTextConventions().thousandsSeparator;
    KelText text;
    text.Reserve(digits + digits / 3, false);
    for (int32_t i = 0; i < digits; ++i)
    {
        text += char16_t(narrow[i]);
        const int32_t remaining = digits - i - 1;
        if (group && value >= 1000 && separator && remaining > 0 && remaining % 3 == 0)
            text += separator;
    }
    return *this = std::move(text);
}

KelText& KelText::SetReal(double value, int decimals)
{
    Format(u"%.*f", decimals, value);
    const char16_t mark = GetTextConventions().decimalMark;
    for (int32_t i = 0; i < length; ++i)
        if (buffer[i] == u'.')
            buffer[i] = mark;
    return *this;
}

uint64_t KelText::HexValue() const
{
    uint64_t value = 0;
    for (int32_t i = 0; i < length && i < 16; ++i)
    {
        const char16_t ch = buffer[i];
        uint64_t digit = 0;
        if (ch >= u'0' && ch <= u'9')
            digit = ch - u'0';
        else if (ch >= u'a' && ch <= u'f')
            digit = ch - u'a' + 10;
        else if (ch >= u'A' && ch <= u'Z')
            digit = ch - 55;
        else
            break;
        value = value * 16 + digit;
    }
    return value;
}

int32_t KelText::IntValue() const
{
    int32_t i = 0;
    while (i < length && (IsBlank(buffer[i]) || buffer[i] == u'\r' || buffer[i] == u'\n'))
        ++i;
    bool negative = false;
    if (i < length && (buffer[i] == u'+' || buffer[i] == u'-'))
        negative = buffer[i++] == u'-';
    int64_t value = 0;
    for (; i < length && IsDigit(buffer[i]); ++i)
    {
        value = value * 10 + (buffer[i] - u'0');
        if (value > int64_t(std::numeric_limits<int32_t>::max()) + 1)
            value = int64_t(std::numeric_limits<int32_t>::max()) + 1;
    }
    if (negative)
        value = -value;
    return int32_t(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                       std::numeric_limits<int32_t>::max()));
}

double KelText::RealValue() const
{
    // Only ASCII can take part in a number; copy the leading run, all of it:
    // the fixed-point text of a large double runs to 300 digits and more.
    int32_t i = 0;
    while (i < length && IsBlank(buffer[i]))
        ++i;
    if (i < length && buffer[i] == u'+')
        ++i;
    std::string narrow;
    for (; i < length && buffer[i] < 0x80 && buffer[i] > u' '; ++i)
        narrow += char(buffer[i]);
    double value = 0;
    const auto result = std::from_chars(narrow.data(), narrow.data() + narrow.size(), value,
                                        std::chars_format::general);
    if (result.ec != std::errc())
        return 0;
    return value;
}

// ---------------------------------------------------------------------------
// conversions

KelText KelText::FromUtf8(std::string_view text)
{
    // The conversion runs to a terminator, which a view need not have.
    const std::string terminated(text);
    EncodedText encoded(terminated.c_str(), int32_t(terminated.size()), EncodedText::Utf8);
    return encoded.ToText();
}

std::string KelText::ToUtf8() const
{
    EncodedText encoded(*this, EncodedText::Utf8);
    return std::string(encoded.Bytes(), size_t(encoded.Length()));
}
