// vantrel-camera --replay with a camera at a serial port. The test gives the camera's answers.

#include "support/CameraEnd.h"
#include "support/CameraProgram.h"
#include "support/Frames.h"
#include "support/PlainClient.h"
#include "support/PrivateProfile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

#include <termios.h>

namespace {

const char* const homeAnswered = "> 81 01 06 04 FF\n"
                                 "< 90 41 FF within 1 s\n"
                                 "< 90 51 FF within 1 s\n";
const char* const ackAndCompletion = "90 41 ff 90 51 ff";

// A dialogue that the program replays, and the camera at the other end of the line.
class DialogueReplay
{
public:
    explicit DialogueReplay(const QByteArray& dialogue, const QStringList& options = {})
        : path(write(dialogue))
        , program(QStringList({"--replay", path, camera.portName()}) + options)
    {
    }

    // Answers each frame until the replay has ended; returns its exit status.
    int answer(QList<QByteArray> answers)
    {
        const auto answerAll = [&] {
            while (camera.pending().contains("ff")) {
                frames += "> " + camera.nextFrame().toUpper();
                if (!answers.isEmpty())
                    camera.reply(answers.takeFirst());
            }
            return program.process.state() == QProcess::NotRunning;
        };
        static_cast<void>(QTest::qWaitFor(answerAll, 10000));
        answerAll();
        return program.exitStatus();
    }

    // The lines of the report without the times.
    QStringList report()
    {
        static const QRegularExpression time(" +\\d+ ms");
        QStringList lines = program.lines();
        for (QString& line : lines)
            line = line.remove(time).simplified();
        return lines;
    }

private:
    QString write(const QByteArray& dialogue) const
    {
        QString file = folder.filePath("dialogue.txt");
        writeFile(file, dialogue);
        return file;
    }

    const QTemporaryDir folder;

public:
    const QString path;
    CameraEnd camera;
    CameraProgram program;
    QStringList frames;
};

} // namespace

class CameraReplayTest : public QObject
{
    Q_OBJECT

private slots:

    void theReportTellsWhatTheCameraAnswered_data()
    {
        QTest::addColumn<QByteArray>("dialogue");
        QTest::addColumn<QList<QByteArray>>("answers");
        QTest::addColumn<QStringList>("report");

        const auto row = [](const char* name, const QByteArray& dialogue, const QList<QByteArray>& answers,
                            const QStringList& report) {
            QTest::newRow(name) << dialogue << answers << report;
        };
        const QString home("> 81 01 06 04 FF");
        const QString ack("< 90 41 FF 90 41 FF");
        const QString completion("< 90 51 FF 90 51 FF");
        row("an equal camera", homeAnswered, {ackAndCompletion}, {home, ack, completion, "as expected"});
        row("a camera that differs", homeAnswered, {"90 61 41 ff"},
            {home, "< 90 41 FF 90 61 41 FF differs", "< 90 51 FF nothing differs", "differences: 2"});
        row("another socket", homeAnswered, {"90 42 ff 90 52 ff"},
            {home, "< 90 41 FF 90 42 FF", "< 90 51 FF 90 52 FF", "as expected"});
        row("another socket where it matters", "sockets matter\n> 81 01 06 04 FF\n< 90 51 FF within 500 ms\n",
            {"90 52 ff"}, {home, "< 90 51 FF 90 52 FF differs", "differences: 1"});
        row("a third socket", "> 81 01 06 04 FF\n< 90 51 FF within 500 ms\n", {"90 53 ff"},
            {home, "< 90 51 FF 90 53 FF differs", "differences: 1"});
        row("any digit", "> 81 01 06 04 FF\n< 90 4? FF\n< ?0 5? FF\n", {ackAndCompletion},
            {home, "< 90 4? FF 90 41 FF", "< ?0 5? FF 90 51 FF", "as expected"});
        row("a digit too many", "> 81 09 00 02 FF\n< 90 50 ?? ?? FF within 500 ms\n", {"90 50 01 02 03 ff"},
            {"> 81 09 00 02 FF", "< 90 50 ?? ?? FF 90 50 01 02 03 FF differs", "differences: 1"});
        row("an answer that never comes",
            "> 81 01 06 04 FF\n< 90 51 FF\n< 90 5? FF within 100 ms\n> 81 09 04 00 FF\n< 90 50 02 FF\n",
            {"90 51 ff", "90 50 02 ff"},
            {home, completion, "< 90 5? FF nothing differs", "> 81 09 04 00 FF", "< 90 50 02 FF 90 50 02 FF",
             "differences: 1"});
        row("a missing answer among others", "> 81 01 06 04 FF\n< 90 41 FF within 100 ms\n< 90 51 FF\n",
            {"90 51 ff"}, {home, "< 90 41 FF nothing differs", completion, "differences: 1"});
        row("an answer too many among others", homeAnswered, {"90 38 ff 90 41 ff 90 51 ff"},
            {home, "< nothing 90 38 FF differs", ack, completion, "differences: 1"});
        row("an answer too many before the next frame", "> 81 01 06 04 FF\n> 82 01 06 04 FF after 500 ms\n",
            {"90 51 ff"}, {home, "< nothing 90 51 FF differs", "> 82 01 06 04 FF", "differences: 1"});
        row("an answer in a silence", "> 81 01 06 04 FF\n< nothing within 200 ms\n", {"90 51 ff"},
            {home, "< nothing 90 51 FF differs", "differences: 1"});
        row("an answer too many at the end", "> 81 01 06 04 FF\n< 90 41 FF\n", {ackAndCompletion},
            {home, ack, "< nothing 90 51 FF differs", "differences: 1"});
        row("half an answer at the end", "> 81 01 06 04 FF\n< 90 51 FF\n", {"90 51 ff 90 41"},
            {home, completion, "< nothing 90 41 differs", "differences: 1"});
        row("an answer too early", "> 81 01 06 04 FF\n< 90 51 FF after 60 s within 70 s\n", {"90 51 ff"},
            {home, completion + " too early", "differences: 1"});
        row("remarks and gaps",
            "# Home\n\n   \t\n--presets 6   # a small camera\nwithout --strict\n  >81 01 06 04 ff# sent\r\n"
            "<  90   41 ff   within  2  s   after 0 ms  # and answered\n< 90 51 FF",
            {ackAndCompletion},
            {"# Home", "# a small camera", "for a camera like vantrel-camera --presets 6",
             "for a camera like vantrel-camera without --strict", home + " # sent", ack + " # and answered",
             completion, "as expected"});

        const QByteArray driven = "> 81 01 06 01 05 05 03 01 FF\n< 90 51 FF\n";
        const QString drive("> 81 01 06 01 05 05 03 01 FF");
        const QString driveStop("> 81 01 06 01 01 01 03 03 FF # stops what moves");
        row("the end stops what moves",
            driven + "> 81 01 04 07 22 FF\n< 90 51 FF\n> 81 01 04 08 02 FF\n< 90 51 FF\n",
            {"90 51 ff", "90 51 ff", "90 51 ff"},
            {drive, completion, "> 81 01 04 07 22 FF", completion, "> 81 01 04 08 02 FF", completion,
             driveStop, "> 81 01 04 07 00 FF # stops what moves", "> 81 01 04 08 00 FF # stops what moves",
             "as expected"});
        row("what stands still is not stopped", driven + "> 81 01 06 01 05 05 03 03 FF\n< 90 51 FF\n",
            {"90 51 ff", "90 51 ff"},
            {drive, completion, "> 81 01 06 01 05 05 03 03 FF", completion, "as expected"});
        row("a difference stops what moves",
            driven + "> 81 09 04 00 FF\n< 90 50 03 FF within 500 ms\n> 81 09 04 00 FF\n< 90 50 02 FF\n",
            {"90 51 ff", "90 50 02 ff", ackAndCompletion, "90 50 02 ff"},
            {drive, completion, "> 81 09 04 00 FF", "< 90 50 03 FF 90 50 02 FF differs", driveStop,
             "> 81 09 04 00 FF", "< 90 50 02 FF 90 50 02 FF", "differences: 1"});
    }

    void theReportTellsWhatTheCameraAnswered()
    {
        QFETCH(QByteArray, dialogue);
        QFETCH(QList<QByteArray>, answers);
        QFETCH(QStringList, report);
        DialogueReplay replay(dialogue);
        QCOMPARE(replay.answer(answers), report.constLast() == "as expected" ? 0 : 1);
        QStringList told = replay.report();
        QVERIFY(told.removeOne("Dialogue dialogue") && told.removeOne("expected received"));
        QCOMPARE(told, report);
        QCOMPARE(replay.program.complaint(), QString());
        QStringList sent = told.filter(QRegularExpression("^>"));
        sent.replaceInStrings(QRegularExpression(" #.*"), "");
        QCOMPARE(replay.frames, sent);
    }

    void theReportTellsWhenEachAnswerCame()
    {
        DialogueReplay replay(homeAnswered);
        replay.camera.nextFrame();
        replay.camera.reply("90 41");
        replay.camera.reply("ff");
        QTest::qWait(200);
        replay.camera.reply("90 51 ff");
        QCOMPARE(replay.program.exitStatus(), 0);
        const auto timeOf = [&replay](const QString& answer) {
            static const QRegularExpression time(" (\\d+) ms$");
            return time.match(replay.program.lines("< " + answer).value(0)).captured(1).toInt();
        };
        QVERIFY(timeOf("90 51 FF") >= 200);
        QVERIFY(timeOf("90 41 FF") < timeOf("90 51 FF"));
    }

    void theNextFrameWaitsUntilTheLineIsQuiet()
    {
        const QByteArray asked = "> 81 09 04 00 FF\n< 90 50 02 FF\n";
        DialogueReplay replay(asked + asked);
        QCOMPARE(replay.camera.nextFrame(), QByteArray("81 09 04 00 ff"));
        replay.camera.reply("90 50 02 ff");
        QElapsedTimer quiet;
        quiet.start();
        replay.camera.reply("90");
        QCOMPARE(replay.camera.nextFrame(), QByteArray("81 09 04 00 ff"));
        // The line must be quiet for 50 ms; the program rounds to whole milliseconds.
        QVERIFY(quiet.elapsed() >= 48);
    }

    void aCameraThatNeverAnswersIsReportedOnce()
    {
        const QByteArray asked = "> 81 09 04 00 FF\n< 90 50 02 FF within 100 ms\n";
        DialogueReplay replay(asked.repeated(9), {"--baud", "38400"});
        QCOMPARE(replay.answer({}), 2);
        QCOMPARE(replay.program.complaint(),
                 QString("vantrel-camera: no answer at %1: look at the port, the rate "
                         "(38400 baud, --baud sets another) and the camera's address\n")
                     .arg(replay.camera.portName()));
        QCOMPARE(replay.frames.size(), 2);
        QVERIFY(!replay.report().join('\n').contains("differences"));
    }

    void aPortThatIsLostEndsTheReplay()
    {
        DialogueReplay replay("> 81 01 06 04 FF\n< 90 41 FF within 2 s\n");
        QCOMPARE(replay.camera.nextFrame(), QByteArray(Home));
        replay.camera.pull();
        QCOMPARE(replay.program.exitStatus(), 2);
        const QString complaint = replay.program.complaint();
        QVERIFY2(complaint.startsWith("vantrel-camera: the port is lost: "), qPrintable(complaint));
    }

    void anInterruptStopsWhatIsInMotion()
    {
        DialogueReplay replay("> 81 01 06 01 18 01 02 03 FF\n< 90 51 FF\n"
                              "> 81 01 06 04 FF\n< 90 41 FF\n< 90 51 FF within 60 s\n");
        replay.camera.nextFrame();
        replay.camera.reply("90 51 ff");
        replay.camera.nextFrame();
        replay.camera.reply("90 41 ff");
        QTRY_COMPARE(replay.program.lines("< 90 41 FF").size(), 1);
        QCOMPARE(kill(static_cast<pid_t>(replay.program.process.processId()), SIGINT), 0);
        QCOMPARE(replay.answer({}), 1);
        QCOMPARE(replay.program.complaint(), QString("vantrel-camera: interrupted\n"));
        QCOMPARE(replay.frames, QStringList({"> 81 21 FF", "> 81 01 06 01 01 01 03 03 FF"}));
    }

    void thePortIsSetUpAsAsked_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::addColumn<unsigned>("speed");
        QTest::newRow("usual") << QStringList() << unsigned(B9600);
        QTest::newRow("38400") << QStringList({"--baud", "38400"}) << unsigned(B38400);
    }

    void thePortIsSetUpAsAsked()
    {
        QFETCH(QStringList, options);
        QFETCH(unsigned, speed);
        DialogueReplay replay("> 81 01 06 04 FF\n< 90 41 FF within 60 s\n", options);
        QCOMPARE(replay.camera.nextFrame(), QByteArray(Home));

        termios settings{};
        const PlainClient other(replay.camera.portName());
        QCOMPARE(tcgetattr(other.descriptor, &settings), 0);
        QCOMPARE(cfgetospeed(&settings), speed);
        QCOMPARE(settings.c_cflag & (CSIZE | PARENB | CSTOPB | CRTSCTS), tcflag_t(CS8));
        QCOMPARE(settings.c_iflag & (IXON | IXOFF), tcflag_t(0));
    }

    void anInstalledDialogueIsFoundByItsName()
    {
        CameraEnd camera;
        CameraProgram replay({"--replay", "maximum-speeds", camera.portName()});
        QCOMPARE(camera.nextFrame(), QByteArray("81 09 06 11 ff"));
        camera.reply("90 50 18 14 ff");
        QCOMPARE(replay.exitStatus(), 0);
        QCOMPARE(replay.lines().constFirst(), QString("Dialogue maximum-speeds"));
    }

    void repliesFromBeforeTheReplayAreDropped()
    {
        CameraEnd camera;
        const PlainClient other(camera.portName());
        camera.reply("90 38 ff");
        CameraProgram replay({"--replay", "maximum-speeds", camera.portName()});
        camera.nextFrame();
        camera.reply("90 50 18 14 ff");
        QCOMPARE(replay.exitStatus(), 0);
    }

    void whatTheCameraKeepsIsChangedOnlyWhenAllowed()
    {
        const QByteArray dialogue = "changes preset 5\n> 81 01 04 3F 00 05 FF\n< 90 51 FF\n";
        DialogueReplay refused(dialogue);
        QCOMPARE(refused.answer({"90 51 ff"}), 2);
        QCOMPARE(refused.program.complaint(),
                 QString("vantrel-camera: the dialogue dialogue changes preset 5; "
                         "--allow-changes holds it all the same\n"));
        QVERIFY(refused.report().isEmpty() && refused.frames.isEmpty());
        QCOMPARE(DialogueReplay(dialogue, {"--allow-changes"}).answer({"90 51 ff"}), 0);
    }

    void aBadDialogueIsAClearErrorWithItsLine_data()
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

    void aBadDialogueIsAClearErrorWithItsLine()
    {
        QFETCH(QByteArray, dialogue);
        QFETCH(QString, complaint);
        DialogueReplay replay(dialogue);
        QCOMPARE(replay.program.exitStatus(), 2);
        QCOMPARE(replay.program.complaint(), "vantrel-camera: " + replay.path + complaint + '\n');
        QVERIFY(replay.report().isEmpty());
    }
};

QTEST_GUILESS_MAIN(CameraReplayTest)
#include "CameraReplayTest.moc"
