#include <memory>

#include "framework/AppFrame.h"
#include "tests/win/toolkit/ToolkitTestSupport.h"

namespace
{
// A page whose members start with values that the controls cannot show
// exactly: a flag of 2 (the box stands for 1) and a combo text.
class BoundPage : public PropertyPage
{
public:
    explicit BoundPage(Window* owner) : PropertyPage(owner, kFirstPage, u"Bound") {}
    int32_t InitPage() override
    {
        AddControl<CheckBox>(kCheckId, &flag, 1);
        AddControl<EditBox>(kEditId, &text);
        auto& combo = AddControl<ComboBox>(kComboId, &choice);
        for (const char16_t* item : {u"Alpha", u"Beta", u"Gamma"})
            combo.AddItem(item);
        combo.LoadValue();
        return 0;
    }
    int32_t flag = 2;
    KelText text = u"text";
    KelText choice = u"beta";
};

// A drop-down with an edit bound to a text, as the language box of the
// common options: items that differ from the stored text only in case.
class DropDownPage : public PropertyPage
{
public:
    DropDownPage(Window* owner, const char16_t* stored)
        : PropertyPage(owner, kSecondPage, u"Drop-down"), choice(stored)
    {
    }
    int32_t InitPage() override
    {
        auto& combo = AddControl<ComboBox>(kComboId, &choice);
        for (const char16_t* item : {u"English", u"Deutsch"})
            combo.AddItem(item);
        combo.LoadValue();
        return 0;
    }
    KelText choice;
};

using BoundControls = ToolkitTest;
using Modal = ToolkitTest;
} // namespace

TEST_F(BoundControls, OnlyWhatTheUserChangedIsWritten)
{
    BoundPage* page = &Open<BoundPage>();
    HWND check = GetDlgItem(page->Handle(), kCheckId);
    HWND combo = GetDlgItem(page->Handle(), kComboId);
    EXPECT_EQ(SendMessageW(check, BM_GETCHECK, 0, 0), BST_UNCHECKED);
    EXPECT_EQ(SendMessageW(combo, CB_GETCURSEL, 0, 0), 1);

    // Only the edit changes: the flag keeps its 2, the choice its spelling.
    SetTextOf(GetDlgItem(page->Handle(), kEditId), u"edited");
    Apply();
    EXPECT_EQ(page->flag, 2);
    EXPECT_TRUE(page->choice.SameAs(u"beta"));
    EXPECT_TRUE(page->text.SameAs(u"edited"));

    SendMessageW(combo, CB_SETCURSEL, 2, 0);
    Tick(check, true);
    Apply();
    EXPECT_TRUE(page->choice.SameAs(u"Gamma"));
    EXPECT_EQ(page->flag, 1);
    Tick(check, false);
    Ok();
    EXPECT_EQ(page->flag, 0);
    EXPECT_FALSE(dialog->Exists());
}

TEST_F(BoundControls, ADropDownShowsTheStoredTextUntilTheUserChoosesAnItem)
{
    DropDownPage* page = &Open<DropDownPage>(u"DEUTSCH");
    HWND combo = GetDlgItem(page->Handle(), kComboId);
    EXPECT_TRUE(TextOf(combo).SameAs(u"DEUTSCH"));
    Apply();
    EXPECT_TRUE(page->choice.SameAs(u"DEUTSCH"));

    // The user's choice of an item replaces it, in the item's spelling.
    SendMessageW(combo, CB_SELECTSTRING, WPARAM(-1), LPARAM(L"Deutsch"));
    SendMessageW(page->Handle(), WM_COMMAND, MAKEWPARAM(kComboId, CBN_SELCHANGE), LPARAM(combo));
    Apply();
    EXPECT_TRUE(page->choice.SameAs(u"Deutsch"));

    // A text spelt as an item selects it.
    page = &Open<DropDownPage>(u"English");
    combo = GetDlgItem(page->Handle(), kComboId);
    EXPECT_EQ(SendMessageW(combo, CB_GETCURSEL, 0, 0), 1);
    EXPECT_TRUE(TextOf(combo).SameAs(u"English"));
}

TEST_F(BoundControls, EmptyDialogAndPageWithoutBindingsAccept)
{
    StandardPropertyDialog empty(nullptr, u"Empty", 0, 1, 0, KelText());
    ASSERT_EQ(empty.Show(false), 1);
    EXPECT_EQ(empty.CurrentPage(), -1);
    Click(empty.Handle(), IDOK);
    EXPECT_FALSE(empty.Exists());
    EXPECT_TRUE(empty.IsApplied());

    PropertyPage* plain = &Open<PropertyPage>(kSecondPage, u"Plain");
    EXPECT_FALSE(plain->IsApplied());
    EXPECT_EQ(plain->ApplyPage(0, kApplyConfirm, 0), 0);
    EXPECT_TRUE(plain->IsApplied());
    EXPECT_TRUE(user.alerts.empty());
}

TEST_F(Modal, EnterConfirmsAndADestroyedDialogLeavesTheModalStack)
{
    AppFrame owner(nullptr, u"Owner");
    ASSERT_EQ(owner.Show(false), 1);

    // Enter in a page's edit presses the default button, OK.
    dialog = std::make_unique<StandardPropertyDialog>(&owner, u"Modal", 0, 1, 0, KelText());
    auto* page = dialog->MakePage<CountingPage>(kSecondPage, u"Page");
    bool ownerDisabled = false;
    AfterStart(
        [&]
        {
            ownerDisabled = !IsWindowEnabled(owner.Handle());
            HWND edit = page->Item(kEditId);
            SetTextOf(edit, u"entered");
            PostMessageW(edit, WM_KEYDOWN, VK_RETURN, 0);
        });
    EXPECT_EQ(dialog->Show(true), IDOK);
    EXPECT_TRUE(ownerDisabled);
    EXPECT_TRUE(IsWindowEnabled(owner.Handle()));
    EXPECT_TRUE(page->text.SameAs(u"entered"));
    EXPECT_EQ(app.ModalCount(), 0);

    // A modal dialog destroyed from outside ends its loop all the same.
    dialog = std::make_unique<StandardPropertyDialog>(&owner, u"Modal", 0, 1, 0, KelText());
    dialog->MakePage<CountingPage>(kSecondPage, u"Page");
    AfterStart([&] { DestroyWindow(dialog->Handle()); });
    dialog->Show(true);
    EXPECT_FALSE(dialog->Exists());
    EXPECT_EQ(app.ModalCount(), 0);
    EXPECT_TRUE(IsWindowEnabled(owner.Handle()));
    owner.Destroy();
}
