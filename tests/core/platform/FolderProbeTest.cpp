// Folder probes: what the platform's probe tells of real folders, and that a
// probe that never answers ends as "no answer" within its time limit without
// holding up the others.
#include <chrono>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "platform/FolderProbes.h"
#include "tests/core/platform/FileSystemDoubles.h"

namespace
{
namespace fs = std::filesystem;

std::u16string Utf16(const fs::path& path)
{
    return path.generic_u16string();
}

class FolderProbeTest : public ::testing::Test
{
protected:
    FolderProbeTest()
        : root(fs::temp_directory_path() /
               ("kel-probe-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed())))
    {
        fs::create_directories(root / "folder");
        std::FILE* file = std::fopen((root / "file.txt").string().c_str(), "wb");
        if (file)
            (void)std::fclose(file);
    }

public:
    FolderProbeTest(const FolderProbeTest&) = delete;
    FolderProbeTest& operator=(const FolderProbeTest&) = delete;
    ~FolderProbeTest() override
    {
        FolderProbes::SetLimitMilliseconds(4000);
        std::error_code ignored;
        fs::remove_all(root, ignored);
    }
    fs::path root;
};
} // namespace

TEST_F(FolderProbeTest, RealFoldersFilesAndGaps)
{
    const std::vector<FolderAnswer> answers = FolderProbes::ProbeAll({
        {Utf16(root / "folder") + u"/", true},
        {Utf16(root / "file.txt"), false},
        {Utf16(root / "absent" / "deeper"), false},
        {u"", false},
    });
    ASSERT_EQ(answers.size(), 4u);
    EXPECT_EQ(answers[0].state, FolderState::Fine);
    EXPECT_EQ(answers[1].state, FolderState::NotFolder);
    EXPECT_EQ(answers[2].state, FolderState::Missing);
    EXPECT_EQ(answers[3].state, FolderState::Missing);
}

TEST_F(FolderProbeTest, HangingProbeEndsAsNoAnswerAndHoldsUpNoOther)
{
    FolderProbes::SetLimitMilliseconds(1500);
    const std::u16string dead = u"//server/share/jobs/";
    const std::u16string good = Utf16(root / "folder");
    {
        ProbingFiles probing;
        probing.Hang(dead, std::chrono::seconds(60));
        probing.Answer(u"/locked", FolderState::NotWritable);

        // Told one by one: the good folder's answer comes long before the limit.
        const auto start = std::chrono::steady_clock::now();
        std::mutex guard;
        std::condition_variable told;
        std::vector<std::pair<std::u16string, FolderAnswer>> order;
        for (const std::u16string& folder : {dead, good, std::u16string(u"/locked")})
            FolderProbes::Start({folder, true},
                                [&, folder](const FolderAnswer& answer)
                                {
                                    const std::scoped_lock lock(guard);
                                    order.emplace_back(folder, answer);
                                    told.notify_all();
                                });
        std::unique_lock<std::mutex> lock(guard);
        ASSERT_TRUE(
            told.wait_for(lock, std::chrono::seconds(30), [&] { return order.size() == 3; }));
        const auto waited = std::chrono::steady_clock::now() - start;
        lock.unlock();
        // The dead share answers last, as "no answer in 2 s" (1.5 s rounded up),
        // once the limit ran out and well before its probe would end.
        EXPECT_EQ(order[2].first, dead);
        EXPECT_EQ(order[2].second.state, FolderState::NoAnswer);
        EXPECT_EQ(order[2].second.limitSeconds, 2u);
        EXPECT_LT(waited, std::chrono::seconds(20));
        for (size_t i = 0; i < 2; ++i)
            EXPECT_EQ(order[i].second.state,
                      order[i].first == good ? FolderState::Fine : FolderState::NotWritable);

        // All at once: one time limit in all, not one per hanging folder.
        const std::vector<FolderAnswer> all =
            FolderProbes::ProbeAll({{dead, false}, {dead, false}, {good, false}});
        EXPECT_EQ(all[0].state, FolderState::NoAnswer);
        EXPECT_EQ(all[1].state, FolderState::NoAnswer);
        EXPECT_EQ(all[2].state, FolderState::Fine);
        EXPECT_GE(probing.Hanging(), 1);

        // The probes left hanging end once the server answers after all.
        probing.Release();
        EXPECT_TRUE(FolderProbes::WaitUntilIdle(10000));
    }
    EXPECT_EQ(FolderProbes::Running(), 0);
}
