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

#define QVERIFY_LOOKS_LIKE(...) QCOMPARE(differenceFromCopy(__VA_ARGS__), QString())
#define QVERIFY_LOOKS_AS_STORED(...) QCOMPARE(differenceFromPicture(__VA_ARGS__), QString())

namespace {

// A held key repeats after 600 or 660 ms, and every 40 ms from then on.
constexpr int FewKeyRepeatsMs = 900;

// What the camera receives, with the speeds that a fresh account has.

QByteArray recallOf(int preset)
{
    return "81 01 04 3f 02 " + QByteArray(1, static_cast<char>(preset)).toHex() + " ff";
}

QByteArray storingOf(int preset)
{
    return "81 01 04 3f 01 " + QByteArray(1, static_cast<char>(preset)).toHex() + " ff";
}

struct MotionButton
{
    QPushButton* Ui_AppMainWin::*widget;
    const char* frame;
    const char* logLine;
    const char* stopFrame;
    const char* stopLogLine;
};

constexpr MotionButton MotionButtons[] = {
    {&Ui_AppMainWin::upBtn, Up, "MoveUp", Stop, "MoveStop"},
    {&Ui_AppMainWin::leftBtn, Left, "MoveLeft", Stop, "MoveStop"},
    {&Ui_AppMainWin::rightBtn, Right, "MoveRight", Stop, "MoveStop"},
    {&Ui_AppMainWin::zoomInBtn, ZoomIn, "ZoomIn", ZoomStop, "ZoomStop"},
    {&Ui_AppMainWin::downBtn, Down, "MoveDown", Stop, "MoveStop"},
    {&Ui_AppMainWin::zoomOutBtn, ZoomOut, "ZoomOut", ZoomStop, "ZoomStop"},
};

constexpr QPushButton* Ui_AppMainWin::*PresetButtons[] = {
    &Ui_AppMainWin::preset1Btn, &Ui_AppMainWin::preset2Btn, &Ui_AppMainWin::preset3Btn,
    &Ui_AppMainWin::preset4Btn, &Ui_AppMainWin::preset5Btn, &Ui_AppMainWin::preset6Btn,
    &Ui_AppMainWin::preset7Btn, &Ui_AppMainWin::preset8Btn, &Ui_AppMainWin::preset9Btn,
};

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

/** Opens a list and clicks a choice; the first one has the row 0, and ten are shown. */
void choose(const Window& settings, QComboBox* menu, int row)
{
    constexpr int frame = 1;
    const int rowHeight = menu->view()->sizeHintForRow(row);
    settings.click(menu);
    const Window popup = Window::popup();
    popup.click(QPoint(20, frame + row * rowHeight + rowHeight / 2));
    QTRY_VERIFY(!popup.isOnScreen());
}

/** Presses Tab in the program and in the copy of its window, and checks that the next control, and no other,
 * shows that it has the keyboard. */
void tabToTheNextControl(const Window& window)
{
    desktop().pressKeys({"Tab"});
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);

    QWidget* control = QApplication::focusWidget();
    QTRY_VERIFY(hasFocusRing(window, control));
    QVERIFY_LOOKS_LIKE(window, control->window());
}

/** Drags a slider's handle, in the copy and in the program, as far as it goes. */
void drag(const Window& settings, QSlider* slider, int toValue)
{
    settings.press(slider);
    slider->setValue(toValue);
    settings.pointAt(slider);
    desktop().releaseMouse();
}

/** Holds Up, sees that it stays down until it is let go, and lets it go. */
void holdUp(Workplace& place)
{
    place.window->press(place.main.upBtn);
    QCOMPARE(place.received(1), QByteArrayList{Up});
    QTRY_COMPARE(stateShown(*place.window, place.main.upBtn), QString("pressed"));
    QCOMPARE(place.camera.pending(), QByteArray());
    desktop().releaseMouse();
    QCOMPARE(place.received(1), QByteArrayList{Stop});
}

} // namespace

/**
 * The program as its user meets it: started, seen and steered from outside. After a change of the looks,
 * tests/system/renew-screenshots stores the pictures anew; look at them before you keep them.
 */
class RealWindowTest : public QObject
{
    Q_OBJECT

private:
    std::optional<CopyingApplication> application;

private slots:
    void initTestCase();
    void theStoredPicturesAreOfThisQtAndSystem();
    void holdingAButtonMovesAndReleasingItStops();
    void draggingOffAHeldButtonStopsAndDraggingBackMovesAgain();
    void homeGoesHomeAndThenZoomsOut();
    void aPresetButtonRecallsItsPreset();
    void callRecallsTheEnteredPreset();
    void setStoresThePresetAndItsName();
    void aNumberOutOfRangeIsExplainedAndSendsNothing();
    void theConnectButtonClosesThePortAndOpensItAgain();
    void repliesOfTheCameraAreLogged();
    void tabReachesEveryControlInOrder();
    void holdingTheSpaceBarMovesOnceAndReleasingItStops();
    void holdingTheSpaceBarOnAPresetRecallsItOnce();
    void anotherKeyThatComesAsTheSpaceBarGoesStops();
    void aButtonThatMouseAndKeyHoldStopsWithTheMouse();
    void leavingAHeldButtonWithTabStopsOnce();
    void everySettingIsChangedByKeyboardAlone();
    void everyMenuOffersItsChoices();
    void everySettingIsFoundAgainAfterARestart();
    void aSettingIsInForceAtTheNextPress();
    void theSettingsOpenOnceAndStayAsTheyAre();
    void theFirstPressAfterEachChangeBetweenTheWindowsCounts();
    void theFirstPressAfterAnotherProgramCounts();
    void anotherWindowComingToTheFrontStopsAHeldMotionOnce();
    void aMenuThatOpensStopsAMotionThatAKeyHolds();
    void aBoxThatOpensStopsAHeldMotion();
    void minimisingTheWindowStopsAHeldMotionOnce();
    void closingTheWindowStopsAHeldMotion();
    void closingTheMainWindowClosesTheSettingsToo();
    void withoutACameraTheErrorComesBeforeTheWindow();
    void aPulledAdapterIsReportedOnceAndConnectFindsItAgain();
    void quittingWhileConnectedFreesThePort();
    void everyMainButtonShowsThePointerAndThatItIsPressed();
    void everySliderShowsThePointerAndThatItIsPressed();
    void everyMainControlShowsThatItHasTheKeyboard();
    void everySettingShowsThatItHasTheKeyboard();
};

void RealWindowTest::initTestCase()
{
    application.emplace();
}

void RealWindowTest::theStoredPicturesAreOfThisQtAndSystem()
{
    const QString reason = whyPicturesAreLeftOut();
    if (!reason.isEmpty())
        QTest::qSkip(qPrintable(reason), __FILE__, __LINE__);
}

void RealWindowTest::holdingAButtonMovesAndReleasingItStops()
{
    Workplace place;
    QStringList expectedLog;

    for (const MotionButton& button : MotionButtons) {
        place.window->press(place.main.*button.widget);
        QCOMPARE(place.received(1), QByteArrayList{button.frame});
        desktop().releaseMouse();
        QCOMPARE(place.received(1), QByteArrayList{button.stopFrame});
        expectedLog << button.logLine << button.stopLogLine;
    }
    QCOMPARE(place.log(), expectedLog);
}

void RealWindowTest::draggingOffAHeldButtonStopsAndDraggingBackMovesAgain()
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

void RealWindowTest::homeGoesHomeAndThenZoomsOut()
{
    Workplace place;

    place.window->click(place.main.homeBtn);

    QCOMPARE(place.received(2), QByteArrayList({Home, FullWide}));
    QCOMPARE(place.log(), QStringList{"Home"});
}

void RealWindowTest::aPresetButtonRecallsItsPreset()
{
    Workplace place;

    int preset = 0;
    for (const auto button : PresetButtons) {
        place.window->click(place.main.*button);
        QCOMPARE(place.received(1), QByteArrayList{recallOf(++preset)});
        QCOMPARE(place.log().constLast(), "Call Preset" + QString::number(preset));
    }
}

void RealWindowTest::callRecallsTheEnteredPreset()
{
    Workplace place;

    place.window->click(place.main.presetEdit);
    type("64");
    place.window->click(place.main.callBtn);

    QCOMPARE(place.received(1), QByteArrayList{recallOf(64)});
    QCOMPARE(place.log(), QStringList{"Call Preset64"});
}

void RealWindowTest::setStoresThePresetAndItsName()
{
    Workplace place;

    place.window->click(place.main.presetEdit);
    type("5");
    place.window->click(place.main.presetNameEdit);
    type("Desk");
    place.window->click(place.main.setBtn);

    QCOMPARE(place.received(1), QByteArrayList{storingOf(5)});
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

void RealWindowTest::aNumberOutOfRangeIsExplainedAndSendsNothing()
{
    Workplace place;
    place.window->click(place.main.presetEdit);
    type("65");

    place.window->click(place.main.callBtn);
    readBox("box-number-out-of-range", "Please enter number between 1 and 64.");
    dismissBox();
    place.window->click(place.main.setBtn);
    dismissBox();

    place.window->click(place.main.preset1Btn);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});
    QCOMPARE(place.log(), QStringList{"Call Preset1"});
}

void RealWindowTest::theConnectButtonClosesThePortAndOpensItAgain()
{
    Workplace place;
    QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
    QVERIFY_LOOKS_AS_STORED("main-connected", *place.window);

    place.window->click(place.main.connectBtn);
    pointAway();
    place.main.show(MainWindowCopy::Disconnected);
    giveKeyboardTo(place.main.connectBtn);
    QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
    QVERIFY_LOOKS_AS_STORED("main-disconnected", *place.window);
    place.window->click(place.main.preset1Btn);
    QTRY_COMPARE(place.log(), QStringList{"Call Preset1"});

    place.window->click(place.main.connectBtn);
    pointAway();
    place.main.show(MainWindowCopy::Connected);
    QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
    place.window->click(place.main.preset2Btn);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(2)});
}

void RealWindowTest::repliesOfTheCameraAreLogged()
{
    Workplace place;

    place.camera.reply("90 41 ff");

    QTRY_COMPARE(place.log(), QStringList({"9041ff", "Analyze Buffer", "-90-41-ff-3"}));
}

void RealWindowTest::tabReachesEveryControlInOrder()
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

    const QByteArrayList framesOfMotions[] = {{Up, Stop},         {Left, Stop},       {Home, FullWide},
                                              {Right, Stop},      {ZoomIn, ZoomStop}, {Down, Stop},
                                              {ZoomOut, ZoomStop}};
    for (const QByteArrayList& frames : framesOfMotions) {
        desktop().pressKeys({"Tab", "space"});
        QCOMPARE(place.received(2), frames);
    }
    for (int preset = 1; preset <= 9; ++preset) {
        desktop().pressKeys({"Tab", "space"});
        QCOMPARE(place.received(1), QByteArrayList{recallOf(preset)});
    }

    desktop().pressKeys({"Tab", "1", "2", "Tab", "space"});
    QCOMPARE(place.received(1), QByteArrayList{recallOf(12)});
    desktop().pressKeys({"Tab", "a", "Tab", "space"});
    QCOMPARE(place.received(1), QByteArrayList{storingOf(12)});
    dismissBox();
    QTRY_COMPARE(place.stored("AUTO_12"), QString("a"));
}

void RealWindowTest::holdingTheSpaceBarMovesOnceAndReleasingItStops()
{
    Workplace place;
    desktop().pressKeys({"Tab", "Tab", "Tab"});

    desktop().holdKey("space");
    QCOMPARE(place.received(1), QByteArrayList{Up});
    QTest::qWait(FewKeyRepeatsMs);
    QCOMPARE(place.camera.pending(), QByteArray());
    desktop().releaseKey("space");

    QCOMPARE(place.received(1), QByteArrayList{Stop});
    QCOMPARE(place.log(), QStringList({"MoveUp", "MoveStop"}));
}

void RealWindowTest::holdingTheSpaceBarOnAPresetRecallsItOnce()
{
    Workplace place;
    desktop().pressKeys(QStringList(QVector<QString>(10, "Tab").toList()));

    desktop().holdKey("space");
    QTest::qWait(FewKeyRepeatsMs);
    QCOMPARE(place.camera.pending(), QByteArray());
    desktop().releaseKey("space");

    QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});
    QCOMPARE(place.log(), QStringList("Call Preset1"));
}

void RealWindowTest::anotherKeyThatComesAsTheSpaceBarGoesStops()
{
    Workplace place;
    desktop().pressKeys({"Tab", "Tab", "Tab"});

    // Both events have one time stamp most times, not always.
    for (int i = 0; i < 8; ++i) {
        desktop().holdKey("space");
        QCOMPARE(place.received(1), QByteArrayList{Up});
        desktop().changeKeys("space", "a");
        QCOMPARE(place.received(1), QByteArrayList{Stop});
        desktop().releaseKey("a");
    }
}

void RealWindowTest::aButtonThatMouseAndKeyHoldStopsWithTheMouse()
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

void RealWindowTest::leavingAHeldButtonWithTabStopsOnce()
{
    Workplace place;
    desktop().pressKeys({"Tab", "Tab", "Tab"});

    desktop().holdKey("space");
    QCOMPARE(place.received(1), QByteArrayList{Up});
    desktop().pressKeys({"Tab"});
    QCOMPARE(place.received(1), QByteArrayList{Stop});
    desktop().releaseKey("space");

    place.window->click(place.main.preset9Btn);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(9)});
}

void RealWindowTest::everySettingIsChangedByKeyboardAlone()
{
    Workplace place;
    desktop().pressKeys({"Tab", "space"});
    const Window settings = place.openedSettings({place.port});

    desktop().pressKeys({"Tab", "space"});
    QTRY_COMPARE(place.stored("runonstartup"), QString("true"));
    desktop().pressKeys({"Tab", "Down"});
    QTRY_COMPARE(place.stored("comport"), place.port);
    desktop().pressKeys({"Tab", "End"});
    QTRY_COMPARE(place.stored("baudrate"), QString("115200"));
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

void RealWindowTest::everyMenuOffersItsChoices()
{
    Workplace place;
    const Window settings = place.openSettings();

    settings.click(place.settings->baudRateCombo);
    const Window menu = Window::popup();
    place.settings->baudRateCombo->showPopup();
    QVERIFY_LOOKS_LIKE(menu, place.settings->baudRateCombo->view()->window());
    place.settings->baudRateCombo->hidePopup();
    QVERIFY_LOOKS_AS_STORED("menu-baud-rates", menu);
    desktop().pressKeys({"Return"});
    QTRY_VERIFY(!menu.isOnScreen());
    int row = 0;
    for (const char* baudRate : {"1200", "2400", "4800", "9600", "19200", "38400", "57600", "115200"}) {
        choose(settings, place.settings->baudRateCombo, row++);
        QTRY_COMPARE(place.stored("baudrate"), QString(baudRate));
    }

    choose(settings, place.settings->comPortCombo, 1);
    QTRY_COMPARE(place.stored("comport"), place.port);
    choose(settings, place.settings->comPortCombo, 0);
    QTRY_COMPARE(place.stored("comport"), QString("AUTO"));

    settings.click(place.settings->startUpPresetCheck);
    choose(settings, place.settings->startUpPresetCombo, 1);
    QTRY_COMPARE(place.stored("startuppreset"), QString("2"));
    desktop().pressKeys({"Home"});
    for (int preset = 1; preset <= 64; ++preset) {
        QTRY_COMPARE(place.stored("startuppreset"), QString::number(preset));
        desktop().pressKeys({"Down"});
    }
}

void RealWindowTest::everySettingIsFoundAgainAfterARestart()
{
    Workplace place;
    Window settings = place.openSettings();
    settings.click(place.settings->runOnStartUpCheck);
    QTRY_COMPARE(place.stored("runonstartup"), QString("true"));
    choose(settings, place.settings->comPortCombo, 1);
    QTRY_COMPARE(place.stored("comport"), place.port);
    choose(settings, place.settings->baudRateCombo, 7);
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
    QCOMPARE(place.received(1), QByteArrayList{recallOf(10)});
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
    // Opening the settings has put the port back to automatic detection, and nothing else.
    expected.replaceInStrings(place.port, "AUTO");
    QTRY_COMPARE(place.allStored(), expected);
}

void RealWindowTest::aSettingIsInForceAtTheNextPress()
{
    Workplace place;
    const Window settings = place.openSettings();

    drag(settings, place.settings->panSpeedSlider, 18);
    QTRY_COMPARE(place.stored("panspeed"), QString("18"));
    settings.click(place.settings->invertTiltCheck);
    QTRY_COMPARE(place.stored("inverttilt"), QString("true"));
    place.window->click(place.main.upBtn);

    QCOMPARE(place.received(2), QByteArrayList({"81 01 06 01 12 05 03 02 ff", "81 01 06 01 12 05 03 03 ff"}));
    QCOMPARE(place.log(), QStringList({"MoveDown", "MoveStop"}));
}

void RealWindowTest::theSettingsOpenOnceAndStayAsTheyAre()
{
    Workplace place;
    const Window settings = place.openSettings();
    choose(settings, place.settings->comPortCombo, 1);
    QTRY_COMPARE(place.stored("comport"), place.port);

    place.window->click(place.main.settingsBtn);
    place.window->click(place.main.preset1Btn);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});

    QVERIFY(settings.isOnScreen());
    QCOMPARE(place.stored("comport"), place.port);
}

void RealWindowTest::theFirstPressAfterEachChangeBetweenTheWindowsCounts()
{
    Workplace place;
    const Window settings = place.openSettings();

    for (int round = 0; round < 3; ++round) {
        settings.click(place.settings->startUpPresetCheck);
        QTRY_COMPARE(place.stored("isstartuppreset"), QString("true"));
        holdUp(place);
        settings.click(place.settings->startUpPresetCheck);
        QTRY_COMPARE(place.stored("isstartuppreset"), QString("false"));
        place.window->click(place.main.preset1Btn);
        QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});
    }
}

void RealWindowTest::theFirstPressAfterAnotherProgramCounts()
{
    Workplace place;
    const Window settings = place.openSettings();
    const RunningProgram otherProgram(VANTREL_CAMERA_PATH, {"--view"});
    const Window other("Simulated camera");

    for (int round = 0; round < 3; ++round) {
        other.activate();
        holdUp(place);
        other.activate();
        place.window->click(place.main.preset1Btn);
        QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});
        other.activate();
        settings.click(place.settings->startUpPresetCheck);
        QTRY_COMPARE(place.stored("isstartuppreset"), QString(round % 2 == 0 ? "true" : "false"));
    }
}

void RealWindowTest::anotherWindowComingToTheFrontStopsAHeldMotionOnce()
{
    Workplace place;
    const Window settings = place.openSettings();

    place.window->press(place.main.upBtn);
    QCOMPARE(place.received(1), QByteArrayList{Up});
    desktop().pressKeys({"alt+Tab"});
    QCOMPARE(place.received(1), QByteArrayList{Stop});
    desktop().releaseMouse();

    place.window->click(place.main.preset9Btn);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(9)});
}

void RealWindowTest::aMenuThatOpensStopsAMotionThatAKeyHolds()
{
    Workplace place;
    desktop().pressKeys({"Tab", "Tab", "Tab"});

    desktop().holdKey("space");
    QCOMPARE(place.received(1), QByteArrayList{Up});
    place.window->pointAt(place.main.presetEdit);
    desktop().pressMouse(Qt::RightButton);
    desktop().releaseMouse(Qt::RightButton);
    QCOMPARE(place.received(1), QByteArrayList{Stop});
    const Window menu = Window::popup();
    desktop().releaseKey("space");
    desktop().pressKeys({"Escape"});
    QTRY_VERIFY(!menu.isOnScreen());

    place.window->click(place.main.preset9Btn);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(9)});
}

void RealWindowTest::aBoxThatOpensStopsAHeldMotion()
{
    Workplace place;

    place.window->press(place.main.upBtn);
    QCOMPARE(place.received(1), QByteArrayList{Up});
    place.bus.unplug(place.port);
    place.camera.pull();
    const Window box(BoxTitle);
    QTRY_COMPARE(place.log(), QStringList({"MoveUp", "MoveStop"}));
    desktop().releaseMouse();
    dismissBox();

    place.main.show(MainWindowCopy::Disconnected);
    place.window->click(place.main.preset9Btn);
    QTRY_COMPARE(place.log(), QStringList({"MoveUp", "MoveStop", "Call Preset9"}));
}

void RealWindowTest::minimisingTheWindowStopsAHeldMotionOnce()
{
    Workplace place;

    place.window->press(place.main.zoomInBtn);
    QCOMPARE(place.received(1), QByteArrayList{ZoomIn});
    place.window->minimise();
    QCOMPARE(place.received(1), QByteArrayList{ZoomStop});
    desktop().releaseMouse();

    place.window->activate();
    place.window->click(place.main.preset9Btn);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(9)});
}

void RealWindowTest::closingTheWindowStopsAHeldMotion()
{
    Workplace place;

    place.window->press(place.main.upBtn);
    QCOMPARE(place.received(1), QByteArrayList{Up});
    QCOMPARE(place.quit(), QString());

    QCOMPARE(place.received(1), QByteArrayList{Stop});
    QCOMPARE(place.camera.pending(), QByteArray());
    QCOMPARE(place.log(), QStringList({"MoveUp", "MoveStop"}));
}

void RealWindowTest::closingTheMainWindowClosesTheSettingsToo()
{
    Workplace place;
    const Window settings = place.openSettings();

    QCOMPARE(place.quit(), QString());

    QVERIFY(!settings.isOnScreen());
}

void RealWindowTest::withoutACameraTheErrorComesBeforeTheWindow()
{
    Workplace place;
    QCOMPARE(place.quit(), QString());
    place.bus.unplug(place.port);
    // A name of this test's own: another program that tries the same port at the same moment locks it.
    place.profile.store("comport", place.port);

    place.program.emplace(VANTREL_PATH);
    readBox("box-no-camera", "No such file or directory");
    QVERIFY(!Window::isOnScreen(MainTitle));
    dismissBox();
    place.findWindow();
    MainWindowCopy unconnected(MainWindowCopy::NeverConnected);
    QVERIFY_LOOKS_LIKE(*place.window, &unconnected.window);
    QVERIFY_LOOKS_AS_STORED("main-no-camera", *place.window);

    // Opening the settings puts the port to automatic detection.
    place.window->click(unconnected.settingsBtn);
    const Window settings = place.openedSettings({place.port});
    desktop().pressKeys({"Escape"});
    QTRY_VERIFY(!settings.isOnScreen());
    place.plugCamera();
    place.window->click(unconnected.connectBtn);
    pointAway();
    giveKeyboardTo(place.main.connectBtn);
    QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
}

void RealWindowTest::aPulledAdapterIsReportedOnceAndConnectFindsItAgain()
{
    Workplace place;

    place.bus.unplug(place.port);
    place.camera.pull();
    dismissBox();
    QVERIFY(!Window::isOnScreen(BoxTitle));
    pointAway();
    place.main.show(MainWindowCopy::Disconnected);
    QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
    place.window->click(place.main.upBtn);
    QTRY_COMPARE(place.log(), QStringList({"MoveUp", "MoveStop"}));

    CameraEnd cameraAgain;
    place.port = place.bus.plug("1-1", WchCh340, cameraAgain.portName());
    place.window->click(place.main.connectBtn);
    QTRY_COMPARE(place.log(), QStringList({"MoveUp", "MoveStop", place.port}));
    pointAway();
    place.main.show(MainWindowCopy::Connected);
    giveKeyboardTo(place.main.connectBtn);
    QVERIFY_LOOKS_LIKE(*place.window, &place.main.window);
    place.window->click(place.main.preset2Btn);
    QCOMPARE(cameraAgain.nextFrame(), recallOf(2));
    QCOMPARE(place.log(), QStringList({"MoveUp", "MoveStop", place.port, "Call Preset2"}));
    QCOMPARE(place.quit(), QString());
}

void RealWindowTest::quittingWhileConnectedFreesThePort()
{
    Workplace place;
    QVERIFY(place.isPortOpen());

    QCOMPARE(place.quit(), QString());
    QVERIFY(!place.isPortOpen());

    place.start();
    place.window->click(place.main.preset1Btn);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});
}

void RealWindowTest::everyMainButtonShowsThePointerAndThatItIsPressed()
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
}

void RealWindowTest::everySliderShowsThePointerAndThatItIsPressed()
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

void RealWindowTest::everyMainControlShowsThatItHasTheKeyboard()
{
    Workplace place;
    giveKeyboardTo(place.main.centralWidget);

    for (int control = 0; control < 22 && !QTest::currentTestFailed(); ++control)
        tabToTheNextControl(*place.window);
    QCOMPARE(QApplication::focusWidget(), place.main.setBtn);
}

void RealWindowTest::everySettingShowsThatItHasTheKeyboard()
{
    Workplace place;
    const Window settings = place.openSettingsWithoutPorts();
    QVERIFY_LOOKS_LIKE(settings, &place.settings->dialog);
    QVERIFY_LOOKS_AS_STORED("settings", settings);
    settings.click(place.settings->startUpPresetCheck);
    pointAway();
    place.settings->startUpPresetCheck->setChecked(true);
    place.settings->startUpPresetCombo->setEnabled(true);
    giveKeyboardTo(place.settings->startUpPresetCheck);

    for (int control = 0; control < 10 && !QTest::currentTestFailed(); ++control)
        tabToTheNextControl(settings);
    QCOMPARE(QApplication::focusWidget(), place.settings->startUpPresetCheck);
}

QTEST_APPLESS_MAIN(RealWindowTest)

#include "RealWindowTest.moc"
