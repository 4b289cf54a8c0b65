#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/core/text/TextTestSupport.h"
#include "text/KelText.h"
#include "text/TextFormat.h"

namespace
{
struct FormatCase
{
    const char16_t* pattern;
    std::vector<FormatArg> args;
    const char16_t* expected;
};

const char16_t* const noText = nullptr;
const double inf = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();
const int64_t big = 4294967301; // 2^32 + 5

// Pattern, arguments, expected output: the same on every platform.
const std::vector<FormatCase>& Cases()
{
    static const std::vector<FormatCase> cases = {
        // integers: flags, width, precision
        {u"%d|%i|%u", {42, -42, 42u}, u"42|-42|42"},
        {u"[%5d][%-5d][%05d][%+d][% d][%+ d]",
         {42, 42, 42, 42, 42, 42},
         u"[   42][42   ][00042][+42][ 42][+42]"},
        {u"[%.3d][%8.3d][%-8.3d][%08.3d][%.0d][%5.0d][%+.0d]",
         {7, -7, 7, 7, 0, 0, 0},
         u"[007][    -007][007     ][     007][][     ][+]"},
        {u"[%+05d][% 05d][%-05d][%05d]", {7, 7, 7, -7}, u"[+0007][ 0007][7    ][-0007]"},
        {u"%x %X %o %#x %#X %#o %#o %#x %#.0o %#08x %#5o",
         {255, 255, 8, 255, 255, 8, 0, 0, 0, 255, 8},
         u"ff FF 10 0xff 0XFF 010 0 0  0x0000ff   010"},
        {u"[%+u][% x][%+o]", {5, 255, 8}, u"[5][ff][10]"},
        {u"[%.20d][%25d]", {1, -1}, u"[00000000000000000001][                       -1]"},
        // integers: the size prefix cuts the value
        {u"%d %d %u %x", {INT32_MIN, big, -1, -1}, u"-2147483648 5 4294967295 ffffffff"},
        {u"%hd %hu %hhd %hhu %hx", {70000, -1, 255, 257, 0x12345}, u"4464 65535 -1 1 2345"},
        {u"%ld %lu %I32d %wd", {big, uint64_t(big), big, big}, u"5 5 5 5"},
        {u"%lld %llu %I64d %Id %jd %zd %td %Ld",
         {INT64_MIN, UINT64_MAX, big, big, big, big, big, big},
         u"-9223372036854775808 18446744073709551615 4294967301 4294967301 4294967301 4294967301 "
         u"4294967301 4294967301"},
        {u"%I64d %I64u %I64x",
         {INT64_MIN, UINT64_MAX, -1LL},
         u"-9223372036854775808 18446744073709551615 ffffffffffffffff"},
        {u"%llx %I64X %llo",
         {-1LL, -1LL, UINT64_MAX},
         u"ffffffffffffffff FFFFFFFFFFFFFFFF 1777777777777777777777"},
        {u"%d %d %hhu", {true, u'A', char(-23)}, u"1 65 233"},
        // '*' for width and precision
        {u"[%*d][%-*d][%*d][%.*d][%.*d][%*.*d][%*d]",
         {5, 1, 5, 1, -5, 1, 3, 1, -1, 1, 6, 3, 1, 3.9, 1},
         u"[    1][1    ][1    ][001][1][   001][  1]"},
        {u"[%.*f][%.*s]", {2, 3.14159, 1, u"abc"}, u"[3.14][a]"},
        // text
        {u"[%s][%5s][%-5s][%.2s][%5.1s][%05s][%ls][%ws]",
         {u"ab", u"ab", u"ab", u"abc", u"abc", u"ab", u"l", u"w"},
         u"[ab][   ab][ab   ][ab][    a][000ab][l][w]"},
        {u"[%s][%.3s][%hs][%8s]",
         {noText, noText, static_cast<const char*>(nullptr), noText},
         u"[(null)][(nu][(null)][  (null)]"},
        {u"[%S][%8S]", {static_cast<const char*>(nullptr), noText}, u"[(null)][  (null)]"},
        {u"[%hs][%S][%.2hs][%-6hs][%hS]",
         {"caf\xE9", "\x80", "abc", "ab", "x"},
         u"[caf\u00E9][\u20AC][ab][ab    ][x]"},
        {u"[%s][%hs][%lS]", {"narrow", u"wide", u"wide"}, u"[narrow][wide][wide]"},
        {u"%s|%.1s", {u"\xD83D\xDE00", u"\xD83D\xDE00"}, u"\xD83D\xDE00|\xD83D"},
        // characters
        {u"[%c][%c][%3c][%-3c][%03c]",
         {u'Z', char16_t(0x20AC), u'x', u'x', u'x'},
         u"[Z][\u20AC][  x][x  ][00x]"},
        {u"[%hc][%C][%hc][%lc][%wc]",
         {'A', char(0xE9), char(0x80), u'\u00E9', u'w'},
         u"[A][\u00E9][\u20AC][\u00E9][w]"},
        {u"[%c][%c][%c]", {65.9, u"xyz", u""}, u"[A][x][]"},
        {u"a%cb", {0}, u"a"},
        // pointers
        {u"[%p][%p][%20p][%-18p][%p]",
         {reinterpret_cast<const void*>(0x1234ABCD), nullptr, reinterpret_cast<const void*>(1),
          reinterpret_cast<const void*>(1), 255},
         u"[000000001234ABCD][0000000000000000][    0000000000000001][0000000000000001  ]"
         u"[00000000000000FF]"},
        // percent signs, unknown types, %n
        {u"100%% [%5%] %k%d 50%", {7}, u"100% [%5%] %k7 50%"},
        {u"%*k%d|%-", {3, 5}, u"%*k3|%-"},
        {u"%n%d %ln.", {1, 2, 3}, u"2 ."},
        // floating point
        {u"%f|%e|%E|%g|%G",
         {1.5, 15.0, 15.0, 1e-5, 1e-5},
         u"1.500000|1.500000e+01|1.500000E+01|1e-05|1E-05"},
        {u"%e|%e|%.2e|%.0e|%#.0e",
         {1e100, 1e-300, 12345.0, 1.5, 3.0},
         u"1.000000e+100|1.000000e-300|1.23e+04|2e+00|3.e+00"},
        {u"%.2f|%.0f|%.0f|%.0f|%.1f|%.1f|%.3f",
         {2.675, 0.5, 1.5, 2.5, 0.25, 0.35, 1.0005},
         u"2.67|0|2|2|0.2|0.3|1.000"},
        {u"[%10.3f][%-10.2f][%010.3f][%+.1f][% .1f][%#.0f][%.0f][%f]",
         {3.14159, 3.14159, -1.5, 2.0, 2.0, 2.0, 2.0, -0.0},
         u"[     3.142][3.14      ][-00001.500][+2.0][ 2.0][2.][2][-0.000000]"},
        {u"%g|%g|%g|%g|%g|%g|%g|%g",
         {100000.0, 1000000.0, 0.0001, 0.00001, 123456789.0, 0.0, 999999.5, 9.9999995},
         u"100000|1e+06|0.0001|1e-05|1.23457e+08|0|1e+06|10"},
        {u"%#g|%#.3g|%.3g|%.10g|%G|%g|%#g",
         {1.0, 1.0, 3.14159, 0.1, 1e-10, -0.0, 100000.0},
         u"1.00000|1.00|3.14|0.1|1E-10|-0|100000."},
        {u"%a|%A|%.1a|%.0a|%#.0a|%a|%a|%a|%.15a",
         {12.0, 12.0, 1.0, 1.0, 1.0, 0.0, -0.5, 4.9e-324, 1.0},
         u"0x1.8000000000000p+3|0X1.8000000000000P+3|0x1.0p+0|0x1p+0|0x1.p+0|0x0.0000000000000p+0|"
         u"-0x1.0000000000000p-1|0x0.0000000000001p-1022|0x1.000000000000000p+0"},
        {u"%f|%e|%g|%F|%E|%G|%a|%A|%.2f|%f",
         {inf, -inf, nan, inf, -inf, nan, inf, nan, inf, -nan},
         u"inf|-inf|nan|INF|-INF|NAN|inf|NAN|inf|nan"},
        {u"[%6f][%-6f][%06f][%+f][% f]",
         {inf, inf, -inf, inf, inf},
         u"[   inf][inf   ][  -inf][+inf][ inf]"},
        // missing and mismatched arguments
        {u"[%d][%5d][%s][%c][%f]", {}, u"[][][][][]"},
        {u"%d,%s,%d", {1}, u"1,,"},
        {u"[%*d][%.*f]", {5}, u"[][]"},
        {u"[%d][%d][%lld][%llu][%u][%d][%x]",
         {3.99, -3.99, 1e300, 1e300, -1.0, nan, 255.9},
         u"[3][-3][9223372036854775807][18446744073709551615][4294967295][0][ff]"},
        {u"[%d][%f][%x][%e][%p]",
         {u"12", u"x", "narrow", u"t", u"p"},
         u"[0][0.000000][0][0.000000e+00][0000000000000000]"},
        {u"[%f][%e][%g][%.1f]",
         {7, -7, 10u, UINT64_MAX},
         u"[7.000000][-7.000000e+00][10][18446744073709551616.0]"},
        {u"[%s][%s][%s][%5s][%.3s][%s][%s][%s][%hs]",
         {42, -7, 42u, 42, 5, 2.9, nullptr, reinterpret_cast<const void*>(0x10), INT64_MIN},
         u"[42][-7][42][   42][005][2][(null)][0000000000000010][-9223372036854775808]"},
        {u"%d %u %x",
         {reinterpret_cast<const void*>(0x10), reinterpret_cast<const void*>(0x10),
          reinterpret_cast<const void*>(0x10)},
         u"16 16 10"},
    };
    return cases;
}

std::u16string Repeated(char16_t unit, size_t count)
{
    return std::u16string(count, unit);
}

// FormatInto into a buffer of `capacity` units; answers the text and checks
// that the answer matches what was written.
std::u16string FormatSmall(int32_t capacity, const char16_t* pattern, std::vector<FormatArg> args)
{
    std::vector<char16_t> out(size_t(capacity) + 1, u'#');
    const int32_t written =
        FormatInto(out.data(), capacity, pattern, args.data(), int32_t(args.size()));
    EXPECT_EQ(out[size_t(written)], 0);
    EXPECT_EQ(out[size_t(capacity)], u'#') << "wrote beyond the capacity";
    return std::u16string(out.data(), size_t(written));
}
} // namespace

TEST(Format, SharedTable)
{
    for (const FormatCase& c : Cases())
    {
        KelText text(u"previous contents");
        text.FormatList(c.pattern, c.args.data(), int32_t(c.args.size()));
        EXPECT_EQ(Show(text), Show(c.expected)) << "pattern " << Show(c.pattern);
    }
}

TEST(Format, KelTextArguments)
{
    const KelText name(u"Plotwise");
    EXPECT_EQ(Show(KelText::Formatted(u"%s Config Editor - %s", name, KelText())),
              "Plotwise Config Editor - ");
    KelText self(u"ab");
    self.Format(u"%s%s", self, u"c"); // reads its own old contents
    EXPECT_EQ(Show(self), "abc");
}

TEST(Format, PrecisionsBeyondTheDigitBuffer)
{
    const KelText fixed = KelText::Formatted(u"%.1200f", 0.5);
    EXPECT_EQ(fixed.Length(), 1202);
    EXPECT_EQ(fixed.View(), u"0.5" + Repeated(u'0', 1199));
    EXPECT_EQ(KelText::Formatted(u"%.1105e", 1.0).View(), u"1." + Repeated(u'0', 1105) + u"e+00");
    EXPECT_EQ(KelText::Formatted(u"%#.1200g", 1.0).View(), u"1." + Repeated(u'0', 1199));
    EXPECT_EQ(KelText::Formatted(u"%.1200g", 0.1).View(),
              u"0.1000000000000000055511151231257827021181583404541015625");
    // The largest precisions and widths a pattern can hold.
    EXPECT_EQ(KelText::Formatted(u"%.2147483647g", 0.0001220703125).View(), u"0.0001220703125");
    EXPECT_EQ(KelText::Formatted(u"%.2147483647e", 1.0).Length(), kFormatLimit - 1);
    EXPECT_EQ(KelText::Formatted(u"%.99999999999d|%*d", 1, INT32_MIN, 2).Length(),
              kFormatLimit - 1);
}

TEST(Format, CutAtTheCapacity)
{
    char16_t untouched[2] = {u'#', u'#'};
    EXPECT_EQ(FormatInto(untouched, 0, u"abc", nullptr, 0), 0);
    EXPECT_EQ(untouched[0], u'#');
    EXPECT_EQ(FormatInto(nullptr, 10, u"abc", nullptr, 0), 0);
    EXPECT_EQ(FormatSmall(1, u"abc", {}), u"");
    EXPECT_EQ(FormatSmall(10, nullptr, {}), u"");
    EXPECT_EQ(FormatSmall(4, u"abcdef", {}), u"abc");
    EXPECT_EQ(FormatSmall(5, u"%10d", {1}), u"    ");
    EXPECT_EQ(FormatSmall(4, u"%d", {123456}), u"123");
    EXPECT_EQ(FormatSmall(4, u"%-6d|", {1}), u"1  ");
    EXPECT_EQ(FormatSmall(4, u"%hs", {"abcdef"}), u"abc");
    EXPECT_EQ(FormatSmall(4, u"x%5hs", {"abcdef"}), u"xab");
    EXPECT_EQ(FormatSmall(6, u"%e", {1.0}), u"1.000");
    EXPECT_EQ(FormatSmall(3, u"%d%d", {1, 2, 3}), u"12");
    // args may be null with a count
    EXPECT_EQ(FormatSmall(10, u"[%d]", {}), u"[]");
    char16_t out[8];
    EXPECT_EQ(FormatInto(out, 8, u"[%d]", nullptr, 3), 2);
}

TEST(Format, NeverCutsASurrogatePair)
{
    const char16_t* pair = u"\xD83D\xDE00";
    EXPECT_EQ(FormatSmall(3, u"a%s", {pair}), u"a");
    EXPECT_EQ(FormatSmall(4, u"a%s", {pair}), std::u16string(u"a") + pair);
    EXPECT_EQ(FormatSmall(3, u"a\xD83D\xDE00", {}), u"a");
    EXPECT_EQ(FormatSmall(2, u"%c%c", {char16_t(0xD83D), char16_t(0xDE00)}), u"");
    // A lone high surrogate that the output does not cut stays.
    EXPECT_EQ(FormatSmall(10, u"a\xD800", {}), u"a\xD800");
    EXPECT_EQ(FormatSmall(3, u"a\xD800z", {}), u"a\xD800");

    // KelText::Format holds kFormatLimit - 1 units.
    const std::u16string filler = Repeated(u'x', kFormatLimit - 2);
    EXPECT_EQ(KelText::Formatted(u"%s%s", filler.c_str(), pair).Length(), kFormatLimit - 2);
    const std::u16string fits = Repeated(u'x', kFormatLimit - 3);
    const KelText whole = KelText::Formatted(u"%s%s", fits.c_str(), pair);
    EXPECT_EQ(whole.Length(), kFormatLimit - 1);
    EXPECT_EQ(whole.At(kFormatLimit - 2), char16_t(0xDE00));
    const std::u16string tooLong = Repeated(u'y', 30000);
    EXPECT_EQ(KelText::Formatted(u"%s", tooLong.c_str()).Length(), kFormatLimit - 1);
    EXPECT_EQ(KelText::Formatted(u"%30000d", 7).View(), Repeated(u' ', kFormatLimit - 1));
}
