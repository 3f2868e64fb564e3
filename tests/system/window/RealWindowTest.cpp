#include "soak/Soak.h"
#include "support/Frames.h"
#include "system/window/Looks.h"
#include "system/window/Workplace.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QToolTip>
#include <QtTest>

#include <csignal>

#define QVERIFY_LOOKS_LIKE(...) QCOMPARE(differenceFromCopy(__VA_ARGS__), QString())
#define QVERIFY_LOOKS_AS_STORED(...) QCOMPARE(differenceFromPicture(__VA_ARGS__), QString())

namespace {

// A held key repeats after 600 or 660 ms, and every 40 ms from then on.
constexpr int FewKeyRepeatsMs = 900;

/** A button that steers the camera, and what the camera receives of one press. */
struct CameraButton
{
    QPushButton* Ui_AppMainWin::*widget;
    QByteArrayList frames;
};

/** In the order of Tab. */
QVector<CameraButton> cameraButtons()
{
    return {
        {&Ui_AppMainWin::upBtn, {Up, Stop}},
        {&Ui_AppMainWin::leftBtn, {Left, Stop}},
        {&Ui_AppMainWin::homeBtn, {Home, FullWide}},
        {&Ui_AppMainWin::rightBtn, {Right, Stop}},
        {&Ui_AppMainWin::zoomInBtn, {ZoomIn, ZoomStop}},
        {&Ui_AppMainWin::downBtn, {Down, Stop}},
        {&Ui_AppMainWin::zoomOutBtn, {ZoomOut, ZoomStop}},
        {&Ui_AppMainWin::preset1Btn, {recallPreset(1)}},
        {&Ui_AppMainWin::preset2Btn, {recallPreset(2)}},
        {&Ui_AppMainWin::preset3Btn, {recallPreset(3)}},
        {&Ui_AppMainWin::preset4Btn, {recallPreset(4)}},
        {&Ui_AppMainWin::preset5Btn, {recallPreset(5)}},
        {&Ui_AppMainWin::preset6Btn, {recallPreset(6)}},
        {&Ui_AppMainWin::preset7Btn, {recallPreset(7)}},
        {&Ui_AppMainWin::preset8Btn, {recallPreset(8)}},
        {&Ui_AppMainWin::preset9Btn, {recallPreset(9)}},
    };
}

/** Waits for a message box and checks that it says this. */
void readBox(const QString& picture, const QString& text)
{
    const Window box(BoxTitle);
    QMessageBox copy;
    copy.setText(text);
    copy.addButton(QMessageBox::Ok)->setIcon(copy.style()->standardIcon(QStyle::SP_DialogOkButton));
    copy.show();
    QVERIFY_LOOKS_LIKE(box, &copy);
    QVERIFY_LOOKS_AS_STORED(picture, box);
}

/** Presses the OK of the message box that opens. */
void dismissBox()
{
    const Window box(BoxTitle);
    box.activate();
    desktop().pressKeys({"Return"});
    QTRY_VERIFY(!box.isOnScreen());
}

/** Opens a list and clicks a choice: row 0 is the first, and ten are shown. */
void choose(const Window& settings, QComboBox* menu, int row)
{
    constexpr int frame = 1;
    const int rowHeight = menu->view()->sizeHintForRow(row);
    settings.click(menu);
    const Window popup = Window::popup();
    popup.click(QPoint(20, frame + row * rowHeight + rowHeight / 2));
    QTRY_VERIFY(!popup.isOnScreen());
}

/** Presses Tab in the program and in the copy of its window, and checks that both look the same, and so show
 * the same focus. */
void tabToTheNextControl(const Window& window)
{
    desktop().pressKeys({"Tab"});
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);

    QVERIFY_LOOKS_LIKE(window, QApplication::focusWidget()->window());
}

/** Drags a slider's handle in the program to where it is at this value in the copy. */
void drag(const Window& settings, QSlider* slider, int toValue)
{
    settings.press(slider);
    slider->setValue(toValue);
    settings.pointAt(slider);
    desktop().releaseMouse();
}

/** Presses Up, checks that it stays pressed until it is released, and releases it. */
void holdUp(Workplace& place)
{
    place.window->press(place.main.upBtn);
    QCOMPARE(place.received(1), QByteArrayList{Up});
    QTRY_COMPARE(stateShown(*place.window, place.main.upBtn), QString("pressed"));
    QCOMPARE(place.camera.pending(), QByteArray());
    desktop().releaseMouse();
    QCOMPARE(place.received(1), QByteArrayList{Stop});
}

/** What interrupts a user who holds Up. */
using Interruption = void (*)(const Workplace& place);

void pressTab(const Workplace& /*place*/)
{
    desktop().pressKeys({"Tab"});
}

void openMenu(const Workplace& place)
{
    place.window->pointAt(place.main.presetEdit);
    desktop().pressMouse(Qt::RightButton);
    desktop().releaseMouse(Qt::RightButton);
}

void changeWindow(const Workplace& /*place*/)
{
    desktop().pressKeys({"alt+Tab"});
}

void minimise(const Workplace& place)
{
    place.window->minimise();
}

} // namespace

Q_DECLARE_METATYPE(Interruption)

/**
 * The program as its user sees it: started, seen and steered from outside. After a change of its looks,
 * tests/system/renew-screenshots stores the pictures anew; look at them before you keep them.
 */
class RealWindowTest : public QObject
{
    Q_OBJECT

private:
    std::optional<CopyingApplication> application;

private slots:

    void initTestCase() { application.emplace(); }

    void theStoredPicturesAreOfThisQtAndSystem()
    {
        const QString reason = whyPicturesAreLeftOut();
        if (!reason.isEmpty())
            QTest::qSkip(qPrintable(reason), __FILE__, __LINE__);
    }

    void everyButtonOfTheCameraIsPressedByMouse()
    {
        Workplace place;

        const auto buttons = cameraButtons();
        for (const CameraButton& button : buttons) {
            place.window->click(place.main.*button.widget);
            QCOMPARE(place.received(button.frames.size()), button.frames);
        }
    }

    void draggingOffAHeldButtonStopsAndDraggingBackMovesAgain()
    {
        Workplace place;

        place.window->press(place.main.leftBtn);
        QCOMPARE(place.received(1), QByteArrayList{Left});
        place.window->pointAt(place.main.homeBtn);
        QCOMPARE(place.received(1), QByteArrayList{Stop});
        place.window->pointAt(place.main.leftBtn);
        QCOMPARE(place.received(1), QByteArrayList{Left});
        desktop().releaseMouse();
        QCOMPARE(place.received(1), QByteArrayList{Stop});
    }

    void setStoresThePresetAndItsName()
    {
        Workplace place;

        place.window->click(place.main.presetEdit);
        type("5");
        place.window->click(place.main.presetNameEdit);
        type("Desk");
        place.window->click(place.main.setBtn);

        QCOMPARE(place.received(1), QByteArrayList{setPreset(5)});
        QCOMPARE(place.log(), QStringList{"Set Preset5"});
        readBox("box-preset-is-set", "Preset No5 is set.");
        dismissBox();
        QTRY_COMPARE(place.stored("AUTO_5"), QString("Desk"));

        place.window->activate();
        place.window->pointAt(place.main.preset5Btn);
        const Window toolTip = Window::popup();
        QToolTip::showText({}, "Desk", place.main.preset5Btn);
        QVERIFY_LOOKS_LIKE(toolTip, toolTipWindow());
        QVERIFY_LOOKS_AS_STORED("tooltip-desk", toolTip);
    }

    void aNumberOutOfRangeIsExplainedAndSendsNothing()
    {
        Workplace place;
        place.window->click(place.main.presetEdit);
        type("65");

        place.window->click(place.main.callBtn);
        readBox("box-number-out-of-range", "Please enter number between 1 and 64.");
        dismissBox();

        place.window->click(place.main.preset1Btn);
        QCOMPARE(place.received(1), QByteArrayList{recallPreset(1)});
        QCOMPARE(place.log(), QStringList{"Call Preset1"});
    }

    void theConnectButtonClosesThePortAndOpensItAgain()
    {
        Workplace place;
        QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
        QVERIFY_LOOKS_AS_STORED("main-connected", *place.window);

        place.window->click(place.main.connectBtn);
        pointAway();
        place.main.show(MainWindowCopy::Disconnected);
        giveFocusTo(place.main.connectBtn);
        QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
        QVERIFY_LOOKS_AS_STORED("main-disconnected", *place.window);
        place.window->click(place.main.preset1Btn);
        QTRY_COMPARE(place.log(), QStringList{"Call Preset1"});

        place.window->click(place.main.connectBtn);
        pointAway();
        place.main.show(MainWindowCopy::Connected);
        QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
        place.window->click(place.main.preset2Btn);
        QCOMPARE(place.received(1), QByteArrayList{recallPreset(2)});
    }

    void tabReachesEveryControlInOrder()
    {
        Workplace place;

        desktop().pressKeys({"Tab", "space"});
        const Window settings = place.openedSettings({place.port});
        desktop().pressKeys({"Escape"});
        QTRY_VERIFY(!settings.isOnScreen());

        place.window->activate();
        desktop().pressKeys({"Tab", "space"});
        QTRY_COMPARE(place.isPortOpen(), false);
        desktop().pressKeys({"space"});
        QTRY_COMPARE(place.isPortOpen(), true);

        const auto buttons = cameraButtons();
        for (const CameraButton& button : buttons) {
            desktop().pressKeys({"Tab", "space"});
            QCOMPARE(place.received(button.frames.size()), button.frames);
        }

        desktop().pressKeys({"Tab", "1", "2", "Tab", "space"});
        QCOMPARE(place.received(1), QByteArrayList{recallPreset(12)});
        desktop().pressKeys({"Tab", "a", "Tab", "space"});
        QCOMPARE(place.received(1), QByteArrayList{setPreset(12)});
        dismissBox();
        QTRY_COMPARE(place.stored("AUTO_12"), QString("a"));
    }

    void aHeldSpaceBarPressesOnce_data()
    {
        QTest::addColumn<int>("tabs");
        QTest::addColumn<QByteArrayList>("whileHeld");
        QTest::addColumn<QByteArrayList>("afterwards");

        QTest::newRow("motion") << 3 << QByteArrayList{Up} << QByteArrayList{Stop};
        QTest::newRow("preset") << 10 << QByteArrayList() << QByteArrayList{recallPreset(1)};
    }

    void aHeldSpaceBarPressesOnce()
    {
        QFETCH(int, tabs);
        QFETCH(QByteArrayList, whileHeld);
        QFETCH(QByteArrayList, afterwards);
        Workplace place;
        while (tabs-- > 0)
            desktop().pressKeys({"Tab"});

        desktop().holdKey("space");
        QCOMPARE(place.received(whileHeld.size()), whileHeld);
        QTest::qWait(FewKeyRepeatsMs);
        QCOMPARE(place.camera.pending(), QByteArray());
        desktop().releaseKey("space");
        QCOMPARE(place.received(afterwards.size()), afterwards);
    }

    void releasingTheSpaceBarWithAnotherKeyPressedStops()
    {
        Workplace place;
        desktop().pressKeys({"Tab", "Tab", "Tab"});

        // Mostly, but not always, both events have the same time stamp. So try several times.
        for (int i = 0; i < 8; ++i) {
            desktop().holdKey("space");
            QCOMPARE(place.received(1), QByteArrayList{Up});
            desktop().changeKeys("space", "a");
            QCOMPARE(place.received(1), QByteArrayList{Stop});
            desktop().releaseKey("a");
        }
    }

    void aButtonThatMouseAndKeyHoldStopsWithTheMouse()
    {
        Workplace place;
        place.window->press(place.main.upBtn);
        QCOMPARE(place.received(1), QByteArrayList{Up});
        place.window->pointAt(place.main.homeBtn);
        QCOMPARE(place.received(1), QByteArrayList{Stop});

        desktop().holdKey("space");
        QCOMPARE(place.received(1), QByteArrayList{Up});
        desktop().releaseMouse();
        QCOMPARE(place.received(1), QByteArrayList{Stop});
        desktop().releaseKey("space");

        QCOMPARE(place.log(), QStringList({"MoveUp", "MoveStop", "MoveUp", "MoveStop"}));
    }

    void aHeldMotionStopsOnceWhere_data()
    {
        QTest::addColumn<bool>("isHeldByKey");
        QTest::addColumn<Interruption>("interrupt");

        QTest::newRow("the keyboard goes on") << true << &pressTab;
        QTest::newRow("a menu opens") << true << &openMenu;
        QTest::newRow("another window comes to the front") << false << &changeWindow;
        QTest::newRow("the window is minimised") << false << &minimise;
    }

    void aHeldMotionStopsOnceWhere()
    {
        QFETCH(bool, isHeldByKey);
        QFETCH(Interruption, interrupt);
        Workplace place;
        const Window settings = place.openSettings();
        place.window->click(place.main.upBtn);
        QCOMPARE(place.received(2), QByteArrayList({Up, Stop}));

        if (isHeldByKey)
            desktop().holdKey("space");
        else
            place.window->press(place.main.upBtn);
        QCOMPARE(place.received(1), QByteArrayList{Up});
        interrupt(place);
        QCOMPARE(place.received(1), QByteArrayList{Stop});
        desktop().releaseMouse();
        desktop().releaseKey("space");

        // Closes the menu.
        desktop().pressKeys({"Escape"});
        place.window->activate();
        place.window->click(place.main.preset9Btn);
        QCOMPARE(place.received(1), QByteArrayList{recallPreset(9)});
    }

    void theSettingsOpenAgainAfterTheControllerWasMinimised()
    {
        Workplace place;
        const Window settings = place.openSettings();
        desktop().pressKeys({"Escape"});
        QTRY_VERIFY(!settings.isOnScreen());

        place.window->minimise();
        place.window->activate();
        QVERIFY(place.openSettings().isOnScreen());
    }

    void everySettingIsChangedByKeyboardAlone()
    {
        Workplace place;
        desktop().pressKeys({"Tab", "space"});
        const Window settings = place.openedSettings({place.port});

        desktop().pressKeys({"Tab", "space"});
        QTRY_COMPARE(place.stored("runonstartup"), QString("true"));
        desktop().pressKeys({"Tab", "Down"});
        QTRY_COMPARE(place.stored("comport"), place.port);
        desktop().pressKeys({"Tab", "Down"});
        QTRY_COMPARE(place.stored("baudrate"), QString("19200"));
        desktop().pressKeys({"Tab", "space"});
        QTRY_COMPARE(place.stored("isstartuppreset"), QString("true"));
        desktop().pressKeys({"Tab", "Down", "Down"});
        QTRY_COMPARE(place.stored("startuppreset"), QString("3"));
        desktop().pressKeys({"Tab", "space"});
        QTRY_COMPARE(place.stored("invertpan"), QString("true"));
        desktop().pressKeys({"Tab", "space"});
        QTRY_COMPARE(place.stored("inverttilt"), QString("true"));

        desktop().pressKeys({"Tab", "Prior"});
        QTRY_COMPARE(place.stored("panspeed"), QString("7"));
        desktop().pressKeys({"Right"});
        QTRY_COMPARE(place.stored("panspeed"), QString("8"));
        desktop().pressKeys({"End"});
        QTRY_COMPARE(place.stored("panspeed"), QString("18"));
        desktop().pressKeys({"Tab", "Home"});
        QTRY_COMPARE(place.stored("tiltspeed"), QString("1"));
        desktop().pressKeys({"Tab", "Next"});
        QTRY_COMPARE(place.stored("zoomspeed"), QString("3"));

        desktop().pressKeys({"Escape"});
        QTRY_VERIFY(!settings.isOnScreen());
    }

    void aMenuOffersItsChoices()
    {
        Workplace place;
        const Window settings = place.openSettings();

        settings.click(place.settings->baudRateCombo);
        const Window menu = Window::popup();
        place.settings->baudRateCombo->showPopup();
        QVERIFY_LOOKS_LIKE(menu, place.settings->baudRateCombo->view()->window());
        place.settings->baudRateCombo->hidePopup();
        QVERIFY_LOOKS_AS_STORED("menu-baud-rates", menu);
    }

    void everySettingIsFoundAgainAfterARestart()
    {
        Workplace place;
        Window settings = place.openSettings();
        settings.click(place.settings->runOnStartUpCheck);
        QTRY_COMPARE(place.stored("runonstartup"), QString("true"));
        choose(settings, place.settings->comPortCombo, 1);
        QTRY_COMPARE(place.stored("comport"), place.port);
        choose(settings, place.settings->baudRateCombo,
               place.settings->baudRateCombo->findText("Baud115200"));
        QTRY_COMPARE(place.stored("baudrate"), QString("115200"));
        settings.click(place.settings->startUpPresetCheck);
        QTRY_COMPARE(place.stored("isstartuppreset"), QString("true"));
        choose(settings, place.settings->startUpPresetCombo, 9);
        QTRY_COMPARE(place.stored("startuppreset"), QString("10"));
        settings.click(place.settings->invertPanCheck);
        QTRY_COMPARE(place.stored("invertpan"), QString("true"));
        settings.click(place.settings->invertTiltCheck);
        QTRY_COMPARE(place.stored("inverttilt"), QString("true"));
        drag(settings, place.settings->panSpeedSlider, 18);
        QTRY_COMPARE(place.stored("panspeed"), QString("18"));
        drag(settings, place.settings->tiltSpeedSlider, 1);
        QTRY_COMPARE(place.stored("tiltspeed"), QString("1"));
        drag(settings, place.settings->zoomSpeedSlider, 7);
        QTRY_COMPARE(place.stored("zoomspeed"), QString("7"));
        pointAway();
        QCOMPARE(place.quit(), QString());

        QStringList expected{"baudrate=115200",   "comport=" + place.port, "invertpan=true",
                             "inverttilt=true",   "isstartuppreset=true",  "panspeed=18",
                             "runonstartup=true", "startuppreset=10",      "tiltspeed=1",
                             "zoomspeed=7"};
        QCOMPARE(place.allStored(), expected);

        place.start();
        QCOMPARE(place.received(1), QByteArrayList{recallPreset(10)});
        settings = place.openSettingsWithoutPorts();
        SettingsCopy& copy = *place.settings;
        const auto checks = copy.dialog.findChildren<QCheckBox*>();
        for (QCheckBox* check : checks)
            check->setChecked(true);
        copy.baudRateCombo->setCurrentText("Baud115200");
        copy.startUpPresetCombo->setCurrentText("PRESET10");
        copy.startUpPresetCombo->setEnabled(true);
        copy.setSpeeds(18, 1, 7);
        QVERIFY_LOOKS_LIKE(settings, &copy.dialog);
        QVERIFY_LOOKS_AS_STORED("settings-changed", settings);
        // Opening the settings has changed only the port, back to automatic detection.
        expected.replaceInStrings(place.port, "AUTO");
        QTRY_COMPARE(place.allStored(), expected);
    }

    void theSettingsOpenOnceAndStayAsTheyAre()
    {
        Workplace place;
        const Window settings = place.openSettings();
        choose(settings, place.settings->comPortCombo, 1);
        QTRY_COMPARE(place.stored("comport"), place.port);

        place.window->click(place.main.settingsBtn);
        place.window->click(place.main.preset1Btn);
        QCOMPARE(place.received(1), QByteArrayList{recallPreset(1)});

        QVERIFY(settings.isOnScreen());
        QCOMPARE(place.stored("comport"), place.port);
    }

    void theFirstPressInAnotherWindowActs_data()
    {
        QTest::addColumn<bool>("comesFromAnotherProgram");
        QTest::newRow("from the other window") << false;
        QTest::newRow("from another program") << true;
    }

    void theFirstPressInAnotherWindowActs()
    {
        QFETCH(bool, comesFromAnotherProgram);
        Workplace place;
        const Window settings = place.openSettings();
        const RunningProgram otherProgram(VANTREL_CAMERA_PATH, {"--view"});
        const Window other("Simulated camera");
        const auto goElsewhere = [&] {
            if (comesFromAnotherProgram)
                other.activate();
        };

        for (const char* choice : {"true", "false", "true"}) {
            goElsewhere();
            holdUp(place);
            goElsewhere();
            settings.click(place.settings->startUpPresetCheck);
            QTRY_COMPARE(place.stored("isstartuppreset"), QString(choice));
            goElsewhere();
            place.window->click(place.main.preset1Btn);
            QCOMPARE(place.received(1), QByteArrayList{recallPreset(1)});
        }
    }

    void closingTheWindowStopsTheCameraAndClosesEverything()
    {
        Workplace place;
        const Window settings = place.openSettings();
        QVERIFY(place.isPortOpen());

        place.window->press(place.main.upBtn);
        QCOMPARE(place.received(1), QByteArrayList{Up});
        QCOMPARE(place.quit(), QString());

        QCOMPARE(place.received(1), QByteArrayList{Stop});
        QCOMPARE(place.camera.pending(), QByteArray());
        QVERIFY(!settings.isOnScreen());
        QVERIFY(!place.isPortOpen());
    }

    void aSignalStopsTheCameraBeforeTheProgramEnds_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("interrupted") << SIGINT;
        QTest::newRow("terminated") << SIGTERM;
        QTest::newRow("hung up") << SIGHUP;
    }

    void aSignalStopsTheCameraBeforeTheProgramEnds()
    {
        QFETCH(int, number);
        const int count = rounds(1, 30);
        for (int round = 0; round < count; ++round) {
            Workplace place;
            place.window->press(place.main.upBtn);
            QCOMPARE(place.received(1), QByteArrayList{Up});

            QCOMPARE(kill(static_cast<pid_t>(place.program->id()), number), 0);
            QCOMPARE(place.program->troubleAtExit(), QString());
            QCOMPARE(place.camera.pending(), QByteArray(Stop));
            QCOMPARE(place.log(), QStringList({"MoveUp", "MoveStop"}));
        }
        qInfo("the program %s with a button held: %d times, one stop each", QTest::currentDataTag(), count);
    }

    void withoutACameraTheErrorComesBeforeTheWindow()
    {
        Workplace place;
        QCOMPARE(place.quit(), QString());
        place.bus.unplug(place.port);
        // Use a port name of this test alone: another program that opens the same port would lock it.
        place.profile.store("comport", place.port);

        place.program.emplace();
        readBox("box-no-camera", "No such file or directory");
        QVERIFY(!Window::isOnScreen(MainTitle));
        dismissBox();
        place.findWindow();
        MainWindowCopy unconnected(MainWindowCopy::NeverConnected);
        QVERIFY_LOOKS_LIKE(*place.window, &unconnected.window);
        QVERIFY_LOOKS_AS_STORED("main-no-camera", *place.window);

        // Opening the settings changes the port to automatic detection.
        place.window->click(unconnected.settingsBtn);
        const Window settings = place.openedSettings({place.port});
        desktop().pressKeys({"Escape"});
        QTRY_VERIFY(!settings.isOnScreen());
        place.plugCamera();
        place.window->click(unconnected.connectBtn);
        pointAway();
        giveFocusTo(place.main.connectBtn);
        QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
    }

    void aPulledAdapterIsReportedOnceAndConnectFindsItAgain()
    {
        Workplace place;

        place.window->press(place.main.upBtn);
        QCOMPARE(place.received(1), QByteArrayList{Up});
        place.bus.unplug(place.port);
        place.camera.pull();
        QTRY_COMPARE(place.log(), QStringList({"MoveUp", "MoveStop"}));
        desktop().releaseMouse();
        dismissBox();
        QVERIFY(!Window::isOnScreen(BoxTitle));
        pointAway();
        place.main.show(MainWindowCopy::Disconnected);
        giveFocusTo(place.main.upBtn);
        QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);

        CameraEnd cameraAgain;
        place.port = place.bus.plug("1-1", WchCh340, cameraAgain.portName());
        place.window->click(place.main.connectBtn);
        QTRY_COMPARE(place.log(), QStringList({"MoveUp", "MoveStop", place.port}));
        pointAway();
        place.main.show(MainWindowCopy::Connected);
        giveFocusTo(place.main.connectBtn);
        QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
        place.window->click(place.main.preset2Btn);
        QCOMPARE(cameraAgain.nextFrame(), recallPreset(2));
        QCOMPARE(place.log(), QStringList({"MoveUp", "MoveStop", place.port, "Call Preset2"}));
        QCOMPARE(place.quit(), QString());
    }

    void everyMainButtonShowsThePointerAndThatItIsPressed()
    {
        Workplace place;

        const auto buttons = place.main.window.findChildren<QPushButton*>();
        QCOMPARE(buttons.size(), 20);
        for (const QPushButton* button : buttons) {
            // Near its lower edge, so that the tooltip opens below it.
            const QRect area = place.window->areaOf(button);
            place.window->pointAt(QPoint(area.center().x(), area.bottom() - 3));
            QTRY_COMPARE(stateShown(*place.window, button), QString("under the pointer"));
            desktop().pressMouse();
            QTRY_COMPARE(stateShown(*place.window, button), QString("pressed"));
            pointAway();
            desktop().releaseMouse();
            QTRY_COMPARE(stateShown(*place.window, button), QString("at rest"));
        }
        QVERIFY(place.isPortOpen());
        QVERIFY(place.log().filter("Preset").isEmpty());
    }

    void everySliderShowsThePointerAndThatItIsPressed()
    {
        Workplace place;
        const Window settings = place.openSettings();

        const auto sliders = place.settings->dialog.findChildren<QSlider*>();
        QCOMPARE(sliders.size(), 3);
        for (const QSlider* slider : sliders) {
            QTRY_COMPARE(stateShown(settings, slider), QString("at rest"));
            settings.pointAt(slider);
            QTRY_COMPARE(stateShown(settings, slider), QString("under the pointer"));
            desktop().pressMouse();
            QTRY_COMPARE(stateShown(settings, slider), QString("pressed"));
            desktop().releaseMouse();
        }
    }

    void everyMainControlShowsThatItHasTheFocus()
    {
        Workplace place;
        giveFocusTo(place.main.centralWidget);

        for (int control = 0; control < 22 && !QTest::currentTestFailed(); ++control)
            tabToTheNextControl(*place.window);
        QCOMPARE(QApplication::focusWidget(), place.main.setBtn);
    }

    void everySettingShowsThatItHasTheFocus()
    {
        Workplace place;
        const Window settings = place.openSettingsWithoutPorts();
        QVERIFY_LOOKS_LIKE(settings, &place.settings->dialog);
        QVERIFY_LOOKS_AS_STORED("settings", settings);
        settings.click(place.settings->startUpPresetCheck);
        pointAway();
        place.settings->startUpPresetCheck->setChecked(true);
        place.settings->startUpPresetCombo->setEnabled(true);
        giveFocusTo(place.settings->startUpPresetCheck);

        for (int control = 0; control < 10 && !QTest::currentTestFailed(); ++control)
            tabToTheNextControl(settings);
        QCOMPARE(QApplication::focusWidget(), place.settings->startUpPresetCheck);
    }
};

QTEST_APPLESS_MAIN(RealWindowTest)

#include "RealWindowTest.moc"
