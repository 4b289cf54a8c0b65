// The common options page in a real dialog: what it shows for stored and
// missing values, what OK writes to the registry and the settings file, the
// one-way automatic login, the start folder with its warning and browser.
#include <string>

#include "app/pages/EditCommonOptions.h"
#include "app/pages/PageIds.h"
#include "tests/win/pages/PageTestSupport.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
class CommonOptionsPage : public PageTest
{
protected:
    EditCommonOptions& OpenPage(const KelText& product = u"Shopwise",
                                const KelText& fileName = u"KEL.INI")
    {
        return Open<EditCommonOptions>(product, fileName);
    }
    static HWND Item(const EditCommonOptions& page, int id)
    {
        return GetDlgItem(page.Handle(), id);
    }
    static void Tick(const EditCommonOptions& page, int id, bool ticked)
    {
        ::Tick(Item(page, id), ticked);
    }
    static KelText Language(const EditCommonOptions& page)
    {
        return TextOf(Item(page, kCommonLanguage));
    }
    static void PickLanguage(const EditCommonOptions& page, const wchar_t* name)
    {
        HWND box = Item(page, kCommonLanguage);
        ASSERT_GE(SendMessageW(box, CB_SELECTSTRING, WPARAM(-1), LPARAM(name)), 0);
        SendMessageW(page.Handle(), WM_COMMAND, MAKEWPARAM(kCommonLanguage, CBN_SELCHANGE),
                     LPARAM(box));
    }
    void UseStartFolder(const EditCommonOptions& page, const KelText& folderText)
    {
        if (!page.IsControlChecked(kCommonUseStartFolder))
            Click(page.Handle(), kCommonUseStartFolder);
        SetTextOf(Item(page, kCommonStartFolder), folderText.c_str());
    }
    KelText WarningText(const KelText& startFolder) const
    {
        return KelText::Formatted(u"%s \"%s\"\n\n%s", DictText(kTextStartFolderLacksFile),
                                  startFolder.c_str(), DictText(kTextStartFolderSaved));
    }
    KelText Product(const char16_t* sub = nullptr) const
    {
        return ProductKey(u"Shopwise", sub ? KelText(sub) : KelText());
    }
};
} // namespace

TEST_F(CommonOptionsPage, NothingStoredShowsDefaultsAndOkWritesTheSwitches)
{
    UseSettings("[GENERAL]\r\nUNITS=MM\r\n");
    EditCommonOptions& page = OpenPage();

    EXPECT_EQ(
        Ticks(page, {kCommonCachePatterns, kCommonVirtualFolders, kCommonFancyToolbars,
                     kCommonRegionalCsv, kCommonNumpad, kCommonUseStartFolder, kCommonAutoLogin}),
        "1000000");
    EXPECT_TRUE(Language(page).SameAs(u"English"));
    // Automatic login that is off cannot be switched on here.
    EXPECT_EQ(Enabled(page, {kCommonStartFolder, kCommonBrowse, kCommonAutoLogin}), "000");

    Ok();
    EXPECT_FALSE(DialogOpen());
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"VirtualItemFolders"), 0);
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"RegionalCSV"), 0);
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"CachePatterns"), 1);
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"FancyToolbars"), 0);
    // English is kept as no value; no start folder, no login value.
    EXPECT_TRUE(GetString(Product(), u"Language").SameAs(u"<absent>"));
    EXPECT_TRUE(GetString(Product(), u"StartIn").SameAs(u"<absent>"));
    EXPECT_FALSE(RegistryKey::Exists(Product(u"Login")));
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"NUMPAD").SameAs(u"OFF"));
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"UNITS").SameAs(u"MM"));
    EXPECT_TRUE(user.boxes.empty());
}

TEST_F(CommonOptionsPage, StoredValuesAreShownAndValuesOfTheWrongTypeReadAsAbsent)
{
    UseSettings("[GENERAL]\r\nNUMPAD=on\r\n");
    PutDword(AppKey(u"COMMON"), u"VirtualItemFolders", 1);
    PutString(AppKey(u"COMMON"), u"CachePatterns", u"0"); // no DWORD: the default 1 shows
    PutDword(AppKey(u"COMMON"), u"FancyToolbars", 1);
    PutString(Product(), u"Language", u"deutsch");
    PutDword(Product(), u"StartIn", 7); // no string: no start folder
    PutString(Product(u"Login"), u"Auto Login", u"1");

    EditCommonOptions& page = OpenPage();
    EXPECT_EQ(
        Ticks(page, {kCommonVirtualFolders, kCommonCachePatterns, kCommonFancyToolbars,
                     kCommonRegionalCsv, kCommonNumpad, kCommonUseStartFolder, kCommonAutoLogin}),
        "1110101");
    EXPECT_TRUE(page.IsControlEnabled(kCommonAutoLogin));
    // Without a dictionary only "English" is listed; another stored language
    // still shows.
    EXPECT_TRUE(Language(page).SameAs(u"deutsch"));

    // Cancel writes nothing: the values of the wrong type stay as they were.
    Cancel();
    EXPECT_TRUE(GetString(AppKey(u"COMMON"), u"CachePatterns").SameAs(u"0"));
    EXPECT_EQ(GetDword(Product(), u"StartIn"), 7);

    // OK writes the switches as DWORDs and removes the unused start folder.
    OpenPage();
    Ok();
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"CachePatterns"), 1);
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"VirtualItemFolders"), 1);
    EXPECT_EQ(GetDword(Product(), u"StartIn"), -1);
    EXPECT_TRUE(GetString(Product(), u"Language").SameAs(u"deutsch"));
    EXPECT_TRUE(GetString(Product(u"Login"), u"Auto Login").SameAs(u"1"));
}

TEST_F(CommonOptionsPage, AStoredLanguageShowsAsSpeltAndEnglishInAnyCaseIsRemoved)
{
    UseSettings("[GENERAL]\r\n");
    PutString(Product(), u"Language", u"ENGLISH");
    EditCommonOptions& page = OpenPage();
    // Shown as stored, not in the spelling of the list's item.
    EXPECT_TRUE(Language(page).SameAs(u"ENGLISH"));
    // The built-in language, in whatever case, is kept as no value.
    Ok();
    EXPECT_TRUE(GetString(Product(), u"Language").SameAs(u"<absent>"));
}

TEST_F(CommonOptionsPage, ChangesReachTheRegistryAndTheSettingsFile)
{
    UseSettings("[GENERAL]\r\nNUMPAD=ON\r\n");
    PutString(Product(), u"Language", u"Deutsch");
    PutString(Product(u"Login"), u"Auto Login", u"yes");
    EditCommonOptions& page = OpenPage();

    PickLanguage(page, L"English");
    Tick(page, kCommonAutoLogin, false);
    Tick(page, kCommonCachePatterns, false);
    Tick(page, kCommonRegionalCsv, true);
    Tick(page, kCommonNumpad, false);
    Ok();

    EXPECT_FALSE(DialogOpen());
    EXPECT_TRUE(GetString(Product(), u"Language").SameAs(u"<absent>"));
    EXPECT_TRUE(GetString(Product(u"Login"), u"Auto Login").SameAs(u"<absent>"));
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"CachePatterns"), 0);
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"RegionalCSV"), 1);
    EXPECT_TRUE(SettingsValue(u"GENERAL", u"NUMPAD").SameAs(u"OFF"));

    // Once off, automatic login stays off: the box cannot be ticked again.
    EditCommonOptions& again = OpenPage();
    EXPECT_FALSE(again.IsControlEnabled(kCommonAutoLogin));
    EXPECT_TRUE(Language(again).SameAs(u"English"));
}

TEST_F(CommonOptionsPage, AReadOnlySettingsFileIsReportedAndKeptWhileTheRegistryIsWritten)
{
    UseSettings("[GENERAL]\r\nNUMPAD=OFF\r\n");
    const std::string before = FileBytes();
    ASSERT_TRUE(SetFileAttributesW(AsWide(settingsPath), FILE_ATTRIBUTE_READONLY));
    EditCommonOptions& page = OpenPage();
    Tick(page, kCommonNumpad, true);
    Tick(page, kCommonRegionalCsv, true);
    Ok();

    ASSERT_EQ(user.boxes.size(), 1u);
    EXPECT_TRUE(user.boxes[0].text.SameAs(
        KelText::Formatted(u"%s\n\n%s", DictText(240), settingsPath.c_str())))
        << user.boxes[0].text.ToUtf8();
    EXPECT_EQ(FileBytes(), before);
    EXPECT_NE(GetFileAttributesW(AsWide(settingsPath)) & FILE_ATTRIBUTE_READONLY, 0u);
    // A failed settings file does not stop the page's registry values.
    EXPECT_EQ(GetDword(AppKey(u"COMMON"), u"RegionalCSV"), 1);
    SetFileAttributesW(AsWide(settingsPath), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(CommonOptionsPage, StartFolderIsWrittenAndAWarningSaysWhenItLacksTheSettingsFile)
{
    UseSettings("[GENERAL]\r\n");
    const KelText good = tree.Folder(u"good");
    GetFileSystem().WriteBytes(good + u"KEL.INI", "", 0);
    const KelText empty = tree.Folder(u"empty");
    const KelText missing = tree.Root() + u"missing";

    for (const KelText& start : {good, empty, missing})
    {
        user.boxes.clear();
        EditCommonOptions& page = OpenPage();
        UseStartFolder(page, start);
        EXPECT_TRUE(page.IsControlEnabled(kCommonStartFolder));
        Ok();
        // The warning informs only: the dialog closes and the value is kept.
        EXPECT_FALSE(DialogOpen());
        EXPECT_TRUE(GetString(Product(), u"StartIn").SameAs(start));
        if (start == good)
        {
            EXPECT_TRUE(user.boxes.empty());
            continue;
        }
        ASSERT_EQ(user.boxes.size(), 1u);
        EXPECT_TRUE(user.boxes[0].text.SameAs(WarningText(start)));
        EXPECT_TRUE(user.boxes[0].caption.SameAs(DictText(kTextEditorCaption)));
        EXPECT_EQ(user.boxes[0].style & MB_ICONMASK, UINT(MB_ICONEXCLAMATION));
    }

    // A start folder shown at load ticks its box; clearing the box deletes it.
    EditCommonOptions& page = OpenPage();
    EXPECT_TRUE(page.IsControlChecked(kCommonUseStartFolder));
    Click(page.Handle(), kCommonUseStartFolder);
    EXPECT_FALSE(page.IsControlEnabled(kCommonBrowse));
    Ok();
    EXPECT_TRUE(GetString(Product(), u"StartIn").SameAs(u"<absent>"));
}

TEST_F(CommonOptionsPage, PlotwiseReadsTheOlderStartFolderAndClearingDeletesBoth)
{
    UseSettings("[GENERAL]\r\n", u"Plotwise");
    PutString(AppKey(u"Start In"), u"Folder", u"C:/Jobs/");
    EditCommonOptions& page = OpenPage(u"Plotwise");
    EXPECT_TRUE(page.IsControlChecked(kCommonUseStartFolder));
    EXPECT_TRUE(TextOf(Item(page, kCommonStartFolder)).SameAs(u"C:/Jobs/"));

    Click(page.Handle(), kCommonUseStartFolder);
    Ok();
    EXPECT_TRUE(GetString(AppKey(u"Start In"), u"Folder").SameAs(u"<absent>"));
    EXPECT_TRUE(GetString(ProductKey(u"Plotwise"), u"StartIn").SameAs(u"<absent>"));
}

TEST_F(CommonOptionsPage, BrowseStartsAtTheStartFolderOrTheSettingsFolder)
{
    UseSettings("[GENERAL]\r\n");
    EditCommonOptions& page = OpenPage();
    Click(page.Handle(), kCommonUseStartFolder);
    ASSERT_TRUE(page.IsControlEnabled(kCommonBrowse));

    user.AnswerBrowse(std::nullopt);
    Click(page.Handle(), kCommonBrowse);
    ASSERT_EQ(user.browses.size(), 1u);
    EXPECT_TRUE(user.browses[0].title.SameAs(DictText(kTextStartFolderTitle)));
    EXPECT_TRUE(user.browses[0].startFolder.SameAs(folder));
    EXPECT_TRUE(TextOf(Item(page, kCommonStartFolder)).IsEmpty());

    SetTextOf(Item(page, kCommonStartFolder), u"D:/Typed/");
    user.AnswerBrowse(KelText(u"D:/Chosen/"));
    Click(page.Handle(), kCommonBrowse);
    EXPECT_TRUE(user.browses[1].startFolder.SameAs(u"D:/Typed/"));
    EXPECT_TRUE(TextOf(Item(page, kCommonStartFolder)).SameAs(u"D:/Chosen/"));
    user.AnswerBox(IDOK);
    Ok();
    EXPECT_TRUE(GetString(Product(), u"StartIn").SameAs(u"D:/Chosen/"));
}

// The keypad mode in each encoding a settings file may have: read, and written
// back as UTF-16 with every other line as it was.
TEST_F(CommonOptionsPage, NumpadInEveryEncodingIsWrittenBackAsUtf16)
{
    auto utf16 = [](const std::string& text)
    {
        std::string wide = "\xFF\xFE";
        for (char c : text)
            wide += std::string{c, '\0'};
        return wide;
    };
    const std::string lines = "; shop settings\r\n[GENERAL]\r\nNUMPAD=ON\r\nUNITS=MM\r\n";
    for (const std::string& content : {lines, "\xEF\xBB\xBF" + lines, utf16(lines)})
    {
        UseSettings(nullptr);
        GetFileSystem().WriteBytes(settingsPath, content.data(), content.size());
        CommonOptionsValues values(u"Shopwise", u"KEL.INI");
        EXPECT_TRUE(values.SettingsPath().SameAs(settingsPath));
        values.Load();
        EXPECT_EQ(values.numpad, 1);
        values.numpad = 0;
        values.Save();

        EXPECT_EQ(FileBytes(), utf16("; shop settings\r\n[GENERAL]\r\nNUMPAD=OFF\r\nUNITS=MM\r\n"));
    }
}
