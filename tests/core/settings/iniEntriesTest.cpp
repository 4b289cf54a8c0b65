#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "settings/iniFile.h"
#include "tests/core/settings/SettingsTestSupport.h"

namespace
{
const char16_t* const kPath = u"entries.ini";

// Reads the file into one entry, then writes it back; answers the written lines.
struct Fixture
{
    MemoryFiles files;
    iniFile file{kPath};

    void Given(const Lines& lines) { files.files[kPath] = Utf16File(lines); }
    Lines Written()
    {
        file.WriteAll();
        return LinesOf(files.files[kPath]);
    }
};

const char16_t* const kNoYes[] = {u"NO", u"YES"};
} // namespace

TEST(iniEntries, ScalarTextFormsAndDefaults)
{
    Fixture f;
    f.Given({u"[S]", u"I=42abc", u"H=1aF", u"R=3.14159265", u"C=300 -1 7", u"O=yes", u"P=maybe",
             u"U=-1", u"E="});
    int32_t i = 0, o = 0, p = 0, missingInt = 0;
    uint32_t h = 0, c = 0, u = 0, missingHex = 0;
    double r = 0, fallback = 2.5, missingReal = 0;
    KelText e(u"x");
    f.file.Add(new iniInteger(u"S", u"I", &i, -3));
    f.file.Add(new iniInteger(u"S", u"U", &u, 0)); // the unsigned target form
    f.file.Add(new iniInteger(u"S", u"NI", &missingInt, -3));
    f.file.Add(new iniHex(u"S", u"H", &h, 0));
    f.file.Add(new iniHex(u"S", u"NH", &missingHex, 0xBEEF));
    f.file.Add(new iniReal(u"S", u"R", &r, &fallback));
    f.file.Add(new iniReal(u"S", u"NR", &missingReal, &fallback));
    f.file.Add(new iniColor(u"S", u"C", &c, 0));
    f.file.Add(new iniStrOpt(u"S", u"O", kNoYes, &o, 2, 0));
    f.file.Add(new iniStrOpt(u"S", u"P", kNoYes, &p, 2, 1));
    f.file.Add(new iniString(u"S", u"E", &e, u"default"));
    EXPECT_EQ(f.file.ReadAll(), 1);
    EXPECT_EQ(i, 42);
    EXPECT_EQ(u, 0xFFFFFFFFu);
    EXPECT_EQ(missingInt, -3);
    EXPECT_EQ(h, 0x1AFu);
    EXPECT_EQ(missingHex, 0xBEEFu);
    EXPECT_DOUBLE_EQ(r, 3.14159265);
    EXPECT_EQ(missingReal, 2.5);
    EXPECT_EQ(c, iniColor::MakeColor(44, 255, 7)); // each cut to 8 bits
    EXPECT_EQ(o, 1);
    EXPECT_EQ(p, 1);          // unknown option text: the default
    EXPECT_EQ(e.View(), u""); // an empty value is not a missing key

    c = iniColor::MakeColor(255, 128, 0);
    h = 0;
    missingHex = 0xABCDEF;
    r = -0.5;
    EXPECT_EQ(f.Written(),
              (Lines{u"[S]", u"NI=-3", u"NH=ABCDEF", u"NR=2.50000000", u"I=42", u"H=0",
                     u"R=-0.50000000", u"C=255 128 0", u"O=YES", u"P=YES", u"U=-1", u"E="}));
}

TEST(iniEntries, RealsIgnoreTheUsersDecimalMarkAndKeepEightPlaces)
{
    const DecimalMarkScope userMark(u',');
    double value = 0;
    iniReal entry(u"S", u"R", &value, nullptr);
    // Up to the largest doubles, whose fixed-point text runs to over 300 digits.
    const double largest = std::numeric_limits<double>::max();
    for (const double sample : {1234.56789012, -0.00000001, 1e12 + 0.125, 0.1 + 0.2, 1e126, 1e127,
                                1e130, -1e200, largest, -largest, std::nextafter(largest, 0.0)})
    {
        value = sample;
        const KelText text = entry.GetText();
        EXPECT_EQ(text.Find(u','), 0) << text.ToUtf8();
        entry.SetText(text.c_str());
        EXPECT_EQ(entry.GetText().View(), text.View());
        EXPECT_LT(std::fabs(value - sample), 0.5e-8);
    }
    EXPECT_EQ(GetTextConventions().decimalMark, u',');
}

TEST(iniEntries, StrOptIndexRules)
{
    int32_t index = 2;
    const char16_t* const twice[] = {u"a", u"B", u"A"};
    iniStrOpt options(u"S", u"O", twice, &index, 3, 5); // default out of range becomes 0
    EXPECT_EQ(options.defaultValue, 0);
    options.SetText(u"a");
    EXPECT_EQ(index, 2); // the last match wins
    // No range check puts the default in place of an index outside the table:
    // it gives the empty text, like a table without options.
    for (const int32_t outside : {3, -1})
    {
        index = outside;
        EXPECT_EQ(options.GetText().View(), u"");
    }
    iniStrOpt none(u"S", u"O", nullptr, &index, 0, 0);
    EXPECT_EQ(none.GetText().View(), u"");
}

TEST(iniBlocks, SectionsBecomeItemsAndItemsBecomeTheSection)
{
    Fixture f;
    f.Given({u"[E]", u"A=1", u"B = 2", u"C", u" =x", u"", u"[L]", u"  one ", u"", u"two=2", u"[A]",
             u"\tx", u"y"});
    TextPtrArray names, values, list;
    TextLinkedList chain;
    f.file.Add(new iniEquBlock(u"e", &names, &values, u"dn", u"dv"));
    f.file.Add(new iniStringList(u"L", &list));
    f.file.Add(new iniStringArray(u"A", &chain));
    f.file.ReadAll();
    ASSERT_EQ(names.Count(), 2); // "C" and " =x" have no name
    ASSERT_EQ(values.Count(), 2);
    EXPECT_EQ((*names[1] + u"|" + *values[1]).View(), u"B|2");
    ASSERT_EQ(list.Count(), 2);
    EXPECT_EQ(list[0]->View(), u"one");
    ASSERT_EQ(chain.Count(), 2);
    EXPECT_EQ(chain.First()->View(), u"x");
    EXPECT_EQ(chain.Next()->View(), u"y");

    // One empty line is kept before the next section; a last section just ends.
    chain.InsertAt(1, u"middle");
    list.RemoveAt(0);
    EXPECT_EQ(f.Written(), (Lines{u"[E]", u"A=1", u"B=2", u"", u"[L]", u"two=2", u"", u"[A]", u"x",
                                  u"middle", u"y"}));
}

TEST(iniBlocks, MissingSectionsGiveTheDefaultItemOnlyForEquBlocks)
{
    Fixture f;
    f.Given({u"[OTHER]", u"K=v"});
    TextPtrArray names, values, list, unnamed, unnamedValues;
    TextLinkedList chain;
    list.Add(new KelText(u"stale"));
    f.file.Add(new iniEquBlock(u"E", &names, &values, u" name ", u" value "));
    f.file.Add(new iniEquBlock(u"U", &unnamed, &unnamedValues, u"", u"value"));
    f.file.Add(new iniStringList(u"L", &list));
    f.file.Add(new iniStringArray(u"A", &chain));
    f.file.ReadAll();
    ASSERT_EQ(names.Count(), 1);
    EXPECT_EQ((*names[0] + u"=" + *values[0]).View(), u"name=value");
    EXPECT_EQ(unnamed.Count(), 0);
    EXPECT_EQ(list.Count(), 0);
    EXPECT_EQ(chain.Count(), 0);

    // Written back: each missing section at the top with its items and one empty line.
    list.Add(new KelText(u" x "));
    list.Add(new KelText(u""));
    list.Add(new KelText(u"y")); // after an empty item: not written
    chain.Append(u"first");
    EXPECT_EQ(f.Written(), (Lines{u"[E]", u"name=value", u"", u"[U]", u"", u"[L]", u"x", u"",
                                  u"[A]", u"first", u"", u"[OTHER]", u"K=v"}));
}
