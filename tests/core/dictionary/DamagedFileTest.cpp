#include "tests/core/dictionary/DictionarySupport.h"

namespace
{
const char16_t* const path = u"damaged.ary";

class DamagedFile : public DictionaryTest
{
protected:
    void SetUp() override { valid = SampleFile(files, path); }

    // Loads `content` and expects a clean failure: one report, nothing kept.
    void ExpectRefused(const std::string& content, const char16_t* language,
                       const std::string& what)
    {
        files.files[path] = content;
        const size_t reports = services.errors.size();
        EXPECT_FALSE(Load(path, language)) << what;
        ASSERT_EQ(services.errors.size(), reports + 1) << what;
        EXPECT_EQ(services.errors.back().first, u"Error Opening Specified Dictionary");
        EXPECT_FALSE(holder.IsLoaded()) << what;
        EXPECT_EQ(holder.Count(), 0) << what;
        EXPECT_EQ(holder.LanguageCount(), 0) << what;
        EXPECT_EQ(holder.EntryCount(), 0) << what;
        EXPECT_EQ(Utf8(holder.Text(48)), "Cancel") << what;
    }

    std::string valid;
};

TEST_F(DamagedFile, EveryTruncationFailsCleanly)
{
    for (const char16_t* language : {u"Deutsch", u"all"})
        for (size_t size = 0; size < valid.size(); ++size)
            ExpectRefused(valid.substr(0, size), language, "cut at " + std::to_string(size));
    files.files[path] = valid;
    EXPECT_TRUE(Load(path, u"all"));
}

TEST_F(DamagedFile, OneLanguageLoadsExactlyWhenEditingDoes)
{
    // A language is read straight from the entries' bytes, editing reads them
    // into objects: the same file loads in both or in neither, each failure is
    // reported once, and the texts agree. Every 32-bit field, whatever it is
    // (count, size, text length, number), is set to values just off what it
    // holds, to 0 and to huge values (the sanitizers see no oversized
    // allocation); every third truncation is tried.
    std::vector<std::string> damaged;
    for (size_t size = 0; size < valid.size(); size += 3)
        damaged.push_back(valid.substr(0, size));
    for (size_t at = 0; at + 4 <= valid.size(); ++at)
    {
        const uint32_t held = U32At(valid, at);
        for (uint32_t value : {held - 1, held + 1, 0u, 0x7FFFFFF0u, 0xFFFFFFFFu, 0x10000000u})
            damaged.push_back(WithU32(valid, at, value));
    }
    for (const std::string& content : damaged)
    {
        files.files[path] = content;
        for (const char16_t* language : {u"Deutsch", u"English"})
        {
            TextHolder one, editing;
            const size_t reports = services.errors.size();
            const bool loaded = one.Load(KelText(path), KelText(language), true);
            ASSERT_EQ(editing.Load(KelText(path), KelText(u"all"), true), loaded);
            ASSERT_EQ(services.errors.size(), reports + (loaded ? 0 : 2));
            ASSERT_EQ(one.Count(), editing.Count());
            if (!loaded)
            {
                EXPECT_EQ(Utf8(editing.Text(48)), "Cancel");
            }
            for (int32_t i = 0; loaded && i < editing.EntryCount(); ++i)
            {
                const TextEntry* entry = editing.Entry(i);
                if (!entry || entry->Number() > uint32_t(INT32_MAX) ||
                    (i + 1 < editing.EntryCount() && editing.Entry(i + 1) &&
                     editing.Entry(i + 1)->Number() == entry->Number()))
                    continue; // of equal numbers the last one counts
                ASSERT_EQ(Utf8(one.Text(int32_t(entry->Number()), true)),
                          entry->TextFor(one.LanguageSlot()).ToUtf8());
            }
        }
    }
}

TEST_F(DamagedFile, BadHeadersAreRefused)
{
    ExpectRefused("", u"English", "empty");
    ExpectRefused("KELB" + valid.substr(4), u"English", "magic");
    ExpectRefused(WithU32(valid, 4, 2), u"English", "version");
    ExpectRefused(WithU32(valid, 8, 4), u"English", "unknown flag");
    ExpectRefused(WithU32(valid, 12, 1), u"English", "reserved");
    ExpectRefused(WithU32(valid, 16, 1000), u"English", "name count beyond the file");
}

TEST_F(DamagedFile, LargeTextNumbersLoadLikeAnyOther)
{
    // Out of order and with one number twice: of equal numbers the later text
    // wins, as for small numbers.
    const uint32_t numbers[] = {UINT32_MAX, 999999, 1000000, INT32_MAX, 3000000, 1000000};
    PointerList<TextEntry> entries;
    for (size_t i = 0; i < std::size(numbers); ++i)
    {
        entries.Add(new TextEntry(numbers[i]));
        entries.At(int32_t(i))->DefaultText() = KelText::FromUtf8("text " + std::to_string(i));
    }
    ASSERT_TRUE(SaveDictionary(path, {}, [&](Archive& archive) { archive.List(entries); }));

    for (const char16_t* language : {u"English", u"all"})
    {
        ASSERT_TRUE(Load(path, language));
        EXPECT_EQ(holder.Count(), INT32_MAX); // numbers beyond it cannot be asked for
        EXPECT_EQ(Utf8(holder.Text(999999)), "text 1");
        EXPECT_EQ(Utf8(holder.Text(1000000)), "text 5");
        EXPECT_EQ(Utf8(holder.Text(3000000)), "text 4");
        EXPECT_EQ(Utf8(holder.Text(INT32_MAX)), "text 3");
        EXPECT_EQ(Utf8(holder.ReferenceText(u"^3000000")), "text 4");
        EXPECT_EQ(holder.Text(1000001, true), nullptr);
        EXPECT_EQ(holder.Text(2999999, true), nullptr);
    }
    ASSERT_NE(holder.FindEntry(UINT32_MAX), nullptr); // editing mode keeps every entry
    EXPECT_EQ(holder.FindEntry(UINT32_MAX)->DefaultText().ToUtf8(), "text 0");
    EXPECT_TRUE(services.errors.empty());
}

// Hand-made records: a language record nested `depth` deep through its list
// of sub-objects.
std::string NestedLanguage(int depth)
{
    std::string body(8, '\0'); // name and description
    AppendU32(body, 8);        // the attributes block
    body += std::string(8, '\0');
    std::string rest;
    AppendU32(rest, depth > 1 ? 1 : 0);
    if (depth > 1)
        rest += NestedLanguage(depth - 1);
    AppendU32(body, uint32_t(rest.size()));
    body += rest;
    std::string record;
    AppendU32(record, TextLanguage::Tag);
    AppendU32(record, uint32_t(body.size()));
    return record + body;
}

TEST_F(DamagedFile, DeepNestingIsRefused)
{
    auto dictionary = [](int depth)
    {
        Archive archive;
        archive.BeginWriting();
        std::string bytes = archive.Finish();
        AppendU32(bytes, 0);                    // no names
        for (int block = 0; block < 2; ++block) // no entries, no categories
        {
            AppendU32(bytes, 4);
            AppendU32(bytes, 0);
        }
        const std::string record = NestedLanguage(depth);
        AppendU32(bytes, uint32_t(record.size() + 4));
        AppendU32(bytes, 1);
        return bytes + record;
    };
    files.files[path] = dictionary(10);
    ASSERT_TRUE(Load(path, u"all"));
    EXPECT_EQ(holder.LanguageObjectCount(), 1);
    ExpectRefused(dictionary(Archive::MaxDepth + 8), u"all", "nested too deep");
}

TEST_F(DamagedFile, OlderReadersSkipFieldsAddedAtABlockEnd)
{
    // An entry as a later writer might store it: one more field at the end of
    // each block, and one more block at the end of the record.
    struct NewerEntry : TextEntry
    {
        bool Serialise(Archive& archive) override
        {
            KelText text(u"Yes please"), empty;
            uint32_t number = 66, zero = 0, later = 0xDEADBEEF;
            uint64_t data = 0;
            archive.Value(text);
            archive.Value(empty);
            archive.Value(empty);
            archive.Boundary();
            archive.Value(number);
            archive.Value(zero);
            archive.Value(data);
            archive.Value(zero);
            archive.Value(later); // new field at the end of the first block
            archive.Boundary();
            archive.Value(zero);
            archive.Value(zero);
            archive.Value(later); // new field at the end of the second block
            archive.Boundary();   // and a new block
            archive.Value(later);
            return archive.Ok();
        }
    } newer;
    ASSERT_TRUE(SaveDictionary(path, {},
                               [&](Archive& archive)
                               {
                                   uint32_t oneEntry = 1;
                                   archive.Value(oneEntry);
                                   archive.WriteObject(&newer);
                               }));
    ASSERT_TRUE(Load(path, u"English"));
    EXPECT_EQ(Utf8(holder.Text(66)), "Yes please");
}
} // namespace
