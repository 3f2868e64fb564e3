#pragma once

#include <QByteArray>
#include <QString>

/**
 * The far end of a serial line: a POSIX pseudo-terminal whose path() a program opens as its serial port.
 *
 * The line is raw from the start, also for a client that sets nothing (`printf ... > path`). Nothing here
 * waits and no event loop is needed; whoever has one watches descriptor() for reading.
 *
 * Clients may come and go, one killed with the port open included: the exclusive use it asked for (TIOCEXCL,
 * which QSerialPort sets at every open) ends when this side next calls read(). Bytes that a client sent
 * before it left are kept. As at a real port, what arrives while nobody has it open is dropped, and so is
 * what a client leaves unread, the latter only on Linux.
 */
class PseudoTerminal
{
public:
    /** Opens a new line; isOpen() tells whether that worked and errorString() why not. */
    PseudoTerminal();
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    bool isOpen() const { return master != -1; }

    QString errorString() const { return error; }

    /** Where the client opens the line, such as "/dev/pts/5"; kept after hangUp(). */
    QString path() const { return slavePath; }

    /**
     * What to watch, -1 once hung up. It turns readable when bytes arrive, and also when a client sets up
     * the line or leaves, for which read() returns nothing: call read() every time.
     */
    int descriptor() const { return watched; }

    /** Everything that has arrived, up to about 64 KiB at a time; empty when nothing has, or once hung up. */
    QByteArray read();

    /**
     * Sends `bytes`, to nobody if nobody has the port open. Returns false when the line did not take them
     * all, for it is hung up or its client has not read for tens of kilobytes; the rest is lost, as on a wire
     * without flow control.
     */
    bool write(const QByteArray& bytes);

    /**
     * Hangs up the line for good. A client that has it open sees what a pulled USB adapter shows: POLLHUP,
     * end of file on read(), EIO on everything else.
     */
    void hangUp();

private:
    bool openLine();
    bool watchLine();
    bool hasClient();

    int master = -1;
    int slave = -1;
    /** Tells when a client closes the port; -1 where the system cannot. */
    int closings = -1;
    int watched = -1;
    QString slavePath;
    QString error;
};
