#include <gtest/gtest.h>

#include <filesystem>

#include "tests/core/dictionary/DictionarySupport.h"

// Reading an archive piece by piece through its window: values of every size
// at any place a piece can end, texts longer than the window, texts at odd
// places, and the check that a wide text ends with its only 0 unit.
namespace
{
// A text of `length` units whose units cycle through a few letters.
KelText Letters(int32_t length)
{
    std::u16string units(size_t(length), u'a');
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = char16_t(u'a' + i % 23);
    return KelText(units.c_str(), length);
}

TEST(ArchiveReading, ValuesComeBackThroughPiecesOfAnySize)
{
    const int32_t lengths[] = {0, 1,  6,  7,  8,
                               9, 15, 16, 17, 700000}; // the last: more than a window
    MemoryFiles files;
    Archive writer;
    writer.BeginWriting();
    for (int32_t length : lengths)
    {
        KelText text = Letters(length);
        uint32_t small = uint32_t(length);
        uint64_t large = 0x0102030405060708ull * uint64_t(length + 1);
        writer.Boundary();
        writer.Value(text);
        writer.Value(small);
        writer.Value(large);
        writer.Value(small); // a field that older readers pass over
    }
    ASSERT_TRUE(writer.SaveFile(KelText(u"values.ark")));

    for (size_t piece : {size_t(1), size_t(7), size_t(4096), size_t(1) << 30})
    {
        files.piece = piece;
        Archive reader;
        ASSERT_TRUE(reader.OpenFile(KelText(u"values.ark")));
        for (int round = 0; round < 2; ++round)
        {
            for (int32_t length : lengths)
            {
                KelText text;
                uint32_t small = 0;
                uint64_t large = 0;
                reader.Boundary();
                if (length % 2)
                    reader.SkipText();
                else
                    reader.Value(text);
                reader.Value(small);
                reader.Value(large);
                ASSERT_TRUE(reader.Ok()) << piece << " " << length;
                if (length % 2 == 0)
                {
                    EXPECT_TRUE(text.SameAs(Letters(length))) << piece << " " << length;
                }
                EXPECT_EQ(small, uint32_t(length));
                EXPECT_EQ(large, 0x0102030405060708ull * uint64_t(length + 1));
            }
            // From the start again, as an archive in the other text format is.
            ASSERT_TRUE(reader.Reopen(0)) << piece;
        }
        EXPECT_EQ(reader.TotalBytes(), files.files[u"values.ark"].size());
    }
}

TEST(ArchiveReading, WideTextsEndWithTheirOnly0Unit)
{
    for (uint32_t count = 1; count < 40; ++count)
        for (size_t offset : {0, 1})
        {
            std::string bytes(offset + 2 * size_t(count), 'x');
            bytes[offset + 2 * size_t(count) - 2] = bytes[offset + 2 * size_t(count) - 1] = 0;
            EXPECT_TRUE(Archive::IsWideText(bytes.data() + offset, count)) << count;
            // A 0 unit anywhere else, and a 0 byte that is half of a unit.
            for (uint32_t at = 0; at + 1 < count; ++at)
            {
                std::string damaged = bytes;
                damaged[offset + 2 * size_t(at)] = damaged[offset + 2 * size_t(at) + 1] = 0;
                EXPECT_FALSE(Archive::IsWideText(damaged.data() + offset, count)) << count << at;
                damaged = bytes;
                damaged[offset + 2 * size_t(at) + 1] = 0;
                EXPECT_TRUE(Archive::IsWideText(damaged.data() + offset, count)) << count << at;
            }
            bytes[offset + 2 * size_t(count) - 1] = 'x';
            EXPECT_FALSE(Archive::IsWideText(bytes.data() + offset, count)) << count;
        }
}

TEST(ArchiveReading, TextsAtOddPlacesLoad)
{
    // One byte more at the end of the first entry's record (readers pass over
    // what they do not read of a record) puts every later field at an odd place.
    MemoryFiles files(7);
    RecordingServices services;
    const std::string sample = SampleFile(files, u"even.ary");
    size_t at = Archive::HeaderSize + 4;
    for (uint32_t name = U32At(sample, Archive::HeaderSize); name > 0; --name)
        at += 4 + 2 * size_t(U32At(sample, at));
    const size_t block = at, record = at + 8;
    std::string odd = WithU32(sample, block, U32At(sample, block) + 1);
    odd = WithU32(odd, record + 4, U32At(odd, record + 4) + 1);
    odd.insert(record + 8 + U32At(sample, record + 4), 1, 'x');
    files.files[u"odd.ary"] = odd;

    for (const char16_t* language : {u"Deutsch", u"Fr", u"all"})
    {
        TextHolder even, shifted;
        ASSERT_TRUE(even.Load(KelText(u"even.ary"), KelText(language), true));
        ASSERT_TRUE(shifted.Load(KelText(u"odd.ary"), KelText(language), true));
        ASSERT_EQ(shifted.Count(), even.Count());
        for (int32_t number = 0; number < even.Count(); ++number)
            EXPECT_EQ(Utf8(shifted.Text(number, true)), Utf8(even.Text(number, true))) << number;
    }
    EXPECT_TRUE(services.errors.empty());
}

TEST(ArchiveReading, LargeDictionaryThroughThePlatformFiles)
{
    // More than the window holds, read from disk by the platform's own reader.
    RecordingServices services;
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / "kel-large-diction.ary";
    const KelText path(file.u16string().c_str());
    {
        TextHolder holder;
        holder.AddLanguage(new TextLanguage(KelText(u"English")));
        holder.AddLanguage(new TextLanguage(KelText(u"Deutsch")));
        for (uint32_t number = 0; number < 3000; ++number)
        {
            TextEntry* entry = new TextEntry(number);
            entry->DefaultText() = Letters(int32_t(number % 97));
            entry->SetText(1, number == 1500 ? Letters(600000) : Letters(int32_t(number % 41)));
            holder.AddEntry(entry);
        }
        ASSERT_TRUE(holder.Save(path));
    }
    TextHolder holder;
    ASSERT_TRUE(holder.Load(path, KelText(u"Deutsch"), true));
    EXPECT_TRUE(KelText(holder.Text(1500)).SameAs(Letters(600000)));
    EXPECT_TRUE(KelText(holder.Text(2999)).SameAs(Letters(2999 % 41)));
    EXPECT_TRUE(KelText(holder.Text(41)).SameAs(Letters(41 % 97))); // empty: the default text
    ASSERT_TRUE(holder.Load(path, KelText(u"all"), true));
    EXPECT_TRUE(holder.FindEntry(1500)->Text(1).SameAs(Letters(600000)));
    EXPECT_TRUE(services.errors.empty());
    std::filesystem::remove(file);
}
} // namespace
