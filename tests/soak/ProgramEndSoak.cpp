#include "soak/Soak.h"
#include "support/Desk.h"
#include "support/Frames.h"
#include "system/window/Desktop.h"
#include "system/window/Window.h"

#include <QProcess>
#include <QPushButton>

#include <csignal>

namespace {

constexpr char MainWindowTitle[] = "Vantrel Controller";

/** Where the Up button is in the main window. */
QPoint placeOfUp()
{
    const Desk desk;
    const auto* button = desk.find<QPushButton>("upBtn");
    // The window widens for the text in its status bar once the event loop runs.
    const auto isWideEnough = [window = button->window()] {
        return window->width() >= window->minimumSizeHint().width();
    };
    if (!QTest::qWaitFor(isWideEnough))
        qFatal("the window does not take its size");
    return button->mapTo(button->window(), button->rect().center());
}

} // namespace

/** The built program ends on a screen while the mouse holds its Up button. */
class ProgramEndSoak : public QObject
{
    Q_OBJECT

private slots:

    void initTestCase() { up = placeOfUp(); }

    void theProgramStopsTheCameraBeforeItEnds_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("interrupted") << SIGINT;
        QTest::newRow("terminated") << SIGTERM;
        QTest::newRow("hung up") << SIGHUP;
    }

    void theProgramStopsTheCameraBeforeItEnds()
    {
        QFETCH(int, number);
        const int count = rounds(1, 30);
        for (int round = 0; round < count; ++round) {
            PrivateProfile profile;
            CameraEnd camera;
            profile.store("comport", camera.portName());
            QProcess process;
            process.setProcessChannelMode(QProcess::MergedChannels);
            process.start(VANTREL_PATH, QStringList());
            const Window window(MainWindowTitle);
            window.activate();
            window.pointAt(up);
            desktop().pressMouse();
            QCOMPARE(camera.nextFrame(), QByteArray(Up));

            QCOMPARE(kill(static_cast<pid_t>(process.processId()), number), 0);
            QVERIFY(process.waitForFinished());
            desktop().releaseMouse();
            QCOMPARE(process.exitStatus(), QProcess::NormalExit);
            QCOMPARE(process.exitCode(), 0);
            QCOMPARE(camera.pending(), QByteArray(Stop));
            QCOMPARE(profile.log(), QStringList({"MoveUp", "MoveStop"}));
        }
        qInfo("the running program %s with a button held: %d times, one stop each", QTest::currentDataTag(),
              count);
    }

private:
    QPoint up;
};

QTEST_APPLESS_MAIN(ProgramEndSoak)
#include "ProgramEndSoak.moc"
