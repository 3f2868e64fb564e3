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

} // namespace

class CommandFramesTest : public QObject
{
    Q_OBJECT

private slots:
    void commandWritesItsFrameAndItsLogLine_data();
    void commandWritesItsFrameAndItsLogLine();
    void closedLineOnlyLogsTheCommand_data();
    void closedLineOnlyLogsTheCommand();
    void logLineComesBeforeTheFrame_data();
    void logLineComesBeforeTheFrame();

    void driveCarriesThePanSpeedAndThenTheTiltSpeed_data();
    void driveCarriesThePanSpeedAndThenTheTiltSpeed();
    void speedsGoOutUncheckedCutToAByte_data();
    void speedsGoOutUncheckedCutToAByte();
    void changedSpeedCountsForTheNextCommand();
    void speedsThatAreNoNumbersGoOutAsZero();

    void presetNumberGoesOutAsItsRemainderBy255_data();
    void presetNumberGoesOutAsItsRemainderBy255();
    void storingAPresetSaysSo();
    void storingAPresetSaysSoOnAClosedLineToo();
    void storedPresetIsOnTheLineBeforeTheMessage();

    void homeZoomsToTheWidestViewOneSecondLater();
    void secondHomeSendsAFollowUpOfItsOwn();
    void homeFollowUpIgnoresTheZoomSpeed();
    void homeFollowUpIsDroppedWhereThePortWasClosedMeanwhile();
    void homeFollowUpGoesToThePortOpenThen();
    void homeOnAClosedLineStillArmsItsFollowUp();
    void programEndsWithAFollowUpPending();

    void rawBytesGoOutAsTheyAre_data();
    void rawBytesGoOutAsTheyAre();
    void rawBytesAreDroppedOnAClosedLine();
};

void CommandFramesTest::commandWritesItsFrameAndItsLogLine_data()
{
    QTest::addColumn<Command>("command");
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("logLine");

    const auto row = [](const char* logLine, Command command, const char* frame) {
        QTest::newRow(logLine) << command << QByteArray(frame) << QString(logLine);
    };
    row("MoveUp", &AppVantrelSerial::moveUp, "81 01 06 01 05 05 03 01 ff");
    row("MoveDown", &AppVantrelSerial::moveDown, "81 01 06 01 05 05 03 02 ff");
    row("MoveLeft", &AppVantrelSerial::moveLeft, "81 01 06 01 05 05 01 03 ff");
    row("MoveRight", &AppVantrelSerial::moveRight, "81 01 06 01 05 05 02 03 ff");
    row("MoveStop", &AppVantrelSerial::moveStop, Stop);
    row("Home", &AppVantrelSerial::moveHome, Home);
    row("ZoomIn", &AppVantrelSerial::zoomIn, "81 01 04 07 25 ff");
    row("ZoomOut", &AppVantrelSerial::zoomOut, "81 01 04 07 35 ff");
    row("ZoomStop", &AppVantrelSerial::zoomStop, ZoomStop);
}

void CommandFramesTest::commandWritesItsFrameAndItsLogLine()
{
    QFETCH(Command, command);
    QFETCH(QByteArray, frame);
    QFETCH(QString, logLine);
    Desk desk;

    (desk.link()->*command)();

    QCOMPARE(desk.camera.nextFrame(), frame);
    QCOMPARE(desk.profile.log(), QStringList(logLine));
    QCOMPARE(desk.user.texts(), QStringList());
    desk.link()->zoomStop();
    QCOMPARE(desk.camera.nextFrame(), ZoomStop);
}

void CommandFramesTest::closedLineOnlyLogsTheCommand_data()
{
    commandWritesItsFrameAndItsLogLine_data();
}

void CommandFramesTest::closedLineOnlyLogsTheCommand()
{
    QFETCH(Command, command);
    QFETCH(QString, logLine);
    Desk desk;
    desk.link()->closeSerialPort();

    (desk.link()->*command)();
    QCOMPARE(desk.profile.log(), QStringList(logLine));

    desk.link()->openSerialPort();
    desk.link()->zoomStop();
    QCOMPARE(desk.camera.nextFrame(), ZoomStop);
    QCOMPARE(desk.camera.pending(), "");
    QCOMPARE(desk.user.texts(), QStringList());
}

void CommandFramesTest::logLineComesBeforeTheFrame_data()
{
    commandWritesItsFrameAndItsLogLine_data();
}

void CommandFramesTest::logLineComesBeforeTheFrame()
{
    QFETCH(Command, command);
    QFETCH(QString, logLine);
    Desk desk;

    (desk.link()->*command)();

    QCOMPARE(desk.profile.log(), QStringList(logLine));
    QCOMPARE(desk.camera.pending(), "");
    QVERIFY(!desk.camera.nextFrame().isEmpty());
}

void CommandFramesTest::driveCarriesThePanSpeedAndThenTheTiltSpeed_data()
{
    QTest::addColumn<Command>("command");
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("up") << Command(&AppVantrelSerial::moveUp) << QByteArray("81 01 06 01 12 0e 03 01 ff");
    QTest::newRow("down") << Command(&AppVantrelSerial::moveDown) << QByteArray("81 01 06 01 12 0e 03 02 ff");
    QTest::newRow("left") << Command(&AppVantrelSerial::moveLeft) << QByteArray("81 01 06 01 12 0e 01 03 ff");
    QTest::newRow("right") << Command(&AppVantrelSerial::moveRight)
                           << QByteArray("81 01 06 01 12 0e 02 03 ff");
    QTest::newRow("stop") << Command(&AppVantrelSerial::moveStop) << QByteArray("81 01 06 01 12 0e 03 03 ff");
}

void CommandFramesTest::driveCarriesThePanSpeedAndThenTheTiltSpeed()
{
    QFETCH(Command, command);
    QFETCH(QByteArray, frame);
    Desk desk({{"panspeed", 18}, {"tiltspeed", 14}});

    (desk.link()->*command)();

    QCOMPARE(desk.camera.nextFrame(), frame);
}

void CommandFramesTest::speedsGoOutUncheckedCutToAByte_data()
{
    QTest::addColumn<int>("speed");
    QTest::addColumn<QByteArray>("driveByte");
    QTest::addColumn<QByteArray>("teleByte");
    QTest::addColumn<QByteArray>("wideByte");
    QTest::newRow("0") << 0 << QByteArray("00") << QByteArray("20") << QByteArray("30");
    QTest::newRow("1") << 1 << QByteArray("01") << QByteArray("21") << QByteArray("31");
    QTest::newRow("7") << 7 << QByteArray("07") << QByteArray("27") << QByteArray("37");
    QTest::newRow("16, into the next nibble")
        << 16 << QByteArray("10") << QByteArray("30") << QByteArray("40");
    QTest::newRow("99") << 99 << QByteArray("63") << QByteArray("83") << QByteArray("93");
    QTest::newRow("208, over the byte") << 208 << QByteArray("d0") << QByteArray("f0") << QByteArray("00");
    QTest::newRow("300") << 300 << QByteArray("2c") << QByteArray("4c") << QByteArray("5c");
    QTest::newRow("-1") << -1 << QByteArray("ff") << QByteArray("1f") << QByteArray("2f");
    QTest::newRow("largest") << INT_MAX << QByteArray("ff") << QByteArray("1f") << QByteArray("2f");
    QTest::newRow("smallest") << INT_MIN << QByteArray("00") << QByteArray("20") << QByteArray("30");
}

void CommandFramesTest::speedsGoOutUncheckedCutToAByte()
{
    QFETCH(int, speed);
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

void CommandFramesTest::changedSpeedCountsForTheNextCommand()
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

void CommandFramesTest::speedsThatAreNoNumbersGoOutAsZero()
{
    Desk desk({{"panspeed", "fast"}, {"tiltspeed", ""}, {"zoomspeed", "x7"}});

    desk.link()->moveStop();
    desk.link()->zoomOut();

    QCOMPARE(desk.camera.nextFrame(), "81 01 06 01 00 00 03 03 ff");
    QCOMPARE(desk.camera.nextFrame(), "81 01 04 07 30 ff");
}

void CommandFramesTest::presetNumberGoesOutAsItsRemainderBy255_data()
{
    QTest::addColumn<int>("preset");
    QTest::addColumn<QByteArray>("presetByte");
    QTest::newRow("1") << 1 << QByteArray("01");
    QTest::newRow("9") << 9 << QByteArray("09");
    QTest::newRow("64") << 64 << QByteArray("40");
    QTest::newRow("0") << 0 << QByteArray("00");
    QTest::newRow("254") << 254 << QByteArray("fe");
    QTest::newRow("255") << 255 << QByteArray("00");
    QTest::newRow("256") << 256 << QByteArray("01");
    QTest::newRow("300") << 300 << QByteArray("2d");
    QTest::newRow("-1") << -1 << QByteArray("ff");
    QTest::newRow("-255") << -255 << QByteArray("00");
    QTest::newRow("-256") << -256 << QByteArray("ff");
    QTest::newRow("largest") << INT_MAX << QByteArray("7f");
    QTest::newRow("smallest") << INT_MIN << QByteArray("80");
}

void CommandFramesTest::presetNumberGoesOutAsItsRemainderBy255()
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

void CommandFramesTest::storingAPresetSaysSo()
{
    Desk desk;

    desk.link()->setPreset(64);

    QCOMPARE(desk.camera.nextFrame(), "81 01 04 3f 01 40 ff");
    QCOMPARE(desk.user.boxes().size(), 1);
    QCOMPARE(desk.user.boxes().constFirst().title, "Vantrel");
    QCOMPARE(desk.user.boxes().constFirst().text, "Preset No64 is set.");
}

void CommandFramesTest::storingAPresetSaysSoOnAClosedLineToo()
{
    Desk desk;
    desk.link()->closeSerialPort();

    desk.link()->setPreset(5);
    desk.link()->callPreset(5);

    QCOMPARE(desk.user.texts(), QStringList("Preset No5 is set."));
    QCOMPARE(desk.profile.log(), QStringList({"Set Preset5", "Call Preset5"}));
    desk.link()->openSerialPort();
    desk.link()->zoomStop();
    QCOMPARE(desk.camera.nextFrame(), ZoomStop);
}

void CommandFramesTest::storedPresetIsOnTheLineBeforeTheMessage()
{
    Desk desk;
    QByteArray frame;
    QStringList log;
    bool returned = false;
    bool returnedWhileOpen = true;
    desk.user.whenOpen([&] {
        frame = desk.camera.nextFrame();
        log = desk.profile.log();
        returnedWhileOpen = returned;
    });

    desk.link()->setPreset(5);
    returned = true;

    QCOMPARE(frame, "81 01 04 3f 01 05 ff");
    QCOMPARE(log, QStringList("Set Preset5"));
    QVERIFY(!returnedWhileOpen);
}

void CommandFramesTest::homeZoomsToTheWidestViewOneSecondLater()
{
    Desk desk;
    QElapsedTimer clock;
    clock.start();

    desk.link()->moveHome();

    QCOMPARE(desk.camera.nextFrame(), Home);
    const auto timers = desk.link()->findChildren<QTimer*>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(timers.size(), 1);
    QCOMPARE(timers.constFirst()->interval(), HomeZoomDelayMs);
    QVERIFY(timers.constFirst()->isSingleShot());
    // Any other kind may be 5 % early, and mostly is not.
    QCOMPARE(timers.constFirst()->timerType(), Qt::PreciseTimer);
    QCOMPARE(desk.camera.nextFrame(), FullWide);
    QVERIFY(clock.elapsed() >= HomeZoomDelayMs);
    QCOMPARE(desk.profile.log(), QStringList("Home"));
    QCOMPARE(followUpsOf(desk.link()), "fired");
}

void CommandFramesTest::secondHomeSendsAFollowUpOfItsOwn()
{
    Desk desk;

    desk.link()->moveHome();
    desk.link()->moveHome();

    QCOMPARE(desk.camera.nextFrame(), Home);
    QCOMPARE(desk.camera.nextFrame(), Home);
    QCOMPARE(followUpsOf(desk.link()), "running running");
    QCOMPARE(desk.camera.nextFrame(), FullWide);
    QCOMPARE(desk.camera.nextFrame(), FullWide);
    QCOMPARE(followUpsOf(desk.link()), "fired fired");
    QCOMPARE(desk.profile.log(), QStringList({"Home", "Home"}));
}

void CommandFramesTest::homeFollowUpIgnoresTheZoomSpeed()
{
    Desk desk({{"zoomspeed", 2}});

    desk.link()->moveHome();

    QCOMPARE(desk.camera.nextFrame(), Home);
    QCOMPARE(desk.camera.nextFrame(), FullWide);
}

void CommandFramesTest::homeFollowUpIsDroppedWhereThePortWasClosedMeanwhile()
{
    Desk desk;
    desk.link()->moveHome();
    QCOMPARE(desk.camera.nextFrame(), Home);

    desk.link()->closeSerialPort();
    QTRY_COMPARE(followUpsOf(desk.link()), "fired");
    desk.link()->openSerialPort();
    desk.link()->zoomStop();

    QCOMPARE(desk.camera.nextFrame(), ZoomStop);
    QCOMPARE(desk.camera.pending(), "");
    QCOMPARE(desk.user.texts(), QStringList());
}

void CommandFramesTest::homeFollowUpGoesToThePortOpenThen()
{
    Desk desk;
    desk.link()->moveHome();
    QCOMPARE(desk.camera.nextFrame(), Home);

    desk.link()->closeSerialPort();
    desk.link()->openSerialPort();

    QCOMPARE(desk.camera.nextFrame(), FullWide);
}

void CommandFramesTest::homeOnAClosedLineStillArmsItsFollowUp()
{
    Desk desk;
    desk.link()->closeSerialPort();

    desk.link()->moveHome();
    desk.link()->openSerialPort();

    QCOMPARE(desk.camera.nextFrame(), FullWide);
}

void CommandFramesTest::programEndsWithAFollowUpPending()
{
    Desk desk;
    QPointer<QTimer> timer;

    desk.link()->moveHome();
    timer = desk.link()->findChild<QTimer*>();
    QVERIFY(timer);
    desk.program.reset();

    QVERIFY(!timer);
    QCOMPARE(desk.camera.nextFrame(), Home);
}

void CommandFramesTest::rawBytesGoOutAsTheyAre_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("a frame") << QByteArray("81 09 00 02 ff");
    QTest::newRow("zero bytes") << QByteArray("00 00 81 00");
    QTest::newRow("line control characters") << QByteArray("03 04 0a 0d 11 13 1a 1c 7f 80 ff");
    QTest::newRow("one byte") << QByteArray("ff");
}

void CommandFramesTest::rawBytesGoOutAsTheyAre()
{
    QFETCH(QByteArray, bytes);
    Desk desk;
    QByteArray raw = QByteArray::fromHex(bytes);

    desk.link()->sendHex(raw.data(), 0);
    desk.link()->sendHex(raw.data(), static_cast<int>(raw.size()));

    QTRY_COMPARE(desk.camera.pending(), bytes);
    desk.camera.take(raw.size());
    QCOMPARE(desk.profile.log(), QStringList());
    desk.link()->zoomStop();
    QCOMPARE(desk.camera.nextFrame(), ZoomStop);
}

void CommandFramesTest::rawBytesAreDroppedOnAClosedLine()
{
    Desk desk;
    char bytes[] = {'\x81', '\xFF'};
    desk.link()->closeSerialPort();

    desk.link()->sendHex(bytes, sizeof(bytes));
    desk.link()->openSerialPort();
    desk.link()->zoomStop();

    QCOMPARE(desk.camera.nextFrame(), ZoomStop);
    QCOMPARE(desk.profile.log(), QStringList("ZoomStop"));
    QCOMPARE(desk.user.texts(), QStringList());
}

QTEST_APPLESS_MAIN(CommandFramesTest)

#include "CommandFramesTest.moc"
