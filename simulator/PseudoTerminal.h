#pragma once

#include <QByteArray>
#include <QString>

/**
 * The far end of a serial line: a POSIX pseudo-terminal whose path() a program opens as its serial port.
 *
 * The line is raw from the start, and nothing here waits. Clients may come and go, or be killed: their
 * exclusive use of the port ends at the next read(), and what they sent is kept. As at a real port, what
 * arrives while nobody has it open is dropped, and on Linux so is what a client leaves unread.
 */
class PseudoTerminal
{
public:
    /** Opens a new line; isOpen() tells whether that worked and errorString() why not. */
    PseudoTerminal();

    ~PseudoTerminal() { hangUp(); }

    Q_DISABLE_COPY(PseudoTerminal)

    bool isOpen() const { return master != -1; }

    QString errorString() const { return error; }

    /** Where the client opens the line, such as "/dev/pts/5"; kept after hangUp(). */
    QString path() const { return slavePath; }

    /** Readable when bytes arrive or a client sets up the line or leaves: then read(). -1 once hung up. */
    int descriptor() const { return watched; }

    /** What has arrived, up to about 64 KiB at a time; empty when nothing has, or once hung up. */
    QByteArray read();

    /** Sends `bytes`, to nobody if the port is not open. False if the line did not take them all. */
    bool write(const QByteArray& bytes);

    /** Hangs up the line for good, which a client sees as a pulled USB adapter. */
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
