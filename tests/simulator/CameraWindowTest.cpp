// The window of the simulated camera on a display with a window manager, closed as a user closes it.

#include "support/CameraProgram.h"

#include <QtTest>

namespace {

constexpr int patienceMs = 20000;

} // namespace

class CameraWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void theCameraEndsWithItsWindow();
};

void CameraWindowTest::theCameraEndsWithItsWindow()
{
    CameraProgram camera({"--view"});
    const QStringList close{"search",         "--onlyvisible", "--name", "^Simulated camera$",
                            "windowactivate", "key",           "alt+F4"};
    // Try again until it works: the window may not be open yet, or the window manager may not take keys yet.
    QVERIFY(QTest::qWaitFor(
        [&] {
            QProcess::execute("xdotool", close);
            return camera.process.state() == QProcess::NotRunning;
        },
        patienceMs));

    QCOMPARE(camera.exitStatus(), 0);
    QCOMPARE(camera.lines().constFirst(), "Camera at " + camera.path());
    QCOMPARE(camera.lines().constLast(), QString("Window closed"));
}

QTEST_GUILESS_MAIN(CameraWindowTest)
#include "CameraWindowTest.moc"
