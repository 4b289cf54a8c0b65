#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/CodePage.h"
#include "tests/core/CoreTestSupport.h"
#include "tests/core/text/TextTestSupport.h"
#include "text/AppServices.h"
#include "text/EncodedText.h"
#include "text/KelText.h"
#include "text/TextArray.h"

namespace
{
std::u16string ToWide(uint32_t codePage, const std::string& bytes)
{
    const int32_t size =
        CodePage::ToWide(codePage, bytes.data(), int32_t(bytes.size()), nullptr, 0);
    std::u16string wide(size_t(size), u'\0');
    EXPECT_EQ(CodePage::ToWide(codePage, bytes.data(), int32_t(bytes.size()), wide.data(), size),
              size);
    return wide;
}

std::string FromWide(uint32_t codePage, const std::u16string& wide)
{
    const int32_t size =
        CodePage::FromWide(codePage, wide.data(), int32_t(wide.size()), nullptr, 0);
    std::string bytes(size_t(size), '\0');
    EXPECT_EQ(CodePage::FromWide(codePage, wide.data(), int32_t(wide.size()), bytes.data(), size),
              size);
    return bytes;
}

std::string Hex(const std::string& bytes)
{
    std::string hex;
    for (const char byte : bytes)
    {
        char two[4];
        (void)std::snprintf(two, sizeof two, "%02X ", unsigned(static_cast<unsigned char>(byte)));
        hex += two;
    }
    return hex;
}
} // namespace

TEST(CodePageUtf8, InvalidBytesBecomeReplacementCharacters)
{
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "\xE2\x82\x41")), "\\uFFFDA");
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "\xC0\xAF")), "\\uFFFD\\uFFFD");
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "\xED\xA0\x80")), "\\uFFFD\\uFFFD");
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "\xF4\x90\x80\x80")), "\\uFFFD\\uFFFD\\uFFFD");
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "a\x80z")), "a\\uFFFDz");
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "\xFF")), "\\uFFFD");
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "\xF0\x9F\x98")), "\\uFFFD") << "cut off at the end";
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "\xE0\x80\x80")), "\\uFFFD\\uFFFD") << "overlong";
}

TEST(CodePageUtf8, ValidSequencesAndSurrogatePairs)
{
    EXPECT_EQ(Show(ToWide(CodePage::Utf8, "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80")),
              "a\\u00E9\\u20AC\\uD83D\\uDE00");
    EXPECT_EQ(Hex(FromWide(CodePage::Utf8, u"a\u00E9\u20AC\xD83D\xDE00")),
              "61 C3 A9 E2 82 AC F0 9F 98 80 ");
    // Unpaired surrogates, either half, become U+FFFD.
    EXPECT_EQ(Hex(FromWide(CodePage::Utf8, u"\xD800")), "EF BF BD ");
    EXPECT_EQ(Hex(FromWide(CodePage::Utf8, u"\xDC00\x61")), "EF BF BD 61 ");
    EXPECT_EQ(Hex(FromWide(CodePage::Utf8, u"\xD83D")), "EF BF BD ");
}

TEST(CodePageAnsi, Windows1252)
{
    EXPECT_EQ(Show(ToWide(CodePage::Ansi, "\x80\x81\x8A\x9F\xA0\xE9\xFF")),
              "\\u20AC\\u0081\\u0160\\u0178\\u00A0\\u00E9\\u00FF");
    EXPECT_EQ(Hex(FromWide(CodePage::Ansi, u"\u20AC\u0081\u0160\u00E9")), "80 81 8A E9 ");
}

TEST(CodePage, SizesAndFailures)
{
    const char* text = "abc";
    char16_t wide[4];
    EXPECT_EQ(CodePage::ToWide(CodePage::Utf8, text, -1, nullptr, 0), 4)
        << "-1 counts the terminator";
    EXPECT_EQ(CodePage::ToWide(CodePage::Utf8, text, -1, wide, 4), 4);
    EXPECT_EQ(wide[3], 0);
    EXPECT_EQ(CodePage::ToWide(CodePage::Utf8, text, 3, wide, 2), 0) << "destination too small";
    EXPECT_EQ(CodePage::ToWide(CodePage::Utf8, nullptr, 3, wide, 4), 0);
    char narrow[4];
    EXPECT_EQ(CodePage::FromWide(CodePage::Utf8, u"\u20AC", 1, narrow, 2), 0);
    EXPECT_EQ(CodePage::FromWide(CodePage::Utf8, u"\u20AC", 1, narrow, 3), 3);
}

TEST(EncodedText, GrowthRoundsUpAndAlwaysAddsAStep)
{
    auto allocatedFor = [](uint32_t encoding, int32_t n)
    {
        EncodedText text(u"", encoding);
        text.Reserve(n);
        return text.AllocatedBytes();
    };
    EXPECT_EQ(allocatedFor(EncodedText::Utf16, 3), 16u);  // 8 bytes
    EXPECT_EQ(allocatedFor(EncodedText::Utf16, 15), 40u); // 32 bytes
    EXPECT_EQ(allocatedFor(EncodedText::Utf16, 16), 64u); // 34 bytes
    EXPECT_EQ(allocatedFor(EncodedText::Utf8, 255), 320u);
    EXPECT_EQ(allocatedFor(EncodedText::Utf8, 256), 512u);
    EXPECT_EQ(allocatedFor(EncodedText::Ansi, 2047), 2560u);
    EXPECT_EQ(allocatedFor(EncodedText::Ansi, 2048), 8192u);

    EncodedText text(u"abc", EncodedText::Utf8);
    const size_t before = text.AllocatedBytes();
    text.Reserve(0);
    EXPECT_EQ(text.Length(), 0);
    EXPECT_EQ(text.AllocatedBytes(), before) << "emptying keeps the storage";
    EXPECT_STREQ(text.Bytes(), "");
}

TEST(EncodedText, ConvertsBetweenTheThreeEncodings)
{
    const KelText source(u"caf\u00E9 \u20AC");
    EncodedText utf8(source, EncodedText::Utf8);
    EXPECT_EQ(Hex(std::string(utf8.Bytes(), utf8.ByteCount())), "63 61 66 C3 A9 20 E2 82 AC ");
    EncodedText ansi(utf8.Bytes(), -1, EncodedText::Utf8, EncodedText::Ansi);
    EXPECT_EQ(Hex(std::string(ansi.Bytes(), ansi.ByteCount())), "63 61 66 E9 20 80 ");
    EXPECT_TRUE(ansi.ToText() == source.c_str());
    EXPECT_TRUE(utf8.ConvertTo(EncodedText::Utf16));
    EXPECT_EQ(utf8.Length(), 6);
    EXPECT_TRUE(utf8.ToText().SameAs(source));

    // Converting from its own storage.
    EncodedText self(u"xyz", EncodedText::Utf16);
    EXPECT_TRUE(self.Set(self.Bytes(), 3, EncodedText::Utf16, EncodedText::Utf8));
    EXPECT_STREQ(self.Bytes(), "xyz");

    EncodedText empty(u"", EncodedText::Utf8);
    EXPECT_EQ(empty.Length(), 0);
    EXPECT_EQ(empty.Encoding(), EncodedText::Utf8);
    EXPECT_EQ(EncodedText().Encoding(), EncodedText::Utf16);
    EXPECT_EQ(EncodedText().ToText().RawBuffer(), nullptr);
    EXPECT_EQ(Show(KelText::FromUtf8("\xE2\x82\xAC!")), "\\u20AC!");
    EXPECT_EQ(KelText(u"\u00E9").ToUtf8(), "\xC3\xA9");
}

TEST(EncodedText, ConversionsRunToTheTerminatorWhateverTheLength)
{
    // "abé" and its terminator, then units that must not be taken.
    const char utf8[] = "ab\xC3\xA9\0zz";
    const char ansi[] = "ab\xE9\0zz";
    const char16_t wide[] = u"ab\u00E9\0zz";
    auto bytes = [](const EncodedText& text)
    { return Hex(std::string(text.Bytes(), text.ByteCount())); };
    for (const int32_t length : {1, 2, 7})
    {
        EncodedText text;
        EXPECT_TRUE(text.Set(utf8, length, EncodedText::Utf8, EncodedText::Utf16));
        EXPECT_EQ(Show(text.ToText()), "ab\\u00E9") << length;
        EXPECT_TRUE(text.Set(ansi, length, EncodedText::Ansi, EncodedText::Utf16));
        EXPECT_EQ(Show(text.ToText()), "ab\\u00E9") << length;
        EXPECT_TRUE(text.Set(wide, length, EncodedText::Utf16, EncodedText::Utf8));
        EXPECT_EQ(bytes(text), "61 62 C3 A9 ") << length;
        EXPECT_TRUE(text.Set(wide, length, EncodedText::Utf16, EncodedText::Ansi));
        EXPECT_EQ(bytes(text), "61 62 E9 ") << length;
        EXPECT_TRUE(text.Set(utf8, length, EncodedText::Utf8, EncodedText::Ansi));
        EXPECT_EQ(bytes(text), "61 62 E9 ") << length;
    }
    EncodedText text(u"x", EncodedText::Utf8);
    EXPECT_FALSE(text.Set(utf8, 0, EncodedText::Utf8, EncodedText::Utf16)) << "length 0: nothing";
    EXPECT_EQ(text.Length(), 0);
    // Within one encoding the length still counts.
    EXPECT_TRUE(text.Set(wide, 2, EncodedText::Utf16, EncodedText::Utf16));
    EXPECT_EQ(Show(text.ToText()), "ab");
    // A sequence cut off just before the terminator does not take it along.
    EXPECT_TRUE(text.Set("a\xE0", 1, EncodedText::Utf8, EncodedText::Utf16));
    EXPECT_EQ(Show(text.ToText()), "a\\uFFFD");
    // A view holds no terminator: only its own bytes are converted.
    EXPECT_EQ(Show(KelText::FromUtf8(std::string_view("abcdef", 3))), "abc");
}

TEST(TextArray, OutOfBoundsWritesAreReportedAndChangeNothing)
{
    RecordingServices services;
    TextArray array(2);
    EXPECT_TRUE(array.Set(0, u"zero"));
    EXPECT_FALSE(array.Set(2, u"two"));
    EXPECT_FALSE(array.Set(-1, u"minus"));
    ASSERT_EQ(services.errors.size(), 2u);
    EXPECT_EQ(services.errors[0].first, u"Set() out of bounds!");
    EXPECT_EQ(services.errors[0].second, u"TextArray");
    EXPECT_EQ(Show(array.Get(0)), "zero");
    EXPECT_EQ(array.Get(2), KelText::EmptyText());
    EXPECT_EQ(array.Get(-1), KelText::EmptyText());
    EXPECT_EQ(array.Get(1), KelText::EmptyText());
}

TEST(TextArray, ReplacingAndGrowing)
{
    TextArray array(3);
    std::u16string longText(500, u'L');
    for (int round = 0; round < 20; ++round)
    {
        EXPECT_TRUE(array.Set(round % 3, longText.c_str()));
        EXPECT_TRUE(array.Set((round + 1) % 3, array.Get(round % 3))) << "from its own pool";
    }
    EXPECT_EQ(std::u16string(array.Get(0)), longText);
    EXPECT_TRUE(array.Set(2, nullptr));
    EXPECT_EQ(array.Get(2), KelText::EmptyText());
    EXPECT_TRUE(array.Resize(5));
    EXPECT_EQ(std::u16string(array.Get(1)), longText);
    EXPECT_EQ(array.Get(4), KelText::EmptyText());
    EXPECT_TRUE(array.Resize(1));
    EXPECT_EQ(array.Count(), 1);
    EXPECT_EQ(array.Get(1), KelText::EmptyText());
}
