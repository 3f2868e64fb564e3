#include "soak/Soak.h"
#include "support/Desk.h"
#include "support/ReplyModel.h"

#include <QDeadlineTimer>
#include <QRandomGenerator>

namespace {

constexpr char ReplyBegin = '\x90';
constexpr char ReplyEnd = '\xFF';
constexpr int LongestReply = 33;
constexpr int BatchBytes = 2000;
// After these, every buffer has grown to its final size.
constexpr int WarmUpReplies = 20000;
constexpr int LineTimeoutMs = 10000;

/** Random replies of a camera. */
class Replies
{
public:
    /** A reply of two to 33 bytes. */
    QByteArray reply() { return ReplyBegin + body(random.bounded(LongestReply - 1)) + ReplyEnd; }

    /** Begins like a reply, but is at least one byte too long. */
    QByteArray tooLong()
    {
        return ReplyBegin + body(LongestReply - 1 + random.bounded(LongestReply)) + ReplyEnd;
    }

private:
    QByteArray body(int size)
    {
        QByteArray bytes;
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(random.bounded(1, 0x90));
        return bytes;
    }

    QRandomGenerator random{1};
};

/** A desk whose log is compared with a model while the camera sends. */
class Listener
{
public:
    /** Sends the bytes and waits until the log has them. Returns what is wrong with the log, or "". */
    QString hear(const QByteArray& bytes)
    {
        model.sent(bytes);
        desk.camera.reply(bytes.toHex());
        for (const QDeadlineTimer deadline(LineTimeoutMs); !model.isComplete();) {
            if (deadline.hasExpired())
                return "bytes are missing in the log";
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
            QString difference = model.check(log.newLines());
            if (!difference.isEmpty())
                return difference;
        }
        return {};
    }

    Desk desk;
    ReplyModel model;

private:
    LogTail log{desk.profile.logFile()};
};

} // namespace

/** Very many replies. */
class ReplySoak : public QObject
{
    Q_OBJECT

private slots:

    void aFloodOfRepliesLeaksNoMemory_data()
    {
        QTest::addColumn<bool>("tooLong");
        QTest::newRow("replies") << false;
        QTest::newRow("replies that are too long") << true;
    }

    void aFloodOfRepliesLeaksNoMemory()
    {
        QFETCH(bool, tooLong);
        const int count = rounds(20000, 1000000);
        Listener listener;
        Replies replies;
        Memory before = Memory::now();
        for (int sent = 0, measured = 0; sent < WarmUpReplies + count;) {
            if (sent >= WarmUpReplies && std::exchange(measured, 1) == 0)
                before = Memory::now();
            QByteArray batch;
            for (; batch.size() < BatchBytes; ++sent)
                batch += tooLong ? replies.tooLong() : replies.reply();
            QCOMPARE(listener.hear(batch), QString());
        }
        const Memory after = Memory::now();
        qInfo("%d %s: %s", count, QTest::currentDataTag(), qPrintable(after.growthSince(before)));
        QVERIFY(tooLong ? listener.model.replyCount() == 0
                        : listener.model.replyCount() >= WarmUpReplies + count);
        QVERIFY(after.heapBytes - before.heapBytes < LeakAllowance);
        QCOMPARE(listener.desk.user.texts(), QStringList());
    }
};

QTEST_APPLESS_MAIN(ReplySoak)
#include "ReplySoak.moc"
