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

    // Each constructor sets `kind` and the one member of the union it names.
    // clang-tidy 14 counts every member of an anonymous union as a field of
    // its own and asks for all of them.
    // NOLINTBEGIN(cppcoreguidelines-pro-type-member-init)
    FormatArg() : kind(Kind::Missing), asUnsigned(0) {}

    template <typename T>
    requires std::is_integral_v<T> FormatArg(T value)
    {
        if constexpr (std::is_same_v<T, bool>)
        {
            kind = Kind::Signed;
            asSigned = value ? 1 : 0;
        }
        else if constexpr (std::is_signed_v<T>)
        {
            kind = Kind::Signed;
            // A signed char is a small signed number here, formatted as one.
            // NOLINTNEXTLINE(bugprone-signed-char-misuse,cert-str34-c)
            asSigned = static_cast<int64_t>(value);
        }
        else
        {
            kind = Kind::Unsigned;
            asUnsigned = static_cast<uint64_t>(value);
        }
    }

    template <typename T>
    requires std::is_enum_v<T> FormatArg(T value)
        : FormatArg(static_cast<std::underlying_type_t<T>>(value))
    {
    }

    template <typename T>
    requires std::is_floating_point_v<T> FormatArg(T value)
        : kind(Kind::Real), asReal(static_cast<double>(value))
    {
    }

    FormatArg(const char16_t* text) : kind(Kind::WideText), asWide(text) {}
    FormatArg(const char* text) : kind(Kind::NarrowText), asNarrow(text) {}
#ifdef _WIN32
    FormatArg(const wchar_t* text)
        : kind(Kind::WideText), asWide(reinterpret_cast<const char16_t*>(text))
    {
    }
#endif
    FormatArg(const KelText& text);
    FormatArg(const void* pointer) : kind(Kind::Pointer), asPointer(pointer) {}
    FormatArg(std::nullptr_t) : kind(Kind::Pointer), asPointer(nullptr) {}
    // NOLINTEND(cppcoreguidelines-pro-type-member-init)

    Kind kind;
    union
    {
        int64_t asSigned;
        uint64_t asUnsigned;
        double asReal;
        const char16_t* asWide;
        const char* asNarrow;
        const void* asPointer;
    };
};

// Formats `pattern` with the meanings of the Microsoft wide printf family
// (vswprintf_s) into `out`, which holds `capacity` units. At most
// capacity - 1 units are written, always followed by a terminator; longer
// output is cut there, never between the two units of a surrogate pair.
// Answers the number of units written (terminator excluded); 0 when `out` is
// null or capacity < 1. The arguments are used in order; `args` may be null
// when count is 0.
//
// Directives: %[flags][width][.precision][size]type
//   flags      - left-justify, + sign always, space sign or blank, # alternate
//              form, 0 pad with zeros (after the sign and any 0x; ignored with
//              '-', and for integers when a precision is given; infinities and
//              NaNs are padded with blanks)
//   width      digits or '*'; precision '.' then digits or '*' ('.' alone is 0).
//              '*' takes the next argument as an int: a negative width means
//              left-justify, a negative precision means none.
//   size       h hh l ll L I I32 I64 j z t w. For integers they give the width
//              the value is cut to: hh 8 bits, h 16, none / l / I32 / w 32, ll /
//              L / I / I64 / j / z / t 64 (so %hd of 70000 gives 4464). For s
//              and c, h means narrow and l / w wide.
//   d i        signed decimal;  u o x X  unsigned decimal, octal, hex
//   e E f F g G a A  floating point, identical on every platform: the exponent
//              has at least two digits (1.500000e+01), %a without a precision
//              shows 13 hex digits (0x1.8000000000000p+3); infinities and NaNs
//              print inf, -inf, nan (INF, -INF, NAN for the upper-case types),
//              a NaN without its sign
//   s          UTF-16 text; %hs and %S narrow text in the system code page; a
//              null text prints (null)
//   c          one UTF-16 unit; %hc and %C one narrow character
//   p          16 upper-case hex digits, no 0x
//   %%         a percent sign
//   n          not supported: writes nothing, but uses up its argument
// A directive with an unknown type (or cut off by the end of the pattern) is
// copied out as written, its '%' included, and uses no argument.
//
// Arguments are never reinterpreted; when a directive and its argument differ
// in kind:
//   - a missing argument produces nothing for that directive, not even its
//     padding (a missing '*' argument counts as 0 width, no precision);
//   - text is always read as what it is: %s of narrow text converts it, %hs of
//     UTF-16 text copies it;
//   - an integer directive given a real converts it toward zero (saturating
//     at the 64-bit limits, NaN gives 0), a real directive given an integer
//     converts it; a pointer counts as the unsigned integer of its address;
//   - a text directive given a number formats it as %lld or %llu would with
//     the same flags, width and precision (reals converted toward zero); given
//     a pointer it prints (null) for null, otherwise the address as %p would;
//   - a number directive (integer, real or %p) given text formats 0; %c given
//     text writes the text's first character (nothing when it is empty).
int32_t FormatInto(char16_t* out, int32_t capacity, const char16_t* pattern, const FormatArg* args,
                   int32_t count);
