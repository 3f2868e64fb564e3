#pragma once

#include "PseudoTerminal.h"

#include <QByteArray>
#include <QString>

/**
 * The camera's end of a serial line: shows the frames that the program sent, sends replies, and can be pulled
 * off. Its portName() goes where a user would choose a port.
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
     * @return the frame as "81 01 ... ff", or what there is of it after five seconds
     */
    QByteArray nextFrame();

    /**
     * Waits for this many bytes without running the event loop: for what must have left the program already.
     *
     * @return the bytes in the same form, or those there are after five seconds
     */
    QByteArray take(Size count);

    /** Everything that has arrived and was not taken yet, in the same form; does not wait. */
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
