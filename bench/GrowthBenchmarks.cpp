#include "ProcessMemory.h"
#include "ReplyBurst.h"
#include "support/PrivateProfile.h"
#include "support/Program.h"

#include <benchmark/benchmark.h>

#include <QFile>

#include <unistd.h>

namespace {

using benchmark::State;

constexpr int ReplyCounts[] = {10'000, 100'000, 1'000'000};
constexpr int RepliesPerLog = 100'000;
constexpr qint64 LogSizes[] = {1'000'000, 1'000'000'000};

/** Handles `count` replies, which has to be a multiple of RepliesPerBurst. */
void handleReplies(State& state, int count, PseudoTerminal& camera, const QString& logPath)
{
    const QByteArray burst = replyBurst();
    for ([[maybe_unused]] auto _ : state) {
        for (int handled = 0; handled < count; handled += RepliesPerBurst)
            handle(burst, camera, logPath);
    }
    state.SetItemsProcessed(count);
    state.counters["memory"] = processMemory(getpid(), "VmRSS");
}

/** Handles replies while the log is `size` bytes long. The log is a sparse file, since nobody reads it. */
void handleRepliesOntoLog(State& state, qint64 size, PseudoTerminal& camera, const QString& logPath)
{
    if (!QFile::resize(logPath, size))
        qFatal("%s cannot get its size", qPrintable(logPath));
    handleReplies(state, RepliesPerLog, camera, logPath);
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

    // The order matters: each benchmark continues with the program and the log of the previous one.
    for (const int count : ReplyCounts) {
        const std::string name = "replies/" + std::to_string(count);
        benchmark::RegisterBenchmark(name.c_str(), [&, count](State& state) {
            handleReplies(state, count, camera, log);
        })->Iterations(1);
    }
    for (const qint64 size : LogSizes) {
        const std::string name = "log/" + std::to_string(size);
        benchmark::RegisterBenchmark(name.c_str(), [&, size](State& state) {
            handleRepliesOntoLog(state, size, camera, log);
        })->Iterations(1);
    }
    benchmark::RunSpecifiedBenchmarks();
}
