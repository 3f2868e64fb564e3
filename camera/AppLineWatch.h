#pragma once

#include <QObject>
#include <QString>

class QSerialPort;

/**
 * Makes a serial port report that its device is gone, for example a pulled USB adapter. What QSerialPort
 * reports by itself depends on the version of Qt: nothing, one error, or an endless series of errors. So this
 * class checks the device each time before the port reads from it.
 */
class AppLineWatch : public QObject
{
    Q_OBJECT

public:
    explicit AppLineWatch(QSerialPort* port);

    /** Watches the device until the port closes. Call it after each successful open(). */
    void start();

    /**
     * Tells whether the device is gone. Calls tcgetattr(), which fails once it is.
     *
     * @return the operating system's text for the failure; empty if the device is there or the port is closed
     */
    QString loss() const;

    /** If the device is gone, emits the port's errorOccurred(ResourceError), and the port does not read. */
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QSerialPort* serialPort;
};
