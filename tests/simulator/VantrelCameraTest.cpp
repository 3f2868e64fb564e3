#include "ViscaCamera.h"
#include "support/CameraProgram.h"
#include "support/Frames.h"
#include "support/PlainClient.h"
#include "support/PrivateProfile.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <csignal>

namespace {

const char* const driveUpLine = "<- 81 01 06 01 05 05 03 01 FF  drive up, speeds 5 and 5";
const char* const networkChangeLine = "-> 90 38 FF  network change";
const char* const ackLine = "-> 90 41 FF  ACK, socket 1";
const char* const completionLine = "-> 90 51 FF  completion, socket 1";
const char* const ackAndCompletion = "90 41 ff 90 51 ff";

// A camera with a link, in a folder of its own.
struct LinkedCamera
{
    explicit LinkedCamera(const QStringList& options = {})
        : camera(QStringList({"--link", link}) + options)
    {
    }

    QStringList entries() const
    {
        return QDir(folder.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System);
    }

    const QTemporaryDir folder;
    const QString link = folder.filePath("camera");
    CameraProgram camera;
};

} // namespace

class VantrelCameraTest : public QObject
{
    Q_OBJECT

private slots:

    void answersAndPrintsEachFrameAndReply_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("alone") << QStringList();
        QTest::newRow("with a view") << QStringList("--view");
    }

    void answersAndPrintsEachFrameAndReply()
    {
        QFETCH(QStringList, options);
        CameraProgram camera(options);
        QTRY_COMPARE(camera.lines(), QStringList({"Camera at " + camera.path(), networkChangeLine}));
        PlainClient controller(camera.path());
        controller.sendHex(QByteArray("12 34 ff") + Up + "ff 90");
        QTRY_COMPARE(controller.receivedHex(), QByteArray(ackAndCompletion));
        QTRY_COMPARE(camera.lines().mid(2),
                     QStringList({"<- 12 34 FF  no frame, ignored", driveUpLine,
                                  "<- FF 90  no frame, ignored", ackLine, completionLine}));
    }

    void printsAnUnfinishedFrame()
    {
        CameraProgram camera;
        PlainClient(camera.path()).sendHex("81 01 06 04");
        QTRY_COMPARE(camera.lines("<-"), QStringList("<- 81 01 06 04  unfinished frame, forgotten"));
    }

    void anOptionChangesTheAnswers_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QByteArray>("sent");
        QTest::addColumn<QByteArray>("received");

        const auto row = [](const QStringList& options, const QByteArray& sent, const QByteArray& received) {
            QTest::newRow(qPrintable(options.join(' '))) << options << sent << received;
        };
        row({"--strict"}, QByteArray(Up) + Home, "90 41 ff 90 51 ff 90 61 41 ff");
        row({"--standby"}, "81 09 04 00 ff", "90 50 03 ff");
        row({"--address", "7"}, "81 09 04 00 ff 87 09 04 00 ff", "f0 50 02 ff");
        row({"--presets", "6"},
            "81 01 04 3f 00 06 ff 81 01 04 3f 01 06 ff 81 01 04 3f 02 06 ff 81 01 04 3f 01 05 ff",
            "90 60 02 ff 90 60 02 ff 90 60 02 ff 90 41 ff 90 51 ff");
        row({"--split"}, Up, ackAndCompletion);
    }

    void anOptionChangesTheAnswers()
    {
        QFETCH(QStringList, options);
        QFETCH(QByteArray, sent);
        QFETCH(QByteArray, received);
        CameraProgram camera(options);
        PlainClient controller(camera.path());
        controller.sendHex(sent);
        QTRY_COMPARE(controller.receivedHex(), received);
        if (options.contains("--split"))
            QTRY_COMPARE(camera.lines(">>"),
                         QStringList({">> 90", ">> 41", ">> FF", ">> 90", ">> 51", ">> FF"}));
    }

    void noRepliesIsSilent()
    {
        CameraProgram camera({"--no-replies"});
        PlainClient controller(camera.path());
        controller.sendHex(Up);
        QTRY_COMPARE(camera.lines().mid(2), QStringList({driveUpLine, ackLine, completionLine}));
        QVERIFY(controller.received().isEmpty());
    }

    void lateRepliesAreLate()
    {
        CameraProgram camera({"--late", "200"});
        PlainClient controller(camera.path());
        QElapsedTimer clock;
        clock.start();
        controller.sendHex(Up);
        QTRY_COMPARE(controller.receivedHex(), QByteArray(ackAndCompletion));
        QVERIFY(clock.elapsed() >= 200);
    }

    void linkLeadsToTheCamera()
    {
        LinkedCamera linked;
        QTRY_COMPARE(linked.camera.lines().mid(1),
                     QStringList({"Link at " + linked.link, networkChangeLine}));
        QCOMPARE(QFileInfo(linked.link).symLinkTarget(), linked.camera.path());
        PlainClient controller(linked.link);
        controller.sendHex(Up);
        QTRY_COMPARE(controller.receivedHex(), QByteArray(ackAndCompletion));
    }

    void linkReplacesOneThatIsStale()
    {
        LinkedCamera linked;
        QTRY_COMPARE(linked.camera.lines().size(), 3);
        linked.camera.process.kill();
        QCOMPARE(linked.camera.exitStatus(), -1);
        QVERIFY2(QFileInfo(linked.link).isSymLink(), "a killed camera leaves its link behind");

        CameraProgram next({"--link", linked.link});
        QTRY_COMPARE(next.lines().size(), 3);
        QCOMPARE(QFileInfo(linked.link).symLinkTarget(), next.path());
        QCOMPARE(linked.entries(), QStringList("camera"));
    }

    void linkReplacesNothingElse_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char* const kind : {"file", "folder", "link to a file", "dangling link"})
            QTest::newRow(kind) << kind;
    }

    void linkReplacesNothingElse()
    {
        QFETCH(QString, kind);
        const QTemporaryDir folder;
        const QString file = folder.filePath("file");
        writeFile(file, "kept");
        QVERIFY(QDir(folder.path()).mkdir("folder"));
        QVERIFY(QFile::link(file, folder.filePath("link to a file")));
        QVERIFY(QFile::link(folder.filePath("gone"), folder.filePath("dangling link")));
        const QStringList before = QDir(folder.path()).entryList(QDir::AllEntries | QDir::System);

        CameraProgram camera({"--link", folder.filePath(kind)});
        QCOMPARE(camera.exitStatus(), 2);
        const QString complaint = camera.complaint();
        QVERIFY2(complaint.contains(folder.filePath(kind)), qPrintable(complaint));
        QVERIFY(camera.lines().isEmpty());
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::System), before);
        QCOMPARE(fileContent(file), QByteArray("kept"));
    }

    void linkGoesAwayAtTheEnd_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void linkGoesAwayAtTheEnd()
    {
        QFETCH(int, signal);
        LinkedCamera linked;
        QTRY_COMPARE(linked.camera.lines().size(), 3);
        QCOMPARE(kill(static_cast<pid_t>(linked.camera.process.processId()), signal), 0);
        QCOMPARE(linked.camera.exitStatus(), 0);
        QCOMPARE(linked.entries(), QStringList());
        QVERIFY(linked.camera.complaint().isEmpty());
    }

    void linkGoesAwayWhenNobodyReadsTheOutput()
    {
        const QTemporaryDir folder;
        const QString link = folder.filePath("camera");
        QProcess camera;
        QProcess reader;
        camera.setStandardOutputProcess(&reader);
        camera.start(VANTREL_CAMERA_PATH, {"--link", link});
        reader.start("head", {"-n", "3"});
        QVERIFY(reader.waitForFinished());
        QVERIFY(reader.readAllStandardOutput().contains("Link at " + QFile::encodeName(link) + '\n'));

        PlainClient(link).sendHex(Up);
        QVERIFY(camera.waitForFinished());
        QCOMPARE(camera.exitStatus(), QProcess::NormalExit);
        QCOMPARE(camera.exitCode(), 0);
        QVERIFY(!QFileInfo(link).isSymLink());
    }

    void linkOfAnotherCameraIsLeftAlone()
    {
        LinkedCamera first;
        QTRY_COMPARE(first.camera.lines().size(), 3);
        CameraProgram second({"--link", first.link});
        QTRY_COMPARE(second.lines().size(), 3);
        first.camera.process.terminate();
        QCOMPARE(first.camera.exitStatus(), 0);
        QCOMPARE(QFileInfo(first.link).symLinkTarget(), second.path());
    }

    void hangsUpAndComesBackAtTheSameLinkAndPosition()
    {
        LinkedCamera linked({"--hang-up-after", "2", "--come-back-after", "0.3"});
        QTRY_COMPARE(linked.camera.lines().size(), 3);
        {
            PlainClient controller(linked.link);
            controller.sendHex(QByteArray(Up) + Stop);
            QTRY_COMPARE(controller.receivedHex(), QByteArray(ackAndCompletion) + ' ' + ackAndCompletion);
            QVERIFY(!controller.isHungUp());
            QTRY_VERIFY(controller.isHungUp());
            QVERIFY2(linked.entries().isEmpty(), "a pulled adapter has no device");
        }
        const QString newPath = linked.camera.path(2);
        QTRY_COMPARE(
            linked.camera.lines().mid(9),
            QStringList({"Hung up", "Camera at " + newPath, "Link at " + linked.link, networkChangeLine}));
        QCOMPARE(QFileInfo(linked.link).symLinkTarget(), newPath);
        PlainClient controller(linked.link);
        controller.sendHex(PositionInquiry);
        // Between drive and stop was one video frame, 17 ms: three steps up.
        QTRY_COMPARE(controller.receivedHex(), QByteArray("90 50 00 00 00 00 00 00 00 03 ff"));
        QTRY_VERIFY(linked.camera.lines().constLast().endsWith("  pan 0.0, tilt 0.2 degrees"));
    }

    void endsWhenItCannotComeBack()
    {
        LinkedCamera linked({"--hang-up-after", "0.2", "--come-back-after", "2"});
        QTRY_VERIFY(linked.camera.lines().contains("Hung up"));
        QVERIFY(QDir(linked.folder.path()).mkdir("camera"));
        QCOMPARE(linked.camera.exitStatus(), 1);
        QCOMPARE(linked.camera.complaint(),
                 QString("vantrel-camera: %1 exists and is not a link\n").arg(linked.link));
    }

    void helpAndVersionArePrinted_data()
    {
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("told");
        QTest::newRow("help") << "--help"
                              << "--late <MS>";
        QTest::newRow("short help") << "-h"
                                    << "--late <MS>";
        QTest::newRow("version") << "--version"
                                 << "vantrel-camera ";
    }

    void helpAndVersionArePrinted()
    {
        QFETCH(QString, option);
        QFETCH(QString, told);
        CameraProgram camera({option});
        QCOMPARE(camera.exitStatus(), 0);
        QVERIFY2(camera.lines().join('\n').contains(told), qPrintable(camera.lines().join('\n')));
    }

    void helpListsEveryFrame()
    {
        CameraProgram camera({"--help"});
        QCOMPARE(camera.exitStatus(), 0);
        const QStringList lines = camera.lines();
        for (const ViscaCamera::KnownFrame& known : ViscaCamera::knownFrames()) {
            const auto tells = [&](const QString& line) {
                return line.startsWith("  " + known.name + ' ') && line.contains(known.range) &&
                       line.endsWith("  " + known.frame);
            };
            QVERIFY2(std::any_of(lines.begin(), lines.end(), tells), qPrintable(known.name));
        }
    }

    void aBadOptionIsAClearErrorWithStatus2_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<QString>("complaint");

        const auto row = [](const char* name, const QStringList& options, const QString& complaint) {
            QTest::newRow(name) << options << complaint;
        };
        row("unknown", {"--speed"}, "Unknown option 'speed'");
        row("unknown letter", {"-x"}, "Unknown option 'x'");
        row("argument", {"COM1"}, "unexpected argument \"COM1\"");
        row("value for a switch", {"--strict=yes"}, "Unexpected value after '--strict'");
        row("no value", {"--late"}, "Missing value after '--late'");
        row("late not a number", {"--late", "soon"},
            "--late takes a whole number from 0 to 600000, not \"soon\"");
        row("late negative", {"--late=-1"}, "--late takes");
        row("late with a fraction", {"--late", "1.5"}, "--late takes");
        row("late too late", {"--late", "600001"}, "--late takes");
        row("hang up never", {"--hang-up-after", "never"}, "--hang-up-after takes seconds from 0 to 86400");
        row("hang up before", {"--hang-up-after=-1"}, "--hang-up-after takes");
        row("hang up at nan", {"--hang-up-after", "nan"}, "--hang-up-after takes");
        row("hang up at inf", {"--hang-up-after", "inf"}, "--hang-up-after takes");
        row("come back bad", {"--hang-up-after", "1", "--come-back-after", "x"},
            "--come-back-after takes seconds");
        row("come back alone", {"--come-back-after", "1"}, "--come-back-after needs --hang-up-after");
        row("address 0", {"--address", "0"}, "--address takes a whole number from 1 to 7, not \"0\"");
        row("address 8", {"--address", "8"}, "--address takes");
        row("no preset", {"--presets", "0"}, "--presets takes a whole number from 1 to 255");
        row("too many presets", {"--presets", "256"}, "--presets takes");
        row("link empty", {"--link="}, "--link takes a path");
        row("link nowhere", {"--link", "/no/such/folder/camera"},
            "cannot make the link /no/such/folder/camera");
        row("replay without a file", {"--replay"}, "Missing value after '--replay'");
        row("replay without a port", {"--replay", "home"}, "--replay takes one port, such as /dev/ttyUSB0");
        row("replay at two ports", {"--replay", "home", "one", "two"}, "--replay takes one port");
        row("replay at no such port", {"--replay", "home", "/no/such/port"},
            "cannot open /no/such/port: No such file or directory");
        row("replay of no such file", {"--replay", "/no/such/file", "/no/such/port"},
            "there is no dialogue /no/such/file, neither a file nor a name in /");
        row("replay of no such name", {"--replay", "hame", "/no/such/port"}, "there is no dialogue hame");
        row("replay with a camera's option", {"--replay", "home", "--strict", "port"},
            "--strict is for the simulated camera, which --replay does without");
        row("replay with a view", {"--replay", "home", "--view", "port"},
            "--view is for the simulated camera");
        row("baud not a number", {"--replay", "home", "--baud", "fast", "port"},
            "--baud takes a whole number from 1 to 4000000, not \"fast\"");
        row("baud 0", {"--replay", "home", "--baud", "0", "port"}, "--baud takes");
        row("baud alone", {"--baud", "9600"}, "--baud needs --replay");
        row("changes alone", {"--allow-changes"}, "--allow-changes needs --replay");
    }

    void aBadOptionIsAClearErrorWithStatus2()
    {
        QFETCH(QStringList, options);
        QFETCH(QString, complaint);
        CameraProgram camera(options);
        QCOMPARE(camera.exitStatus(), 2);
        const QString told = camera.complaint();
        QVERIFY2(told.startsWith("vantrel-camera: " + complaint), qPrintable(told));
        QCOMPARE(told.count('\n'), 1);
        QVERIFY(camera.lines().isEmpty());
    }
};

QTEST_GUILESS_MAIN(VantrelCameraTest)
#include "VantrelCameraTest.moc"
