#include "support/StoreAlone.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>

namespace {

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

int openFilesNamed(const QString& path)
{
    int count = 0;
    const auto descriptors = QDir("/dev/fd").entryInfoList(QDir::AllEntries | QDir::System);
    for (const QFileInfo& descriptor : descriptors)
        count += descriptor.symLinkTarget() == path ? 1 : 0;
    return count;
}

} // namespace

class ActivityLogTest : public QObject
{
    Q_OBJECT

private slots:
    void messageBecomesALine_data();
    void messageBecomesALine();
    void linesAreAppended();
    void linesOfEarlierRunsStay();
    void eachLineIsInTheFileWhenLogReturns();
    void noFileStaysOpen();
    void logLiesBesideTheSettings();

    void missingFolderLosesTheLine();
    void linesAreKeptOnceTheFolderExists();
    void folderInPlaceOfTheLogLosesTheLine();
    void fileInPlaceOfTheFolderLosesTheLine();
    void writeThatFallsShortIsSilent();
};

void ActivityLogTest::messageBecomesALine_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("text") << "MoveUp" << QByteArray("MoveUp\n");
    QTest::newRow("empty") << "" << QByteArray("\n");
    QTest::newRow("null") << QString() << QByteArray("\n");
    QTest::newRow("line feed at the end") << "MoveUp\n" << QByteArray("MoveUp\n\n");
    QTest::newRow("two lines") << "a\nb" << QByteArray("a\nb\n");
    QTest::newRow("carriage return") << "a\r" << QByteArray("a\r\n");
    QTest::newRow("blanks") << "  a  " << QByteArray("  a  \n");
    QTest::newRow("umlauts") << QString::fromUtf8("größer")
                             << QByteArray("gr\xC3\xB6\xC3\x9F"
                                           "er\n");
    QTest::newRow("Japanese") << QString::fromUtf8("カ") << QByteArray("\xE3\x82\xAB\n");
    QTest::newRow("beyond the basic plane") << QString::fromUtf8("🎥") << QByteArray("\xF0\x9F\x8E\xA5\n");
    QTest::newRow("zero character") << QString(QChar('\0')) << QByteArray("\0\n", 2);
    QTest::newRow("long") << QString(100000, 'x') << QByteArray(100000, 'x') + '\n';
}

void ActivityLogTest::messageBecomesALine()
{
    QFETCH(QString, message);
    QFETCH(QByteArray, content);
    StoreAlone store;
    store.profile.createFolder();

    store->log(message);

    QCOMPARE(contentOf(store.profile.logFile()), content);
}

void ActivityLogTest::linesAreAppended()
{
    StoreAlone store;
    store.profile.createFolder();

    store->log("MoveUp");
    store->log("MoveUp");

    QCOMPARE(contentOf(store.profile.logFile()), "MoveUp\nMoveUp\n");
}

void ActivityLogTest::linesOfEarlierRunsStay()
{
    StoreAlone store;
    store.profile.createFolder();

    store->log("first run");
    store.store.reset();
    store.store.emplace();
    store->log("second run");

    QCOMPARE(contentOf(store.profile.logFile()), "first run\nsecond run\n");
}

void ActivityLogTest::eachLineIsInTheFileWhenLogReturns()
{
    StoreAlone store;
    store.profile.createFolder();
    QByteArray content;

    for (int i = 0; i < 100; ++i) {
        store->log(QString::number(i));
        content += QByteArray::number(i) + '\n';
        QCOMPARE(contentOf(store.profile.logFile()), content);
    }
}

void ActivityLogTest::noFileStaysOpen()
{
    StoreAlone store;
    store.profile.createFolder();
    const QString path = QFileInfo(store.profile.folder()).canonicalFilePath() + "/app.log";
    {
        QFile log(path);
        QVERIFY(log.open(QIODevice::Append));
        QCOMPARE(openFilesNamed(path), 1);
    }

    store->log("MoveUp");

    QCOMPARE(openFilesNamed(path), 0);
}

void ActivityLogTest::logLiesBesideTheSettings()
{
    StoreAlone store;
    store->setPanSpeed(3);
    store.store.reset();
    store.store.emplace();

    store->log("MoveUp");

    QCOMPARE(QDir(store.profile.folder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name),
             QStringList({"app.log", "setting.ini"}));
    QCOMPARE(contentOf(store->getDefaultPath() + "app.log"), "MoveUp\n");
}

void ActivityLogTest::missingFolderLosesTheLine()
{
    StoreAlone store;

    store->log("MoveUp");

    QVERIFY(!QFile::exists(store.profile.folder()));
}

void ActivityLogTest::linesAreKeptOnceTheFolderExists()
{
    StoreAlone store;

    store->log("before");
    store->setPanSpeed(3);
    QTRY_VERIFY(QFile::exists(store.profile.settingsFile()));
    store->log("after");

    QCOMPARE(contentOf(store.profile.logFile()), "after\n");
}

void ActivityLogTest::folderInPlaceOfTheLogLosesTheLine()
{
    StoreAlone store;
    QVERIFY(QDir().mkpath(store.profile.logFile()));

    store->log("MoveUp");

    QVERIFY(QFileInfo(store.profile.logFile()).isDir());
    QVERIFY(QDir(store.profile.logFile()).isEmpty());
}

void ActivityLogTest::fileInPlaceOfTheFolderLosesTheLine()
{
    StoreAlone store;
    QVERIFY(QDir().mkpath(QFileInfo(store.profile.folder()).path()));
    QFile inTheWay(store.profile.folder());
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));

    store->log("MoveUp");

    QCOMPARE(inTheWay.size(), 0);
}

void ActivityLogTest::writeThatFallsShortIsSilent()
{
    StoreAlone store;
    store.profile.createFolder();
    // No file may grow beyond three bytes, as on a disk that is full.
    rlimit unlimited{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    const rlimit threeBytes{3, unlimited.rlim_max};
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &threeBytes), 0);

    store->log("MoveUp");
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    QVERIFY(std::signal(SIGXFSZ, oldHandler) != SIG_ERR);

    QCOMPARE(contentOf(store.profile.logFile()), "Mov");
    store->log("MoveDown");
    QCOMPARE(contentOf(store.profile.logFile()), "MovMoveDown\n");
}

QTEST_APPLESS_MAIN(ActivityLogTest)

#include "ActivityLogTest.moc"
