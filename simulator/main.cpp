#include "CommandLine.h"
#include "Replay.h"
#include "SerialCamera.h"
#include "app/AppQuitSignals.h"
#include "view/CameraView.h"

#include <QApplication>
#include <QCoreApplication>
#include <QIcon>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

namespace {

// Qt aborts if there is no display. Print a message and exit instead.
void failWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString&)
{
    if (type == QtFatalMsg)
        fail("--view needs a display, and there is none", EXIT_FAILURE);
}

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool withView)
{
    if (!withView)
        return std::make_unique<QCoreApplication>(argc, argv);
#if QT_VERSION_MAJOR < 6
    // Qt 6 always scales.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
#endif
    const QtMessageHandler usual = qInstallMessageHandler(failWithoutDisplay);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);
    QGuiApplication::setWindowIcon(QIcon(":/icon/128"));
    return application;
}

void printLine(const QString& line)
{
    QTextStream(stdout) << line << '\n';
}

int replay(const CommandLine::Replay& wanted)
{
    Dialogue dialogue;
    const QString fault = dialogue.read(wanted.dialogue);
    if (!fault.isEmpty())
        fail(fault, exitUsage);
    if (!dialogue.changes.isEmpty() && !wanted.mayChange) {
        const QString reason("the dialogue %1 changes %2; --allow-changes holds it all the same");
        fail(reason.arg(dialogue.name, dialogue.changes), exitUsage);
    }
    Replay replay(dialogue);
    QObject::connect(&replay, &Replay::reported, printLine);
    QObject::connect(&replay, &Replay::finished, QCoreApplication::quit);
    const QString failure = replay.start(wanted.port, wanted.baudRate);
    if (!failure.isEmpty())
        fail(failure, exitUsage);
    QCoreApplication::exec();
    if (replay.interrupt())
        fail("interrupted", EXIT_FAILURE);
    if (!replay.failure().isEmpty())
        fail(replay.failure(), exitUsage);
    return replay.differences() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char* argv[])
{
    const bool wantsView =
        std::any_of(argv, argv + argc, [](const char* word) { return std::strcmp(word, "--view") == 0; });
    const auto application = makeApplication(argc, argv, wantsView);
    QCoreApplication::setApplicationName("vantrel-camera");
    QCoreApplication::setApplicationVersion(VANTREL_VERSION);
    const CommandLine settings = readCommandLine(*application);
    // Signals end the event loop, so that the link is removed and a dialogue stops the camera.
    const AppQuitSignals quitSignals(nullptr);
    if (settings.replay)
        return replay(*settings.replay);

    SerialCamera camera(settings.camera, settings.faults, settings.link);
    QObject::connect(&camera, &SerialCamera::reported, application.get(), printLine);
    std::optional<CameraView> view;
    if (wantsView) {
        view.emplace([&]() -> const ViscaCamera& { return camera.present(); });
        QObject::connect(&camera, &SerialCamera::happened, &*view, &CameraView::take);
    }
    const QString failure = camera.plugIn();
    if (!failure.isEmpty())
        fail(failure, exitUsage);
    if (view) {
        QObject::connect(qGuiApp, &QGuiApplication::lastWindowClosed, [] { printLine("Window closed"); });
        view->show();
    }

    const auto comeBack = [&camera] {
        const QString reason = camera.plugIn();
        if (reason.isEmpty())
            return;
        complain(reason);
        QCoreApplication::exit(EXIT_FAILURE);
    };
    const auto hangUp = [&] {
        camera.unplug();
        QTimer::singleShot(settings.comeBackAfter, &camera, comeBack);
    };
    if (settings.hangUpAfter)
        QTimer::singleShot(*settings.hangUpAfter, &camera, hangUp);
    return QCoreApplication::exec();
}
