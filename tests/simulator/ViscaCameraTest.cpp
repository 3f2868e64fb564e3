#include "ViscaCamera.h"
#include "support/CameraDesk.h"

#include <QRandomGenerator>
#include <QtMath>
#include <QtTest>

#include <cmath>

using namespace std::chrono_literals;

Q_DECLARE_METATYPE(ViscaCamera::BusyRules)

namespace {

using Event = ViscaCamera::Event;
using BusyRules = ViscaCamera::BusyRules;

const char* const driveUp = "81 01 06 01 05 05 03 01 ff";
const char* const driveRight = "81 01 06 01 18 14 02 03 ff";
const char* const driveStop = "81 01 06 01 05 05 03 03 ff";
const char* const home = "81 01 06 04 ff";
const char* const zoomTele = "81 01 04 07 27 ff";
const char* const zoomWide = "81 01 04 07 37 ff";
const char* const zoomStop = "81 01 04 07 00 ff";
const char* const store5 = "81 01 04 3f 01 05 ff";
const char* const recall5 = "81 01 04 3f 02 05 ff";
const char* const reset5 = "81 01 04 3f 00 05 ff";
const char* const cancel1 = "81 21 ff";
const char* const cancel2 = "81 22 ff";
const char* const interfaceClear = "81 01 00 01 ff";
const char* const panTiltInquiry = "81 09 06 12 ff";
const char* const zoomInquiry = "81 09 04 47 ff";

QByteArray bytes(const QByteArray& hex)
{
    return QByteArray::fromHex(hex);
}

} // namespace

class ViscaCameraTest : public QObject
{
    Q_OBJECT

private slots:
    void startsStraightAheadAndWideWithoutPresets();

    void aCommandIsAcknowledgedAndCompleted_data();
    void aCommandIsAcknowledgedAndCompleted();
    void aFrameThatIsNoCommandIsASyntaxError_data();
    void aFrameThatIsNoCommandIsASyntaxError();
    void everyParameterOutOfRangeIsASyntaxError_data();
    void everyParameterOutOfRangeIsASyntaxError();
    void codesWithoutASpeedActAsTheNearest();
    void aRefusedDriveMovesNothing();

    void driveMovesInItsDirection_data();
    void driveMovesInItsDirection();
    void aDriveGoesOnUntilItIsStopped();
    void panAndTiltAreFasterWithEachSpeedCode();
    void panAndTiltReachTheirTopSpeeds();
    void zoomIsFasterWithEachSpeedCode();
    void zoomCrossesInFourAndAHalfSecondsAtStandardSpeed();
    void panAndTiltStopAtTheirLimits();
    void zoomStopsAtItsLimits();

    void homeCompletesOnArrival();
    void homeLeavesTheZoomAlone();
    void homeAtHomeCompletesAtOnce();
    void recallBringsBackPanTiltAndZoom();
    void recallCompletesWithItsSlowestPart();
    void aZoomCommandTakesTheZoomOfARecallOver();
    void presetsAreKeptByNumber();
    void presetsBeyondThoseThereAreAreSyntaxErrors();
    void recallOfNothingIsNotExecutable();

    void lenientStopEndsRecall();
    void lenientDriveEndsARecallWithItsZoom();
    void lenientRecallEndsHome();
    void lenientRecallEndsARecall();
    void lenientHomeEndsADrive();
    void strictRefusesWhatDisturbs_data();
    void strictRefusesWhatDisturbs();
    void strictDrivesAgainAfterHome();

    void cancelStopsHome();
    void cancelStopsTheZoomOfARecall();
    void interfaceClearEndsAJourneyAndNoDrive();
    void theNetworkChangeIsToldOnTheLineOnly();
    void positionsAreTold();
    void negativePositionsAreTwosComplement();

    void oneFrameIsTakenPerVideoFrame();
    void tooManyFramesAtOnceAreRefused();
    void aLateCallCatchesUpInOrder();
    void theClockNeverRunsBackwards();
    void nothingIsDueWithoutAReplyOutstanding();
    void nextDueTellsTheNextReply();

    void framesMayArriveByteByByte();
    void framesForOthersGetNoAnswer_data();
    void framesForOthersGetNoAnswer();
    void bytesWithoutAHeaderAreIgnored();
    void aFrameTooLongIsOneMessageLengthError();
    void anUnfinishedFrameIsForgottenAfterASecond();
    void anUnfinishedFrameIsSaidAfterASecondOfSilence();
    void aMissingTerminatorCostsOneFrame();
    void anyBytesAreSurvived();
    void eventsTellBytesAndWords();
};

void ViscaCameraTest::startsStraightAheadAndWideWithoutPresets()
{
    const ViscaCamera camera;
    QCOMPARE(camera.position().pan, 0.0);
    QCOMPARE(camera.position().tilt, 0.0);
    QCOMPARE(camera.position().zoom, 0.0);
    QVERIFY(camera.presets().isEmpty());
}

void ViscaCameraTest::aCommandIsAcknowledgedAndCompleted_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("words");

    QTest::newRow("drive") << QByteArray(driveUp) << "drive up, speeds 5 and 5";
    QTest::newRow("slowest") << QByteArray("81 01 06 01 01 01 01 02 ff") << "drive down-left, speeds 1 and 1";
    QTest::newRow("fastest") << QByteArray("81 01 06 01 18 14 02 01 ff")
                             << "drive up-right, speeds 24 and 20";
    QTest::newRow("stop") << QByteArray(driveStop) << "drive stop, speeds 5 and 5";
    QTest::newRow("zoom stop") << QByteArray(zoomStop) << "zoom stop";
    QTest::newRow("zoom tele") << QByteArray("81 01 04 07 02 ff") << "zoom tele, standard speed";
    QTest::newRow("zoom wide") << QByteArray("81 01 04 07 03 ff") << "zoom wide, standard speed";
    QTest::newRow("zoom tele 0") << QByteArray("81 01 04 07 20 ff") << "zoom tele, speed 0";
    QTest::newRow("zoom tele 7") << QByteArray(zoomTele) << "zoom tele, speed 7";
    QTest::newRow("zoom wide 0") << QByteArray("81 01 04 07 30 ff") << "zoom wide, speed 0";
    QTest::newRow("zoom wide 7") << QByteArray(zoomWide) << "zoom wide, speed 7";
    QTest::newRow("store") << QByteArray(store5) << "store preset 5";
    QTest::newRow("store 0") << QByteArray("81 01 04 3f 01 00 ff") << "store preset 0";
    QTest::newRow("store 254") << QByteArray("81 01 04 3f 01 fe ff") << "store preset 254";
    QTest::newRow("reset") << QByteArray(reset5) << "reset preset 5";
}

void ViscaCameraTest::aCommandIsAcknowledgedAndCompleted()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, words);
    CameraDesk desk;
    QCOMPARE(desk.send(frame), acknowledgedAndCompleted());
    QCOMPARE(desk.heard, QStringList(words));
}

void ViscaCameraTest::aFrameThatIsNoCommandIsASyntaxError_data()
{
    QTest::addColumn<QByteArray>("frame");

    QTest::newRow("header and terminator only") << QByteArray("81 ff");
    QTest::newRow("unknown category") << QByteArray("81 01 05 04 ff");
    QTest::newRow("unknown command") << QByteArray("81 01 06 7f ff");
    QTest::newRow("unknown inquiry") << QByteArray("81 09 04 7f ff");
    QTest::newRow("neither command nor inquiry") << QByteArray("81 02 06 04 ff");
    QTest::newRow("drive too short") << QByteArray("81 01 06 01 05 05 03 ff");
    QTest::newRow("drive too long") << QByteArray("81 01 06 01 05 05 03 01 00 ff");
    QTest::newRow("home too long") << QByteArray("81 01 06 04 00 ff");
    QTest::newRow("zoom too short") << QByteArray("81 01 04 07 ff");
    QTest::newRow("preset too short") << QByteArray("81 01 04 3f 02 ff");
    QTest::newRow("cancel too long") << QByteArray("81 21 00 ff");
    QTest::newRow("preset action 3") << QByteArray("81 01 04 3f 03 05 ff");
    QTest::newRow("preset action 12") << QByteArray("81 01 04 3f 12 05 ff");
    QTest::newRow("address set to one") << QByteArray("81 30 01 ff");
}

void ViscaCameraTest::aFrameThatIsNoCommandIsASyntaxError()
{
    QFETCH(QByteArray, frame);
    CameraDesk desk;
    QCOMPARE(desk.send(frame), syntaxError());
}

void ViscaCameraTest::everyParameterOutOfRangeIsASyntaxError_data()
{
    QTest::addColumn<BusyRules>("rules");
    QTest::addColumn<int>("slowest");
    QTest::addColumn<int>("fastestTilt");
    QTest::addColumn<int>("fastestZoom");

    QTest::newRow("by default") << BusyRules::Lenient << 0x00 << 0x18 << 0xF;
    QTest::newRow("strict") << BusyRules::Strict << 0x01 << 0x14 << 0x7;
}

void ViscaCameraTest::everyParameterOutOfRangeIsASyntaxError()
{
    QFETCH(BusyRules, rules);
    QFETCH(int, slowest);
    QFETCH(int, fastestTilt);
    QFETCH(int, fastestZoom);
    CameraDesk desk(rules);
    const auto check = [&desk](const char* frameWithGap, int value, bool valid) {
        const QByteArray frame = withByte(frameWithGap, value);
        desk.send(driveStop);
        const QStringList replies = desk.send(frame);
        QVERIFY2((replies == acknowledgedAndCompleted()) == valid, frame.constData());
        QVERIFY2((replies == syntaxError()) != valid, frame.constData());
    };
    for (int value = 0; value < 0xFF; ++value) {
        const bool isPanSpeed = value >= slowest && value <= 0x18;
        const bool isTiltSpeed = value >= slowest && value <= fastestTilt;
        check("81 01 06 01 XX 05 03 01 ff", value, isPanSpeed);
        check("81 01 06 01 05 XX 03 01 ff", value, isTiltSpeed);
        check("81 01 06 01 XX 05 03 03 ff", value, isPanSpeed);
        check("81 01 06 01 05 XX 03 03 ff", value, isTiltSpeed);
        check("81 01 06 01 05 05 XX 03 ff", value, value >= 1 && value <= 3);
        check("81 01 06 01 05 05 03 XX ff", value, value >= 1 && value <= 3);
        const bool isZoomWay = value >> 4 == 2 || value >> 4 == 3;
        const bool isZoom = isZoomWay && (value & 0xF) <= fastestZoom;
        check("81 01 04 07 XX ff", value, isZoom || value == 0 || value == 2 || value == 3);
    }
}

void ViscaCameraTest::codesWithoutASpeedActAsTheNearest()
{
    const auto moved = [](const char* frame) {
        CameraDesk desk;
        desk.send(frame, 1025ms);
        return desk.camera.position();
    };
    QCOMPARE(moved("81 01 06 01 00 05 02 03 ff").pan, moved("81 01 06 01 01 05 02 03 ff").pan);
    QCOMPARE(moved("81 01 06 01 05 00 03 01 ff").tilt, moved("81 01 06 01 05 01 03 01 ff").tilt);
    QCOMPARE(moved("81 01 06 01 05 18 03 01 ff").tilt, moved("81 01 06 01 05 14 03 01 ff").tilt);
    QCOMPARE(moved("81 01 04 07 2f ff").zoom, moved("81 01 04 07 27 ff").zoom);
    QVERIFY(moved("81 01 06 01 00 05 02 03 ff").pan > 0);
}

void ViscaCameraTest::aRefusedDriveMovesNothing()
{
    CameraDesk desk;
    desk.send("81 01 06 01 19 05 02 03 ff", 1s);
    QCOMPARE(desk.camera.position().pan, 0.0);
}

void ViscaCameraTest::driveMovesInItsDirection_data()
{
    QTest::addColumn<QByteArray>("direction");
    QTest::addColumn<int>("pan");
    QTest::addColumn<int>("tilt");

    QTest::newRow("up") << QByteArray("03 01") << 0 << 1;
    QTest::newRow("down") << QByteArray("03 02") << 0 << -1;
    QTest::newRow("left") << QByteArray("01 03") << -1 << 0;
    QTest::newRow("right") << QByteArray("02 03") << 1 << 0;
    QTest::newRow("up-left") << QByteArray("01 01") << -1 << 1;
    QTest::newRow("up-right") << QByteArray("02 01") << 1 << 1;
    QTest::newRow("down-left") << QByteArray("01 02") << -1 << -1;
    QTest::newRow("down-right") << QByteArray("02 02") << 1 << -1;
    QTest::newRow("stop") << QByteArray("03 03") << 0 << 0;
}

void ViscaCameraTest::driveMovesInItsDirection()
{
    QFETCH(QByteArray, direction);
    QFETCH(int, pan);
    QFETCH(int, tilt);
    CameraDesk desk;
    // It moves from its ACK on, 25 ms after the frame.
    desk.send("81 01 06 01 05 04 " + direction + " ff", 1025ms);
    QCOMPARE(desk.camera.position().pan, pan * 5 * 80 / 24.0);
    QCOMPARE(desk.camera.position().tilt, tilt * 4 * 2.5);
    QVERIFY(desk.heard.constFirst().startsWith(QString("drive %1,").arg(QTest::currentDataTag())));
}

void ViscaCameraTest::aDriveGoesOnUntilItIsStopped()
{
    CameraDesk desk;
    desk.send(driveUp, 500ms);
    const double early = desk.camera.position().tilt;
    desk.wait(500ms);
    const double later = desk.camera.position().tilt;
    QVERIFY(later > early);

    desk.send(driveStop, 25ms);
    const double stopped = desk.camera.position().tilt;
    QVERIFY(stopped > later);
    desk.wait(1s);
    QCOMPARE(desk.camera.position().tilt, stopped);
}

void ViscaCameraTest::panAndTiltAreFasterWithEachSpeedCode()
{
    const auto moved = [](const char* frame, int code) {
        CameraDesk desk;
        desk.send(withByte(frame, code), 1025ms);
        return desk.camera.position();
    };
    for (int code = 0x02; code <= 0x18; ++code) {
        const char* const right = "81 01 06 01 XX 01 02 03 ff";
        QVERIFY(moved(right, code).pan > moved(right, code - 1).pan);
    }
    for (int code = 0x02; code <= 0x14; ++code) {
        const char* const up = "81 01 06 01 01 XX 03 01 ff";
        QVERIFY(moved(up, code).tilt > moved(up, code - 1).tilt);
    }
}

void ViscaCameraTest::panAndTiltReachTheirTopSpeeds()
{
    CameraDesk desk;
    desk.send("81 01 06 01 18 14 02 01 ff", 1025ms);
    QVERIFY(desk.camera.position().pan > 75);
    QVERIFY(desk.camera.position().pan <= 80);
    QCOMPARE(desk.camera.position().tilt, 50.0);
}

void ViscaCameraTest::zoomIsFasterWithEachSpeedCode()
{
    double before = 0;
    for (int code = 0; code <= 7; ++code) {
        CameraDesk desk;
        desk.send(withByte("81 01 04 07 XX ff", 0x20 + code), 1025ms);
        QVERIFY(desk.camera.position().zoom > before);
        before = desk.camera.position().zoom;
    }
}

void ViscaCameraTest::zoomCrossesInFourAndAHalfSecondsAtStandardSpeed()
{
    CameraDesk desk;
    desk.send("81 01 04 07 02 ff", 4500ms);
    QVERIFY(desk.camera.position().zoom < 0x4000);
    desk.wait(25ms);
    QCOMPARE(desk.camera.position().zoom, double(0x4000));

    desk.send("81 01 04 07 03 ff", 4500ms);
    QVERIFY(desk.camera.position().zoom > 0);
    desk.wait(25ms);
    QCOMPARE(desk.camera.position().zoom, 0.0);
}

void ViscaCameraTest::panAndTiltStopAtTheirLimits()
{
    CameraDesk desk;
    desk.send("81 01 06 01 18 14 02 01 ff", 10s);
    QCOMPARE(desk.send(panTiltInquiry), QStringList("25: 90 50 00 08 0d 0b 00 04 0b 00 ff"));
    desk.send("81 01 06 01 18 14 01 02 ff", 10s);
    QCOMPARE(desk.send(panTiltInquiry), QStringList("25: 90 50 0f 07 02 05 0f 0e 07 00 ff"));
}

void ViscaCameraTest::zoomStopsAtItsLimits()
{
    CameraDesk desk;
    desk.send(zoomTele, 10s);
    QCOMPARE(desk.send(zoomInquiry), QStringList("25: 90 50 04 00 00 00 ff"));
    desk.send(zoomWide, 10s);
    QCOMPARE(desk.send(zoomInquiry), QStringList("25: 90 50 00 00 00 00 ff"));
}

void ViscaCameraTest::homeCompletesOnArrival()
{
    CameraDesk desk;
    desk.send(driveRight, 1025ms);
    desk.send(driveStop);
    // Home goes at 80 degrees per second, from its ACK on.
    const ViscaCamera::Time journey(qCeil(desk.camera.position().pan / 80 * 1000));
    QVERIFY(journey > 900ms);

    QCOMPARE(desk.send(home, 25ms + journey - 1ms), QStringList("25: 90 41 ff"));
    QVERIFY(desk.camera.position().pan > 0);
    QCOMPARE(desk.wait(1ms), QStringList("1: 90 51 ff"));
    QCOMPARE(desk.camera.position().pan, 0.0);
}

void ViscaCameraTest::homeLeavesTheZoomAlone()
{
    CameraDesk desk;
    desk.send(zoomTele, 10s);
    desk.send(home, 1s);
    QCOMPARE(desk.camera.position().zoom, double(0x4000));
}

void ViscaCameraTest::homeAtHomeCompletesAtOnce()
{
    CameraDesk desk;
    QCOMPARE(desk.send(home), acknowledgedAndCompleted());
    QCOMPARE(desk.heard, QStringList("home"));
}

void ViscaCameraTest::recallBringsBackPanTiltAndZoom()
{
    CameraDesk desk;
    desk.send("81 01 06 01 05 05 01 01 ff", 1s);
    desk.send(driveStop);
    desk.send(zoomTele, 1s);
    desk.send(zoomStop);
    const ViscaCamera::Position stored = desk.camera.position();
    desk.send(store5);
    desk.send(home, 2s);
    desk.send(zoomWide, 3s);
    QCOMPARE(desk.camera.position().pan, 0.0);
    QCOMPARE(desk.camera.position().zoom, 0.0);

    const QStringList replies = desk.send(recall5, 5s);
    QCOMPARE(replies.size(), 2);
    QCOMPARE(replies.first(), QString("25: 90 41 ff"));
    QVERIFY(replies.last().endsWith(": 90 51 ff"));
    QCOMPARE(desk.camera.position().pan, stored.pan);
    QCOMPARE(desk.camera.position().tilt, stored.tilt);
    QCOMPARE(desk.camera.position().zoom, stored.zoom);
    QCOMPARE(desk.heard.last(), QString("recall preset 5"));
}

void ViscaCameraTest::recallCompletesWithItsSlowestPart()
{
    CameraDesk desk;
    desk.send(store5);
    desk.send("81 01 06 01 01 01 02 03 ff", 100ms);
    desk.send(driveStop);
    desk.send(zoomTele, 10s);
    // The zoom crosses in 2.25 s at its fastest.
    QCOMPARE(desk.send(recall5, 3s), QStringList({"25: 90 41 ff", "2275: 90 51 ff"}));
}

void ViscaCameraTest::aZoomCommandTakesTheZoomOfARecallOver()
{
    CameraDesk desk;
    desk.send(store5);
    desk.send(zoomTele, 10s);
    desk.send(recall5, 1s);
    QCOMPARE(desk.send(zoomTele), QStringList({"25: 90 42 ff", "25: 90 51 ff", "36: 90 52 ff"}));
    desk.wait(3s);
    QCOMPARE(desk.camera.position().zoom, double(0x4000));
}

void ViscaCameraTest::presetsAreKeptByNumber()
{
    CameraDesk desk;
    for (int preset = 0; preset <= 254; ++preset) {
        desk.send("81 01 06 01 01 01 02 03 ff", 50ms);
        desk.send(driveStop);
        desk.send(withByte("81 01 04 3f 01 XX ff", preset));
        QCOMPARE(desk.camera.presets().value(preset).pan, desk.camera.position().pan);
    }
    QCOMPARE(desk.camera.presets().size(), 255);
    QVERIFY(desk.camera.presets().value(0).pan < desk.camera.presets().value(254).pan);

    const double before = desk.camera.presets().value(5).pan;
    desk.send(store5);
    QVERIFY(desk.camera.presets().value(5).pan > before);
    desk.send(reset5);
    QVERIFY(!desk.camera.presets().contains(5));
    QCOMPARE(desk.camera.presets().size(), 254);
}

void ViscaCameraTest::presetsBeyondThoseThereAreAreSyntaxErrors()
{
    ViscaCamera::Options options(BusyRules::Lenient);
    options.presets = 6;
    CameraDesk desk(options);
    for (const char* const action : {"00", "01"}) {
        QCOMPARE(desk.send("81 01 04 3f " + QByteArray(action) + "05 ff"), acknowledgedAndCompleted());
        QCOMPARE(desk.send("81 01 04 3f " + QByteArray(action) + "06 ff"), syntaxError());
    }
    QCOMPARE(desk.send(recall5), acknowledgedAndCompleted());
    QCOMPARE(desk.send("81 01 04 3f 02 06 ff"), syntaxError());
    QCOMPARE(desk.camera.presets().size(), 1);
}

void ViscaCameraTest::recallOfNothingIsNotExecutable()
{
    CameraDesk desk;
    desk.send(driveRight, 1s);
    const double before = desk.camera.position().pan;
    QCOMPARE(desk.send(recall5), QStringList("25: 90 61 41 ff"));
    QVERIFY2(desk.camera.position().pan > before, "the drive goes on");

    desk.send(store5);
    desk.send(reset5);
    QCOMPARE(desk.send(recall5), QStringList("25: 90 61 41 ff"));
}

void ViscaCameraTest::lenientStopEndsRecall()
{
    CameraDesk desk;
    desk.send(store5);
    desk.send(driveRight, 2s);
    QCOMPARE(desk.send(recall5, 50ms), QStringList("25: 90 41 ff"));
    QCOMPARE(desk.send(driveStop), QStringList({"25: 90 42 ff", "25: 90 51 ff", "36: 90 52 ff"}));
    const double stopped = desk.camera.position().pan;
    QVERIFY(stopped > 0);
    QVERIFY(desk.wait(2s).isEmpty());
    QCOMPARE(desk.camera.position().pan, stopped);
}

void ViscaCameraTest::lenientDriveEndsARecallWithItsZoom()
{
    CameraDesk desk;
    desk.send(store5);
    desk.send(zoomTele, 10s);
    QCOMPARE(desk.send(recall5, 1s), QStringList("25: 90 41 ff"));
    QCOMPARE(desk.send(driveUp), QStringList({"25: 90 42 ff", "25: 90 51 ff", "36: 90 52 ff"}));
    const double stopped = desk.camera.position().zoom;
    QVERIFY(stopped > 0);
    QVERIFY(desk.wait(3s).isEmpty());
    QCOMPARE(desk.camera.position().zoom, stopped);
}

void ViscaCameraTest::lenientRecallEndsHome()
{
    CameraDesk desk;
    desk.send(driveRight, 1s);
    desk.send(store5);
    desk.send(driveRight, 1s);
    const double stored = desk.camera.presets().value(5).pan;
    QCOMPARE(desk.send(home, 100ms), QStringList("25: 90 41 ff"));
    const QStringList replies = desk.send(recall5, 5s);
    QCOMPARE(replies.mid(0, 2), QStringList({"25: 90 42 ff", "25: 90 51 ff"}));
    QVERIFY(replies.last().endsWith(": 90 52 ff"));
    QCOMPARE(replies.size(), 3);
    QCOMPARE(desk.camera.position().pan, stored);
}

void ViscaCameraTest::lenientRecallEndsARecall()
{
    CameraDesk desk(BusyRules::Lenient);
    desk.send(store5);
    desk.send(driveRight, 1s);
    desk.send(driveStop);
    desk.send("81 01 04 3f 01 06 ff");
    const double stored = desk.camera.presets().value(6).pan;
    desk.send(driveRight, 1s);
    const QByteArray recall6("81 01 04 3f 02 06 ff");

    const QStringList replies = desk.send(recall5 + recall6, 3s);
    QCOMPARE(replies.mid(0, 3), QStringList({"25: 90 41 ff", "42: 90 42 ff", "42: 90 51 ff"}));
    QCOMPARE(replies.size(), 4);
    QVERIFY(replies.last().endsWith(": 90 52 ff"));
    QCOMPARE(desk.camera.position().pan, stored);
}

void ViscaCameraTest::lenientHomeEndsADrive()
{
    CameraDesk desk;
    desk.send(driveRight, 1s);
    const QStringList replies = desk.send(home, 3s);
    QCOMPARE(replies.size(), 2);
    QCOMPARE(replies.first(), QString("25: 90 41 ff"));
    QCOMPARE(desk.camera.position().pan, 0.0);
}

void ViscaCameraTest::strictRefusesWhatDisturbs_data()
{
    QTest::addColumn<QByteArray>("underWay");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<bool>("accepted");

    const std::pair<const char*, const char*> underWay[] = {
        {"drive", driveRight}, {"home", home}, {"recall", recall5}};
    const std::pair<const char*, const char*> commands[] = {
        {"drive", driveUp},  {"stop", driveStop},     {"home", home},
        {"recall", recall5}, {"store", store5},       {"reset", reset5},
        {"zoom", zoomTele},  {"zoom stop", zoomStop}, {"cancel", cancel2},
    };
    const QStringList refused{"drive: home",   "drive: recall", "drive: store",     "home: drive",
                              "home: stop",    "home: recall",  "home: store",      "home: reset",
                              "recall: drive", "recall: stop",  "recall: home",     "recall: store",
                              "recall: reset", "recall: zoom",  "recall: zoom stop"};
    for (const auto& [busy, busyFrame] : underWay) {
        for (const auto& [asked, askedFrame] : commands) {
            const QString name = QString("%1: %2").arg(busy, asked);
            QTest::newRow(qPrintable(name))
                << QByteArray(busyFrame) << QByteArray(askedFrame) << !refused.contains(name);
        }
    }
}

void ViscaCameraTest::strictRefusesWhatDisturbs()
{
    QFETCH(QByteArray, underWay);
    QFETCH(QByteArray, command);
    QFETCH(bool, accepted);
    CameraDesk desk(BusyRules::Strict);
    desk.send(store5);
    desk.send(driveRight, 2s);
    desk.send(driveStop);
    desk.send(underWay, 50ms);

    const QString reply = desk.send(command, 50ms).value(0);
    QCOMPARE(reply.endsWith(" 41 ff") && reply.contains(": 90 6"), !accepted);

    // What it refuses does not disturb.
    const double before = desk.camera.position().pan;
    desk.wait(100ms);
    if (!accepted)
        QVERIFY(desk.camera.position().pan != before);
}

void ViscaCameraTest::strictDrivesAgainAfterHome()
{
    CameraDesk desk(BusyRules::Strict);
    desk.send(driveRight, 2s);
    desk.send(driveStop);
    QCOMPARE(desk.send(home, 50ms), QStringList("25: 90 41 ff"));
    QCOMPARE(desk.send(driveUp, 50ms), QStringList("25: 90 62 41 ff"));
    const QStringList replies = desk.wait(3s);
    QCOMPARE(replies.size(), 1);
    QVERIFY(replies.first().endsWith(": 90 51 ff"));
    QCOMPARE(desk.camera.position().pan, 0.0);
    QCOMPARE(desk.camera.position().tilt, 0.0);
    QCOMPARE(desk.send(driveUp), acknowledgedAndCompleted());
}

void ViscaCameraTest::cancelStopsHome()
{
    CameraDesk desk;
    desk.send(driveRight, 2s);
    desk.send(home, 100ms);
    QCOMPARE(desk.send(cancel1), QStringList("25: 90 61 04 ff"));
    const double stopped = desk.camera.position().pan;
    QVERIFY(stopped > 0);
    QVERIFY(desk.wait(3s).isEmpty());
    QCOMPARE(desk.camera.position().pan, stopped);
    QCOMPARE(desk.send(cancel1), QStringList("25: 90 61 05 ff"));
}

void ViscaCameraTest::cancelStopsTheZoomOfARecall()
{
    CameraDesk desk;
    desk.send(store5);
    desk.send(zoomTele, 10s);
    desk.send(recall5, 500ms);
    QCOMPARE(desk.send(cancel1), QStringList("25: 90 61 04 ff"));
    const double stopped = desk.camera.position().zoom;
    QVERIFY(stopped > 0);
    desk.wait(3s);
    QCOMPARE(desk.camera.position().zoom, stopped);
}

void ViscaCameraTest::interfaceClearEndsAJourneyAndNoDrive()
{
    CameraDesk desk;
    desk.send(store5);
    desk.send(driveRight, 1s);
    desk.send(zoomTele, 1s);
    desk.send(recall5, 50ms);
    QVERIFY(desk.camera.isMoving());
    QCOMPARE(desk.send(interfaceClear), QStringList("25: 90 50 ff"));
    QVERIFY(!desk.camera.isMoving());
    QVERIFY(desk.camera.position().pan > 0);
    QVERIFY(desk.camera.position().zoom > 0);
    QVERIFY2(desk.wait(5s).isEmpty(), "nobody is told");

    desk.send(driveUp);
    desk.send(interfaceClear);
    QVERIFY(desk.camera.isMoving());
}

// Controllers take it for the ACK where it comes in front of one.
void ViscaCameraTest::theNetworkChangeIsToldOnTheLineOnly()
{
    ViscaCamera camera;
    const std::vector<Event> events = camera.comeOntoLine(0ms);
    QCOMPARE(events.size(), std::size_t(1));
    QVERIFY(events.front().kind == Event::Kind::Reply);
    QCOMPARE(events.front().bytes, bytes("90 38 ff"));
    QCOMPARE(events.front().words, QString("network change"));

    CameraDesk desk;
    desk.send("81 01 04 00 03 ff");
    QCOMPARE(desk.send("81 01 04 00 02 ff"), acknowledgedAndCompleted());
}

void ViscaCameraTest::positionsAreTold()
{
    CameraDesk desk;
    QCOMPARE(desk.send(panTiltInquiry), QStringList("25: 90 50 00 00 00 00 00 00 00 00 ff"));
    QCOMPARE(desk.send(zoomInquiry), QStringList("25: 90 50 00 00 00 00 ff"));

    // One second at speed 5: 16.7 and 12.5 degrees, 222 and 167 steps of 0.075 degrees.
    desk.send("81 01 06 01 05 05 02 01 ff", 1000ms);
    QCOMPARE(desk.send(panTiltInquiry), QStringList("25: 90 50 00 00 0d 0e 00 00 0a 07 ff"));
}

void ViscaCameraTest::negativePositionsAreTwosComplement()
{
    CameraDesk desk;
    desk.send("81 01 06 01 05 05 01 02 ff", 1000ms);
    QCOMPARE(desk.send(panTiltInquiry), QStringList("25: 90 50 0f 0f 02 02 0f 0f 05 09 ff"));
}

void ViscaCameraTest::oneFrameIsTakenPerVideoFrame()
{
    CameraDesk desk;
    QCOMPARE(desk.send(QByteArray(driveUp) + driveStop + panTiltInquiry),
             QStringList({"25: 90 41 ff", "36: 90 51 ff", "42: 90 41 ff", "53: 90 51 ff",
                          // 17 ms at 12.5 degrees per second are three steps.
                          "59: 90 50 00 00 00 00 00 00 00 03 ff"}));
    QCOMPARE(desk.send(driveUp), acknowledgedAndCompleted());
}

void ViscaCameraTest::tooManyFramesAtOnceAreRefused()
{
    CameraDesk desk;
    QByteArray many;
    for (int i = 0; i < 64; ++i)
        many += panTiltInquiry;
    const QStringList replies = desk.send(many + driveUp, 5s);
    QCOMPARE(replies.size(), 65);
    QCOMPARE(replies.first(), QString("0: 90 60 03 ff"));
    QCOMPARE(replies.last(), QString("%1: 90 50 00 00 00 00 00 00 00 00 ff").arg(63 * 17 + 25));
    QCOMPARE(desk.send(driveUp), acknowledgedAndCompleted());
}

void ViscaCameraTest::aLateCallCatchesUpInOrder()
{
    ViscaCamera camera;
    camera.receive(bytes(QByteArray(driveUp) + driveStop), 0ms);
    const std::vector<Event> events = camera.advance(10s);
    QStringList replies;
    for (const Event& event : events)
        replies += QString(event.bytes.toHex(' '));
    QCOMPARE(replies, QStringList({"90 41 ff", "90 51 ff", "90 41 ff", "90 51 ff"}));
    QCOMPARE(camera.position().tilt, 12.5 * 0.017);
}

void ViscaCameraTest::theClockNeverRunsBackwards()
{
    ViscaCamera camera;
    camera.receive(bytes(driveUp), 1000ms);
    camera.advance(2025ms);
    QVERIFY(camera.advance(0ms).empty());
    QCOMPARE(camera.position().tilt, 12.5);
    camera.receive(bytes(driveStop), 0ms);
    QVERIFY(camera.nextDue() == 2050ms);
}

void ViscaCameraTest::nothingIsDueWithoutAReplyOutstanding()
{
    CameraDesk desk;
    QVERIFY(!desk.camera.nextDue());
    desk.send(driveUp);
    QVERIFY2(!desk.camera.nextDue(), "a drive needs nobody to wake up for it");
}

void ViscaCameraTest::nextDueTellsTheNextReply()
{
    ViscaCamera camera;
    camera.receive(bytes(driveRight), 100ms);
    QVERIFY(camera.nextDue() == 125ms);
    camera.advance(125ms);
    QVERIFY(camera.nextDue() == 136ms);
    camera.advance(1125ms);
    QVERIFY(!camera.nextDue());

    // 80 degrees and what the drive adds until Home acts, at 80 degrees per second.
    camera.receive(bytes(home), 1125ms);
    camera.advance(1150ms);
    QVERIFY(camera.nextDue() == 1150ms + 1025ms);
}

void ViscaCameraTest::framesMayArriveByteByByte()
{
    ViscaCamera camera;
    ViscaCamera::Time now{0};
    std::vector<Event> events;
    const QByteArray frame = bytes(driveUp);
    for (const char byte : frame) {
        QVERIFY(events.empty());
        events = camera.receive(QByteArray(1, byte), now++);
    }
    QCOMPARE(events.size(), std::size_t(1));
    QCOMPARE(events.front().bytes, bytes(driveUp));
    QVERIFY(camera.nextDue() == now - 1ms + 25ms);
}

void ViscaCameraTest::framesForOthersGetNoAnswer_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("words");

    QTest::newRow("camera 2") << QByteArray("82 01 06 01 05 05 03 01 ff") << "for camera 2, ignored";
    QTest::newRow("camera 7") << QByteArray("87 01 06 04 ff") << "for camera 7, ignored";
    QTest::newRow("nobody") << QByteArray("80 01 06 04 ff") << "for camera 0, ignored";
    QTest::newRow("broadcast") << QByteArray("88 01 06 04 ff") << "unknown broadcast, ignored";
}

void ViscaCameraTest::framesForOthersGetNoAnswer()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, words);
    CameraDesk desk;
    QVERIFY(desk.send(frame, 1s).isEmpty());
    QCOMPARE(desk.heard, QStringList(words));
    QCOMPARE(desk.camera.position().tilt, 0.0);
}

void ViscaCameraTest::bytesWithoutAHeaderAreIgnored()
{
    ViscaCamera camera;
    const std::vector<Event> events = camera.receive(bytes("12 34 ff" + QByteArray(driveUp) + "ff 90"), 0ms);
    QCOMPARE(events.size(), std::size_t(3));
    QVERIFY(events[0].kind == Event::Kind::Noise);
    QCOMPARE(events[0].bytes, bytes("12 34 ff"));
    QVERIFY(events[1].kind == Event::Kind::Frame);
    QCOMPARE(events[1].bytes, bytes(driveUp));
    QVERIFY(events[2].kind == Event::Kind::Noise);
    QCOMPARE(events[2].bytes, bytes("ff 90"));
    QVERIFY(camera.advance(25ms).front().bytes == bytes("90 41 ff"));
}

void ViscaCameraTest::aFrameTooLongIsOneMessageLengthError()
{
    CameraDesk desk;
    const QByteArray longest = "81 01 " + QByteArray("00 ").repeated(13);
    QCOMPARE(desk.send(longest + "ff"), syntaxError());
    QCOMPARE(desk.heard, QStringList("unknown command"));
    QCOMPARE(desk.send(longest + "00 ff"), QStringList("25: 90 60 01 ff"));
    QCOMPARE(desk.heard.last(), QString("too long"));
    QCOMPARE(desk.send(longest + QByteArray("00 ").repeated(100000) + "ff"), QStringList("25: 90 60 01 ff"));
    QCOMPARE(desk.heard.size(), 3);
    QCOMPARE(desk.send(driveUp), acknowledgedAndCompleted());
}

void ViscaCameraTest::anUnfinishedFrameIsForgottenAfterASecond()
{
    CameraDesk desk;
    desk.send("81 01 06", 999ms);
    QCOMPARE(desk.send("04 ff"), acknowledgedAndCompleted());

    desk.send("81 01 06", 1000ms);
    QCOMPARE(desk.send(driveUp), acknowledgedAndCompleted());
    QCOMPARE(desk.heard, QStringList({"home", "unfinished frame, forgotten", "drive up, speeds 5 and 5"}));
}

// Not only when more arrives: whoever watches sees what came of a frame without its end.
void ViscaCameraTest::anUnfinishedFrameIsSaidAfterASecondOfSilence()
{
    ViscaCamera camera;
    camera.receive(bytes("81 01 06"), 0ms);
    camera.receive(bytes("04"), 600ms);
    QVERIFY(camera.nextDue() == 1600ms);
    QVERIFY(camera.advance(1599ms).empty());
    const std::vector<Event> events = camera.advance(1600ms);
    QCOMPARE(events.size(), std::size_t(1));
    QVERIFY(events.front().kind == Event::Kind::Noise);
    QCOMPARE(events.front().bytes, bytes("81 01 06 04"));
    QCOMPARE(events.front().words, QString("unfinished frame, forgotten"));
    QVERIFY(!camera.nextDue());
}

void ViscaCameraTest::aMissingTerminatorCostsOneFrame()
{
    CameraDesk desk;
    QCOMPARE(desk.send(QByteArray("81 01 04 07 00") + driveUp), syntaxError());
    QCOMPARE(desk.send(driveUp), acknowledgedAndCompleted());
}

void ViscaCameraTest::anyBytesAreSurvived()
{
    QRandomGenerator random(1);
    // Bytes that occur in frames are drawn often, so that much of this is nearly right.
    const QByteArray frequent = bytes("81 88 01 04 06 07 09 3f 00 02 03 21 ff ff");
    for (const auto rules : {BusyRules::Lenient, BusyRules::Strict}) {
        ViscaCamera camera(rules);
        ViscaCamera::Time now{0};
        for (int round = 0; round < 20000; ++round) {
            QByteArray chunk;
            for (int left = random.bounded(20); left > 0; --left) {
                chunk += random.bounded(3) == 0 ? static_cast<char>(random.bounded(0x100))
                                                : frequent.at(random.bounded(frequent.size()));
            }
            now += ViscaCamera::Time(random.bounded(50));
            const std::vector<Event> events = camera.receive(chunk, now);
            for (const Event& event : events) {
                QVERIFY(!event.words.isEmpty());
                QVERIFY(!event.bytes.isEmpty());
                if (event.kind == Event::Kind::Reply)
                    QVERIFY(event.bytes.endsWith('\xFF'));
            }
            QVERIFY(std::abs(camera.position().pan) <= 170.03);
            QVERIFY(camera.position().tilt >= -30 && camera.position().tilt <= 90);
            QVERIFY(camera.position().zoom >= 0 && camera.position().zoom <= 0x4000);
        }
        camera.advance(now += 10s);
        camera.receive(bytes(interfaceClear), now);
        const std::vector<Event> events = camera.advance(now + 25ms);
        QCOMPARE(events.back().bytes, bytes("90 50 ff"));
    }
}

void ViscaCameraTest::eventsTellBytesAndWords()
{
    CameraDesk desk;
    const std::vector<Event> heard = desk.camera.receive(bytes(home), 0ms);
    QCOMPARE(heard.size(), std::size_t(1));
    QVERIFY(heard.front().kind == Event::Kind::Frame);
    QCOMPARE(heard.front().bytes, bytes(home));
    QCOMPARE(heard.front().words, QString("home"));

    const std::vector<Event> said = desk.camera.advance(100ms);
    QCOMPARE(said.size(), std::size_t(2));
    QVERIFY(said.front().kind == Event::Kind::Reply);
    QCOMPARE(said.front().words, QString("ACK, socket 1"));
    QCOMPARE(said.back().words, QString("completion, socket 1"));
}

QTEST_GUILESS_MAIN(ViscaCameraTest)
#include "ViscaCameraTest.moc"
