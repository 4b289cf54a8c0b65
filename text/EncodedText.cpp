#include "text/EncodedText.h"

#include <cstring>

#include "platform/CodePage.h"
#include "text/KelText.h"
#include "text/TextHeap.h"

namespace
{
const char emptyUnits[2] = {0, 0};

uint32_t CodePageOf(uint32_t encoding)
{
    return encoding == EncodedText::Utf8 ? CodePage::Utf8 : CodePage::Ansi;
}

size_t GrowthStep(size_t bytes)
{
    if (bytes < 33)
        return 8;
    if (bytes < 257)
        return 64;
    if (bytes < 2049)
        return 512;
    return 8192;
}
} // namespace

EncodedText::EncodedText(const KelText& text, uint32_t toEncoding)
{
    Set(text.c_str(), text.Length(), Utf16, toEncoding);
}

EncodedText::EncodedText(const char16_t* text, uint32_t toEncoding)
{
    Set(text, KelText::Measure(text), Utf16, toEncoding);
}

EncodedText::EncodedText(const char* text, int32_t textLength, uint32_t fromEncoding,
                         uint32_t toEncoding)
{
    if (text && textLength < 0)
        textLength = int32_t(std::strlen(text));
    Set(text, text ? textLength : 0, fromEncoding, toEncoding);
}

EncodedText::EncodedText(const EncodedText& other)
{
    *this = other;
}

EncodedText::EncodedText(EncodedText&& other) noexcept
    : encoding(other.encoding), storage(other.storage), allocated(other.allocated),
      length(other.length)
{
    other.storage = nullptr;
    other.allocated = 0;
    other.length = 0;
}

EncodedText& EncodedText::operator=(const EncodedText& other)
{
    if (&other != this)
        Set(other.Bytes(), other.length, other.encoding, other.encoding);
    return *this;
}

EncodedText& EncodedText::operator=(EncodedText&& other) noexcept
{
    if (&other != this)
    {
        GetTextHeap().Free(storage);
        encoding = other.encoding;
        storage = other.storage;
        allocated = other.allocated;
        length = other.length;
        other.storage = nullptr;
        other.allocated = 0;
        other.length = 0;
    }
    return *this;
}

EncodedText::~EncodedText()
{
    GetTextHeap().Free(storage);
}

bool EncodedText::Reserve(int32_t n)
{
    if (n <= 0)
    {
        length = 0;
        Terminate();
        return true;
    }
    const size_t bytes = size_t(UnitWidth()) * (size_t(n) + 1);
    if (bytes > allocated)
    {
        const size_t step = GrowthStep(bytes);
        const size_t size = bytes + step - (bytes % step);
        void* fresh = GetTextHeap().Reallocate(storage, size, allocated);
        if (!fresh)
            return false;
        storage = static_cast<char*>(fresh);
        allocated = size;
    }
    return true;
}

void EncodedText::Empty(uint32_t newEncoding)
{
    length = 0;
    encoding = newEncoding;
    Terminate();
}

void EncodedText::Terminate()
{
    if (storage && allocated >= size_t(UnitWidth()) * (size_t(length) + 1))
        std::memset(storage + size_t(length) * size_t(UnitWidth()), 0, size_t(UnitWidth()));
}

const char* EncodedText::Bytes() const
{
    return (storage && length) ? storage : emptyUnits;
}

const char16_t* EncodedText::Units() const
{
    return reinterpret_cast<const char16_t*>(Bytes());
}

bool EncodedText::Set(const void* source, int32_t sourceLength, uint32_t fromEncoding,
                      uint32_t toEncoding)
{
    if (toEncoding > Utf16)
        toEncoding = Utf16;
    if (fromEncoding > Utf16)
        fromEncoding = Utf16;
    // The source may live in our own storage; convert from a private copy then.
    if (source && storage && source >= storage && source < storage + allocated)
    {
        EncodedText copy(*this);
        const char* base = copy.storage ? copy.storage : emptyUnits;
        return Set(base + (static_cast<const char*>(source) - storage), sourceLength, fromEncoding,
                   toEncoding);
    }
    Empty(toEncoding);
    if (!source || sourceLength <= 0)
        return false;

    if (fromEncoding == toEncoding)
    {
        if (!Reserve(sourceLength))
            return false;
        std::memcpy(storage, source, size_t(sourceLength) * size_t(UnitWidth()));
        length = sourceLength;
        Terminate();
        return true;
    }
    // A conversion takes the source up to its terminator, whatever the length
    // says. The units before it are measured here and converted without the
    // terminator, so that a sequence cut off at the end cannot take the
    // terminator with it.
    if (toEncoding == Utf16)
    {
        const char* narrow = static_cast<const char*>(source);
        const int32_t units = int32_t(std::strlen(narrow));
        const int32_t size =
            units ? CodePage::ToWide(CodePageOf(fromEncoding), narrow, units, nullptr, 0) : 0;
        if (size < 1 || !Reserve(size))
            return false;
        length = CodePage::ToWide(CodePageOf(fromEncoding), narrow, units,
                                  reinterpret_cast<char16_t*>(storage), size);
        Terminate();
        return length > 0;
    }
    if (fromEncoding == Utf16)
    {
        const auto* wide = static_cast<const char16_t*>(source);
        const int32_t units = KelText::Measure(wide);
        const int32_t size =
            units ? CodePage::FromWide(CodePageOf(toEncoding), wide, units, nullptr, 0) : 0;
        if (size < 1 || !Reserve(size))
            return false;
        length = CodePage::FromWide(CodePageOf(toEncoding), wide, units, storage, size);
        Terminate();
        return length > 0;
    }
    // Narrow to another narrow encoding goes through UTF-16.
    EncodedText wide;
    if (!wide.Set(source, sourceLength, fromEncoding, Utf16))
        return false;
    return Set(wide.storage, wide.length, Utf16, toEncoding);
}

bool EncodedText::ConvertTo(uint32_t toEncoding)
{
    if (toEncoding == encoding)
        return length > 0;
    EncodedText copy(std::move(*this));
    return Set(copy.Bytes(), copy.length, copy.encoding, toEncoding);
}

KelText EncodedText::ToText() const
{
    if (encoding == Utf16)
        return KelText(Units(), length);
    EncodedText wide;
    wide.Set(Bytes(), length, encoding, Utf16);
    return KelText(wide.Units(), wide.length);
}
