#include "support/Desk.h"
#include "support/LinkSignals.h"

#include <QPushButton>
#include <QSerialPort>

namespace {

constexpr int LongestReply = 33;

QByteArray reply(int length)
{
    return '\x90' + QByteArray(length - 2, '\x41') + '\xFF';
}

QString analysisOf(const QByteArray& bytes)
{
    QString line;
    for (const char byte : bytes)
        line += '-' + QString::number(static_cast<uchar>(byte), 16);
    return line + '-' + QString::number(bytes.size());
}

// The log's entries that list a complete reply, without their headings and without the chunks.
QStringList analyses(const PrivateProfile& profile)
{
    return profile.log().filter("-");
}

// Sends a chunk and waits until it is logged, as one.
void sendChunk(Desk& desk, const QByteArray& bytes)
{
    const QString entry = bytes.toHex();
    const auto before = desk.profile.log().count(entry);
    desk.camera.reply(bytes.toHex());
    QTRY_COMPARE(desk.profile.log().count(entry), before + 1);
}

} // namespace

/** What the camera sends, in the activity log. */
class ReplyReaderTest : public QObject
{
    Q_OBJECT

private slots:

    void replyIsLoggedRawAndThenByteByByte_data()
    {
        QTest::addColumn<QByteArray>("chunk");
        QTest::addColumn<QStringList>("log");
        const auto row = [](const char* name, const QByteArray& chunk, const QStringList& replies) {
            QStringList log{QString(chunk).remove(' ')};
            for (const QString& reply : replies)
                log << "Analyze Buffer" << reply;
            QTest::newRow(name) << chunk << log;
        };
        row("acknowledge", "90 41 ff", {"-90-41-ff-3"});
        row("no body", "90 ff", {"-90-ff-2"});
        row("no leading zeros", "90 00 0a ff", {"-90-0-a-ff-4"});
        row("two replies", "90 41 ff 90 51 ff", {"-90-41-ff-3", "-90-51-ff-3"});
        row("stray bytes", "12 ff 90 41 ff 34 90 51 ff ff", {"-90-41-ff-3", "-90-51-ff-3"});
        row("within another camera's", "a0 90 ff", {"-90-ff-2"});
        row("start bytes inside", "90 90 41 90 ff", {"-90-90-41-90-ff-5"});
        row("the program's own frame", "81 01 06 04 ff", {});
        row("network change", "80 38 ff", {});
    }

    void replyIsLoggedRawAndThenByteByByte()
    {
        QFETCH(QByteArray, chunk);
        QFETCH(QStringList, log);
        Desk desk;

        desk.camera.reply(chunk);

        QTRY_COMPARE(desk.profile.log(), log);
    }

    void anySplittingOfAStreamGivesTheSameReplies_data()
    {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<QStringList>("replies");
        QTest::newRow("two replies") << QByteArray::fromHex("90 41 ff 90 51 ff")
                                     << QStringList({"-90-41-ff-3", "-90-51-ff-3"});
        QTest::newRow("stray bytes") << QByteArray::fromHex("41 90 90 ff ff 90 ff")
                                     << QStringList({"-90-90-ff-3", "-90-ff-2"});
    }

    void anySplittingOfAStreamGivesTheSameReplies()
    {
        QFETCH(QByteArray, stream);
        QFETCH(QStringList, replies);
        Desk desk;

        // Bit n of the pattern ends a chunk after byte n.
        const int patterns = 1 << (stream.size() - 1);
        for (int pattern = 0; pattern < patterns; ++pattern) {
            QFile::remove(desk.profile.logFile());
            QByteArray chunk;
            for (int i = 0; i < stream.size(); ++i) {
                chunk += stream[i];
                if (i + 1 == stream.size() || (pattern >> i & 1)) {
                    sendChunk(desk, chunk);
                    chunk.clear();
                }
            }
            QCOMPARE(analyses(desk.profile), replies);
        }
    }

    void everyByteValueIsLoggedUnchanged()
    {
        Desk desk;
        QStringList expected;
        for (int value = 0; value < 0xFF; ++value) {
            const QByteArray bytes = '\x90' + QByteArray(1, static_cast<char>(value)) + '\xFF';
            desk.camera.reply(bytes.toHex());
            expected.append(analysisOf(bytes));
        }

        QTRY_COMPARE(analyses(desk.profile).size(), expected.size());
        QCOMPARE(analyses(desk.profile), expected);
    }

    void emptyChunkLogsAnEmptyEntry()
    {
        Desk desk;
        desk.camera.reply("90 41");
        QTRY_COMPARE(desk.profile.log(), QStringList("9041"));

        emit desk.link()->findChild<QSerialPort*>()->readyRead();
        QCOMPARE(desk.profile.log(), QStringList({"9041", ""}));

        desk.camera.reply("ff");
        QTRY_COMPARE(analyses(desk.profile), QStringList("-90-41-ff-3"));
    }

    void onlyAReplyOfUpTo33BytesIsAnalysed_data()
    {
        QTest::addColumn<int>("length");
        for (int length :
             {2, 16, 32, LongestReply, LongestReply + 1, LongestReply + 2, 2 * LongestReply, 500})
            QTest::addRow("%d", length) << length;
    }

    void onlyAReplyOfUpTo33BytesIsAnalysed()
    {
        QFETCH(int, length);
        Desk desk;
        const LinkSignals heard(desk.link());

        sendChunk(desk, reply(length));
        QCOMPARE(desk.profile.log().size(), length <= LongestReply ? 3 : 1);
        sendChunk(desk, "\x90\x51\xFF");

        const QStringList found = analyses(desk.profile);
        QCOMPARE(found.mid(0, found.size() - 1),
                 length <= LongestReply ? QStringList(analysisOf(reply(length))) : QStringList());
        QCOMPARE(found.value(found.size() - 1), "-90-51-ff-3");
        QCOMPARE(heard.names(), "");
        QCOMPARE(desk.user.texts(), QStringList());
    }

    void startByteAfterTooLongAReplyStartsNone()
    {
        Desk desk;
        const QByteArray full = reply(LongestReply).chopped(1);

        sendChunk(desk, full + QByteArray::fromHex("90 41 ff"));
        QCOMPARE(analyses(desk.profile), QStringList());

        sendChunk(desk, full + QByteArray::fromHex("41 90 51 ff"));
        QCOMPARE(analyses(desk.profile), QStringList("-90-51-ff-3"));
    }

    void halfReplyIsLostWhenThePortCloses_data()
    {
        QTest::addColumn<bool>("pulled");
        QTest::newRow("disconnected") << false;
        QTest::newRow("pulled") << true;
    }

    void halfReplyIsLostWhenThePortCloses()
    {
        QFETCH(bool, pulled);
        Desk desk;
        sendChunk(desk, "\x90\x41");

        if (pulled)
            desk.camera.pull();
        else
            desk.link()->closeSerialPort();
        QTRY_VERIFY(!desk.link()->isConnected());
        QTRY_COMPARE(desk.user.boxes().size(), pulled ? 1 : 0);
        CameraEnd newCamera;
        desk.settings()->setCOMPort(newCamera.portName());
        desk.link()->openSerialPort();
        newCamera.reply("ff 90 51 ff");

        QTRY_COMPARE(desk.profile.log(), QStringList({"9041", "ff9051ff", "Analyze Buffer", "-90-51-ff-3"}));
    }

    void repliesChangeNothingInTheProgram()
    {
        Desk desk;
        const LinkSignals heard(desk.link());

        sendChunk(desk, QByteArray::fromHex("90 60 02 ff 90 61 41 ff 90 51 ff"));

        QCOMPARE(heard.names(), "");
        QCOMPARE(desk.user.texts(), QStringList());
        QCOMPARE(desk.camera.pending(), "");
        QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Disconnect");
        QVERIFY(desk.link()->isConnected());
    }

    void analysisOfAnyLengthIsLogged_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("line");
        QTest::newRow("none") << QByteArray() << QString();
        QTest::newRow("one") << QByteArray::fromHex("05") << QString("-5-1");
        QTest::newRow("not a reply") << QByteArray::fromHex("00 7f 80 ff 0a") << QString("-0-7f-80-ff-a-5");
        QTest::newRow("longer than a reply") << QByteArray(40, '\x01') << QString("-1").repeated(40) + "-40";
    }

    void analysisOfAnyLengthIsLogged()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, line);
        Desk desk;
        char* storage = new char[static_cast<std::size_t>(bytes.size())];
        std::copy(bytes.begin(), bytes.end(), storage);

        desk.link()->analyzeBuffer(storage, static_cast<int>(bytes.size()));

        QCOMPARE(desk.profile.log(), QStringList({"Analyze Buffer", line}));
    }

    void analysisLeavesAHalfReplyAlone()
    {
        Desk desk;
        sendChunk(desk, "\x90\x41");

        desk.link()->analyzeBuffer(new char[1]{'\x05'}, 1);
        sendChunk(desk, "\xFF");

        QCOMPARE(analyses(desk.profile), QStringList({"-5-1", "-90-41-ff-3"}));
    }
};

QTEST_APPLESS_MAIN(ReplyReaderTest)
#include "ReplyReaderTest.moc"
