#include "Replay.h"

#include <algorithm>
#include <cerrno>

#include <termios.h>

Replay::Replay(const Dialogue& dialogue)
    : conversation(dialogue)
{
    wakeTimer.setSingleShot(true);
    wakeTimer.setTimerType(Qt::PreciseTimer);
    connect(&wakeTimer, SIGNAL(timeout()), this, SLOT(proceed()));
    connect(&port, SIGNAL(readyRead()), this, SLOT(proceed()));
    connect(&port, SIGNAL(errorOccurred(QSerialPort::SerialPortError)), this, SLOT(proceed()));
}

QString Replay::start(const QString& portName, int baudRate)
{
    given = portName;
    port.setPortName(given);
    // Keep the port's other defaults: 8 data bits, no parity, one stop bit, no flow control.
    port.setBaudRate(baudRate);
    if (!port.open(QIODevice::ReadWrite))
        return QString("cannot open %1: %2").arg(portName, port.errorString());
    // Drop what arrived before the dialogue.
    port.clear();
    clock.start();
    proceed();
    return {};
}

bool Replay::interrupt()
{
    if (!port.isOpen())
        return false;
    conversation.stop(now());
    exchange();
    tcdrain(port.handle());
    port.close();
    return true;
}

void Replay::proceed()
{
    // errorOccurred() also comes from open(): with NoError, or for a failure, which start() returns.
    if (!port.isOpen() || !clock.isValid())
        return;
    // Not every version of Qt reports that the device is gone. tcgetattr() fails once it is.
    termios settings{};
    if (tcgetattr(port.handle(), &settings) != 0)
        return finish(QString("the port is lost: %1").arg(qt_error_string(errno)));
    conversation.proceed(port.readAll(), now());
    exchange();
    if (!conversation.isOver())
        return wakeTimer.start(std::max(conversation.nextDue() - now(), Conversation::Time(0)));
    const QString mute("no answer at %1: look at the port, the rate (%2 baud, --baud sets another) and the "
                       "camera's address");
    finish(conversation.isMute() ? mute.arg(given).arg(port.baudRate()) : QString());
}

void Replay::exchange()
{
    const QStringList lines = conversation.takeReport();
    for (const QString& line : lines)
        emit reported(line);
    port.write(conversation.takeOutput());
    port.flush();
}

void Replay::finish(const QString& reason)
{
    failureReason = reason;
    wakeTimer.stop();
    port.close();
    emit finished();
}
