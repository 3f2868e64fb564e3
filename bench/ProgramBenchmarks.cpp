#include "BareWindow.h"
#include "PlainLog.h"
#include "PseudoTerminal.h"
#include "ReplyBurst.h"
#include "support/PrivateProfile.h"
#include "support/Program.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QSerialPort>
#include <QSerialPortInfo>

#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using benchmark::State;
using Clock = std::chrono::steady_clock;

constexpr int FrameSize = sizeof(MoveUpFrame);

// Few enough to fit into the line's buffers, many enough that a pause between two batches weighs nothing.
constexpr int CommandsPerBatch = 100;

/** Runs the event loop until this many bytes have arrived at the far end of the line; takes them. */
void take(PseudoTerminal& line, int count)
{
    for (int arrived = line.read().size(); arrived < count; arrived += line.read().size())
        QCoreApplication::processEvents();
}

/** What a press or release of the left mouse button in the middle of the widget sends to it. */
QMouseEvent mouseEvent(QEvent::Type type, const QWidget& widget)
{
    const QPoint middle = widget.rect().center();
    const auto held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
    return {type, middle, widget.mapToGlobal(middle), Qt::LeftButton, held, Qt::NoModifier};
}

/** From `press` until the whole frame that `port` sends is readable at the far end of the line. */
template <class Press, class Release>
void press(State& state, PseudoTerminal& line, const QSerialPort& port, int bytesOnRelease, Press press,
           Release release)
{
    for ([[maybe_unused]] auto _ : state) {
        const auto begin = Clock::now();
        press();
        // The event loop runs only as long as the frame needs it: what is drawn after the frame takes no
        // part.
        while (port.bytesToWrite() > 0)
            QCoreApplication::processEvents();
        for (int arrived = line.read().size(); arrived < FrameSize; arrived += line.read().size())
            std::this_thread::yield();
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

std::vector<std::string> linesOf(const QString& logPath)
{
    std::vector<std::string> lines;
    std::ifstream log(logPath.toStdString());
    for (std::string line; std::getline(log, line);)
        lines.push_back(line + '\n');
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

/** From the button's signal until the dialog lists the ports and the display has been asked to show it. */
void openSettings(State& state, QPushButton& settingsButton, QWidget& dialog)
{
    for ([[maybe_unused]] auto _ : state) {
        const auto begin = Clock::now();
        emit settingsButton.clicked();
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());

        if (!QTest::qWaitForWindowExposed(&dialog))
            qFatal("the settings are not shown");
        dialog.close();
        QCoreApplication::processEvents();
    }
}

void enumeratePorts(State& state)
{
    for ([[maybe_unused]] auto _ : state) {
        const auto begin = Clock::now();
        benchmark::DoNotOptimize(QSerialPortInfo::availablePorts());
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
    }
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

template <class Function> void measureSettings(const char* name, Function function)
{
    benchmark::RegisterBenchmark(name, function)->UseManualTime()->Iterations(1)->Repetitions(51);
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
    handle(burst, camera, profile.logFile());
    const std::vector<std::string> burstLines = linesOf(profile.logFile());

    const auto* port = link->findChild<QSerialPort*>();
    const auto clicks = [](QPushButton* button, QEvent::Type type) {
        return [button, event = mouseEvent(type, *button)]() mutable {
            QCoreApplication::sendEvent(button, &event);
        };
    };
    measurePress("press/program", [&](State& state) {
        press(state, camera, *port, FrameSize, clicks(upButton, QEvent::MouseButtonPress),
              clicks(upButton, QEvent::MouseButtonRelease));
    });
    measurePress("press/floor", [&](State& state) {
        press(state, bareLine, bare.port, 0, clicks(bareButton, QEvent::MouseButtonPress),
              clicks(bareButton, QEvent::MouseButtonRelease));
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

    auto* settingsButton = program.find<QPushButton>("settingsBtn");
    auto* settingsDialog = program.find<QWidget>("AppSettingWin");
    measureSettings("settings/program",
                    [&](State& state) { openSettings(state, *settingsButton, *settingsDialog); });
    measureSettings("settings/floor", enumeratePorts);

    benchmark::RunSpecifiedBenchmarks();
    close(plainPort);
}
