// Holds every dialogue in tests/dialogues/ with the simulated camera, each with one of its own, all at the
// same time: most of the time of a dialogue goes by while the camera moves.

#include "FramePattern.h"
#include "Replay.h"
#include "ViscaCamera.h"
#include "support/CameraProgram.h"

#include <QDir>
#include <QtTest>

#include <algorithm>
#include <map>
#include <memory>

namespace {

// Longer than any dialogue takes, on a busy machine, too.
constexpr int patienceMs = 60000;

// A dialogue under way with a camera of its own.
class Rehearsal : public QObject
{
public:
    explicit Rehearsal(const Dialogue& dialogue)
        : camera(dialogue.cameraOptions)
        , replay(dialogue)
    {
        connect(&replay, &Replay::reported, this, [this](const QString& line) { lines += line; });
        connect(&replay, &Replay::finished, this, [this] { isFinished = true; });
    }

    CameraProgram camera;
    Replay replay;
    QStringList lines;
    bool isFinished = false;
};

// Whether the controller sends a frame like this in the dialogue.
bool sends(const Dialogue& dialogue, const QByteArray& pattern)
{
    for (const Dialogue::Step& step : dialogue.steps) {
        if (step.kind != Dialogue::Step::Kind::Send)
            continue;
        const QList<QByteArray> frames = QByteArray::fromHex(step.bytes).split('\xFF');
        for (const QByteArray& frame : frames) {
            if (matchFrame(frame + '\xFF', pattern.constData()))
                return true;
        }
    }
    return false;
}

} // namespace

class DialogueTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theCameraAnswersAsInTheDialogue_data();
    void theCameraAnswersAsInTheDialogue();
    void everyKnownFrameHasADialogue_data();
    void everyKnownFrameHasADialogue();

private:
    QMap<QString, Dialogue> dialogues;
    std::map<QString, std::unique_ptr<Rehearsal>> rehearsals;
};

void DialogueTest::initTestCase()
{
    const QFileInfoList files = QDir(SOURCE_DIR "/tests/dialogues").entryInfoList({"*.txt"});
    for (const QFileInfo& file : files) {
        Dialogue& dialogue = dialogues[file.completeBaseName()];
        QCOMPARE(dialogue.read(file.filePath()), QString());
        rehearsals[file.completeBaseName()] = std::make_unique<Rehearsal>(dialogue);
    }
    // Only when all are there: the cameras' start is what keeps the machine busy.
    for (const auto& [name, rehearsal] : rehearsals)
        QVERIFY2(!rehearsal->camera.path().isEmpty(), qPrintable(name));
    for (const auto& [name, rehearsal] : rehearsals)
        QCOMPARE(rehearsal->replay.start(rehearsal->camera.path(), QSerialPort::Baud9600), QString());
}

void DialogueTest::theCameraAnswersAsInTheDialogue_data()
{
    QTest::addColumn<QString>("name");
    for (const auto& [name, rehearsal] : rehearsals)
        QTest::newRow(qPrintable(name)) << name;
}

void DialogueTest::theCameraAnswersAsInTheDialogue()
{
    QFETCH(QString, name);
    const Rehearsal& rehearsal = *rehearsals.at(name);
    QTRY_VERIFY_WITH_TIMEOUT(rehearsal.isFinished, patienceMs);
    const QString report = rehearsal.lines.join('\n');
    QVERIFY2(rehearsal.replay.differences() == 0, qPrintable(report));
    QVERIFY2(rehearsal.replay.failure().isEmpty(), qPrintable(rehearsal.replay.failure()));
    QVERIFY2(report.endsWith("as expected"), qPrintable(report));
}

void DialogueTest::everyKnownFrameHasADialogue_data()
{
    QTest::addColumn<QByteArray>("frame");
    for (const ViscaCamera::KnownFrame& known : ViscaCamera::knownFrames())
        QTest::newRow(qPrintable(known.name)) << known.frame.toLatin1();
}

void DialogueTest::everyKnownFrameHasADialogue()
{
    QFETCH(QByteArray, frame);
    QVERIFY(std::any_of(dialogues.cbegin(), dialogues.cend(),
                        [&frame](const Dialogue& dialogue) { return sends(dialogue, frame); }));
}

QTEST_GUILESS_MAIN(DialogueTest)
#include "DialogueTest.moc"
