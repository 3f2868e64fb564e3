#include "BareWindow.h"
#include "PlainLog.h"
#include "PseudoTerminal.h"
#include "support/PrivateProfile.h"
#include "support/Program.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QSerialPort>

#include <chrono>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using benchmark::State;
using Clock = std::chrono::steady_clock;

constexpr int FrameSize = sizeof(MoveUpFrame);

// Few enough to fit into the line's buffers, many enough that a pause between two batches weighs nothing.
constexpr int CommandsPerBatch = 100;
constexpr int RepliesPerBurst = 500;

constexpr char Acknowledge[] = "\x90\x41\xFF";
constexpr char Completion[] = "\x90\x51\xFF";
constexpr char LastReply[] = "\x90\x60\x02\xFF";
constexpr char LastLogLine[] = "-90-60-2-ff-4\n";

/** Runs the event loop until this many bytes have arrived at the far end of the line; takes them. */
void take(PseudoTerminal& line, int count)
{
    for (int arrived = line.read().size(); arrived < count; arrived += line.read().size())
        QCoreApplication::processEvents();
}

/** From `press` until the whole frame is readable at the far end of the line. */
template <class Press, class Release>
void press(State& state, PseudoTerminal& line, int bytesOnRelease, Press press, Release release)
{
    for ([[maybe_unused]] auto _ : state) {
        const auto begin = Clock::now();
        press();
        take(line, FrameSize);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());

        release();
        take(line, bytesOnRelease);
        QTest::qWait(1);
    }
}

/** What `operation` costs, which writes one frame to the line. */
template <class Operation> void command(State& state, PseudoTerminal& line, Operation operation)
{
    for ([[maybe_unused]] auto _ : state) {
        for (int i = 0; i < CommandsPerBatch; ++i)
            operation();
        state.PauseTiming();
        take(line, CommandsPerBatch * FrameSize);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(CommandsPerBatch);
}

QByteArray replyBurst()
{
    QByteArray burst;
    for (int reply = 1; reply < RepliesPerBurst; ++reply)
        burst += reply % 2 == 1 ? Acknowledge : Completion;
    return burst + LastReply;
}

/** Sends the burst to the program, waits for the last of its lines in the activity log and returns the log.
 */
QByteArray handle(const QByteArray& burst, PseudoTerminal& line, const QString& logPath)
{
    QByteArray log;
    line.write(burst);
    do {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QFile file(logPath);
        if (file.open(QIODevice::ReadOnly))
            log = file.readAll();
    } while (!log.endsWith(LastLogLine));
    return log;
}

std::vector<std::string> linesOf(const QByteArray& log)
{
    std::vector<std::string> lines;
    const auto parts = log.split('\n');
    for (const QByteArray& line : parts)
        lines.push_back(line.toStdString() + '\n');
    lines.pop_back();
    return lines;
}

/** What `handleBurst` takes, which fills a log that is not there yet. */
template <class Operation> void replies(State& state, const QString& logPath, Operation handleBurst)
{
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        QFile::remove(logPath);
        state.ResumeTiming();
        handleBurst();
    }
    state.SetItemsProcessed(RepliesPerBurst);
}

// Short runs of the program and of its floor take turns in random order, so that what else the machine does
// falls on both alike.
template <class Function> void measurePress(const char* name, Function function)
{
    benchmark::RegisterBenchmark(name, function)->UseManualTime()->Iterations(1)->Repetitions(501);
}

template <class Function> void measureCommand(const char* name, Function function)
{
    benchmark::RegisterBenchmark(name, function)->Iterations(1)->Repetitions(201);
}

template <class Function> void measureReplies(const char* name, Function function)
{
    benchmark::RegisterBenchmark(name, function)->Iterations(1)->Repetitions(101);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);

    PrivateProfile profile;
    PseudoTerminal camera;
    profile.store("comport", camera.path());
    const Program program;
    AppVantrelSerial* link = vantrelApp()->serial;
    auto* upButton = program.find<QPushButton>("upBtn");

    PseudoTerminal bareLine;
    BareWindow bare(*upButton, bareLine.path());
    bare.show();
    QPushButton* bareButton = &bare.button;
    if (!QTest::qWaitForWindowExposed(program.app.mainWin) || !QTest::qWaitForWindowExposed(&bare))
        qFatal("the windows are not shown");

    PseudoTerminal plainLine;
    const int plainPort = open(qPrintable(plainLine.path()), O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    const QString plainLog = profile.folder() + "/plain.log";
    const std::string plainLogPath = plainLog.toStdString();

    const QByteArray burst = replyBurst();
    const std::vector<std::string> burstLines = linesOf(handle(burst, camera, profile.logFile()));

    measurePress("press/program", [&](State& state) {
        press(
            state, camera, FrameSize, [&] { QTest::mousePress(upButton, Qt::LeftButton); },
            [&] { QTest::mouseRelease(upButton, Qt::LeftButton); });
    });
    measurePress("press/floor", [&](State& state) {
        press(
            state, bareLine, 0, [&] { QTest::mousePress(bareButton, Qt::LeftButton); },
            [&] { QTest::mouseRelease(bareButton, Qt::LeftButton); });
    });
    measurePress("signal/program", [&](State& state) {
        press(
            state, camera, FrameSize, [&] { emit upButton->pressed(); }, [&] { emit upButton->released(); });
    });
    measurePress("signal/floor", [&](State& state) {
        press(
            state, bareLine, 0, [&] { emit bareButton->pressed(); }, [&] { emit bareButton->released(); });
    });

    measureCommand("command/program", [&](State& state) { command(state, camera, [&] { link->moveUp(); }); });
    measureCommand("command/floor", [&](State& state) {
        command(state, plainLine, [&] {
            writePlainLogLine(plainLogPath, "MoveUp\n");
            static_cast<void>(!write(plainPort, MoveUpFrame, FrameSize));
        });
    });

    measureReplies("replies/program", [&](State& state) {
        replies(state, profile.logFile(), [&] { handle(burst, camera, profile.logFile()); });
    });
    measureReplies("replies/floor", [&](State& state) {
        replies(state, plainLog, [&] {
            for (const std::string& line : burstLines)
                writePlainLogLine(plainLogPath, line);
        });
    });

    benchmark::RunSpecifiedBenchmarks();
    close(plainPort);
}
