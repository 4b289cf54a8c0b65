// The CAD options page in a real dialog: the inverted estimating-database
// switch, the drawing database choice, the texts kept only while their boxes
// are ticked, and which values OK writes, deletes or leaves.
#include "app/pages/EditCADOptions.h"
#include "app/pages/PageIds.h"
#include "tests/win/pages/PageTestSupport.h"
#include "text/TextHolder.h"
#include "text/TextNumbers.h"

namespace
{
class CadOptionsPage : public PageTest
{
protected:
    CadOptionsPage() { UseSettings("[GENERAL]\r\n", u"Plotwise"); }

    EditCADOptions& OpenPage() { return Open<EditCADOptions>(u"Plotwise"); }
    KelText Branch() const { return ProductKey(u"Plotwise"); }
    KelText Toolbar() const { return ProductKey(u"Plotwise", u"Toolbar"); }
    static int DrawingRow(const EditCADOptions& page)
    {
        return int(
            SendMessageW(GetDlgItem(page.Handle(), kCadDrawingDatabase), CB_GETCURSEL, 0, 0));
    }
};
} // namespace

TEST_F(CadOptionsPage, NothingStoredThenOkWritesOnlyTheAlwaysWrittenValues)
{
    // Values of the wrong type read as absent.
    PutString(Branch(), u"SkipValidateButtons", u"1");
    PutDword(Branch(), u"UseDWGDatabase", 1);
    EditCADOptions& page = OpenPage();
    EXPECT_EQ(DrawingRow(page), 2);
    EXPECT_EQ(SendMessageW(GetDlgItem(page.Handle(), kCadDrawingDatabase), CB_GETCOUNT, 0, 0), 3);
    EXPECT_EQ(Ticks(page, {kCadUseIcons, kCadUseMenuGroup, kCadUseFirstPopup, kCadSkipMenuLoad,
                           kCadKeepEstimatingOff, kCadSkipValidate, kCadButtonLoadReport}),
              "0000000");
    EXPECT_EQ(Enabled(page, {kCadIconsFolder, kCadBrowse, kCadMenuGroup, kCadFirstPopup}), "0000");

    Ok();
    EXPECT_FALSE(DialogOpen());
    EXPECT_TRUE(GetString(Branch(), u"UseDWGDatabase").SameAs(u"Prompt"));
    EXPECT_EQ(GetDword(Branch(), u"SkipValidateButtons"), 0);
    EXPECT_EQ(GetDword(Branch(), u"ButtonLoadReport"), 0);
    EXPECT_TRUE(GetString(Branch(), u"StoreEstDatabase").SameAs(u"<absent>"));
    // Nothing to keep under "Toolbar": the key is not made for deletions.
    EXPECT_FALSE(RegistryKey::Exists(Toolbar()));
}

TEST_F(CadOptionsPage, StoredValuesAndWhatOkKeeps)
{
    PutString(Toolbar(), u"Icons", u"C:/Icons/");
    PutString(Toolbar(), u"MenuGroup", u"KEL");
    PutString(Toolbar(), u"Pop0", u"Ducts");
    PutDword(Toolbar(), u"SkipMenuLoad", 1);
    PutString(Branch(), u"StoreEstDatabase", u"false");
    PutString(Branch(), u"UseDWGDatabase", u"YES");
    PutDword(Branch(), u"SkipValidateButtons", 1);

    EditCADOptions& page = OpenPage();
    // The use boxes start cleared whatever was read; the texts still show.
    EXPECT_EQ(
        Ticks(page, {kCadUseIcons, kCadSkipMenuLoad, kCadKeepEstimatingOff, kCadSkipValidate}),
        "0111");
    EXPECT_TRUE(page.ControlText(kCadIconsFolder).SameAs(u"C:/Icons/"));
    EXPECT_EQ(DrawingRow(page), 1);

    // Keep the menu group; a ticked box whose text is cleared deletes too;
    // clear the two switches; choose "No".
    Click(page.Handle(), kCadUseMenuGroup);
    EXPECT_TRUE(page.IsControlEnabled(kCadMenuGroup));
    Click(page.Handle(), kCadUseFirstPopup);
    SetTextOf(GetDlgItem(page.Handle(), kCadFirstPopup), u"");
    Click(page.Handle(), kCadSkipMenuLoad);
    Click(page.Handle(), kCadKeepEstimatingOff);
    SendMessageW(GetDlgItem(page.Handle(), kCadDrawingDatabase), CB_SETCURSEL, 0, 0);
    Ok();

    EXPECT_TRUE(GetString(Toolbar(), u"Icons").SameAs(u"<absent>"));
    EXPECT_TRUE(GetString(Toolbar(), u"MenuGroup").SameAs(u"KEL"));
    EXPECT_TRUE(GetString(Toolbar(), u"Pop0").SameAs(u"<absent>"));
    EXPECT_EQ(GetDword(Toolbar(), u"SkipMenuLoad"), -1);
    EXPECT_TRUE(GetString(Branch(), u"StoreEstDatabase").SameAs(u"<absent>"));
    EXPECT_TRUE(GetString(Branch(), u"UseDWGDatabase").SameAs(u"No"));
    EXPECT_EQ(GetDword(Branch(), u"SkipValidateButtons"), 1);

    // A ticked estimating box writes the inverted text; any other text clears it.
    PutString(Branch(), u"StoreEstDatabase", u"TRUE");
    EditCADOptions& again = OpenPage();
    EXPECT_FALSE(again.IsControlChecked(kCadKeepEstimatingOff));
    Click(again.Handle(), kCadKeepEstimatingOff);
    Ok();
    EXPECT_TRUE(GetString(Branch(), u"StoreEstDatabase").SameAs(u"FALSE"));
}

TEST_F(CadOptionsPage, BrowseFillsTheIconsFolder)
{
    EditCADOptions& page = OpenPage();
    Click(page.Handle(), kCadUseIcons);
    user.AnswerBrowse(KelText(u"E:/Toolbar/"));
    Click(page.Handle(), kCadBrowse);
    ASSERT_EQ(user.browses.size(), 1u);
    EXPECT_TRUE(user.browses[0].title.SameAs(DictText(kTextIconsFolderTitle)));
    EXPECT_TRUE(user.browses[0].startFolder.SameAs(folder));
    Ok();
    EXPECT_TRUE(GetString(Toolbar(), u"Icons").SameAs(u"E:/Toolbar/"));
}

TEST_F(CadOptionsPage, AFailedWriteShowsOneErrorBoxAndKeepsTheDialogOpen)
{
    // A volatile product branch cannot hold the lasting "Toolbar" key, so the
    // icons folder cannot be written; the other values still are.
    const KelText branch = Branch();
    const KelText root = u"HKEY_CURRENT_USER\\";
    ASSERT_TRUE(branch.StartsWith(root.c_str()));
    HKEY made = nullptr;
    ASSERT_EQ(
        RegCreateKeyExW(HKEY_CURRENT_USER,
                        AsWide(branch.Sub(root.Length() + 1, branch.Length() - root.Length() - 1)),
                        0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr, &made, nullptr),
        ERROR_SUCCESS);
    RegCloseKey(made);

    EditCADOptions& page = OpenPage();
    Click(page.Handle(), kCadUseIcons);
    SetTextOf(GetDlgItem(page.Handle(), kCadIconsFolder), u"C:/Icons/");
    Ok();
    EXPECT_TRUE(DialogOpen());
    ASSERT_EQ(user.boxes.size(), 1u);
    EXPECT_TRUE(user.boxes[0].text.SameAs(DictText(kTextSaveFailedCaption)));
    EXPECT_TRUE(user.boxes[0].caption.SameAs(DictText(kTextEditorCaption)));
    EXPECT_EQ(user.boxes[0].style & MB_ICONMASK, UINT(MB_ICONHAND));
    EXPECT_EQ(user.alerts.size(), 1u);
    EXPECT_EQ(GetDword(branch, u"ButtonLoadReport"), 0);
    Cancel();
    EXPECT_FALSE(DialogOpen());
}
