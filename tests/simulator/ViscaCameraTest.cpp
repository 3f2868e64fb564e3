// What the dialogues do not check: exact times, the words for each frame, the speed of every code, and the
// clock.

#include "ViscaCamera.h"
#include "support/Frames.h"

#include <QtTest>

#include <vector>

using namespace std::chrono_literals;

namespace {

using Event = ViscaCamera::Event;

QByteArray bytes(const QByteArray& hex)
{
    return QByteArray::fromHex(hex);
}

// A camera with a clock that moves only during send().
class TimedCamera
{
public:
    // Sends a frame in hexadecimal and waits. Returns the replies with the milliseconds since it was sent,
    // such as "25: 90 41 ff".
    QStringList send(const QByteArray& hex, ViscaCamera::Time patience = 100ms)
    {
        const ViscaCamera::Time sent = now;
        QStringList replies;
        note(camera.receive(bytes(hex), now), sent, replies);
        while (now < sent + patience)
            note(camera.advance(++now), sent, replies);
        return replies;
    }

    // What has arrived, in words.
    QStringList heard;
    ViscaCamera camera;

private:
    void note(const std::vector<Event>& events, ViscaCamera::Time sent, QStringList& replies)
    {
        for (const Event& event : events) {
            if (event.kind == Event::Kind::Reply)
                replies += QString("%1: %2").arg((now - sent).count()).arg(QString(event.bytes.toHex(' ')));
            else
                heard += event.words;
        }
    }

    ViscaCamera::Time now{0};
};

// Where a camera is one second after it began to carry out the command, in which the code replaces "XX".
ViscaCamera::Position aSecondAfter(QByteArray command, int code)
{
    TimedCamera timed;
    timed.send(command.replace("XX", QByteArray(1, static_cast<char>(code)).toHex()), 1025ms);
    return timed.camera.position();
}

} // namespace

class ViscaCameraTest : public QObject
{
    Q_OBJECT

private slots:

    void eachFrameHasItsWords_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QTest::addColumn<QString>("words");

        const auto row = [](const QByteArray& frame, const char* words) {
            QTest::newRow(words) << frame << words;
        };
        row("81 01 06 01 18 14 02 01 ff", "drive up-right, speeds 24 and 20");
        row("81 01 06 02 05 05 00 01 00 00 0f 0f 08 00 ff",
            "absolute position, pan 19.2, tilt -9.6 degrees, speeds 5 and 5");
        row("81 01 06 07 00 01 00 01 00 00 00 00 08 00 ff", "limit up-right set, pan 19.2, tilt 9.6 degrees");
        row("81 01 04 07 02 ff", "zoom tele, standard speed");
        row("81 01 04 07 37 ff", "zoom wide, speed 7");
        row("81 01 04 3f 01 fe ff", "store preset 254");
        row("81 01 7e 01 0b 3e 0c ff", "speed of preset 62, 12");
        row("81 01 04 4b 00 00 01 01 ff", "iris 11");
        row("81 09 04 4b ff", "iris inquiry");
        row("88 30 03 ff", "address set 3");
        row("81 01 06 7f ff", "unknown command");
        row("82 01 06 04 ff", "for camera 2, ignored");
        row("80 01 06 04 ff", "for camera 0, ignored");
        row("88 01 06 04 ff", "unknown broadcast, ignored");
        row("81" + QByteArray("00").repeated(100000) + "ff", "too long");
    }

    void eachFrameHasItsWords()
    {
        QFETCH(QByteArray, frame);
        QFETCH(QString, words);
        TimedCamera timed;
        timed.send(frame);
        QCOMPARE(timed.heard, QStringList(words));
    }

    void repliesComeInTheTimesOfRealCameras()
    {
        TimedCamera timed;
        // One frame is taken per video frame; 17 ms at 12.5 degrees a second are three steps.
        QCOMPARE(timed.send(QByteArray(Up) + Stop + PositionInquiry),
                 QStringList({"25: 90 41 ff", "36: 90 51 ff", "42: 90 41 ff", "53: 90 51 ff",
                              "59: 90 50 00 00 00 00 00 00 00 03 ff"}));
        // 19.2 degrees right at 16.7 a second.
        QCOMPARE(timed.send("81 01 06 02 05 05 00 01 00 00 00 00 00 00 ff", 2s),
                 QStringList({"25: 90 41 ff", "1177: 90 51 ff"}));
    }

    void eachSpeedCodeHasItsSpeed()
    {
        for (int code = 0x01; code <= 0x18; ++code)
            QCOMPARE(aSecondAfter("81 01 06 01 XX 01 02 03 ff", code).pan, code * 80 / 24.0);
        for (int code = 0x01; code <= 0x14; ++code)
            QCOMPARE(aSecondAfter("81 01 06 01 01 XX 03 01 ff", code).tilt, code * 50 / 20.0);
        // At the standard speed, which is that of code 3, the zoom goes from end to end in 4.5 seconds.
        for (int code = 0; code <= 7; ++code)
            QCOMPARE(aSecondAfter("81 01 04 07 XX ff", 0x20 + code).zoom, (code + 1) * 0x4000 / 4.5 / 4);
        QCOMPARE(aSecondAfter("81 01 04 07 02 ff", 0).zoom, 0x4000 / 4.5);
    }

    void standbyRefusesEveryCommandButPower_data()
    {
        QTest::addColumn<QByteArray>("frame");
        const QStringList answered{"address set",     "interface clear, broadcast",
                                   "interface clear", "cancel socket",
                                   "power on",        "power off"};
        for (const ViscaCamera::KnownFrame& known : ViscaCamera::knownFrames()) {
            if (answered.contains(known.name) || known.name.endsWith("inquiry"))
                continue;
            // Numbers that the camera accepts while it is on. As the number of a preset, 0x1000 is 0.
            FrameNumbers numbers{{'x', 1}, {'V', 5}, {'W', 5}, {'p', 0x1000}, {'q', 5}};
            for (const Register& row : Registers::table()) {
                if (known.name == row.name)
                    numbers['p'] = row.afterPowerOn;
            }
            QTest::newRow(qPrintable(known.name)) << makeFrame(known.frame.constData(), numbers).toHex(' ');
        }
    }

    void standbyRefusesEveryCommandButPower()
    {
        QFETCH(QByteArray, frame);
        TimedCamera timed;
        // Store preset 0 and set the focus to manual, so that only standby is a reason to refuse the frame.
        timed.send("81 01 04 3f 01 00 ff 81 01 04 38 03 ff 81 01 04 00 03 ff");
        QVERIFY(!timed.camera.isOn());
        QCOMPARE(timed.send(frame), QStringList("25: 90 61 41 ff"));
    }

    // Finds the mistakes that are easily made in a new row.
    void theTableOfRegistersIsSound()
    {
        static const QRegularExpression form("^(0[19]( [0-9A-F]{2}){2}( 0[0-9A-Fps]| pp| 10){0,4})?$");
        for (const Register& row : Registers::table()) {
            for (const char* const text : {row.sets, row.steps, row.inquiry})
                QVERIFY2(form.match(text).hasMatch(), row.name);
            const bool takesValue = QByteArray(row.sets).contains('p');
            const bool isToggled = QByteArray(row.steps).contains("10");
            QVERIFY2(*row.sets != '\0', row.name);
            QVERIFY2((*row.range != '\0') == takesValue, row.name);
            QVERIFY2(takesValue || (*row.inquiry == '\0' && *row.steps == '\0'), row.name);
            QVERIFY2(!isToggled || qstrcmp(row.range, "2-3") == 0, row.name);
            QVERIFY2(!takesValue || row.hasValue(row.afterPowerOn), row.name);
        }
    }

    void tooManyFramesAtOnceAreRefused()
    {
        TimedCamera timed;
        const QStringList replies = timed.send(QByteArray(PositionInquiry).repeated(64) + Up, 5s);
        QCOMPARE(replies.size(), 65);
        QCOMPARE(replies.first(), QString("0: 90 60 03 ff"));
        QCOMPARE(replies.last(), QString("%1: 90 50 00 00 00 00 00 00 00 00 ff").arg(63 * 17 + 25));
        QCOMPARE(timed.send(Home).value(0), QString("25: 90 41 ff"));
    }

    void aLateCallCatchesUpInOrder()
    {
        ViscaCamera camera;
        camera.receive(bytes(QByteArray(Up) + Stop), 0ms);
        QStringList replies;
        for (const Event& event : camera.advance(10s))
            replies += QString(event.bytes.toHex(' '));
        QCOMPARE(replies, QStringList({"90 41 ff", "90 51 ff", "90 41 ff", "90 51 ff"}));
        QCOMPARE(camera.position().tilt, 12.5 * 0.017);
    }

    void theNextReplyIsDueAtItsTime()
    {
        ViscaCamera camera;
        QVERIFY(!camera.nextDue());
        camera.receive(bytes("81 01 06 01 18 14 02 03 ff"), 100ms);
        QVERIFY(camera.nextDue() == 125ms);
        camera.advance(125ms);
        QVERIFY(camera.nextDue() == 136ms);
        camera.advance(1125ms);
        QVERIFY2(!camera.nextDue(), "a drive has nothing more to reply");

        // 80 degrees and what the drive adds until Home acts, at 80 degrees per second.
        camera.receive(bytes(Home), 1125ms);
        camera.advance(1150ms);
        QVERIFY(camera.nextDue() == 1150ms + 1025ms);
    }

    void theClockNeverRunsBackwards()
    {
        ViscaCamera camera;
        camera.receive(bytes(Up), 1000ms);
        camera.advance(2025ms);
        QVERIFY(camera.advance(0ms).empty());
        QCOMPARE(camera.position().tilt, 12.5);
        camera.receive(bytes(Stop), 0ms);
        QVERIFY(camera.nextDue() == 2050ms);
    }
};

QTEST_GUILESS_MAIN(ViscaCameraTest)
#include "ViscaCameraTest.moc"
