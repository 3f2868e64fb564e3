#include "ViscaCamera.h"
#include "support/CameraProgram.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <array>
#include <csignal>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace {

const char* const driveUp = "81 01 06 01 05 05 03 01 ff";
const char* const driveUpLine = "<- 81 01 06 01 05 05 03 01 FF  drive up, speeds 5 and 5";
const char* const networkChangeLine = "-> 90 38 FF  network change";
const char* const ackLine = "-> 90 41 FF  ACK, socket 1";
const char* const completionLine = "-> 90 51 FF  completion, socket 1";
const char* const ackAndCompletion = "90 41 ff 90 51 ff";

// A controller with the line open.
class Controller
{
public:
    explicit Controller(const QString& path)
        : descriptor(open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
    }

    ~Controller() { close(descriptor); }

    Controller(const Controller&) = delete;
    Controller& operator=(const Controller&) = delete;

    void send(const QByteArray& hex)
    {
        const QByteArray bytes = QByteArray::fromHex(hex);
        QCOMPARE(write(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size())), bytes.size());
    }

    // All that has come so far, in hexadecimal.
    QByteArray received()
    {
        std::array<char, 4096> buffer;
        for (;;) {
            const ssize_t size = read(descriptor, buffer.data(), buffer.size());
            if (size <= 0)
                return all.toHex(' ');
            all.append(buffer.data(), static_cast<int>(size));
        }
    }

    bool isHungUp() const
    {
        pollfd request{descriptor, POLLIN, 0};
        return poll(&request, 1, 0) == 1 && (request.revents & POLLHUP) != 0;
    }

private:
    const int descriptor;
    QByteArray all;
};

} // namespace

class VantrelCameraTest : public QObject
{
    Q_OBJECT

private slots:
    void tellsWhereItIsFirst();
    void answersAndTellsEachFrameAndReply();
    void staysWhenAControllerLeaves();
    void reallyMoves();
    void refusesWhileBusyWhenStrict();

    void linkLeadsToTheCamera();
    void linkReplacesOneThatIsStale();
    void linkReplacesNothingElse_data();
    void linkReplacesNothingElse();
    void linkGoesAwayAtTheEnd_data();
    void linkGoesAwayAtTheEnd();
    void linkGoesAwayWhenNobodyReadsTheOutput();
    void linkOfAnotherCameraIsLeftAlone();

    void noRepliesIsSilent();
    void lateRepliesAreLate();
    void splitRepliesComeByteByByte();
    void repliesLeftUnreadAreGoneForTheNext();
    void anUnfinishedFrameIsSaid();
    void hangsUpAndComesBackAtTheSameLink();
    void theCameraKeepsItsPositionWhileUnplugged();

    void endsWhenItCannotComeBack();
    void answersTheSameWithAView();

    void helpAndVersionAreTold_data();
    void helpAndVersionAreTold();
    void helpListsEveryFrame();
    void aBadOptionIsAClearErrorWithStatus2_data();
    void aBadOptionIsAClearErrorWithStatus2();
};

void VantrelCameraTest::tellsWhereItIsFirst()
{
    CameraProgram camera;
    QVERIFY(QFileInfo::exists(camera.path()));
    QTRY_COMPARE(camera.lines(), QStringList({"Camera at " + camera.path(), networkChangeLine}));
}

void VantrelCameraTest::answersAndTellsEachFrameAndReply()
{
    CameraProgram camera;
    Controller controller(camera.path());
    controller.send(driveUp);
    QTRY_COMPARE(controller.received(), QByteArray(ackAndCompletion));
    QTRY_COMPARE(camera.lines().mid(2), QStringList({driveUpLine, ackLine, completionLine}));

    controller.send("12 34");
    QTRY_COMPARE(camera.lines().mid(5), QStringList("<- 12 34  no frame, ignored"));
}

void VantrelCameraTest::staysWhenAControllerLeaves()
{
    CameraProgram camera;
    for (int visit = 1; visit <= 3; ++visit) {
        Controller controller(camera.path());
        controller.send(driveUp);
        QTRY_COMPARE(controller.received(), QByteArray(ackAndCompletion));
        QTRY_COMPARE(camera.lines("<-").size(), visit);
    }
}

void VantrelCameraTest::reallyMoves()
{
    CameraProgram camera;
    Controller controller(camera.path());
    controller.send("81 01 06 01 18 14 02 03 ff");
    const auto panIsRight = [&] {
        controller.send("81 09 06 12 ff");
        const QStringList told = camera.lines("-> 90 50 ");
        return !told.isEmpty() && !told.last().contains("pan 0.0,") && told.last().contains("tilt 0.0 ");
    };
    QTRY_VERIFY(panIsRight());

    controller.send("81 01 06 04 ff");
    QTRY_COMPARE(camera.lines("-> 90 51 FF").size(), 2);
    controller.send("81 09 06 12 ff");
    QTRY_VERIFY(camera.lines().constLast().endsWith("pan 0.0, tilt 0.0 degrees"));
}

void VantrelCameraTest::refusesWhileBusyWhenStrict()
{
    CameraProgram camera({"--strict"});
    Controller controller(camera.path());
    controller.send(driveUp);
    controller.send("81 01 06 04 ff");
    QTRY_COMPARE(controller.received(), QByteArray("90 41 ff 90 51 ff 90 61 41 ff"));
}

void VantrelCameraTest::linkLeadsToTheCamera()
{
    const QTemporaryDir folder;
    const QString link = folder.filePath("camera");
    CameraProgram camera({"--link", link});
    QTRY_COMPARE(camera.lines().mid(1), QStringList({"Link at " + link, networkChangeLine}));
    QCOMPARE(QFileInfo(link).symLinkTarget(), camera.path());
    Controller controller(link);
    controller.send(driveUp);
    QTRY_COMPARE(controller.received(), QByteArray(ackAndCompletion));
}

void VantrelCameraTest::linkReplacesOneThatIsStale()
{
    const QTemporaryDir folder;
    const QString link = folder.filePath("camera");
    {
        CameraProgram camera({"--link", link});
        QTRY_COMPARE(camera.lines().size(), 3);
        camera.process.kill();
        QCOMPARE(camera.exitStatus(), -1);
    }
    QVERIFY2(QFileInfo(link).isSymLink(), "a killed camera leaves its link behind");

    CameraProgram camera({"--link", link});
    QTRY_COMPARE(camera.lines().size(), 3);
    QCOMPARE(QFileInfo(link).symLinkTarget(), camera.path());
    QCOMPARE(QDir(folder.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System),
             QStringList("camera"));
}

void VantrelCameraTest::linkReplacesNothingElse_data()
{
    QTest::addColumn<QString>("kind");

    QTest::newRow("file") << "file";
    QTest::newRow("folder") << "folder";
    QTest::newRow("link to a file") << "link";
    QTest::newRow("dangling link") << "dangling";
}

void VantrelCameraTest::linkReplacesNothingElse()
{
    QFETCH(QString, kind);
    const QTemporaryDir folder;
    QFile file(folder.filePath("file"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("kept") == 4);
    file.close();
    QVERIFY(QDir(folder.path()).mkdir("folder"));
    QVERIFY(QFile::link(file.fileName(), folder.filePath("link")));
    QVERIFY(QFile::link(folder.filePath("gone"), folder.filePath("dangling")));
    const QStringList before = QDir(folder.path()).entryList(QDir::AllEntries | QDir::System);

    CameraProgram camera({"--link", folder.filePath(kind)});
    QCOMPARE(camera.exitStatus(), 2);
    const QString complaint = QString::fromLocal8Bit(camera.process.readAllStandardError());
    QVERIFY2(complaint.contains(folder.filePath(kind)), qPrintable(complaint));
    QVERIFY(camera.lines().isEmpty());
    QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::System), before);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("kept"));
}

void VantrelCameraTest::linkGoesAwayAtTheEnd_data()
{
    QTest::addColumn<int>("signal");

    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void VantrelCameraTest::linkGoesAwayAtTheEnd()
{
    QFETCH(int, signal);
    const QTemporaryDir folder;
    const QString link = folder.filePath("camera");
    CameraProgram camera({"--link", link});
    QTRY_COMPARE(camera.lines().size(), 3);
    QCOMPARE(kill(static_cast<pid_t>(camera.process.processId()), signal), 0);
    QCOMPARE(camera.exitStatus(), 0);
    QVERIFY(!QFileInfo(link).isSymLink());
    QVERIFY(camera.process.readAllStandardError().isEmpty());
}

void VantrelCameraTest::linkGoesAwayWhenNobodyReadsTheOutput()
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

    Controller(link).send(driveUp);
    QVERIFY(camera.waitForFinished());
    QCOMPARE(camera.exitStatus(), QProcess::NormalExit);
    QCOMPARE(camera.exitCode(), 0);
    QVERIFY(!QFileInfo(link).isSymLink());
}

void VantrelCameraTest::linkOfAnotherCameraIsLeftAlone()
{
    const QTemporaryDir folder;
    const QString link = folder.filePath("camera");
    CameraProgram first({"--link", link});
    QTRY_COMPARE(first.lines().size(), 3);
    CameraProgram second({"--link", link});
    QTRY_COMPARE(second.lines().size(), 3);
    first.process.terminate();
    QCOMPARE(first.exitStatus(), 0);
    QCOMPARE(QFileInfo(link).symLinkTarget(), second.path());
}

void VantrelCameraTest::noRepliesIsSilent()
{
    CameraProgram camera({"--no-replies"});
    Controller controller(camera.path());
    controller.send(driveUp);
    QTRY_COMPARE(camera.lines().mid(2), QStringList({driveUpLine, ackLine, completionLine}));
    QVERIFY(controller.received().isEmpty());
}

void VantrelCameraTest::lateRepliesAreLate()
{
    CameraProgram camera({"--late", "400"});
    Controller controller(camera.path());
    QElapsedTimer clock;
    clock.start();
    controller.send(driveUp);
    QTRY_COMPARE(controller.received(), QByteArray(ackAndCompletion));
    QVERIFY(clock.elapsed() >= 400);
}

void VantrelCameraTest::splitRepliesComeByteByByte()
{
    CameraProgram camera({"--split"});
    Controller controller(camera.path());
    controller.send(driveUp);
    QTRY_COMPARE(controller.received(), QByteArray(ackAndCompletion));
    QTRY_COMPARE(camera.lines(">>"), QStringList({">> 90", ">> 41", ">> FF", ">> 90", ">> 51", ">> FF"}));
}

void VantrelCameraTest::repliesLeftUnreadAreGoneForTheNext()
{
    CameraProgram camera;
    {
        Controller first(camera.path());
        first.send(driveUp);
        QTRY_COMPARE(camera.lines("->").size(), 3);
    }
    Controller(camera.path()).send(driveUp);
    QTRY_COMPARE(camera.lines("->").size(), 5);
    QTest::qWait(100);
    Controller second(camera.path());
    second.send("81 09 04 00 ff");
    QTRY_COMPARE(camera.lines("->").size(), 6);
    QCOMPARE(second.received(), QByteArray("90 50 02 ff"));
}

void VantrelCameraTest::anUnfinishedFrameIsSaid()
{
    CameraProgram camera;
    Controller controller(camera.path());
    controller.send("81 01 06 04");
    QTRY_COMPARE(camera.lines("<-"), QStringList("<- 81 01 06 04  unfinished frame, forgotten"));
}

void VantrelCameraTest::hangsUpAndComesBackAtTheSameLink()
{
    const QTemporaryDir folder;
    const QString link = folder.filePath("camera");
    CameraProgram camera({"--link", link, "--hang-up-after", "1", "--come-back-after", "0.5"});
    QTRY_COMPARE(camera.lines().size(), 3);
    {
        Controller controller(link);
        QVERIFY(!controller.isHungUp());
        QTRY_VERIFY(controller.isHungUp());
        QVERIFY2(!QFileInfo(link).isSymLink(), "a pulled adapter has no device");
    }
    const QString newPath = camera.path(2);
    QTRY_COMPARE(camera.lines().mid(3),
                 QStringList({"Hung up", "Camera at " + newPath, "Link at " + link, networkChangeLine}));
    QCOMPARE(QFileInfo(link).symLinkTarget(), newPath);
    Controller controller(link);
    controller.send(driveUp);
    QTRY_COMPARE(controller.received(), QByteArray(ackAndCompletion));
}

void VantrelCameraTest::theCameraKeepsItsPositionWhileUnplugged()
{
    CameraProgram camera({"--hang-up-after", "1", "--come-back-after", "0.1"});
    {
        Controller controller(camera.path());
        controller.send(QByteArray(driveUp) + "81 01 06 01 05 05 03 03 ff");
        QTRY_COMPARE(camera.lines("->").size(), 5);
    }
    Controller controller(camera.path(2));
    controller.send("81 09 06 12 ff");
    // It drove for the time of one video frame, 17 ms: three steps up.
    QTRY_COMPARE(controller.received(), QByteArray("90 50 00 00 00 00 00 00 00 03 ff"));
}

void VantrelCameraTest::endsWhenItCannotComeBack()
{
    const QTemporaryDir folder;
    const QString link = folder.filePath("camera");
    CameraProgram camera({"--link", link, "--hang-up-after", "0.2", "--come-back-after", "0.5"});
    QTRY_VERIFY(camera.lines().contains("Hung up"));
    QVERIFY(QDir(folder.path()).mkdir("camera"));
    QCOMPARE(camera.exitStatus(), 1);
    QCOMPARE(QString::fromLocal8Bit(camera.process.readAllStandardError()),
             QString("vantrel-camera: %1 exists and is not a link\n").arg(link));
}

void VantrelCameraTest::answersTheSameWithAView()
{
    CameraProgram camera({"--view"});
    Controller controller(camera.path());
    controller.send(driveUp);
    QTRY_COMPARE(controller.received(), QByteArray(ackAndCompletion));
    QTRY_COMPARE(camera.lines().mid(2), QStringList({driveUpLine, ackLine, completionLine}));
}

void VantrelCameraTest::helpAndVersionAreTold_data()
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

void VantrelCameraTest::helpAndVersionAreTold()
{
    QFETCH(QString, option);
    QFETCH(QString, told);
    CameraProgram camera({option});
    QCOMPARE(camera.exitStatus(), 0);
    QVERIFY2(camera.lines().join('\n').contains(told), qPrintable(camera.lines().join('\n')));
}

void VantrelCameraTest::helpListsEveryFrame()
{
    CameraProgram camera({"--help"});
    QCOMPARE(camera.exitStatus(), 0);
    const QStringList lines = camera.lines();
    for (const ViscaCamera::KnownFrame& known : ViscaCamera::knownFrames()) {
        QVERIFY2(std::any_of(lines.begin(), lines.end(),
                             [&](const QString& line) {
                                 return line.startsWith("  " + known.name + ' ') &&
                                        line.contains(known.range) && line.endsWith("  " + known.frame);
                             }),
                 qPrintable(known.name));
    }
}

void VantrelCameraTest::aBadOptionIsAClearErrorWithStatus2_data()
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
    row("no longer there", {"--noise"}, "Unknown option 'noise'");
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
    row("link nowhere", {"--link", "/no/such/folder/camera"}, "cannot make the link /no/such/folder/camera");
}

void VantrelCameraTest::aBadOptionIsAClearErrorWithStatus2()
{
    QFETCH(QStringList, options);
    QFETCH(QString, complaint);
    CameraProgram camera(options);
    QCOMPARE(camera.exitStatus(), 2);
    const QString told = QString::fromLocal8Bit(camera.process.readAllStandardError());
    QVERIFY2(told.startsWith("vantrel-camera: " + complaint), qPrintable(told));
    QCOMPARE(told.count('\n'), 1);
    QVERIFY(camera.lines().isEmpty());
}

QTEST_GUILESS_MAIN(VantrelCameraTest)
#include "VantrelCameraTest.moc"
