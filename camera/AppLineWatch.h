#pragma once

#include <QObject>
#include <QString>

class QSerialPort;

/**
 * Makes a serial port report that its device is gone, as a pulled USB adapter is. What QSerialPort makes of
 * such a line by itself depends on the version of Qt and may be nothing, or an error without end. This looks
 * at the line each time before the port reads from it.
 */
class AppLineWatch : public QObject
{
    Q_OBJECT

public:
    explicit AppLineWatch(QSerialPort* port);

    /** Watches the line until the port closes. Call it after each open. */
    void start();

    /**
     * The operating system's text for why it has no line any more; empty while the device is there, or while
     * the port is closed. Asks tcgetattr(), which fails once the device is gone.
     */
    QString loss() const;

    /** Reports a lost line as the port's ResourceError, in place of the port's own reading from it. */
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QSerialPort* serialPort;
};
