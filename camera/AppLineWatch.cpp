#include "camera/AppLineWatch.h"

#include <QEvent>
#include <QSerialPort>
#include <QSocketNotifier>

#include <cerrno>
#include <cstring>
#include <termios.h>

AppLineWatch::AppLineWatch(QSerialPort* port)
    : serialPort(port)
{
}

void AppLineWatch::start()
{
    // They wake the event loop when bytes arrive and when the line hangs up. The port creates new ones in
    // each open().
    const auto notifiers = serialPort->findChildren<QSocketNotifier*>();
    for (QSocketNotifier* notifier : notifiers)
        notifier->installEventFilter(this);
}

QString AppLineWatch::loss() const
{
    termios attributes{};
    if (!serialPort->isOpen() || tcgetattr(serialPort->handle(), &attributes) == 0)
        return {};
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool AppLineWatch::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::SockAct || loss().isEmpty())
        return QObject::eventFilter(watched, event);
    emit serialPort->errorOccurred(QSerialPort::ResourceError);
    return true;
}
