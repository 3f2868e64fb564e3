#include "support/StoreAlone.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include <thread>

namespace {

// With one of these as its argument this program only does that, as the program in the place where it lies.
constexpr char EnableMode[] = "--enable-login-item";
constexpr char DisableMode[] = "--disable-login-item";

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

QString folderTwoLevelsUp()
{
    return QFileInfo(QCoreApplication::applicationDirPath() + "/../..").canonicalFilePath();
}

QString baseName(const QString& path)
{
    return path.mid(path.lastIndexOf('/') + 1).section('.', 0, 0);
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
    QFile entry(startEntryPath());
    return entry.open(QIODevice::ReadOnly) ? QString::fromUtf8(entry.readAll()) : QString();
}
#endif

} // namespace

class LoginItemTest : public QObject
{
    Q_OBJECT

private slots:
    void enablingAddsTheBundleByItsPath_data();
    void enablingAddsTheBundleByItsPath();
    void disablingDeletesTheBundleByItsName_data();
    void disablingDeletesTheBundleByItsName();
    void bundlePathAndNameOfThisExecutable();
    void outsideABundleTheFolderTwoLevelsUpIsTaken();
    void rightBelowTheRootThePathIsEmpty();

    void eachCallRunsOsascriptOnce();
    void choiceIsStored_data();
    void choiceIsStored();
    void choiceIsStoredBeforeOsascriptRuns();
    void callReturnsWhenOsascriptHasEnded();
    void missingOsascriptIsSilent();
    void readingTheChoiceRunsNothing();

#ifdef Q_OS_LINUX
    void enablingWritesTheStartEntryOfTheDesktop();
    void startEntryNamesTheExecutableWhateverItsPath();
    void disablingRemovesTheStartEntry();
    void startEntryThatCannotBeWrittenIsSilent();
#endif
};

void LoginItemTest::enablingAddsTheBundleByItsPath_data()
{
    QTest::addColumn<QString>("bundle");
    QTest::addColumn<QString>("name");
    QTest::newRow("bundle") << "Vantrel.app"
                            << "Vantrel";
    QTest::newRow("dot in the name") << "My.Camera.app"
                                     << "My";
    QTest::newRow("blank in the name") << "My Camera.app"
                                       << "My Camera";
    QTest::newRow("no extension") << "Vantrel"
                                  << "Vantrel";
    QTest::newRow("quotes are not escaped") << "a\"b'c\\d.app"
                                            << "a\"b'c\\d";
    QTest::newRow("not Latin") << QString::fromUtf8("カメラ.app") << QString::fromUtf8("カメラ");
}

void LoginItemTest::enablingAddsTheBundleByItsPath()
{
    QFETCH(QString, bundle);
    const StoreAlone store;
    const QTemporaryDir home;
    const QString path = QDir(home.path()).canonicalPath() + "/Applications/" + bundle;

    runInstalledAs(path + "/Contents/MacOS/Vantrel", EnableMode);

    QCOMPARE(runs(store), QStringList({addingRun(path)}));
}

void LoginItemTest::disablingDeletesTheBundleByItsName_data()
{
    enablingAddsTheBundleByItsPath_data();
}

void LoginItemTest::disablingDeletesTheBundleByItsName()
{
    QFETCH(QString, bundle);
    QFETCH(QString, name);
    const StoreAlone store;
    const QTemporaryDir home;

    runInstalledAs(home.filePath("Applications/" + bundle + "/Contents/MacOS/Vantrel"), DisableMode);

    QCOMPARE(runs(store), QStringList({deletingRun(name)}));
}

void LoginItemTest::bundlePathAndNameOfThisExecutable()
{
    StoreAlone store;

    QCOMPARE(store->macOSXAppBundlePath(), folderTwoLevelsUp());
    QCOMPARE(store->macOSXAppBundleName(), baseName(folderTwoLevelsUp()));
}

void LoginItemTest::outsideABundleTheFolderTwoLevelsUpIsTaken()
{
    StoreAlone store;

    store->setRunOnStartUp(true);
    store->setRunOnStartUp(false);

    QCOMPARE(runs(store),
             QStringList({addingRun(folderTwoLevelsUp()), deletingRun(baseName(folderTwoLevelsUp()))}));
}

void LoginItemTest::rightBelowTheRootThePathIsEmpty()
{
    const StoreAlone store;
    const QTemporaryDir folder("/tmp/XXXXXX");
    const QString path = folder.path() + "-Vantrel";

    runInstalledAs(path, EnableMode);
    runInstalledAs(path, DisableMode);
    QVERIFY(QFile::remove(path));

    QCOMPARE(runs(store), QStringList({addingRun(""), deletingRun("")}));
}

void LoginItemTest::eachCallRunsOsascriptOnce()
{
    StoreAlone store;

    store->setRunOnStartUp(true);
    QCOMPARE(runs(store).size(), 1);
    store->setRunOnStartUp(true);
    QCOMPARE(runs(store).size(), 2);
    store->setRunOnStartUp(false);
    QCOMPARE(runs(store).size(), 3);
    store->setRunOnStartUp(false);

    const QString add = addingRun(folderTwoLevelsUp());
    const QString remove = deletingRun(baseName(folderTwoLevelsUp()));
    QCOMPARE(runs(store), QStringList({add, add, remove, remove}));
}

void LoginItemTest::choiceIsStored_data()
{
    QTest::addColumn<int>("exitCode");
    QTest::newRow("osascript succeeds") << 0;
    QTest::newRow("osascript fails") << 1;
}

void LoginItemTest::choiceIsStored()
{
    QFETCH(int, exitCode);
    StoreAlone store;
    store.profile.setOsascriptExitCode(exitCode);

    store->setRunOnStartUp(true);
    QVERIFY(store->getRunOnStartUp());
    store.store.reset();
    store.store.emplace();
    QVERIFY(store->getRunOnStartUp());

    store->setRunOnStartUp(false);
    QVERIFY(!store->getRunOnStartUp());
}

void LoginItemTest::choiceIsStoredBeforeOsascriptRuns()
{
    StoreAlone store;
    store.profile.holdOsascript();
    bool storedWhileRunning = false;
    std::thread observer([&] {
        while (store.profile.osascriptRuns().isEmpty())
            QThread::msleep(1);
        storedWhileRunning = store->getRunOnStartUp();
        store.profile.setOsascriptExitCode(0);
    });

    store->setRunOnStartUp(true);
    observer.join();

    QVERIFY(storedWhileRunning);
}

void LoginItemTest::callReturnsWhenOsascriptHasEnded()
{
    StoreAlone store;
    store.profile.holdOsascript();
    std::atomic<bool> returned = false;
    bool returnedEarly = true;
    std::thread observer([&] {
        while (store.profile.osascriptRuns().isEmpty())
            QThread::msleep(1);
        returnedEarly = returned;
        store.profile.setOsascriptExitCode(0);
    });

    store->setRunOnStartUp(false);
    returned = true;
    observer.join();

    QVERIFY(!returnedEarly);
}

void LoginItemTest::missingOsascriptIsSilent()
{
    StoreAlone store;
    store.profile.removeOsascript();

    store->setRunOnStartUp(true);
    QVERIFY(store->getRunOnStartUp());
    store->setRunOnStartUp(false);

    QVERIFY(!store->getRunOnStartUp());
    QCOMPARE(runs(store).size(), 0);
}

void LoginItemTest::readingTheChoiceRunsNothing()
{
    StoreAlone store;

    store->getRunOnStartUp();
    store->macOSXAppBundlePath();
    store->macOSXAppBundleName();

    QCOMPARE(runs(store).size(), 0);
}

#ifdef Q_OS_LINUX
void LoginItemTest::enablingWritesTheStartEntryOfTheDesktop()
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
}

void LoginItemTest::startEntryNamesTheExecutableWhateverItsPath()
{
    const StoreAlone store;
    const QTemporaryDir home;
    const QString folder = QDir(home.path()).canonicalPath();

    runInstalledAs(folder + "/a b/\"q\" $v `c` \\s 100%\n\t\r/Vantrel", EnableMode);

    QVERIFY(startEntry().contains("\nTryExec=" + folder + "/a b/\"q\" $v `c` \\\\s 100%\\n\\t\\r/Vantrel\n"));
    QVERIFY(startEntry().contains(
        "\nExec=\"" + folder + "/a b/\\\\\"q\\\\\" \\\\$v \\\\`c\\\\` \\\\\\\\s 100%%\\n\\t\\r/Vantrel\"\n"));
}

void LoginItemTest::disablingRemovesTheStartEntry()
{
    StoreAlone store;
    store->setRunOnStartUp(true);
    QVERIFY(QFile::exists(startEntryPath()));

    store->setRunOnStartUp(false);
    QVERIFY(!QFile::exists(startEntryPath()));
    store->setRunOnStartUp(false);
    QVERIFY(!QFile::exists(startEntryPath()));
}

void LoginItemTest::startEntryThatCannotBeWrittenIsSilent()
{
    StoreAlone store;
    // A folder in the entry's place cannot be replaced by a file, whatever the user's rights.
    QVERIFY(QDir().mkpath(startEntryPath() + "/in-the-way"));

    store->setRunOnStartUp(true);
    store->setRunOnStartUp(false);

    QVERIFY(QFileInfo(startEntryPath()).isDir());
}
#endif

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
