#include <gtest/gtest.h>

#include <cstdlib>

#include "framework/CheckMessageBox.h"
#include "tests/win/app/AppTestHelpers.h"
#include "tests/win/support/RecordingInteraction.h"
#include "text/TextHolder.h"

namespace
{
// An application with a release of its own, so that its switch key
// ("...\Brindlecove <release>\COMMON\PROMPTS") belongs to this test alone.
class Switches : public ::testing::Test
{
protected:
    Switches()
        : release(UniqueName(u"S")), cleanup(release),
          app(GetModuleHandleW(nullptr), nullptr, nullptr, &user)
    {
        app.RegisterRelease(u"Plotwise", release, false);
        app.MessageSwitches().Register(5, u"Bad cost tables", u"BadCostTables");
        app.MessageSwitches().Register(4, u"Bad duct standard", u"BadSpec");
    }

    RegistryKey Prompts()
    {
        RegistryKey key;
        key.Create(app.SwitchKeyPath());
        return key;
    }

    KelText release;
    ReleaseCleanup cleanup;
    RecordingInteraction user;
    AppEntry app;
};
} // namespace

TEST_F(Switches, StoredStates)
{
    // No key, then no value: shown.
    EXPECT_FALSE(RegistryKey::Exists(app.SwitchKeyPath()));
    EXPECT_TRUE(app.IsSwitchShown(4));
    RegistryKey prompts = Prompts();
    EXPECT_TRUE(app.IsSwitchShown(4));

    ASSERT_TRUE(prompts.WriteDword(u"BadSpec", 0));
    EXPECT_FALSE(app.IsSwitchShown(4));
    ASSERT_TRUE(prompts.WriteDword(u"BadSpec", 2));
    EXPECT_TRUE(app.IsSwitchShown(4));
    // Any other type switches the message off.
    ASSERT_TRUE(prompts.WriteString(u"BadSpec", u"1"));
    EXPECT_FALSE(app.IsSwitchShown(4));

    // Unknown codes are shown, have no text and cannot be stored.
    EXPECT_TRUE(app.IsSwitchShown(6));
    EXPECT_TRUE(app.MessageSwitches().TextOf(6).IsEmpty());
    EXPECT_FALSE(app.SetSwitchShown(6, false));

    EXPECT_TRUE(app.SetSwitchShown(5, false));
    EXPECT_EQ(GetDword(app.SwitchKeyPath(), u"BadCostTables"), 0);
}

TEST_F(Switches, TickingTheCheckBoxSwitchesTheMessageOff)
{
    user.AnswerBox(IDYES, true);
    EXPECT_EQ(app.ShowMessageBox(nullptr, u"Replace the cost tables?", u"Plotwise",
                                 MB_YESNO | MB_ICONQUESTION, 5),
              IDYES);
    ASSERT_EQ(user.boxes.size(), 1u);
    EXPECT_EQ(user.boxes[0].switchCode, 5u);
    EXPECT_TRUE(user.boxes[0].checkLabel.SameAs(DictText(6069)));
    EXPECT_TRUE(user.boxes[0].caption.SameAs(u"Plotwise"));
    EXPECT_FALSE(app.IsSwitchShown(5));

    // Switched off: not shown, answered with the default button.
    EXPECT_EQ(app.ShowMessageBox(nullptr, u"Again?", u"Plotwise", MB_YESNO | MB_DEFBUTTON2, 5),
              IDNO);
    EXPECT_EQ(app.ShowMessageBox(nullptr, u"Again?", u"Plotwise", MB_OKCANCEL, 5), IDOK);
    EXPECT_EQ(user.boxes.size(), 1u);

    // Without a code, or with an unknown one, there is no check box to tick.
    user.AnswerBox(IDOK, true);
    user.AnswerBox(IDOK, true);
    app.ShowMessageBox(nullptr, u"Plain", u"Plotwise", MB_OK, 0);
    app.ShowMessageBox(nullptr, u"Unknown", u"Plotwise", MB_OK, 6);
    ASSERT_EQ(user.boxes.size(), 3u);
    EXPECT_EQ(user.boxes[2].switchCode, 0u);
    EXPECT_TRUE(user.boxes[2].checkLabel.IsEmpty());
}

TEST(MessageBoxStyle, ButtonsDefaultsAndEscape)
{
    int32_t ids[3];
    ASSERT_EQ(MessageBoxButtons(MB_CANCELTRYCONTINUE, ids), 3);
    EXPECT_EQ(ids[1], IDTRYAGAIN);
    EXPECT_EQ(MessageBoxDefaultButton(MB_YESNOCANCEL | MB_DEFBUTTON3), IDCANCEL);
    EXPECT_EQ(MessageBoxDefaultButton(MB_YESNO | MB_DEFBUTTON3), IDYES); // no third button
    EXPECT_EQ(MessageBoxEscapeButton(MB_OK), IDOK);
    EXPECT_EQ(MessageBoxEscapeButton(MB_RETRYCANCEL), IDCANCEL);
    EXPECT_EQ(MessageBoxEscapeButton(MB_YESNO), 0);
}

// The real check-box box, driven by keys as a user would. With
// KEL_SHOW_SECONDS set it stays up that long with the box ticked (for a
// screenshot).
namespace
{
struct RealBox
{
    int tick = 0;
    int holdUntil = 0;
    bool hadCheckBox = false;
    bool escapeSent = false;
    bool escapeIgnored = false;
    KelText caption;
};
RealBox realBox;

void CALLBACK DriveRealBox(HWND, UINT, UINT_PTR timer, DWORD)
{
    HWND box = FindWindowW(L"#32770", AsWide(realBox.caption));
    if (++realBox.tick > 600)
    {
        KillTimer(nullptr, timer);
        PostQuitMessage(0); // never appeared: end the box's loop, the test fails
        return;
    }
    if (!box || realBox.tick < realBox.holdUntil)
        return;
    HWND focus = GetFocus() ? GetFocus() : box;
    if (!realBox.hadCheckBox)
    {
        HWND check = GetDlgItem(box, kCheckBoxId);
        wchar_t label[100] = {};
        GetWindowTextW(check, label, 100);
        realBox.hadCheckBox = check && FromWide(label).SameAs(DictText(6069)) &&
                              GetDlgItem(box, IDYES) && GetDlgItem(box, IDNO) &&
                              !GetDlgItem(box, IDCANCEL);
        SendMessageW(check, BM_CLICK, 0, 0);
        if (const char* seconds = std::getenv("KEL_SHOW_SECONDS"))
            realBox.holdUntil = realBox.tick + int(std::strtol(seconds, nullptr, 10)) * 10;
        return;
    }
    if (!realBox.escapeSent)
    {
        // A Yes/No box has no Cancel: Esc must do nothing.
        realBox.escapeSent = true;
        PostMessageW(focus, WM_KEYDOWN, VK_ESCAPE, 0);
        return;
    }
    KillTimer(nullptr, timer);
    realBox.escapeIgnored = true;
    PostMessageW(focus, WM_KEYDOWN, VK_RETURN, 0);
}
} // namespace

TEST_F(Switches, RealCheckBoxBoxSwitchesOff)
{
    app.SetInteraction(nullptr); // the system's windows
    realBox = RealBox();
    realBox.caption = UniqueName(u"Plotwise check ");
    SetTimer(nullptr, 0, 100, DriveRealBox);
    int32_t answer = app.ShowMessageBox(
        nullptr,
        u"The cost tables of this configuration are older than the program.\nReplace them?",
        realBox.caption, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2, 5);
    MSG quit;
    PeekMessageW(&quit, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE);
    EXPECT_TRUE(realBox.hadCheckBox);
    EXPECT_TRUE(realBox.escapeIgnored);
    EXPECT_EQ(answer, IDNO); // Enter presses the default button
    EXPECT_FALSE(app.IsSwitchShown(5));
}
