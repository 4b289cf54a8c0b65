#include <gtest/gtest.h>

#include "tests/core/dictionary/DictionarySupport.h"

// The diction.ary that the build makes from lang/, read from disk through the
// platform's own file functions.
namespace
{
TEST(ShippedDictionary, EveryLanguageLoads)
{
    RecordingServices services;
    TextHolder holder;
    const KelText file = KelText::FromUtf8(KEL_DICTIONARY_FILE);

    ASSERT_TRUE(holder.Load(file, KelText(u"all"), true));
    ASSERT_EQ(holder.LanguageCount(), 3);
    EXPECT_EQ(Utf8(holder.LanguageName(0)), "English");
    EXPECT_EQ(Utf8(holder.LanguageName(1)), "Deutsch");
    EXPECT_EQ(Utf8(holder.LanguageName(2)), "Français");
    for (int32_t i = 0; i < holder.EntryCount(); ++i)
        for (int32_t language = 0; language < 3; ++language)
            EXPECT_FALSE(holder.Entry(i)->Text(language).IsEmpty())
                << holder.Entry(i)->Number() << " in " << Utf8(holder.LanguageName(language));

    ASSERT_TRUE(holder.Load(file, KelText(u"Deutsch"), true));
    EXPECT_EQ(Utf8(holder.Text(48)), "Abbrechen");
    EXPECT_EQ(Utf8(holder.Text(9711)), "&Übernehmen");
    ASSERT_TRUE(holder.Load(file, KelText(u"Fr"), true));
    EXPECT_EQ(Utf8(holder.Text(6069)), "Ne plus afficher ce message");
    ASSERT_TRUE(holder.Load(file, KelText(u"English"), true));
    EXPECT_EQ(Utf8(holder.Text(9709)), "The folder \"%s\" does not hold the settings file %s.");
    EXPECT_EQ(Utf8(holder.Text(251)), "Brindlecove");
    EXPECT_EQ(
        services.notice,
        "Brindlecove Configuration Editor\n\nCopyright © 2023 Orvantix. All rights reserved.");
    EXPECT_TRUE(services.errors.empty());
}
} // namespace
