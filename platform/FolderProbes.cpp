#include "platform/FolderProbes.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <thread>

namespace
{
std::atomic<uint32_t> limitMilliseconds{4000};

// Probe threads running (probes and time keepers), with a signal for
// WaitUntilIdle. Never destroyed: a probe thread may still end while the
// process exits.
struct ProbeCount
{
    std::mutex guard;
    std::condition_variable changed;
    int32_t count = 0;
};
ProbeCount& Probing()
{
    static ProbeCount* const count = new ProbeCount;
    return *count;
}

// The time a program's exit waits for probes still running.
uint32_t ExitWaitMilliseconds()
{
    return FolderProbes::LimitMilliseconds() + 1000;
}

// Counts a thread as running until it ends.
void ThreadStarts(ProbeCount& probing)
{
    const std::lock_guard<std::mutex> lock(probing.guard);
    ++probing.count;
}
void ThreadEnds(ProbeCount& probing)
{
    // Told under the lock: WaitUntilIdle may return, and its caller remove
    // the file system or end the program, as soon as the count is 0.
    const std::lock_guard<std::mutex> lock(probing.guard);
    --probing.count;
    probing.changed.notify_all();
}

// What a probe and its time keeper share: whoever comes first answers.
struct ProbeState
{
    std::mutex guard;
    std::condition_variable finished;
    bool answered = false;
    bool probed = false;
    FolderState found = FolderState::Fine;
    std::function<void(const FolderAnswer&)> done;

    // Hands the answer on unless one was given already.
    void Answer(const FolderAnswer& answer)
    {
        std::function<void(const FolderAnswer&)> call;
        {
            const std::lock_guard<std::mutex> lock(guard);
            if (answered)
                return;
            answered = true;
            call = std::move(done);
        }
        if (call)
            call(answer);
    }
};
} // namespace

uint32_t FolderProbes::LimitMilliseconds()
{
    return limitMilliseconds;
}

void FolderProbes::SetLimitMilliseconds(uint32_t milliseconds)
{
    limitMilliseconds = milliseconds;
}

void FolderProbes::Start(const FolderQuestion& question,
                         std::function<void(const FolderAnswer&)> done)
{
    auto state = std::make_shared<ProbeState>();
    state->done = std::move(done);
    const uint32_t limit = LimitMilliseconds();
    // Pointers, not references, go into the threads: a reference captured
    // by reference may name this frame's reference, which is gone.
    FileSystem* const files = &GetFileSystem();
    ProbeCount* const probing = &Probing();
    // The exit of a program that probed waits for its probes.
    static const bool exitWaits = []
    { return std::atexit([] { FolderProbes::WaitUntilIdle(ExitWaitMilliseconds()); }) == 0; }();
    (void)exitWaits;
    ThreadStarts(*probing);
    ThreadStarts(*probing);
    // The probe itself: it may hang as long as the system lets it.
    std::thread(
        [state, files, probing, question]
        {
            FolderState found = FolderState::Unreachable;
            try
            {
                found = files->ProbeFolder(question.folder, question.needWrite);
            }
            catch (...)
            {
            }
            {
                const std::lock_guard<std::mutex> lock(state->guard);
                state->probed = true;
                state->found = found;
            }
            state->finished.notify_all();
            ThreadEnds(*probing);
        })
        .detach();
    // The time keeper: the answer, or NoAnswer when the limit runs out first.
    std::thread(
        [state, limit, probing]
        {
            FolderAnswer answer;
            {
                std::unique_lock<std::mutex> lock(state->guard);
                state->finished.wait_for(lock, std::chrono::milliseconds(limit),
                                         [&state] { return state->probed; });
                if (state->probed)
                    answer.state = state->found;
                else
                {
                    answer.state = FolderState::NoAnswer;
                    answer.limitSeconds = (limit + 999) / 1000;
                }
            }
            state->Answer(answer);
            ThreadEnds(*probing);
        })
        .detach();
}

std::vector<FolderAnswer> FolderProbes::ProbeAll(const std::vector<FolderQuestion>& questions)
{
    struct Collected
    {
        std::mutex guard;
        std::condition_variable changed;
        std::vector<FolderAnswer> answers;
        size_t left = 0;
    };
    auto collected = std::make_shared<Collected>();
    collected->answers.resize(questions.size());
    collected->left = questions.size();
    for (size_t i = 0; i < questions.size(); ++i)
        Start(questions[i],
              [collected, i](const FolderAnswer& answer)
              {
                  {
                      const std::lock_guard<std::mutex> lock(collected->guard);
                      collected->answers[i] = answer;
                      --collected->left;
                  }
                  collected->changed.notify_all();
              });
    std::unique_lock<std::mutex> lock(collected->guard);
    collected->changed.wait(lock, [&collected] { return collected->left == 0; });
    return collected->answers;
}

int32_t FolderProbes::Running()
{
    ProbeCount& probing = Probing();
    const std::lock_guard<std::mutex> lock(probing.guard);
    return probing.count;
}

bool FolderProbes::WaitUntilIdle(uint32_t milliseconds)
{
    ProbeCount& probing = Probing();
    std::unique_lock<std::mutex> lock(probing.guard);
    return probing.changed.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                    [&probing] { return probing.count == 0; });
}

void FolderProbes::EndProgramWhenBusy(int result)
{
    if (WaitUntilIdle(ExitWaitMilliseconds()))
        return;
    (void)std::fflush(nullptr);
    std::_Exit(result);
}
