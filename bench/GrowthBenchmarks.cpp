#include "ProcessMemory.h"
#include "ReplyBurst.h"
#include "support/PrivateProfile.h"
#include "support/Program.h"

#include <benchmark/benchmark.h>

#include <QFile>

#include <algorithm>
#include <chrono>
#include <unistd.h>
#include <vector>

namespace {

using benchmark::State;
using Clock = std::chrono::steady_clock;

constexpr int ReplyCounts[] = {10'000, 100'000, 1'000'000};
constexpr int RepliesPerLog = 100'000;
constexpr qint64 LogSizes[] = {1'000'000, 1'000'000'000};

/** What one of so many replies takes: the median over the bursts, in nanoseconds. */
double replyTime(int count, PseudoTerminal& camera, const QString& logPath)
{
    const QByteArray burst = replyBurst();
    std::vector<double> times;
    for (int handled = 0; handled < count; handled += RepliesPerBurst) {
        const auto begin = Clock::now();
        handle(burst, camera, logPath);
        times.push_back(std::chrono::duration<double, std::nano>(Clock::now() - begin).count());
    }
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle / RepliesPerBurst;
}

/** The replies of a growing number, on a log that grows with them. */
void replies(State& state, int count, PseudoTerminal& camera, const QString& logPath)
{
    for ([[maybe_unused]] auto _ : state)
        state.counters["reply_time"] = replyTime(count, camera, logPath);
    state.counters["memory"] = processMemory(getpid(), "VmRSS");
}

/** Replies onto a log that has its size already. Its content does not matter: nobody reads it. */
void repliesOntoLog(State& state, qint64 size, PseudoTerminal& camera, const QString& logPath)
{
    if (!QFile::resize(logPath, size))
        qFatal("%s cannot get its size", qPrintable(logPath));
    for ([[maybe_unused]] auto _ : state)
        state.counters["reply_time"] = replyTime(RepliesPerLog, camera, logPath);
    state.counters["memory"] = processMemory(getpid(), "VmRSS");
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);

    PrivateProfile profile;
    PseudoTerminal camera;
    profile.store("comport", camera.path());
    const Program program;
    if (!QTest::qWaitForWindowExposed(program.app.mainWin))
        qFatal("the window is not shown");
    const QString log = profile.logFile();

    // Each goes on from where the one before it left the program and its log, so the order counts.
    for (const int count : ReplyCounts) {
        const std::string name = "replies/" + std::to_string(count);
        benchmark::RegisterBenchmark(name.c_str(), [&, count](State& state) {
            replies(state, count, camera, log);
        })->Iterations(1);
    }
    for (const qint64 size : LogSizes) {
        const std::string name = "log/" + std::to_string(size);
        benchmark::RegisterBenchmark(name.c_str(), [&, size](State& state) {
            repliesOntoLog(state, size, camera, log);
        })->Iterations(1);
    }
    benchmark::RunSpecifiedBenchmarks();
}
