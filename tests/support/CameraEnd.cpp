#include "support/CameraEnd.h"

#include <QDeadlineTimer>
#include <QThread>
#include <QtTest>

QByteArray CameraEnd::nextFrame()
{
    constexpr char terminator = '\xFF';
    static_cast<void>(QTest::qWaitFor([this] {
        receive();
        return received.contains(terminator);
    }));

    const auto end = received.indexOf(terminator);
    return remove(end < 0 ? received.size() : end + 1);
}

QByteArray CameraEnd::take(Size count)
{
    // Bytes reach the other end of the line with a delay.
    for (const QDeadlineTimer deadline(5000); received.size() < count && !deadline.hasExpired();) {
        QThread::msleep(1);
        receive();
    }
    return remove(count);
}

QByteArray CameraEnd::pending()
{
    receive();
    return received.toHex(' ');
}

void CameraEnd::reply(const QByteArray& hex)
{
    terminal.write(QByteArray::fromHex(hex));
}

QByteArray CameraEnd::remove(Size count)
{
    const QByteArray bytes = received.left(count);
    received.remove(0, count);
    return bytes.toHex(' ');
}

void CameraEnd::receive()
{
    received += terminal.read();
}
