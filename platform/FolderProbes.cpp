#include "platform/FolderProbes.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace
{
std::atomic<uint32_t> limitMilliseconds{4000};

// Probe threads inside the file system, with a signal for WaitUntilIdle.
std::mutex runningGuard;
std::condition_variable runningChanged;
int32_t running = 0;

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
    FileSystem& files = GetFileSystem();
    {
        const std::lock_guard<std::mutex> lock(runningGuard);
        ++running;
    }
    // The probe itself: it may hang as long as the system lets it.
    std::thread(
        [state, &files, question]
        {
            FolderState found = FolderState::Unreachable;
            try
            {
                found = files.ProbeFolder(question.folder, question.needWrite);
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
            {
                const std::lock_guard<std::mutex> lock(runningGuard);
                --running;
            }
            runningChanged.notify_all();
        })
        .detach();
    // The time keeper: the answer, or NoAnswer when the limit runs out first.
    std::thread(
        [state, limit]
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
    const std::lock_guard<std::mutex> lock(runningGuard);
    return running;
}

bool FolderProbes::WaitUntilIdle(uint32_t milliseconds)
{
    std::unique_lock<std::mutex> lock(runningGuard);
    return runningChanged.wait_for(lock, std::chrono::milliseconds(milliseconds),
                                   [] { return running == 0; });
}
