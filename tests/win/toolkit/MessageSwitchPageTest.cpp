#include <memory>

#include "framework/EditMsgManager.h"
#include "framework/FrameworkResources.h"
#include "framework/RegistryKey.h"
#include "tests/win/app/AppTestHelpers.h"
#include "tests/win/toolkit/ToolkitTestSupport.h"

namespace
{
// The switch page in a dialog of an application with a release of its own,
// so that its switch key belongs to this test alone.
class SwitchPage : public ToolkitTest
{
protected:
    SwitchPage() : release(UniqueName(u"T")), cleanup(release)
    {
        app.RegisterRelease(u"Plotwise", release, false);
        app.MessageSwitches().Clear();
        Register();
    }

    void Register()
    {
        app.MessageSwitches().Register(5, u"Cost tables", u"BadCostTables");
        app.MessageSwitches().Register(4, u"Specification", u"BadSpec");
        app.MessageSwitches().Register(2, u"Project information", u"ProjectInfoDifferent");
    }

    // Opens the dialog on the switch page and answers the page.
    EditMsgManager& Open()
    {
        dialog = std::make_unique<StandardPropertyDialog>(nullptr, u"Switches", 0, 1, 0, KelText());
        auto page = std::make_unique<EditMsgManager>(dialog.get());
        EditMsgManager& made = *page;
        dialog->AddPage(std::move(page));
        dialog->Show(false);
        return made;
    }
    HWND Tree(EditMsgManager& page) { return GetDlgItem(page.Handle(), kMessageSwitchTreeId); }
    std::vector<HTREEITEM> Rows(HWND tree)
    {
        std::vector<HTREEITEM> rows;
        for (auto item = TreeView_GetRoot(tree); item; item = TreeView_GetNextSibling(tree, item))
            rows.push_back(item);
        return rows;
    }
    bool Ticked(HWND tree, HTREEITEM row) { return TreeView_GetCheckState(tree, row) == 1; }
    void SetTick(HWND tree, HTREEITEM row, bool ticked)
    {
        TreeView_SetCheckState(tree, row, ticked ? TRUE : FALSE);
    }
    RegistryRead Stored(const char16_t* name, uint32_t& value)
    {
        return RegistryKey(app.SwitchKeyPath()).ReadDword(name, value);
    }

    KelText release;
    ReleaseCleanup cleanup;
    std::unique_ptr<StandardPropertyDialog> dialog;
};
} // namespace

TEST_F(SwitchPage, TicksRoundTripThroughTheRegistry)
{
    RegistryKey prompts;
    ASSERT_TRUE(prompts.Create(app.SwitchKeyPath()));
    ASSERT_TRUE(prompts.WriteDword(u"BadSpec", 0));

    EditMsgManager& page = Open();
    EXPECT_TRUE(page.Title().SameAs(u"Message Prompts"));
    EXPECT_TRUE(TextOf(GetDlgItem(page.Handle(), kMessageSwitchTextId))
                    .SameAs(u"Select which Types of Messages will be Prompted For"));
    HWND tree = Tree(page);
    std::vector<HTREEITEM> rows = Rows(tree);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(page.RowCode(0), 5u);
    EXPECT_EQ(page.RowCode(2), 2u);
    wchar_t label[64] = {};
    TVITEMW item = {};
    item.mask = TVIF_TEXT;
    item.hItem = rows[1];
    item.pszText = label;
    item.cchTextMax = 64;
    TreeView_GetItem(tree, &item);
    EXPECT_TRUE(FromWide(label).SameAs(u"Specification"));
    EXPECT_TRUE(Ticked(tree, rows[0]));
    EXPECT_FALSE(Ticked(tree, rows[1]));
    EXPECT_TRUE(Ticked(tree, rows[2]));

    // Untick 5, tick 4, untick 2 whose switch is then no longer registered.
    SetTick(tree, rows[0], false);
    SetTick(tree, rows[1], true);
    SetTick(tree, rows[2], false);
    app.MessageSwitches().Clear();
    app.MessageSwitches().Register(5, u"Cost tables", u"BadCostTables");
    app.MessageSwitches().Register(4, u"Specification", u"BadSpec");
    Click(dialog->Handle(), IDOK);
    ASSERT_FALSE(dialog->Exists());

    uint32_t value = 7;
    ASSERT_EQ(Stored(u"BadCostTables", value), RegistryRead::Ok);
    EXPECT_EQ(value, 0u);
    EXPECT_FALSE(app.IsSwitchShown(5));
    ASSERT_EQ(Stored(u"BadSpec", value), RegistryRead::Ok);
    EXPECT_EQ(value, 1u);
    EXPECT_TRUE(app.IsSwitchShown(4));
    // A row whose switch is no longer registered is skipped.
    EXPECT_EQ(Stored(u"ProjectInfoDifferent", value), RegistryRead::Absent);

    // The next time the page shows the stored states; ticking 5 again stores 1.
    app.MessageSwitches().Clear();
    Register();
    EditMsgManager& again = Open();
    tree = Tree(again);
    rows = Rows(tree);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_FALSE(Ticked(tree, rows[0]));
    EXPECT_TRUE(Ticked(tree, rows[1]));
    SetTick(tree, rows[0], true);
    Click(dialog->Handle(), IDOK);
    ASSERT_EQ(Stored(u"BadCostTables", value), RegistryRead::Ok);
    EXPECT_EQ(value, 1u);
    EXPECT_TRUE(app.IsSwitchShown(5));
    // OK stores every row, also the ones the user left alone.
    ASSERT_EQ(Stored(u"ProjectInfoDifferent", value), RegistryRead::Ok);
    EXPECT_EQ(value, 1u);
    ASSERT_EQ(Stored(u"BadSpec", value), RegistryRead::Ok);
    EXPECT_EQ(value, 1u);
}

TEST_F(SwitchPage, OkStoresUntouchedRowsAsDwordsAndCancelStoresNothing)
{
    // A state kept as a string reads as switched off.
    RegistryKey prompts;
    ASSERT_TRUE(prompts.Create(app.SwitchKeyPath()));
    ASSERT_TRUE(prompts.WriteString(u"BadSpec", u"1"));

    EditMsgManager& page = Open();
    std::vector<HTREEITEM> rows = Rows(Tree(page));
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_FALSE(Ticked(Tree(page), rows[1]));
    Click(dialog->Handle(), IDCANCEL);
    uint32_t value = 0;
    EXPECT_EQ(Stored(u"BadCostTables", value), RegistryRead::Absent);
    EXPECT_EQ(Stored(u"BadSpec", value), RegistryRead::OtherType);

    Open();
    Click(dialog->Handle(), IDOK);
    ASSERT_FALSE(dialog->Exists());
    ASSERT_EQ(Stored(u"BadSpec", value), RegistryRead::Ok);
    EXPECT_EQ(value, 0u);
    for (const char16_t* name : {u"BadCostTables", u"ProjectInfoDifferent"})
    {
        ASSERT_EQ(Stored(name, value), RegistryRead::Ok);
        EXPECT_EQ(value, 1u);
    }
}

TEST_F(SwitchPage, TreeGrowsWithTheDialog)
{
    EditMsgManager& page = Open();
    HWND tree = Tree(page);
    RECT before = RectIn(tree, page.Handle());
    RECT frame = {};
    GetWindowRect(dialog->Handle(), &frame);
    SetWindowPos(dialog->Handle(), nullptr, 0, 0, frame.right - frame.left + 60,
                 frame.bottom - frame.top + 40, SWP_NOMOVE | SWP_NOZORDER);
    RECT after = RectIn(tree, page.Handle());
    EXPECT_EQ(after.right - after.left, before.right - before.left + 60);
    EXPECT_EQ(after.bottom - after.top, before.bottom - before.top + 40);
}
