#include "support/Desk.h"
#include "support/Frames.h"
#include "support/PaintCounter.h"
#include "ui/AppKeyRepeat.h"

#include <QAbstractButton>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QtTest>

namespace {

struct Control
{
    const char* button;
    const char* frame;
    const char* logLine;
    const char* stopFrame;
    const char* stopLogLine;
};

constexpr Control Controls[] = {
    {"upBtn", Up, "MoveUp", Stop, "MoveStop"},
    {"downBtn", Down, "MoveDown", Stop, "MoveStop"},
    {"leftBtn", Left, "MoveLeft", Stop, "MoveStop"},
    {"rightBtn", Right, "MoveRight", Stop, "MoveStop"},
    {"zoomInBtn", ZoomIn, "ZoomIn", ZoomStop, "ZoomStop"},
    {"zoomOutBtn", ZoomOut, "ZoomOut", ZoomStop, "ZoomStop"},
};

void moveHeldPointer(QWidget* widget, const QPoint& position)
{
    QMouseEvent move(QEvent::MouseMove, position, widget->mapToGlobal(position), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
}

/** Presses a motion button and takes the frame that starts the motion off the line. */
class HeldButton
{
public:
    HeldButton(Desk& desk, const char* objectName)
        : button(desk.find<QAbstractButton>(objectName))
    {
        QTest::mousePress(button, Qt::LeftButton);
        startFrame = desk.camera.nextFrame();
    }

    void release() const { QTest::mouseRelease(button, Qt::LeftButton); }

    QAbstractButton* button;
    QByteArray startFrame;
};

} // namespace

Q_DECLARE_METATYPE(Control)

/** Steering the camera by holding a button. */
class MotionControlsTest : public QObject
{
    Q_OBJECT

private slots:

    void holdingAButtonMovesAndReleasingStops_data() { controls(); }

    void holdingAButtonMovesAndReleasingStops()
    {
        QFETCH(Control, control);
        Desk desk;
        auto* button = desk.find<QAbstractButton>(control.button);

        QTest::mousePress(button, Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.frame));
        QCOMPARE(desk.profile.log(), QStringList({control.logLine}));

        QTest::mouseRelease(button, Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
    }

    void holdingTheSpaceKeyMovesAndReleasingStops_data() { controls(); }

    void holdingTheSpaceKeyMovesAndReleasingStops()
    {
        QFETCH(Control, control);
        Desk desk;
        auto* button = desk.find<QAbstractButton>(control.button);
        button->setFocus();

        QTest::keyPress(button, Qt::Key_Space);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.frame));
        QTest::keyRelease(button, Qt::Key_Space);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
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

        const auto act = [&](auto press, const QByteArray& frame) {
            QByteArray received;
            // A frame is of one length with its hexadecimal digits and the blanks between them.
            drawings.whenDrawn([&] { received = desk.camera.take((frame.size() + 1) / 3); });
            press();
            QTRY_COMPARE(received, frame);
        };
        act([button] { QTest::mousePress(button, Qt::LeftButton); }, control.frame);
        act([button] { QTest::mouseRelease(button, Qt::LeftButton); }, control.stopFrame);
        act([button] { QTest::keyPress(button, Qt::Key_Space); }, control.frame);
        act([button] { QTest::keyRelease(button, Qt::Key_Space); }, control.stopFrame);
        act([button] { QTest::mouseDClick(button, Qt::LeftButton); }, control.frame);
    }

    void homeIsSentBeforeItsButtonIsDrawn()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("homeBtn");
        PaintCounter drawings(button);
        QTRY_VERIFY(drawings.count > 0);
        QCoreApplication::processEvents();

        QByteArray received;
        drawings.whenDrawn([&] { received = desk.camera.take(5); });
        QTest::mousePress(button, Qt::LeftButton);
        QTRY_COMPARE(received, QByteArray(Home));
    }

    void aPointerThatOnlyMovesPutsNoDrawingOff()
    {
        Desk desk;
        const HeldButton held(desk, "upBtn");
        QTRY_VERIFY(held.button->updatesEnabled());

        moveHeldPointer(held.button, held.button->rect().center() + QPoint(2, 2));
        QVERIFY(held.button->updatesEnabled());
    }

    void connectWhichIsSlowToActIsDrawnFirst()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("connectBtn");
        PaintCounter drawings(button);
        QTRY_VERIFY(drawings.count > 0);
        QTest::mousePress(button, Qt::LeftButton);
        drawings.count = 0;
        int drawingsAtRelease = -1;
        // The connection ends with the counter. clazy:excludeall=lambda-in-connect
        connect(button, &QAbstractButton::released, &drawings, [&] { drawingsAtRelease = drawings.count; });

        QTest::mouseRelease(button, Qt::LeftButton);

        QCOMPARE(drawingsAtRelease, 1);
    }

    void aHeldKeyThatRepeatsSendsNothingMore_data() { controls(); }

    void aHeldKeyThatRepeatsSendsNothingMore()
    {
        QFETCH(Control, control);
        Desk desk;
        auto* button = desk.find<QAbstractButton>(control.button);
        button->setFocus();

        QTest::keyPress(button, Qt::Key_Space);
        for (const QEvent::Type type : {QEvent::KeyRelease, QEvent::KeyPress}) {
            QKeyEvent repeated(type, Qt::Key_Space, Qt::NoModifier, " ", true);
            QApplication::sendEvent(button, &repeated);
        }
        QCOMPARE(desk.profile.log(), QStringList({control.logLine}));
    }

    void aHeldButtonDoesNotRepeat_data() { controls(); }

    void aHeldButtonDoesNotRepeat()
    {
        QFETCH(Control, control);
        Desk desk;
        QVERIFY(!desk.find<QAbstractButton>(control.button)->autoRepeat());
        QVERIFY(!desk.find<QAbstractButton>("homeBtn")->autoRepeat());
    }

    void aDoubleClickMovesAndStopsTwice()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("rightBtn");

        QTest::mouseClick(button, Qt::LeftButton);
        QTest::mouseDClick(button, Qt::LeftButton);
        QTest::mouseRelease(button, Qt::LeftButton);
        QCOMPARE(desk.profile.log(), QStringList({"MoveRight", "MoveStop", "MoveRight", "MoveStop"}));
    }

    void onlyTheLeftMouseButtonMoves()
    {
        Desk desk;
        for (const Control& control : Controls) {
            QTest::mouseClick(desk.find<QAbstractButton>(control.button), Qt::RightButton);
            QTest::mouseClick(desk.find<QAbstractButton>(control.button), Qt::MiddleButton);
        }
        QCOMPARE(desk.profile.log(), QStringList());
    }

    void draggingOffStopsAndDraggingBackMovesAgain_data() { controls(); }

    void draggingOffStopsAndDraggingBackMovesAgain()
    {
        QFETCH(Control, control);
        Desk desk;
        const HeldButton held(desk, control.button);

        moveHeldPointer(held.button, {-20, -20});
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        moveHeldPointer(held.button, {-30, -30});
        moveHeldPointer(held.button, held.button->rect().center());
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.frame));
        held.release();
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        QCOMPARE(desk.profile.log(),
                 QStringList({control.logLine, control.stopLogLine, control.logLine, control.stopLogLine}));
    }

    void releasingOffTheButtonSendsNoSecondStop()
    {
        Desk desk;
        const HeldButton held(desk, "upBtn");

        moveHeldPointer(held.button, {-20, -20});
        QTest::mouseRelease(held.button, Qt::LeftButton, Qt::NoModifier, {-20, -20});
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void inversionSwapsTheDirections_data()
    {
        QTest::addColumn<bool>("invertPan");
        QTest::addColumn<bool>("invertTilt");
        QTest::addColumn<QByteArrayList>("frames"); // up, down, left, right
        QTest::newRow("neither") << false << false << QByteArrayList({Up, Down, Left, Right});
        QTest::newRow("tilt") << false << true << QByteArrayList({Down, Up, Left, Right});
        QTest::newRow("pan") << true << false << QByteArrayList({Up, Down, Right, Left});
        QTest::newRow("both") << true << true << QByteArrayList({Down, Up, Right, Left});
    }

    void inversionSwapsTheDirections()
    {
        QFETCH(bool, invertPan);
        QFETCH(bool, invertTilt);
        QFETCH(QByteArrayList, frames);
        Desk desk({{"invertpan", invertPan}, {"inverttilt", invertTilt}});

        QByteArrayList sent;
        for (const char* name : {"upBtn", "downBtn", "leftBtn", "rightBtn"}) {
            const HeldButton held(desk, name);
            sent.append(held.startFrame);
            held.release();
            QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        }
        QCOMPARE(sent, frames);
    }

    void zoomIsNeverInverted()
    {
        Desk desk({{"invertpan", true}, {"inverttilt", true}});
        QTest::mouseClick(desk.find<QAbstractButton>("zoomInBtn"), Qt::LeftButton);
        QTest::mouseClick(desk.find<QAbstractButton>("zoomOutBtn"), Qt::LeftButton);

        QCOMPARE(desk.camera.nextFrame(), QByteArray(ZoomIn));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(ZoomStop));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(ZoomOut));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(ZoomStop));
        QCOMPARE(desk.profile.log(), QStringList({"ZoomIn", "ZoomStop", "ZoomOut", "ZoomStop"}));
    }

    void inversionChangedWhileHoldingActsAtTheNextPress_data()
    {
        QTest::addColumn<QByteArray>("button");
        QTest::addColumn<QByteArray>("check");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("tilt") << QByteArray("upBtn") << QByteArray("invertTiltCheck") << QByteArray(Up)
                              << QByteArray(Down);
        QTest::newRow("pan") << QByteArray("leftBtn") << QByteArray("invertPanCheck") << QByteArray(Left)
                             << QByteArray(Right);
    }

    void inversionChangedWhileHoldingActsAtTheNextPress()
    {
        QFETCH(QByteArray, button);
        QFETCH(QByteArray, check);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        Desk desk;

        const HeldButton held(desk, button);
        QCOMPARE(held.startFrame, before);
        desk.find<QAbstractButton>(check)->click();
        held.release();
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));

        const HeldButton heldAgain(desk, button);
        QCOMPARE(heldAgain.startFrame, after);
    }

    void homeGoesHomeOnceOnThePress()
    {
        Desk desk;
        const HeldButton held(desk, "homeBtn");
        QCOMPARE(held.startFrame, QByteArray(Home));

        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"Home"}));
        QCOMPARE(desk.camera.pending(), QByteArray());
    }

    void homeGoesHomeOnceWithTheSpaceKey()
    {
        Desk desk;
        QTest::keyClick(desk.find<QAbstractButton>("homeBtn"), Qt::Key_Space);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Home));
        QCOMPARE(desk.profile.log(), QStringList({"Home"}));
    }

    void leavingHomeHeldSendsNothing()
    {
        Desk desk;
        const HeldButton held(desk, "homeBtn");
        desk.find<QWidget>("rightBtn")->setFocus();
        desk.program->app.mainWin->close();
        QCOMPARE(desk.profile.log(), QStringList({"Home"}));
    }

    void withoutAPortTheActionIsLoggedAndNothingSent_data() { controls(); }

    void withoutAPortTheActionIsLoggedAndNothingSent()
    {
        QFETCH(Control, control);
        Desk desk;
        QTest::mouseClick(desk.find<QAbstractButton>("connectBtn"), Qt::LeftButton);

        QTest::mouseClick(desk.find<QAbstractButton>(control.button), Qt::LeftButton);
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
        QTest::mouseClick(desk.find<QAbstractButton>("connectBtn"), Qt::LeftButton);
        QTest::mouseClick(desk.find<QAbstractButton>("preset1Btn"), Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), recallPreset(1));
        QVERIFY(desk.user.boxes().isEmpty());
    }

    // A motion ends with exactly one stop, whatever takes the button away from the user.

    void movingTheFocusStopsAHeldKey_data() { controls(); }

    void movingTheFocusStopsAHeldKey()
    {
        QFETCH(Control, control);
        Desk desk;
        auto* button = desk.find<QAbstractButton>(control.button);
        button->setFocus();
        QTest::keyPress(button, Qt::Key_Space);

        QTest::keyClick(button, Qt::Key_Tab);
        QVERIFY(!button->hasFocus());
        QVERIFY(!button->isDown());
        QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Space);
        QTest::keyRelease(button, Qt::Key_Space);

        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.frame));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
    }

    void anArrowKeyStopsAHeldKey()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("leftBtn");
        button->setFocus();
        QTest::keyPress(button, Qt::Key_Space);

        QTest::keyClick(button, Qt::Key_Right);
        QVERIFY(!button->hasFocus());
        QCOMPARE(desk.profile.log(), QStringList({"MoveLeft", "MoveStop"}));
    }

    void escapeStopsAHeldKey()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("upBtn");
        button->setFocus();
        QTest::keyPress(button, Qt::Key_Space);

        QTest::keyClick(button, Qt::Key_Escape);
        QTest::keyRelease(button, Qt::Key_Space);
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    // On macOS a click gives a button no focus, so another may lose it meanwhile.
    void aButtonThatLosesTheFocusEndsItsOwnMotionOnly()
    {
        Desk desk;
        auto* zoom = desk.find<QAbstractButton>("zoomInBtn");
        zoom->setFocusPolicy(Qt::NoFocus);
        auto* up = desk.find<QAbstractButton>("upBtn");
        up->setFocus();
        QTest::keyPress(up, Qt::Key_Space);
        const HeldButton held(desk, "zoomInBtn");

        desk.find<QWidget>("presetEdit")->setFocus();
        QVERIFY(zoom->isDown());
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "ZoomIn", "MoveStop"}));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "ZoomIn", "MoveStop", "ZoomStop"}));
    }

    void aMenuThatOpensStopsAHeldKey()
    {
        Desk desk;
        auto* button = desk.find<QAbstractButton>("upBtn");
        button->setFocus();
        QTest::keyPress(button, Qt::Key_Space);
        QMenu menu;
        menu.addAction("Elsewhere");

        menu.popup(QPoint());

        QCOMPARE(desk.camera.nextFrame(), QByteArray(Up));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
    }

    void movingTheFocusStopsAHeldMouseButton()
    {
        Desk desk;
        const HeldButton held(desk, "upBtn");

        QTest::keyClick(held.button, Qt::Key_Tab);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void theMouseThatStillHoldsTheButtonStartsNothingAnew()
    {
        Desk desk;
        const HeldButton held(desk, "upBtn");
        QTest::keyClick(held.button, Qt::Key_Tab);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));

        moveHeldPointer(held.button, held.button->rect().center() + QPoint(2, 2));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void pressingAnotherButtonStopsAHeldKeyFirst()
    {
        Desk desk;
        auto* upBtn = desk.find<QAbstractButton>("upBtn");
        upBtn->setFocus();
        QTest::keyPress(upBtn, Qt::Key_Space);

        QTest::mouseClick(desk.find<QAbstractButton>("rightBtn"), Qt::LeftButton);
        QTest::keyRelease(upBtn, Qt::Key_Space);
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop", "MoveRight", "MoveStop"}));
    }

    void activatingAnotherWindowStops_data() { controls(); }

    void activatingAnotherWindowStops()
    {
        QFETCH(Control, control);
        Desk desk;
        QWidget other;
        const HeldButton held(desk, control.button);

        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
    }

    // On macOS a click gives a button no focus, so there is no focus to lose.
    void activatingAnotherWindowStopsAButtonWithoutFocus()
    {
        Desk desk;
        QWidget other;
        desk.find<QWidget>("leftBtn")->setFocusPolicy(Qt::NoFocus);
        desk.find<QWidget>("presetEdit")->setFocus();
        const HeldButton held(desk, "leftBtn");

        other.show();
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"MoveLeft", "MoveStop"}));
    }

    void aMessageBoxStopsAButtonWithoutFocus()
    {
        Desk desk;
        desk.find<QWidget>("leftBtn")->setFocusPolicy(Qt::NoFocus);
        const HeldButton held(desk, "leftBtn");

        desk.program->app.showMessage("Anything");
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        QCOMPARE(desk.profile.log(), QStringList({"MoveLeft", "MoveStop"}));
    }

    // A window manager may show a modal box without making it the active window.
    void aBlockedWindowStopsThoughItStaysActive()
    {
        Desk desk;
        const HeldButton held(desk, "leftBtn");

        QEvent blocked(QEvent::WindowBlocked);
        QApplication::sendEvent(desk.program->app.mainWin, &blocked);
        QVERIFY(held.button->hasFocus());
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        QCOMPARE(desk.profile.log(), QStringList({"MoveLeft", "MoveStop"}));
    }

    void hidingTheWindowStops()
    {
        Desk desk;
        const HeldButton held(desk, "zoomOutBtn");

        desk.program->app.mainWin->hide();
        QCOMPARE(desk.camera.nextFrame(), QByteArray(ZoomStop));
        QCOMPARE(desk.profile.log(), QStringList({"ZoomOut", "ZoomStop"}));
    }

    void minimisingTheWindowStops()
    {
        Desk desk;
        const HeldButton held(desk, "upBtn");

        desk.program->app.mainWin->showMinimized();
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void openingTheSettingsStops()
    {
        Desk desk;
        const HeldButton held(desk, "upBtn");

        desk.find<QAbstractButton>("settingsBtn")->click();
        QTRY_COMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void aMessageBoxStops_data() { controls(); }

    void aMessageBoxStops()
    {
        QFETCH(Control, control);
        Desk desk;
        const HeldButton held(desk, control.button);

        QByteArray stopFrame;
        desk.user.whenOpen([&] { stopFrame = desk.camera.nextFrame(); });
        desk.program->app.showMessage("Anything");

        QCOMPARE(stopFrame, QByteArray(control.stopFrame));
        QVERIFY(!held.button->isDown());
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
    }

    void anyOtherModalDialogStops()
    {
        Desk desk;
        const HeldButton held(desk, "zoomInBtn");
        QDialog dialog;
        QTimer::singleShot(0, &dialog, SLOT(reject()));

        dialog.exec();
        QCOMPARE(desk.camera.nextFrame(), QByteArray(ZoomStop));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"ZoomIn", "ZoomStop"}));
    }

    void settingAPresetStops()
    {
        Desk desk;
        desk.find<QLineEdit>("presetEdit")->setText("3");
        const HeldButton held(desk, "downBtn");

        desk.find<QAbstractButton>("setBtn")->click();
        held.release();

        QCOMPARE(desk.camera.nextFrame(), QByteArray(setPreset(3)));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        QCOMPARE(desk.profile.log(), QStringList({"MoveDown", "Set Preset3", "MoveStop"}));
    }

    void theErrorBoxOfALostCameraEndsTheHold()
    {
        Desk desk;
        const HeldButton held(desk, "upBtn");

        desk.camera.pull();
        QTRY_COMPARE(desk.user.boxes().size(), 1);
        QVERIFY(!held.button->isDown());
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void closingTheWindowStops_data() { controls(); }

    void closingTheWindowStops()
    {
        QFETCH(Control, control);
        Desk desk;
        const HeldButton held(desk, control.button);

        desk.program->app.mainWin->close();
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        held.release();
        desk.program.reset();
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
    }

    void theProgramsExitStops_data() { controls(); }

    void theProgramsExitStops()
    {
        QFETCH(Control, control);
        Desk desk;
        const HeldButton held(desk, control.button);

        desk.program.reset();
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
    }

    void disconnectingStopsBeforeThePortCloses_data() { controls(); }

    void disconnectingStopsBeforeThePortCloses()
    {
        QFETCH(Control, control);
        Desk desk;
        const HeldButton held(desk, control.button);

        desk.find<QAbstractButton>("connectBtn")->click();
        QVERIFY(!desk.program->app.serial->isConnected());
        QCOMPARE(desk.camera.nextFrame(), QByteArray(control.stopFrame));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({control.logLine, control.stopLogLine}));
    }

    // As on X11, where the release of a key waits: the press takes the focus from SET, which clicks then.
    void aPressThatABoxHasHeldUpMovesNothing()
    {
        Desk desk;
        QWidget* window = desk.program->app.mainWin;
        const AppKeyRepeat repeats(window);
        const auto* up = desk.find<QAbstractButton>("upBtn");
        const QPoint place = up->mapTo(window, up->rect().center());
        desk.find<QLineEdit>("presetEdit")->setText("3");
        desk.find<QAbstractButton>("setBtn")->setFocus();
        QTest::keyClick(desk.find<QAbstractButton>("setBtn"), Qt::Key_Space);

        // The box keeps the press waiting until the mouse is up.
        desk.user.whenOpen([&] { QTest::mouseRelease(window->windowHandle(), Qt::LeftButton, {}, place); });
        QTest::mousePress(window->windowHandle(), Qt::LeftButton, {}, place);

        QTRY_COMPARE(desk.user.boxes().size(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(desk.profile.log(), QStringList("Set Preset3"));
        QVERIFY(!up->isDown());
    }

    // As assistive software presses it: Connect goes up a moment later.
    void aMotionThatBeginsUnderAPressOfConnectStopsBeforeThePortCloses()
    {
        Desk desk;
        desk.find<QAbstractButton>("upBtn")->setFocusPolicy(Qt::NoFocus);
        desk.find<QAbstractButton>("connectBtn")->animateClick();
        const HeldButton held(desk, "upBtn");

        QTRY_VERIFY(!desk.link()->isConnected());
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
        held.release();
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void nothingIsSentForButtonsThatAreNotHeld()
    {
        Desk desk;
        desk.find<QWidget>("upBtn")->setFocus();
        desk.find<QWidget>("rightBtn")->setFocus();
        desk.program->app.showMessage("Anything");
        desk.find<QAbstractButton>("connectBtn")->click();
        desk.program->app.mainWin->close();
        desk.program.reset();
        QCOMPARE(desk.profile.log(), QStringList());
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
