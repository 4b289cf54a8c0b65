#include <gtest/gtest.h>

#include "tests/core/text/TextTestSupport.h"
#include "text/AccessKey.h"
#include "text/AppServices.h"
#include "text/KelText.h"
#include "text/TextHeap.h"

namespace
{
// Reserves on a fresh text and answers the capacity it got; the storage is
// given back before the text dies (an empty text keeps its storage otherwise).
int32_t CapacityFor(int32_t n)
{
    KelText text;
    text.Reserve(n, false);
    const int32_t capacity = text.Capacity();
    text.Reserve(0, false);
    return capacity;
}

// Restores the thousands separator after a test changed it.
struct SeparatorScope
{
    explicit SeparatorScope(char16_t separator) : previous(GetTextConventions().thousandsSeparator)
    {
        GetTextConventions().thousandsSeparator = separator;
    }
    SeparatorScope(const SeparatorScope&) = delete;
    SeparatorScope& operator=(const SeparatorScope&) = delete;
    ~SeparatorScope() { GetTextConventions().thousandsSeparator = previous; }
    char16_t previous;
};
} // namespace

TEST(KelTextStorage, ReservationRoundsUpAndAlwaysAddsAGranule)
{
    EXPECT_EQ(CapacityFor(1), 16);
    EXPECT_EQ(CapacityFor(15), 32);
    EXPECT_EQ(CapacityFor(62), 64);
    EXPECT_EQ(CapacityFor(63), 80);
    EXPECT_EQ(CapacityFor(64), 128);
    EXPECT_EQ(CapacityFor(511), 640);
    EXPECT_EQ(CapacityFor(4095), 5120);
    EXPECT_EQ(CapacityFor(4096), 16384);
    EXPECT_EQ(CapacityFor(16383), 32768);
    // Constructors round the same way.
    EXPECT_EQ(KelText(std::u16string(63, u'x').c_str()).Capacity(), 80);
}

TEST(KelTextStorage, ReserveNeverShrinksAndKeepsContentsOnlyWhenAsked)
{
    KelText text(u"abc");
    text.Reserve(100, true);
    EXPECT_EQ(text.Capacity(), 128);
    EXPECT_EQ(Show(text), "abc");
    text.Reserve(10, false);
    EXPECT_EQ(text.Capacity(), 128);
    EXPECT_EQ(Show(text.c_str()), "abc");
    text.Reserve(1000, false);
    EXPECT_EQ(text.c_str()[0], 0) << "fresh storage without keep starts empty";
    text.Reserve(0, false);
    EXPECT_EQ(text.RawBuffer(), nullptr);
    EXPECT_EQ(text.Capacity(), 0);
    EXPECT_FALSE(text.Reserve(0x7FFFFFF0, false)) << "a size beyond the capacity field";
}

TEST(KelTextStorage, EmptyTextsHaveNoBuffer)
{
    KelText empty;
    EXPECT_EQ(empty.RawBuffer(), nullptr);
    EXPECT_EQ(KelText(u"").RawBuffer(), nullptr);
    EXPECT_EQ(KelText(static_cast<const char16_t*>(nullptr)).RawBuffer(), nullptr);
    EXPECT_EQ(empty.c_str(), KelText::EmptyText());
    // The shared empty string is cleared on every hand-out.
    const_cast<char16_t*>(empty.c_str())[0] = u'x';
    EXPECT_EQ(KelText().c_str()[0], 0);

    // A copy of an empty text that owns storage has no buffer.
    KelText reserved;
    reserved.Reserve(20, false);
    EXPECT_EQ(KelText(reserved).RawBuffer(), nullptr);
    KelText assigned(u"abc");
    assigned = reserved;
    EXPECT_EQ(assigned.RawBuffer(), nullptr);
    EXPECT_EQ(assigned.Length(), 0);
    reserved.Reserve(0, false);

    KelText formatted(u"old");
    formatted.Format(nullptr);
    EXPECT_EQ(formatted.RawBuffer(), nullptr);
}

TEST(KelTextStorage, AssigningFromItselfOrItsOwnTail)
{
    KelText text(u"abcdef");
    const char16_t* buffer = text.RawBuffer();
    // Through a second name, as self-assignment happens in real code (a
    // reference or pointer that turns out to be the same object).
    const KelText& same = text;
    text = same;
    text = text.c_str();
    EXPECT_EQ(text.RawBuffer(), buffer);
    EXPECT_EQ(Show(text), "abcdef");

    text = text.CharAt(3); // overlaps the own buffer
    EXPECT_EQ(Show(text), "cdef");
    EXPECT_EQ(text.Length(), 4);

    text += text;
    EXPECT_EQ(Show(text), "cdefcdef");
    text.Append(text.CharAt(7), 2);
    EXPECT_EQ(Show(text), "cdefcdefef");
}

TEST(KelTextStorage, DestroyedEmptyTextKeepsItsReservedStorage)
{
    // The destructor does not free it (freeing it here would be a double free
    // under AddressSanitizer).
    auto* text = new KelText();
    text->Reserve(10, false);
    char16_t* kept = text->Buffer();
    delete text;
    GetTextHeap().Free(kept);
}

TEST(KelTextCompare, AsciiLettersFoldNothingElse)
{
    const KelText abc(u"abc");
    EXPECT_TRUE(abc == u"ABC");
    EXPECT_TRUE(u"AbC" == abc);
    EXPECT_TRUE(abc == KelText(u"ABC"));
    EXPECT_FALSE(abc.SameAs(KelText(u"ABC")));
    EXPECT_TRUE(KelText(u"\u00E9") != u"\u00C9");
    EXPECT_TRUE(KelText(u"\u00E9") != KelText(u"\u00C9"));
    // '[' and '{' differ only in the 0x20 bit but are not letters.
    EXPECT_TRUE(KelText(u"a[") != u"A{");
    EXPECT_TRUE(KelText(u"a[") != KelText(u"A{"));
    EXPECT_TRUE(KelText(u"@") != KelText(u"`"));
    // Differences at either end, or in the middle, and different lengths.
    EXPECT_TRUE(KelText(u"abcdx") != KelText(u"abcdy"));
    EXPECT_TRUE(KelText(u"xbcde") != KelText(u"ybcde"));
    EXPECT_TRUE(KelText(u"abxde") != KelText(u"abyde"));
    EXPECT_TRUE(KelText(u"abc") != KelText(u"abcd"));
    EXPECT_TRUE(abc != u"abcd");
    EXPECT_TRUE(abc != u"ab");
    EXPECT_TRUE(abc.StartsWith(u"AB"));
    EXPECT_FALSE(abc.StartsWith(u"abcd"));
}

TEST(KelTextCompare, NullBufferRules)
{
    const KelText empty;
    EXPECT_TRUE(empty == nullptr);
    EXPECT_TRUE(empty == u"");
    EXPECT_TRUE(empty == KelText());
    EXPECT_FALSE(KelText(u"a") == nullptr);
    EXPECT_FALSE(empty == u"a");
    EXPECT_FALSE(empty == KelText(u"a"));
    // An empty text with storage equals a null or empty pointer, but against
    // another text only two null buffers are equal.
    KelText reserved;
    reserved.Reserve(4, false);
    EXPECT_TRUE(reserved == nullptr);
    EXPECT_TRUE(reserved == u"");
    EXPECT_FALSE(reserved == empty);
    reserved.Reserve(0, false);
}

TEST(KelTextConcatenate, NullAndEmptySides)
{
    const KelText left(u"ab");
    EXPECT_EQ(Show(left + static_cast<const char16_t*>(nullptr)), "ab");
    EXPECT_EQ(Show(static_cast<const char16_t*>(nullptr) + left), "ab");
    EXPECT_EQ(Show(left + u"" + left), "abab");
    EXPECT_EQ(Show(u"x" + left + u'y'), "xaby");
    EXPECT_EQ((KelText() + KelText()).RawBuffer(), nullptr);
    EXPECT_EQ(Show(left), "ab");
}

TEST(KelTextEdit, Trim)
{
    EXPECT_EQ(Show(KelText(u" \t a b \t ").Trim()), "a b");
    EXPECT_EQ(Show(KelText(u"  ab  ").Trim(1)), "  ab");
    EXPECT_EQ(Show(KelText(u"  ab  ").Trim(-1)), "ab  ");
    EXPECT_EQ(Show(KelText(u"xx ab x").Trim(0, u'x')), " ab ");
    EXPECT_EQ(KelText(u" \t ").Trim().RawBuffer(), nullptr);
    KelText untouched(u"ab");
    const char16_t* buffer = untouched.RawBuffer();
    EXPECT_EQ(untouched.Trim().RawBuffer(), buffer) << "written back only when changed";
}

TEST(KelTextEdit, Pad)
{
    EXPECT_EQ(Show(KelText(u"ab").Pad(5, 0, 0, u'*')), "*ab**");
    EXPECT_EQ(Show(KelText(u"ab").Pad(6, 0, 0, u'*')), "**ab**");
    EXPECT_EQ(Show(KelText(u"ab").Pad(5, 1, 0, u'*')), "***ab");
    EXPECT_EQ(Show(KelText(u"ab").Pad(5, 0xFFFFFFFF, 0, u'*')), "ab***");
    EXPECT_EQ(Show(KelText(u"ab").Pad(5, 2, 0, u'*')), "ab");
    EXPECT_EQ(Show(KelText(u"abcdef").Pad(2, 1, 0, u'*')), "abcdef");
    EXPECT_EQ(Show(KelText(u"abcdef").Pad(5, 1, 3, u'.')), "..abc");
    EXPECT_EQ(Show(KelText().Pad(3, 0, 0, u'-')), "---");
}

TEST(KelTextEdit, CaseAndCapitalise)
{
    EXPECT_EQ(Show(KelText(u"aZ\u00E9\u00C9[{").ToUpper()), "AZ\\u00E9\\u00C9[{");
    EXPECT_EQ(Show(KelText(u"aZ\u00E9\u00C9[{").ToLower()), "az\\u00E9\\u00C9[{");
    EXPECT_EQ(Show(KelText(u"hello world").Capitalise(false)), "Hello world");
    EXPECT_EQ(Show(KelText(u"hello world").Capitalise(true)), "Hello World");
    EXPECT_EQ(Show(KelText(u"hELLO.wORLD").Capitalise(false)), "Hello.World");
    EXPECT_EQ(Show(KelText(u"jean-luc o'neil 2nd").Capitalise(true)), "Jean-luc O'Neil 2nd");
    EXPECT_EQ(Show(KelText(u"ab").Reverse()), "ba");
}

TEST(KelTextPositions, OneBasedWithNegativeAndOutOfRangeArguments)
{
    const KelText text(u"abcabc");
    EXPECT_EQ(Show(text.CharAt(1)), "abcabc");
    EXPECT_EQ(Show(text.CharAt(6)), "c");
    EXPECT_EQ(text.CharAt(0), KelText::EmptyText());
    EXPECT_EQ(text.CharAt(7), KelText::EmptyText());
    EXPECT_EQ(KelText().CharAt(1), KelText::EmptyText());

    EXPECT_EQ(text.Find(u"bc"), 2);
    EXPECT_EQ(text.Find(u"bc", 3), 5);
    EXPECT_EQ(text.Find(u"bc", -2), 5) << "start counts back from the end";
    EXPECT_EQ(text.Find(u"bc", -100), 2);
    EXPECT_EQ(text.Find(u"bc", 6), 0);
    EXPECT_EQ(text.Find(u"BC"), 0);
    EXPECT_EQ(text.Find(u"BC", 1, true), 2);
    EXPECT_EQ(text.Find(u""), 0);
    EXPECT_EQ(text.Find(static_cast<const char16_t*>(nullptr)), 0);
    EXPECT_EQ(text.Find(u'c', 4), 6);

    EXPECT_EQ(Show(KelText(u"abcdef").Mid(2, 4)), "bcd");
    EXPECT_EQ(Show(KelText(u"abcdef").Mid(4, 2)), "bcd");
    EXPECT_EQ(Show(KelText(u"abcdef").Mid(3, 100)), "cdef");
    EXPECT_EQ(Show(KelText(u"abcdef").Mid(-1, 6)), "ef");
    EXPECT_EQ(Show(KelText(u"abcdef").Mid(0, 3)), "cdef");
    EXPECT_EQ(Show(KelText(u"abcdef").Mid(-100, 2)), "ab");
    EXPECT_EQ(KelText(u"abc").Mid(5, 9).RawBuffer(), nullptr);

    EXPECT_EQ(Show(KelText(u"abc").InsertChars(u'-', 1, 2)), "--abc");
    EXPECT_EQ(Show(KelText(u"abc").InsertChars(u'-', 0, 1)), "abc-");
    EXPECT_EQ(Show(KelText(u"abc").InsertChars(u'-', -1, 1)), "ab-c");
    EXPECT_EQ(Show(KelText(u"abc").InsertChars(u'-', 99, 1)), "abc-");
    EXPECT_EQ(Show(KelText(u"abc").InsertChars(u'-', -99, 1)), "-abc");
    EXPECT_EQ(Show(KelText().InsertChars(u'-', 5, 2)), "--");
    EXPECT_EQ(Show(KelText(u"ab").InsertChars(u'-', 1, INT32_MAX)), "ab") << "too long to hold";
}

TEST(KelTextNumbers, SetNumberGroupsOnlyFromOneThousand)
{
    KelText text;
    for (int digit = 0; digit <= 9; ++digit)
        EXPECT_EQ(Show(text.SetNumber(digit, true)), std::string(1, char('0' + digit)));
    EXPECT_EQ(Show(text.SetNumber(999, true)), "999");
    EXPECT_EQ(Show(text.SetNumber(1000, true)), "1,000");
    EXPECT_EQ(Show(text.SetNumber(1234567, true)), "1,234,567");
    EXPECT_EQ(Show(text.SetNumber(1234567, false)), "1234567");
    EXPECT_EQ(Show(text.SetNumber(-1234567, true)), "-1234567");
    EXPECT_EQ(Show(text.SetNumber(INT64_MIN, true)), "-9223372036854775808");
    {
        SeparatorScope dot(u'.');
        EXPECT_EQ(Show(text.SetNumber(INT64_MAX, true)), "9.223.372.036.854.775.807");
    }
    {
        SeparatorScope none(0);
        EXPECT_EQ(Show(text.SetNumber(1234567, true)), "1234567");
    }
}

TEST(KelTextNumbers, HexValueTakesEveryUpperCaseLetter)
{
    EXPECT_EQ(KelText(u"ff").HexValue(), 255u);
    EXPECT_EQ(KelText(u"FF").HexValue(), 255u);
    EXPECT_EQ(KelText(u"G").HexValue(), 16u);
    EXPECT_EQ(KelText(u"Z").HexValue(), 35u);
    EXPECT_EQ(KelText(u"1g").HexValue(), 1u) << "lower case stops after f";
    EXPECT_EQ(KelText(u"12 3").HexValue(), 0x12u);
    EXPECT_EQ(KelText(u"123456789abcdef01").HexValue(), 0x123456789abcdef0u) << "16 digits at most";
    EXPECT_EQ(KelText().HexValue(), 0u);
}

TEST(KelTextNumbers, ReadingAndWritingValues)
{
    EXPECT_EQ(KelText(u"  -42xyz").IntValue(), -42);
    EXPECT_EQ(KelText(u"99999999999").IntValue(), 2147483647);
    EXPECT_EQ(KelText(u"-99999999999").IntValue(), -2147483647 - 1);
    EXPECT_EQ(KelText(u"x").IntValue(), 0);
    EXPECT_DOUBLE_EQ(KelText(u" 2.5e1mm").RealValue(), 25.0);
    EXPECT_DOUBLE_EQ(KelText(u"abc").RealValue(), 0.0);
    KelText text;
    EXPECT_EQ(Show(text.SetReal(2.346, 2)), "2.35");
    {
        DecimalMarkScope comma(u',');
        EXPECT_EQ(Show(text.SetReal(-0.5, 1)), "-0,5");
    }
}

TEST(AccessKeys, MarkedLetterIsTheKeyAndDoubledAmpersandIsShownAsOne)
{
    EXPECT_EQ(AccessKeyOf(u"&Apply"), u'A');
    EXPECT_EQ(AccessKeyOf(u"Log &in automatically"), u'I');
    EXPECT_EQ(AccessKeyOf(u"R&&D &files"), u'F');
    EXPECT_EQ(AccessKeyOf(u"&übernehmen"), u'\u00DC');
    EXPECT_EQ(AccessKeyOf(u"R&&D"), 0);
    EXPECT_EQ(AccessKeyOf(u"Trailing &"), 0);
    EXPECT_EQ(AccessKeyOf(KelText()), 0);

    EXPECT_EQ(WithoutAccessKey(u"Log &in automatically"), u"Log in automatically");
    EXPECT_EQ(WithoutAccessKey(u"R&&D &files"), u"R&D files");
    EXPECT_EQ(WithoutAccessKey(u"Trailing &"), u"Trailing &");
    EXPECT_EQ(WithoutAccessKey(u"Plain"), u"Plain");
}
