#pragma once

#include <QByteArray>
#include <QString>

/**
 * The camera's end of a serial line: a POSIX pseudo-terminal whose path() a program opens as its serial port.
 *
 * The line is in raw mode from the start, and no function here blocks. Clients may open and close the port,
 * or be killed: the next read() ends their exclusive use of the port, and what they sent is kept. As at a
 * real port, what is written while no client has it open is dropped. On Linux, so is what a client leaves
 * unread when it closes the port.
 */
class PseudoTerminal
{
public:
    /** Opens a new line. If that fails, isOpen() is false and errorString() tells why. */
    PseudoTerminal();

    ~PseudoTerminal() { hangUp(); }

    Q_DISABLE_COPY(PseudoTerminal)

    bool isOpen() const { return master != -1; }

    QString errorString() const { return error; }

    /** The path at which a client opens the line, such as "/dev/pts/5". Stays the same after hangUp(). */
    QString path() const { return slavePath; }

    /** A descriptor that becomes readable when bytes arrive and when a client configures or closes the port:
     * then call read(). -1 after hangUp(). */
    int descriptor() const { return watched; }

    /** Returns what has arrived, up to about 64 KiB at a time; empty if nothing has, and after hangUp(). */
    QByteArray read();

    /** Sends `bytes`; drops them if no client has the port open. Returns false if the line did not accept
     * them all. */
    bool write(const QByteArray& bytes);

    /** Hangs up the line for good. A client sees this as a pulled USB adapter. */
    void hangUp();

private:
    bool openLine();
    bool watchLine();
    bool hasClient();

    int master = -1;
    int slave = -1;
    /** The inotify descriptor that reports when a client closes the port; -1 on other systems than Linux. */
    int closings = -1;
    int watched = -1;
    QString slavePath;
    QString error;
};
