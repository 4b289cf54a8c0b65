// A page built on the field table, the bound drop-down list and the enable
// group, as the option pages are built: defaults, stored values, each save
// rule, and a settings file that cannot be written.
#include <memory>
#include <string>

#include "framework/BitmapButton.h"
#include "framework/EnableGroup.h"
#include "framework/FieldTable.h"
#include "framework/RegistryKey.h"
#include "tests/win/app/AppTestHelpers.h"
#include "tests/win/toolkit/ToolkitTestSupport.h"
#include "text/FileSystem.h"

namespace
{
const char16_t* const kDrawingRows[] = {u"No", u"Yes", u"Prompt"};

class FieldPage : public PropertyPage
{
public:
    FieldPage(Window* owner, const KelText& settingsPath)
        : PropertyPage(owner, kFieldPage, u"Fields"), fields(u"Plotwise"), group(*this)
    {
        fields.Dword(FieldBranch::Application, u"COMMON", u"CachePatterns", &cache, 1,
                     SaveRule::Always);
        fields
            .String(FieldBranch::Product, u"Toolbar", u"Icons", &folder, KelText(),
                    SaveRule::DeleteWhenEmpty)
            .KeptWhile(&useFolder);
        fields.Choice(FieldBranch::Product, KelText(), u"UseDWGDatabase", &drawing,
                      {kDrawingRows[0], kDrawingRows[1], kDrawingRows[2]}, 2, SaveRule::Always);
        fields.OpenDocument(settingsPath);
        fields.SettingsChoice(u"GENERAL", u"NUMPAD", &numpad, {u"OFF", u"ON"}, 0);
        fields.Load();
        useFolder = folder.IsEmpty() ? 0 : 1;
    }

    int32_t InitPage() override
    {
        group.Link(AddControl<CheckBox>(kUseFolderId, &useFolder), {kFolderId, kFolderBrowseId});
        AddControl<EditBox>(kFolderId, &folder);
        AddControl<BitmapButton>(kFolderBrowseId, 12);
        AddControl<CheckBox>(kCacheId, &cache);
        AddControl<DropDownList>(kDrawingId, &drawing,
                                 std::initializer_list<KelText>{u"No", u"Yes", u"Prompt"});
        AddControl<CheckBox>(kNumpadId, &numpad);
        group.Update();
        return 0;
    }

    int32_t ApplyPage(int32_t pageIndex, int32_t reason, int32_t flags) override
    {
        if (int32_t answer = PropertyPage::ApplyPage(pageIndex, reason, flags))
            return answer;
        PageReport report;
        if (!fields.SaveDocument())
            report = PageReport::Refused(u"not saved", u"Fields", true, true);
        failedWrites = fields.SaveRegistry();
        return Report(report);
    }

    FieldTable fields;
    EnableGroup group;
    int32_t useFolder = 0;
    KelText folder;
    int32_t cache = 0;
    int32_t drawing = 0;
    int32_t numpad = 0;
    int32_t failedWrites = 0;
};

class FieldPages : public ToolkitTest
{
protected:
    FieldPages() : release(UniqueName(u"F")), cleanup(release)
    {
        app.RegisterRelease(u"Plotwise", release, false);
        settings = tree.Folder(u"config") + u"KEL.INI";
    }

    FieldPage& Open()
    {
        dialog = std::make_unique<StandardPropertyDialog>(nullptr, u"Fields", 0, 1, 0, KelText());
        FieldPage* page = dialog->MakePage<FieldPage>(settings);
        dialog->Show(false);
        return *page;
    }
    KelText Key(const char16_t* sub) const
    {
        return app.GetRegistryKeyPath(u"Plotwise", true) + sub;
    }
    KelText CommonKey() const { return app.GetRegistryKeyPath(KelText(), true) + u"COMMON\\"; }
    std::string File() const
    {
        std::string bytes;
        GetFileSystem().ReadBytes(settings, bytes);
        return bytes;
    }
    void WriteFile(const char* text) const
    {
        GetFileSystem().WriteBytes(settings, text, strlen(text));
    }

    KelText release;
    ReleaseCleanup cleanup;
    TempTree tree;
    KelText settings;
    std::unique_ptr<StandardPropertyDialog> dialog;
};

bool Checked(const FormDialog& page, int id)
{
    return page.IsControlChecked(id);
}
} // namespace

TEST_F(FieldPages, DefaultsThenStoredValues)
{
    FieldPage& fresh = Open();
    EXPECT_TRUE(Checked(fresh, kCacheId)); // default 1
    EXPECT_FALSE(Checked(fresh, kUseFolderId));
    EXPECT_FALSE(fresh.IsControlEnabled(kFolderId));
    EXPECT_FALSE(fresh.IsControlEnabled(kFolderBrowseId));
    EXPECT_EQ(SendMessageW(GetDlgItem(fresh.Handle(), kDrawingId), CB_GETCURSEL, 0, 0), 2);
    EXPECT_FALSE(Checked(fresh, kNumpadId));
    dialog.reset();

    RegistryKey toolbar, product, common;
    ASSERT_TRUE(toolbar.Create(Key(u"Toolbar")));
    ASSERT_TRUE(toolbar.WriteString(u"Icons", u"C:/Icons/"));
    ASSERT_TRUE(product.Create(Key(u"")));
    ASSERT_TRUE(product.WriteString(u"UseDWGDatabase", u"yes"));
    ASSERT_TRUE(common.Create(CommonKey()));
    ASSERT_TRUE(common.WriteDword(u"CachePatterns", 0));
    WriteFile("[GENERAL]\r\nNUMPAD=on\r\n");

    FieldPage& stored = Open();
    EXPECT_FALSE(Checked(stored, kCacheId));
    EXPECT_TRUE(Checked(stored, kUseFolderId));
    EXPECT_TRUE(stored.IsControlEnabled(kFolderId));
    EXPECT_TRUE(stored.ControlText(kFolderId).SameAs(u"C:/Icons/"));
    EXPECT_EQ(SendMessageW(GetDlgItem(stored.Handle(), kDrawingId), CB_GETCURSEL, 0, 0), 1);
    EXPECT_TRUE(Checked(stored, kNumpadId));

    // The group follows its box when the user clicks it.
    Click(stored.Handle(), kUseFolderId);
    EXPECT_FALSE(stored.IsControlEnabled(kFolderId));
    EXPECT_FALSE(stored.IsControlEnabled(kFolderBrowseId));
}

TEST_F(FieldPages, ValuesOfAnotherTypeReadAsAbsent)
{
    RegistryKey product, common;
    ASSERT_TRUE(common.Create(CommonKey()));
    ASSERT_TRUE(common.WriteString(u"CachePatterns", u"0"));
    ASSERT_TRUE(product.Create(Key(u"")));
    ASSERT_TRUE(product.WriteDword(u"UseDWGDatabase", 1));
    FieldPage& page = Open();
    EXPECT_EQ(page.cache, 1);
    EXPECT_EQ(page.drawing, 2);
    EXPECT_TRUE(Checked(page, kCacheId));
}

TEST_F(FieldPages, EachRuleIsSavedOnOk)
{
    RegistryKey toolbar;
    ASSERT_TRUE(toolbar.Create(Key(u"Toolbar")));
    ASSERT_TRUE(toolbar.WriteString(u"Icons", u"C:/Icons/"));
    WriteFile("; kept\r\n[GENERAL]\r\nOTHER=1\r\n");

    // Unchanged controls are saved too: Always writes the default DWORD and choice.
    FieldPage& page = Open();
    Click(page.Handle(), kUseFolderId); // the folder is no longer kept
    Click(dialog->Handle(), IDOK);
    ASSERT_FALSE(dialog->Exists());

    uint32_t cache = 7;
    EXPECT_EQ(RegistryKey(CommonKey()).ReadDword(u"CachePatterns", cache), RegistryRead::Ok);
    EXPECT_EQ(cache, 1u);
    KelText text;
    EXPECT_EQ(RegistryKey(Key(u"")).ReadString(u"UseDWGDatabase", text), RegistryRead::Ok);
    EXPECT_TRUE(text.SameAs(u"Prompt"));
    EXPECT_EQ(RegistryKey(Key(u"Toolbar")).ReadString(u"Icons", text), RegistryRead::Absent);

    iniFile file(settings);
    int32_t numpad = -1;
    KelText other;
    const char16_t* const options[] = {u"OFF", u"ON"};
    file.Add(new iniStrOpt(u"GENERAL", u"NUMPAD", options, &numpad, 2, 1));
    file.Add(new iniString(u"GENERAL", u"OTHER", &other, KelText()));
    ASSERT_EQ(file.ReadAll(), 1);
    EXPECT_EQ(numpad, 0);
    EXPECT_TRUE(other.SameAs(u"1"));
    EXPECT_NE(File().find(std::string("k\0e\0p\0t", 7)), std::string::npos);

    // A ticked box with an empty text deletes as well; a changed drop-down
    // stores its row's text; a key that does not exist is not made for a delete.
    RegistryKey::DeleteTree(Key(u"Toolbar"));
    FieldPage& again = Open();
    Click(again.Handle(), kUseFolderId);
    SendMessageW(GetDlgItem(again.Handle(), kDrawingId), CB_SETCURSEL, 0, 0);
    Click(dialog->Handle(), IDOK);
    EXPECT_FALSE(RegistryKey::Exists(Key(u"Toolbar")));
    EXPECT_EQ(RegistryKey(Key(u"")).ReadString(u"UseDWGDatabase", text), RegistryRead::Ok);
    EXPECT_TRUE(text.SameAs(u"No"));
}

TEST_F(FieldPages, FailedSaveIsReportedAndKeepsTheDialogOpen)
{
    WriteFile("[GENERAL]\r\nNUMPAD=OFF\r\n");
    const std::string before = File();
    FieldPage& page = Open();
    Click(page.Handle(), kNumpadId);

    // Another program holds the settings file open without sharing it, and
    // the registry refuses the product's branch.
    HANDLE lock =
        CreateFileW(AsWide(settings), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(lock, INVALID_HANDLE_VALUE);
    const KelText refused = Key(u"");
    RegistryKey::SetWriteRefusal([&refused](const KelText& path)
                                 { return path.SameAs(refused.Sub(1, refused.Length() - 1)); });
    Click(dialog->Handle(), IDOK);
    RegistryKey::SetWriteRefusal({});
    CloseHandle(lock);

    EXPECT_TRUE(dialog->Exists());
    ASSERT_EQ(user.boxes.size(), 1u);
    EXPECT_TRUE(user.boxes[0].text.SameAs(u"not saved"));
    EXPECT_EQ(user.alerts.size(), 1u);
    EXPECT_EQ(File(), before);
    // Every registry write was tried: the refused one failed, the others landed.
    EXPECT_EQ(page.failedWrites, 1);
    uint32_t cache = 0;
    EXPECT_EQ(RegistryKey(CommonKey()).ReadDword(u"CachePatterns", cache), RegistryRead::Ok);

    // Once the file is free, OK saves and closes.
    Click(dialog->Handle(), IDOK);
    EXPECT_FALSE(dialog->Exists());
    EXPECT_NE(File(), before);
}
