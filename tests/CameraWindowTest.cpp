// The window of the simulated camera on a display with a window manager, closed as a user closes it.

#include "support/CameraProgram.h"

#include <QtTest>

class CameraWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void theCameraEndsWithItsWindow();
};

void CameraWindowTest::theCameraEndsWithItsWindow()
{
    CameraProgram camera({"--view"});
    const QStringList activate{"search",         "--sync", "--onlyvisible", "--name", "^Simulated camera$",
                               "windowactivate", "--sync"};
    QCOMPARE(QProcess::execute("xdotool", activate), 0);
    QCOMPARE(QProcess::execute("xdotool", {"key", "alt+F4"}), 0);
    QCOMPARE(camera.exitStatus(), 0);
    QCOMPARE(camera.lines(), QStringList({"Camera at " + camera.path(), "Window closed"}));
}

QTEST_GUILESS_MAIN(CameraWindowTest)
#include "CameraWindowTest.moc"
