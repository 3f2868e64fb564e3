#include "ProcessMemory.h"
#include "PseudoTerminal.h"
#include "support/PrivateProfile.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QProcess>
#include <QThread>

#include <chrono>

namespace {

using benchmark::State;
using Clock = std::chrono::steady_clock;

// The memory is read long after the first frame, so that it includes what a program creates later.
constexpr unsigned long SettleMs = 200;

/** Measures from the start of the process until the content of its first window, with this title, is on the
 * screen. */
void start(State& state, const char* path, const char* title)
{
    double memory = 0;
    for ([[maybe_unused]] auto _ : state) {
        QProcess process;
        const auto begin = Clock::now();
        process.start(path, QStringList());
        while (!process.canReadLine() && process.waitForReadyRead()) {
        }
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());

        const QByteArray shown = process.readLine().trimmed();
        if (shown != title)
            qFatal("%s shows \"%s\" first", path, shown.constData());
        QThread::msleep(SettleMs);
        memory = processMemory(process.processId(), "VmHWM");
        process.terminate();
        process.waitForFinished();
    }
    state.counters["peak_memory"] = memory;
}

void measure(const char* name, const char* path, const char* title)
{
    benchmark::RegisterBenchmark(name, start, path, title)->UseManualTime()->Iterations(1)->Repetitions(31);
}

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);

    PrivateProfile profile;
    PseudoTerminal camera;
    profile.store("comport", camera.path());
    qputenv("QT_PLUGIN_PATH", PLUGIN_PATH);
    qputenv("QT_QPA_GENERIC_PLUGINS", "FirstFrame");

    measure("start/program", VANTREL_PATH, "Vantrel Controller");
    measure("start/floor", EMPTY_WINDOW_PATH, "Empty window");

    QCoreApplication app(argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
