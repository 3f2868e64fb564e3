#include "support/StoreAlone.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QStandardPaths>
#include <QtTest>

#include <climits>
#include <functional>
#include <vector>

namespace {

struct Setting
{
    QByteArray key;
    std::function<QVariant(AppSettingsManager&)> get;
    std::function<void(AppSettingsManager&, const QVariant&)> set;
    QVariant byDefault;
};

using Store = AppSettingsManager;

Setting number(const char* key, int (Store::*get)(), void (Store::*set)(int), int byDefault)
{
    return {key, [get](Store& store) { return (store.*get)(); },
            [set](Store& store, const QVariant& value) { (store.*set)(value.toInt()); }, byDefault};
}

Setting choice(const char* key, bool (Store::*get)(), void (Store::*set)(bool))
{
    return {key, [get](Store& store) { return (store.*get)(); },
            [set](Store& store, const QVariant& value) { (store.*set)(value.toBool()); }, false};
}

Setting presetName(const char* key, int preset, const char* byDefault)
{
    return {key, [preset](Store& store) { return store.getPresetName(preset); },
            [preset](Store& store, const QVariant& name) { store.setPresetName(preset, name.toString()); },
            byDefault};
}

std::vector<Setting> numbers()
{
    return {
        number("baudrate", &Store::getBaudRate, &Store::setBaudRate, 9600),
        number("panspeed", &Store::getPanSpeed, &Store::setPanSpeed, 5),
        number("tiltspeed", &Store::getTiltSpeed, &Store::setTiltSpeed, 5),
        number("zoomspeed", &Store::getZoomSpeed, &Store::setZoomSpeed, 5),
        number("startuppreset", &Store::getStartUpPreset, &Store::setStartUpPreset, 1),
    };
}

std::vector<Setting> choices()
{
    return {
        choice("invertpan", &Store::getInvertPan, &Store::setInvertPan),
        choice("inverttilt", &Store::getInvertTilt, &Store::setInvertTilt),
        choice("isstartuppreset", &Store::getIsStartUpPreset, &Store::setIsStartUpPreset),
        choice("runonstartup", &Store::getRunOnStartUp, &Store::setRunOnStartUp),
        choice("runasadmin", &Store::getRunAsAdmin, &Store::setRunAsAdmin),
    };
}

std::vector<Setting> texts()
{
    return {
        {"comport", [](Store& store) { return store.getCOMPort(); },
         [](Store& store, const QVariant& port) { store.setCOMPort(port.toString()); }, "COM1"},
        presetName("COM1_1", 1, "Preset1"),
        presetName("COM1_64", 64, "Preset64"),
        presetName("COM1_-1", -1, "Preset-1"),
    };
}

// Closes the store and opens it again with a settings file of these lines.
void restartOn(StoreAlone& store, const QByteArray& lines)
{
    store.store.reset();
    store.profile.createFolder();
    {
        QFile file(store.profile.settingsFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(lines), lines.size());
    }
    store.store.emplace();
}

} // namespace

Q_DECLARE_METATYPE(Setting)

/** The settings file: its keys, their defaults, and files with faults. */
class SettingsStoreTest : public QObject
{
    Q_OBJECT

private slots:

    void aSettingHasItsDefaultAndIsStoredUncheckedUnderItsKey_data()
    {
        QTest::addColumn<Setting>("setting");
        QTest::addColumn<QVariant>("value");
        const auto row = [](const Setting& setting, const QVariant& value) {
            QTest::addRow("%s=%s", setting.key.constData(), qPrintable(value.toString())) << setting << value;
        };
        for (const Setting& setting : numbers()) {
            for (const int value : {7, 0, -1, INT_MAX, INT_MIN})
                row(setting, value);
        }
        for (const Setting& setting : choices()) {
            row(setting, true);
            row(setting, false);
        }
        for (const Setting& setting : texts()) {
            row(setting, "cu.usbserial-1410");
            row(setting, "");
        }
    }

    void aSettingHasItsDefaultAndIsStoredUncheckedUnderItsKey()
    {
        QFETCH(Setting, setting);
        QFETCH(QVariant, value);
        StoreAlone store;
        QCOMPARE(setting.get(*store.store), setting.byDefault);

        setting.set(*store.store, value);
        QCOMPARE(setting.get(*store.store), value);
        store.store.reset();

        QCOMPARE(fileContent(store.profile.settingsFile()),
                 "[General]\n" + setting.key + '=' + value.toString().toUtf8() + '\n');
        store.store.emplace();
        QCOMPARE(setting.get(*store.store), value);
        QCOMPARE(store.profile.osascriptRuns().isEmpty(), setting.key != "runonstartup");
    }

    void aHandWrittenValueIsReadUnchecked_data()
    {
        QTest::addColumn<int>("value");
        QTest::addColumn<bool>("isOn");
        QTest::newRow("fast") << 0 << true;
        QTest::newRow("") << 0 << false;
        QTest::newRow("0") << 0 << false;
        QTest::newRow("1") << 1 << true;
        QTest::newRow("40") << 40 << true;
        QTest::newRow("-3") << -3 << true;
        QTest::newRow("5.5") << 0 << true;
        QTest::newRow("true") << 0 << true;
        QTest::newRow("FALSE") << 0 << false;
    }

    void aHandWrittenValueIsReadUnchecked()
    {
        QFETCH(int, value);
        QFETCH(bool, isOn);
        StoreAlone store;
        QByteArray lines = "[General]\n";
        for (const auto& settings : {numbers(), choices()}) {
            for (const Setting& setting : settings)
                lines += setting.key + '=' + QTest::currentDataTag() + '\n';
        }
        restartOn(store, lines);

        for (const Setting& setting : numbers())
            QCOMPARE(setting.get(*store.store), QVariant(value));
        for (const Setting& setting : choices())
            QCOMPARE(setting.get(*store.store), QVariant(isOn));
    }

    void readingMakesNoFile()
    {
        StoreAlone store;

        for (const auto& settings : {numbers(), choices(), texts()}) {
            for (const Setting& setting : settings)
                setting.get(*store.store);
        }
        store.store.reset();

        QVERIFY(!QFile::exists(store.profile.folder()));
    }

    void valueIsReadAtOnceAndWrittenToTheFileLater()
    {
        StoreAlone store;

        store->setBaudRate(19200);

        QCOMPARE(store->getBaudRate(), 19200);
        QVERIFY(!QFile::exists(store.profile.settingsFile()));
        QTRY_COMPARE(fileContent(store.profile.settingsFile()), "[General]\nbaudrate=19200\n");
    }

    void lockOfAKilledProgramDelaysNothing()
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

        QCOMPARE(fileContent(store.profile.settingsFile()), "[General]\nbaudrate=19200\n");
        // QSettings would wait 30 seconds.
        QVERIFY(elapsed.elapsed() < 10000);
    }

    void lockOfARunningProgramIsLeftAlone()
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

    void settingOneValueKeepsTheOthers()
    {
        StoreAlone store;
        restartOn(store, "[General]\ncomport=COM2\npanspeed=9\nsomething=else\n");

        store->setPanSpeed(10);
        store.store.reset();

        QCOMPARE(fileContent(store.profile.settingsFile()),
                 "[General]\ncomport=COM2\npanspeed=10\nsomething=else\n");
    }

    void presetNamesBelongToThePortSetting()
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

        QCOMPARE(fileContent(store.profile.settingsFile()),
                 "[General]\nAUTO_2=Stage\nCOM1_2=Desk\ncomport=COM1\n");
    }

    void pathsEndInASeparator()
    {
        StoreAlone store;

        QCOMPARE(store->getDefaultPath(), QDir::toNativeSeparators(store.profile.folder() + '/'));
        QCOMPARE(store->getApplicationPath(),
                 QDir::toNativeSeparators(QCoreApplication::applicationFilePath() + '/'));
    }

    void withoutAReadableOrWritableFileValuesLastInMemory()
    {
        StoreAlone store;
        store.store.reset();
        // A folder cannot be read or written as a file, whatever the user's rights.
        QVERIFY(QDir().mkpath(store.profile.settingsFile()));
        store.store.emplace();
        QCOMPARE(store->getCOMPort(), "COM1");

        store->setCOMPort("COM4");
        store->setPanSpeed(11);
        QCoreApplication::processEvents();

        QCOMPARE(store->getCOMPort(), "COM4");
        QCOMPARE(store->getPanSpeed(), 11);
        store.store.reset();
        store.store.emplace();
        QCOMPARE(store->getCOMPort(), "COM1");
    }

    void namesWrittenWithAnyQtAreReadAndKept_data()
    {
        QTest::addColumn<QString>("file");
        for (const char* file : {"qt-5.15.8.ini", "qt-6.4.2.ini"})
            QTest::newRow(file) << SOURCE_DIR "/tests/settings/files/" + QString(file);
    }

    void namesWrittenWithAnyQtAreReadAndKept()
    {
        QFETCH(QString, file);
        const QString names[] = {u8"Bühne", u8"舞台",         u8"🎥 Kamera",        "\"Altar\"",
                                 "a, b; c", "  both ends  ",  "back\\slash \\x41", "@Home",
                                 "100 %1",  "x=y\ttab\nline", "<h1>Altar</h1>",    "\x7f\x01",
                                 ""};
        StoreAlone store;
        QByteArray stored = fileContent(file);

        // First the file as it is, then as this version of Qt has stored it.
        for (const int speed : {1, 2}) {
            // Add a line: QSettings does not read a file again while its time and size are the same.
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
            stored = fileContent(store.profile.settingsFile());
        }
    }

    void fileThatIsNotUtf8IsReadAsLatin1AndKept()
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

    void fileWithAByteOrderMarkIsReadAsUtf8()
    {
        StoreAlone store;
        restartOn(store, u8"\uFEFF[General]\ncomport=COM1\nCOM1_1=Küche\n");
        QCOMPARE(store->getPresetName(1), QString(u8"Küche"));
    }

    void storeDeclaresNoSignalsSlotsOrProperties()
    {
        const QMetaObject* meta = &Store::staticMetaObject;
        QCOMPARE(meta->methodCount(), meta->methodOffset());
        QCOMPARE(meta->propertyCount(), meta->propertyOffset());
    }
};

QTEST_APPLESS_MAIN(SettingsStoreTest)
#include "SettingsStoreTest.moc"
