// Where the windows are on a display with a window manager, which gives them frames.

#include "support/Desk.h"

#include <QProcess>
#include <QPushButton>

namespace {

/** Where the display has a window's content: the answer that counts, since Qt only assumes a place at first.
 */
QPoint placeOnScreen(const QWidget* window)
{
    QProcess xdotool;
    xdotool.start("xdotool", {"getwindowgeometry", "--shell", QString::number(window->winId())});
    if (!xdotool.waitForFinished())
        return {};
    const QString answer = QString::fromLatin1(xdotool.readAll());
    const auto number = [&answer](const char* name) {
        return answer.section(QString("\n%1=").arg(name), 1).section('\n', 0, 0).toInt();
    };
    return {number("X"), number("Y")};
}

} // namespace

class WindowPlacesTest : public QObject
{
    Q_OBJECT

private slots:
    void theSettingsOpenBesideTheControllerWhereverItIs();
};

void WindowPlacesTest::theSettingsOpenBesideTheControllerWhereverItIs()
{
    Desk desk;
    QWidget* controller = desk.program->app.mainWin;
    auto* settings = desk.find<QWidget>("AppSettingWin");
    QVERIFY(QTest::qWaitForWindowActive(controller));

    for (const QPoint& place : {QPoint(300, 100), QPoint(480, 220), QPoint(60, 160)}) {
        // As a user moves it: Qt hears of it from the window manager.
        QProcess::execute("xdotool", {"windowmove", QString::number(controller->winId()),
                                      QString::number(place.x()), QString::number(place.y())});
        QTRY_COMPARE(controller->geometry().topLeft(), place);

        desk.find<QPushButton>("settingsBtn")->click();
        QVERIFY(QTest::qWaitForWindowActive(settings));
        const QPoint beside(controller->frameGeometry().width(), 0);
        QCOMPARE(placeOnScreen(settings), placeOnScreen(controller) + beside);

        settings->close();
        QVERIFY(QTest::qWaitForWindowActive(controller));
    }
}

QTEST_APPLESS_MAIN(WindowPlacesTest)

#include "WindowPlacesTest.moc"
