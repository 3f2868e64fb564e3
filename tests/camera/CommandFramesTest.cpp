#include "support/Desk.h"
#include "support/Frames.h"

#include <QElapsedTimer>
#include <QTimer>

#include <climits>

using Command = void (AppVantrelSerial::*)();
Q_DECLARE_METATYPE(Command)

namespace {

constexpr int HomeZoomDelayMs = 1000;

QString followUpsOf(const AppVantrelSerial* link)
{
    QStringList timers;
    const auto children = link->findChildren<QTimer*>();
    for (const QTimer* timer : children)
        timers.append(timer->isActive() ? "running" : "fired");
    return timers.join(' ');
}

// Opens the port: no command that was given while it was closed may be sent now.
bool nothingIsSentLater(Desk& desk)
{
    desk.link()->openSerialPort();
    desk.link()->zoomStop();
    return desk.camera.nextFrame() == ZoomStop && desk.camera.pending().isEmpty();
}

} // namespace

/** What each command sends and writes to the activity log. */
class CommandFramesTest : public QObject
{
    Q_OBJECT

private slots:

    void aCommandIsLoggedAndIsSentIfThePortIsOpen_data()
    {
        QTest::addColumn<Command>("command");
        QTest::addColumn<QByteArray>("frame");
        const auto row = [](const char* entry, Command command, const char* frame) {
            QTest::newRow(entry) << command << QByteArray(frame);
        };
        row("MoveUp", &AppVantrelSerial::moveUp, "81 01 06 01 12 0e 03 01 ff");
        row("MoveDown", &AppVantrelSerial::moveDown, "81 01 06 01 12 0e 03 02 ff");
        row("MoveLeft", &AppVantrelSerial::moveLeft, "81 01 06 01 12 0e 01 03 ff");
        row("MoveRight", &AppVantrelSerial::moveRight, "81 01 06 01 12 0e 02 03 ff");
        row("MoveStop", &AppVantrelSerial::moveStop, "81 01 06 01 12 0e 03 03 ff");
        row("ZoomIn", &AppVantrelSerial::zoomIn, ZoomIn);
        row("ZoomOut", &AppVantrelSerial::zoomOut, ZoomOut);
        row("ZoomStop", &AppVantrelSerial::zoomStop, ZoomStop);
    }

    void aCommandIsLoggedAndIsSentIfThePortIsOpen()
    {
        QFETCH(Command, command);
        QFETCH(QByteArray, frame);
        const QString entry = QTest::currentDataTag();
        Desk desk({{"panspeed", 18}, {"tiltspeed", 14}});

        (desk.link()->*command)();

        QCOMPARE(desk.profile.log(), QStringList(entry));
        QCOMPARE(desk.camera.pending(), "");
        QCOMPARE(desk.camera.nextFrame(), frame);

        desk.link()->closeSerialPort();
        (desk.link()->*command)();
        QCOMPARE(desk.profile.log(), QStringList({entry, entry}));
        QVERIFY(nothingIsSentLater(desk));
        QCOMPARE(desk.user.texts(), QStringList());
    }

    void speedsAreSentUncheckedAndCutToAByte_data()
    {
        QTest::addColumn<QVariant>("speed");
        QTest::addColumn<QByteArray>("driveByte");
        QTest::addColumn<QByteArray>("teleByte");
        QTest::addColumn<QByteArray>("wideByte");
        const auto row = [](const char* name, const QVariant& speed, const char* drive, const char* tele,
                            const char* wide) {
            QTest::newRow(name) << speed << QByteArray(drive) << QByteArray(tele) << QByteArray(wide);
        };
        row("0", 0, "00", "20", "30");
        row("7", 7, "07", "27", "37");
        row("16, into the next nibble", 16, "10", "30", "40");
        row("208, over the byte", 208, "d0", "f0", "00");
        row("300", 300, "2c", "4c", "5c");
        row("-1", -1, "ff", "1f", "2f");
        row("largest", INT_MAX, "ff", "1f", "2f");
        row("smallest", INT_MIN, "00", "20", "30");
        row("no number", "fast", "00", "20", "30");
    }

    void speedsAreSentUncheckedAndCutToAByte()
    {
        QFETCH(QVariant, speed);
        QFETCH(QByteArray, driveByte);
        QFETCH(QByteArray, teleByte);
        QFETCH(QByteArray, wideByte);
        Desk desk({{"panspeed", speed}, {"tiltspeed", speed}, {"zoomspeed", speed}});

        desk.link()->moveUp();
        desk.link()->zoomIn();
        desk.link()->zoomOut();

        QTRY_COMPARE(desk.camera.pending(), "81 01 06 01 " + driveByte + ' ' + driveByte +
                                                " 03 01 ff 81 01 04 07 " + teleByte + " ff 81 01 04 07 " +
                                                wideByte + " ff");
    }

    void changedSpeedIsSentWithTheNextCommand()
    {
        Desk desk;

        desk.settings()->setPanSpeed(1);
        desk.settings()->setTiltSpeed(2);
        desk.settings()->setZoomSpeed(3);
        desk.link()->moveLeft();
        desk.link()->zoomIn();

        QCOMPARE(desk.camera.nextFrame(), "81 01 06 01 01 02 01 03 ff");
        QCOMPARE(desk.camera.nextFrame(), "81 01 04 07 23 ff");
    }

    void presetNumberIsSentAsItsRemainderBy255_data()
    {
        QTest::addColumn<int>("preset");
        QTest::addColumn<QByteArray>("presetByte");
        const std::pair<int, const char*> numbers[] = {
            {1, "01"},   {64, "40"}, {0, "00"},    {254, "fe"},  {255, "00"},     {256, "01"},
            {300, "2d"}, {-1, "ff"}, {-255, "00"}, {-256, "ff"}, {INT_MAX, "7f"}, {INT_MIN, "80"}};
        for (const auto& [preset, presetByte] : numbers)
            QTest::addRow("%d", preset) << preset << QByteArray(presetByte);
    }

    void presetNumberIsSentAsItsRemainderBy255()
    {
        QFETCH(int, preset);
        QFETCH(QByteArray, presetByte);
        Desk desk;
        const QString number = QString::number(preset);

        desk.link()->callPreset(preset);
        desk.link()->setPreset(preset);

        QTRY_COMPARE(desk.camera.pending(),
                     "81 01 04 3f 02 " + presetByte + " ff 81 01 04 3f 01 " + presetByte + " ff");
        QCOMPARE(desk.profile.log(), QStringList({"Call Preset" + number, "Set Preset" + number}));
        QCOMPARE(desk.user.texts(), QStringList("Preset No" + number + " is set."));
    }

    void homeZoomsToTheWidestViewOneSecondLaterWhateverTheZoomSpeed()
    {
        Desk desk({{"zoomspeed", 2}});
        QElapsedTimer clock;
        clock.start();

        desk.link()->moveHome();

        QCOMPARE(desk.camera.nextFrame(), Home);
        const auto timers = desk.link()->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(timers.size(), 1);
        QCOMPARE(timers.constFirst()->interval(), HomeZoomDelayMs);
        QVERIFY(timers.constFirst()->isSingleShot());
        // A timer of another kind may be 5 % early, but mostly is not.
        QCOMPARE(timers.constFirst()->timerType(), Qt::PreciseTimer);
        QCOMPARE(desk.camera.nextFrame(), FullWide);
        QVERIFY(clock.elapsed() >= HomeZoomDelayMs);
        QCOMPARE(desk.profile.log(), QStringList("Home"));
        QCOMPARE(followUpsOf(desk.link()), "fired");
    }

    void eachHomeSendsAFollowUp()
    {
        Desk desk;

        desk.link()->moveHome();
        desk.link()->moveHome();

        for (const char* frame : {Home, Home, FullWide, FullWide})
            QCOMPARE(desk.camera.nextFrame(), frame);
        QCOMPARE(followUpsOf(desk.link()), "fired fired");
        QCOMPARE(desk.profile.log(), QStringList({"Home", "Home"}));
    }

    void homeFollowUpIsDroppedIfThePortIsClosedByThen()
    {
        Desk desk;
        desk.link()->moveHome();
        QCOMPARE(desk.camera.nextFrame(), Home);

        desk.link()->closeSerialPort();
        QTRY_COMPARE(followUpsOf(desk.link()), "fired");

        QVERIFY(nothingIsSentLater(desk));
        QCOMPARE(desk.user.texts(), QStringList());
    }

    void homeFollowUpIsSentIfThePortIsOpenByThen()
    {
        Desk desk;
        desk.link()->closeSerialPort();

        desk.link()->moveHome();
        desk.link()->openSerialPort();

        QCOMPARE(desk.camera.nextFrame(), FullWide);
    }

    void homeFollowUpEndsWithTheProgram()
    {
        Desk desk;

        desk.link()->moveHome();
        const QPointer<QTimer> timer = desk.link()->findChild<QTimer*>();
        QVERIFY(timer);
        desk.program.reset();

        QVERIFY(!timer);
        QCOMPARE(desk.camera.nextFrame(), Home);
    }

    void rawBytesAreSentAsTheyAreIfThePortIsOpen()
    {
        // Among them the control characters of a terminal.
        const QByteArray bytes("00 03 04 0a 0d 11 13 1a 1c 7f 80 ff");
        Desk desk;
        QByteArray raw = QByteArray::fromHex(bytes);

        desk.link()->sendHex(raw.data(), 0);
        desk.link()->sendHex(raw.data(), static_cast<int>(raw.size()));
        QCOMPARE(desk.camera.nextFrame(), bytes);

        desk.link()->closeSerialPort();
        desk.link()->sendHex(raw.data(), static_cast<int>(raw.size()));
        QCOMPARE(desk.profile.log(), QStringList());
        QVERIFY(nothingIsSentLater(desk));
        QCOMPARE(desk.user.texts(), QStringList());
    }
};

QTEST_APPLESS_MAIN(CommandFramesTest)
#include "CommandFramesTest.moc"
