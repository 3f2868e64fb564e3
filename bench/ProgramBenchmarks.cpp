#include "BareWindow.h"
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

// Few enough to fit into the buffers of the line, and many enough that the pause between two batches hardly
// counts.
constexpr int CommandsPerBatch = 100;

/** Runs the event loop until this many bytes have arrived at the far end of the line, and reads them. */
void take(PseudoTerminal& line, int count)
{
    for (int arrived = line.read().size(); arrived < count; arrived += line.read().size())
        QCoreApplication::processEvents();
}

/** The event of a press or release of the left mouse button in the middle of the widget. */
QMouseEvent mouseEvent(QEvent::Type type, const QWidget& widget)
{
    const QPoint middle = widget.rect().center();
    const auto held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
    return {type, middle, widget.mapToGlobal(middle), Qt::LeftButton, held, Qt::NoModifier};
}

/** Measures from `press` until the whole frame from `port` can be read at the far end of the line. */
template <class Press, class Release>
void press(State& state, PseudoTerminal& line, const QSerialPort& port, int bytesOnRelease, Press press,
           Release release)
{
    for ([[maybe_unused]] auto _ : state) {
        const auto begin = Clock::now();
        press();
        // Run the event loop only until the frame is sent. Later drawing is not measured.
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

/** Measures `operation`, which sends one frame, and the event processing in which `port` may still have to
 * write it. */
template <class Operation>
void command(State& state, PseudoTerminal& line, const QSerialPort& port, Operation operation)
{
    for ([[maybe_unused]] auto _ : state) {
        for (int i = 0; i < CommandsPerBatch; ++i) {
            operation();
            do
                QCoreApplication::processEvents();
            while (port.bytesToWrite() > 0);
        }
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

/** The floor of the activity log: opens the file for appending, writes the entry and closes the file, with
 * plain system calls. */
void writePlainLogLine(const std::string& path, const std::string& line)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file == -1)
        return;
    static_cast<void>(!write(file, line.data(), line.size()));
    close(file);
}

/** Measures `handleBurst`. Removes the log before each run. */
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

/** Measures from the button's signal until the dialog has listed the ports and asked the display to show it.
 */
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

// Repeat short runs: those of the program and of its floor are mixed in random order, so that other work on
// the machine slows both equally.
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
    measureCommand("command/program",
                   [&](State& state) { command(state, camera, *port, [&] { link->moveUp(); }); });
    measureCommand("command/floor", [&](State& state) {
        command(state, plainLine, *port, [&] {
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
