#pragma once
#include <cstddef>
#include <cstdint>

class KelText;

// Text in one of three encodings, for where text meets files or narrow
// interfaces. The buffer always ends with one zero unit (one byte, or two for
// UTF-16); Length counts units without it.
class EncodedText
{
public:
    enum : uint32_t
    {
        Ansi = 0,  // the system ANSI code page
        Utf8 = 1,  // code page 65001
        Utf16 = 2, // little-endian UTF-16, as KelText holds it
    };

    EncodedText() = default;
    EncodedText(const KelText& text, uint32_t encoding = Utf16);
    EncodedText(const char16_t* text, uint32_t encoding = Utf16);
    // Terminated narrow text in `fromEncoding` (Ansi or Utf8); length -1 measures it.
    EncodedText(const char* text, int32_t length, uint32_t fromEncoding, uint32_t encoding = Utf16);
    EncodedText(const EncodedText& other);
    EncodedText(EncodedText&& other) noexcept;
    EncodedText& operator=(const EncodedText& other);
    EncodedText& operator=(EncodedText&& other) noexcept;
    ~EncodedText();

    // Replaces the contents with `source` (in fromEncoding) converted to
    // toEncoding. A conversion between encodings takes the source up to its
    // terminator, which it must have; `length` only tells whether there is
    // anything (0: the text stays empty). Within one encoding `length` units
    // are copied. A failed conversion leaves the text empty. Answers whether
    // the text holds something afterwards.
    bool Set(const void* source, int32_t length, uint32_t fromEncoding, uint32_t toEncoding);
    // Converts the contents in place.
    bool ConvertTo(uint32_t toEncoding);
    // Room for n units plus the terminator. n = 0 empties the text. Storage
    // grows to the needed bytes rounded up by 8 (below 33 bytes), 64 (below
    // 257), 512 (below 2049) or 8192, always adding a step.
    bool Reserve(int32_t n);

    uint32_t Encoding() const { return encoding; }
    int32_t Length() const { return length; }
    int32_t UnitWidth() const { return encoding == Utf16 ? 2 : 1; }
    size_t AllocatedBytes() const { return allocated; }
    // The units and their terminator; an empty text gives "" of its width.
    const char* Bytes() const;
    const char16_t* Units() const;
    size_t ByteCount() const { return size_t(length) * size_t(UnitWidth()); }

    // The contents as UTF-16.
    KelText ToText() const;

private:
    void Empty(uint32_t newEncoding);
    void Terminate();

    uint32_t encoding = Utf16;
    char* storage = nullptr;
    size_t allocated = 0;
    int32_t length = 0;
};
