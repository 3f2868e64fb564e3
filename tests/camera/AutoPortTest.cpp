#include "SerialCamera.h"
#include "UsbBus.h"
#include "support/Desk.h"
#include "support/Frames.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSerialPort>
#include <QSerialPortInfo>
#include <QStatusBar>

using DeviceIds = QVector<DeviceId>;
Q_DECLARE_METATYPE(DeviceIds)

namespace {

constexpr DeviceId WchCh340{"1a86", "7523"};
constexpr DeviceId FtdiFtX{"0403", "6015"};
constexpr DeviceId FtdiFt232R{"0403", "6001"};
// The vendor of one adapter with the product of the other.
constexpr DeviceId WchVendorFtdiProduct{"1a86", "6015"};
constexpr DeviceId FtdiVendorWchProduct{"0403", "7523"};
constexpr DeviceId WchPciCard{"4348", "3253"};

constexpr int None = -1;

QStringList listedPorts()
{
    QStringList names;
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo& port : ports)
        names.append(port.portName());
    return names;
}

/** A mocked computer on which the program runs with the port setting "AUTO"; no adapter is plugged in yet. */
class AutoDesk
{
public:
    void click(const char* button) const { desk.find<QPushButton>(button)->click(); }

    QString state() const
    {
        return desk.find<QPushButton>("connectBtn")->text() + ", " +
               desk.find<QStatusBar>("statusBar")->findChild<QLabel*>()->text();
    }

    UsbBus bus;
    Desk desk{{{"comport", "AUTO"}}};
};

} // namespace

/** The port setting "AUTO", and the list of ports, on a mocked USB bus that the system enumerates. */
class AutoPortTest : public QObject
{
    Q_OBJECT

private slots:

    void theFirstListedAdapterIsFoundAmongOtherPorts_data()
    {
        QTest::addColumn<DeviceIds>("plugged");
        QTest::addColumn<int>("taken");
        const DeviceIds others{FtdiFt232R, WchVendorFtdiProduct, FtdiVendorWchProduct};
        QTest::newRow("WCH CH340") << others + DeviceIds{WchCh340, FtdiFt232R} << 3;
        QTest::newRow("FTDI FT-X") << others + DeviceIds{FtdiFtX, FtdiFt232R} << 3;
        QTest::newRow("WCH CH340 before FTDI FT-X") << DeviceIds{WchCh340, FtdiFtX} << 0;
        QTest::newRow("FTDI FT-X before WCH CH340") << DeviceIds{FtdiFtX, WchCh340} << 0;
        QTest::newRow("two WCH CH340") << DeviceIds{WchCh340, WchCh340} << 0;
        QTest::newRow("other ports only") << others << None;
    }

    void theFirstListedAdapterIsFoundAmongOtherPorts()
    {
        QFETCH(DeviceIds, plugged);
        QFETCH(int, taken);
        AutoDesk computer;
        QCOMPARE(listedPorts(), QStringList());
        QCOMPARE(computer.desk.link()->getCOMPortWhenAuto(), "COM1");
        computer.bus.addPciPort("ttyS4", WchPciCard);
        computer.bus.addBuiltInPort("ttyS0");
        std::vector<CameraEnd> cameras(std::size_t(plugged.size()));
        // Plug in the last one first, so that the list is not in the order of the ports' numbers.
        QStringList ports;
        for (int i = int(plugged.size()) - 1; i >= 0; --i)
            ports.prepend(computer.bus.plug("1-" + QByteArray::number(i + 1), plugged[i],
                                            cameras[std::size_t(i)].portName()));
        QCOMPARE(listedPorts(), QStringList({"ttyS4", "ttyS0"}) + ports);

        computer.click("connectBtn");

        const auto* port = computer.desk.link()->findChild<QSerialPort*>();
        QCOMPARE(port->portName(), taken == None ? "COM1" : ports[taken]);
        QCOMPARE(computer.desk.profile.log(), taken == None ? QStringList() : QStringList(ports[taken]));
        // One box at the start, and one more where there still is no adapter.
        QCOMPARE(computer.desk.user.boxes().size(), taken == None ? 2 : 1);
        QCOMPARE(computer.desk.settings()->getCOMPort(), "AUTO");
        if (taken == None) {
            QCOMPARE(computer.desk.user.texts().constLast(), port->errorString());
            QCOMPARE(computer.state(), "Connect, ");
            return;
        }
        QCOMPARE(computer.state(), "Disconnect, Connected to Port: AUTO\tBaudRate: 9600");
        computer.click("preset1Btn");
        QCOMPARE(cameras[std::size_t(taken)].nextFrame(), recallPreset(1));
    }

    void aPulledAdapterIsReportedOnceAndConnectFindsItAgain_data()
    {
        QTest::addColumn<bool>("nameIsTaken");
        QTest::newRow("with the same port name") << false;
        QTest::newRow("with another port name") << true;
    }

    void aPulledAdapterIsReportedOnceAndConnectFindsItAgain()
    {
        QFETCH(bool, nameIsTaken);
        AutoDesk computer;
        const QString name = computer.bus.plug("1-2", FtdiFtX, computer.desk.camera.portName());
        computer.click("connectBtn");

        computer.bus.unplug(name);
        computer.desk.camera.pull();
        QTRY_COMPARE(computer.state(), "Connect, Device disconnected");

        if (nameIsTaken)
            QCOMPARE(computer.bus.plug("1-1", FtdiFt232R), name);
        CameraEnd cameraAgain;
        const QString nameAgain = computer.bus.plug("1-2", FtdiFtX, cameraAgain.portName());
        QCOMPARE(nameAgain != name, nameIsTaken);
        computer.click("connectBtn");

        QCOMPARE(computer.state(), "Disconnect, Connected to Port: AUTO\tBaudRate: 9600");
        computer.click("preset1Btn");
        QCOMPARE(cameraAgain.nextFrame(), recallPreset(1));
        QCOMPARE(computer.desk.profile.log(), QStringList({name, nameAgain, "Call Preset1"}));
        QCOMPARE(computer.desk.user.boxes().size(), 2);
    }

    void portsAreListedInTheSystemsOrderAndTheChosenOneIsUsedAtTheNextConnect()
    {
        AutoDesk computer;
        CameraEnd pickedCamera;
        const QString picked = computer.bus.plug("1-2", FtdiFt232R, pickedCamera.portName());
        const QString found = computer.bus.plug("1-1", WchCh340, computer.desk.camera.portName());
        computer.bus.addBuiltInPort("ttyS0");
        computer.click("connectBtn");

        computer.click("settingsBtn");
        auto* ports = computer.desk.find<QComboBox>("comPortCombo");
        QStringList entries;
        for (int i = 0; i < ports->count(); ++i)
            entries.append(ports->itemText(i));
        QCOMPARE(entries, QStringList({"AUTO", "ttyS0", found, picked}));
        QTest::keyClick(ports, Qt::Key_End);
        computer.click("connectBtn");
        computer.click("connectBtn");

        QCOMPARE(computer.state(), "Disconnect, Connected to Port: " + picked + "\tBaudRate: 9600");
        computer.click("preset1Btn");
        QCOMPARE(pickedCamera.nextFrame(), recallPreset(1));
        QCOMPARE(computer.desk.camera.pending(), QByteArray());
        // Only a port that "AUTO" has found is logged.
        QCOMPARE(computer.desk.profile.log(), QStringList({found, "Call Preset1"}));
    }

    void theRunningProgramDrivesTheCameraOnItsAdapter()
    {
        PrivateProfile profile;
        profile.store("comport", "AUTO");
        profile.store("isstartuppreset", true);
        profile.store("startuppreset", 5);
        int argumentCount = 0;
        QCoreApplication eventLoop(argumentCount, nullptr);
        SerialCamera camera(ViscaCamera::BusyRules::Lenient, {}, {});
        QSignalSpy reports(&camera, SIGNAL(reported(QString)));
        QCOMPARE(camera.plugIn(), QString());
        const QString terminal = reports.constFirst().constFirst().toString().section(' ', -1);
        reports.clear();
        UsbBus bus;
        bus.plug("1-1", FtdiFt232R);
        const QString name = bus.plug("1-2", WchCh340, terminal);

        QProcess program;
        program.start(VANTREL_PATH, QStringList());

        // The program has to start first, on a busy machine.
        QTRY_VERIFY2_WITH_TIMEOUT(reports.size() == 2, qPrintable(program.readAllStandardError()), 30000);
        QCOMPARE(reports.at(0).constFirst().toString(), "<- 81 01 04 3F 02 05 FF  recall preset 5");
        QCOMPARE(reports.at(1).constFirst().toString().section("  ", 0, 0), "-> 90 61 41 FF");
        QTRY_COMPARE(profile.log(),
                     QStringList({name, "Call Preset5", "906141ff", "Analyze Buffer", "-90-61-41-ff-4"}));

        program.terminate();
        QVERIFY(program.waitForFinished());
        QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    }
};

QTEST_APPLESS_MAIN(AutoPortTest)
#include "AutoPortTest.moc"
