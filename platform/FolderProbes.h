#pragma once
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/FileSystem.h"

// The answer of one folder probe.
struct FolderAnswer
{
    FolderState state = FolderState::Fine;
    // For NoAnswer: the time limit that ran out, in whole seconds.
    uint32_t limitSeconds = 0;
};

// One folder to probe.
struct FolderQuestion
{
    std::u16string folder;
    bool needWrite = false;
};

// Folder probes that never keep their caller waiting longer than a time limit.
// Asking a server that does not answer can take half a minute; each probe
// therefore runs on a thread of its own, and when it has not answered within
// the limit the answer is NoAnswer. The thread of a probe that ran out keeps
// waiting for the system in the background and ends when the system answers;
// what it finds then is dropped. Probes run side by side, so one that hangs
// delays no other.
//
// The probes use the file system that is installed when they start.
class FolderProbes
{
public:
    // The time limit of one probe (4 seconds unless a test sets it).
    static uint32_t LimitMilliseconds();
    static void SetLimitMilliseconds(uint32_t milliseconds);

    // Starts a probe; `done` runs exactly once, on a background thread, with
    // the answer or with NoAnswer when the limit ran out first.
    static void Start(const FolderQuestion& question,
                      std::function<void(const FolderAnswer&)> done);
    // Probes every folder at once and waits for all: at most about one time
    // limit in all. The answers come in the order of the questions.
    static std::vector<FolderAnswer> ProbeAll(const std::vector<FolderQuestion>& questions);

    // How many probe threads (probes, also those whose answer was given up,
    // and their time keepers) are still running. Tests wait for 0 before
    // they remove a file system of their own.
    static int32_t Running();
    // Waits until no probe thread runs, at most `milliseconds`; answers
    // whether none does.
    static bool WaitUntilIdle(uint32_t milliseconds);
    // For the end of a program: the ordinary exit takes the threading
    // library apart, which a probe thread still running does not survive.
    // Waits a time limit and a bit for the probes (the exit of every program
    // that started one waits so too); when one still hangs on a server that
    // does not answer, the program ends at once with `result`, after writing
    // out what it printed.
    static void EndProgramWhenBusy(int result);
};
