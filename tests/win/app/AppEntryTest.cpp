#include <gtest/gtest.h>

#include "tests/win/app/AppTestHelpers.h"
#include "tests/win/support/RecordingInteraction.h"

namespace
{
KelText ExecutableFolder()
{
    KelText folder, name;
    SplitFilePath(ReadModulePath(nullptr), folder, name);
    return folder;
}
} // namespace

TEST(AppEntry, CommonControlsVersionRule)
{
    EXPECT_TRUE(AppEntry::CommonControlsProblem(5, 80).IsEmpty());
    EXPECT_TRUE(AppEntry::CommonControlsProblem(6, 0).IsEmpty());
    EXPECT_TRUE(AppEntry::CommonControlsProblem(5, 79).SameAs(
        u"Incorrect Version: COMCTL32.DLL (5.79)\n\nVersion 5.80 or above is required to run this "
        u"program, which can be obtained by upgrading internet explorer to version 5 or above"));
    EXPECT_NE(AppEntry::CommonControlsProblem(4, 0).Find(u"(4.0)"), 0);
    EXPECT_NE(AppEntry::CommonControlsProblem(0, 0).Find(u"(Unknown)"), 0);
}

TEST(AppEntry, ConstructionFillsFoldersAndInstallsItself)
{
    RecordingInteraction user;
    TempTree tree;
    KelText start = tree.Folder(u"start\\here");
    CurrentDirectoryScope cwd(start);
    ASSERT_TRUE(cwd.Changed());
    {
        AppEntry app(GetModuleHandleW(nullptr), nullptr, nullptr, &user);
        EXPECT_TRUE(user.boxes.empty()); // Wine's comctl32 is recent enough
        EXPECT_GE(app.CommonControlsMajor(), 5);
        EXPECT_EQ(GetAppServices(), &app);

        EXPECT_TRUE(app.StartupFolder() == start);
        EXPECT_TRUE(app.ProgramFolder() == start);
        EXPECT_EQ(app.StartupFolder().Find(u'\\'), 0);
        EXPECT_TRUE(app.ExecutableFolder() == ExecutableFolder());
        EXPECT_TRUE(app.ExecutableName() == u"win_app.exe");
        EXPECT_TRUE(app.GetTextByKind(3) == u"win_app.exe");
        EXPECT_EQ(app.TempFolder().At(app.TempFolder().Length() - 1), u'/');
        EXPECT_NE(app.MouseWheelMessage(), 0u);
        EXPECT_NE(app.GradientFillEntry(), nullptr);
        EXPECT_NE(app.GetComboBoxInfoEntry(), nullptr);
        EXPECT_EQ(app.RichEditLevel(), 2);

        // Files of the program: the program folder first, then the executable's.
        KelText found;
        EXPECT_TRUE(app.ResolveProgramFile(u"win_app.exe", found));
        EXPECT_TRUE(found == ExecutableFolder() + u"win_app.exe");
        EXPECT_FALSE(app.ResolveProgramFile(u"no-such-file.ary", found));

        // Errors reach the user through the seam, with their context.
        SetApplication(&app);
        EXPECT_EQ(GetAppEntry(), &app);
        GetAppServices()->ReportError(u"Cannot read", u"C:/x/KEL.INI");
        ASSERT_EQ(user.boxes.size(), 1u);
        EXPECT_TRUE(user.boxes[0].text.SameAs(u"Cannot read\n\nC:/x/KEL.INI"));
        EXPECT_EQ(user.boxes[0].style & MB_ICONMASK, UINT(MB_ICONHAND));
    }
    // A destroyed object is no longer reachable.
    EXPECT_EQ(GetApplication(), nullptr);
    EXPECT_EQ(GetAppServices(), nullptr);
}

TEST(AppEntry, LongCurrentDirectoryIsReadCompletely)
{
    TempTree tree;
    KelText deep = tree.Root();
    while (deep.Length() < 300)
        deep += u"a-rather-long-folder-name-for-testing/";
    KelText extended = u"\\\\?\\" + WithBackslashes(deep);
    ASSERT_TRUE(CreateFolderPath(extended));
    CurrentDirectoryScope cwd(deep);
    if (!cwd.Changed())
        GTEST_SKIP() << "the system refuses current directories beyond MAX_PATH";
    AppEntry app(GetModuleHandleW(nullptr));
    EXPECT_EQ(app.StartupFolder().Length(), deep.Length());
    EXPECT_TRUE(app.StartupFolder() == deep);
}

TEST(AppEntry, InstallPathOrder)
{
    TempTree tree;
    KelText product = UniqueName(u"Product");
    KelText machineKey = u"HKEY_LOCAL_MACHINE\\Software\\Orvantix\\" + product;
    KelText userKey = u"HKEY_CURRENT_USER\\Software\\Orvantix\\" + product;
    RegistryCleanup cleanup({machineKey, userKey});
    KelText machine = tree.Folder(u"machine"), lastRun = tree.Folder(u"lastrun"),
            user = tree.Folder(u"user"), missing = tree.Root() + u"missing/";

    auto write = [](const KelText& key, const char16_t* name, const KelText& value)
    {
        RegistryKey opened;
        ASSERT_TRUE(opened.Create(key));
        // Stored the Windows way: backslashes, no trailing separator.
        KelText stored = WithBackslashes(value);
        stored.Delete(stored.Length(), 1);
        ASSERT_TRUE(opened.WriteString(name, stored));
    };
    write(machineKey, u"InstallPath", machine);
    write(userKey, u"LastRun", lastRun);
    write(userKey, u"InstallPath", user);

    // A program folder without the executable: the registry decides.
    CurrentDirectoryScope cwd(tree.Root());
    AppEntry app(GetModuleHandleW(nullptr));
    EXPECT_TRUE(app.ResolveInstallPath(product, false).SameAs(machine));

    write(machineKey, u"InstallPath", missing);
    EXPECT_TRUE(app.ResolveInstallPath(product, false).SameAs(lastRun));

    write(userKey, u"LastRun", missing);
    EXPECT_TRUE(app.ResolveInstallPath(product, false).SameAs(user));

    write(userKey, u"InstallPath", missing);
    EXPECT_TRUE(app.ResolveInstallPath(product, false).IsEmpty());

    // A program folder that holds the executable wins over the registry.
    write(machineKey, u"InstallPath", machine);
    CurrentDirectoryScope exeFolder(ExecutableFolder());
    AppEntry atExecutable(GetModuleHandleW(nullptr));
    EXPECT_TRUE(atExecutable.ResolveInstallPath(product, false) == ExecutableFolder());
    EXPECT_TRUE(atExecutable.ResolveInstallPath(product, true).SameAs(machine));
}

TEST(AppEntry, RegisterReleaseSetsKeysAndDataFoldersAndFindsCloudInstall)
{
    TempTree tree;
    KelText release = UniqueName(u"R");
    ReleaseCleanup cleanup(release);
    KelText product = UniqueName(u"Product");
    KelText installed = tree.Folder(u"installed");
    tree.Folder(u"installed/Cloud");
    {
        RegistryKey key;
        ASSERT_TRUE(key.Create(u"HKEY_LOCAL_MACHINE\\Software\\Orvantix\\Brindlecove " + release +
                               u"\\" + product));
        ASSERT_TRUE(key.WriteString(u"InstallPath", installed));
    }

    CurrentDirectoryScope cwd(tree.Root());
    AppEntry app(GetModuleHandleW(nullptr));
    // Before a release is registered: the branches of no release.
    EXPECT_TRUE(app.GetRegistryKeyPath(u"Plotwise", false)
                    .SameAs(u"HKEY_LOCAL_MACHINE\\Software\\Orvantix\\Plotwise\\"));
    EXPECT_TRUE(
        app.GetRegistryKeyPath(KelText(), true).SameAs(u"HKEY_CURRENT_USER\\Software\\Orvantix\\"));
    app.RegisterRelease(product, release, true);

    KelText relative = u"Orvantix/Brindlecove " + release + u"/";
    EXPECT_TRUE(app.LocalProductFolder().SameAs(KnownFolder(28) + relative + product + u"/"));
    EXPECT_TRUE(app.RoamingProductFolder().SameAs(KnownFolder(26) + relative + product + u"/"));
    EXPECT_TRUE(app.UserDataFolder().SameAs(app.LocalProductFolder()));
    EXPECT_TRUE(app.NewConfigurationFolder().SameAs(app.LocalProductFolder()));
    EXPECT_TRUE(app.PathExists(app.LocalProductFolder()));
    EXPECT_TRUE(app.PathExists(app.RoamingProductFolder()));
    EXPECT_TRUE(app.SharedDocumentsFolder().SameAs(KnownFolder(46) + relative));
    EXPECT_TRUE(app.GetTextByKind(5).SameAs(release));
    const KelText branch = u"HKEY_CURRENT_USER\\Software\\Orvantix\\Brindlecove " + release;
    EXPECT_TRUE(app.GetRegistryKeyPath(product, true).SameAs(branch + u"\\" + product + u"\\"));
    EXPECT_TRUE(app.SwitchKeyPath().SameAs(branch + u"\\COMMON\\PROMPTS"));

    EXPECT_TRUE(app.ProgramFolder().SameAs(installed));
    EXPECT_TRUE(app.IsCloudInstall());
    ASSERT_NE(app.MessageSwitches().Find(1), nullptr);
    EXPECT_TRUE(app.MessageSwitches().Find(1)->name.SameAs(u"WrongUnicode"));
}

namespace
{
KelText browseTitle;
KelText browseTarget;
void CALLBACK DriveBrowser(HWND, UINT, UINT_PTR timer, DWORD)
{
    static int ticks = 0;
    HWND dialog = FindWindowW(nullptr, AsWide(browseTitle));
    if (!dialog && ++ticks < 300)
        return;
    KillTimer(nullptr, timer);
    // Type the folder into the name box and press Open, as a user would.
    HWND nameBox = nullptr;
    EnumChildWindows(
        dialog,
        [](HWND child, LPARAM found)
        {
            if (GetDlgCtrlID(child) != 1152)
                return TRUE;
            *reinterpret_cast<HWND*>(found) = child;
            return FALSE;
        },
        LPARAM(&nameBox));
    SetWindowTextW(nameBox, AsWide(WithBackslashes(browseTarget)));
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
}
} // namespace

TEST(AppEntry, RealFolderBrowserAnswersANormalisedFolder)
{
    TempTree tree;
    browseTitle = UniqueName(u"Choose a folder ");
    browseTarget = tree.Folder(u"picked");
    AppEntry app(GetModuleHandleW(nullptr));
    SetTimer(nullptr, 0, 100, DriveBrowser);
    KelText chosen;
    ASSERT_TRUE(app.BrowseForFolder(nullptr, browseTitle, tree.Root(), chosen));
    EXPECT_TRUE(chosen == browseTarget) << chosen.ToUtf8();
}
