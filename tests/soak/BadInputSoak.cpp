#include "soak/Soak.h"
#include "support/Desk.h"
#include "support/Frames.h"

#include <QLineEdit>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSerialPort>

#include <limits>

namespace {

/** The errors that a QSerialPort reports when it is opened with these settings. */
QStringList openErrors(const QString& name, int baudRate)
{
    QSerialPort port;
    QStringList errors;
    QObject::connect(&port, &QSerialPort::errorOccurred, &port, [&](QSerialPort::SerialPortError error) {
        if (error != QSerialPort::NoError)
            errors.append(port.errorString());
    });
    port.setPortName(name);
    port.setBaudRate(baudRate);
    port.open(QIODevice::ReadWrite);
    return errors;
}

/** A random text: letters of any script, control characters, halves of surrogate pairs. */
class Texts
{
public:
    QString any()
    {
        QString text;
        for (int size = random.bounded(40); size > 0; --size) {
            const int limits[] = {0x80, 0x20, 0x3000, 0x10000};
            text += QChar(static_cast<ushort>(random.bounded(1, limits[random.bounded(4)])));
        }
        return text;
    }

    int anyNumber() { return static_cast<int>(random.generate()); }

private:
    QRandomGenerator random{1};
};

} // namespace

/** Settings and fields have values that nobody should ever enter. */
class BadInputSoak : public QObject
{
    Q_OBJECT

private slots:

    void aPortNameThatIsNoneEndsInThePortsOwnError_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("blank") << " ";
        QTest::newRow("4000 characters") << QString(4000, 'x');
        QTest::newRow("4000 characters of a path") << '/' + QString(3999, 'x');
        QTest::newRow("slashes") << "///";
        QTest::newRow("dots") << "../../../../etc/passwd";
        QTest::newRow("a folder") << "/";
        QTest::newRow("a file") << SOURCE_DIR "/CMakeLists.txt";
        QTest::newRow("no terminal") << "/dev/null";
        QTest::newRow("quotes") << "\"'`\"";
        QTest::newRow("backslashes") << R"(\\.\COM1)";
        QTest::newRow("new lines") << "tty\nUSB0\r\n";
        QTest::newRow("a format") << "%s%n%1";
        QTest::newRow("not ASCII") << QString::fromUtf8("tty\u263a\u00e9\u4e2d");
        QTest::newRow("half a character") << QString(QChar(0xD800));
        QTest::newRow("section") << "[General]";
        QTest::newRow("lower case") << "auto";
    }

    void aPortNameThatIsNoneEndsInThePortsOwnError()
    {
        QFETCH(QString, name);
        Desk desk;
        desk.settings()->setPresetName(3, "Stage");
        desk.find<QPushButton>("connectBtn")->click();
        desk.settings()->setCOMPort(name);
        const QStringList errors = openErrors(name, 9600);
        QVERIFY(!errors.isEmpty());

        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.user.texts(), errors);
        QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), QString("Connect"));
        QCOMPARE(desk.settings()->getCOMPort(), name);
        theCameraIsStillThere(desk);
        QCOMPARE(desk.settings()->getPresetName(3), QString("Stage"));
    }

    void aBaudRateThatIsNoneEndsInThePortsOwnError_data()
    {
        QTest::addColumn<int>("baudRate");
        for (const int rate : {0, -1, -9600, std::numeric_limits<int>::min(), 1, 7, 9601, 250000, 100000000,
                               std::numeric_limits<int>::max()})
            QTest::addRow("%d", rate) << rate;
    }

    void aBaudRateThatIsNoneEndsInThePortsOwnError()
    {
        QFETCH(int, baudRate);
        Desk desk;
        desk.find<QPushButton>("connectBtn")->click();
        desk.settings()->setBaudRate(baudRate);
        // A line of its own: a port that fails at its baud rate leaves a pseudo-terminal to itself alone.
        const CameraEnd elsewhere;
        const QStringList errors = openErrors(elsewhere.portName(), baudRate);

        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.user.texts(), errors);
        QCOMPARE(desk.link()->isConnected(), errors.isEmpty());
        QCOMPARE(desk.settings()->getBaudRate(), baudRate);
        if (errors.isEmpty())
            desk.find<QPushButton>("connectBtn")->click();
        desk.settings()->setBaudRate(9600);
        // The camera's end lifts the exclusive use when it reads.
        QCOMPARE(desk.camera.pending(), QByteArray());
        theCameraIsStillThere(desk);
    }

    void anyPresetNumberGoesOutAsItsRemainder()
    {
        Desk desk;
        Texts texts;
        QVector<int> numbers{
            0, -1, 255, 256, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
        for (int count = rounds(1000, 100000); count > 0; --count)
            numbers.append(texts.anyNumber());
        for (const int number : std::as_const(numbers)) {
            desk.link()->callPreset(number);
            const auto byte = static_cast<char>(number % 255);
            QCOMPARE(desk.camera.nextFrame().left(17), "81 01 04 3f 02 " + QByteArray(1, byte).toHex());
            // -1 is sent as FF, so the frame ends one byte early.
            if (byte == '\xFF')
                QCOMPARE(desk.camera.nextFrame(), QByteArray("ff"));
        }
        qInfo("presets called by any number: %lld", static_cast<qint64>(numbers.size()));
    }

    void anyTextInTheNumberFieldIsANumberOrIsRefused()
    {
        Desk desk;
        Texts texts;
        const int count = rounds(100, 5000);
        for (int round = 0; round < count; ++round) {
            const QString text = texts.any();
            desk.find<QLineEdit>("presetEdit")->setText(text);
            const int number = desk.find<QLineEdit>("presetEdit")->text().toInt();
            const auto boxes = desk.user.texts().size();

            desk.find<QPushButton>("callBtn")->click();
            const bool isRefused = desk.user.texts().size() > boxes;
            QCOMPARE(isRefused, number < 1 || number > 64);
            if (isRefused)
                QCOMPARE(desk.user.texts().constLast(), QString("Please enter number between 1 and 64."));
            else
                QVERIFY(desk.camera.nextFrame().startsWith("81 01 04 3f 02"));
        }
        QCOMPARE(desk.camera.pending(), QByteArray());
        qInfo("texts in the number field: %d", count);
    }

    void anyTextIsKeptAsAPresetsName()
    {
        const int count = rounds(100, 5000);
        PrivateProfile profile;
        Texts texts;
        QStringList names;
        {
            AppSettingsManager store;
            for (int preset = 1; preset <= count; ++preset) {
                // Half of a surrogate pair is no character, and Qt 6 does not store it.
                names.append(QString::fromUtf8(texts.any().toUtf8()));
                store.setPresetName(preset, names.constLast());
            }
            store.setPresetName(0, QString(100000, 'x'));
        }
        // Read the file as the next run would: QSettings caches by path, and this path is another one.
        QVERIFY(QFile::rename(profile.folder(), profile.folder() + "-moved"));
        const QSettings moved(profile.folder() + "-moved/setting.ini", QSettings::IniFormat);
        for (int preset = 1; preset <= count; ++preset)
            QCOMPARE(moved.value("COM1_" + QString::number(preset)).toString(), names.at(preset - 1));
        QCOMPARE(moved.value("COM1_0").toString().size(), 100000);
        qInfo("names of any text kept in the file: %d", count);
    }

    void anyTextIsKeptAsAPort()
    {
        const int count = rounds(200, 20000);
        PrivateProfile profile;
        AppSettingsManager store;
        Texts texts;
        for (int round = 0; round < count; ++round) {
            const QString port = texts.any();
            store.setCOMPort(port);
            store.setPresetName(2, "Name " + QString::number(round));
            QCOMPARE(store.getCOMPort(), port);
            QCOMPARE(store.getPresetName(2), "Name " + QString::number(round));
            QCOMPARE(store.getBaudRate(), 9600);
        }
        qInfo("ports of any text, each with its own preset names: %d", count);
    }

private:
    static void theCameraIsStillThere(Desk& desk)
    {
        desk.settings()->setCOMPort(desk.camera.portName());
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), QString("Disconnect"));
        QTest::mouseClick(desk.find<QPushButton>("upBtn"), Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Up));
        QCOMPARE(desk.camera.nextFrame(), QByteArray(Stop));
    }
};

QTEST_APPLESS_MAIN(BadInputSoak)
#include "BadInputSoak.moc"
