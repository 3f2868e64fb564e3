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

// The lines that show a complete reply, without the heading above each and the hex lines between.
QStringList analyses(const PrivateProfile& profile)
{
    return profile.log().filter("-");
}

// Sends a chunk and waits until the reader has dealt with it as a whole.
void sendChunk(Desk& desk, const QByteArray& bytes)
{
    const QString line = bytes.toHex();
    const auto before = desk.profile.log().count(line);
    desk.camera.reply(bytes.toHex());
    QTRY_COMPARE(desk.profile.log().count(line), before + 1);
}

} // namespace

class ReplyReaderTest : public QObject
{
    Q_OBJECT

private slots:
    void replyIsLoggedRawAndThenByteByByte_data();
    void replyIsLoggedRawAndThenByteByByte();
    void bytesOutsideAReplyAreOnlyLoggedRaw_data();
    void bytesOutsideAReplyAreOnlyLoggedRaw();
    void startByteInsideAReplyIsPartOfIt();
    void replySplitOverTwoChunksIsPutTogether();
    void anySplittingOfAStreamGivesTheSameReplies_data();
    void anySplittingOfAStreamGivesTheSameReplies();
    void everyByteValueComesThroughUnchanged();
    void emptyChunkLogsAnEmptyLine();

    void replyOfUpTo33BytesIsAnalysed_data();
    void replyOfUpTo33BytesIsAnalysed();
    void longerReplyIsDiscarded_data();
    void longerReplyIsDiscarded();
    void startByteThatOverflowsAReplyStartsNone();
    void floodOfOverlongRepliesIsSurvived();

    void halfReplyIsLostByADisconnect();
    void halfReplyIsLostWithTheDevice();
    void commandsDoNotDisturbAHalfReply();
    void repliesChangeNothingInTheProgram();

    void analysisOfAnyLengthIsLogged_data();
    void analysisOfAnyLengthIsLogged();
    void analysisLeavesAHalfReplyAlone();
};

void ReplyReaderTest::replyIsLoggedRawAndThenByteByByte_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<QStringList>("log");
    const QString heading = "Analyze Buffer";

    QTest::newRow("acknowledge") << QByteArray("90 41 ff") << QStringList({"9041ff", heading, "-90-41-ff-3"});
    QTest::newRow("completion") << QByteArray("90 51 ff") << QStringList({"9051ff", heading, "-90-51-ff-3"});
    QTest::newRow("error") << QByteArray("90 60 02 ff")
                           << QStringList({"906002ff", heading, "-90-60-2-ff-4"});
    QTest::newRow("no body") << QByteArray("90 ff") << QStringList({"90ff", heading, "-90-ff-2"});
    QTest::newRow("no leading zeros")
        << QByteArray("90 00 0a ff") << QStringList({"90000aff", heading, "-90-0-a-ff-4"});
    QTest::newRow("two replies in one chunk")
        << QByteArray("90 41 ff 90 51 ff")
        << QStringList({"9041ff9051ff", heading, "-90-41-ff-3", heading, "-90-51-ff-3"});
    QTest::newRow("stray bytes around replies")
        << QByteArray("12 ff 90 41 ff 34 90 51 ff ff")
        << QStringList({"12ff9041ff349051ffff", heading, "-90-41-ff-3", heading, "-90-51-ff-3"});
    QTest::newRow("reply within another camera's")
        << QByteArray("a0 90 ff") << QStringList({"a090ff", heading, "-90-ff-2"});
}

void ReplyReaderTest::replyIsLoggedRawAndThenByteByByte()
{
    QFETCH(QByteArray, chunk);
    QFETCH(QStringList, log);
    Desk desk;

    desk.camera.reply(chunk);

    QTRY_COMPARE(desk.profile.log(), log);
}

void ReplyReaderTest::bytesOutsideAReplyAreOnlyLoggedRaw_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::newRow("no start") << QByteArray::fromHex("12 34 ff");
    QTest::newRow("camera 2") << QByteArray::fromHex("a0 41 ff");
    QTest::newRow("terminators") << QByteArray::fromHex("ff ff");
    QTest::newRow("the program's own frame") << QByteArray::fromHex("81 01 06 04 ff");
    QTest::newRow("network change") << QByteArray::fromHex("80 38 ff");
}

void ReplyReaderTest::bytesOutsideAReplyAreOnlyLoggedRaw()
{
    QFETCH(QByteArray, chunk);
    Desk desk;

    sendChunk(desk, chunk);
    sendChunk(desk, reply(3));

    QCOMPARE(desk.profile.log(),
             QStringList({QString(chunk.toHex()), "9041ff", "Analyze Buffer", "-90-41-ff-3"}));
}

void ReplyReaderTest::startByteInsideAReplyIsPartOfIt()
{
    Desk desk;

    desk.camera.reply("90 90 41 90 ff");

    QTRY_COMPARE(analyses(desk.profile), QStringList("-90-90-41-90-ff-5"));
}

void ReplyReaderTest::replySplitOverTwoChunksIsPutTogether()
{
    Desk desk;

    desk.camera.reply("90 41");
    QTRY_COMPARE(desk.profile.log(), QStringList("9041"));
    desk.camera.reply("ff");

    QTRY_COMPARE(desk.profile.log(), QStringList({"9041", "ff", "Analyze Buffer", "-90-41-ff-3"}));
}

void ReplyReaderTest::anySplittingOfAStreamGivesTheSameReplies_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QStringList>("replies");
    QTest::newRow("two replies") << QByteArray::fromHex("90 41 ff 90 51 ff")
                                 << QStringList({"-90-41-ff-3", "-90-51-ff-3"});
    QTest::newRow("stray bytes") << QByteArray::fromHex("41 90 90 ff ff 90 ff")
                                 << QStringList({"-90-90-ff-3", "-90-ff-2"});
}

void ReplyReaderTest::anySplittingOfAStreamGivesTheSameReplies()
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

void ReplyReaderTest::everyByteValueComesThroughUnchanged()
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

void ReplyReaderTest::emptyChunkLogsAnEmptyLine()
{
    Desk desk;
    desk.camera.reply("90 41");
    QTRY_COMPARE(desk.profile.log(), QStringList("9041"));

    emit desk.link()->findChild<QSerialPort*>()->readyRead();
    QCOMPARE(desk.profile.log(), QStringList({"9041", ""}));

    desk.camera.reply("ff");
    QTRY_COMPARE(analyses(desk.profile), QStringList("-90-41-ff-3"));
}

void ReplyReaderTest::replyOfUpTo33BytesIsAnalysed_data()
{
    QTest::addColumn<int>("length");
    for (int length : {2, 3, 16, 31, 32, LongestReply})
        QTest::addRow("%d", length) << length;
}

void ReplyReaderTest::replyOfUpTo33BytesIsAnalysed()
{
    QFETCH(int, length);
    Desk desk;

    sendChunk(desk, reply(length));
    sendChunk(desk, "\x90\x51\xFF");

    QCOMPARE(analyses(desk.profile), QStringList({analysisOf(reply(length)), "-90-51-ff-3"}));
}

void ReplyReaderTest::longerReplyIsDiscarded_data()
{
    QTest::addColumn<int>("length");
    for (int length : {LongestReply + 1, LongestReply + 2, 2 * LongestReply, 500})
        QTest::addRow("%d", length) << length;
}

void ReplyReaderTest::longerReplyIsDiscarded()
{
    QFETCH(int, length);
    Desk desk;
    const LinkSignals heard(desk.link());

    sendChunk(desk, reply(length));
    QCOMPARE(desk.profile.log().size(), 1);

    sendChunk(desk, reply(3));
    QCOMPARE(analyses(desk.profile), QStringList("-90-41-ff-3"));
    QCOMPARE(heard.names(), "");
    QCOMPARE(desk.user.texts(), QStringList());
}

void ReplyReaderTest::startByteThatOverflowsAReplyStartsNone()
{
    Desk desk;
    const QByteArray full = reply(LongestReply).chopped(1);

    sendChunk(desk, full + QByteArray::fromHex("90 41 ff"));
    QCOMPARE(analyses(desk.profile), QStringList());

    sendChunk(desk, full + QByteArray::fromHex("41 90 51 ff"));
    QCOMPARE(analyses(desk.profile), QStringList("-90-51-ff-3"));
}

void ReplyReaderTest::floodOfOverlongRepliesIsSurvived()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    constexpr int chunkSize = 2000;
    constexpr int chunks = 50;

    const auto received = [&desk] { return desk.profile.log().join(QString()).size() / 2; };
    for (int i = 1; i <= chunks; ++i) {
        desk.camera.reply(QByteArray(chunkSize, '\x90').toHex());
        QTRY_COMPARE(received(), i * chunkSize);
    }
    QCOMPARE(analyses(desk.profile), QStringList());
    QCOMPARE(heard.names(), "");

    // What follows the flood may end what it began; the reply after that is whole again.
    sendChunk(desk, "\xFF");
    desk.camera.reply("90 51 ff");
    QTRY_COMPARE(analyses(desk.profile).mid(1), QStringList("-90-51-ff-3"));
}

void ReplyReaderTest::halfReplyIsLostByADisconnect()
{
    Desk desk;
    sendChunk(desk, "\x90\x41");

    desk.link()->closeSerialPort();
    desk.link()->openSerialPort();
    sendChunk(desk, "\xFF");

    QCOMPARE(desk.profile.log(), QStringList({"9041", "ff"}));
    sendChunk(desk, "\x90\x51\xFF");
    QCOMPARE(analyses(desk.profile), QStringList("-90-51-ff-3"));
}

void ReplyReaderTest::halfReplyIsLostWithTheDevice()
{
    Desk desk;
    sendChunk(desk, "\x90\x41");

    desk.camera.pull();
    QTRY_VERIFY(!desk.link()->isConnected());
    QTRY_COMPARE(desk.user.boxes().size(), 1);
    CameraEnd newCamera;
    desk.settings()->setCOMPort(newCamera.portName());
    desk.link()->openSerialPort();
    newCamera.reply("ff 90 51 ff");

    QTRY_COMPARE(analyses(desk.profile), QStringList("-90-51-ff-3"));
}

void ReplyReaderTest::commandsDoNotDisturbAHalfReply()
{
    Desk desk;
    sendChunk(desk, "\x90\x41");

    desk.link()->moveUp();
    sendChunk(desk, "\xFF");

    QCOMPARE(desk.profile.log(), QStringList({"9041", "MoveUp", "ff", "Analyze Buffer", "-90-41-ff-3"}));
}

void ReplyReaderTest::repliesChangeNothingInTheProgram()
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

void ReplyReaderTest::analysisOfAnyLengthIsLogged_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("line");
    QTest::newRow("none") << QByteArray() << QString();
    QTest::newRow("one") << QByteArray::fromHex("05") << QString("-5-1");
    QTest::newRow("not a reply") << QByteArray::fromHex("00 7f 80 ff 0a") << QString("-0-7f-80-ff-a-5");
    QTest::newRow("longer than a reply") << QByteArray(40, '\x01') << QString("-1").repeated(40) + "-40";
}

void ReplyReaderTest::analysisOfAnyLengthIsLogged()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, line);
    Desk desk;
    char* storage = new char[static_cast<std::size_t>(bytes.size())];
    std::copy(bytes.begin(), bytes.end(), storage);

    desk.link()->analyzeBuffer(storage, static_cast<int>(bytes.size()));

    QCOMPARE(desk.profile.log(), QStringList({"Analyze Buffer", line}));
}

void ReplyReaderTest::analysisLeavesAHalfReplyAlone()
{
    Desk desk;
    sendChunk(desk, "\x90\x41");

    desk.link()->analyzeBuffer(new char[1]{'\x05'}, 1);
    sendChunk(desk, "\xFF");

    QCOMPARE(analyses(desk.profile), QStringList({"-5-1", "-90-41-ff-3"}));
}

QTEST_APPLESS_MAIN(ReplyReaderTest)

#include "ReplyReaderTest.moc"
