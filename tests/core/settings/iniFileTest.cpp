#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "settings/iniFile.h"
#include "tests/core/settings/SettingsTestSupport.h"
#include "text/TextHolder.h"

namespace
{
const char16_t* const kPath = u"C:/Config/KEL.INI";

// The value an iniString entry reads for section/key.
std::u16string ReadString(const char16_t* section, const char16_t* key)
{
    KelText value;
    iniFile file(kPath);
    file.Add(new iniString(section, key, &value, u"<default>"));
    file.ReadAll();
    return std::u16string(value.View());
}
} // namespace

TEST(iniFileGrammar, KeysMatchTheUntrimmedTextBeforeTheFirstEquals)
{
    MemoryFiles files;
    files.files[kPath] = "[general]\r\nsupport=abc\r\nKEY = value\r\nSPACED=  value \t \r\n"
                         "EQ=a=b = c\r\nBARE\r\n;X=comment-like\r\nEMPTY=\r\nsupport=second\r\n"
                         "[OTHER\r\nLATER=1\r\n[GENERAL]\r\nLATER=2\r\n";
    EXPECT_EQ(ReadString(u"GENERAL", u"SUPPORT"), u"abc");
    EXPECT_EQ(ReadString(u"GENERAL", u"KEY"), u"<default>");
    EXPECT_EQ(ReadString(u"GENERAL", u"KEY "), u"value");
    EXPECT_EQ(ReadString(u"GENERAL", u"SPACED"), u"value");
    EXPECT_EQ(ReadString(u"GENERAL", u"EQ"), u"a=b = c");
    EXPECT_EQ(ReadString(u"GENERAL", u"BARE"), u"<default>");  // no "=": no key line
    EXPECT_EQ(ReadString(u"GENERAL", u";x"), u"comment-like"); // no comment syntax
    EXPECT_EQ(ReadString(u"GENERAL", u"EMPTY"), u"");
    // "[OTHER" ends the section, and only the first GENERAL header counts.
    EXPECT_EQ(ReadString(u"GENERAL", u"LATER"), u"<default>");
    EXPECT_EQ(ReadString(u"OTHER", u"LATER"), u"<default>");
}

TEST(iniFileEncoding, AnsiUtf8AndUtf16AreReadAndWrittenBackAsUtf16)
{
    MemoryFiles files;
    for (const std::string& bytes : {std::string("[S]\r\nV=caf\xE9 \x80\r\n"), // Windows-1252
                                     std::string("\xEF\xBB\xBF[S]\nV=caf\xC3\xA9 \xE2\x82\xAC\n"),
                                     Utf16File({u"[S]", u"V=café €"})})
    {
        files.files[kPath] = bytes;
        EXPECT_EQ(ReadString(u"S", u"V"), u"café €");
    }
    files.files[kPath] = "[S]\r\nV=caf\xE9\r\nOTHER=\xFC\r\n";
    KelText value;
    iniFile file(kPath);
    file.Add(new iniString(u"S", u"V", &value, u""));
    EXPECT_EQ(file.ReadAll(), 1);
    value = u"neu";
    EXPECT_EQ(file.WriteAll(), 1);
    EXPECT_EQ(files.files[kPath], Utf16File({u"[S]", u"V=neu", u"OTHER=ü"}));
}

TEST(iniFileEncoding, LineEndsNulsAndSurrogatesLoseNothing)
{
    MemoryFiles files;
    const char withNul[] = "[S]\nA=1\r\r\nB=x\ry\nC=a\0b\nD=tail";
    files.files[kPath] = std::string(withNul, sizeof withNul - 1);
    iniFile file(kPath);
    ASSERT_EQ(file.Load(), 1);
    EXPECT_EQ(LoadedLines(file), (Lines{u"[S]", u"A=1\r", u"B=x\ry", u"C=a\uFFFDb", u"D=tail"}));

    const std::u16string unpaired =
        std::u16string(u"E=") + char16_t(0xD800) + u"x" + char16_t(0xDC00);
    files.files[kPath] = Utf16File({u"[S]", unpaired}) + "Z"; // and a dangling odd byte
    ASSERT_EQ(file.Load(), 1);
    EXPECT_EQ(LoadedLines(file), (Lines{u"[S]", unpaired, u"\uFFFD"}));
    EXPECT_EQ(file.Save(), 1);
    EXPECT_EQ(LinesOf(files.files[kPath]), (Lines{u"[S]", unpaired, u"\uFFFD"}));

    // A line feed in a value cannot split its line (nor start a section).
    KelText broken(u"a\n[T]");
    file.Add(new iniString(u"S", u"V", &broken, u""));
    file.WriteAll();
    EXPECT_EQ(LinesOf(files.files[kPath]), (Lines{u"[S]", u"V=a [T]", unpaired, u"\uFFFD"}));
}

TEST(iniFileWrite, NewSectionsComeInTheOrderOfAddingAboveOlderOnes)
{
    MemoryFiles files;
    KelText a1, a2, b1;
    {
        iniFile file(kPath);
        file.Add(new iniString(u"S", u"A1", &a1, u"1"));
        file.Add(new iniString(u"S", u"A2", &a2, u"2"));
        file.Add(new iniString(u"T", u"B1", &b1, u"3"));
        EXPECT_EQ(file.ReadAll(), 0); // no file: the defaults
        EXPECT_EQ(file.lastWasWrite, 0);
        EXPECT_EQ(file.WriteAll(), 1);
        EXPECT_EQ(file.lastWasWrite, 1);
        EXPECT_EQ(file.loaded, 0);
    }
    EXPECT_EQ(LinesOf(files.files[kPath]),
              (Lines{u"", u"[S]", u"A1=1", u"A2=2", u"", u"[T]", u"B1=3"}));

    // Existing keys are rewritten in place, new ones go directly after their
    // header; everything else is kept, trailing empty lines are dropped.
    files.files[kPath] =
        Utf16File({u";top", u"[T]", u"B1=old", u"", u"keep me", u"[S]", u"A1=x", u"", u""});
    KelText c(u"new");
    iniFile file(kPath);
    file.Add(new iniString(u"T", u"C", &c, u""));
    file.Add(new iniString(u"t", u"b1", &b1, u""));
    file.Add(new iniString(u"S", u"A1", &a1, u""));
    EXPECT_EQ(file.WriteAll(u"T", nullptr), 1); // the filter leaves S alone
    EXPECT_EQ(LinesOf(files.files[kPath]),
              (Lines{u";top", u"[T]", u"C=new", u"b1=3", u"", u"keep me", u"[S]", u"A1=x"}));
    EXPECT_EQ(file.ReadAll(nullptr, u"a1"), 1);
    EXPECT_EQ(a1.View(), u"x");
}

TEST(iniFileDirect, ListAndSetValueKeepTheirQuirks)
{
    MemoryFiles files;
    files.files[kPath] = Utf16File({u"x=1", u"[A]", u"k1 = v1 ", u"", u"bare", u"[B]x", u"[B]",
                                    u"KEYLONG=2", u"KEY=3", u"[", u"[]"});
    iniFile file(kPath);
    TextPtrArray out;
    auto listed = [&](const char16_t* section, const char16_t* key)
    {
        file.List(section, key, &out);
        Lines result;
        for (const KelText* text : out)
            result.emplace_back(text->View());
        out.Clear();
        return result;
    };
    EXPECT_EQ(listed(nullptr, nullptr), (Lines{u"A", u"B", u""}));       // not "[B]x"
    EXPECT_EQ(listed(u"a", nullptr), (Lines{u"k1 ", u"bare", u"[B]x"})); // ends at "[B]" only
    EXPECT_EQ(listed(u"A", u"k1 "), (Lines{u" v1 "}));                   // untrimmed
    EXPECT_EQ(listed(u"A", u"k1"), Lines{});

    // A prefix match, and the scan runs past the section's end into [B].
    EXPECT_EQ(file.SetValue(u"a", u"key", u"9"), 1);
    EXPECT_EQ(file.lines[7].View(), u"key=9");
    EXPECT_EQ(file.SetValue(u"C", u"X", u"0"), 0);
    // The lines stay loaded: a ReadAll sees the change.
    KelText value;
    file.Add(new iniString(u"B", u"KEY", &value, u""));
    file.ReadAll();
    EXPECT_EQ(value.View(), u"9");
    // Only a line that is just "[" stops the scan.
    files.files[kPath] = Utf16File({u"[A]", u"[", u"KEY=1"});
    iniFile stopped(kPath);
    EXPECT_EQ(stopped.SetValue(u"A", u"KEY", u"2"), 0);
}

TEST(iniFileSave, AFailedWriteLeavesThePreviousContentAndReportsOnce)
{
    MemoryFiles files;
    RecordingServices shown;
    const std::string before = "[S]\r\nN=1\r\n";
    files.files[kPath] = before;
    int32_t n = 2;
    iniFile file(kPath);
    file.Add(new iniInteger(u"S", u"N", &n, 0));
    files.failNextWrite = true;
    EXPECT_EQ(file.WriteAll(nullptr, nullptr, 1), 1);
    EXPECT_EQ(files.files[kPath], before);
    ASSERT_EQ(shown.errors.size(), 1u);
    EXPECT_EQ(shown.errors[0].first, DictText(240));
    EXPECT_EQ(shown.errors[0].second, kPath);

    // A new file whose write fails is not made at all, nor is a half-written
    // one left beside it; without report nothing is shown.
    iniFile fresh(u"new.ini");
    fresh.Add(new iniInteger(u"S", u"N", &n, 0));
    files.failNextWrite = true;
    fresh.WriteAll();
    EXPECT_EQ(files.files.count(u"new.ini"), 0u);
    EXPECT_EQ(files.files.size(), 1u);
    EXPECT_EQ(shown.errors.size(), 1u);

    // A file that exists but cannot be read is not replaced by the entries alone.
    files.unreadable = true;
    const int writes = files.writes;
    EXPECT_EQ(file.WriteAll(nullptr, nullptr, 1), 1);
    EXPECT_EQ(files.writes, writes);
    EXPECT_EQ(shown.errors.size(), 2u);
}

TEST(iniFileDisk, LongLinesRoundTripThroughTheRealFileSystem)
{
    // The system's temporary folder, natively and under Wine.
    const std::filesystem::path where =
        std::filesystem::temp_directory_path() /
        ("kel-settings-test-" +
         std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + ".ini");
    const KelText path(where.u16string().c_str());
    const std::string ansi = "[S]\r\nV=caf\xE9\r\n";
    ASSERT_TRUE(GetFileSystem().WriteBytes(path, ansi.data(), ansi.size()));
    KelText value;
    iniFile file(path);
    file.Add(new iniString(u"S", u"V", &value, u""));
    EXPECT_EQ(file.ReadAll(), 1);
    EXPECT_EQ(value.View(), u"café");

    const std::u16string longValue(30000, u'\u00E9'); // longer than any formatted text
    value = longValue.c_str();
    file.WriteAll();
    value = u"";
    EXPECT_EQ(file.ReadAll(), 1);
    EXPECT_EQ(value.View(), longValue);
    std::filesystem::remove(where);
}
