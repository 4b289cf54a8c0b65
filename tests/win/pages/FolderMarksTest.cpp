// The warning marks of the program paths page and the common options page: a
// folder with a problem gets the icon and the reason as its tip, a good one
// neither; the pages open and take input while a probe hangs, and a page
// closed before its answer comes is left alone by it.
#include <chrono>
#include <optional>

#include "app/pages/EditCommonOptions.h"
#include "app/pages/EditProgramPaths.h"
#include "app/pages/PageIds.h"
#include "framework/ListView.h"
#include "tests/core/platform/FileSystemDoubles.h"
#include "tests/win/pages/PageTestSupport.h"

namespace
{
// Runs the page's messages until `done` holds or `milliseconds` passed.
template <typename Condition>
bool PumpUntil(Condition done, DWORD milliseconds = 5000)
{
    const DWORD start = GetTickCount();
    while (!done())
    {
        if (GetTickCount() - start > milliseconds)
            return false;
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        Sleep(5);
    }
    return true;
}

// Every probe answered and its answer handled.
void Settle()
{
    FolderProbes::WaitUntilIdle(5000);
    Sleep(50);
    PumpUntil([] { return false; }, 100);
}

class FolderMarks : public PageTest
{
public:
    FolderMarks() = default;
    FolderMarks(const FolderMarks&) = delete;
    FolderMarks& operator=(const FolderMarks&) = delete;
    ~FolderMarks() override { FolderProbes::SetLimitMilliseconds(4000); }

protected:
    // Ledgerline's kinds (Main, Backup, Database, Reports, Backup, Project),
    // each in a folder that exists but Backup.
    ListView& OpenPaths()
    {
        std::string content = "[PROGRAM PATHS]\r\n";
        for (const char* kind : {"Main", "Database", "Reports", "Project"})
            content +=
                std::string(kind) + "=" + tree.Folder(KelText::FromUtf8(kind)).ToUtf8() + "\r\n";
        missing = tree.Folder(u"gone") + u"Backup/";
        content += "Backup=" + missing.ToUtf8() + "\r\n";
        UseSettings(content.c_str(), u"Ledgerline", u"QUORLIN.INI");
        paths = &Open<EditProgramPaths>();
        return *dynamic_cast<ListView*>(paths->FindControl(kPathList));
    }

    EditProgramPaths* paths = nullptr;
    KelText missing;
};
} // namespace

TEST_F(FolderMarks, MissingFolderIsMarkedWithItsReasonAndAChosenFolderClearsIt)
{
    ListView& list = OpenPaths();
    // Ledgerline lists Backup twice (rows 1 and 4).
    ASSERT_EQ(list.RowCount(), 6);
    ASSERT_TRUE(list.ItemText(1, 0).SameAs(u"Backup"));
    // The probes start once the page's messages run, not while it is made.
    EXPECT_EQ(FolderProbes::Running(), 0);
    ASSERT_TRUE(PumpUntil([&] { return paths->IsRowMarked(1) && paths->IsRowMarked(4); }));
    Settle();
    // The mark is a picture: the icon went into the list's images with it.
    EXPECT_EQ(ImageList_GetImageCount(
                  reinterpret_cast<HIMAGELIST>(list.Send(LVM_GETIMAGELIST, LVSIL_SMALL, 0))),
              1);
    EXPECT_EQ(paths->RowTip(1).ToUtf8(), "Problem: the folder does not exist");
    for (int32_t row : {0, 2, 3, 5})
    {
        EXPECT_FALSE(paths->IsRowMarked(row)) << row;
        EXPECT_TRUE(paths->RowTip(row).IsEmpty()) << row;
    }
    // The columns stay as they are: the mark is in the first one.
    EXPECT_EQ(list.ColumnCount(), 2);

    // A folder that exists: the mark goes once its probe answered.
    list.SelectOnly(1);
    user.AnswerBrowse(tree.Folder(u"Backup"));
    Click(paths->Handle(), kPathBrowse);
    ASSERT_TRUE(PumpUntil([&] { return !paths->IsRowMarked(1); }));
    EXPECT_TRUE(paths->RowTip(1).IsEmpty());
}

TEST_F(FolderMarks, PageOpensAndTakesInputWhileAProbeHangs)
{
    FolderProbes::SetLimitMilliseconds(3000);
    ProbingFiles probing;
    // The server of the Main folder does not answer for 10 seconds.
    probing.Hang(std::u16string(tree.Folder(u"Main").View()), std::chrono::seconds(10));
    ListView& list = OpenPaths();
    // Open, with the probe hanging, and the page takes input.
    EXPECT_TRUE(DialogOpen());
    EXPECT_TRUE(PumpUntil([&] { return probing.Hanging() == 1; }, 2000));
    list.SelectOnly(2);
    user.AnswerBrowse(tree.Folder(u"Elsewhere"));
    Click(paths->Handle(), kPathBrowse);
    EXPECT_TRUE(SettingsContext::Instance().PathOf(9).SameAs(tree.Folder(u"Elsewhere")));
    // The other rows' answers do not wait for it ...
    ASSERT_TRUE(PumpUntil([&] { return paths->IsRowMarked(1); }, 2000));
    EXPECT_FALSE(paths->IsRowMarked(0));
    // ... and the hanging one ends as "no answer" at its limit, while its
    // probe is still hanging.
    ASSERT_TRUE(PumpUntil([&] { return paths->IsRowMarked(0); }));
    EXPECT_EQ(paths->RowTip(0).ToUtf8(), "Problem: not reachable (no answer in 3 s)");
    EXPECT_EQ(probing.Hanging(), 1);

    // A page closed before its answer comes: the late answer goes nowhere.
    FolderProbes::SetLimitMilliseconds(60000);
    OpenPaths();
    Cancel();
    dialog.reset();
    probing.Release();
    Settle();
    EXPECT_EQ(FolderProbes::Running(), 0);
}

TEST_F(FolderMarks, StartFolderMarkFollowsTheFolder)
{
    UseSettings("[GENERAL]\r\n");
    PutString(ProductKey(u"Shopwise"), u"StartIn", tree.Folder(u"moved") + u"away/");
    EditCommonOptions& page = Open<EditCommonOptions>(u"Shopwise", KelText(u"KEL.INI"));
    ASSERT_TRUE(PumpUntil([&] { return !page.StartFolderTip().IsEmpty(); }));
    EXPECT_EQ(page.StartFolderTip().ToUtf8(), "Problem: the folder does not exist");
    EXPECT_TRUE(IsWindowVisible(GetDlgItem(page.Handle(), kCommonStartFolderMark)));

    // Cleared with the box; a folder that exists brings no mark back.
    Click(page.Handle(), kCommonUseStartFolder);
    EXPECT_TRUE(page.StartFolderTip().IsEmpty());
    Click(page.Handle(), kCommonUseStartFolder);
    user.AnswerBrowse(folder);
    Click(page.Handle(), kCommonBrowse);
    Settle();
    EXPECT_TRUE(page.StartFolderTip().IsEmpty());
    EXPECT_FALSE(IsWindowVisible(GetDlgItem(page.Handle(), kCommonStartFolderMark)));
}
