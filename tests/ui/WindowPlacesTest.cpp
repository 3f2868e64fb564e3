#include "support/Desk.h"

#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QWindow>

namespace {

/** The place of a window's content on the display. Qt's own answer is only a guess at first. */
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

/** Moves a window's content as a user does, so that Qt learns of it from the window manager. */
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

/** The main window and the settings, which have frames of the same width. */
class Windows
{
public:
    Windows()
    {
        static_cast<void>(QTest::qWaitForWindowActive(controller));
        // On a busy display the window may still have its width from before the status was set.
        static_cast<void>(
            QTest::qWaitFor([this] { return controller->width() >= controller->minimumSizeHint().width(); }));
    }

    bool openSettings()
    {
        desk.find<QPushButton>("settingsBtn")->click();
        return QTest::qWaitForWindowActive(settings);
    }

    int settingsWidth() const { return settings->width() + frameWidth(controller); }

    /** The place of the main window from which there is just room for the settings at its right. */
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

/** Where the settings open, on a display with a window manager. */
class WindowPlacesTest : public QObject
{
    Q_OBJECT

private slots:

    void theSettingsOpenAtTheRightOfTheMainWindow_data()
    {
        QTest::addColumn<QPoint>("place");
        QTest::newRow("in the middle") << QPoint(480, 220);
        QTest::newRow("at the left") << QPoint(60, 160);
        QTest::newRow("just with room at the right") << Windows().lastPlaceWithRoomAtTheRight();
    }

    void theSettingsOpenAtTheRightOfTheMainWindow()
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

        // Open it twice: an error of the frame's width adds up.
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
