#include <gtest/gtest.h>

#include "app/LocateConfiguration.h"
#include "app/ProductTable.h"
#include "app/SettingsContext.h"
#include "tests/win/startup/StartupTestSupport.h"
#include "text/TextHolder.h"

namespace
{
const int32_t* Plotwise()
{
    return FindProductDescriptor(u"Plotwise");
}

int32_t Locate(StartupFixture& env, int32_t alwaysPick, int32_t create = 0,
               const char16_t* name = nullptr, const char16_t* fileName = u"KEL.INI")
{
    return LocateConfiguration(SettingsContext::Instance(), fileName, Plotwise(), nullptr,
                               env.product, alwaysPick, create, name);
}
} // namespace

TEST(LocateConfiguration, StartFolderStandsWhenThePickerIsCancelled)
{
    StartupFixture env;
    const KelText start = env.ConfigFolder(u"start");
    PutString(env.UserKey(), u"StartIn", WithBackslashes(start));
    env.user.AnswerChoice(-1);

    ASSERT_EQ(Locate(env, 1), 1);
    EXPECT_EQ(env.user.choices.size(), 1u); // the picker is always offered
    EXPECT_TRUE(SettingsContext::Instance().SettingsFile().SameAs(start + u"KEL.INI"));
    EXPECT_TRUE(SettingsContext::Instance().Product().SameAs(u"Plotwise"));
    EXPECT_TRUE(env.user.boxes.empty());
}

TEST(LocateConfiguration, AltIgnoresTheStartFolder)
{
    StartupFixture env;
    PutString(env.UserKey(), u"StartIn", env.ConfigFolder(u"start"));
    env.user.PressKey(VK_MENU);
    env.user.AnswerChoice(-1);

    EXPECT_EQ(Locate(env, 1), 0);
    ASSERT_EQ(env.user.boxes.size(), 1u);
    const auto& box = env.user.boxes[0];
    EXPECT_TRUE(box.text.SameAs(KelText::Formatted(u"%s - %s", DictText(9704), DictText(2313))));
    EXPECT_TRUE(box.caption.SameAs(u"Plotwise"));
    EXPECT_EQ(box.style & MB_ICONMASK, UINT(MB_ICONHAND));
}

TEST(LocateConfiguration, CandidatesFromRegistryAndSharedDocuments)
{
    StartupFixture env;
    const KelText alpha = env.ConfigFolder(u"alpha");
    const KelText shared = env.app.SharedDocumentsFolder() + u"Beta/";
    CreateFolderPath(shared);
    GetFileSystem().WriteBytes(shared + u"KEL.INI", "", 0);
    CreateFolderPath(env.app.SharedDocumentsFolder() + u"Empty/"); // holds no settings file

    PutString(env.UserKey(u"Configurations"), u"Alpha", WithBackslashes(alpha));
    PutString(env.UserKey(u"Configurations"), u"Gone", env.tree.Folder(u"gone"));
    PutString(env.MachineKey(u"Configurations"), u"Same as Beta", shared);

    const std::vector<ConfigCandidate> found =
        GatherConfigurations(env.app, env.product, u"KEL.INI");
    ASSERT_EQ(found.size(), 2u); // "Gone" lacks the file, "Beta" is listed once
    EXPECT_TRUE(found[0].name.SameAs(u"Alpha"));
    EXPECT_TRUE(found[0].folder.SameAs(alpha));
    EXPECT_EQ(found[0].flag, 1u);
    EXPECT_TRUE(found[1].name.SameAs(u"Same as Beta"));
    EXPECT_TRUE(found[1].folder.SameAs(shared));

    // The confirmed row becomes the configuration.
    env.user.AnswerChoice(1);
    ASSERT_EQ(Locate(env, 1), 1);
    EXPECT_TRUE(env.app.SettingsFolder().SameAs(shared));
    EXPECT_TRUE(env.app.ConfigurationName().SameAs(u"Same as Beta"));
    EXPECT_TRUE(env.app.ConfigurationFlag());
    EXPECT_TRUE(SettingsContext::Instance().SettingsFile().SameAs(shared + u"KEL.INI"));

    // Ledgerline's file is another: none of these folders qualify.
    EXPECT_TRUE(GatherConfigurations(env.app, env.product, u"QUORLIN.INI").empty());
}

TEST(LocateConfiguration, ShiftAndCtrlForceThePicker)
{
    StartupFixture env;
    PutString(env.UserKey(u"Configurations"), u"Only", env.ConfigFolder(u"only"));

    // One candidate and no need to pick: taken without asking.
    ASSERT_EQ(Locate(env, 0), 1);
    EXPECT_TRUE(env.user.choices.empty());
    EXPECT_TRUE(env.app.ConfigurationName().SameAs(u"Only"));

    // Shift alone is not enough; Shift and Ctrl together show the picker.
    env.user.PressKey(VK_SHIFT);
    ASSERT_EQ(Locate(env, 0), 1);
    EXPECT_TRUE(env.user.choices.empty());
    env.user.PressKey(VK_CONTROL);
    env.user.AnswerChoice(-1);
    EXPECT_EQ(Locate(env, 0), 0);
    EXPECT_EQ(env.user.choices.size(), 1u);

    // A name picks its configuration (any case) without the picker.
    env.user.ReleaseKey(VK_SHIFT);
    ASSERT_EQ(Locate(env, 0, 0, u"ONLY"), 1);
    EXPECT_EQ(env.user.choices.size(), 1u);
}

TEST(LocateConfiguration, FallbacksAndNewConfiguration)
{
    StartupFixture env;
    // No registered or shared configuration: the settings folder serves, named by text 1604.
    env.app.SetSettingsFolder(env.ConfigFolder(u"current"));
    env.user.AnswerChoice(0);
    ASSERT_EQ(Locate(env, 1), 1);
    EXPECT_TRUE(env.app.ConfigurationName().SameAs(DictText(1604)));

    // Nothing anywhere: with create, a new configuration in the product's data folder.
    env.app.SetSettingsFolder(env.tree.Folder(u"empty"));
    env.user.AnswerChoice(0);
    ASSERT_EQ(Locate(env, 1, 1), 1);
    EXPECT_TRUE(env.app.SettingsFolder().SameAs(env.app.NewConfigurationFolder()));
    EXPECT_TRUE(GetFileSystem().Exists(env.app.NewConfigurationFolder() + u"KEL.INI"));

    // A settings file named with its folder is used as it stands, or not at all.
    const KelText direct = env.ConfigFolder(u"direct", "", u"QUORLIN.INI");
    EXPECT_EQ(Locate(env, 1, 0, nullptr, (direct + u"QUORLIN.INI").c_str()), 1);
    EXPECT_TRUE(env.app.SettingsFolder().SameAs(direct));
    EXPECT_EQ(Locate(env, 1, 0, nullptr, (direct + u"missing/QUORLIN.INI").c_str()), 0);
}
