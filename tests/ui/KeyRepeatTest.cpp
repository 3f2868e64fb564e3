#include "support/Desk.h"
#include "support/PaintCounter.h"
#include "ui/AppKeyRepeat.h"

#include <QKeyEvent>
#include <QPushButton>

namespace {

using Next = std::function<void(Desk&)>;

/** A key event as it comes from X11, where the release and the press of a repeat have the same timestamp. */
void sendSpace(QWidget* button, QEvent::Type type, ulong timestamp)
{
    QKeyEvent event(type, Qt::Key_Space, Qt::NoModifier, " ");
    event.setTimestamp(timestamp);
    QApplication::sendEvent(button, &event);
}

void press(QWidget* button, ulong timestamp)
{
    sendSpace(button, QEvent::KeyPress, timestamp);
}

void release(QWidget* button, ulong timestamp)
{
    sendSpace(button, QEvent::KeyRelease, timestamp);
}

void repeat(QWidget* button, ulong timestamp)
{
    release(button, timestamp);
    press(button, timestamp);
}

} // namespace

Q_DECLARE_METATYPE(Next)

/** Holding the space bar on X11, where Qt takes repeats of a held key for real releases and presses. The soak
 * of held motions tries what else may happen meanwhile. */
class KeyRepeatTest : public QObject
{
    Q_OBJECT

private slots:

    void initTestCase()
    {
        Desk desk;
        QCOMPARE(QGuiApplication::platformName(), "xcb");
    }

    void repeatsOfAHeldKeyDoNothing_data()
    {
        QTest::addColumn<QStringList>("held");
        QTest::addColumn<QStringList>("released");
        QTest::newRow("upBtn") << QStringList("MoveUp") << QStringList({"MoveUp", "MoveStop"});
        QTest::newRow("zoomInBtn") << QStringList("ZoomIn") << QStringList({"ZoomIn", "ZoomStop"});
        QTest::newRow("homeBtn") << QStringList("Home") << QStringList("Home");
    }

    void repeatsOfAHeldKeyDoNothing()
    {
        QFETCH(QStringList, held);
        QFETCH(QStringList, released);
        Desk desk;
        auto* button = desk.find<QPushButton>(QTest::currentDataTag());

        press(button, 100);
        for (ulong timestamp = 760; timestamp < 1000; timestamp += 40)
            repeat(button, timestamp);
        QCOMPARE(desk.profile.log(), held);
        QVERIFY(button->isDown());

        release(button, 1000);
        QTRY_VERIFY(!button->isDown());
        QCOMPARE(desk.profile.log(), released);
    }

    void aHeldArrowKeyKeepsMovingTheFocus()
    {
        Desk desk;
        QWidget* button = desk.find<QPushButton>("leftBtn");
        button->setFocus();
        QApplication::setActiveWindow(button->window());
        const auto sendRight = [](QEvent::Type type, ulong timestamp) {
            QKeyEvent event(type, Qt::Key_Right, Qt::NoModifier);
            event.setTimestamp(timestamp);
            QApplication::sendEvent(QApplication::focusWidget(), &event);
        };
        QTRY_COMPARE(QApplication::focusWidget(), button);

        sendRight(QEvent::KeyPress, 100);
        QStringList focused{QApplication::focusWidget()->objectName()};
        for (const ulong timestamp : {760UL, 800UL}) {
            sendRight(QEvent::KeyRelease, timestamp);
            sendRight(QEvent::KeyPress, timestamp);
            focused.append(QApplication::focusWidget()->objectName());
        }

        QCOMPARE(focused, QStringList({"homeBtn", "rightBtn", "zoomInBtn"}));
    }

    void theCameraStopsBeforeTheReleasedButtonIsDrawn()
    {
        Desk desk;
        auto* button = desk.find<QPushButton>("upBtn");
        PaintCounter drawings(button);
        QTRY_VERIFY(drawings.count > 0);
        drawings.count = 0;
        press(button, 100);
        QTRY_VERIFY(drawings.count > 0);
        QCoreApplication::processEvents();
        drawings.count = 0;
        int drawingsAtRelease = -1;
        // The connection ends with the counter. clazy:excludeall=lambda-in-connect
        connect(button, &QPushButton::released, &drawings, [&] { drawingsAtRelease = drawings.count; });

        release(button, 200);

        QTRY_COMPARE(drawingsAtRelease, 0);
        QTRY_VERIFY(drawings.count > 0);
    }

    void repeatsDoNotRestartAMotionThatTheWindowHasEnded()
    {
        Desk desk;
        auto* button = desk.find<QPushButton>("upBtn");
        press(button, 100);
        QEvent left(QEvent::WindowDeactivate);
        QApplication::sendEvent(button, &left);

        repeat(button, 700);
        repeat(button, 740);
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void aReleaseWaits25MillisecondsForARepeat()
    {
        Desk desk;
        auto* button = desk.find<QPushButton>("upBtn");
        press(button, 100);
        release(button, 200);

        const auto* wait = desk.program->app.mainWin->findChild<AppKeyRepeat*>()->findChild<QTimer*>();
        QVERIFY(wait->isActive());
        QCOMPARE(wait->interval(), 25);
    }

    void aReleasedPresetIsRecalledWhateverComesNext_data()
    {
        QTest::addColumn<Next>("next");
        QTest::addColumn<QStringList>("log");
        QTest::newRow("Tab") << Next([](Desk&) { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); })
                             << QStringList("Call Preset2");
        QTest::newRow("the focus elsewhere")
            << Next([](Desk& desk) { desk.find<QWidget>("setBtn")->setFocus(); })
            << QStringList("Call Preset2");
        QTest::newRow("another button")
            << Next([](Desk& desk) { QTest::mousePress(desk.find<QPushButton>("leftBtn"), Qt::LeftButton); })
            << QStringList({"Call Preset2", "MoveLeft"});
        QTest::newRow("Space again") << Next([](Desk& desk) {
            press(desk.find<QWidget>("preset2Btn"), 210);
            release(desk.find<QWidget>("preset2Btn"), 220);
            desk.program.reset();
        }) << QStringList({"Call Preset2", "Call Preset2"});
        QTest::newRow("the end") << Next([](Desk& desk) { desk.program.reset(); })
                                 << QStringList("Call Preset2");
    }

    void aReleasedPresetIsRecalledWhateverComesNext()
    {
        QFETCH(Next, next);
        QFETCH(QStringList, log);
        Desk desk;
        auto* button = desk.find<QPushButton>("preset2Btn");
        button->setFocus();

        press(button, 100);
        release(button, 200);
        next(desk);

        QCOMPARE(desk.profile.log(), log);
    }
};

QTEST_APPLESS_MAIN(KeyRepeatTest)

#include "KeyRepeatTest.moc"
