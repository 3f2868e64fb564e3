#include "camera/AppVantrelSerial.h"

#include "app/VantrelApp.h"
#include "camera/AppLineWatch.h"
#include "settings/AppSettingsManager.h"

#include <QSerialPortInfo>
#include <QSignalBlocker>
#include <QTimer>

#include <algorithm>
#include <termios.h>
#include <utility>

namespace {

// A VISCA command frame: the address, 01 for a command, the category, the code, parameters, the terminator.
constexpr char ToCamera1 = '\x81';
constexpr char Command = '\x01';
constexpr char CameraCategory = '\x04';
constexpr char PanTiltCategory = '\x06';
constexpr char PanTiltDriveCode = '\x01';
constexpr char PanTiltHomeCode = '\x04';
constexpr char ZoomCode = '\x07';
constexpr char MemoryCode = '\x3F';
constexpr char MemorySet = '\x01';
constexpr char MemoryRecall = '\x02';
constexpr char Terminator = '\xFF';
constexpr char FromCamera1 = '\x90';

// A drive's direction is one byte for pan and one for tilt.
constexpr char Up[] = {'\x03', '\x01'};
constexpr char Down[] = {'\x03', '\x02'};
constexpr char Left[] = {'\x01', '\x03'};
constexpr char Right[] = {'\x02', '\x03'};
constexpr char Halt[] = {'\x03', '\x03'};

// The zoom parameter is the motion plus the speed code.
constexpr char ZoomHalt = '\x00';
constexpr char ZoomTele = '\x20';
constexpr char ZoomWide = '\x30';
constexpr int ZoomSpeedMax = 7;

constexpr int PresetModulus = 255;
constexpr int HomeZoomDelayMs = 1000;

// A VISCA reply has at most 16 bytes. The reader collects up to 32 and still accepts a terminator after them.
constexpr int ReplyCapacity = 32;
constexpr int ReplyStorageSize = ReplyCapacity + 1;
constexpr int NoReply = -1;

// USB identifiers of vendor and product.
using UsbIdentifiers = std::pair<quint16, quint16>;
constexpr UsbIdentifiers WchCh340{0x1A86, 0x7523};
constexpr UsbIdentifiers FtdiFtX{0x0403, 0x6015};

bool isCameraAdapter(const QSerialPortInfo& port)
{
    const UsbIdentifiers identifiers(port.vendorIdentifier(), port.productIdentifier());
    return identifiers == WchCh340 || identifiers == FtdiFtX;
}

char lowByte(int value)
{
    return static_cast<char>(value & 0xFF);
}

} // namespace

AppVantrelSerial::AppVantrelSerial()
    : serialPort(new QSerialPort(this))
    , replyIndex(NoReply)
    , lineWatch(new AppLineWatch(serialPort))
{
    connect(serialPort, SIGNAL(errorOccurred(QSerialPort::SerialPortError)), this,
                               SLOT(onErrorOccured(QSerialPort::SerialPortError)));
    connect(serialPort, SIGNAL(readyRead()), this, SLOT(onReadyToRead()));
}

AppVantrelSerial::~AppVantrelSerial()
{
    closeSerialPort();
    delete lineWatch;
    delete serialPort;
}

void AppVantrelSerial::setupSerialPort()
{
    AppSettingsManager* settings = vantrelApp()->settingsManager;

    QString name = settings->getCOMPort();
    if (name == AutoPort)
        name = getCOMPortWhenAuto();

    serialPort->setPortName(name);
    serialPort->setBaudRate(settings->getBaudRate(), QSerialPort::AllDirections);
    serialPort->setDataBits(QSerialPort::Data8);
    serialPort->setFlowControl(QSerialPort::NoFlowControl);
    serialPort->setStopBits(QSerialPort::OneStop);
    serialPort->setParity(QSerialPort::NoParity);
}

QString AppVantrelSerial::getCOMPortWhenAuto()
{
    const auto ports = QSerialPortInfo::availablePorts();
    const auto adapter = std::find_if(ports.begin(), ports.end(), isCameraAdapter);
    if (adapter == ports.end())
        return FallbackPort;

    QString name = adapter->portName();
    vantrelApp()->settingsManager->log(name);
    return name;
}

void AppVantrelSerial::openSerialPort()
{
    setupSerialPort();
    isOpening = true;
    const bool isOpened = serialPort->open(QIODevice::ReadWrite);
    isOpening = false;
    if (!isOpened)
        return;

    lineWatch->start();
    replyBuffer = new char[ReplyStorageSize];
    replyIndex = NoReply;
    emit onDeviceConnected();
}

void AppVantrelSerial::closeSerialPort()
{
    reset();
    emit onDeviceDisconnected();
}

void AppVantrelSerial::reset()
{
    if (serialPort->isOpen()) {
        // close() drops bytes that are not sent yet, such as a stop frame, so send them now. If the line
        // accepts no more, do not show that as an error to a user who is closing the port.
        const QSignalBlocker quiet(serialPort);
        serialPort->flush();
        // close() restores the device's earlier baud rate. Wait until the bytes are sent at the present one.
        tcdrain(serialPort->handle());
        serialPort->close();
    }
    delete[] replyBuffer;
    replyBuffer = nullptr;
    replyIndex = NoReply;
}

bool AppVantrelSerial::isConnected()
{
    return serialPort->isOpen();
}

void AppVantrelSerial::onErrorOccured(QSerialPort::SerialPortError err)
{
    if (err == QSerialPort::NoError)
        return;

    const QString loss = lineWatch->loss();
    const bool isLost = !loss.isEmpty();
    // Close first: a hung-up descriptor stays readable and would keep the event loop busy while the box is
    // open.
    if (isLost)
        reset();

    // A failed open() is not a lost device, even if it reports ResourceError.
    const bool isFailedOpen = std::exchange(isOpening, false);
    showError(isLost ? loss : serialPort->errorString());
    isOpening = isFailedOpen;

    if (isLost || (err == QSerialPort::ResourceError && !isFailedOpen))
        closeSerialPort();
    else
        emit onDeviceError();
}

void AppVantrelSerial::showError(const QString& reason)
{
    if (errorsOnScreen.contains(reason))
        return;
    errorsOnScreen.append(reason);
    vantrelApp()->showMessage(reason);
    errorsOnScreen.removeOne(reason);
}

void AppVantrelSerial::moveUp()
{
    drive("MoveUp", Up);
}

void AppVantrelSerial::moveDown()
{
    drive("MoveDown", Down);
}

void AppVantrelSerial::moveLeft()
{
    drive("MoveLeft", Left);
}

void AppVantrelSerial::moveRight()
{
    drive("MoveRight", Right);
}

void AppVantrelSerial::moveStop()
{
    drive("MoveStop", Halt);
}

void AppVantrelSerial::drive(const QString& logLine, const char* direction)
{
    AppSettingsManager* settings = vantrelApp()->settingsManager;
    settings->log(logLine);

    const char panSpeed = lowByte(settings->getPanSpeed());
    const char tiltSpeed = lowByte(settings->getTiltSpeed());
    const char frame[] = {ToCamera1, Command,      PanTiltCategory, PanTiltDriveCode, panSpeed,
                          tiltSpeed, direction[0], direction[1],    Terminator};
    writeFrame(frame, sizeof(frame));
}

void AppVantrelSerial::moveHome()
{
    vantrelApp()->settingsManager->log("Home");

    const char frame[] = {ToCamera1, Command, PanTiltCategory, PanTiltHomeCode, Terminator};
    writeFrame(frame, sizeof(frame));

    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    // Qt's default, a coarse timer, may be 5 % early or late.
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, timer, [this] { writeZoomFrame(ZoomWide, ZoomSpeedMax); });
    timer->start(HomeZoomDelayMs);
}

void AppVantrelSerial::zoomIn()
{
    AppSettingsManager* settings = vantrelApp()->settingsManager;
    settings->log("ZoomIn");
    writeZoomFrame(ZoomTele, settings->getZoomSpeed());
}

void AppVantrelSerial::zoomOut()
{
    AppSettingsManager* settings = vantrelApp()->settingsManager;
    settings->log("ZoomOut");
    writeZoomFrame(ZoomWide, settings->getZoomSpeed());
}

void AppVantrelSerial::zoomStop()
{
    vantrelApp()->settingsManager->log("ZoomStop");
    writeZoomFrame(ZoomHalt, 0);
}

void AppVantrelSerial::writeZoomFrame(char motion, int speed)
{
    const char parameter = lowByte(motion + lowByte(speed));
    const char frame[] = {ToCamera1, Command, CameraCategory, ZoomCode, parameter, Terminator};
    writeFrame(frame, sizeof(frame));
}

void AppVantrelSerial::callPreset(int preset)
{
    vantrelApp()->settingsManager->log("Call Preset" + QString::number(preset));
    writePresetFrame(MemoryRecall, preset);
}

void AppVantrelSerial::setPreset(int preset)
{
    const QString number = QString::number(preset);
    vantrelApp()->settingsManager->log("Set Preset" + number);
    writePresetFrame(MemorySet, preset);
    vantrelApp()->showMessage("Preset No" + number + " is set.");
}

void AppVantrelSerial::writePresetFrame(char action, int preset)
{
    const char frame[] = {
        ToCamera1, Command, CameraCategory, MemoryCode, action, lowByte(preset % PresetModulus), Terminator};
    writeFrame(frame, sizeof(frame));
}

void AppVantrelSerial::sendHex(char* bytes, int count)
{
    writeFrame(bytes, count);
}

void AppVantrelSerial::writeFrame(const char* bytes, qint64 count)
{
    if (serialPort->isOpen())
        serialPort->write(bytes, count);
}

void AppVantrelSerial::onReadyToRead()
{
    const QByteArray chunk = serialPort->readAll();
    vantrelApp()->settingsManager->log(chunk.toHex());
    for (const char byte : chunk)
        collectReplyByte(byte);
}

void AppVantrelSerial::collectReplyByte(char byte)
{
    if (replyIndex == NoReply && byte != FromCamera1)
        return;

    if (replyIndex == ReplyCapacity - 1 && byte != Terminator) {
        // Too long for a reply. Use its storage again, so that a flood of bytes needs no memory.
        replyIndex = NoReply;
        return;
    }

    replyBuffer[++replyIndex] = byte;
    if (byte != Terminator)
        return;

    analyzeBuffer(replyBuffer, replyIndex + 1);
    replyBuffer = new char[ReplyStorageSize];
    replyIndex = NoReply;
}

void AppVantrelSerial::analyzeBuffer(char* data, int length)
{
    AppSettingsManager* settings = vantrelApp()->settingsManager;
    settings->log("Analyze Buffer");

    QString line;
    for (int i = 0; i < length; ++i)
        line.append('-').append(QString::number(static_cast<uchar>(data[i]), 16));
    if (length > 0)
        line.append('-').append(QString::number(length));
    settings->log(line);

    delete[] data;
}
