#include "SerialCamera.h"
#include "UsbBus.h"
#include "support/CameraEnd.h"
#include "support/Frames.h"
#include "support/MessageBoxWatcher.h"
#include "support/PrivateProfile.h"
#include "support/Program.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSerialPort>
#include <QSerialPortInfo>
#include <QStatusBar>

namespace {

constexpr DeviceId WchCh340{"1a86", "7523"};
constexpr DeviceId FtdiFtX{"0403", "6015"};
constexpr DeviceId FtdiFt232R{"0403", "6001"};
// The vendor of the one adapter with the product of the other.
constexpr DeviceId WchVendorFtdiProduct{"1a86", "6015"};
constexpr DeviceId FtdiVendorWchProduct{"0403", "7523"};
constexpr DeviceId WchPciCard{"4348", "3253"};

QStringList listedPorts()
{
    QStringList names;
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo& port : ports)
        names.append(port.portName());
    return names;
}

QSerialPort* port(const Program& program)
{
    return program.app.serial->findChild<QSerialPort*>();
}

QString connectButtonText(const Program& program)
{
    return program.find<QPushButton>("connectBtn")->text();
}

QString status(const Program& program)
{
    return program.app.mainWin->statusBar()->findChild<QLabel*>()->text();
}

void click(const Program& program, const char* button)
{
    QTest::mouseClick(program.find<QPushButton>(button), Qt::LeftButton);
}

} // namespace

Q_DECLARE_METATYPE(DeviceId)

/** The port setting "AUTO": the system's own enumeration finds the camera's adapter on a mocked USB bus. */
class AutoPortTest : public QObject
{
    Q_OBJECT

private slots:
    void anAdapterIsFoundAndItsPortLogged_data();
    void anAdapterIsFoundAndItsPortLogged();
    void theFirstListedAdapterWins_data();
    void theFirstListedAdapterWins();
    void otherPortsAreIgnored_data();
    void otherPortsAreIgnored();
    void withoutAnAdapterTheUserSeesTheErrorOfCom1_data();
    void withoutAnAdapterTheUserSeesTheErrorOfCom1();
    void anAdapterPluggedInLaterIsFoundAtTheNextConnect();
    void lowerCaseAutoIsAPortName();

    void theCameraIsDrivenThroughTheAdapter();
    void aPulledAdapterIsReportedOnceAndConnectFindsItAgain_data();
    void aPulledAdapterIsReportedOnceAndConnectFindsItAgain();
    void theSettingsDialogListsThePortsAfterAuto();
    void aPickedPortIsUsedAtTheNextConnect();

    void theRunningProgramDrivesTheCameraOnItsAdapter();
};

void AutoPortTest::anAdapterIsFoundAndItsPortLogged_data()
{
    QTest::addColumn<DeviceId>("id");
    QTest::newRow("WCH CH340") << WchCh340;
    QTest::newRow("FTDI FT-X") << FtdiFtX;
}

void AutoPortTest::anAdapterIsFoundAndItsPortLogged()
{
    QFETCH(DeviceId, id);
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    CameraEnd camera;
    UsbBus bus;
    const QString name = bus.plug("1-1", id, camera.portName());
    MessageBoxWatcher user;

    Program program;

    QCOMPARE(port(program)->portName(), name);
    QVERIFY(program.app.serial->isConnected());
    QCOMPARE(profile.log(), QStringList{name});
    QCOMPARE(user.texts(), QStringList());
}

void AutoPortTest::theFirstListedAdapterWins_data()
{
    QTest::addColumn<DeviceId>("first");
    QTest::addColumn<DeviceId>("second");
    QTest::newRow("WCH CH340 before FTDI FT-X") << WchCh340 << FtdiFtX;
    QTest::newRow("FTDI FT-X before WCH CH340") << FtdiFtX << WchCh340;
    QTest::newRow("two WCH CH340") << WchCh340 << WchCh340;
}

void AutoPortTest::theFirstListedAdapterWins()
{
    QFETCH(DeviceId, first);
    QFETCH(DeviceId, second);
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    CameraEnd firstCamera;
    CameraEnd secondCamera;
    UsbBus bus;
    // Plugged in first, the second adapter has the lower port number: only the list's own order counts.
    const QString secondPort = bus.plug("1-2", second, secondCamera.portName());
    const QString firstPort = bus.plug("1-1", first, firstCamera.portName());
    QVERIFY(secondPort < firstPort);
    QCOMPARE(listedPorts(), QStringList({firstPort, secondPort}));
    MessageBoxWatcher user;

    Program program;

    QVERIFY(program.app.serial->isConnected());
    QCOMPARE(profile.log(), QStringList{firstPort});
    program.app.serial->zoomStop();
    QCOMPARE(firstCamera.nextFrame(), QByteArray(ZoomStop));
    QCOMPARE(secondCamera.pending(), QByteArray());
    QCOMPARE(user.texts(), QStringList());
}

void AutoPortTest::otherPortsAreIgnored_data()
{
    anAdapterIsFoundAndItsPortLogged_data();
}

void AutoPortTest::otherPortsAreIgnored()
{
    QFETCH(DeviceId, id);
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    CameraEnd camera;
    UsbBus bus;
    bus.addPciPort("ttyS4", WchPciCard);
    bus.addBuiltInPort("ttyS0");
    const QString ftdi = bus.plug("1-1", FtdiFt232R);
    const QString wchFtdi = bus.plug("1-2", WchVendorFtdiProduct);
    const QString ftdiWch = bus.plug("1-3", FtdiVendorWchProduct);
    const QString adapter = bus.plug("1-4", id, camera.portName());
    const QString another = bus.plug("1-5", FtdiFt232R);
    QCOMPARE(listedPorts(), QStringList({"ttyS4", "ttyS0", ftdi, wchFtdi, ftdiWch, adapter, another}));
    MessageBoxWatcher user;

    Program program;

    QCOMPARE(port(program)->portName(), adapter);
    QVERIFY(program.app.serial->isConnected());
    QCOMPARE(profile.log(), QStringList{adapter});
    QCOMPARE(user.texts(), QStringList());
}

void AutoPortTest::withoutAnAdapterTheUserSeesTheErrorOfCom1_data()
{
    QTest::addColumn<bool>("otherPorts");
    QTest::newRow("no port at all") << false;
    QTest::newRow("other ports only") << true;
}

void AutoPortTest::withoutAnAdapterTheUserSeesTheErrorOfCom1()
{
    QFETCH(bool, otherPorts);
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    UsbBus bus;
    if (otherPorts) {
        bus.addPciPort("ttyS4", WchPciCard);
        bus.addBuiltInPort("ttyS0");
        bus.plug("1-1", FtdiFt232R);
        bus.plug("1-2", WchVendorFtdiProduct);
        bus.plug("1-3", FtdiVendorWchProduct);
    }
    QCOMPARE(listedPorts().size(), otherPorts ? 5 : 0);
    MessageBoxWatcher user;

    Program program;
    QSignalSpy errors(program.app.serial, SIGNAL(onDeviceError()));
    click(program, "connectBtn");

    QCOMPARE(port(program)->portName(), "COM1");
    // One box at the start, one for the click.
    QCOMPARE(user.boxes().size(), 2);
    QCOMPARE(user.boxes().constLast().title, "Vantrel");
    QCOMPARE(user.boxes().constLast().text, port(program)->errorString());
    QCOMPARE(errors.count(), 1);
    QCOMPARE(connectButtonText(program), "Connect");
    QCOMPARE(program.app.settingsManager->getCOMPort(), "AUTO");
    QCOMPARE(profile.log(), QStringList());
}

void AutoPortTest::anAdapterPluggedInLaterIsFoundAtTheNextConnect()
{
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    CameraEnd camera;
    UsbBus bus;
    MessageBoxWatcher user;
    Program program;
    QCOMPARE(user.boxes().size(), 1);

    const QString name = bus.plug("1-1", WchCh340, camera.portName());
    click(program, "connectBtn");

    QCOMPARE(connectButtonText(program), "Disconnect");
    QCOMPARE(profile.log(), QStringList{name});
    QCOMPARE(user.boxes().size(), 1);
}

void AutoPortTest::lowerCaseAutoIsAPortName()
{
    PrivateProfile profile;
    profile.store("comport", "auto");
    CameraEnd camera;
    UsbBus bus;
    bus.plug("1-1", WchCh340, camera.portName());
    MessageBoxWatcher user;

    Program program;

    QCOMPARE(port(program)->portName(), "auto");
    QVERIFY(!program.app.serial->isConnected());
    QCOMPARE(user.texts(), QStringList{port(program)->errorString()});
    QCOMPARE(profile.log(), QStringList());
}

void AutoPortTest::theCameraIsDrivenThroughTheAdapter()
{
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    CameraEnd camera;
    UsbBus bus;
    const QString name = bus.plug("1-1", WchCh340, camera.portName());
    MessageBoxWatcher user;

    Program program;
    QCOMPARE(connectButtonText(program), "Disconnect");
    QCOMPARE(status(program), "Connected to Port: AUTO\tBaudRate: 9600");

    QTest::mousePress(program.find<QPushButton>("upBtn"), Qt::LeftButton);
    QCOMPARE(camera.nextFrame(), QByteArray(Up));
    camera.reply("90 41 ff");
    QTRY_COMPARE(profile.log(), QStringList({name, "MoveUp", "9041ff", "Analyze Buffer", "-90-41-ff-3"}));

    QTest::mouseRelease(program.find<QPushButton>("upBtn"), Qt::LeftButton);
    QCOMPARE(camera.nextFrame(), QByteArray(Stop));
    QCOMPARE(user.texts(), QStringList());
}

void AutoPortTest::aPulledAdapterIsReportedOnceAndConnectFindsItAgain_data()
{
    QTest::addColumn<bool>("nameIsTaken");
    QTest::newRow("with the same port name") << false;
    QTest::newRow("with another port name") << true;
}

void AutoPortTest::aPulledAdapterIsReportedOnceAndConnectFindsItAgain()
{
    QFETCH(bool, nameIsTaken);
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    CameraEnd camera;
    UsbBus bus;
    const QString name = bus.plug("1-2", FtdiFtX, camera.portName());
    MessageBoxWatcher user;
    Program program;
    QCOMPARE(connectButtonText(program), "Disconnect");

    bus.unplug(name);
    camera.pull();
    QTRY_COMPARE(status(program), "Device disconnected");
    QCOMPARE(connectButtonText(program), "Connect");
    QVERIFY(!program.app.serial->isConnected());

    if (nameIsTaken)
        QCOMPARE(bus.plug("1-1", FtdiFt232R), name);
    CameraEnd cameraAgain;
    const QString nameAgain = bus.plug("1-2", FtdiFtX, cameraAgain.portName());
    QCOMPARE(nameAgain != name, nameIsTaken);
    click(program, "connectBtn");

    QCOMPARE(connectButtonText(program), "Disconnect");
    QCOMPARE(status(program), "Connected to Port: AUTO\tBaudRate: 9600");
    click(program, "preset1Btn");
    QCOMPARE(cameraAgain.nextFrame(), recallPreset(1));
    QCOMPARE(profile.log(), QStringList({name, nameAgain, "Call Preset1"}));
    QCOMPARE(user.boxes().size(), 1);
    QCOMPARE(user.boxes().constFirst().title, "Vantrel");
}

void AutoPortTest::theSettingsDialogListsThePortsAfterAuto()
{
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    CameraEnd camera;
    UsbBus bus;
    const QString second = bus.plug("1-2", WchCh340, camera.portName());
    const QString first = bus.plug("1-1", FtdiFt232R);
    bus.addBuiltInPort("ttyS0");
    MessageBoxWatcher user;
    Program program;
    QStringList wanted{"AUTO"};
    wanted += listedPorts();
    QCOMPARE(wanted, QStringList({"AUTO", "ttyS0", first, second}));

    click(program, "settingsBtn");

    const auto* ports = program.find<QComboBox>("comPortCombo");
    QStringList entries;
    for (int i = 0; i < ports->count(); ++i)
        entries.append(ports->itemText(i));
    QCOMPARE(entries, wanted);
    QCOMPARE(user.texts(), QStringList());
}

void AutoPortTest::aPickedPortIsUsedAtTheNextConnect()
{
    PrivateProfile profile;
    profile.store("comport", "AUTO");
    CameraEnd foundCamera;
    CameraEnd pickedCamera;
    UsbBus bus;
    const QString found = bus.plug("1-1", WchCh340, foundCamera.portName());
    const QString picked = bus.plug("1-2", FtdiFt232R, pickedCamera.portName());
    MessageBoxWatcher user;
    Program program;
    QCOMPARE(port(program)->portName(), found);

    click(program, "settingsBtn");
    auto* ports = program.find<QComboBox>("comPortCombo");
    QTest::keyClick(ports, Qt::Key_End);
    QCOMPARE(ports->currentText(), picked);
    QTRY_COMPARE(profile.stored("comport").toString(), picked);
    QCOMPARE(port(program)->portName(), found);

    click(program, "connectBtn");
    click(program, "connectBtn");

    QCOMPARE(status(program), "Connected to Port: " + picked + "\tBaudRate: 9600");
    click(program, "preset1Btn");
    QCOMPARE(pickedCamera.nextFrame(), recallPreset(1));
    QCOMPARE(foundCamera.pending(), QByteArray());
    // Only a port that was searched for is logged.
    QCOMPARE(profile.log(), QStringList({found, "Call Preset1"}));
    QCOMPARE(user.texts(), QStringList());
}

void AutoPortTest::theRunningProgramDrivesTheCameraOnItsAdapter()
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

    QTRY_VERIFY2(reports.size() == 2, qPrintable(program.readAllStandardError()));
    QCOMPARE(reports.at(0).constFirst().toString(), "<- 81 01 04 3F 02 05 FF  recall preset 5");
    QCOMPARE(reports.at(1).constFirst().toString().section("  ", 0, 0), "-> 90 61 41 FF");
    QTRY_COMPARE(profile.log(),
                 QStringList({name, "Call Preset5", "906141ff", "Analyze Buffer", "-90-61-41-ff-4"}));

    QCOMPARE(program.state(), QProcess::Running);
    program.terminate();
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.exitCode(), 0);
}

QTEST_APPLESS_MAIN(AutoPortTest)

#include "AutoPortTest.moc"
