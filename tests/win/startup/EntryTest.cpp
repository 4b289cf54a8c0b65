// EditKel.exe's process entry in-process: start-up that fails with an
// exception still ends with exit code 0, after a report.
#include <gtest/gtest.h>

#include <stdexcept>

#include "app/ProgramMain.h"
#include "framework/AppEntry.h"
#include "tests/win/support/RecordingInteraction.h"

namespace
{
// A user whose configuration picker fails: the exception leaves the locate
// step, program main and the rest of start-up. It notes the product that
// start-up had settled by then.
struct FailingPicker : RecordingInteraction
{
    int32_t ChooseModal(const KelText& purpose, const std::function<int32_t()>&) override
    {
        choices.push_back(purpose);
        AppEntry* app = GetAppEntry();
        productAtPicker = app ? app->ProductName() : KelText(u"<no application>");
        throw std::runtime_error("picker failed");
    }
    KelText productAtPicker;
};
} // namespace

TEST(ProgramEntry, AnExceptionInStartUpIsReportedAndEndsWithZero)
{
    FailingPicker user;
    // Only the picker is reached, so the release branch is read and never
    // written. The switch is quoted as a shortcut writes it.
    EXPECT_EQ(RunEditKel(GetModuleHandleW(nullptr), u"\"-app=plotwise\"", SW_SHOWNORMAL, &user), 0);

    ASSERT_EQ(user.choices.size(), 1u);
    EXPECT_TRUE(user.productAtPicker.SameAs(u"Plotwise"));
    // The report is the last box (a missing dictionary may be reported first).
    ASSERT_FALSE(user.boxes.empty());
    const RecordingInteraction::Box& report = user.boxes.back();
    EXPECT_NE(report.text.Find(u"picker failed"), 0) << report.text.ToUtf8();
    EXPECT_EQ(report.style & MB_ICONMASK, UINT(MB_ICONHAND));
    // The application object is gone, as after a normal end.
    EXPECT_EQ(GetApplication(), nullptr);
}
