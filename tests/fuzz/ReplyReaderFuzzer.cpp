// Feeds the camera link's reply reader with any bytes in any chunks, over a real serial line, and compares
// every line that it logs with what a second, plain reader makes of the same bytes.
//
// An input begins with the byte stream. The sizes of the chunks are read from its end backwards; the last
// chunk takes the rest. A size of zero disconnects and connects again.

#include "PseudoTerminal.h"
#include "app/VantrelApp.h"
#include "camera/AppVantrelSerial.h"
#include "settings/AppSettingsManager.h"
#include "support/ReplyModel.h"

#include <QSerialPort>

#include <fuzzer/FuzzedDataProvider.h>

namespace {

constexpr char ReplyEnd = '\xFF';
constexpr std::size_t LargestChunk = 64;
constexpr int MostChunks = 8;
constexpr int LineTimeoutMs = 5000;

PseudoTerminal* camera = nullptr;
QStringList logged;

} // namespace

// Replaces the rest of the program: a store without a file, whose log stays in memory, and an application
// object without a window. An error box is a failure.

AppSettingsManager::AppSettingsManager()
    : settings(nullptr)
{
}

AppSettingsManager::~AppSettingsManager() = default;

QString AppSettingsManager::getCOMPort()
{
    return camera->path();
}

int AppSettingsManager::getBaudRate()
{
    return QSerialPort::Baud9600;
}

int AppSettingsManager::getPanSpeed()
{
    return 1;
}

int AppSettingsManager::getTiltSpeed()
{
    return 1;
}

int AppSettingsManager::getZoomSpeed()
{
    return 1;
}

void AppSettingsManager::log(QString message)
{
    logged.append(message);
}

VantrelApp::VantrelApp(int argc, char** argv)
    : QApplication(argc, argv)
    , settingsManager(new AppSettingsManager)
    , serial(new AppVantrelSerial)
{
}

VantrelApp::~VantrelApp()
{
    delete settingsManager;
    delete serial;
}

void VantrelApp::showMessage(QString message)
{
    qFatal("an error box: %s", qPrintable(message));
}

namespace {

void checkLog(ReplyModel& model)
{
    const QString difference = model.check(logged);
    if (!difference.isEmpty())
        qFatal("%s", qPrintable(difference));
    logged.clear();
}

void deliver(ReplyModel& model, const QByteArray& chunk)
{
    static auto* port = vantrelApp()->serial->findChild<QSerialPort*>();
    if (!camera->write(chunk))
        qFatal("the line takes no more");

    model.sent(chunk);
    while (!model.isComplete()) {
        port->waitForReadyRead(LineTimeoutMs);
        if (logged.isEmpty())
            qFatal("nothing was logged");
        checkLog(model);
    }
}

void reconnect(ReplyModel& model)
{
    vantrelApp()->serial->closeSerialPort();
    vantrelApp()->serial->openSerialPort();
    model.closed();
}

} // namespace

// QSerialPort writes a lock file at every open and waits for the disk, which takes nearly all the time of a
// reconnect. Do not wait: this lock need not survive a power cut.
extern "C" int fdatasync(int)
{
    return 0;
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    qputenv("QT_QPA_PLATFORM", "minimal");
    camera = new PseudoTerminal;
    new VantrelApp(*argc, *argv);
    vantrelApp()->serial->openSerialPort();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    ReplyModel model;
    for (int chunks = 1; input.remaining_bytes() > 0; ++chunks) {
        const auto chunkSize = chunks < MostChunks
                                   ? input.ConsumeIntegralInRange<std::size_t>(0, LargestChunk)
                                   : input.remaining_bytes();
        const std::string chunk = input.ConsumeBytesAsString(chunkSize);
        if (chunkSize == 0)
            reconnect(model);
        else
            deliver(model, QByteArray::fromStdString(chunk));
    }
    // After a terminator the reader waits for a new reply, whatever came before.
    deliver(model, QByteArray(1, ReplyEnd));
    return 0;
}
