// Holds every dialogue in simulator/dialogues/ with the simulated camera and a simulated clock: each with a
// camera of its own, and one after another with the same camera.

#include "Conversation.h"
#include "FramePattern.h"
#include "ViscaCamera.h"
#include "support/Frames.h"

#include <QDir>
#include <QtTest>

#include <algorithm>
#include <random>
#include <set>
#include <utility>

using namespace std::chrono_literals;

namespace {

using BusyRules = ViscaCamera::BusyRules;
using Time = ViscaCamera::Time;

// A camera, and a controller at the other end of its line.
class Rehearsal
{
public:
    explicit Rehearsal(BusyRules rules)
        : camera(rules)
    {
    }

    // Holds the dialogue; returns the report, which has a line for each frame and answer.
    QStringList hold(const Dialogue& dialogue)
    {
        Conversation conversation(dialogue);
        const Time start = now;
        conversation.proceed({}, 0ms);
        QStringList report;
        while (!conversation.isOver()) {
            camera.receive(conversation.takeOutput(), now);
            now = std::min(start + conversation.nextDue(), camera.nextDue().value_or(Time::max()));
            conversation.proceed(said(), now - start);
            report += conversation.takeReport();
        }
        return report;
    }

    // The answers to all inquiries, and the ends of pan and tilt.
    QList<QByteArray> state()
    {
        QList<QByteArray> answers{ask(QByteArray::fromHex(PositionInquiry))};
        answers += ask(QByteArray::fromHex(Home), 10s);
        for (const ViscaCamera::KnownFrame& known : ViscaCamera::knownFrames()) {
            const int blocks = !known.name.endsWith("inquiry") ? 0 : known.frame.contains('p') ? 4 : 1;
            for (int block = 0; block < blocks; ++block)
                answers += ask(makeFrame(known.frame.constData(), {{'x', 1}, {'p', block}}));
        }
        for (const char* const way : {"02 01", "01 02"}) {
            ask(QByteArray::fromHex("81 01 06 01 18 14 " + QByteArray(way) + " ff"), 10s);
            answers += ask(QByteArray::fromHex(PositionInquiry));
        }
        ask(QByteArray::fromHex("81 01 06 01 18 14 03 03 ff"));
        ask(QByteArray::fromHex(Home), 10s);
        return answers;
    }

    ViscaCamera camera;

private:
    QByteArray ask(const QByteArray& frame, Time patience = 100ms)
    {
        camera.receive(frame, now);
        now += patience;
        return said();
    }

    QByteArray said()
    {
        QByteArray bytes;
        for (const ViscaCamera::Event& event : camera.advance(now)) {
            if (event.kind == ViscaCamera::Event::Kind::Reply)
                bytes += event.bytes;
        }
        return bytes;
    }

    Time now{0};
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

bool isFor(const Dialogue& dialogue, BusyRules rules)
{
    return rules == BusyRules::Strict ? !dialogue.isLenient : dialogue.cameraOptions.isEmpty();
}

} // namespace

class DialogueTest : public QObject
{
    Q_OBJECT

private slots:

    void initTestCase()
    {
        const QFileInfoList files = QDir(SOURCE_DIR "/simulator/dialogues").entryInfoList({"*.txt"});
        for (const QFileInfo& file : files)
            QCOMPARE(dialogues[file.completeBaseName()].read(file.filePath()), QString());
        QVERIFY(!dialogues.isEmpty());
        // This test starts cameras with this option only.
        for (const Dialogue& dialogue : std::as_const(dialogues))
            QVERIFY(dialogue.cameraOptions.isEmpty() || dialogue.cameraOptions == QStringList("--strict"));
    }

    void theCameraAnswersAsInTheDialogue_data()
    {
        QTest::addColumn<QString>("name");
        const QStringList names = dialogues.keys();
        for (const QString& name : names)
            QTest::newRow(qPrintable(name)) << name;
    }

    void theCameraAnswersAsInTheDialogue()
    {
        QFETCH(QString, name);
        int held = 0;
        for (const auto rules : {BusyRules::Lenient, BusyRules::Strict}) {
            if (!isFor(dialogues[name], rules))
                continue;
            Rehearsal rehearsal(rules);
            const QList<QByteArray> before = rehearsal.state();
            const QString report = rehearsal.hold(dialogues[name]).join('\n');
            QVERIFY2(report.endsWith("as expected"), qPrintable(report));
            QCOMPARE(rehearsal.state(), before);
            ++held;
        }
        QVERIFY2(held > 0, "the dialogue is for no camera");
    }

    void allAreHeldWithOneCameraInAnyOrder_data()
    {
        QTest::addColumn<bool>("isStrict");
        QTest::addColumn<unsigned>("order");
        for (unsigned order = 0; order < 5; ++order) {
            QTest::addRow("by default, %u", order) << false << order;
            QTest::addRow("strict, %u", order) << true << order;
        }
    }

    void allAreHeldWithOneCameraInAnyOrder()
    {
        QFETCH(bool, isStrict);
        QFETCH(unsigned, order);
        const BusyRules rules = isStrict ? BusyRules::Strict : BusyRules::Lenient;
        QStringList names = dialogues.keys();
        if (order > 0)
            std::shuffle(names.begin(), names.end(), std::mt19937(order));

        Rehearsal rehearsal(rules);
        const QList<QByteArray> before = rehearsal.state();
        for (const QString& name : names) {
            if (!isFor(dialogues[name], rules))
                continue;
            const QString report = rehearsal.hold(dialogues[name]).join('\n');
            QVERIFY2(report.endsWith("as expected"), qPrintable(report));
        }
        QCOMPARE(rehearsal.state(), before);
        QVERIFY(rehearsal.camera.presets().isEmpty());
    }

    void theHeadNamesWhatTheCameraKeeps()
    {
        const char* const keeping[] = {"88 30 0p FF",
                                       "8x 01 04 00 02 FF",
                                       "8x 01 04 00 03 FF",
                                       "8x 01 04 3F 00 pp FF",
                                       "8x 01 04 3F 01 pp FF",
                                       "8x 01 7E 01 0B pp qq FF",
                                       "8x 01 06 07 00 0p 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF"};
        for (const Dialogue& dialogue : std::as_const(dialogues)) {
            const bool changes = std::any_of(std::begin(keeping), std::end(keeping),
                                             [&](const char* frame) { return sends(dialogue, frame); });
            QVERIFY2(dialogue.changes.isEmpty() != changes, qPrintable(dialogue.name));
        }
    }

    void everyKnownFrameHasANameAndADialogue()
    {
        std::set<QString> names;
        std::set<QByteArray> frames;
        for (const ViscaCamera::KnownFrame& known : ViscaCamera::knownFrames()) {
            QVERIFY2(names.insert(known.name).second, qPrintable(known.name));
            QVERIFY2(frames.insert(known.frame).second, qPrintable(known.name));
            QVERIFY2(std::any_of(dialogues.cbegin(), dialogues.cend(),
                                 [&](const Dialogue& dialogue) { return sends(dialogue, known.frame); }),
                     qPrintable(known.name));
        }
    }

private:
    QMap<QString, Dialogue> dialogues;
};

QTEST_GUILESS_MAIN(DialogueTest)
#include "DialogueTest.moc"
