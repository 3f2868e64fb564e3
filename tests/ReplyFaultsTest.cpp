#include "ReplyFaults.h"

#include <QSet>
#include <QtTest>

using namespace std::chrono_literals;

namespace {

using Time = ReplyFaults::Time;
using Options = ReplyFaults::Options;

QByteArray ack()
{
    return QByteArray::fromHex("90 41 ff");
}

QByteArray completion()
{
    return QByteArray::fromHex("90 51 ff");
}

QByteArray position()
{
    return QByteArray::fromHex("90 50 0f 0e 07 00 00 04 0b 00 ff");
}

struct Sent
{
    Time at;
    QByteArray bytes;
};

// Hands over an ACK, a completion() and an answer, all at time 0 and `rounds` times, and collects what goes
// out when.
std::vector<Sent> sentWith(const Options& options, int rounds = 1)
{
    ReplyFaults faults(options);
    for (int round = 0; round < rounds; ++round) {
        for (const QByteArray& reply : {ack(), completion(), position()})
            faults.take(reply, 0ms);
    }
    std::vector<Sent> sent;
    while (const auto due = faults.nextDue()) {
        for (const QByteArray& bytes : faults.release(*due))
            sent.push_back({*due, bytes});
    }
    return sent;
}

QByteArray stream(const std::vector<Sent>& sent)
{
    QByteArray bytes;
    for (const Sent& piece : sent)
        bytes += piece.bytes;
    return bytes;
}

Options withSeed(quint32 seed)
{
    Options options;
    options.seed = seed;
    return options;
}

constexpr quint32 seeds = 200;

} // namespace

class ReplyFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void withoutFaultsRepliesPassAtOnceAndUnchanged();
    void noRepliesSendsNothing();
    void lateSendsLater();
    void splitCutsEachReplyAnywhereAndLosesNothing();
    void splitLetsTimePassBetweenThePieces();
    void joinSendsSeveralRepliesAtOnceAndLosesNothing();
    void joinSendsALoneReplyToo();
    void splitAndJoinCutAcrossReplies();
    void noiseComesBeforeRepliesAndNeverBeginsOne();
    void repliesGetTheLengthAskedFor_data();
    void repliesGetTheLengthAskedFor();
    void allFaultsTogetherKeepTheOrder();
    void theSameSeedGivesTheSameFaults();
    void anyTellsWhetherThereAreFaults();
};

void ReplyFaultsTest::withoutFaultsRepliesPassAtOnceAndUnchanged()
{
    ReplyFaults faults({});
    QVERIFY(!faults.nextDue());
    faults.take(ack(), 10ms);
    faults.take(completion(), 10ms);
    QVERIFY(faults.nextDue() == 10ms);
    QVERIFY(faults.release(9ms).empty());
    QVERIFY(faults.release(10ms) == std::vector<QByteArray>({ack(), completion()}));
    QVERIFY(!faults.nextDue());
}

void ReplyFaultsTest::noRepliesSendsNothing()
{
    Options options;
    options.noReplies = true;
    QVERIFY(sentWith(options).empty());
}

void ReplyFaultsTest::lateSendsLater()
{
    Options options;
    options.late = 3s;
    ReplyFaults faults(options);
    faults.take(ack(), 25ms);
    QVERIFY(faults.release(3024ms).empty());
    QVERIFY(faults.nextDue() == 3025ms);
    QVERIFY(faults.release(3025ms) == std::vector<QByteArray>({ack()}));
}

void ReplyFaultsTest::splitCutsEachReplyAnywhereAndLosesNothing()
{
    QSet<qint64> firstPieces;
    for (quint32 seed = 0; seed < seeds; ++seed) {
        Options options = withSeed(seed);
        options.split = true;
        ReplyFaults faults(options);
        faults.take(position(), 0ms);
        const std::vector<QByteArray> pieces = faults.release(1s);
        QVERIFY(pieces.size() >= 2);
        firstPieces.insert(pieces.front().size());
        QByteArray whole;
        for (const QByteArray& piece : pieces) {
            QVERIFY(!piece.isEmpty());
            whole += piece;
        }
        QCOMPARE(whole, position());
    }
    QCOMPARE(firstPieces.size(), position().size() - 1);
}

void ReplyFaultsTest::splitLetsTimePassBetweenThePieces()
{
    Options options;
    options.split = true;
    ReplyFaults faults(options);
    faults.take(ack(), 0ms);
    const Time first = *faults.nextDue();
    QVERIFY(faults.release(first).size() == 1);
    QVERIFY(*faults.nextDue() > first);
}

void ReplyFaultsTest::joinSendsSeveralRepliesAtOnceAndLosesNothing()
{
    for (quint32 seed = 0; seed < seeds; ++seed) {
        Options options = withSeed(seed);
        options.join = true;
        const std::vector<Sent> sent = sentWith(options, 2);
        QCOMPARE(sent.size(), std::size_t(1));
        QVERIFY(sent.front().at > 0ms);
        QCOMPARE(stream(sent), (ack() + completion() + position()).repeated(2));
    }
}

void ReplyFaultsTest::joinSendsALoneReplyToo()
{
    Options options;
    options.join = true;
    ReplyFaults faults(options);
    faults.take(ack(), 0ms);
    QVERIFY(faults.release(1s) == std::vector<QByteArray>({ack()}));
    faults.take(completion(), 1s);
    QVERIFY(faults.nextDue() > 1s);
    QVERIFY(faults.release(2s) == std::vector<QByteArray>({completion()}));
}

void ReplyFaultsTest::splitAndJoinCutAcrossReplies()
{
    int acrossReplies = 0;
    for (quint32 seed = 0; seed < seeds; ++seed) {
        Options options = withSeed(seed);
        options.split = true;
        options.join = true;
        const std::vector<Sent> sent = sentWith(options);
        QCOMPARE(stream(sent), ack() + completion() + position());
        for (const Sent& piece : sent) {
            const auto end = piece.bytes.indexOf('\xFF');
            acrossReplies += end >= 0 && end < piece.bytes.size() - 1 ? 1 : 0;
        }
    }
    QVERIFY(acrossReplies > 0);
}

void ReplyFaultsTest::noiseComesBeforeRepliesAndNeverBeginsOne()
{
    QSet<qint64> amounts;
    for (quint32 seed = 0; seed < seeds; ++seed) {
        Options options = withSeed(seed);
        options.noise = true;
        const std::vector<Sent> sent = sentWith(options);
        QCOMPARE(sent.size(), std::size_t(3));
        QVERIFY(sent[0].bytes.endsWith(ack()));
        QVERIFY(sent[1].bytes.endsWith(completion()));
        QVERIFY(sent[2].bytes.endsWith(position()));
        QCOMPARE(stream(sent).count('\x90'), 3);
        amounts.insert(sent[0].bytes.size() - ack().size());
    }
    QCOMPARE(amounts, QSet<qint64>({1, 2, 3, 4}));
}

void ReplyFaultsTest::repliesGetTheLengthAskedFor_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("last");

    QTest::newRow("nothing") << 0 << QByteArray("90 ff") << QByteArray("90 ff");
    QTest::newRow("as it is") << 1 << QByteArray("90 41 ff") << QByteArray("90 50 ff");
    QTest::newRow("between") << 3 << QByteArray("90 41 00 00 ff") << QByteArray("90 50 0f 0e ff");
    QTest::newRow("long") << 31 << "90 41 " + QByteArray("00 ").repeated(30) + "ff"
                          << "90 50 0f 0e 07 00 00 04 0b 00 " + QByteArray("00 ").repeated(22) + "ff";
}

void ReplyFaultsTest::repliesGetTheLengthAskedFor()
{
    QFETCH(int, length);
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, last);
    Options options;
    options.length = length;
    const std::vector<Sent> sent = sentWith(options);
    QCOMPARE(sent.size(), std::size_t(3));
    QCOMPARE(sent.front().bytes, QByteArray::fromHex(first));
    QCOMPARE(sent.back().bytes, QByteArray::fromHex(last));
}

void ReplyFaultsTest::allFaultsTogetherKeepTheOrder()
{
    for (quint32 seed = 0; seed < seeds; ++seed) {
        Options options = withSeed(seed);
        options.late = 500ms;
        options.split = true;
        options.join = true;
        options.noise = true;
        options.length = 2;
        const std::vector<Sent> sent = sentWith(options);
        QVERIFY(sent.front().at >= 500ms);
        const QByteArray bytes = stream(sent);
        const auto first = bytes.indexOf(QByteArray::fromHex("90 41 00 ff"));
        const auto second = bytes.indexOf(QByteArray::fromHex("90 51 00 ff"));
        const auto third = bytes.indexOf(QByteArray::fromHex("90 50 0f ff"));
        QVERIFY(first > 0 && second > first && third > second);
        QCOMPARE(bytes.size(), third + 4);
    }
}

void ReplyFaultsTest::theSameSeedGivesTheSameFaults()
{
    const auto noisy = [](quint32 seed) {
        Options options = withSeed(seed);
        options.noise = true;
        return stream(sentWith(options));
    };
    QCOMPARE(noisy(7), noisy(7));
    QVERIFY(noisy(7) != noisy(8));
}

void ReplyFaultsTest::anyTellsWhetherThereAreFaults()
{
    QVERIFY(!withSeed(5).any());
    Options none;
    none.length = 0;
    QVERIFY(none.any());
    Options late;
    late.late = 1ms;
    QVERIFY(late.any());
}

QTEST_GUILESS_MAIN(ReplyFaultsTest)
#include "ReplyFaultsTest.moc"
