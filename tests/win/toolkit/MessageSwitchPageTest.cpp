#include <memory>
#include <string>

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

    EditMsgManager& Open() { return ToolkitTest::Open<EditMsgManager>(); }
    HWND Tree(EditMsgManager& page) { return GetDlgItem(page.Handle(), kMessageSwitchTreeId); }
    std::vector<HTREEITEM> Rows(HWND tree)
    {
        std::vector<HTREEITEM> rows;
        for (auto item = TreeView_GetRoot(tree); item; item = TreeView_GetNextSibling(tree, item))
            rows.push_back(item);
        return rows;
    }
    // "1" for each ticked row, "0" for each clear one.
    static std::string Ticks(HWND tree, const std::vector<HTREEITEM>& rows)
    {
        std::string ticks;
        for (HTREEITEM row : rows)
            ticks += TreeView_GetCheckState(tree, row) == 1 ? '1' : '0';
        return ticks;
    }
    static void SetTick(HWND tree, HTREEITEM row, bool ticked)
    {
        TreeView_SetCheckState(tree, row, ticked ? TRUE : FALSE);
    }
    int64_t Stored(const char16_t* name) const { return GetDword(app.SwitchKeyPath(), name); }

    KelText release;
    ReleaseCleanup cleanup;
};
} // namespace

TEST_F(SwitchPage, TicksRoundTripThroughTheRegistry)
{
    // A state kept as a string reads as switched off; Cancel stores nothing.
    PutString(app.SwitchKeyPath(), u"BadSpec", u"1");
    Open();
    Click(dialog->Handle(), IDCANCEL);
    EXPECT_EQ(Stored(u"BadCostTables"), -1);
    EXPECT_EQ(Stored(u"BadSpec"), -2);

    EditMsgManager& page = Open();
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
    EXPECT_EQ(Ticks(tree, rows), "101");

    // Untick 5, tick 4, untick 2 whose switch is then no longer registered.
    SetTick(tree, rows[0], false);
    SetTick(tree, rows[1], true);
    SetTick(tree, rows[2], false);
    app.MessageSwitches().Clear();
    app.MessageSwitches().Register(5, u"Cost tables", u"BadCostTables");
    app.MessageSwitches().Register(4, u"Specification", u"BadSpec");
    Click(dialog->Handle(), IDOK);
    ASSERT_FALSE(dialog->Exists());
    EXPECT_EQ(Stored(u"BadCostTables"), 0);
    EXPECT_FALSE(app.IsSwitchShown(5));
    EXPECT_EQ(Stored(u"BadSpec"), 1);
    EXPECT_TRUE(app.IsSwitchShown(4));
    // A row whose switch is no longer registered is skipped.
    EXPECT_EQ(Stored(u"ProjectInfoDifferent"), -1);

    // The next time the page shows the stored states; ticking 5 again stores 1.
    app.MessageSwitches().Clear();
    Register();
    EditMsgManager& again = Open();
    tree = Tree(again);
    rows = Rows(tree);
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(Ticks(tree, rows), "011");
    SetTick(tree, rows[0], true);
    Click(dialog->Handle(), IDOK);
    EXPECT_EQ(Stored(u"BadCostTables"), 1);
    EXPECT_TRUE(app.IsSwitchShown(5));
    // OK stores every row as a DWORD, also the ones the user left alone.
    EXPECT_EQ(Stored(u"ProjectInfoDifferent"), 1);
    EXPECT_EQ(Stored(u"BadSpec"), 1);
}

TEST_F(SwitchPage, TreeGrowsWithTheDialog)
{
    EditMsgManager& page = Open();
    HWND tree = Tree(page);
    RECT before = RectIn(tree, page.Handle());
    Grow(dialog->Handle(), 60, 40);
    RECT after = RectIn(tree, page.Handle());
    EXPECT_EQ(after.right - after.left, before.right - before.left + 60);
    EXPECT_EQ(after.bottom - after.top, before.bottom - before.top + 40);
}
