#include "soak/Soak.h"
#include "support/Desk.h"
#include "support/Frames.h"
#include "support/OrdinaryUser.h"
#include "support/StoreAlone.h"

#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QRandomGenerator>

#include <csignal>
#include <cstdio>
#include <sys/resource.h>

namespace {

constexpr char WriterArgument[] = "--change-settings";
constexpr char CompleteFile[] = "[General]\n"
                                "comport=%1\n"
                                "baudrate=19200\n"
                                "panspeed=17\n"
                                "tiltspeed=12\n"
                                "zoomspeed=6\n"
                                "invertpan=true\n"
                                "inverttilt=true\n"
                                "startuppreset=63\n"
                                "isstartuppreset=true\n"
                                "runonstartup=true\n"
                                "runasadmin=true\n";
constexpr const char* IntKeys[] = {"baudrate", "panspeed", "tiltspeed", "zoomspeed", "startuppreset"};
constexpr const char* BoolKeys[] = {"invertpan", "inverttilt", "isstartuppreset", "runonstartup",
                                    "runasadmin"};
constexpr const char* OddValues[] = {
    "fast",  "",     "-1",   "0",    "40",     "99999999999999999999", "-99999999999999999999", "4294967301",
    "1e3",   "0x12", "5.7",  "TRUE", "no",     "2147483648",           "18446744073709551621",  "false",
    "False", "True", "null", "1 2",  "\\x263a"};
constexpr int WholeNames = 64;
constexpr int FirstGeneration = 100000;

/** Makes damaged settings files. */
class Damage
{
public:
    explicit Damage(const QString& port)
        : whole(QString(CompleteFile).arg(port).toUtf8())
    {
    }

    /** Random bytes. */
    QByteArray noise()
    {
        QByteArray bytes = random.bounded(2) == 0 ? QByteArray("[General]\n") : QByteArray();
        for (int size = random.bounded(2000); size > 0; --size)
            bytes += static_cast<char>(random.bounded(256));
        return bytes;
    }

    /** A whole file with some bytes changed, but none to zero: Qt warns about a zero byte in a port name. */
    QByteArray flipped()
    {
        QByteArray bytes = whole;
        for (int count = random.bounded(1, 20); count > 0; --count)
            bytes[random.bounded(bytes.size())] = static_cast<char>(random.bounded(1, 256));
        return bytes;
    }

    /** The beginning of a whole file. */
    QByteArray truncated() { return whole.left(random.bounded(whole.size())); }

    /** A file with values of the wrong kind, and some missing. */
    QByteArray mistyped()
    {
        QByteArray bytes = "[General]\n";
        const auto mistype = [this, &bytes](const char* key) {
            if (random.bounded(8) > 0)
                bytes += QByteArray(key) + '=' + OddValues[random.bounded(int(std::size(OddValues)))] + '\n';
        };
        std::for_each(std::begin(IntKeys), std::end(IntKeys), mistype);
        std::for_each(std::begin(BoolKeys), std::end(BoolKeys), mistype);
        return bytes;
    }

    /** A whole file among thousands of unknown keys, one of them a megabyte long. */
    QByteArray crowded()
    {
        QByteArray bytes = whole;
        for (int key = 0; key < 5000; ++key)
            bytes += "key" + QByteArray::number(random.generate()) + '=' + QByteArray::number(key) + '\n';
        return bytes + "long=" + QByteArray(1024 * 1024, 'x') + '\n';
    }

    QByteArray any()
    {
        const int kind = random.bounded(100);
        return kind < 25   ? noise()
               : kind < 50 ? flipped()
               : kind < 74 ? truncated()
               : kind < 99 ? mistyped()
                           : crowded();
    }

private:
    const QByteArray whole;
    QRandomGenerator random{1};
};

/** The values that the program must use: each is the stored value as QVariant converts it, or the default. */
class ExpectedSettings
{
public:
    explicit ExpectedSettings(const QString& file)
        : stored(file, QSettings::IniFormat)
    {
    }

    QString difference(AppSettingsManager& store) const
    {
        QStringList wrong;
        const auto compare = [&wrong](const QString& key, const QVariant& found, const QVariant& expected) {
            if (found != expected)
                wrong += key + " is " + found.toString() + ", not " + expected.toString();
        };
        compare("comport", store.getCOMPort(), text("comport", "COM1"));
        compare("baudrate", store.getBaudRate(), number("baudrate", 9600));
        compare("panspeed", store.getPanSpeed(), number("panspeed", 5));
        compare("tiltspeed", store.getTiltSpeed(), number("tiltspeed", 5));
        compare("zoomspeed", store.getZoomSpeed(), number("zoomspeed", 5));
        compare("startuppreset", store.getStartUpPreset(), number("startuppreset", 1));
        compare("invertpan", store.getInvertPan(), isOn("invertpan"));
        compare("inverttilt", store.getInvertTilt(), isOn("inverttilt"));
        compare("isstartuppreset", store.getIsStartUpPreset(), isOn("isstartuppreset"));
        compare("runonstartup", store.getRunOnStartUp(), isOn("runonstartup"));
        compare("runasadmin", store.getRunAsAdmin(), isOn("runasadmin"));
        for (const int preset : {1, 9, 64}) {
            const QString key = text("comport", "COM1") + '_' + QString::number(preset);
            compare(key, store.getPresetName(preset), text(key, "Preset" + QString::number(preset)));
        }
        return wrong.join(", ");
    }

private:
    QString text(const QString& key, const QString& byDefault) const
    {
        return stored.contains(key) ? stored.value(key).toString() : byDefault;
    }

    int number(const char* key, int byDefault) const
    {
        return stored.contains(key) ? stored.value(key).toInt() : byDefault;
    }

    bool isOn(const char* key) const { return stored.contains(key) && stored.value(key).toBool(); }

    QSettings stored;
};

/** Limits the size of every file that this process writes, as a full disk does. */
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
        getrlimit(RLIMIT_FSIZE, &before);
        const rlimit limit{bytes, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }

    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before); }
    Q_DISABLE_COPY(FullDisk)

private:
    rlimit before{};
};

/** Changes every setting again and again, and prints after each round which generation is in the file. */
int changeSettings(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("Vantrel");
    AppSettingsManager store;
    for (int generation = qMax(store.getBaudRate(), FirstGeneration) + 1;; ++generation) {
        for (const auto set : {&AppSettingsManager::setBaudRate, &AppSettingsManager::setPanSpeed,
                               &AppSettingsManager::setTiltSpeed, &AppSettingsManager::setZoomSpeed,
                               &AppSettingsManager::setStartUpPreset})
            (store.*set)(generation);
        for (int preset = 1; preset <= WholeNames; ++preset)
            store.setPresetName(preset, QString("Name %1").arg(generation).repeated(10));
        QCoreApplication::processEvents();
        if (std::printf("%d\n", generation) < 0 || std::fflush(stdout) != 0)
            return 1;
    }
}

/** The generation of the settings in the file; -1 if they are not all of one generation. */
int generationIn(const QString& file)
{
    const QSettings settings(file, QSettings::IniFormat);
    const int generation = settings.value("baudrate").toInt();
    bool isWhole = settings.status() == QSettings::NoError;
    for (const char* key : IntKeys)
        isWhole = isWhole && settings.value(key).toInt() == generation;
    for (int preset = 1; preset <= WholeNames; ++preset) {
        isWhole = isWhole && settings.value("COM1_" + QString::number(preset)).toString() ==
                                 QString("Name %1").arg(generation).repeated(10);
    }
    return isWhole ? generation : -1;
}

} // namespace

/** Damaged settings files, and disks that are full or read-only. */
class SettingsSoak : public QObject
{
    Q_OBJECT

private slots:

    void aDamagedFileStartsTheProgramWithWhatItStillHolds()
    {
        const int count = rounds(60, 10000);
        // Use a link: a damaged name of a pseudo-terminal could be that of another one on this machine.
        const CameraEnd camera;
        const QTemporaryDir devices;
        const QString port = devices.filePath("camera");
        QVERIFY(QFile::link(camera.portName(), port));
        Damage damage(port);
        for (int file = 0; file < count; ++file) {
            PrivateProfile profile;
            MessageBoxWatcher user;
            profile.createFolder();
            const QByteArray content = damage.any();
            writeFile(profile.settingsFile(), content);
            const ExpectedSettings expected(profile.settingsFile());

            Program program;
            const QString difference = expected.difference(*program.app.settingsManager);
            QVERIFY2(difference.isEmpty(), qPrintable(difference + " with " + content.left(3000).toHex()));
            QVERIFY(program.app.mainWin->isVisible());
            QVERIFY(user.texts().size() <= 1);
        }
        qInfo("programs started with damaged settings: %d", count);
    }

    void aKilledProgramLeavesTheOldOrTheNewSettings()
    {
        const int count = rounds(20, 1000);
        QRandomGenerator random(1);
        PrivateProfile profile;
        const QString lock = profile.settingsFile() + ".lock";
        int changes = 0;
        int emptyLocks = 0;
        for (int round = 0; round < count; ++round) {
            QProcess writer;
            writer.start("/proc/self/exe", {WriterArgument});
            QVERIFY(writer.waitForReadyRead());
            QThread::usleep(static_cast<unsigned long>(random.bounded(20000)));
            writer.kill();
            QVERIFY(writer.waitForFinished());

            const int reported = writer.readAllStandardOutput().trimmed().split('\n').constLast().toInt();
            const int found = generationIn(profile.settingsFile());
            QVERIFY2(found == reported || found == reported + 1,
                     qPrintable(QString("%1 was reported, %2 found").arg(reported).arg(found)));
            changes = found - FirstGeneration;

            // Counted because the next writer waits 30 seconds for the owner of such a lock.
            if (QFileInfo::exists(lock) && fileContent(lock).isEmpty())
                ++emptyLocks;
        }
        qInfo("killed %d times during %d changes of the settings: the file was whole each time; the lock was "
              "left without its owner %d times",
              count, changes, emptyLocks);
        QVERIFY(changes > count);
    }

    void anUnwritableFolderDoesNotMatter()
    {
        const OrdinaryUser user;
        Desk desk;
        const QByteArray oldSettings = fileContent(desk.profile.settingsFile());
        QVERIFY(QFile::setPermissions(desk.profile.folder(), QFile::ReadOwner | QFile::ExeOwner));
        QVERIFY(!QFile(desk.profile.folder() + "/new").open(QIODevice::WriteOnly));

        changesStayInForceAndTheCameraIsSteered(desk);
        QCOMPARE(fileContent(desk.profile.settingsFile()), oldSettings);
        QCOMPARE(desk.profile.log(), QStringList());
        QFile::setPermissions(desk.profile.folder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

#if QT_VERSION_MAJOR < 6
    // Qt 6 reads every file as UTF-8.
    void aReadOnlyFileThatIsNotUtf8IsReadAsLatin1()
    {
        StoreAlone store;
        store.store.reset();
        store.profile.createFolder();
        writeFile(store.profile.settingsFile(), "[General]\nCOM1_1=K\xfc"
                                                "che\n");
        const OrdinaryUser user;
        QFile::setPermissions(store.profile.settingsFile(), QFile::ReadOwner);
        QFile::setPermissions(store.profile.folder(), QFile::ReadOwner | QFile::ExeOwner);

        store.store.emplace();
        QCOMPARE(store->getPresetName(1), QString(u8"Küche"));
        QFile::setPermissions(store.profile.folder(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
#endif

    void aFolderThatCannotBeMadeDoesNotMatter()
    {
        Desk desk;
        QVERIFY(QDir(desk.profile.folder()).removeRecursively());
        writeFile(desk.profile.folder(), "a file where the folder should be");

        changesStayInForceAndTheCameraIsSteered(desk);
        QCOMPARE(fileContent(desk.profile.folder()), QByteArray("a file where the folder should be"));
    }

    void aFullDiskDoesNotMatter()
    {
        Desk desk;
        const QByteArray oldSettings = fileContent(desk.profile.settingsFile());
        writeFile(desk.profile.logFile(), "an old line\n");
        const FullDisk disk(0);
        QVERIFY(!QFile(desk.profile.logFile()).resize(100));

        changesStayInForceAndTheCameraIsSteered(desk);
        QCOMPARE(fileContent(desk.profile.settingsFile()), oldSettings);
        QCOMPARE(fileContent(desk.profile.logFile()), QByteArray("an old line\n"));
    }

    // If only a part of the settings file fits on the disk, Qt 5.15 keeps this part. So the file is not
    // checked here.
    void aDiskThatFillsUpDoesNotMatterToTheCamera()
    {
        constexpr int room = 4096;
        Desk desk({{"filler", QString(room, 'x')}});
        writeFile(desk.profile.logFile(), QByteArray(room, 'x'));
        const FullDisk disk(room);

        changesStayInForceAndTheCameraIsSteered(desk);
        QCOMPARE(QFileInfo(desk.profile.logFile()).size(), room);
    }

    void aFolderInPlaceOfTheLogDoesNotMatter()
    {
        Desk desk;
        QVERIFY(QDir().mkpath(desk.profile.logFile()));

        changesStayInForceAndTheCameraIsSteered(desk);
        QVERIFY(QFileInfo(desk.profile.logFile()).isDir());
    }

    void aHugeLogDoesNotMatter()
    {
        constexpr qint64 twoGigabytes = 2LL * 1024 * 1024 * 1024;
        Desk desk;
        QFile log(desk.profile.logFile());
        QVERIFY(log.open(QIODevice::ReadWrite) && log.resize(twoGigabytes));

        QElapsedTimer clock;
        clock.start();
        changesStayInForceAndTheCameraIsSteered(desk);
        qInfo("steering with a log of 2 GiB: %lld ms", clock.elapsed());
        QVERIFY(log.seek(twoGigabytes));
        QCOMPARE(log.readAll(), QByteArray("MoveUp\nMoveStop\nMoveUp\nMoveStop\n"));
    }

private:
    static void changesStayInForceAndTheCameraIsSteered(Desk& desk)
    {
        auto* up = desk.find<QPushButton>("upBtn");
        QTest::mouseClick(up, Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Up));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));

        desk.settings()->setPanSpeed(7);
        QCoreApplication::processEvents();
        QCOMPARE(desk.settings()->getPanSpeed(), 7);
        QTest::mouseClick(up, Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), QByteArray("81 01 06 01 07 05 03 01 ff"));
        QCOMPARE(desk.camera.nextFrame(), QByteArray("81 01 06 01 07 05 03 03 ff"));
        QCOMPARE(desk.user.texts(), QStringList());
    }
};

int main(int argc, char** argv)
{
    if (argc > 1 && qstrcmp(argv[1], WriterArgument) == 0)
        return changeSettings(argc, argv);

    SettingsSoak test;
    return QTest::qExec(&test, argc, argv);
}

#include "SettingsSoak.moc"
