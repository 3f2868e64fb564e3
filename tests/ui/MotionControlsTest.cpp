#include "support/Desk.h"
#include "support/Frames.h"
#include "support/HeldPointer.h"
#include "support/PaintCounter.h"
#include "ui/AppKeyRepeat.h"

#include <QAbstractButton>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QtTest>

namespace {

struct Control
{
    const char* button;
    const char* frame;
    const char* stopFrame;
    const char* logOfPress;
    const char* log;
};

constexpr Control Controls[] = {
    {"upBtn", Up, Stop, "MoveUp", "MoveUp MoveStop"},
    {"downBtn", Down, Stop, "MoveDown", "MoveDown MoveStop"},
    {"leftBtn", Left, Stop, "MoveLeft", "MoveLeft MoveStop"},
    {"rightBtn", Right, Stop, "MoveRight", "MoveRight MoveStop"},
    {"zoomInBtn", ZoomIn, ZoomStop, "ZoomIn", "ZoomIn ZoomStop"},
    {"zoomOutBtn", ZoomOut, ZoomStop, "ZoomOut", "ZoomOut ZoomStop"},
    {"homeBtn", Home, "", "Home", "Home"},
};

/** What ends the holding of a button before its user releases it. */
struct Interruption
{
    const char* name;
    bool needsTheFocus;
    void (*happen)(Desk& desk);
};

const Interruption Interruptions[] = {
    {"Tab", true, [](Desk&) { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); }},
    {"an arrow key", true, [](Desk&) { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up); }},
    {"a menu", true,
     [](Desk&) {
         QMenu menu;
         menu.addAction("Elsewhere");
         menu.popup({});
     }},
    {"another window", false,
     [](Desk&) {
         QWidget other;
         other.show();
         QVERIFY(QTest::qWaitForWindowActive(&other));
     }},
    {"the settings", false,
     [](Desk& desk) {
         desk.find<QAbstractButton>("settingsBtn")->click();
         QTRY_VERIFY(desk.find<QDialog>("AppSettingWin")->isActiveWindow());
     }},
    {"a box", false, [](Desk& desk) { desk.program->app.showMessage("Anything"); }},
    // A window manager may show a modal box without making it the active window.
    {"a box beside", false,
     [](Desk& desk) {
         QEvent blocked(QEvent::WindowBlocked);
         QApplication::sendEvent(desk.program->app.mainWin, &blocked);
     }},
    {"hiding", false, [](Desk& desk) { desk.program->app.mainWin->hide(); }},
    {"minimising", false, [](Desk& desk) { desk.program->app.mainWin->showMinimized(); }},
    {"closing", false, [](Desk& desk) { desk.program->app.mainWin->close(); }},
    {"Disconnect", false, [](Desk& desk) { desk.find<QAbstractButton>("connectBtn")->click(); }},
    {"the end", false, [](Desk& desk) { desk.program.reset(); }},
};

// The next frame, or none if none is expected, as after the release of Home.
QByteArray arrived(Desk& desk, const char* expected)
{
    return *expected ? desk.camera.nextFrame() : QByteArray();
}

QString log(const Desk& desk)
{
    return desk.profile.log().join(' ');
}

void press(QAbstractButton* button)
{
    QTest::mousePress(button, Qt::LeftButton);
}

void release(QAbstractButton* button)
{
    QTest::mouseRelease(button, Qt::LeftButton);
}

void pressSpace(QAbstractButton* button)
{
    button->setFocus();
    QTest::keyPress(button, Qt::Key_Space);
}

void releaseSpace(QAbstractButton* button)
{
    QTest::keyRelease(button, Qt::Key_Space);
}

// As on macOS, where a click gives a button no focus.
void pressWithoutFocus(QAbstractButton* button)
{
    button->setFocusPolicy(Qt::NoFocus);
    press(button);
}

/** The ways to hold a button. */
struct Hold
{
    const char* name;
    void (*begin)(QAbstractButton* button);
    void (*end)(QAbstractButton* button);
};

constexpr Hold Holds[] = {
    {"mouse", press, release},
    {"Space", pressSpace, releaseSpace},
    {"mouse without focus", pressWithoutFocus, release},
};

} // namespace

Q_DECLARE_METATYPE(Control)
Q_DECLARE_METATYPE(Interruption)
Q_DECLARE_METATYPE(Hold)

/** Steering the camera by holding a button. */
class MotionControlsTest : public QObject
{
    Q_OBJECT

private slots:

    void holdingAButtonMovesAndReleasingStops_data()
    {
        QTest::addColumn<Control>("control");
        QTest::addColumn<Hold>("hold");
        for (const Control& control : Controls) {
            for (const Hold& hold : Holds)
                QTest::addRow("%s %s", control.button, hold.name) << control << hold;
        }
    }

    void holdingAButtonMovesAndReleasingStops()
    {
        QFETCH(Control, control);
        QFETCH(Hold, hold);
        Desk desk;
        auto* button = desk.find<QAbstractButton>(control.button);

        hold.begin(button);
        QCOMPARE(arrived(desk, control.frame), QByteArray(control.frame));
        for (const QEvent::Type type : {QEvent::KeyRelease, QEvent::KeyPress}) {
            QKeyEvent repeated(type, Qt::Key_Space, Qt::NoModifier, " ", true);
            QApplication::sendEvent(button, &repeated);
        }
        QCOMPARE(log(desk), QString(control.logOfPress));

        hold.end(button);
        QCOMPARE(arrived(desk, control.stopFrame), QByteArray(control.stopFrame));
        QCOMPARE(log(desk), QString(control.log));
    }

    void anInterruptionStopsAHeldMotionOnce_data()
    {
        QTest::addColumn<Control>("control");
        QTest::addColumn<Hold>("hold");
        QTest::addColumn<Interruption>("interruption");
        // Each row has the next button. Home, the last, is left out: it has no stop.
        size_t row = 0;
        for (const Interruption& interruption : Interruptions) {
            for (const Hold& hold : Holds) {
                if (interruption.needsTheFocus && hold.begin == pressWithoutFocus)
                    continue;
                const Control& control = Controls[row++ % (std::size(Controls) - 1)];
                QTest::addRow("%s, %s, %s", interruption.name, hold.name, control.button)
                    << control << hold << interruption;
            }
        }
    }

    void anInterruptionStopsAHeldMotionOnce()
    {
        QFETCH(Control, control);
        QFETCH(Hold, hold);
        QFETCH(Interruption, interruption);
        Desk desk;
        auto* button = desk.find<QAbstractButton>(control.button);
        hold.begin(button);
        QCOMPARE(arrived(desk, control.frame), QByteArray(control.frame));

        interruption.happen(desk);
        QCOMPARE(arrived(desk, control.stopFrame), QByteArray(control.stopFrame));
        if (desk.program) {
            QVERIFY(!button->isDown());
            moveHeldPointer(button, button->rect().center());
            hold.end(button);
        }
        QCOMPARE(log(desk), QString(control.log));
    }

    // A Qt button emits no released() when the mouse is released outside it, even if a key holds it down.
    void aButtonHeldByMouseAndKeyStopsTheCameraBothTimes()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("upBtn");
        press(button);
        moveHeldPointer(button, {-20, -20});
        pressSpace(button);
        QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, {-20, -20});
        QTRY_COMPARE(log(desk), QString("MoveUp MoveStop MoveUp MoveStop"));
    }

    void aButtonThatLosesTheFocusEndsItsOwnMotionOnly()
    {
        Desk desk;
        pressSpace(desk.find<QAbstractButton>("upBtn"));
        auto* zoom = desk.find<QAbstractButton>("zoomInBtn");
        pressWithoutFocus(zoom);

        desk.find<QWidget>("presetEdit")->setFocus();
        QCOMPARE(log(desk), QString("MoveUp ZoomIn MoveStop"));
        release(zoom);
        QCOMPARE(log(desk), QString("MoveUp ZoomIn MoveStop ZoomStop"));
    }

    void draggingOffStopsAndDraggingBackMovesAgain_data() { controls(); }

    void draggingOffStopsAndDraggingBackMovesAgain()
    {
        QFETCH(Control, control);
        Desk desk;
        auto* button = desk.find<QAbstractButton>(control.button);
        press(button);

        moveHeldPointer(button, {-20, -20});
        QCOMPARE(log(desk), QString(control.log));
        moveHeldPointer(button, {-30, -30});
        moveHeldPointer(button, button->rect().center());
        release(button);
        for (const char* frame : {control.frame, control.stopFrame, control.frame, control.stopFrame})
            QCOMPARE(arrived(desk, frame), QByteArray(frame));
        QCOMPARE(log(desk), QString(control.log) + ' ' + control.log);
    }

    void inversionSwapsTheDirectionsOnly_data()
    {
        QTest::addColumn<bool>("invertPan");
        QTest::addColumn<bool>("invertTilt");
        QTest::addColumn<QStringList>("moves"); // up, down, left, right
        QTest::newRow("neither") << false << false
                                 << QStringList({"MoveUp", "MoveDown", "MoveLeft", "MoveRight"});
        QTest::newRow("tilt") << false << true
                              << QStringList({"MoveDown", "MoveUp", "MoveLeft", "MoveRight"});
        QTest::newRow("pan") << true << false << QStringList({"MoveUp", "MoveDown", "MoveRight", "MoveLeft"});
        QTest::newRow("both") << true << true << QStringList({"MoveDown", "MoveUp", "MoveRight", "MoveLeft"});
    }

    void inversionSwapsTheDirectionsOnly()
    {
        QFETCH(bool, invertPan);
        QFETCH(bool, invertTilt);
        QFETCH(QStringList, moves);
        Desk desk({{"invertpan", invertPan}, {"inverttilt", invertTilt}});

        for (const char* name : {"upBtn", "downBtn", "leftBtn", "rightBtn", "zoomInBtn", "zoomOutBtn"})
            QTest::mouseClick(desk.find<QAbstractButton>(name), Qt::LeftButton);
        QCOMPARE(log(desk), moves.join(" MoveStop ") + " MoveStop ZoomIn ZoomStop ZoomOut ZoomStop");
    }

    void inversionChangedWhileHoldingActsAtTheNextPress()
    {
        Desk desk;
        auto* up = desk.find<QAbstractButton>("upBtn");
        press(up);
        for (const char* check : {"invertTiltCheck", "invertPanCheck"})
            desk.find<QAbstractButton>(check)->click();
        release(up);
        QTest::mouseClick(up, Qt::LeftButton);
        QTest::mouseClick(desk.find<QAbstractButton>("leftBtn"), Qt::LeftButton);
        QCOMPARE(log(desk), QString("MoveUp MoveStop MoveDown MoveStop MoveRight MoveStop"));
    }

    void withoutAPortTheActionIsLoggedAndNothingSent()
    {
        Desk desk;
        desk.find<QAbstractButton>("connectBtn")->click();
        QStringList expected;
        for (const Control& control : Controls) {
            QTest::mouseClick(desk.find<QAbstractButton>(control.button), Qt::LeftButton);
            expected.append(control.log);
        }
        QCOMPARE(log(desk), expected.join(' '));
        QCOMPARE(desk.camera.pending(), QByteArray());
        QVERIFY(desk.user.boxes().isEmpty());
    }

    void theCameraHasItsCommandBeforeTheButtonIsDrawn_data() { controls(); }

    void theCameraHasItsCommandBeforeTheButtonIsDrawn()
    {
        QFETCH(Control, control);
        Desk desk;
        auto* button = desk.find<QAbstractButton>(control.button);
        button->setFocus();
        PaintCounter drawings(button);
        QTRY_VERIFY(drawings.count > 0);
        QCoreApplication::processEvents();

        QByteArray received;
        const auto act = [&](auto doIt, const QByteArray& frame) {
            received = "not drawn";
            // A byte is two digits, with a blank between it and the next.
            drawings.whenDrawn([&, bytes = (frame.size() + 1) / 3] { received = desk.camera.take(bytes); });
            doIt(button);
            QTRY_COMPARE(received, frame);
        };
        act(press, control.frame);
        act(release, control.stopFrame);
        act(pressSpace, control.frame);
        act(releaseSpace, control.stopFrame);
        act([](QAbstractButton* twice) { QTest::mouseDClick(twice, Qt::LeftButton); }, control.frame);
    }

    void aMoveOfThePointerDoesNotDelayDrawing()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("upBtn");
        press(button);
        QTRY_VERIFY(button->updatesEnabled());

        moveHeldPointer(button, button->rect().center() + QPoint(2, 2));
        QVERIFY(button->updatesEnabled());
    }

    void theConnectButtonIsDrawnBeforeItActs()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("connectBtn");
        PaintCounter drawings(button);
        QTRY_VERIFY(drawings.count > 0);
        press(button);
        drawings.count = 0;
        int drawingsAtRelease = -1;
        // The connection ends with the counter. clazy:excludeall=lambda-in-connect
        connect(button, &QAbstractButton::released, &drawings, [&] { drawingsAtRelease = drawings.count; });

        release(button);

        QCOMPARE(drawingsAtRelease, 1);
    }

    // On X11 the release of a key waits for a repeat. The press takes the focus from SET, which is clicked
    // then.
    void aPressThatABoxHasDelayedMovesNothing()
    {
        Desk desk;
        QWidget* window = desk.program->app.mainWin;
        const AppKeyRepeat repeats(window);
        const auto* up = desk.find<QAbstractButton>("upBtn");
        const QPoint place = up->mapTo(window, up->rect().center());
        desk.find<QLineEdit>("presetEdit")->setText("3");
        auto* set = desk.find<QAbstractButton>("setBtn");
        pressSpace(set);
        releaseSpace(set);

        // The press waits while the box is open, and the mouse is released meanwhile.
        desk.user.whenOpen([&] { QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, {}, place); });
        QTest::mousePress(window->windowHandle(), Qt::LeftButton, {}, place);

        QTRY_COMPARE(desk.user.boxes().size(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(log(desk), QString("Set Preset3"));
        QVERIFY(!up->isDown());
    }

    // Assistive software uses animateClick(), which releases Connect a moment later.
    void aMotionThatBeginsWhileConnectIsDownStopsBeforeThePortCloses()
    {
        Desk desk;
        auto* up = desk.find<QAbstractButton>("upBtn");
        desk.find<QAbstractButton>("connectBtn")->animateClick();
        pressWithoutFocus(up);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Up));

        QTRY_VERIFY(!desk.link()->isConnected());
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        release(up);
        QCOMPARE(log(desk), QString("MoveUp MoveStop"));
    }

private:
    static void controls()
    {
        QTest::addColumn<Control>("control");
        for (const Control& control : Controls)
            QTest::newRow(control.button) << control;
    }
};

QTEST_APPLESS_MAIN(MotionControlsTest)
#include "MotionControlsTest.moc"
