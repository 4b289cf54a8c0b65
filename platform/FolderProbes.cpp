#include "platform/FolderProbes.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#endif

namespace
{
std::atomic<uint32_t> limitMilliseconds{4000};

// The waits below look again every few milliseconds rather than wait on a
// condition variable: the probe threads end while their starter may be
// gone, and MinGW's threading library was seen to fail when condition
// variables made and signalled across such threads were used at the same
// time (a damaged heap under load). Atomics and short sleeps have nothing
// to set up or take apart.
constexpr std::chrono::milliseconds kLookAgain{5};

// Waits until `done` answers true, at most `milliseconds`; answers whether it did.
template <typename Done>
bool WaitFor(Done done, uint32_t milliseconds)
{
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!done())
    {
        if (std::chrono::steady_clock::now() >= until)
            return done();
        std::this_thread::sleep_for(kLookAgain);
    }
    return true;
}

// Probe threads running (probes and time keepers). Never destroyed: a probe
// thread may still end while the process exits.
std::atomic<int32_t>& Probing()
{
    static std::atomic<int32_t>* const count = new std::atomic<int32_t>(0);
    return *count;
}

// Runs `work` on a thread of its own that nobody waits for; the thread
// counts as running (Running, WaitUntilIdle) until `work` and everything it
// held are gone. On Windows a system thread: the C++ library's threads leave
// it through the threading library's own clean-up, which was seen to fail
// when the program ended meanwhile; a system thread that is still running
// at the end is simply stopped by the system.
void RunDetached(std::function<void()> work)
{
    std::atomic<int32_t>& probing = Probing();
    probing.fetch_add(1);
#ifdef _WIN32
    auto* const held = new std::function<void()>(std::move(work));
    const auto run = [](void* parameter) -> DWORD
    {
        auto* const job = static_cast<std::function<void()>*>(parameter);
        (*job)();
        delete job;
        Probing().fetch_sub(1);
        return 0;
    };
    if (HANDLE thread = CreateThread(nullptr, 0, run, held, 0, nullptr))
        CloseHandle(thread);
    else
    {
        delete held;
        probing.fetch_sub(1);
    }
#else
    std::thread(
        [job = std::move(work)]() mutable
        {
            job();
            job = nullptr;
            Probing().fetch_sub(1);
        })
        .detach();
#endif
}

// The time a program's exit waits for probes still running.
uint32_t ExitWaitMilliseconds()
{
    return FolderProbes::LimitMilliseconds() + 1000;
}

// What a probe and its time keeper share: whoever comes first answers.
struct ProbeState
{
    std::atomic<bool> probed{false};
    std::atomic<bool> answered{false};
    FolderState found = FolderState::Fine; // written before probed is set
    std::function<void(const FolderAnswer&)> done;

    // Hands the answer on unless one was given already.
    void Answer(const FolderAnswer& answer)
    {
        if (answered.exchange(true))
            return;
        if (done)
            done(answer);
        done = nullptr;
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
    // The exit of a program that probed waits for its probes.
    static const bool exitWaits = []
    { return std::atexit([] { FolderProbes::WaitUntilIdle(ExitWaitMilliseconds()); }) == 0; }();
    (void)exitWaits;
    // The probe itself: it may hang as long as the system lets it.
    RunDetached(
        [state, files, question]
        {
            FolderState found = FolderState::Unreachable;
            try
            {
                found = files->ProbeFolder(question.folder, question.needWrite);
            }
            catch (...) // NOLINT(bugprone-empty-catch): a probe that throws found nothing reachable
            {
            }
            state->found = found;
            state->probed.store(true);
        });
    // The time keeper: the answer, or NoAnswer when the limit runs out first.
    RunDetached(
        [state, limit]
        {
            FolderAnswer answer;
            if (WaitFor([&state] { return state->probed.load(); }, limit))
                answer.state = state->found;
            else
            {
                answer.state = FolderState::NoAnswer;
                answer.limitSeconds = (limit + 999) / 1000;
            }
            state->Answer(answer);
        });
}

std::vector<FolderAnswer> FolderProbes::ProbeAll(const std::vector<FolderQuestion>& questions)
{
    struct Collected
    {
        std::vector<FolderAnswer> answers;
        std::atomic<size_t> left{0};
    };
    auto collected = std::make_shared<Collected>();
    collected->answers.resize(questions.size());
    collected->left = questions.size();
    for (size_t i = 0; i < questions.size(); ++i)
        Start(questions[i],
              [collected, i](const FolderAnswer& answer)
              {
                  collected->answers[i] = answer; // each probe its own place
                  collected->left.fetch_sub(1);
              });
    // Every probe answers within its limit, NoAnswer at the latest.
    while (collected->left.load() > 0)
        std::this_thread::sleep_for(kLookAgain);
    return collected->answers;
}

int32_t FolderProbes::Running()
{
    return Probing().load();
}

bool FolderProbes::WaitUntilIdle(uint32_t milliseconds)
{
    return WaitFor([] { return Probing().load() == 0; }, milliseconds);
}

void FolderProbes::EndProgramWhenBusy(int result)
{
    if (WaitUntilIdle(ExitWaitMilliseconds()))
        return;
    (void)std::fflush(nullptr);
    std::_Exit(result);
}
