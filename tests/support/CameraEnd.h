#pragma once

#include "PseudoTerminal.h"

#include <QByteArray>
#include <QString>

/**
 * The camera's end of a serial line: receives the program's frames, sends replies, and can be unplugged. The
 * program's end is the port portName().
 */
class CameraEnd
{
public:
    /** int with Qt 5, qsizetype with Qt 6. */
    using Size = decltype(QByteArray().size());

    QString portName() const { return terminal.path(); }

    /**
     * Waits for the next whole frame.
     *
     * @return the frame as "81 01 ... ff", or what has arrived of it after five seconds
     */
    QByteArray nextFrame();

    /**
     * Waits for this many bytes without running the event loop: the program must have sent them already.
     *
     * @return the bytes in the same form, or those that have arrived after five seconds
     */
    QByteArray take(Size count);

    /** Everything that has arrived and has not been taken yet, in the same form; does not wait. */
    QByteArray pending();

    /** Sends bytes given in hexadecimal, e.g. "90 41 ff". */
    void reply(const QByteArray& hex);

    /** Pulls the adapter: the line hangs up. */
    void pull() { terminal.hangUp(); }

private:
    void receive();
    QByteArray remove(Size count);

    PseudoTerminal terminal;
    QByteArray received;
};
