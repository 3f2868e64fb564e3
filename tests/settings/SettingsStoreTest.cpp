#include "support/StoreAlone.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QStandardPaths>
#include <QtTest>

#include <climits>
#include <functional>

using Setter = std::function<void(AppSettingsManager&)>;
using Getter = std::function<QVariant(AppSettingsManager&)>;
Q_DECLARE_METATYPE(Setter)
Q_DECLARE_METATYPE(Getter)

namespace {

struct NumberSetting
{
    const char* key;
    int (AppSettingsManager::*get)();
    void (AppSettingsManager::*set)(int);
    int defaultValue;
};

struct SwitchSetting
{
    const char* key;
    bool (AppSettingsManager::*get)();
    void (AppSettingsManager::*set)(bool);
};

constexpr NumberSetting Numbers[] = {
    {"baudrate", &AppSettingsManager::getBaudRate, &AppSettingsManager::setBaudRate, 9600},
    {"panspeed", &AppSettingsManager::getPanSpeed, &AppSettingsManager::setPanSpeed, 5},
    {"tiltspeed", &AppSettingsManager::getTiltSpeed, &AppSettingsManager::setTiltSpeed, 5},
    {"zoomspeed", &AppSettingsManager::getZoomSpeed, &AppSettingsManager::setZoomSpeed, 5},
    {"startuppreset", &AppSettingsManager::getStartUpPreset, &AppSettingsManager::setStartUpPreset, 1},
};

constexpr SwitchSetting Switches[] = {
    {"invertpan", &AppSettingsManager::getInvertPan, &AppSettingsManager::setInvertPan},
    {"inverttilt", &AppSettingsManager::getInvertTilt, &AppSettingsManager::setInvertTilt},
    {"isstartuppreset", &AppSettingsManager::getIsStartUpPreset, &AppSettingsManager::setIsStartUpPreset},
    {"runonstartup", &AppSettingsManager::getRunOnStartUp, &AppSettingsManager::setRunOnStartUp},
    {"runasadmin", &AppSettingsManager::getRunAsAdmin, &AppSettingsManager::setRunAsAdmin},
};

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeSettings(const PrivateProfile& profile, const QByteArray& lines)
{
    profile.createFolder();
    QFile file(profile.settingsFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(lines), lines.size());
}

QStringList& debugLines()
{
    static QStringList lines;
    return lines;
}

void collectDebugLines(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (type == QtDebugMsg)
        debugLines().append(message);
}

// Closes the store and starts it again on settings written by hand.
void restartOn(StoreAlone& store, const QByteArray& lines)
{
    store.store.reset();
    writeSettings(store.profile, lines);
    store.store.emplace();
}

} // namespace

class SettingsStoreTest : public QObject
{
    Q_OBJECT

private slots:
    void freshAccountHasTheDefaults_data();
    void freshAccountHasTheDefaults();
    void storeMakesNoFileOfItsOwn();
    void readingStoresNothing();

    void setterStoresItsKeyInTheGeneralSection_data();
    void setterStoresItsKeyInTheGeneralSection();
    void valueCountsAtOnceAndReachesTheFileLater();
    void valueReachesTheFileAtTheExit();
    void lockOfAKilledProgramHoldsNothingUp();
    void lockOfARunningProgramIsLeftAlone();
    void settingsSurviveARestart();
    void oneSettingLeavesTheOthersAlone();

    void numberIsReturnedUnchecked_data();
    void numberIsReturnedUnchecked();
    void numberIsStoredUnchecked_data();
    void numberIsStoredUnchecked();
    void switchIsReadAsTextsAreRead_data();
    void switchIsReadAsTextsAreRead();
    void portIsAnyText_data();
    void portIsAnyText();

    void presetNamesBelongToThePortSetting();
    void presetNameKeyIsPortAndPlainNumber_data();
    void presetNameKeyIsPortAndPlainNumber();
    void presetNameIsAnyText_data();
    void presetNameIsAnyText();

    void folderHasItsSeparatorAtTheEnd();
    void settingsFileIsInTheFolder();
    void folderIsWrittenToTheDebugOutputOnce();
    void applicationPathIsTheExecutableWithASeparator();

    void brokenFileGivesTheDefaults();
    void unreadableFileGivesTheDefaults();
    void valuesHoldInMemoryWhereTheFileCannotBeWritten();

    void namesWrittenWithAnyQtAreReadAndKept_data();
    void namesWrittenWithAnyQtAreReadAndKept();
    void fileThatIsNotUtf8IsReadAsLatin1AndKept();
    void fileWithTheMarkOfUtf8IsReadAsUtf8();
    void runAsAdminIsOnlyStored();
    void storeHasNoParentAndNoSignals();
};

void SettingsStoreTest::freshAccountHasTheDefaults_data()
{
    QTest::addColumn<Getter>("get");
    QTest::addColumn<QVariant>("value");
    for (const NumberSetting& number : Numbers) {
        QTest::newRow(number.key) << Getter([number](auto& store) { return (store.*number.get)(); })
                                  << QVariant(number.defaultValue);
    }
    for (const SwitchSetting& choice : Switches) {
        QTest::newRow(choice.key) << Getter([choice](auto& store) { return (store.*choice.get)(); })
                                  << QVariant(false);
    }
    QTest::newRow("comport") << Getter([](auto& store) { return store.getCOMPort(); }) << QVariant("COM1");
    QTest::newRow("name of preset 1")
        << Getter([](auto& store) { return store.getPresetName(1); }) << QVariant("Preset1");
    QTest::newRow("name of preset 12")
        << Getter([](auto& store) { return store.getPresetName(12); }) << QVariant("Preset12");
}

void SettingsStoreTest::freshAccountHasTheDefaults()
{
    QFETCH(Getter, get);
    QFETCH(QVariant, value);
    StoreAlone store;

    QCOMPARE(get(*store.store), value);
}

void SettingsStoreTest::storeMakesNoFileOfItsOwn()
{
    StoreAlone store;

    QVERIFY(!QFile::exists(store.profile.folder()));
    store.store.reset();
    QVERIFY(!QFile::exists(store.profile.folder()));
}

void SettingsStoreTest::readingStoresNothing()
{
    StoreAlone store;

    store->getCOMPort();
    store->getBaudRate();
    store->getInvertPan();
    store->getPresetName(1);
    store.store.reset();

    QVERIFY(!QFile::exists(store.profile.settingsFile()));
}

void SettingsStoreTest::setterStoresItsKeyInTheGeneralSection_data()
{
    QTest::addColumn<Setter>("set");
    QTest::addColumn<QByteArray>("line");
    for (const NumberSetting& number : Numbers) {
        QTest::newRow(number.key) << Setter([number](auto& store) { (store.*number.set)(7); })
                                  << QByteArray(number.key) + "=7\n";
    }
    for (const SwitchSetting& choice : Switches) {
        QTest::addRow("%s on", choice.key) << Setter([choice](auto& store) { (store.*choice.set)(true); })
                                           << QByteArray(choice.key) + "=true\n";
        QTest::addRow("%s off", choice.key) << Setter([choice](auto& store) { (store.*choice.set)(false); })
                                            << QByteArray(choice.key) + "=false\n";
    }
    QTest::newRow("comport") << Setter([](auto& store) { store.setCOMPort("cu.usbserial-1410"); })
                             << QByteArray("comport=cu.usbserial-1410\n");
    QTest::newRow("empty comport") << Setter([](auto& store) { store.setCOMPort(""); })
                                   << QByteArray("comport=\n");
    QTest::newRow("preset name") << Setter([](auto& store) { store.setPresetName(2, "Desk"); })
                                 << QByteArray("COM1_2=Desk\n");
}

void SettingsStoreTest::setterStoresItsKeyInTheGeneralSection()
{
    QFETCH(Setter, set);
    QFETCH(QByteArray, line);
    StoreAlone store;

    set(*store.store);
    store.store.reset();

    QCOMPARE(contentOf(store.profile.settingsFile()), "[General]\n" + line);
}

void SettingsStoreTest::valueCountsAtOnceAndReachesTheFileLater()
{
    StoreAlone store;

    store->setBaudRate(19200);

    QCOMPARE(store->getBaudRate(), 19200);
    QVERIFY(!QFile::exists(store.profile.settingsFile()));
    QTRY_COMPARE(contentOf(store.profile.settingsFile()), "[General]\nbaudrate=19200\n");
}

void SettingsStoreTest::valueReachesTheFileAtTheExit()
{
    StoreAlone store;
    store->setInvertTilt(true);
    QVERIFY(!QFile::exists(store.profile.settingsFile()));

    store.store.reset();

    QCOMPARE(contentOf(store.profile.settingsFile()), "[General]\ninverttilt=true\n");
}

void SettingsStoreTest::lockOfAKilledProgramHoldsNothingUp()
{
    StoreAlone store;
    store.store.reset();
    store.profile.createFolder();
    QVERIFY(QFile(store.profile.settingsFile() + ".lock").open(QIODevice::WriteOnly));
    QElapsedTimer elapsed;
    elapsed.start();

    store.store.emplace();
    store->setBaudRate(19200);
    store.store.reset();

    QCOMPARE(contentOf(store.profile.settingsFile()), "[General]\nbaudrate=19200\n");
    // QSettings would wait 30 seconds.
    QVERIFY(elapsed.elapsed() < 10000);
}

void SettingsStoreTest::lockOfARunningProgramIsLeftAlone()
{
    StoreAlone store;
    store.store.reset();
    store.profile.createFolder();
    const QString lockFile = store.profile.settingsFile() + ".lock";
    QLockFile lock(lockFile);
    QVERIFY(lock.lock());

    store.store.emplace();

    QVERIFY(QFile::exists(lockFile));
}

void SettingsStoreTest::settingsSurviveARestart()
{
    StoreAlone store;
    int value = 20;
    for (const NumberSetting& number : Numbers)
        (*store.store.*number.set)(value++);
    for (const SwitchSetting& choice : Switches)
        (*store.store.*choice.set)(true);
    store->setCOMPort("COM3");
    store->setPresetName(4, "Stage");

    store.store.reset();
    store.store.emplace();

    value = 20;
    for (const NumberSetting& number : Numbers)
        QCOMPARE((*store.store.*number.get)(), value++);
    for (const SwitchSetting& choice : Switches)
        QVERIFY((*store.store.*choice.get)());
    QCOMPARE(store->getCOMPort(), "COM3");
    QCOMPARE(store->getPresetName(4), "Stage");
}

void SettingsStoreTest::oneSettingLeavesTheOthersAlone()
{
    StoreAlone store;
    restartOn(store, "[General]\ncomport=COM2\npanspeed=9\nsomething=else\n");

    store->setPanSpeed(10);
    store.store.reset();

    QCOMPARE(contentOf(store.profile.settingsFile()),
             "[General]\ncomport=COM2\npanspeed=10\nsomething=else\n");
}

void SettingsStoreTest::numberIsReturnedUnchecked_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("value");
    QTest::newRow("word") << QByteArray("fast") << 0;
    QTest::newRow("nothing") << QByteArray("") << 0;
    QTest::newRow("fraction") << QByteArray("5.5") << 0;
    QTest::newRow("number and more") << QByteArray("7x") << 0;
    QTest::newRow("beyond any control") << QByteArray("40") << 40;
    QTest::newRow("zero") << QByteArray("0") << 0;
    QTest::newRow("negative") << QByteArray("-3") << -3;
    QTest::newRow("500") << QByteArray("500") << 500;
    QTest::newRow("1234") << QByteArray("1234") << 1234;
    QTest::newRow("list") << QByteArray("1, 2") << 0;
}

void SettingsStoreTest::numberIsReturnedUnchecked()
{
    QFETCH(QByteArray, text);
    QFETCH(int, value);
    StoreAlone store;
    QByteArray lines = "[General]\n";
    for (const NumberSetting& number : Numbers)
        lines += QByteArray(number.key) + '=' + text + '\n';
    restartOn(store, lines);

    for (const NumberSetting& number : Numbers)
        QCOMPARE((*store.store.*number.get)(), value);
}

void SettingsStoreTest::numberIsStoredUnchecked_data()
{
    QTest::addColumn<int>("value");
    for (int value : {0, -1, 99, 1234, INT_MAX, INT_MIN})
        QTest::addRow("%d", value) << value;
}

void SettingsStoreTest::numberIsStoredUnchecked()
{
    QFETCH(int, value);
    StoreAlone store;

    for (const NumberSetting& number : Numbers)
        (*store.store.*number.set)(value);
    store.store.reset();
    store.store.emplace();

    for (const NumberSetting& number : Numbers)
        QCOMPARE((*store.store.*number.get)(), value);
}

void SettingsStoreTest::switchIsReadAsTextsAreRead_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("value");
    QTest::newRow("true") << QByteArray("true") << true;
    QTest::newRow("false") << QByteArray("false") << false;
    QTest::newRow("capitals") << QByteArray("FALSE") << false;
    QTest::newRow("0") << QByteArray("0") << false;
    QTest::newRow("1") << QByteArray("1") << true;
    QTest::newRow("nothing") << QByteArray("") << false;
    QTest::newRow("word") << QByteArray("maybe") << true;
}

void SettingsStoreTest::switchIsReadAsTextsAreRead()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, value);
    StoreAlone store;
    QByteArray lines = "[General]\n";
    for (const SwitchSetting& choice : Switches)
        lines += QByteArray(choice.key) + '=' + text + '\n';
    restartOn(store, lines);

    for (const SwitchSetting& choice : Switches)
        QCOMPARE((*store.store.*choice.get)(), value);
}

void SettingsStoreTest::portIsAnyText_data()
{
    QTest::addColumn<QString>("port");
    QTest::newRow("AUTO") << "AUTO";
    QTest::newRow("number") << "17";
    QTest::newRow("path") << "/dev/pts/3";
    QTest::newRow("empty") << "";
    QTest::newRow("blanks around it") << " COM3 ";
    QTest::newRow("special characters") << "a,b;c=d \"e\" [f] %g \\h";
    QTest::newRow("not Latin") << QString::fromUtf8("カメラ");
}

void SettingsStoreTest::portIsAnyText()
{
    QFETCH(QString, port);
    StoreAlone store;

    store->setCOMPort(port);
    QCOMPARE(store->getCOMPort(), port);
    store.store.reset();
    store.store.emplace();

    QCOMPARE(store->getCOMPort(), port);
}

void SettingsStoreTest::presetNamesBelongToThePortSetting()
{
    StoreAlone store;

    store->setPresetName(2, "Desk");
    QCOMPARE(store->getPresetName(2), "Desk");
    store->setCOMPort("AUTO");
    QCOMPARE(store->getPresetName(2), "Preset2");
    store->setPresetName(2, "Stage");
    store->setCOMPort("COM1");
    QCOMPARE(store->getPresetName(2), "Desk");
    store.store.reset();

    QCOMPARE(contentOf(store.profile.settingsFile()), "[General]\nAUTO_2=Stage\nCOM1_2=Desk\ncomport=COM1\n");
}

void SettingsStoreTest::presetNameKeyIsPortAndPlainNumber_data()
{
    QTest::addColumn<int>("preset");
    QTest::addColumn<QByteArray>("number");
    QTest::newRow("one digit") << 3 << QByteArray("3");
    QTest::newRow("two digits") << 12 << QByteArray("12");
    QTest::newRow("last") << 64 << QByteArray("64");
    QTest::newRow("none") << 0 << QByteArray("0");
    QTest::newRow("negative") << -1 << QByteArray("-1");
    QTest::newRow("large") << 1000 << QByteArray("1000");
}

void SettingsStoreTest::presetNameKeyIsPortAndPlainNumber()
{
    QFETCH(int, preset);
    QFETCH(QByteArray, number);
    StoreAlone store;
    restartOn(store, "[General]\nAUTO_" + number + "=Lectern\ncomport=AUTO\n");

    QCOMPARE(store->getPresetName(preset), "Lectern");
    QCOMPARE(store->getPresetName(preset + 1), "Preset" + QString::number(preset + 1));
}

void SettingsStoreTest::presetNameIsAnyText_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "";
    QTest::newRow("blanks") << "  Desk  ";
    QTest::newRow("list") << "Desk, left";
    QTest::newRow("special characters") << "a;b=c \"d\" [e] %f \\g /h\n";
    QTest::newRow("looks like a value") << "@Invalid()";
    QTest::newRow("not Latin") << QString::fromUtf8("Rednerpult größer 講壇 🎥");
    QTest::newRow("long") << QString(10000, 'n');
}

void SettingsStoreTest::presetNameIsAnyText()
{
    QFETCH(QString, name);
    StoreAlone store;

    store->setPresetName(5, name);
    QCOMPARE(store->getPresetName(5), name);
    store.store.reset();
    store.store.emplace();

    QCOMPARE(store->getPresetName(5), name);
}

void SettingsStoreTest::folderHasItsSeparatorAtTheEnd()
{
    StoreAlone store;

    QCOMPARE(store->getDefaultPath(), QDir::toNativeSeparators(store.profile.folder() + '/'));
    QCOMPARE(
        store->getDefaultPath(),
        QDir::toNativeSeparators(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + '/'));
}

void SettingsStoreTest::settingsFileIsInTheFolder()
{
    StoreAlone store;

    store->setPanSpeed(1);
    store.store.reset();

    QCOMPARE(QDir(store.profile.folder()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             QStringList("setting.ini"));
}

void SettingsStoreTest::folderIsWrittenToTheDebugOutputOnce()
{
    StoreAlone store;
    debugLines().clear();
    const QtMessageHandler oldHandler = qInstallMessageHandler(collectDebugLines);

    store.store.emplace();
    store->getDefaultPath();
    store->setPanSpeed(1);
    qInstallMessageHandler(oldHandler);

    QCOMPARE(debugLines().size(), 1);
    QVERIFY(debugLines().constFirst().contains(store->getDefaultPath()));
}

void SettingsStoreTest::applicationPathIsTheExecutableWithASeparator()
{
    StoreAlone store;

    QCOMPARE(store->getApplicationPath(),
             QDir::toNativeSeparators(QCoreApplication::applicationFilePath() + '/'));
    QVERIFY(store->getApplicationPath().contains("SettingsStoreTest"));
}

void SettingsStoreTest::brokenFileGivesTheDefaults()
{
    StoreAlone store;
    restartOn(store, QByteArray("\x00\xff[[]\n==\x01 garbage [General", 25));

    QCOMPARE(store->getCOMPort(), "COM1");
    QCOMPARE(store->getPanSpeed(), 5);
    QCOMPARE(store->getInvertPan(), false);
}

void SettingsStoreTest::unreadableFileGivesTheDefaults()
{
    StoreAlone store;
    store.store.reset();
    // A folder cannot be read as a file, whatever the user's rights.
    QVERIFY(QDir().mkpath(store.profile.settingsFile()));
    store.store.emplace();

    QCOMPARE(store->getCOMPort(), "COM1");
    QCOMPARE(store->getBaudRate(), 9600);
}

void SettingsStoreTest::valuesHoldInMemoryWhereTheFileCannotBeWritten()
{
    StoreAlone store;
    store.store.reset();
    QVERIFY(QDir().mkpath(store.profile.settingsFile()));
    store.store.emplace();

    store->setCOMPort("COM4");
    store->setPanSpeed(11);
    QCoreApplication::processEvents();

    QCOMPARE(store->getCOMPort(), "COM4");
    QCOMPARE(store->getPanSpeed(), 11);
    store.store.reset();
    store.store.emplace();
    QCOMPARE(store->getCOMPort(), "COM1");
}

void SettingsStoreTest::namesWrittenWithAnyQtAreReadAndKept_data()
{
    QTest::addColumn<QString>("file");
    for (const char* file : {"qt-5.15.8.ini", "qt-6.4.2.ini"})
        QTest::newRow(file) << SOURCE_DIR "/tests/settings/files/" + QString(file);
}

void SettingsStoreTest::namesWrittenWithAnyQtAreReadAndKept()
{
    QFETCH(QString, file);
    const QString names[] = {u8"Bühne", u8"舞台",         u8"🎥 Kamera",        "\"Altar\"",
                             "a, b; c", "  both ends  ",  "back\\slash \\x41", "@Home",
                             "100 %1",  "x=y\ttab\nline", "<h1>Altar</h1>",    "\x7f\x01",
                             ""};
    StoreAlone store;
    QByteArray stored = contentOf(file);

    // As it was stored, then stored again by the Qt at hand.
    for (const int speed : {1, 2}) {
        // With a line more: Qt takes a file with the time and size of one that it has read for that one.
        restartOn(store, stored + '\n');
        QCOMPARE(store->getCOMPort(), QString(u8"Bühne 1%/ü=\"x\""));
        int preset = FirstPreset;
        for (const QString& name : names) {
            QCOMPARE(store->getPresetName(preset), name);
            store->setPresetName(preset++, name);
        }
        QCOMPARE(store->getBaudRate(), 19200);
        QVERIFY(store->getInvertPan());
        store->setPanSpeed(speed);
        store.store.reset();
        stored = contentOf(store.profile.settingsFile());
    }
}

void SettingsStoreTest::fileThatIsNotUtf8IsReadAsLatin1AndKept()
{
    StoreAlone store;
    restartOn(store, "[General]\ncomport=COM1\nCOM1_1=K\xfc"
                     "che\nCOM1_2=\"\xc4ltar\"\n");
    QCOMPARE(store->getPresetName(1), QString(u8"Küche"));

    store->setPanSpeed(7);
    store.store.reset();
    store.store.emplace();

    QCOMPARE(store->getPresetName(1), QString(u8"Küche"));
    QCOMPARE(store->getPresetName(2), QString(u8"Ältar"));
}

void SettingsStoreTest::fileWithTheMarkOfUtf8IsReadAsUtf8()
{
    StoreAlone store;
    restartOn(store, u8"\uFEFF[General]\ncomport=COM1\nCOM1_1=Küche\n");
    QCOMPARE(store->getPresetName(1), QString(u8"Küche"));
}

void SettingsStoreTest::runAsAdminIsOnlyStored()
{
    StoreAlone store;

    store->setRunAsAdmin(true);
    QVERIFY(store->getRunAsAdmin());
    store->setRunAsAdmin(false);
    QVERIFY(!store->getRunAsAdmin());

    QCOMPARE(store.profile.osascriptRuns().size(), 0);
}

void SettingsStoreTest::storeHasNoParentAndNoSignals()
{
    StoreAlone store;
    const QMetaObject* meta = store->metaObject();

    QVERIFY(!store->parent());
    QCOMPARE(meta->className(), "AppSettingsManager");
    QCOMPARE(meta->methodCount(), meta->methodOffset());
    QCOMPARE(meta->propertyCount(), meta->propertyOffset());
}

QTEST_APPLESS_MAIN(SettingsStoreTest)

#include "SettingsStoreTest.moc"
