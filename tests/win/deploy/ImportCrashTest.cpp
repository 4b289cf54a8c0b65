// A kelcfg import stopped after every step that reaches the settings file, and
// inside its writes: the real file on disk holds its old or its new content.
#include "tests/core/platform/FileSystemDoubles.h"
#include "tests/win/deploy/TransferTestSupport.h"

namespace
{
using ImportCrash = TransferTest;
} // namespace

TEST_F(ImportCrash, ACrashAtAnyStepLeavesTheOldOrTheNewSettingsFile)
{
    const KelText config = Configuration(
        u"crash", u"Shopwise",
        "[GENERAL]\r\nSUPPORT=Old\r\nNUMPAD=OFF\r\n[PROGRAM PATHS]\r\nDXF=D:/Old/\r\n");
    const KelText ini = config + u"KEL.INI";
    const std::string text = "[Program Paths]\nDXF = D:/New/\n[Product Options]\nSUPPORT = New\n"
                             "[Common Options]\nNUMPAD = ON\n";
    const std::string before = Bytes(ini);

    std::string after;
    std::vector<CrashingFiles::Operation> steps;
    {
        CrashingFiles crashing;
        crashing.StopAfter(-1);
        ASSERT_EQ(Import(u"Shopwise", config, text).exitCode, 0);
        steps = crashing.Seen();
        after = Bytes(ini);
    }
    ASSERT_NE(after, before);

    int points = 0, torn = 0, leftovers = 0;
    auto stopAt = [&](int64_t step, size_t atByte)
    {
        GetPlatformFileSystem().WriteBytes(ini, before.data(), before.size());
        {
            CrashingFiles crashing;
            crashing.StopAfter(step, atByte);
            try
            {
                Import(u"Shopwise", config, text);
            }
            catch (const WorldStopped&) // NOLINT(bugprone-empty-catch): the crash it simulates
            {
            }
        }
        ++points;
        const std::string now = Bytes(ini);
        torn += now != before && now != after;
        // The next import finishes the work and leaves nothing beside the file.
        EXPECT_EQ(Import(u"Shopwise", config, text).exitCode, 0);
        EXPECT_EQ(Bytes(ini), after);
        leftovers += GetPlatformFileSystem().Exists(ini + u".~new") ||
                     GetPlatformFileSystem().Exists(ini + u".~lock");
    };
    for (size_t step = 0; step < steps.size(); ++step)
    {
        if (steps[step].writes)
            for (size_t atByte : CrashBytes(steps[step].size, 16, 41))
                stopAt(int64_t(step), atByte);
        stopAt(int64_t(step), SIZE_MAX);
    }
    std::printf("kelcfg import: %i crash points, %i torn files\n", points, torn);
    EXPECT_GT(points, 50);
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(leftovers, 0);
}
