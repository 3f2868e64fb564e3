// vantrel-camera --replay, as whoever has a camera at a port uses it. The camera here is the simulated one.

#include "support/CameraEnd.h"
#include "support/CameraProgram.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace {

const char* const homeAnswered = "> 81 01 06 04 FF\n"
                                 "< 90 41 FF\n"
                                 "< 90 51 FF\n";

// What a run of the program came to.
struct Outcome
{
    int status;
    QStringList lines;
    QString complaint;
};

// Whoever replays dialogues, in a folder of their own.
class Desk
{
public:
    Desk() { QVERIFY(folder.isValid()); }

    QString write(const QByteArray& dialogue) const
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(dialogue) != dialogue.size())
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }

    Outcome run(const QStringList& arguments) const
    {
        CameraProgram program(arguments);
        const int status = program.exitStatus();
        return {status, program.lines(), QString::fromLocal8Bit(program.process.readAllStandardError())};
    }

    // Replays against a simulated camera that is started with these options.
    Outcome replay(const QByteArray& dialogue, const QStringList& cameraOptions = {}) const
    {
        CameraProgram camera(cameraOptions);
        return run({"--replay", write(dialogue), camera.path()});
    }

private:
    const QTemporaryDir folder;

public:
    const QString path = folder.filePath("dialogue.txt");
};

// A line of the report without the times.
QString withoutTime(const QString& line)
{
    static const QRegularExpression time(" +\\d+ ms");
    return QString(line).remove(time).simplified();
}

QStringList withoutTimes(const QStringList& lines)
{
    QStringList plain;
    for (const QString& line : lines)
        plain += withoutTime(line);
    return plain;
}

} // namespace

class CameraReplayTest : public QObject
{
    Q_OBJECT

private slots:
    void anEqualCameraEndsWithStatus0();
    void aCameraThatDiffersEndsWithStatus1();
    void theReportTellsWhenEachAnswerCame();
    void theReportTellsWhatTheCameraHasToBeLike();
    void anyDigitMayStandInAnAnswer();
    void answersMayComeInPieces();
    void anAnswerThatNeverComesIsADifference();
    void anAnswerThatComesTooEarlyIsADifference();
    void anAnswerThatNobodyExpectsIsADifference_data();
    void anAnswerThatNobodyExpectsIsADifference();
    void halfAnAnswerAtTheEndIsADifference();
    void theControllerWaitsBeforeItSends();
    void whatTheLineHeldBeforeIsForgotten();
    void remarksAreInTheReportAndGapsMeanNothing();

    void aBadDialogueIsAClearErrorWithItsLine_data();
    void aBadDialogueIsAClearErrorWithItsLine();
    void aMissingFileIsAClearError();
    void aMissingPortIsAClearError();
    void aPortThatIsLostEndsTheReplay();
    void aCameraThatNeverAnswersIsToldAsSuchOnce();
    void oneExtraAnswerIsOneDifference();
    void aMissingAnswerIsOneDifference();
    void theNextFrameWaitsUntilTheLineIsQuiet();
    void anySocketWillDoUnlessTheDialogueIsAboutSockets();
    void noSocketButTheTwoWillDo();
    void theEndStopsWhatIsInMotion();
    void whatStandsStillIsNotStopped();
    void aDifferenceStopsWhatIsInMotion();
    void anInterruptStopsWhatIsInMotion();
    void whatTheCameraKeepsIsChangedOnlyWhenAllowed();
    void anInstalledDialogueIsFoundByItsName();
    void aBadOptionIsAClearErrorWithStatus2_data();
    void aBadOptionIsAClearErrorWithStatus2();
    void thePortIsSetUpAsAsked_data();
    void thePortIsSetUpAsAsked();
};

void CameraReplayTest::anEqualCameraEndsWithStatus0()
{
    const Outcome outcome = Desk().replay(homeAnswered);
    QCOMPARE(withoutTimes(outcome.lines),
             QStringList({"Dialogue dialogue", "expected received", "> 81 01 06 04 FF", "< 90 41 FF 90 41 FF",
                          "< 90 51 FF 90 51 FF", "as expected"}));
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.complaint.isEmpty());
}

void CameraReplayTest::aCameraThatDiffersEndsWithStatus1()
{
    const Outcome outcome = Desk().replay("> 81 01 06 04 FF\n"
                                          "< 90 41 FF\n"
                                          "< 90 51 FF within 200 ms\n",
                                          {"--standby"});
    QCOMPARE(withoutTimes(outcome.lines),
             QStringList({"Dialogue dialogue", "expected received", "> 81 01 06 04 FF",
                          "< 90 41 FF 90 61 41 FF differs", "< 90 51 FF nothing differs", "differences: 2"}));
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.complaint.isEmpty());
}

void CameraReplayTest::theReportTellsWhenEachAnswerCame()
{
    const Outcome outcome = Desk().replay("> 81 01 06 04 FF\n"
                                          "< 90 41 FF\n"
                                          "< 90 51 FF\n",
                                          {"--late", "400"});
    QCOMPARE(outcome.status, 0);
    static const QRegularExpression time(" (\\d+) ms$");
    const int acknowledged = time.match(outcome.lines.value(3)).captured(1).toInt();
    const int completed = time.match(outcome.lines.value(4)).captured(1).toInt();
    QVERIFY2(acknowledged >= 400, qPrintable(outcome.lines.join('\n')));
    QVERIFY2(completed >= acknowledged, qPrintable(outcome.lines.join('\n')));
}

void CameraReplayTest::theReportTellsWhatTheCameraHasToBeLike()
{
    const Outcome outcome = Desk().replay("--strict --presets 6\n> 81 01 04 3F 01 06 FF\n< 90 60 02 FF\n",
                                          {"--strict", "--presets", "6"});
    QCOMPARE(outcome.lines.value(1), QString("for a camera like vantrel-camera --strict --presets 6"));
    QCOMPARE(outcome.status, 0);
}

void CameraReplayTest::anyDigitMayStandInAnAnswer()
{
    QCOMPARE(Desk().replay("> 81 01 06 04 FF\n< 90 4? FF\n< 90 5? FF\n").status, 0);
    QCOMPARE(Desk().replay("> 81 01 06 04 FF\n< 90 5? FF\n< 90 5? FF\n").status, 1);
    QCOMPARE(Desk().replay("> 81 09 00 02 FF\n< 90 50 ?? ?? ?? ?? ?? ?? 02 FF\n").status, 0);
    QCOMPARE(Desk().replay("> 81 09 00 02 FF\n< 90 50 ?? ?? ?? ?? ?? 02 FF\n").status, 1);
}

void CameraReplayTest::answersMayComeInPieces()
{
    QCOMPARE(Desk().replay(homeAnswered, {"--split"}).status, 0);
}

void CameraReplayTest::anAnswerThatNeverComesIsADifference()
{
    const Outcome outcome =
        Desk().replay("> 81 01 06 04 FF\n< 90 41 FF\n< 90 51 FF\n< 90 5? FF within 200 ms\n"
                      "> 81 09 04 00 FF\n< 90 50 02 FF\n");
    QCOMPARE(outcome.status, 1);
    QCOMPARE(withoutTimes(outcome.lines).mid(3),
             QStringList({"< 90 41 FF 90 41 FF", "< 90 51 FF 90 51 FF", "< 90 5? FF nothing differs",
                          "> 81 09 04 00 FF", "< 90 50 02 FF 90 50 02 FF", "differences: 1"}));
}

void CameraReplayTest::anAnswerThatComesTooEarlyIsADifference()
{
    const Outcome outcome =
        Desk().replay("> 81 01 06 04 FF\n< 90 41 FF\n< 90 51 FF after 60 s within 70 s\n");
    QCOMPARE(outcome.status, 1);
    QCOMPARE(withoutTime(outcome.lines.value(4)), QString("< 90 51 FF 90 51 FF too early"));
}

void CameraReplayTest::anAnswerThatNobodyExpectsIsADifference_data()
{
    QTest::addColumn<QByteArray>("dialogue");

    QTest::newRow("before the next frame")
        << QByteArray("> 81 01 06 04 FF\n< 90 41 FF\n> 82 01 06 04 FF after 500 ms\n");
    QTest::newRow("in a silence") << QByteArray("> 81 01 06 04 FF\n< 90 41 FF\n< nothing within 500 ms\n");
    QTest::newRow("at the end") << QByteArray("> 81 01 06 04 FF\n< 90 41 FF\n");
}

void CameraReplayTest::anAnswerThatNobodyExpectsIsADifference()
{
    QFETCH(QByteArray, dialogue);
    const Outcome outcome = Desk().replay(dialogue);
    QCOMPARE(outcome.status, 1);
    QVERIFY2(withoutTimes(outcome.lines).contains("< nothing 90 51 FF differs"),
             qPrintable(outcome.lines.join('\n')));
    QCOMPARE(outcome.lines.constLast(), QString("differences: 1"));
}

void CameraReplayTest::halfAnAnswerAtTheEndIsADifference()
{
    const Desk desk;
    CameraEnd camera;
    CameraProgram replay({"--replay", desk.write("> 81 01 06 04 FF\n< 90 41 FF\n"), camera.portName()});
    QCOMPARE(camera.nextFrame(), QByteArray("81 01 06 04 ff"));
    camera.reply("90 41 ff 90 51");
    QCOMPARE(replay.exitStatus(), 1);
    QCOMPARE(withoutTime(replay.lines().value(4)), QString("< nothing 90 51 differs"));
}

void CameraReplayTest::theControllerWaitsBeforeItSends()
{
    QElapsedTimer clock;
    clock.start();
    const Outcome outcome = Desk().replay("> 81 01 06 04 FF\n< 90 41 FF\n< 90 51 FF\n"
                                          "> 81 01 06 04 FF after 1 s\n< 90 41 FF\n< 90 51 FF\n");
    QCOMPARE(outcome.status, 0);
    QVERIFY(clock.elapsed() >= 1000);
}

void CameraReplayTest::whatTheLineHeldBeforeIsForgotten()
{
    const Desk desk;
    CameraProgram camera;
    QCOMPARE(desk.run({"--replay", desk.write("> 81 09 04 00 FF\n"), camera.path()}).status, 1);
    QFile line(camera.path());
    QVERIFY(line.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    line.write(QByteArray::fromHex("81 09 04 00 ff"));
    line.close();
    QTRY_COMPARE(camera.lines("->").size(), 3);
    QCOMPARE(desk.run({"--replay", desk.write(homeAnswered), camera.path()}).status, 0);
}

void CameraReplayTest::remarksAreInTheReportAndGapsMeanNothing()
{
    const Outcome outcome = Desk().replay("# Home\n"
                                          "\n"
                                          "   \t\n"
                                          "--presets 6   # a small camera\n"
                                          "  >81 01 06 04 ff# sent\r\n"
                                          "<  90   41 ff   within  2  s   after 0 ms  # and answered\n"
                                          "< 90 51 FF");
    QCOMPARE(outcome.status, 0);
    QCOMPARE(withoutTimes(outcome.lines),
             QStringList({"Dialogue dialogue", "# Home", "# a small camera",
                          "for a camera like vantrel-camera --presets 6", "expected received",
                          "> 81 01 06 04 FF # sent", "< 90 41 FF 90 41 FF # and answered",
                          "< 90 51 FF 90 51 FF", "as expected"}));
}

void CameraReplayTest::aBadDialogueIsAClearErrorWithItsLine_data()
{
    QTest::addColumn<QByteArray>("dialogue");
    QTest::addColumn<QString>("complaint");

    const auto row = [](const char* name, const QByteArray& dialogue, const QString& complaint) {
        QTest::newRow(name) << dialogue << complaint;
    };
    const QString unknown("this is no frame, answer or line of a head: ");
    const QString sender("a controller sends bytes, at one time");
    const QString silence("nothing is expected within a time");
    row("empty", "", ": no frame is sent");
    row("only comments", "# nothing\n", ": no frame is sent");
    row("only options", "--strict\n", ": no frame is sent");
    row("words", "# first\n\nHome, please\n", ":3: " + unknown + "Home, please");
    row("half a byte", "> 81 0\n", ":1: " + unknown + "> 81 0");
    row("no byte", ">\n", ":1: " + unknown + ">");
    row("no hexadecimal digit", "> 81 0G FF\n", ":1: " + unknown + "> 81 0G FF");
    row("joined bytes", "> 8101 FF\n", ":1: " + unknown + "> 8101 FF");
    row("time without unit", "> 81 FF after 3\n", ":1: " + unknown + "> 81 FF after 3");
    row("time in minutes", "> 81 FF after 3 min\n", ":1: " + unknown + "> 81 FF after 3 min");
    row("time too long", "> 81 FF after 1000000 ms\n", ":1: " + unknown + "> 81 FF after 1000000 ms");
    row("sent with any digit", "> 81 ?? FF\n", ":1: " + sender);
    row("nothing sent", "> nothing\n", ":1: " + sender);
    row("sent within a time", "> 81 FF within 1 s\n", ":1: " + sender);
    row("silence without end", "> 81 FF\n< nothing\n", ":2: " + silence);
    row("silence after a time", "> 81 FF\n< nothing after 1 s\n", ":2: " + silence);
    row("answer first", "< 90 41 FF\n> 81 FF\n", ":1: the controller speaks first");
    row("option too late", "> 81 FF\n--strict\n",
        ":2: this is no frame or answer, and the head stands before the first frame: --strict");
    row("unknown option", "--strikt\n> 81 FF\n", ":1: " + unknown + "--strikt");
    row("option of the program", "--late 5\n> 81 FF\n", ":1: " + unknown + "--late 5");
    row("option without its number", "--presets\n> 81 FF\n", ":1: " + unknown + "--presets");
}

void CameraReplayTest::aBadDialogueIsAClearErrorWithItsLine()
{
    QFETCH(QByteArray, dialogue);
    QFETCH(QString, complaint);
    const Desk desk;
    const Outcome outcome = desk.run({"--replay", desk.write(dialogue), "/no/such/port"});
    QCOMPARE(outcome.complaint, "vantrel-camera: " + desk.path + complaint + '\n');
    QCOMPARE(outcome.status, 2);
    QVERIFY(outcome.lines.isEmpty());
}

void CameraReplayTest::aMissingFileIsAClearError()
{
    const Outcome outcome = Desk().run({"--replay", "/no/such/file", "/no/such/port"});
    QVERIFY(outcome.complaint.startsWith(
        "vantrel-camera: there is no dialogue /no/such/file, neither a file nor a name in /"));
    QCOMPARE(outcome.status, 2);
}

void CameraReplayTest::aMissingPortIsAClearError()
{
    const Desk desk;
    const Outcome outcome = desk.run({"--replay", desk.write(homeAnswered), "/no/such/port"});
    QCOMPARE(outcome.complaint,
             QString("vantrel-camera: cannot open /no/such/port: No such file or directory\n"));
    QCOMPARE(outcome.status, 2);
    QVERIFY(outcome.lines.isEmpty());
}

void CameraReplayTest::aPortThatIsLostEndsTheReplay()
{
    const Desk desk;
    CameraEnd camera;
    const QString file = desk.write("> 81 01 06 04 FF\n< 90 41 FF within 2 s\n");
    CameraProgram replay({"--replay", file, camera.portName()});
    QCOMPARE(camera.nextFrame(), QByteArray("81 01 06 04 ff"));
    camera.pull();

    QCOMPARE(replay.exitStatus(), 2);
    const QString complaint = QString::fromLocal8Bit(replay.process.readAllStandardError());
    QVERIFY2(complaint.startsWith("vantrel-camera: the port is lost: "), qPrintable(complaint));
}

void CameraReplayTest::aCameraThatNeverAnswersIsToldAsSuchOnce()
{
    const Desk desk;
    CameraProgram camera({"--address", "2"});
    const QByteArray asked = "> 81 09 04 00 FF\n< 90 50 02 FF within 100 ms\n";
    const Outcome outcome =
        desk.run({"--replay", desk.write(asked.repeated(9)), camera.path(), "--baud", "38400"});
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.complaint, QString("vantrel-camera: no answer at %1: look at the port, the rate (38400 "
                                        "baud, --baud sets another) and "
                                        "the camera's address\n")
                                    .arg(camera.path()));
    QTRY_COMPARE(camera.lines("<-").size(), 2);
    QVERIFY(!outcome.lines.join('\n').contains("differences"));
}

void CameraReplayTest::oneExtraAnswerIsOneDifference()
{
    const Desk desk;
    CameraEnd camera;
    CameraProgram replay({"--replay",
                          desk.write("> 81 01 04 00 02 FF\n< 90 41 FF\n< 90 51 FF\n"
                                     "> 81 09 04 00 FF\n< 90 50 02 FF\n"),
                          camera.portName()});
    QCOMPARE(camera.nextFrame(), QByteArray("81 01 04 00 02 ff"));
    camera.reply("90 38 ff 90 41 ff 90 51 ff");
    QCOMPARE(camera.nextFrame(), QByteArray("81 09 04 00 ff"));
    camera.reply("90 50 02 ff");
    QCOMPARE(replay.exitStatus(), 1);
    QCOMPARE(withoutTimes(replay.lines()).mid(2),
             QStringList({"> 81 01 04 00 02 FF", "< nothing 90 38 FF differs", "< 90 41 FF 90 41 FF",
                          "< 90 51 FF 90 51 FF", "> 81 09 04 00 FF", "< 90 50 02 FF 90 50 02 FF",
                          "differences: 1"}));
}

void CameraReplayTest::aMissingAnswerIsOneDifference()
{
    const Desk desk;
    CameraEnd camera;
    CameraProgram replay({"--replay", desk.write(homeAnswered), camera.portName()});
    QCOMPARE(camera.nextFrame(), QByteArray("81 01 06 04 ff"));
    camera.reply("90 51 ff");
    QCOMPARE(replay.exitStatus(), 1);
    QCOMPARE(withoutTimes(replay.lines()).mid(3),
             QStringList({"< 90 41 FF nothing differs", "< 90 51 FF 90 51 FF", "differences: 1"}));
}

void CameraReplayTest::theNextFrameWaitsUntilTheLineIsQuiet()
{
    const Desk desk;
    CameraEnd camera;
    const QByteArray asked = "> 81 09 04 00 FF\n< 90 50 02 FF\n";
    CameraProgram replay({"--replay", desk.write(asked + asked), camera.portName()});
    QCOMPARE(camera.nextFrame(), QByteArray("81 09 04 00 ff"));
    camera.reply("90 50 02 ff");
    for (int more = 0; more < 10; ++more) {
        QTest::qWait(20);
        QVERIFY(camera.pending().isEmpty());
        camera.reply("90 5");
    }
    QCOMPARE(camera.nextFrame(), QByteArray("81 09 04 00 ff"));
}

void CameraReplayTest::anySocketWillDoUnlessTheDialogueIsAboutSockets()
{
    for (const bool matters : {false, true}) {
        const Desk desk;
        CameraEnd camera;
        CameraProgram replay({"--replay",
                              desk.write((matters ? "sockets matter\n" : "") + QByteArray(homeAnswered)),
                              camera.portName()});
        QCOMPARE(camera.nextFrame(), QByteArray("81 01 06 04 ff"));
        camera.reply("90 42 ff 90 52 ff");
        QCOMPARE(replay.exitStatus(), matters ? 1 : 0);
    }
}

void CameraReplayTest::noSocketButTheTwoWillDo()
{
    const Desk desk;
    CameraEnd camera;
    CameraProgram replay({"--replay", desk.write(homeAnswered), camera.portName()});
    QCOMPARE(camera.nextFrame(), QByteArray("81 01 06 04 ff"));
    camera.reply("90 43 ff 90 53 ff");
    QCOMPARE(replay.exitStatus(), 1);
}

void CameraReplayTest::theEndStopsWhatIsInMotion()
{
    const Desk desk;
    CameraProgram camera;
    const Outcome outcome = desk.run({"--replay",
                                      desk.write("> 81 01 06 01 05 05 03 01 FF\n< 90 41 FF\n< 90 51 FF\n"
                                                 "> 81 01 04 07 22 FF\n< 90 41 FF\n< 90 51 FF\n"),
                                      camera.path()});
    QCOMPARE(outcome.status, 0);
    QTRY_COMPARE(camera.lines("<- 81 01 06 01 01 01 03 03 FF").size(), 1);
    QTRY_COMPARE(camera.lines("<- 81 01 04 07 00 FF").size(), 1);
    QTRY_COMPARE(camera.lines("<-").size(), 4);
    QVERIFY(outcome.lines.contains("> 81 01 06 01 01 01 03 03 FF  # stops what moves"));
}

void CameraReplayTest::whatStandsStillIsNotStopped()
{
    const Desk desk;
    CameraProgram camera;
    const QByteArray dialogue("> 81 01 06 01 05 05 03 01 FF\n< 90 41 FF\n< 90 51 FF\n"
                              "> 81 01 06 01 05 05 03 03 FF\n< 90 41 FF\n< 90 51 FF\n");
    QCOMPARE(desk.run({"--replay", desk.write(dialogue), camera.path()}).status, 0);
    QTRY_COMPARE(camera.lines("->").size(), 5);
    QCOMPARE(camera.lines("<-").size(), 2);
}

void CameraReplayTest::aDifferenceStopsWhatIsInMotion()
{
    const Desk desk;
    CameraProgram camera;
    const Outcome outcome = desk.run({"--replay",
                                      desk.write("> 81 01 06 01 05 05 03 01 FF\n< 90 41 FF\n< 90 51 FF\n"
                                                 "> 81 09 04 00 FF\n< 90 50 03 FF within 100 ms\n"
                                                 "> 81 09 04 00 FF\n< 90 50 02 FF\n"),
                                      camera.path()});
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.lines.constLast(), QString("differences: 1"));
    QTRY_COMPARE(camera.lines("<-").size(), 4);
    QCOMPARE(camera.lines("<-").value(2).left(29), QString("<- 81 01 06 01 01 01 03 03 FF"));
}

void CameraReplayTest::anInterruptStopsWhatIsInMotion()
{
    const Desk desk;
    CameraProgram camera;
    CameraProgram replay({"--replay",
                          desk.write("> 81 01 06 01 18 01 02 03 FF\n< 90 41 FF\n< 90 51 FF\n"
                                     "> 81 01 06 04 FF after 500 ms\n< 90 41 FF\n< 90 52 FF within 60 s\n"),
                          camera.path()});
    QTRY_COMPARE(camera.lines("-> 90 41 FF").size(), 2);
    QTest::qWait(50);
    QCOMPARE(kill(static_cast<pid_t>(replay.process.processId()), SIGINT), 0);
    QCOMPARE(replay.exitStatus(), 1);
    QCOMPARE(replay.process.readAllStandardError(), QByteArray("vantrel-camera: interrupted\n"));
    QTRY_COMPARE(camera.lines("<- 81 21 FF").size(), 1);
    QTRY_COMPARE(camera.lines("-> 90 61 04 FF").size(), 1);
}

void CameraReplayTest::whatTheCameraKeepsIsChangedOnlyWhenAllowed()
{
    const Desk desk;
    CameraProgram camera;
    const QString file = desk.write("changes preset 5\n> 81 01 04 3F 00 05 FF\n< 90 41 FF\n< 90 51 FF\n");
    const Outcome outcome = desk.run({"--replay", file, camera.path()});
    QCOMPARE(outcome.status, 2);
    QCOMPARE(outcome.complaint, QString("vantrel-camera: the dialogue dialogue changes preset 5; "
                                        "--allow-changes holds it all the same\n"));
    QVERIFY(outcome.lines.isEmpty());
    QVERIFY(camera.lines("<-").isEmpty());

    QCOMPARE(desk.run({"--replay", file, "--allow-changes", camera.path()}).status, 0);
}

void CameraReplayTest::anInstalledDialogueIsFoundByItsName()
{
    const Desk desk;
    CameraProgram camera;
    const Outcome outcome = desk.run({"--replay", "home", camera.path()});
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.lines.constFirst(), QString("Dialogue home"));
    QVERIFY(desk.run({"--replay", "hame", camera.path()}).complaint.contains("there is no dialogue hame"));
}

void CameraReplayTest::aBadOptionIsAClearErrorWithStatus2_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("complaint");

    const auto row = [](const char* name, const QStringList& options, const QString& complaint) {
        QTest::newRow(name) << options << complaint;
    };
    row("no port", {"--replay", "file"}, "--replay takes one port, such as /dev/ttyUSB0");
    row("two ports", {"--replay", "file", "one", "two"}, "--replay takes one port");
    row("a camera's option", {"--replay", "file", "--strict", "port"},
        "--strict is for the simulated camera, which --replay does without");
    row("a view", {"--replay", "file", "--view", "port"}, "--view is for the simulated camera");
    row("no file", {"--replay"}, "Missing value after '--replay'");
    row("baud not a number", {"--replay", "file", "--baud", "fast", "port"},
        "--baud takes a whole number from 1 to 4000000, not \"fast\"");
    row("baud 0", {"--replay", "file", "--baud", "0", "port"}, "--baud takes");
    row("baud alone", {"--baud", "9600"}, "--baud needs --replay");
    row("changes alone", {"--allow-changes"}, "--allow-changes needs --replay");
}

void CameraReplayTest::aBadOptionIsAClearErrorWithStatus2()
{
    QFETCH(QStringList, options);
    QFETCH(QString, complaint);
    const Outcome outcome = Desk().run(options);
    QCOMPARE(outcome.status, 2);
    QVERIFY2(outcome.complaint.startsWith("vantrel-camera: " + complaint), qPrintable(outcome.complaint));
    QCOMPARE(outcome.complaint.count('\n'), 1);
    QVERIFY(outcome.lines.isEmpty());
}

void CameraReplayTest::thePortIsSetUpAsAsked_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<unsigned>("speed");

    QTest::newRow("usual") << QStringList() << unsigned(B9600);
    QTest::newRow("38400") << QStringList({"--baud", "38400"}) << unsigned(B38400);
}

void CameraReplayTest::thePortIsSetUpAsAsked()
{
    QFETCH(QStringList, options);
    QFETCH(unsigned, speed);
    const Desk desk;
    CameraEnd camera;
    const QString file = desk.write("> 81 01 06 04 FF\n< 90 41 FF within 60 s\n");
    CameraProgram replay(QStringList({"--replay", file, camera.portName()}) + options);
    QCOMPARE(camera.nextFrame(), QByteArray("81 01 06 04 ff"));

    termios settings{};
    const int line = open(QFile::encodeName(camera.portName()).constData(), O_RDWR | O_NOCTTY);
    QCOMPARE(tcgetattr(line, &settings), 0);
    close(line);
    QCOMPARE(cfgetospeed(&settings), speed);
    QCOMPARE(settings.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS), tcflag_t(CS8));
    QCOMPARE(settings.c_iflag & (IXON | IXOFF), tcflag_t(0));
}

QTEST_GUILESS_MAIN(CameraReplayTest)
#include "CameraReplayTest.moc"
