#include "support/Desk.h"
#include "support/Frames.h"
#include "support/LinkSignals.h"

#include <QMetaMethod>
#include <QPushButton>
#include <QSerialPort>

#include <termios.h>

namespace {

QSerialPort* portOf(const AppVantrelSerial* link)
{
    return link->findChild<QSerialPort*>(QString(), Qt::FindDirectChildrenOnly);
}

bool lineIsAlive(Desk& desk)
{
    desk.link()->zoomStop();
    return desk.camera.nextFrame() == ZoomStop;
}

} // namespace

class SerialConnectionTest : public QObject
{
    Q_OBJECT

private slots:
    void signalsAndSlotsStandInTheirOrder();
    void newLinkIsClosedAndOwnsItsPort();

    void openingConnectsOnce();
    void portIsReadyWhenTheLinkSaysConnected();
    void lineHas8DataBitsNoParityOneStopBitAndNoFlowControl_data();
    void lineHas8DataBitsNoParityOneStopBitAndNoFlowControl();
    void unusualBaudRateIsPassedOn();
    void settingsAreReadAtEachOpen();
    void settingUpOpensNothing();
    void settingUpOverridesWhatThePortHadBefore();

    void missingPortIsReportedOnceAndLeavesTheLinkClosed_data();
    void missingPortIsReportedOnceAndLeavesTheLinkClosed();
    void refusedBaudRateIsReportedOnceAndLeavesTheLinkClosed_data();
    void refusedBaudRateIsReportedOnceAndLeavesTheLinkClosed();
    void portInUseIsReportedAndCanBeOpenedLater();
    void fileThatIsNoSerialPortIsReported();
    void resourceErrorWhileOpeningIsNoDisconnection();
    void resourceErrorUnderTheBoxOfAFailedOpeningIsADisconnection();
    void autoInLowerCaseIsAPortName_data();
    void autoInLowerCaseIsAPortName();

    void closingDisconnectsOnce();
    void closingAClosedLinkStillSaysDisconnected();
    void linkOpensAndClosesAgainAndAgain();
    void openingAnOpenLinkIsRefusedAndLeavesItOpen();

    void anyOtherErrorIsShownAndLeavesTheLinkOpen_data();
    void anyOtherErrorIsShownAndLeavesTheLinkOpen();
    void anyOtherErrorOnAClosedLinkLeavesItClosed();
    void resourceErrorOnAClosedLinkIsADisconnection();
    void resourceErrorBeforeTheFirstOpeningIsADisconnection();
    void errorIsToldThoughTheSignalsAreBlocked();
    void lineThatTakesNothingIsNoError();
    void stoppedLineIsClosedWithoutAWord();
    void noErrorIsNoError();
    void errorIsSignalledAfterItsBoxIsDismissed();
    void errorsAreNotLogged();

    void deletedLinkSaysDisconnected_data();
    void deletedLinkSaysDisconnected();
    void deletedLinkReleasesThePort();
};

void SerialConnectionTest::signalsAndSlotsStandInTheirOrder()
{
    const QMetaObject& link = AppVantrelSerial::staticMetaObject;
    QStringList methods;
    for (int i = link.methodOffset(); i < link.methodCount(); ++i) {
        const QMetaMethod method = link.method(i);
        const bool isSignal = method.methodType() == QMetaMethod::Signal;
        QVERIFY(isSignal || method.access() == QMetaMethod::Private);
        methods.append((isSignal ? "signal " : "slot ") + method.methodSignature());
    }

    QCOMPARE(methods, QStringList({"signal onDeviceConnected()", "signal onDeviceDisconnected()",
                                   "signal onDeviceError()", "signal onDataFull()", "slot onReadyToRead()",
                                   "slot onErrorOccured(QSerialPort::SerialPortError)"}));
}

void SerialConnectionTest::newLinkIsClosedAndOwnsItsPort()
{
    const Desk desk;
    AppVantrelSerial link;
    const LinkSignals heard(&link);

    QVERIFY(!link.parent());
    QVERIFY(portOf(&link));
    QVERIFY(!link.isConnected());
    QVERIFY(link.findChildren<QTimer*>().isEmpty());
    QCOMPARE(heard.names(), "");
}

void SerialConnectionTest::openingConnectsOnce()
{
    Desk desk;
    desk.link()->closeSerialPort();
    const LinkSignals heard(desk.link());

    desk.link()->openSerialPort();

    QCOMPARE(heard.names(), "onDeviceConnected");
    QVERIFY(desk.link()->isConnected());
    QCOMPARE(desk.user.texts(), QStringList());
    QCOMPARE(desk.profile.log(), QStringList());
}

void SerialConnectionTest::portIsReadyWhenTheLinkSaysConnected()
{
    Desk desk;
    desk.link()->closeSerialPort();
    QByteArray frame;
    connect(desk.link(), &AppVantrelSerial::onDeviceConnected, this, [&] {
        desk.link()->zoomStop();
        frame = desk.camera.nextFrame();
    });

    desk.link()->openSerialPort();

    QCOMPARE(frame, ZoomStop);
}

void SerialConnectionTest::lineHas8DataBitsNoParityOneStopBitAndNoFlowControl_data()
{
    QTest::addColumn<int>("baudRate");
    QTest::addColumn<uint>("speed");
    QTest::newRow("1200") << 1200 << uint(B1200);
    QTest::newRow("2400") << 2400 << uint(B2400);
    QTest::newRow("4800") << 4800 << uint(B4800);
    QTest::newRow("9600") << 9600 << uint(B9600);
    QTest::newRow("19200") << 19200 << uint(B19200);
    QTest::newRow("38400") << 38400 << uint(B38400);
    QTest::newRow("57600") << 57600 << uint(B57600);
    QTest::newRow("115200") << 115200 << uint(B115200);
}

void SerialConnectionTest::lineHas8DataBitsNoParityOneStopBitAndNoFlowControl()
{
    QFETCH(int, baudRate);
    QFETCH(uint, speed);
    const Desk desk({{"baudrate", baudRate}});
    const QSerialPort* port = portOf(desk.link());

    QCOMPARE(port->openMode(), QIODevice::ReadWrite);
    QCOMPARE(port->baudRate(QSerialPort::Input), baudRate);
    QCOMPARE(port->baudRate(QSerialPort::Output), baudRate);
    QCOMPARE(port->dataBits(), QSerialPort::Data8);
    QCOMPARE(port->parity(), QSerialPort::NoParity);
    QCOMPARE(port->stopBits(), QSerialPort::OneStop);
    QCOMPARE(port->flowControl(), QSerialPort::NoFlowControl);

    termios line{};
    QCOMPARE(tcgetattr(portOf(desk.link())->handle(), &line), 0);
    QCOMPARE(cfgetispeed(&line), speed);
    QCOMPARE(cfgetospeed(&line), speed);
    QCOMPARE(line.c_cflag & tcflag_t(CSIZE | PARENB | CSTOPB | CRTSCTS), tcflag_t(CS8));
    QCOMPARE(line.c_iflag & tcflag_t(IXON | IXOFF | IXANY), tcflag_t(0));
}

void SerialConnectionTest::unusualBaudRateIsPassedOn()
{
    Desk desk({{"baudrate", 14400}});

    QCOMPARE(portOf(desk.link())->baudRate(), 14400);
    QVERIFY(desk.link()->isConnected());
    QVERIFY(lineIsAlive(desk));
    QCOMPARE(desk.user.texts(), QStringList());
}

void SerialConnectionTest::settingsAreReadAtEachOpen()
{
    Desk desk;
    CameraEnd other;

    desk.settings()->setCOMPort(other.portName());
    desk.settings()->setBaudRate(38400);
    QVERIFY(lineIsAlive(desk));
    QCOMPARE(portOf(desk.link())->baudRate(), 9600);

    desk.link()->closeSerialPort();
    desk.link()->openSerialPort();
    desk.link()->zoomStop();

    QCOMPARE(other.nextFrame(), ZoomStop);
    QCOMPARE(portOf(desk.link())->baudRate(), 38400);
    QCOMPARE(desk.camera.pending(), "");
}

void SerialConnectionTest::settingUpOpensNothing()
{
    Desk desk;
    desk.link()->closeSerialPort();
    desk.settings()->setCOMPort("COM7");
    desk.settings()->setBaudRate(2400);
    const LinkSignals heard(desk.link());

    desk.link()->setupSerialPort();

    QCOMPARE(portOf(desk.link())->portName(), "COM7");
    QCOMPARE(portOf(desk.link())->baudRate(), 2400);
    QVERIFY(!desk.link()->isConnected());
    QCOMPARE(heard.names(), "");
    QCOMPARE(desk.user.texts(), QStringList());
    QCOMPARE(desk.profile.log(), QStringList());
}

void SerialConnectionTest::settingUpOverridesWhatThePortHadBefore()
{
    const Desk desk;
    desk.link()->closeSerialPort();
    QSerialPort* port = portOf(desk.link());
    port->setBaudRate(1200, QSerialPort::Input);
    port->setDataBits(QSerialPort::Data7);
    port->setParity(QSerialPort::EvenParity);
    port->setStopBits(QSerialPort::TwoStop);
    port->setFlowControl(QSerialPort::SoftwareControl);

    desk.link()->setupSerialPort();

    QCOMPARE(port->baudRate(QSerialPort::Input), 9600);
    QCOMPARE(port->dataBits(), QSerialPort::Data8);
    QCOMPARE(port->parity(), QSerialPort::NoParity);
    QCOMPARE(port->stopBits(), QSerialPort::OneStop);
    QCOMPARE(port->flowControl(), QSerialPort::NoFlowControl);
}

void SerialConnectionTest::missingPortIsReportedOnceAndLeavesTheLinkClosed_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("no such name") << "COM1";
    QTest::newRow("no such path") << "/dev/pts/nowhere";
    QTest::newRow("name with a blank") << "no port";
    QTest::newRow("not Latin") << QString::fromUtf8("カメラ");
    QTest::newRow("empty") << "";
}

void SerialConnectionTest::missingPortIsReportedOnceAndLeavesTheLinkClosed()
{
    QFETCH(QString, name);
    Desk desk;
    desk.link()->closeSerialPort();
    desk.settings()->setCOMPort(name);
    const LinkSignals heard(desk.link());

    desk.link()->openSerialPort();

    QCOMPARE(heard.names(), "onDeviceError");
    QCOMPARE(desk.user.boxes().size(), 1);
    QCOMPARE(desk.user.boxes().constFirst().title, "Vantrel");
    QCOMPARE(desk.user.boxes().constFirst().text, portOf(desk.link())->errorString());
    QVERIFY(!desk.link()->isConnected());
}

void SerialConnectionTest::refusedBaudRateIsReportedOnceAndLeavesTheLinkClosed_data()
{
    QTest::addColumn<int>("baudRate");
    QTest::newRow("none") << 0;
    QTest::newRow("negative") << -9600;
}

void SerialConnectionTest::refusedBaudRateIsReportedOnceAndLeavesTheLinkClosed()
{
    QFETCH(int, baudRate);
    Desk desk;
    desk.link()->closeSerialPort();
    desk.settings()->setBaudRate(baudRate);
    const LinkSignals heard(desk.link());

    desk.link()->openSerialPort();

    QCOMPARE(heard.names(), "onDeviceError");
    QCOMPARE(desk.user.texts(), QStringList(portOf(desk.link())->errorString()));
    QVERIFY(!desk.link()->isConnected());
}

void SerialConnectionTest::portInUseIsReportedAndCanBeOpenedLater()
{
    Desk desk;
    desk.link()->closeSerialPort();
    QSerialPort otherProgram(desk.camera.portName());
    QVERIFY(otherProgram.open(QIODevice::ReadWrite));
    const LinkSignals heard(desk.link());

    desk.link()->openSerialPort();
    QCOMPARE(heard.names(), "onDeviceError");
    QCOMPARE(portOf(desk.link())->error(), QSerialPort::PermissionError);
    QCOMPARE(desk.user.texts(), QStringList(portOf(desk.link())->errorString()));

    otherProgram.close();
    desk.link()->openSerialPort();
    QCOMPARE(heard.names(), "onDeviceConnected onDeviceError");
    QVERIFY(lineIsAlive(desk));
}

void SerialConnectionTest::fileThatIsNoSerialPortIsReported()
{
    Desk desk;
    desk.link()->closeSerialPort();
    desk.settings()->setCOMPort("/dev/null");
    const QSignalSpy error(desk.link(), &AppVantrelSerial::onDeviceError);
    const LinkSignals heard(desk.link());

    desk.link()->openSerialPort();

    // Qt may report this failure more than once.
    QVERIFY(error.count() >= 1);
    QCOMPARE(desk.user.boxes().size(), error.count());
    QCOMPARE(desk.user.texts().constFirst(), portOf(desk.link())->errorString());
    QVERIFY(!heard.names().contains("onnected"));
    QVERIFY(!desk.link()->isConnected());
}

void SerialConnectionTest::resourceErrorWhileOpeningIsNoDisconnection()
{
    Desk desk;
    desk.link()->closeSerialPort();
    desk.settings()->setCOMPort("/dev/missing");
    QSerialPort* port = portOf(desk.link());
    // Each opening begins with NoError; a terminal without a device behind it says EIO next, and some
    // failures are told more than once.
    connect(port, &QSerialPort::errorOccurred, this, [port](QSerialPort::SerialPortError error) {
        if (error != QSerialPort::ResourceError)
            emit port->errorOccurred(QSerialPort::ResourceError);
    });
    const LinkSignals heard(desk.link());

    desk.link()->openSerialPort();

    QCOMPARE(heard.names(), "onDeviceError onDeviceError onDeviceError");
    QCOMPARE(desk.user.boxes().size(), 3);
}

void SerialConnectionTest::resourceErrorUnderTheBoxOfAFailedOpeningIsADisconnection()
{
    Desk desk;
    desk.link()->closeSerialPort();
    desk.settings()->setCOMPort("/dev/missing");
    const LinkSignals heard(desk.link());
    desk.user.whenOpen([&] {
        emit portOf(desk.link())->errorOccurred(QSerialPort::ResourceError);
        QCOMPARE(heard.names(), "onDeviceDisconnected");
    });

    desk.link()->openSerialPort();

    QCOMPARE(heard.names(), "onDeviceDisconnected onDeviceError");
}

void SerialConnectionTest::autoInLowerCaseIsAPortName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("lower case") << "auto";
    QTest::newRow("mixed case") << "Auto";
    QTest::newRow("blank after") << "AUTO ";
}

void SerialConnectionTest::autoInLowerCaseIsAPortName()
{
    QFETCH(QString, name);
    Desk desk;
    desk.link()->closeSerialPort();
    desk.settings()->setCOMPort(name);
    const LinkSignals heard(desk.link());

    desk.link()->openSerialPort();

    QCOMPARE(portOf(desk.link())->portName(), name);
    QCOMPARE(heard.names(), "onDeviceError");
}

void SerialConnectionTest::closingDisconnectsOnce()
{
    Desk desk;
    const LinkSignals heard(desk.link());

    desk.link()->closeSerialPort();

    QCOMPARE(heard.names(), "onDeviceDisconnected");
    QVERIFY(!desk.link()->isConnected());
    QVERIFY(!portOf(desk.link())->isOpen());
    QCOMPARE(desk.user.texts(), QStringList());
}

void SerialConnectionTest::closingAClosedLinkStillSaysDisconnected()
{
    Desk desk;
    desk.link()->closeSerialPort();
    const LinkSignals heard(desk.link());

    desk.link()->closeSerialPort();
    desk.link()->closeSerialPort();

    QCOMPARE(heard.names(), "onDeviceDisconnected onDeviceDisconnected");
    QCOMPARE(desk.user.texts(), QStringList());
}

void SerialConnectionTest::linkOpensAndClosesAgainAndAgain()
{
    Desk desk;
    for (int i = 0; i < 50; ++i) {
        desk.link()->closeSerialPort();
        QVERIFY(!desk.link()->isConnected());
        desk.link()->openSerialPort();
        QVERIFY(desk.link()->isConnected());
    }
    QVERIFY(lineIsAlive(desk));
    QCOMPARE(desk.user.texts(), QStringList());
}

void SerialConnectionTest::openingAnOpenLinkIsRefusedAndLeavesItOpen()
{
    Desk desk;
    desk.camera.reply("90 41");
    QTRY_COMPARE(desk.profile.log(), QStringList("9041"));
    const LinkSignals heard(desk.link());

    desk.link()->openSerialPort();

    QCOMPARE(heard.names(), "onDeviceError");
    QCOMPARE(portOf(desk.link())->error(), QSerialPort::OpenError);
    QCOMPARE(desk.user.texts(), QStringList(portOf(desk.link())->errorString()));
    QVERIFY(desk.link()->isConnected());
    QVERIFY(lineIsAlive(desk));
    desk.camera.reply("ff");
    QTRY_COMPARE(desk.profile.log().mid(2), QStringList({"ff", "Analyze Buffer", "-90-41-ff-3"}));
    QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Disconnect");
}

void SerialConnectionTest::anyOtherErrorIsShownAndLeavesTheLinkOpen_data()
{
    QTest::addColumn<QSerialPort::SerialPortError>("error");
    QTest::newRow("not found") << QSerialPort::DeviceNotFoundError;
    QTest::newRow("permission") << QSerialPort::PermissionError;
    QTest::newRow("open") << QSerialPort::OpenError;
#if QT_VERSION_MAJOR < 6
    // What Qt 6 does not name any more.
    QTest::newRow("parity") << QSerialPort::SerialPortError(4);
    QTest::newRow("framing") << QSerialPort::SerialPortError(5);
    QTest::newRow("break") << QSerialPort::SerialPortError(6);
#endif
    QTest::newRow("write") << QSerialPort::WriteError;
    QTest::newRow("read") << QSerialPort::ReadError;
    QTest::newRow("unsupported operation") << QSerialPort::UnsupportedOperationError;
    QTest::newRow("unknown") << QSerialPort::UnknownError;
    QTest::newRow("timeout") << QSerialPort::TimeoutError;
    QTest::newRow("not open") << QSerialPort::NotOpenError;
}

void SerialConnectionTest::anyOtherErrorIsShownAndLeavesTheLinkOpen()
{
    QFETCH(QSerialPort::SerialPortError, error);
    Desk desk;
    const LinkSignals heard(desk.link());
    QSerialPort* port = portOf(desk.link());

    emit port->errorOccurred(error);

    QCOMPARE(heard.names(), "onDeviceError");
    QCOMPARE(desk.user.boxes().size(), 1);
    QCOMPARE(desk.user.boxes().constFirst().title, "Vantrel");
    QCOMPARE(desk.user.boxes().constFirst().text, port->errorString());
    QVERIFY(desk.link()->isConnected());
    QVERIFY(lineIsAlive(desk));
    QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Disconnect");
}

void SerialConnectionTest::anyOtherErrorOnAClosedLinkLeavesItClosed()
{
    Desk desk;
    desk.link()->closeSerialPort();
    const LinkSignals heard(desk.link());

    emit portOf(desk.link())->errorOccurred(QSerialPort::UnknownError);

    QCOMPARE(heard.names(), "onDeviceError");
    QCOMPARE(desk.user.boxes().size(), 1);
    QVERIFY(!desk.link()->isConnected());
}

void SerialConnectionTest::resourceErrorOnAClosedLinkIsADisconnection()
{
    Desk desk;
    desk.link()->closeSerialPort();
    const LinkSignals heard(desk.link());

    emit portOf(desk.link())->errorOccurred(QSerialPort::ResourceError);

    QCOMPARE(heard.names(), "onDeviceDisconnected");
    QCOMPARE(desk.user.boxes().size(), 1);
}

void SerialConnectionTest::resourceErrorBeforeTheFirstOpeningIsADisconnection()
{
    const Desk desk;
    const AppVantrelSerial link;
    const LinkSignals heard(&link);

    emit portOf(&link)->errorOccurred(QSerialPort::ResourceError);

    QCOMPARE(heard.names(), "onDeviceDisconnected");
    QCOMPARE(desk.user.boxes().size(), 1);
}

void SerialConnectionTest::errorIsToldThoughTheSignalsAreBlocked()
{
    Desk desk;
    const QSignalBlocker blocker(desk.link());

    emit portOf(desk.link())->errorOccurred(QSerialPort::ResourceError);

    QCOMPARE(desk.user.boxes().size(), 1);
    QVERIFY(!desk.link()->isConnected());
}

void SerialConnectionTest::lineThatTakesNothingIsNoError()
{
    constexpr int frames = 6000;
    Desk desk;
    for (int i = 0; i < frames; ++i) {
        desk.link()->callPreset(1 + i % LastPreset);
        if (i % 500 == 0)
            QCoreApplication::processEvents();
    }
    QVERIFY(desk.user.boxes().isEmpty());
    QVERIFY(desk.link()->isConnected());

    // Now the camera reads.
    for (int i = 0; i < frames; ++i)
        QCOMPARE(desk.camera.nextFrame(),
                 "81 01 04 3f 02 " + QByteArray(1, char(1 + i % LastPreset)).toHex() + " ff");
    QVERIFY(desk.user.boxes().isEmpty());
    QCOMPARE(desk.camera.pending(), "");
}

void SerialConnectionTest::stoppedLineIsClosedWithoutAWord()
{
    Desk desk;
    for (int i = 0; i < 6000; ++i)
        desk.link()->zoomStop();
    QCoreApplication::processEvents();
    const LinkSignals heard(desk.link());

    desk.link()->closeSerialPort();

    QCOMPARE(heard.names(), "onDeviceDisconnected");
    QVERIFY(desk.user.boxes().isEmpty());
}

void SerialConnectionTest::noErrorIsNoError()
{
    Desk desk;
    const LinkSignals heard(desk.link());

    emit portOf(desk.link())->errorOccurred(QSerialPort::NoError);
    portOf(desk.link())->clearError();

    QCOMPARE(heard.names(), "");
    QCOMPARE(desk.user.texts(), QStringList());
    QVERIFY(lineIsAlive(desk));
}

void SerialConnectionTest::errorIsSignalledAfterItsBoxIsDismissed()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    QString whileOpen;
    desk.user.whenOpen([&] { whileOpen = heard.names(); });

    emit portOf(desk.link())->errorOccurred(QSerialPort::UnknownError);

    QCOMPARE(whileOpen, "");
    QCOMPARE(heard.names(), "onDeviceError");
}

void SerialConnectionTest::errorsAreNotLogged()
{
    Desk desk;

    emit portOf(desk.link())->errorOccurred(QSerialPort::UnknownError);
    emit portOf(desk.link())->errorOccurred(QSerialPort::ResourceError);

    QCOMPARE(desk.user.boxes().size(), 2);
    QCOMPARE(desk.profile.log(), QStringList());
}

void SerialConnectionTest::deletedLinkSaysDisconnected_data()
{
    QTest::addColumn<bool>("open");
    QTest::newRow("open") << true;
    QTest::newRow("closed") << false;
}

void SerialConnectionTest::deletedLinkSaysDisconnected()
{
    QFETCH(bool, open);
    Desk desk;
    desk.link()->closeSerialPort();
    int disconnected = 0;
    {
        AppVantrelSerial link;
        if (open)
            link.openSerialPort();
        QCOMPARE(link.isConnected(), open);
        connect(&link, &AppVantrelSerial::onDeviceDisconnected, this,
                [&] { disconnected += portOf(&link)->isOpen() ? 0 : 1; });
    }

    QCOMPARE(disconnected, 1);
    QCOMPARE(desk.user.texts(), QStringList());
    QCOMPARE(desk.profile.log(), QStringList());
}

void SerialConnectionTest::deletedLinkReleasesThePort()
{
    Desk desk;
    desk.link()->closeSerialPort();
    QPointer<QSerialPort> port;
    {
        AppVantrelSerial link;
        link.openSerialPort();
        port = portOf(&link);
        QVERIFY(port->isOpen());
    }

    QVERIFY(!port);
    desk.link()->openSerialPort();
    QVERIFY(lineIsAlive(desk));
}

QTEST_APPLESS_MAIN(SerialConnectionTest)

#include "SerialConnectionTest.moc"
