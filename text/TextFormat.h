#pragma once
#include <cstdint>
#include <type_traits>

class KelText;

// The largest formatted text, in UTF-16 units, terminator included. Longer
// output is cut at kFormatLimit - 1 units (never in the middle of a surrogate
// pair) rather than overflowing.
constexpr int32_t kFormatLimit = 24576;

// One argument of a formatted text, captured with its type so that a pattern
// can never read an argument as something it is not.
class FormatArg
{
public:
    enum class Kind : uint8_t
    {
        Missing,    // no argument at this position
        Signed,     // any signed integer (and bool)
        Unsigned,   // any unsigned integer, char16_t included
        Real,       // float, double
        WideText,   // UTF-16 text (null allowed)
        NarrowText, // 8-bit text in the system code page (null allowed)
        Pointer,
    };

    FormatArg() : kind(Kind::Missing), asUnsigned(0) {}

    template <typename T>
        requires std::is_integral_v<T>
    FormatArg(T value)
    {
        if constexpr (std::is_same_v<T, bool>)
        {
            kind = Kind::Signed;
            asSigned = value ? 1 : 0;
        }
        else if constexpr (std::is_signed_v<T>)
        {
            kind = Kind::Signed;
            asSigned = static_cast<int64_t>(value);
        }
        else
        {
            kind = Kind::Unsigned;
            asUnsigned = static_cast<uint64_t>(value);
        }
    }

    template <typename T>
        requires std::is_enum_v<T>
    FormatArg(T value) : FormatArg(static_cast<std::underlying_type_t<T>>(value))
    {
    }

    template <typename T>
        requires std::is_floating_point_v<T>
    FormatArg(T value) : kind(Kind::Real), asReal(static_cast<double>(value))
    {
    }

    FormatArg(const char16_t* text) : kind(Kind::WideText), asWide(text) {}
    FormatArg(const char* text) : kind(Kind::NarrowText), asNarrow(text) {}
#ifdef _WIN32
    FormatArg(const wchar_t* text) : kind(Kind::WideText), asWide(reinterpret_cast<const char16_t*>(text))
    {
    }
#endif
    FormatArg(const KelText& text);
    FormatArg(const void* pointer) : kind(Kind::Pointer), asPointer(pointer) {}
    FormatArg(std::nullptr_t) : kind(Kind::Pointer), asPointer(nullptr) {}

    Kind kind;
    union {
        int64_t asSigned;
        uint64_t asUnsigned;
        double asReal;
        const char16_t* asWide;
        const char* asNarrow;
        const void* asPointer;
    };
};

// Formats `pattern` with the meanings of the Microsoft wide printf family
// (%s is UTF-16 text, %c one UTF-16 unit; %hs/%S narrow text; d i u o x X e E
// f F g G a A c p % with flags, width, precision, '*' and the size prefixes
// h hh l ll L I I32 I64 j z t) into `out`, which holds `capacity` units. At most
// capacity - 1 units are written, always followed by a terminator. Answers
// the number of units written (terminator excluded); 0 when capacity < 1.
int32_t FormatInto(char16_t* out, int32_t capacity, const char16_t* pattern,
                   const FormatArg* args, int32_t count);
