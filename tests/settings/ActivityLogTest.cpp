#include "support/StoreAlone.h"

#include <QDir>
#include <QFile>
#include <QtTest>

/** The activity log as the settings store writes it. */
class ActivityLogTest : public QObject
{
    Q_OBJECT

private slots:

    void messageBecomesAnEntry_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("text") << "MoveUp" << QByteArray("MoveUp\n");
        QTest::newRow("empty") << "" << QByteArray("\n");
        QTest::newRow("two lines") << " a\nb\r\n" << QByteArray(" a\nb\r\n\n");
        QTest::newRow("not Latin") << u8"größer カ 🎥" << QByteArray(u8"größer カ 🎥\n");
        QTest::newRow("zero character") << QString(QChar('\0')) << QByteArray("\0\n", 2);
        QTest::newRow("long") << QString(100000, 'x') << QByteArray(100000, 'x') + '\n';
    }

    void messageBecomesAnEntry()
    {
        QFETCH(QString, message);
        QFETCH(QByteArray, content);
        StoreAlone store;
        store.profile.createFolder();

        store->log(message);

        QCOMPARE(fileContent(store.profile.logFile()), content);
    }

    void entryIsInTheFileWhenLogReturns()
    {
        StoreAlone store;
        store.profile.createFolder();
        QByteArray content;

        for (int run = 0; run < 3; ++run) {
            for (int entry = 0; entry < 30; ++entry) {
                store->log(QString::number(entry));
                content += QByteArray::number(entry) + '\n';
                QCOMPARE(fileContent(store.profile.logFile()), content);
            }
            store.store.reset();
            store.store.emplace();
        }

        // The store keeps no file open, so a deleted log begins again.
        QVERIFY(QFile::remove(store.profile.logFile()));
        store->log("new");
        QCOMPARE(fileContent(store.profile.logFile()), "new\n");
    }

    void entriesAreLostUntilTheFolderExists()
    {
        StoreAlone store;

        store->log("before");
        QVERIFY(!QFile::exists(store.profile.folder()));
        store->setPanSpeed(3);
        QTRY_VERIFY(QFile::exists(store.profile.settingsFile()));
        store->log("after");

        QCOMPARE(QDir(store.profile.folder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name),
                 QStringList({"app.log", "setting.ini"}));
        QCOMPARE(fileContent(store->getDefaultPath() + "app.log"), "after\n");
    }
};

QTEST_APPLESS_MAIN(ActivityLogTest)
#include "ActivityLogTest.moc"
