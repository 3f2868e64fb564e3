#include "support/Desk.h"
#include "support/Frames.h"
#include "support/LinkSignals.h"

#include <QMetaMethod>
#include <QPushButton>
#include <QSerialPort>

#include <limits>
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

// The texts of the errors that a QSerialPort reports when it is opened with these settings.
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

} // namespace

/** The link opens and closes its port, and reports the port's errors. */
class SerialConnectionTest : public QObject
{
    Q_OBJECT

private slots:

    void signalsAndSlotsAreDeclaredInOrder()
    {
        const QMetaObject& link = AppVantrelSerial::staticMetaObject;
        QStringList methods;
        for (int i = link.methodOffset(); i < link.methodCount(); ++i) {
            const QMetaMethod method = link.method(i);
            const bool isSignal = method.methodType() == QMetaMethod::Signal;
            QVERIFY(isSignal || method.access() == QMetaMethod::Private);
            methods.append((isSignal ? "signal " : "slot ") + method.methodSignature());
        }

        QCOMPARE(methods,
                 QStringList({"signal onDeviceConnected()", "signal onDeviceDisconnected()",
                              "signal onDeviceError()", "signal onDataFull()", "slot onReadyToRead()",
                              "slot onErrorOccured(QSerialPort::SerialPortError)"}));
    }

    void everyOpeningConnectsAndEveryClosingDisconnectsOnce()
    {
        Desk desk;
        desk.link()->closeSerialPort();
        for (int round = 0; round < 50; ++round) {
            const LinkSignals heard(desk.link());
            desk.link()->openSerialPort();
            QCOMPARE(heard.names(), "onDeviceConnected");
            QVERIFY(desk.link()->isConnected());

            desk.link()->closeSerialPort();
            QCOMPARE(heard.names(), "onDeviceConnected onDeviceDisconnected");
            QVERIFY(!desk.link()->isConnected());

            desk.link()->closeSerialPort();
            QCOMPARE(heard.names(), "onDeviceConnected onDeviceDisconnected onDeviceDisconnected");
        }
        desk.link()->openSerialPort();
        QVERIFY(lineIsAlive(desk));
        QCOMPARE(desk.user.texts(), QStringList());
        QCOMPARE(desk.profile.log(), QStringList("ZoomStop"));
    }

    void portIsReadyWhenTheLinkSaysConnected()
    {
        Desk desk;
        desk.link()->closeSerialPort();
        bool isAlive = false;
        connect(desk.link(), &AppVantrelSerial::onDeviceConnected, this,
                [&] { isAlive = lineIsAlive(desk); });

        desk.link()->openSerialPort();

        QVERIFY(isAlive);
    }

    void lineHas8DataBitsNoParityOneStopBitAndNoFlowControl_data()
    {
        QTest::addColumn<int>("baudRate");
        QTest::addColumn<uint>("speed");
        const std::pair<int, uint> speeds[] = {{1200, B1200},   {2400, B2400},    {4800, B4800},
                                               {9600, B9600},   {19200, B19200},  {38400, B38400},
                                               {57600, B57600}, {115200, B115200}};
        for (const auto& [baudRate, speed] : speeds)
            QTest::addRow("%d", baudRate) << baudRate << speed;
    }

    void lineHas8DataBitsNoParityOneStopBitAndNoFlowControl()
    {
        QFETCH(int, baudRate);
        QFETCH(uint, speed);
        const Desk desk({{"baudrate", baudRate}});

        QCOMPARE(portOf(desk.link())->openMode(), QIODevice::ReadWrite);
        termios line{};
        QCOMPARE(tcgetattr(portOf(desk.link())->handle(), &line), 0);
        QCOMPARE(cfgetispeed(&line), speed);
        QCOMPARE(cfgetospeed(&line), speed);
        QCOMPARE(line.c_cflag & tcflag_t(CSIZE | PARENB | CSTOPB | CRTSCTS), tcflag_t(CS8));
        QCOMPARE(line.c_iflag & tcflag_t(IXON | IXOFF | IXANY), tcflag_t(0));
    }

    void settingsAreReadAtEachOpen()
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

    void settingUpOverridesWhatThePortHadBeforeAndOpensNothing()
    {
        Desk desk;
        desk.link()->closeSerialPort();
        desk.settings()->setCOMPort("COM7");
        const LinkSignals heard(desk.link());
        QSerialPort* port = portOf(desk.link());
        port->setBaudRate(1200, QSerialPort::Input);
        port->setDataBits(QSerialPort::Data7);
        port->setParity(QSerialPort::EvenParity);
        port->setStopBits(QSerialPort::TwoStop);
        port->setFlowControl(QSerialPort::SoftwareControl);

        desk.link()->setupSerialPort();

        QCOMPARE(port->portName(), "COM7");
        QCOMPARE(port->baudRate(QSerialPort::Input), 9600);
        QCOMPARE(port->baudRate(QSerialPort::Output), 9600);
        QCOMPARE(port->dataBits(), QSerialPort::Data8);
        QCOMPARE(port->parity(), QSerialPort::NoParity);
        QCOMPARE(port->stopBits(), QSerialPort::OneStop);
        QCOMPARE(port->flowControl(), QSerialPort::NoFlowControl);
        QVERIFY(!desk.link()->isConnected());
        QCOMPARE(heard.names(), "");
    }

    void openingShowsTheErrorsThatThePortReports_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("baudRate");
        for (const char* name : {"COM1", "/dev/pts/nowhere", "no port", u8"カメラ", "", "/", "///",
                                 "/dev/null", "../../../../etc/passwd", "\"'`\"", R"(\\.\COM1)",
                                 "tty\nUSB0\r\n", "%s%n%1", "[General]", "auto", "Auto", "AUTO "})
            QTest::addRow("port \"%s\"", name) << name << 9600;
        QTest::newRow("a file") << SOURCE_DIR "/CMakeLists.txt" << 9600;
        QTest::newRow("half a character") << QString(QChar(0xD800)) << 9600;
        QTest::newRow("4000 characters") << QString(4000, 'x') << 9600;
        QTest::newRow("4000 characters of a path") << '/' + QString(3999, 'x') << 9600;
        for (const int rate : {0, -1, -9600, std::numeric_limits<int>::min(), 1, 7, 9601, 14400, 250000,
                               100000000, std::numeric_limits<int>::max()})
            QTest::addRow("%d baud", rate) << QString() << rate;
    }

    void openingShowsTheErrorsThatThePortReports()
    {
        QFETCH(QString, name);
        QFETCH(int, baudRate);
        Desk desk;
        desk.link()->closeSerialPort();
        if (baudRate == 9600)
            desk.settings()->setCOMPort(name);
        desk.settings()->setBaudRate(baudRate);
        // Try it on another line: a port that refuses its baud rate leaves the terminal in exclusive use.
        const CameraEnd elsewhere;
        const QStringList errors = openErrors(baudRate == 9600 ? name : elsewhere.portName(), baudRate);
        QVERIFY(baudRate != 9600 || !errors.isEmpty());
        const LinkSignals heard(desk.link());

        desk.link()->openSerialPort();

        QCOMPARE(desk.user.texts(), errors);
        QCOMPARE(heard.names().count("onDeviceError"), errors.size());
        QVERIFY(!heard.names().contains("onDeviceDisconnected"));
        QCOMPARE(desk.link()->isConnected(), errors.isEmpty());
        QVERIFY(desk.settings()->getCOMPort().endsWith(portOf(desk.link())->portName()));
        QCOMPARE(portOf(desk.link())->baudRate(), baudRate);

        desk.link()->closeSerialPort();
        desk.settings()->setCOMPort(desk.camera.portName());
        desk.settings()->setBaudRate(9600);
        // Reading at the camera's end lifts the exclusive use.
        QCOMPARE(desk.camera.pending(), QByteArray());
        desk.link()->openSerialPort();
        QVERIFY(lineIsAlive(desk));
    }

    void portInUseIsReportedAndCanBeOpenedLater()
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
        QCOMPARE(heard.names(), "onDeviceError onDeviceConnected");
        QVERIFY(lineIsAlive(desk));
    }

    void openingAnOpenLinkIsRefusedAndLeavesItOpen()
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

    void resourceErrorWhileOpeningIsNoDisconnection()
    {
        Desk desk;
        desk.link()->closeSerialPort();
        desk.settings()->setCOMPort("/dev/missing");
        QSerialPort* port = portOf(desk.link());
        // A terminal without a device reports ResourceError, and some failures come more than once. Repeat
        // each report of open() as a ResourceError; the first is NoError.
        connect(port, &QSerialPort::errorOccurred, this, [port](QSerialPort::SerialPortError error) {
            if (error != QSerialPort::ResourceError)
                emit port->errorOccurred(QSerialPort::ResourceError);
        });
        const LinkSignals heard(desk.link());

        desk.link()->openSerialPort();

        QCOMPARE(heard.names(), "onDeviceError onDeviceError onDeviceError");
        QCOMPARE(desk.user.boxes().size(), 3);
    }

    void resourceErrorWhileTheBoxOfAFailedOpeningIsOpenIsADisconnection()
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

    void resourceErrorBeforeTheFirstOpeningIsADisconnection()
    {
        const Desk desk;
        const AppVantrelSerial link;
        const LinkSignals heard(&link);

        emit portOf(&link)->errorOccurred(QSerialPort::ResourceError);

        QCOMPARE(heard.names(), "onDeviceDisconnected");
        QCOMPARE(desk.user.boxes().size(), 1);
    }

    void anyOtherErrorIsShownAndLeavesTheLinkAsItIs_data()
    {
        QTest::addColumn<QSerialPort::SerialPortError>("error");
        for (int error = QSerialPort::DeviceNotFoundError; error <= QSerialPort::NotOpenError; ++error) {
            if (error != QSerialPort::ResourceError)
                QTest::addRow("error %d", error) << QSerialPort::SerialPortError(error);
        }
    }

    void anyOtherErrorIsShownAndLeavesTheLinkAsItIs()
    {
        QFETCH(QSerialPort::SerialPortError, error);
        Desk desk;
        const LinkSignals heard(desk.link());
        QString heardWhileOpen;
        desk.user.whenOpen([&] { heardWhileOpen = heard.names(); });

        emit portOf(desk.link())->errorOccurred(error);

        QCOMPARE(heardWhileOpen, "");
        QCOMPARE(heard.names(), "onDeviceError");
        QCOMPARE(desk.user.texts(), QStringList(portOf(desk.link())->errorString()));
        QCOMPARE(desk.profile.log(), QStringList());
        QVERIFY(lineIsAlive(desk));
        QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Disconnect");

        desk.link()->closeSerialPort();
        emit portOf(desk.link())->errorOccurred(error);
        QCOMPARE(heard.names(), "onDeviceError onDeviceDisconnected onDeviceError");
        QCOMPARE(desk.user.boxes().size(), 2);
        QVERIFY(!desk.link()->isConnected());
    }

    void cameraThatDoesNotReadIsNoError()
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
            QCOMPARE(desk.camera.nextFrame(), recallPreset(1 + i % LastPreset));
        QVERIFY(desk.user.boxes().isEmpty());
        QCOMPARE(desk.camera.pending(), "");
    }

    void portWhoseCameraDoesNotReadIsClosedWithoutABox()
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

    void deletedLinkReleasesThePortAndSaysDisconnected_data()
    {
        QTest::addColumn<bool>("open");
        QTest::newRow("open") << true;
        QTest::newRow("closed") << false;
    }

    void deletedLinkReleasesThePortAndSaysDisconnected()
    {
        QFETCH(bool, open);
        Desk desk;
        desk.link()->closeSerialPort();
        int disconnected = 0;
        QPointer<QSerialPort> port;
        {
            AppVantrelSerial link;
            port = portOf(&link);
            if (open)
                link.openSerialPort();
            QCOMPARE(port->isOpen(), open);
            connect(&link, &AppVantrelSerial::onDeviceDisconnected, this,
                    [&] { disconnected += port->isOpen() ? 0 : 1; });
        }

        QCOMPARE(disconnected, 1);
        QVERIFY(!port);
        QCOMPARE(desk.user.texts(), QStringList());
        desk.link()->openSerialPort();
        QVERIFY(lineIsAlive(desk));
    }
};

QTEST_APPLESS_MAIN(SerialConnectionTest)
#include "SerialConnectionTest.moc"
