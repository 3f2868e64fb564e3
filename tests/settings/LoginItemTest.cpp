#include "support/StoreAlone.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include <thread>

namespace {

// With one of these arguments this program only switches the login item, as Vantrel would at its path.
constexpr char EnableMode[] = "--enable-login-item";
constexpr char DisableMode[] = "--disable-login-item";

constexpr int Missing = -1;

QString addingRun(const QString& path)
{
    return "1: -e tell application \"System Events\" to make login item at end with properties {path:\"" +
           path + "\", hidden:false}";
}

QString deletingRun(const QString& name)
{
    return "1: -e tell application \"System Events\" to delete login item\"" + name + '"';
}

// Every run of osascript as the number of its arguments and their texts.
QStringList runs(const StoreAlone& store)
{
    QStringList runs;
    const auto recorded = store.profile.osascriptRuns();
    for (const QStringList& arguments : recorded)
        runs.append(QString::number(arguments.size()) + ": " + arguments.join('|'));
    return runs;
}

// Installs this program as `path` and runs it there.
void runInstalledAs(const QString& path, const char* mode)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QVERIFY(QFile::exists(path) || QFile::copy(QCoreApplication::applicationFilePath(), path));
    QCOMPARE(QProcess::execute(path, {mode}), 0);
}

#ifdef Q_OS_LINUX
QString startEntryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           "/autostart/Vantrel.desktop";
}

QString startEntry()
{
    return QString::fromUtf8(fileContent(startEntryPath()));
}
#endif

} // namespace

/** "Run on startup": what osascript is asked for, and the start entry of a Linux desktop. */
class LoginItemTest : public QObject
{
    Q_OBJECT

private slots:

    void theBundleIsAddedByItsPathAndDeletedByItsName_data()
    {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("name");
        QTest::newRow("bundle") << "Vantrel.app"
                                << "Vantrel";
        QTest::newRow("dot in the name") << "My.Camera.app"
                                         << "My";
        QTest::newRow("no extension") << "Vantrel"
                                      << "Vantrel";
        QTest::newRow("nothing is escaped") << "a \"b'c\\d.app"
                                            << "a \"b'c\\d";
        QTest::newRow("not Latin") << u8"カメラ.app" << u8"カメラ";
    }

    void theBundleIsAddedByItsPathAndDeletedByItsName()
    {
        QFETCH(QString, bundle);
        QFETCH(QString, name);
        const StoreAlone store;
        const QTemporaryDir home;
        const QString path = QDir(home.path()).canonicalPath() + "/Applications/" + bundle;

        runInstalledAs(path + "/Contents/MacOS/Vantrel", EnableMode);
        runInstalledAs(path + "/Contents/MacOS/Vantrel", DisableMode);

        QCOMPARE(runs(store), QStringList({addingRun(path), deletingRun(name)}));
    }

    void inAFolderRightBelowTheRootThePathIsEmpty()
    {
        const StoreAlone store;
        const QTemporaryDir folder("/tmp/XXXXXX");
        const QString path = folder.path() + "-Vantrel";

        runInstalledAs(path, EnableMode);
        runInstalledAs(path, DisableMode);
        QVERIFY(QFile::remove(path));

        QCOMPARE(runs(store), QStringList({addingRun(""), deletingRun("")}));
    }

    void outsideABundleTheFolderTwoLevelsUpIsTakenAtEachCall()
    {
        StoreAlone store;
        const QString path = QFileInfo(QCoreApplication::applicationDirPath() + "/../..").canonicalFilePath();
        const QString name = QFileInfo(path).fileName().section('.', 0, 0);

        QCOMPARE(store->macOSXAppBundlePath(), path);
        QCOMPARE(store->macOSXAppBundleName(), name);
        QVERIFY(!store->getRunOnStartUp());
        QCOMPARE(runs(store), QStringList());

        for (const bool enabled : {true, true, false, false})
            store->setRunOnStartUp(enabled);
        QCOMPARE(runs(store),
                 QStringList({addingRun(path), addingRun(path), deletingRun(name), deletingRun(name)}));
    }

    void theChoiceIsStoredWhateverOsascriptDoes_data()
    {
        QTest::addColumn<int>("exitCode");
        QTest::newRow("succeeds") << 0;
        QTest::newRow("fails") << 1;
        QTest::newRow("is missing") << Missing;
    }

    void theChoiceIsStoredWhateverOsascriptDoes()
    {
        QFETCH(int, exitCode);
        StoreAlone store;
        if (exitCode == Missing)
            store.profile.removeOsascript();
        else
            store.profile.setOsascriptExitCode(exitCode);

        for (const bool enabled : {true, false}) {
            store->setRunOnStartUp(enabled);
            QCOMPARE(store->getRunOnStartUp(), enabled);
            store.store.reset();
            store.store.emplace();
            QCOMPARE(store->getRunOnStartUp(), enabled);
        }
    }

    void theChoiceIsStoredBeforeOsascriptRunsAndTheCallReturnsAfterIt_data()
    {
        QTest::addColumn<bool>("enabled");
        QTest::newRow("on") << true;
        QTest::newRow("off") << false;
    }

    void theChoiceIsStoredBeforeOsascriptRunsAndTheCallReturnsAfterIt()
    {
        QFETCH(bool, enabled);
        StoreAlone store;
        store.profile.store("runonstartup", !enabled);
        store.store.emplace();
        store.profile.holdOsascript();
        std::atomic<bool> returned = false;
        bool returnedEarly = true;
        bool storedWhileRunning = !enabled;
        std::thread observer([&] {
            const QDeadlineTimer patience(5000);
            while (store.profile.osascriptRuns().isEmpty() && !patience.hasExpired())
                QThread::msleep(1);
            returnedEarly = returned;
            storedWhileRunning = store->getRunOnStartUp();
            store.profile.setOsascriptExitCode(0);
        });

        store->setRunOnStartUp(enabled);
        returned = true;
        observer.join();

        QVERIFY(!returnedEarly);
        QCOMPARE(storedWhileRunning, enabled);
    }

#ifdef Q_OS_LINUX
    void enablingWritesTheStartEntryOfTheDesktopAndDisablingRemovesIt()
    {
        StoreAlone store;

        store->setRunOnStartUp(true);
        store->setRunOnStartUp(true);

        const QStringList lines = startEntry().split('\n');
        QCOMPARE(lines.first(), "[Desktop Entry]");
        QVERIFY(lines.contains("Type=Application"));
        QVERIFY(lines.contains("Name=Vantrel"));
        QVERIFY(lines.contains("Icon=vantrel"));
        QVERIFY(lines.contains("Exec=\"" + QCoreApplication::applicationFilePath() + '"'));
        // A desktop leaves the entry alone once this file is gone.
        QVERIFY(lines.contains("TryExec=" + QCoreApplication::applicationFilePath()));
        QCOMPARE(lines.last(), "");
        QCOMPARE(QFileInfo(startEntryPath()).dir().entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList("Vantrel.desktop"));

        store->setRunOnStartUp(false);
        QVERIFY(!QFile::exists(startEntryPath()));
        store->setRunOnStartUp(false);
        QVERIFY(!QFile::exists(startEntryPath()));
    }

    void startEntryNamesTheExecutableWhateverItsPath()
    {
        const StoreAlone store;
        const QTemporaryDir home;
        const QString folder = QDir(home.path()).canonicalPath();

        runInstalledAs(folder + "/a b/\"q\" $v `c` \\s 100%\n\t\r/Vantrel", EnableMode);

        QVERIFY(
            startEntry().contains("\nTryExec=" + folder + "/a b/\"q\" $v `c` \\\\s 100%\\n\\t\\r/Vantrel\n"));
        QVERIFY(startEntry().contains(
            "\nExec=\"" + folder +
            "/a b/\\\\\"q\\\\\" \\\\$v \\\\`c\\\\` \\\\\\\\s 100%%\\n\\t\\r/Vantrel\"\n"));
    }

    void startEntryThatCannotBeWrittenIsSilent()
    {
        StoreAlone store;
        // A folder in the entry's place cannot be replaced by a file, whatever the user's rights.
        QVERIFY(QDir().mkpath(startEntryPath() + "/in-the-way"));

        store->setRunOnStartUp(true);
        store->setRunOnStartUp(false);

        QVERIFY(QFileInfo(startEntryPath()).isDir());
    }
#endif
};

int main(int argc, char** argv)
{
    const QString mode = argc == 2 ? QString(argv[1]) : QString();
    if (mode == EnableMode || mode == DisableMode) {
        const QCoreApplication app(argc, argv);
        AppSettingsManager().setRunOnStartUp(mode == EnableMode);
        return 0;
    }

    LoginItemTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "LoginItemTest.moc"
