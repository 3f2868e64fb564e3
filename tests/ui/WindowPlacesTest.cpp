// Where the windows are on a display with a window manager, which gives them frames.

#include "support/Desk.h"

#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

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

/** Moves a window's content there as a user does: Qt hears of it from the window manager. */
bool move(const QWidget* window, QPoint place)
{
    QProcess::execute("xdotool", {"windowmove", QString::number(window->winId()), QString::number(place.x()),
                                  QString::number(place.y())});
    return QTest::qWaitFor([=] { return window->geometry().topLeft() == place; });
}

int frameWidth(const QWidget* window)
{
    return window->frameGeometry().width() - window->width();
}

/** The controller and its settings, which have the same frame. */
class Windows
{
public:
    Windows()
    {
        static_cast<void>(QTest::qWaitForWindowActive(controller));
        // A busy display is still at the width that the window had before its status was written.
        static_cast<void>(
            QTest::qWaitFor([this] { return controller->width() >= controller->minimumSizeHint().width(); }));
    }

    bool openSettings()
    {
        desk.find<QPushButton>("settingsBtn")->click();
        return QTest::qWaitForWindowActive(settings);
    }

    int settingsWidth() const { return settings->width() + frameWidth(controller); }

    /** The controller's place from which there is just room for the settings at its right. */
    QPoint lastPlaceWithRoomAtTheRight() const
    {
        const int right = controller->windowHandle()->screen()->availableGeometry().right() + 1;
        const QRect frame = controller->frameGeometry();
        const QPoint content = controller->geometry().topLeft() - frame.topLeft();
        return content + QPoint(right - settingsWidth() - frame.width(), 100);
    }

    Desk desk;
    QWidget* controller = desk.program->app.mainWin;
    QWidget* settings = desk.find<QWidget>("AppSettingWin");
};

} // namespace

class WindowPlacesTest : public QObject
{
    Q_OBJECT

private slots:

    void theSettingsOpenBesideTheControllerWhereverItIs_data()
    {
        QTest::addColumn<QPoint>("place");
        QTest::newRow("in the middle") << QPoint(480, 220);
        QTest::newRow("at the left") << QPoint(60, 160);
        QTest::newRow("just with room at the right") << Windows().lastPlaceWithRoomAtTheRight();
    }

    void theSettingsOpenBesideTheControllerWhereverItIs()
    {
        QFETCH(QPoint, place);
        Windows windows;
        QVERIFY(move(windows.controller, place));
        QVERIFY(windows.openSettings());
        const QPoint beside(windows.controller->frameGeometry().width(), 0);
        QTRY_COMPARE(placeOnScreen(windows.settings), placeOnScreen(windows.controller) + beside);
    }

    void withoutRoomAtTheRightTheSettingsOpenAtTheLeft()
    {
        Windows windows;
        QVERIFY(move(windows.controller, windows.lastPlaceWithRoomAtTheRight() + QPoint(1, 0)));
        QVERIFY(windows.openSettings());
        const QPoint beside(windows.settingsWidth(), 0);
        QTRY_COMPARE(placeOnScreen(windows.settings), placeOnScreen(windows.controller) - beside);
    }

    void theSettingsStayWhereTheUserHasMovedThem()
    {
        Windows windows;
        QVERIFY(windows.openSettings());
        QVERIFY(move(windows.settings, {40, 300}));
        const QPoint place = placeOnScreen(windows.settings);

        windows.desk.find<QPushButton>("settingsBtn")->click();
        QCOMPARE(placeOnScreen(windows.settings), place);

        // Twice, for a place that shifts by the frame shifts at each opening.
        for (int opening = 0; opening < 2; ++opening) {
            windows.settings->close();
            QVERIFY(QTest::qWaitForWindowActive(windows.controller));
            QVERIFY(windows.openSettings());
            QTRY_COMPARE(placeOnScreen(windows.settings), place);
        }
    }
};

QTEST_APPLESS_MAIN(WindowPlacesTest)

#include "WindowPlacesTest.moc"
