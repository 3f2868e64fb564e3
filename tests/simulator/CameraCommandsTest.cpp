#include "ViscaCamera.h"
#include "support/CameraDesk.h"

#include <QtTest>

#include <algorithm>
#include <set>

using namespace std::chrono_literals;

namespace {

using BusyRules = ViscaCamera::BusyRules;

const char* const driveRight = "81 01 06 01 18 14 02 03 ff";
const char* const driveUp = "81 01 06 01 05 05 03 01 ff";
const char* const driveStop = "81 01 06 01 05 05 03 03 ff";
const char* const home = "81 01 06 04 ff";
const char* const zoomTele = "81 01 04 07 27 ff";
const char* const zoomStop = "81 01 04 07 00 ff";
const char* const zoomDirectTele = "81 01 04 47 04 00 00 00 ff";
const char* const store5 = "81 01 04 3f 01 05 ff";
const char* const recall5 = "81 01 04 3f 02 05 ff";
const char* const powerOn = "81 01 04 00 02 ff";
const char* const powerOff = "81 01 04 00 03 ff";
const char* const powerInquiry = "81 09 04 00 ff";
const char* const panTiltInquiry = "81 09 06 12 ff";
const char* const statusInquiry = "81 09 06 10 ff";
// Speeds 05 and 05, pan 0100 and tilt FF80 steps of 0.075 degrees: 19.2 and -9.6 degrees.
const char* const toThere = "81 01 06 02 05 05 00 01 00 00 0f 0f 08 00 ff";
const char* const byThere = "81 01 06 03 05 05 00 01 00 00 0f 0f 08 00 ff";
// The corners at 0100, 0080 and at FF00, FF80.
const char* const limitUpRight = "81 01 06 07 00 01 00 01 00 00 00 00 08 00 ff";
const char* const limitDownLeft = "81 01 06 07 00 00 0f 0f 00 00 0f 0f 08 00 ff";
const char* const clearUpRight = "81 01 06 07 01 01 07 0f 0f 0f 07 0f 0f 0f ff";
const char* const clearDownLeft = "81 01 06 07 01 00 07 0f 0f 0f 07 0f 0f 0f ff";

QStringList answer(const QString& body)
{
    return {QString("25: 90 50 %1 ff").arg(body)};
}

ViscaCamera::Options standby()
{
    ViscaCamera::Options options(BusyRules::Lenient);
    options.standby = true;
    return options;
}

// How a manual writes the number in the place of each p, with as many digits.
QByteArray withValue(QByteArray form, int value)
{
    for (auto at = form.lastIndexOf('p'); at >= 0; at = form.lastIndexOf('p')) {
        form[at] = "0123456789abcdef"[value % 16];
        value /= 16;
    }
    return form;
}

QByteArray commandOf(const char* form)
{
    return QByteArray("81 ") + form + " ff";
}

const Register& registerAt(int index)
{
    return Registers::table().at(static_cast<std::size_t>(index));
}

// A row of test data for each register that is wanted.
template <typename Wanted> void addRegisters(Wanted wanted)
{
    for (int index = 0; index < static_cast<int>(Registers::table().size()); ++index) {
        if (wanted(registerAt(index)))
            QTest::newRow(registerAt(index).name) << index;
    }
}

QStringList valueTold(const Register& line, int value)
{
    return answer(withValue(QByteArray(line.answer()).mid(6).chopped(3), value).toLower());
}

} // namespace

class CameraCommandsTest : public QObject
{
    Q_OBJECT

private slots:
    void aPositionIsReachedAtItsSpeeds();
    void aPositionCompletesOnArrival();
    void positionsTakeTheSpeedCodesOfDrives();
    void strictTreatsAPositionLikeHome();

    void drivesStopAtTheLimitsThatWereSet();
    void positionsGoAsFarAsTheLimits();
    void aLimitBeyondTheOppositeOneIsNotExecutable();
    void aLimitOutOfRangeIsASyntaxError_data();
    void aLimitOutOfRangeIsASyntaxError();
    void aLimitBeyondTheMechanicsIsTheirsOrRefused();
    void aCameraBeyondANewLimitStaysUntilItIsMoved();

    void standbyRefusesEverythingButPowerAndInquiries_data();
    void standbyRefusesEverythingButPowerAndInquiries();
    void standbyStopsEverythingAndCompletesWhatWasUnderWay();
    void comingBackKeepsPositionAndPresets();

    void aCameraWithAnotherAddressAnswersFromThere();
    void theCameraTakesTheAddressThatItIsOffered();
    void anAddressForNobodyIsIgnored_data();
    void anAddressForNobodyIsIgnored();

    void theTableOfRegistersIsSound_data();
    void theTableOfRegistersIsSound();
    void everyRegisterKeepsItsValues_data();
    void everyRegisterKeepsItsValues();
    void mirrorAndFlipTurnThePicture();
    void blocksTellTheRegisters();

    void everyKnownFrameIsNamedOnce();
};

void CameraCommandsTest::aPositionIsReachedAtItsSpeeds()
{
    CameraDesk desk;
    // Pan at 16.7, tilt at 12.5 degrees a second, from the ACK on.
    desk.send(toThere, 525ms);
    QCOMPARE(desk.camera.position().pan, 25 / 3.0);
    QCOMPARE(desk.camera.position().tilt, -6.25);
    desk.wait(1s);
    QCOMPARE(desk.send(panTiltInquiry), answer("00 01 00 00 0f 0f 08 00"));
}

void CameraCommandsTest::aPositionCompletesOnArrival()
{
    CameraDesk desk;
    // 19.2 degrees at 16.7 a second.
    QCOMPARE(desk.send(toThere, 2s), QStringList({"25: 90 41 ff", "1177: 90 51 ff"}));
    QCOMPARE(desk.heard, QStringList("absolute position, pan 19.2, tilt -9.6 degrees, speeds 5 and 5"));
    QCOMPARE(desk.send(toThere), acknowledgedAndCompleted());
}

void CameraCommandsTest::positionsTakeTheSpeedCodesOfDrives()
{
    for (const char* const how : {"02", "03"}) {
        const auto isTaken = [&how](BusyRules rules, const QByteArray& speeds) {
            CameraDesk desk(rules);
            const QStringList replies =
                desk.send("81 01 06" + QByteArray(how) + speeds + "00 00 00 00 00 00 00 00 ff");
            return replies == acknowledgedAndCompleted() ? 1 : replies == syntaxError() ? 0 : -1;
        };
        QCOMPARE(isTaken(BusyRules::Lenient, "00 00"), 1);
        QCOMPARE(isTaken(BusyRules::Lenient, "18 18"), 1);
        QCOMPARE(isTaken(BusyRules::Lenient, "19 05"), 0);
        QCOMPARE(isTaken(BusyRules::Lenient, "05 19"), 0);
        QCOMPARE(isTaken(BusyRules::Strict, "01 01"), 1);
        QCOMPARE(isTaken(BusyRules::Strict, "18 14"), 1);
        QCOMPARE(isTaken(BusyRules::Strict, "00 05"), 0);
        QCOMPARE(isTaken(BusyRules::Strict, "05 00"), 1);
        QCOMPARE(isTaken(BusyRules::Strict, "05 15"), 0);
    }
}

void CameraCommandsTest::strictTreatsAPositionLikeHome()
{
    CameraDesk desk(BusyRules::Strict);
    desk.send(store5);
    desk.send(driveRight, 50ms);
    QCOMPARE(desk.send(toThere), notExecutable());
    desk.send(driveStop);
    QCOMPARE(desk.send(toThere, 50ms), QStringList("25: 90 41 ff"));
    QCOMPARE(desk.send(driveStop, 50ms), QStringList("25: 90 62 41 ff"));
    QCOMPARE(desk.send(recall5, 50ms), QStringList("25: 90 62 41 ff"));
    QCOMPARE(desk.send(home, 50ms), QStringList({"25: 90 42 ff", "25: 90 51 ff"}));
}

void CameraCommandsTest::drivesStopAtTheLimitsThatWereSet()
{
    CameraDesk desk;
    QCOMPARE(desk.send(limitUpRight), acknowledgedAndCompleted());
    QCOMPARE(desk.send(limitDownLeft), acknowledgedAndCompleted());
    QCOMPARE(desk.heard, QStringList({"limit up-right set, pan 19.2, tilt 9.6 degrees",
                                      "limit down-left set, pan -19.2, tilt -9.6 degrees"}));
    desk.send("81 01 06 01 18 14 02 01 ff", 5s);
    QCOMPARE(desk.send(panTiltInquiry), answer("00 01 00 00 00 00 08 00"));
    desk.send("81 01 06 01 18 14 01 02 ff", 5s);
    QCOMPARE(desk.send(panTiltInquiry), answer("0f 0f 00 00 0f 0f 08 00"));

    QCOMPARE(desk.send(clearUpRight), acknowledgedAndCompleted());
    desk.send("81 01 06 01 18 14 02 01 ff", 10s);
    QCOMPARE(desk.send(panTiltInquiry), answer("00 08 0d 0b 00 04 0b 00"));
    desk.send("81 01 06 01 18 14 01 02 ff", 10s);
    QCOMPARE(desk.send(panTiltInquiry), answer("0f 0f 00 00 0f 0f 08 00"));
    QCOMPARE(desk.send(clearDownLeft), acknowledgedAndCompleted());
    desk.send("81 01 06 01 18 14 01 02 ff", 10s);
    QCOMPARE(desk.send(panTiltInquiry), answer("0f 07 02 05 0f 0e 07 00"));
}

void CameraCommandsTest::positionsGoAsFarAsTheLimits()
{
    CameraDesk desk;
    desk.send(driveRight, 1s);
    desk.send(driveStop);
    desk.send(store5);
    desk.send(home, 2s);
    desk.send(limitUpRight);
    desk.send("81 01 06 02 18 14 00 02 00 00 00 01 00 00 ff", 2s);
    QCOMPARE(desk.send(panTiltInquiry), answer("00 01 00 00 00 00 08 00"));
    desk.send(home, 2s);
    QCOMPARE(desk.send(recall5, 2s).size(), 2);
    QCOMPARE(desk.send(panTiltInquiry), answer("00 01 00 00 00 00 00 00"));
}

void CameraCommandsTest::aLimitBeyondTheOppositeOneIsNotExecutable()
{
    CameraDesk desk;
    desk.send("81 01 06 07 00 01 0f 0f 0f 0f 00 00 00 00 ff");
    QCOMPARE(desk.send("81 01 06 07 00 00 00 00 00 00 00 00 00 00 ff"), notExecutable());
    QCOMPARE(desk.send("81 01 06 07 00 00 0f 0f 0f 0f 00 00 00 01 ff"), notExecutable());
    QCOMPARE(desk.send("81 01 06 07 00 00 0f 0f 0f 0f 00 00 00 00 ff"), acknowledgedAndCompleted());
    QCOMPARE(desk.send("81 01 06 07 00 01 0f 0f 0f 0e 00 00 00 00 ff"), notExecutable());
    QCOMPARE(desk.send("81 01 06 07 00 01 0f 0f 0f 0f 0f 0f 0f 0f ff"), notExecutable());
}

void CameraCommandsTest::aLimitOutOfRangeIsASyntaxError_data()
{
    QTest::addColumn<QByteArray>("frame");

    QTest::newRow("set, no such corner") << QByteArray("81 01 06 07 00 02 00 00 00 00 00 00 00 00 ff");
    QTest::newRow("clear, no such corner") << QByteArray("81 01 06 07 01 02 07 0f 0f 0f 07 0f 0f 0f ff");
    QTest::newRow("clear, other bytes") << QByteArray("81 01 06 07 01 01 07 0f 0f 0f 07 0f 0f 0e ff");
}

void CameraCommandsTest::aLimitOutOfRangeIsASyntaxError()
{
    QFETCH(QByteArray, frame);
    CameraDesk desk;
    QCOMPARE(desk.send(frame), syntaxError());
}

void CameraCommandsTest::aLimitBeyondTheMechanicsIsTheirsOrRefused()
{
    const char* const wider = "81 01 06 07 00 01 00 09 09 00 00 05 01 00 ff";
    CameraDesk strict(BusyRules::Strict);
    QCOMPARE(strict.send(wider), syntaxError());

    CameraDesk desk;
    QCOMPARE(desk.send(wider), acknowledgedAndCompleted());
    desk.send("81 01 06 01 18 14 02 01 ff", 10s);
    QCOMPARE(desk.send(panTiltInquiry), answer("00 08 0d 0b 00 04 0b 00"));
}

void CameraCommandsTest::aCameraBeyondANewLimitStaysUntilItIsMoved()
{
    CameraDesk desk;
    desk.send(driveRight, 1s);
    desk.send(driveStop);
    const double before = desk.camera.position().pan;
    desk.send(limitUpRight);
    QCOMPARE(desk.camera.position().pan, before);
    desk.send(driveRight, 1s);
    QCOMPARE(desk.camera.position().pan, before);
    desk.send("81 01 06 02 18 14 00 02 00 00 00 00 00 00 ff", 2s);
    QCOMPARE(desk.send(panTiltInquiry), answer("00 01 00 00 00 00 00 00"));
}

void CameraCommandsTest::standbyRefusesEverythingButPowerAndInquiries_data()
{
    QTest::addColumn<QByteArray>("frame");
    QTest::addColumn<QString>("reply");

    const QStringList answered{"address set",     "interface clear, broadcast",
                               "interface clear", "cancel socket",
                               "power on",        "power off"};
    for (const auto& known : ViscaCamera::knownFrames()) {
        if (answered.contains(known.name) || known.name.endsWith("inquiry"))
            continue;
        // Numbers that the camera accepts while it is on; the last digits of 1000 are preset 0 and speed 0.
        FrameNumbers numbers{{'x', 1}, {'V', 5}, {'W', 5}, {'p', 0x1000}, {'q', 0x1000}};
        for (const Register& row : Registers::table()) {
            if (known.name == row.name)
                numbers['p'] = row.afterPowerOn;
        }
        QTest::newRow(qPrintable(known.name))
            << makeFrame(known.frame.constData(), numbers).toHex(' ') << "25: 90 61 41 ff";
    }
    QTest::newRow("unknown command") << QByteArray("81 01 06 7f ff") << "25: 90 60 02 ff";
    QTest::newRow("power") << QByteArray(powerInquiry) << "25: 90 50 03 ff";
    QTest::newRow("position") << QByteArray(panTiltInquiry) << "25: 90 50 00 00 00 00 00 00 00 00 ff";
    QTest::newRow("register") << QByteArray("81 09 04 38 ff") << "25: 90 50 02 ff";
}

void CameraCommandsTest::standbyRefusesEverythingButPowerAndInquiries()
{
    QFETCH(QByteArray, frame);
    QFETCH(QString, reply);
    CameraDesk desk(standby());
    QCOMPARE(desk.send(frame), QStringList(reply));
    QVERIFY(!desk.camera.isOn());

    desk.send(powerOn);
    desk.send("81 01 04 38 03 ff");
    if (frame.startsWith("81 01") && reply.endsWith("41 ff") && !frame.startsWith("81 01 04 3f 02"))
        QVERIFY2(desk.send(frame).value(0).endsWith("90 41 ff"), "it is accepted when the camera is on");
}

void CameraCommandsTest::standbyStopsEverythingAndCompletesWhatWasUnderWay()
{
    CameraDesk desk;
    desk.send(driveRight, 1s);
    desk.send(home, 50ms);
    QCOMPARE(desk.send(powerOff), QStringList({"25: 90 42 ff", "25: 90 51 ff", "36: 90 52 ff"}));
    QVERIFY(!desk.camera.isMoving());

    desk.send(powerOn);
    desk.send(driveRight);
    desk.send(zoomTele);
    desk.send(powerOff);
    QVERIFY(!desk.camera.isMoving());
    const double stopped = desk.camera.position().pan;
    desk.wait(1s);
    QCOMPARE(desk.camera.position().pan, stopped);
}

void CameraCommandsTest::comingBackKeepsPositionAndPresets()
{
    CameraDesk desk;
    desk.send(driveRight, 1s);
    desk.send(driveStop);
    desk.send(store5);
    const double before = desk.camera.position().pan;
    desk.send(powerOff);
    desk.send(powerOn);
    QCOMPARE(desk.camera.position().pan, before);
    QCOMPARE(desk.send(recall5), acknowledgedAndCompleted());
}

void CameraCommandsTest::aCameraWithAnotherAddressAnswersFromThere()
{
    ViscaCamera::Options options(BusyRules::Lenient);
    options.address = 7;
    CameraDesk desk(options);
    QCOMPARE(desk.send("87 01 06 04 ff"), QStringList({"25: f0 41 ff", "36: f0 51 ff"}));
    QCOMPARE(desk.send("87 09 04 47 ff"), QStringList("25: f0 50 00 00 00 00 ff"));
    QCOMPARE(desk.send("87 01 06 7f ff"), QStringList("25: f0 60 02 ff"));
    QVERIFY(desk.send(home).isEmpty());
    QCOMPARE(desk.heard.last(), QString("for camera 1, ignored"));
}

void CameraCommandsTest::theCameraTakesTheAddressThatItIsOffered()
{
    CameraDesk desk;
    QCOMPARE(desk.send("88 30 03 ff"), QStringList("25: 88 30 04 ff"));
    QVERIFY(desk.send(home).isEmpty());
    QCOMPARE(desk.send("83 01 06 04 ff"), QStringList({"25: b0 41 ff", "36: b0 51 ff"}));

    // It holds for the very next frame.
    QCOMPARE(desk.send("88 30 07 ff 87 01 06 04 ff"),
             QStringList({"25: 88 30 08 ff", "42: f0 41 ff", "53: f0 51 ff"}));
    QCOMPARE(desk.heard.mid(3), QStringList({"address set 7", "home"}));
}

void CameraCommandsTest::anAddressForNobodyIsIgnored_data()
{
    QTest::addColumn<QByteArray>("frame");

    QTest::newRow("0") << QByteArray("88 30 00 ff");
    QTest::newRow("8") << QByteArray("88 30 08 ff");
    QTest::newRow("15") << QByteArray("88 30 0f ff");
    QTest::newRow("17") << QByteArray("88 30 11 ff");
}

void CameraCommandsTest::anAddressForNobodyIsIgnored()
{
    QFETCH(QByteArray, frame);
    CameraDesk desk;
    QVERIFY(desk.send(frame).isEmpty());
    QCOMPARE(desk.send(home), acknowledgedAndCompleted());
}

void CameraCommandsTest::theTableOfRegistersIsSound_data()
{
    QTest::addColumn<int>("index");
    addRegisters([](const Register&) { return true; });
}

// What a slip of whoever adds a line would break.
void CameraCommandsTest::theTableOfRegistersIsSound()
{
    QFETCH(int, index);
    const Register& line = registerAt(index);
    static const QRegularExpression form("^(0[19]( [0-9A-F]{2}){2}( 0[0-9A-Fps]| pp| 10){0,4})?$");
    for (const char* const text : {line.sets, line.steps, line.inquiry})
        QVERIFY2(form.match(text).hasMatch(), text);
    const bool takesValue = QByteArray(line.sets).contains('p');
    QVERIFY2(takesValue || *line.sets != '\0', "there is something to send");
    QCOMPARE(*line.range != '\0', takesValue);
    QVERIFY2(takesValue || *line.inquiry == '\0', "there is something to tell");
    QVERIFY(takesValue || *line.steps == '\0');
    if (QByteArray(line.steps).contains("10"))
        QCOMPARE(line.range, "2-3");
    if (takesValue)
        QVERIFY2(line.hasValue(line.afterPowerOn), "it has its value after power-on");
}

void CameraCommandsTest::everyRegisterKeepsItsValues_data()
{
    QTest::addColumn<int>("index");
    addRegisters([](const Register&) { return true; });
}

void CameraCommandsTest::everyRegisterKeepsItsValues()
{
    QFETCH(int, index);
    const Register& line = registerAt(index);
    CameraDesk desk;
    if (*line.inquiry == '\0') {
        QCOMPARE(desk.send(withValue(commandOf(line.sets), line.afterPowerOn)), acknowledgedAndCompleted());
        QVERIFY(desk.heard.constFirst().startsWith(line.name));
        return;
    }
    QCOMPARE(desk.send(commandOf(line.inquiry)), valueTold(line, line.afterPowerOn));

    int told = line.afterPowerOn;
    const auto digits = QByteArray(line.sets).count('p');
    for (int value = 0; value<1 << 4 * digits; value += digits> 2 ? 0xFF : 1) {
        const QByteArray frame = withValue(commandOf(line.sets), value);
        const bool isOther = std::any_of(Registers::table().begin(), Registers::table().end(),
                                         [&](const Register& row) { return frame == commandOf(row.sets); });
        if (isOther)
            continue;
        const bool valid = line.hasValue(value);
        QCOMPARE(desk.send(frame), valid ? acknowledgedAndCompleted() : syntaxError());
        told = valid ? value : told;
        QCOMPARE(desk.send(commandOf(line.inquiry)), valueTold(line, told));
    }
    QVERIFY(desk.heard.contains(QString("%1 inquiry").arg(line.name)));
}

void CameraCommandsTest::mirrorAndFlipTurnThePicture()
{
    CameraDesk desk;
    QVERIFY(!desk.camera.isMirrored());
    QVERIFY(!desk.camera.isFlipped());
    desk.send("81 01 04 61 02 ff");
    QVERIFY(desk.camera.isMirrored());
    QVERIFY(!desk.camera.isFlipped());
    desk.send("81 01 04 66 02 ff");
    desk.send("81 01 04 61 03 ff");
    QVERIFY(!desk.camera.isMirrored());
    QVERIFY(desk.camera.isFlipped());
}

void CameraCommandsTest::blocksTellTheRegisters()
{
    CameraDesk desk;
    desk.send("81 01 04 47 01 02 03 04 ff", 3s);
    desk.send("81 01 04 38 03 ff");
    desk.send("81 01 04 48 05 06 07 08 ff", 3s);
    desk.send("81 01 04 38 02 ff");
    desk.send("81 01 04 06 02 ff");
    QCOMPARE(desk.send("81 09 7e 7e 00 ff"), answer("01 02 03 04 00 00 05 06 07 08 00 03 00"));
    desk.send("81 01 04 38 03 ff");
    QCOMPARE(desk.send("81 09 7e 7e 00 ff"), answer("01 02 03 04 00 00 05 06 07 08 00 02 00"));

    for (const char* const command :
         {"04 43 00 00 0c 01", "04 44 00 00 0d 02", "04 35 05", "04 42 00 00 00 09", "04 39 03", "04 33 02",
          "04 4a 00 00 01 02", "04 4b 00 00 01 01", "04 4c 00 00 00 0a", "04 4e 00 00 00 0b"})
        QCOMPARE(desk.send("81 01 " + QByteArray(command) + " ff"), acknowledgedAndCompleted());
    QCOMPARE(desk.send("81 09 7e 7e 01 ff"), answer("0c 01 0d 02 05 09 03 04 12 11 0a 00 0b"));
    desk.send("81 01 04 3e 02 ff");
    QCOMPARE(desk.send("81 09 7e 7e 01 ff"), answer("0c 01 0d 02 05 09 03 06 12 11 0a 00 0b"));

    QCOMPARE(desk.send("81 09 7e 7e 02 ff"), answer("01 00 00 00 00 00 00 00 00 00 00 00 00"));
    desk.send("81 01 04 61 02 ff");
    QCOMPARE(desk.send("81 09 7e 7e 02 ff"), answer("01 04 00 00 00 00 00 00 00 00 00 00 00"));
    desk.send(powerOff);
    QCOMPARE(desk.send("81 09 7e 7e 02 ff"), answer("00 04 00 00 00 00 00 00 00 00 00 00 00"));
    QCOMPARE(desk.send("81 09 7e 7e 03 ff"), answer("00 00 00 00 00 00 00 00 00 00 00 00 00"));
    QCOMPARE(desk.send("81 09 7e 7e 04 ff"), syntaxError());
}

void CameraCommandsTest::everyKnownFrameIsNamedOnce()
{
    std::set<QString> names;
    std::set<QString> frames;
    for (const auto& known : ViscaCamera::knownFrames()) {
        QVERIFY2(names.insert(known.name).second, qPrintable(known.name));
        QVERIFY2(frames.insert(known.frame).second, known.frame.constData());
    }
    QVERIFY(names.count("home") == 1);
    QVERIFY(names.count("iris down") == 1);
    QVERIFY(names.count("focus mode toggle") == 1);
    QVERIFY(names.count("white balance mode") == 1);
    QVERIFY(names.count("one-push focus") == 1);
    QVERIFY(names.count("zoom position inquiry") == 1);
}

QTEST_GUILESS_MAIN(CameraCommandsTest)
#include "CameraCommandsTest.moc"
