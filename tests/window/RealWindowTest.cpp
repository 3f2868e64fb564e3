#include "support/CameraEnd.h"
#include "support/PrivateProfile.h"
#include "support/UsbBus.h"
#include "window/RunningProgram.h"
#include "window/Screenshots.h"
#include "window/Window.h"

#include <QtTest>

#include <optional>

namespace {

constexpr char MainTitle[] = "Vantrel Controller";
constexpr char SettingsTitle[] = "Settings";
constexpr char BoxTitle[] = "Vantrel";

// The X server repeats a held key after 660 ms, and every 40 ms from then on.
constexpr int FewKeyRepeatsMs = 900;

constexpr DeviceId WchCh340{"1a86", "7523"};

// What the camera receives, with the speeds that a fresh account has.
constexpr char Up[] = "81 01 06 01 05 05 03 01 ff";
constexpr char Down[] = "81 01 06 01 05 05 03 02 ff";
constexpr char Left[] = "81 01 06 01 05 05 01 03 ff";
constexpr char Right[] = "81 01 06 01 05 05 02 03 ff";
constexpr char Stop[] = "81 01 06 01 05 05 03 03 ff";
constexpr char Home[] = "81 01 06 04 ff";
constexpr char ZoomIn[] = "81 01 04 07 25 ff";
constexpr char ZoomOut[] = "81 01 04 07 35 ff";
constexpr char ZoomStop[] = "81 01 04 07 00 ff";
constexpr char FullWide[] = "81 01 04 07 37 ff";

QByteArray recallOf(int preset)
{
    return "81 01 04 3f 02 " + QByteArray(1, static_cast<char>(preset)).toHex() + " ff";
}

QByteArray storingOf(int preset)
{
    return "81 01 04 3f 01 " + QByteArray(1, static_cast<char>(preset)).toHex() + " ff";
}

// The middles of the controls of the connected main window.
constexpr QPoint SettingsButton(246, 25);
constexpr QPoint ConnectButton(146, 62);
constexpr QPoint UpButton(146, 114);
constexpr QPoint LeftButton(54, 180);
constexpr QPoint HomeButton(146, 180);
constexpr QPoint RightButton(238, 180);
constexpr QPoint ZoomInButton(54, 246);
constexpr QPoint DownButton(146, 246);
constexpr QPoint ZoomOutButton(238, 246);
constexpr QPoint PresetButtons[] = {{54, 312},  {146, 312}, {238, 312}, {54, 378}, {146, 378},
                                    {238, 378}, {54, 444},  {146, 444}, {238, 444}};
constexpr QPoint NumberField(77, 496);
constexpr QPoint CallButton(215, 496);
constexpr QPoint NameField(77, 533);
constexpr QPoint SetButton(215, 533);

// The middles of the controls of the settings; of a slider its handle at the speed 5.
constexpr QPoint RunOnStartUpCheck(62, 19);
constexpr QPoint PortMenu(178, 44);
constexpr QPoint BaudRateMenu(183, 73);
constexpr QPoint StartUpPresetCheck(62, 102);
constexpr QPoint StartUpPresetMenu(183, 102);
constexpr QPoint InvertPanCheck(80, 128);
constexpr QPoint InvertTiltCheck(80, 150);
constexpr QPoint PanSpeedHandle(68, 192);
constexpr QPoint TiltSpeedHandle(84, 234);
constexpr QPoint ZoomSpeedHandle(160, 276);
constexpr int SlidersLeftEnd = 12;
constexpr int SlidersRightEnd = 236;

/** The place that a control takes in its window. */
struct Control
{
    QPoint middle;
    QSize size;

    QRect area() const { return {middle - QPoint(size.width() / 2, size.height() / 2), size}; }
};

constexpr QSize SmallButtonSize(30, 30);
constexpr QSize ImageButtonSize(70, 60);
constexpr QSize TextButtonSize(132, 30);
constexpr QSize WideButtonSize(270, 30);

// In the order in which the Tab key goes round, from the one that has the keyboard at first.
constexpr Control MainControls[] = {
    {SettingsButton, SmallButtonSize},   {ConnectButton, WideButtonSize},
    {UpButton, ImageButtonSize},         {LeftButton, ImageButtonSize},
    {HomeButton, ImageButtonSize},       {RightButton, ImageButtonSize},
    {ZoomInButton, ImageButtonSize},     {DownButton, ImageButtonSize},
    {ZoomOutButton, ImageButtonSize},    {PresetButtons[0], ImageButtonSize},
    {PresetButtons[1], ImageButtonSize}, {PresetButtons[2], ImageButtonSize},
    {PresetButtons[3], ImageButtonSize}, {PresetButtons[4], ImageButtonSize},
    {PresetButtons[5], ImageButtonSize}, {PresetButtons[6], ImageButtonSize},
    {PresetButtons[7], ImageButtonSize}, {PresetButtons[8], ImageButtonSize},
    {NumberField, TextButtonSize},       {CallButton, TextButtonSize},
    {NameField, TextButtonSize},         {SetButton, TextButtonSize},
};

constexpr QSize CheckSize(124, 22);
constexpr QSize LongCheckSize(150, 22);
constexpr QSize MenuSize(122, 26);
constexpr QSize SliderSize(230, 22);
constexpr int SlidersMiddle = 125;
constexpr Control SettingsControls[] = {
    {RunOnStartUpCheck, CheckSize},
    {PortMenu, MenuSize},
    {BaudRateMenu, MenuSize},
    {StartUpPresetCheck, CheckSize},
    {StartUpPresetMenu, MenuSize},
    {InvertPanCheck, LongCheckSize},
    {InvertTiltCheck, LongCheckSize},
    {QPoint(SlidersMiddle, PanSpeedHandle.y()), SliderSize},
    {QPoint(SlidersMiddle, TiltSpeedHandle.y()), SliderSize},
    {QPoint(SlidersMiddle, ZoomSpeedHandle.y()), SliderSize},
};

constexpr QSize HandleSize(20, 20);
constexpr Control SliderHandles[] = {
    {PanSpeedHandle, HandleSize},
    {TiltSpeedHandle, HandleSize},
    {ZoomSpeedHandle, HandleSize},
};

struct MotionButton
{
    QPoint place;
    const char* frame;
    const char* logLine;
    const char* stopFrame;
    const char* stopLogLine;
};

constexpr MotionButton MotionButtons[] = {
    {UpButton, Up, "MoveUp", Stop, "MoveStop"},
    {LeftButton, Left, "MoveLeft", Stop, "MoveStop"},
    {RightButton, Right, "MoveRight", Stop, "MoveStop"},
    {ZoomInButton, ZoomIn, "ZoomIn", ZoomStop, "ZoomStop"},
    {DownButton, Down, "MoveDown", Stop, "MoveStop"},
    {ZoomOutButton, ZoomOut, "ZoomOut", ZoomStop, "ZoomStop"},
};

/** A user at the screen: a fresh account, a camera on its USB adapter, and the program, connected to it. */
class Workplace
{
public:
    Workplace()
    {
        profile.store("comport", "AUTO");
        plugCamera();
        pointAway();
        start();
    }

    // What a failed test left pressed would be in the way of the next one.
    ~Workplace()
    {
        releaseMouse();
        releaseKey("space");
    }
    Q_DISABLE_COPY(Workplace)

    void plugCamera() { port = bus.plug("1-1", WchCh340, camera.portName()); }

    void start()
    {
        program.emplace();
        findWindow();
    }

    void findWindow()
    {
        window.emplace(MainTitle);
        window->activate();
    }

    /**
     * Opens the settings while no port is listed: a port's name, which is another one in every run, would
     * decide how wide its menu is.
     */
    Window openSettingsWithoutPorts()
    {
        bus.unplug(port);
        window->activate();
        pressKeys({"space"});
        return openedSettings();
    }

    /** Closes the main window by its key; returns what troubleAtExit() does. */
    QString quit()
    {
        window->activate();
        pressKeys({"alt+F4"});
        return program->troubleAtExit();
    }

    Window openSettings() const
    {
        window->click(SettingsButton);
        return openedSettings();
    }

    static Window openedSettings()
    {
        Window settings(SettingsTitle);
        settings.activate();
        return settings;
    }

    /** Waits for the next frames that the camera receives. */
    QByteArrayList received(int count)
    {
        QByteArrayList frames;
        while (count-- > 0)
            frames.append(camera.nextFrame());
        return frames;
    }

    /** The log since the program connected. */
    QStringList log() const { return profile.log().mid(1); }

    QString stored(const QString& key) const { return profile.stored(key).toString(); }

    /** Every stored setting as "key=value", in the order of the keys. */
    QStringList allStored() const
    {
        QStringList lines = QSettings(profile.settingsFile(), QSettings::IniFormat).allKeys();
        for (QString& line : lines)
            line += '=' + stored(line);
        return lines;
    }

    /** Whether the program has the camera's line open. */
    bool isPortOpen() const { return program->hasOpen(camera.portName()); }

    PrivateProfile profile;
    CameraEnd camera;
    UsbBus bus;
    QString port;
    std::optional<RunningProgram> program;
    std::optional<Window> window;
};

/** Presses the OK of the message box that opens. */
void dismissBox()
{
    const Window box(BoxTitle);
    box.activate();
    pressKeys({"Return"});
    QTRY_VERIFY(!box.isOnScreen());
}

/** Opens a menu and clicks a choice; the first one has the row 0. */
void choose(const Window& settings, const QPoint& menuPlace, int row)
{
    constexpr int firstRow = 15;
    constexpr int rowHeight = 23;
    settings.click(menuPlace);
    const Window menu = Window::popup();
    menu.click(QPoint(20, firstRow + row * rowHeight));
    QTRY_VERIFY(!menu.isOnScreen());
}

/** Drags a slider's handle to another place on its line. */
void drag(const Window& settings, const QPoint& handle, int toX)
{
    settings.press(handle);
    settings.pointAt(QPoint(toX, handle.y()));
    releaseMouse();
}

} // namespace

#define QVERIFY_LOOKS_LIKE(...) QCOMPARE(differenceFrom(__VA_ARGS__), QString())

/**
 * The program as its user meets it: started, seen and steered from outside. After a change of the looks,
 * tests/renew-screenshots stores the pictures anew; look at them before you keep them.
 */
class RealWindowTest : public QObject
{
    Q_OBJECT

private slots:
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
    void leavingAHeldButtonWithTabStopsOnce();
    void everySettingIsChangedByKeyboardAlone();
    void everyMenuOffersItsChoices();
    void everySettingIsFoundAgainAfterARestart();
    void aSettingIsInForceAtTheNextPress();
    void theSettingsOpenOnceAndStayAsTheyAre();
    void anotherWindowComingToTheFrontStopsAHeldMotionOnce();
    void minimisingTheWindowStopsAHeldMotionOnce();
    void closingTheWindowStopsAHeldMotion();
    void closingTheMainWindowClosesTheSettingsToo();
    void withoutACameraTheErrorComesBeforeTheWindow();
    void aPulledAdapterIsReportedOnceAndConnectFindsItAgain();
    void quittingWhileConnectedFreesThePort();
    void everyMainControlShowsThePointer();
    void everyMainControlShowsThatItIsPressed();
    void everyMainControlShowsThatItHasTheKeyboard();
    void everySettingShowsThatItHasTheKeyboard();
    void everySliderShowsThePointerAndThatItIsPressed();
};

void RealWindowTest::holdingAButtonMovesAndReleasingItStops()
{
    Workplace place;
    QStringList expectedLog;

    for (const MotionButton& button : MotionButtons) {
        place.window->press(button.place);
        QCOMPARE(place.received(1), QByteArrayList{button.frame});
        releaseMouse();
        QCOMPARE(place.received(1), QByteArrayList{button.stopFrame});
        expectedLog << button.logLine << button.stopLogLine;
    }
    QCOMPARE(place.log(), expectedLog);
}

void RealWindowTest::draggingOffAHeldButtonStopsAndDraggingBackMovesAgain()
{
    Workplace place;

    place.window->press(LeftButton);
    QCOMPARE(place.received(1), QByteArrayList{Left});
    place.window->pointAt(HomeButton);
    QCOMPARE(place.received(1), QByteArrayList{Stop});
    place.window->pointAt(LeftButton);
    QCOMPARE(place.received(1), QByteArrayList{Left});
    releaseMouse();
    QCOMPARE(place.received(1), QByteArrayList{Stop});
}

void RealWindowTest::homeGoesHomeAndThenZoomsOut()
{
    Workplace place;

    place.window->click(HomeButton);

    QCOMPARE(place.received(2), QByteArrayList({Home, FullWide}));
    QCOMPARE(place.log(), QStringList{"Home"});
}

void RealWindowTest::aPresetButtonRecallsItsPreset()
{
    Workplace place;

    int preset = 0;
    for (const QPoint& button : PresetButtons) {
        place.window->click(button);
        QCOMPARE(place.received(1), QByteArrayList{recallOf(++preset)});
        QCOMPARE(place.log().constLast(), "Call Preset" + QString::number(preset));
    }
}

void RealWindowTest::callRecallsTheEnteredPreset()
{
    Workplace place;

    place.window->click(NumberField);
    type("64");
    place.window->click(CallButton);

    QCOMPARE(place.received(1), QByteArrayList{recallOf(64)});
    QCOMPARE(place.log(), QStringList{"Call Preset64"});
}

void RealWindowTest::setStoresThePresetAndItsName()
{
    Workplace place;

    place.window->click(NumberField);
    type("5");
    place.window->click(NameField);
    type("Desk");
    place.window->click(SetButton);

    QCOMPARE(place.received(1), QByteArrayList{storingOf(5)});
    QCOMPARE(place.log(), QStringList{"Set Preset5"});
    QVERIFY_LOOKS_LIKE("box-preset-is-set", Window(BoxTitle));
    dismissBox();
    QTRY_COMPARE(place.stored("AUTO_5"), QString("Desk"));

    place.window->activate();
    place.window->pointAt(PresetButtons[4]);
    QVERIFY_LOOKS_LIKE("tooltip-desk", Window::popup());
}

void RealWindowTest::aNumberOutOfRangeIsExplainedAndSendsNothing()
{
    Workplace place;
    place.window->click(NumberField);
    type("65");

    place.window->click(CallButton);
    QVERIFY_LOOKS_LIKE("box-number-out-of-range", Window(BoxTitle));
    dismissBox();
    place.window->click(SetButton);
    dismissBox();

    place.window->click(PresetButtons[0]);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});
    QCOMPARE(place.log(), QStringList{"Call Preset1"});
}

void RealWindowTest::theConnectButtonClosesThePortAndOpensItAgain()
{
    Workplace place;
    QVERIFY_LOOKS_LIKE("main-connected", *place.window);

    place.window->click(ConnectButton);
    pointAway();
    QVERIFY_LOOKS_LIKE("main-disconnected", *place.window);
    place.window->click(PresetButtons[0]);
    QTRY_COMPARE(place.log(), QStringList{"Call Preset1"});

    place.window->click(ConnectButton);
    pointAway();
    QVERIFY_LOOKS_LIKE("main-connected", *place.window);
    place.window->click(PresetButtons[1]);
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

    pressKeys({"space"});
    const Window settings = Workplace::openedSettings();
    pressKeys({"Escape"});
    QTRY_VERIFY(!settings.isOnScreen());

    place.window->activate();
    pressKeys({"Tab", "space"});
    QTRY_COMPARE(place.isPortOpen(), false);
    pressKeys({"space"});
    QTRY_COMPARE(place.isPortOpen(), true);

    const QByteArrayList framesOfMotions[] = {{Up, Stop},         {Left, Stop},       {Home, FullWide},
                                              {Right, Stop},      {ZoomIn, ZoomStop}, {Down, Stop},
                                              {ZoomOut, ZoomStop}};
    for (const QByteArrayList& frames : framesOfMotions) {
        pressKeys({"Tab", "space"});
        QCOMPARE(place.received(2), frames);
    }
    for (int preset = 1; preset <= 9; ++preset) {
        pressKeys({"Tab", "space"});
        QCOMPARE(place.received(1), QByteArrayList{recallOf(preset)});
    }

    pressKeys({"Tab", "1", "2", "Tab", "space"});
    QCOMPARE(place.received(1), QByteArrayList{recallOf(12)});
    pressKeys({"Tab", "a", "Tab", "space"});
    QCOMPARE(place.received(1), QByteArrayList{storingOf(12)});
    dismissBox();
    QTRY_COMPARE(place.stored("AUTO_12"), QString("a"));
}

void RealWindowTest::holdingTheSpaceBarMovesOnceAndReleasingItStops()
{
    Workplace place;
    pressKeys({"Tab", "Tab"});

    holdKey("space");
    QCOMPARE(place.received(1), QByteArrayList{Up});
    QTest::qWait(FewKeyRepeatsMs);
    QCOMPARE(place.camera.pending(), QByteArray());
    releaseKey("space");

    QCOMPARE(place.received(1), QByteArrayList{Stop});
    QCOMPARE(place.log(), QStringList({"MoveUp", "MoveStop"}));
}

void RealWindowTest::leavingAHeldButtonWithTabStopsOnce()
{
    Workplace place;
    pressKeys({"Tab", "Tab"});

    holdKey("space");
    QCOMPARE(place.received(1), QByteArrayList{Up});
    pressKeys({"Tab"});
    QCOMPARE(place.received(1), QByteArrayList{Stop});
    releaseKey("space");

    place.window->click(PresetButtons[8]);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(9)});
}

void RealWindowTest::everySettingIsChangedByKeyboardAlone()
{
    Workplace place;
    pressKeys({"space"});
    const Window settings = Workplace::openedSettings();

    pressKeys({"space"});
    QTRY_COMPARE(place.stored("runonstartup"), QString("true"));
    pressKeys({"Tab", "Down"});
    QTRY_COMPARE(place.stored("comport"), place.port);
    pressKeys({"Tab", "End"});
    QTRY_COMPARE(place.stored("baudrate"), QString("115200"));
    pressKeys({"Tab", "space"});
    QTRY_COMPARE(place.stored("isstartuppreset"), QString("true"));
    pressKeys({"Tab", "Down", "Down"});
    QTRY_COMPARE(place.stored("startuppreset"), QString("3"));
    pressKeys({"Tab", "space"});
    QTRY_COMPARE(place.stored("invertpan"), QString("true"));
    pressKeys({"Tab", "space"});
    QTRY_COMPARE(place.stored("inverttilt"), QString("true"));

    pressKeys({"Tab", "Prior"});
    QTRY_COMPARE(place.stored("panspeed"), QString("7"));
    pressKeys({"Right"});
    QTRY_COMPARE(place.stored("panspeed"), QString("8"));
    pressKeys({"End"});
    QTRY_COMPARE(place.stored("panspeed"), QString("18"));
    pressKeys({"Tab", "Home"});
    QTRY_COMPARE(place.stored("tiltspeed"), QString("1"));
    pressKeys({"Tab", "Next"});
    QTRY_COMPARE(place.stored("zoomspeed"), QString("3"));

    pressKeys({"Escape"});
    QTRY_VERIFY(!settings.isOnScreen());
}

void RealWindowTest::everyMenuOffersItsChoices()
{
    Workplace place;
    const Window settings = place.openSettings();

    settings.click(BaudRateMenu);
    const Window menu = Window::popup();
    QVERIFY_LOOKS_LIKE("menu-baud-rates", menu);
    pressKeys({"Escape"});
    QTRY_VERIFY(!menu.isOnScreen());
    int row = 0;
    for (const char* baudRate : {"1200", "2400", "4800", "9600", "19200", "38400", "57600", "115200"}) {
        choose(settings, BaudRateMenu, row++);
        QTRY_COMPARE(place.stored("baudrate"), QString(baudRate));
    }

    choose(settings, PortMenu, 1);
    QTRY_COMPARE(place.stored("comport"), place.port);
    choose(settings, PortMenu, 0);
    QTRY_COMPARE(place.stored("comport"), QString("AUTO"));

    settings.click(StartUpPresetCheck);
    choose(settings, StartUpPresetMenu, 1);
    QTRY_COMPARE(place.stored("startuppreset"), QString("2"));
    pressKeys({"Home"});
    for (int preset = 1; preset <= 64; ++preset) {
        QTRY_COMPARE(place.stored("startuppreset"), QString::number(preset));
        pressKeys({"Down"});
    }
    settings.click(StartUpPresetMenu);
    QVERIFY_LOOKS_LIKE("menu-presets", Window::popup());
}

void RealWindowTest::everySettingIsFoundAgainAfterARestart()
{
    Workplace place;
    Window settings = place.openSettings();
    settings.click(RunOnStartUpCheck);
    QTRY_COMPARE(place.stored("runonstartup"), QString("true"));
    choose(settings, PortMenu, 1);
    QTRY_COMPARE(place.stored("comport"), place.port);
    choose(settings, BaudRateMenu, 7);
    QTRY_COMPARE(place.stored("baudrate"), QString("115200"));
    settings.click(StartUpPresetCheck);
    QTRY_COMPARE(place.stored("isstartuppreset"), QString("true"));
    choose(settings, StartUpPresetMenu, 10);
    QTRY_COMPARE(place.stored("startuppreset"), QString("11"));
    settings.click(InvertPanCheck);
    QTRY_COMPARE(place.stored("invertpan"), QString("true"));
    settings.click(InvertTiltCheck);
    QTRY_COMPARE(place.stored("inverttilt"), QString("true"));
    drag(settings, PanSpeedHandle, SlidersRightEnd);
    QTRY_COMPARE(place.stored("panspeed"), QString("18"));
    drag(settings, TiltSpeedHandle, SlidersLeftEnd);
    QTRY_COMPARE(place.stored("tiltspeed"), QString("1"));
    drag(settings, ZoomSpeedHandle, SlidersRightEnd);
    QTRY_COMPARE(place.stored("zoomspeed"), QString("7"));
    pointAway();
    QCOMPARE(place.quit(), QString());

    QStringList expected{"baudrate=115200",   "comport=" + place.port, "invertpan=true",
                         "inverttilt=true",   "isstartuppreset=true",  "panspeed=18",
                         "runonstartup=true", "startuppreset=11",      "tiltspeed=1",
                         "zoomspeed=7"};
    QCOMPARE(place.allStored(), expected);

    place.start();
    QCOMPARE(place.received(1), QByteArrayList{recallOf(11)});
    settings = place.openSettingsWithoutPorts();
    QVERIFY_LOOKS_LIKE("settings-changed", settings);
    // Opening the settings has put the port back to automatic detection, and nothing else.
    expected.replaceInStrings(place.port, "AUTO");
    QTRY_COMPARE(place.allStored(), expected);
}

void RealWindowTest::aSettingIsInForceAtTheNextPress()
{
    Workplace place;
    const Window settings = place.openSettings();

    drag(settings, PanSpeedHandle, SlidersRightEnd);
    QTRY_COMPARE(place.stored("panspeed"), QString("18"));
    settings.click(InvertTiltCheck);
    QTRY_COMPARE(place.stored("inverttilt"), QString("true"));
    place.window->click(UpButton);

    QCOMPARE(place.received(2), QByteArrayList({"81 01 06 01 12 05 03 02 ff", "81 01 06 01 12 05 03 03 ff"}));
    QCOMPARE(place.log(), QStringList({"MoveDown", "MoveStop"}));
}

void RealWindowTest::theSettingsOpenOnceAndStayAsTheyAre()
{
    Workplace place;
    const Window settings = place.openSettings();
    choose(settings, PortMenu, 1);
    QTRY_COMPARE(place.stored("comport"), place.port);

    place.window->click(SettingsButton);
    place.window->click(PresetButtons[0]);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});

    QVERIFY(settings.isOnScreen());
    QCOMPARE(place.stored("comport"), place.port);
}

void RealWindowTest::anotherWindowComingToTheFrontStopsAHeldMotionOnce()
{
    Workplace place;
    const Window settings = place.openSettings();

    place.window->press(UpButton);
    QCOMPARE(place.received(1), QByteArrayList{Up});
    pressKeys({"alt+Tab"});
    QCOMPARE(place.received(1), QByteArrayList{Stop});
    releaseMouse();

    place.window->click(PresetButtons[8]);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(9)});
}

void RealWindowTest::minimisingTheWindowStopsAHeldMotionOnce()
{
    Workplace place;

    place.window->press(ZoomInButton);
    QCOMPARE(place.received(1), QByteArrayList{ZoomIn});
    place.window->minimise();
    QCOMPARE(place.received(1), QByteArrayList{ZoomStop});
    releaseMouse();

    place.window->activate();
    place.window->click(PresetButtons[8]);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(9)});
}

void RealWindowTest::closingTheWindowStopsAHeldMotion()
{
    Workplace place;

    place.window->press(UpButton);
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

    place.program.emplace();
    QVERIFY_LOOKS_LIKE("box-no-camera", Window(BoxTitle));
    QVERIFY(!Window::isOnScreen(MainTitle));
    dismissBox();
    place.findWindow();
    QVERIFY_LOOKS_LIKE("main-no-camera", *place.window);

    // Opening the settings puts the port to automatic detection.
    pressKeys({"space"});
    const Window settings = Workplace::openedSettings();
    pressKeys({"Escape"});
    QTRY_VERIFY(!settings.isOnScreen());
    place.plugCamera();
    place.window->click(ConnectButton);
    pointAway();
    QVERIFY_LOOKS_LIKE("main-connected", *place.window);
}

void RealWindowTest::aPulledAdapterIsReportedOnceAndConnectFindsItAgain()
{
    Workplace place;

    place.bus.unplug(place.port);
    place.camera.pull();
    dismissBox();
    QVERIFY(!Window::isOnScreen(BoxTitle));
    pointAway();
    QVERIFY_LOOKS_LIKE("main-disconnected", *place.window);
    place.window->click(UpButton);
    QTRY_COMPARE(place.log(), QStringList({"MoveUp", "MoveStop"}));

    CameraEnd cameraAgain;
    place.port = place.bus.plug("1-1", WchCh340, cameraAgain.portName());
    place.window->click(ConnectButton);
    pointAway();
    QVERIFY_LOOKS_LIKE("main-connected", *place.window);
    place.window->click(PresetButtons[1]);
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
    place.window->click(PresetButtons[0]);
    QCOMPARE(place.received(1), QByteArrayList{recallOf(1)});
}

void RealWindowTest::everyMainControlShowsThePointer()
{
    Workplace place;

    for (const Control& control : MainControls) {
        // Near its lower edge, so that the tooltip opens below it.
        place.window->pointAt(control.middle + QPoint(0, control.size.height() / 2 - 4));
        QVERIFY_LOOKS_LIKE("main-hovered", *place.window, control.area());
    }
}

void RealWindowTest::everyMainControlShowsThatItIsPressed()
{
    Workplace place;

    for (const Control& control : MainControls) {
        place.window->press(control.middle);
        QVERIFY_LOOKS_LIKE("main-pressed", *place.window, control.area());
        pointAway();
        releaseMouse();
    }
}

void RealWindowTest::everyMainControlShowsThatItHasTheKeyboard()
{
    Workplace place;

    pressKeys({"shift+Tab"});
    for (const Control& control : MainControls) {
        pressKeys({"Tab"});
        QVERIFY_LOOKS_LIKE("main-focused", *place.window, control.area());
    }
}

void RealWindowTest::everySettingShowsThatItHasTheKeyboard()
{
    Workplace place;
    const Window settings = place.openSettingsWithoutPorts();
    QVERIFY_LOOKS_LIKE("settings", settings);
    settings.click(StartUpPresetCheck);
    pointAway();

    pressKeys({"shift+Tab", "shift+Tab", "shift+Tab", "shift+Tab"});
    for (const Control& control : SettingsControls) {
        pressKeys({"Tab"});
        QVERIFY_LOOKS_LIKE("settings-focused", settings, control.area());
    }
}

void RealWindowTest::everySliderShowsThePointerAndThatItIsPressed()
{
    Workplace place;
    const Window settings = place.openSettings();

    for (const Control& handle : SliderHandles) {
        settings.pointAt(handle.middle);
        QVERIFY_LOOKS_LIKE("settings-hovered", settings, handle.area());
        settings.press(handle.middle);
        QVERIFY_LOOKS_LIKE("settings-pressed", settings, handle.area());
        releaseMouse();
    }
}

QTEST_MAIN(RealWindowTest)

#include "RealWindowTest.moc"
