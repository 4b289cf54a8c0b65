#include <gtest/gtest.h>

#include "tests/core/dictionary/DictionarySupport.h"

namespace
{
const char16_t* const path = u"dict/diction.ary";

class Dictionary : public DictionaryTest
{
protected:
    void SetUp() override { bytes = SampleFile(files, path); }

    std::string bytes;
};

TEST(DictionaryFallbacks, EmptyDictionaryServesBuiltInTexts)
{
    TextHolder empty;
    EXPECT_FALSE(empty.IsLoaded());
    EXPECT_EQ(Utf8(empty.Text(48)), "Cancel");
    EXPECT_EQ(Utf8(empty.Text(6069)), "Don't Show This Message Again");
    EXPECT_EQ(Utf8(empty.Text(49)), "");
    EXPECT_EQ(Utf8(empty.Text(-1)), "");
    EXPECT_EQ(empty.Text(-1, true), nullptr);
    EXPECT_EQ(empty.Text(48, true), nullptr);
    EXPECT_EQ(empty.ReferenceText(u"^48"), KelText::EmptyText()); // no fallback for references
    EXPECT_EQ(empty.CurrentLanguageName().ToUtf8(), "");
}

TEST(DictionaryLanguages, SelectionRules)
{
    PointerList<KelText> names;
    for (const char16_t* name : {u"English", u"Deutsch (Schweiz)", u"Deutsch", u"Français"})
        names.Add(new KelText(name));
    auto slot = [&](const char16_t* asked) { return TextHolder::SelectLanguage(names, asked); };
    EXPECT_EQ(slot(u"ALL"), TextHolder::AllLanguages);
    EXPECT_EQ(slot(u"english"), -1);
    EXPECT_EQ(slot(u""), -1);
    EXPECT_EQ(slot(u"#0"), -1);
    EXPECT_EQ(slot(u"#1"), 0);
    EXPECT_EQ(slot(u"#4"), 3);
    EXPECT_EQ(slot(u"#5"), -1);
    EXPECT_EQ(slot(u"#99999999999"), -1);
    EXPECT_EQ(slot(u"deutsch"), 2); // an exact name beats an earlier prefix
    EXPECT_EQ(slot(u"DEUT"), 1);    // else the first name that begins with it
    EXPECT_EQ(slot(u"Fran"), 3);
    EXPECT_EQ(slot(u"français"), 3);
    EXPECT_EQ(slot(u"FRANÇAIS"), -1); // only ASCII letters fold: 'Ç' is not 'ç'
    EXPECT_EQ(slot(u"Klingon"), -1);
}

TEST(DictionaryLanguages, CommandLineSwitch)
{
    auto language = [](const char16_t* line)
    { return TextHolder::LanguageFromCommandLine(KelText(line)).ToUtf8(); };
    EXPECT_EQ(language(u"EditKel.exe -app=Plotwise /l=Deutsch"), "Deutsch");
    EXPECT_EQ(language(u"/L=#2\t-app=Plotwise"), "#2");
    EXPECT_EQ(language(u"x.exe /l=\"Deutsch (Schweiz)\" -app=Cutwise"), "Deutsch (Schweiz)");
    EXPECT_EQ(language(u"\"C:\\My Tools /l=x\\EditKel.exe\" -app=Plotwise"), "");
    EXPECT_EQ(language(u"EditKel.exe -app=Plotwise/l=Deutsch"), "");
    EXPECT_EQ(language(u"EditKel.exe /l="), "");
    EXPECT_EQ(language(u""), "");
}

TEST(DictionaryGrowth, CapacityRule)
{
    // Counts asked for and the capacity each one gets.
    const int32_t asked[] = {0,    3,    4,     64,    65,     512,    513,
                             4096, 4097, 65536, 65537, 500000, 500001, 1000000};
    const int32_t capacity[] = {4,    4,    8,     72,     128,    640,     1024,
                                5120, 8192, 73728, 131072, 524288, 1000000, 2000000};
    for (size_t i = 0; i < std::size(asked); ++i)
        EXPECT_EQ(GrowthCapacity(asked[i]), capacity[i]) << asked[i];
    PointerList<KelText> list;
    for (int i = 0; i < 70; ++i)
        list.Add(new KelText(u"x"));
    EXPECT_EQ(list.Capacity(), 128);
}

TEST_F(Dictionary, OrdinaryModeServesTheChosenLanguage)
{
    ASSERT_TRUE(Load(path, u"deu"));
    EXPECT_TRUE(holder.IsLoaded());
    EXPECT_EQ(holder.LanguageSlot(), 1);
    EXPECT_EQ(holder.CurrentLanguageName().ToUtf8(), "Deutsch");
    ASSERT_EQ(holder.LanguageCount(), 3);
    EXPECT_EQ(Utf8(holder.LanguageName(2)), "Français");
    EXPECT_EQ(Utf8(holder.Text(6070)), "Meldungen");
    EXPECT_EQ(Utf8(holder.Text(323)), "Copyright line"); // no German text: the default
    EXPECT_EQ(Utf8(holder.Text(6069)), "Nie wieder");    // the file wins over the fallback
    EXPECT_EQ(Utf8(holder.Text(48)), "Cancel");          // the file lacks it: fallback
    EXPECT_EQ(holder.Count(), 9710);
    EXPECT_EQ(holder.Text(9710, true), nullptr); // a number equal to the count
    EXPECT_EQ(Utf8(holder.Text(9709)), "Der Ordner „%s“ hat kein %s.");
    EXPECT_EQ(holder.EntryCount(), 0); // only the compact table is kept
    EXPECT_EQ(holder.FindEntry(6070), nullptr);

    EXPECT_EQ(Utf8(holder.ReferenceText(u"^6070")), "Meldungen");
    EXPECT_EQ(Utf8(holder.ReferenceText(u"^6070 and more")), "Meldungen");
    EXPECT_EQ(Utf8(holder.ReferenceText(u"6070")), "");
    EXPECT_EQ(holder.ReferenceText(u"6070", true), nullptr);
    EXPECT_EQ(holder.ReferenceText(nullptr, true), nullptr);
    EXPECT_EQ(Utf8(holder.ReferenceText(u"^")), "Null"); // a caret alone is text 0
    EXPECT_EQ(holder.ReferenceText(u"^48", true), nullptr);
    EXPECT_EQ(holder.ReferenceText(u"^99999999999", true), nullptr);

    EXPECT_TRUE(services.errors.empty());
    EXPECT_EQ(services.notices, 1);
    EXPECT_EQ(services.notice, "Hinweis\n\nCopyright line");
}

TEST_F(Dictionary, EnglishAndPositionsChooseTheirTexts)
{
    ASSERT_TRUE(Load(path, u"English"));
    EXPECT_EQ(holder.LanguageSlot(), -1);
    EXPECT_EQ(Utf8(holder.Text(6070)), "Message Prompts");
    ASSERT_TRUE(Load(path, u"#3"));
    EXPECT_EQ(Utf8(holder.Text(6070)), "Messages");
    EXPECT_EQ(Utf8(holder.Text(6069)), "Never again"); // empty French text: the default
    ASSERT_TRUE(Load(path, u"Klingon"));
    EXPECT_EQ(holder.LanguageSlot(), -1);
    EXPECT_EQ(Utf8(holder.Text(0)), "Zero");
}

TEST_F(Dictionary, NarrowArchiveIsReopenedInItsFormat)
{
    for (uint32_t flags :
         {Archive::NarrowTexts | Archive::NarrowUtf8, uint32_t(Archive::NarrowTexts)})
    {
        SampleFile(files, u"narrow.ary", flags);
        ASSERT_TRUE(Load(u"narrow.ary", u"Deutsch")) << flags;
        EXPECT_EQ(Utf8(holder.Text(6070)), "Meldungen");
        // "„" and "“" exist in Windows-1252 as well, so both encodings keep them.
        EXPECT_EQ(Utf8(holder.Text(9709)), "Der Ordner „%s“ hat kein %s.");
    }
}

TEST_F(Dictionary, EmptyTextsStayEmpty)
{
    // Texts 48 and 6069 have built-in fallbacks, but the file's empty texts
    // win over them: 48 is empty in every language, 6069 has a German text only.
    TextHolder empty;
    empty.AddLanguage(new TextLanguage(KelText(u"English")));
    empty.AddLanguage(new TextLanguage(KelText(u"Deutsch")));
    empty.AddEntry(new TextEntry(48));
    TextEntry* german = new TextEntry(6069);
    german->SetText(1, KelText(u"Nie wieder"));
    empty.AddEntry(german);
    ASSERT_TRUE(empty.Save(KelText(u"empty.ary")));

    for (const char16_t* language : {u"English", u"Deutsch", u"all"})
    {
        ASSERT_TRUE(Load(u"empty.ary", language));
        const std::string what = KelText(language).ToUtf8();
        ASSERT_NE(holder.Text(48, true), nullptr) << what;
        EXPECT_EQ(Utf8(holder.Text(48, true)), "") << what;
        EXPECT_EQ(Utf8(holder.Text(48)), "") << what;
        EXPECT_EQ(Utf8(holder.ReferenceText(u"^48", true)), "") << what;
        EXPECT_EQ(Utf8(holder.Text(6069, true)), language[0] == u'D' ? "Nie wieder" : "") << what;
        EXPECT_EQ(Utf8(holder.Text(47)), "Ok") << what; // absent: the fallback
    }
}

TEST(DictionaryArchive, EmptyTextIsCountOneAndTheTerminator)
{
    for (const uint32_t flags : {0u, uint32_t(Archive::NarrowTexts)})
    {
        Archive writer;
        writer.BeginWriting(flags);
        KelText empty;
        writer.Value(empty);
        const std::string bytes = writer.Finish();
        const size_t width = flags ? 1 : 2;
        EXPECT_EQ(bytes.substr(Archive::HeaderSize),
                  std::string("\x01\0\0\0", 4) + std::string(width, '\0'))
            << flags;

        // Read back; the count 0 of earlier files reads as the empty text too.
        for (const std::string& body : {bytes.substr(Archive::HeaderSize), std::string(4, '\0')})
        {
            Archive reader;
            ASSERT_TRUE(reader.OpenBytes(bytes.substr(0, Archive::HeaderSize) + body, flags));
            KelText read(u"x");
            reader.Value(read);
            EXPECT_TRUE(reader.Ok()) << flags;
            EXPECT_TRUE(read.IsEmpty()) << flags;
        }
    }
}

TEST_F(Dictionary, EditingModeKeepsAndSavesEveryObject)
{
    ASSERT_TRUE(Load(path, u"all"));
    EXPECT_EQ(holder.LanguageSlot(), TextHolder::AllLanguages);
    ASSERT_EQ(holder.EntryCount(), 7);
    for (int32_t i = 1; i < holder.EntryCount(); ++i)
        EXPECT_LT(holder.Entry(i - 1)->Number(), holder.Entry(i)->Number());
    ASSERT_EQ(holder.CategoryCount(), 2);
    EXPECT_EQ(holder.Category(0)->Number(), 7u); // sorted after reading
    EXPECT_EQ(holder.Category(0)->Members(), (std::vector<uint32_t>{6069, 6070}));
    ASSERT_EQ(holder.LanguageObjectCount(), 3);
    EXPECT_EQ(holder.Language(2)->Description().ToUtf8(), "Français.txt");
    EXPECT_EQ(holder.Language(2)->FirstAttribute(), 1033u);
    EXPECT_EQ(holder.Language(2)->SecondAttribute(), 1252u);

    TextEntry* entry = holder.FindEntry(6070);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->Note().ToUtf8(), "note");
    EXPECT_EQ(entry->Extra().ToUtf8(), "extra");
    EXPECT_EQ(entry->Category(), 7u);
    EXPECT_EQ(entry->Attributes(), 0x55u);
    EXPECT_EQ(entry->Data(), 0x0123456789ABCDEFull);
    ASSERT_EQ(entry->Links().Count(), 2);
    EXPECT_EQ(entry->Links().At(1), 324u);
    EXPECT_EQ(entry->Text(1).ToUtf8(), "Meldungen");
    EXPECT_EQ(holder.FindEntry(6071), nullptr);
    EXPECT_EQ(holder.FindEntry(KelText(u"MESSAGE PROMPTS")), entry);
    EXPECT_EQ(Utf8(holder.Text(6070)), "Message Prompts"); // lookups serve the default texts

    // Saving what was loaded and loading it again changes nothing.
    ASSERT_TRUE(holder.Save(KelText(u"copy.ary")));
    const std::string first = files.files[u"copy.ary"];
    ASSERT_TRUE(Load(u"copy.ary", u"all"));
    ASSERT_TRUE(holder.Save(KelText(u"copy2.ary")));
    EXPECT_EQ(files.files[u"copy2.ary"], first);
    EXPECT_EQ(holder.FindEntry(6070)->Data(), 0x0123456789ABCDEFull);
}

TEST_F(Dictionary, EditingModeMakesLanguagesFromNames)
{
    // A file with language names and no language objects.
    ASSERT_TRUE(SaveDictionary(u"names.ary", {KelText(u"English"), KelText(u"Deutsch")},
                               [](Archive& archive)
                               {
                                   uint32_t noEntries = 0;
                                   archive.Value(noEntries);
                               }));
    ASSERT_TRUE(Load(u"names.ary", u"all"));
    ASSERT_EQ(holder.LanguageObjectCount(), 2);
    EXPECT_EQ(holder.Language(1)->Name().ToUtf8(), "Deutsch");
}

TEST_F(Dictionary, MissingFileIsResolvedThroughTheProgramFolders)
{
    files.files[u"/program/diction.ary"] = bytes;
    services.programFiles["diction.ary"] = "/program/diction.ary";
    ASSERT_TRUE(Load(u"diction.ary", u"Deutsch"));
    EXPECT_EQ(holder.AskedName().ToUtf8(), "diction.ary");
    EXPECT_EQ(holder.FullPath().ToUtf8(), "/program/diction.ary");

    services.programFiles.clear();
    EXPECT_FALSE(Load(u"diction.ary", u"Deutsch"));
    ASSERT_EQ(services.errors.size(), 1u);
    EXPECT_EQ(services.errors[0].first, u"Error Opening Specified Dictionary");
    EXPECT_EQ(services.errors[0].second, u"diction.ary");
    EXPECT_FALSE(holder.IsLoaded());
    EXPECT_EQ(Utf8(holder.Text(48)), "Cancel");

    EXPECT_FALSE(holder.Load(KelText(u"diction.ary"), KelText(u"Deutsch"), false));
    EXPECT_EQ(services.errors.size(), 1u); // not reported when asked not to

    AppServices* mine = SetAppServices(nullptr); // no application at all
    EXPECT_TRUE(Load(path, u"Deutsch"));
    EXPECT_FALSE(Load(u"nowhere.ary", u"Deutsch"));
    SetAppServices(mine);
}

TEST_F(Dictionary, FailedSaveKeepsThePreviousFile)
{
    files.files[u"old.ary"] = "previous content";
    files.failNextWrite = true; // the write breaks off half-way
    TextHolder sample;
    FillSample(sample);
    EXPECT_FALSE(sample.Save(KelText(u"old.ary")));
    EXPECT_EQ(files.files[u"old.ary"], "previous content");
}
} // namespace
