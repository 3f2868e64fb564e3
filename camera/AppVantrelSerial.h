#pragma once

#include <QObject>
#include <QSerialPort>
#include <QString>
#include <QStringList>

/**
 * The link to the camera: one serial port, the VISCA commands that go out on it, and the reader that writes
 * the camera's replies to the activity log.
 *
 * Commands are addressed to camera 1 and may be given in any state. Each first writes a line to the activity
 * log; its frame reaches the operating system before the operation returns, or is dropped silently while the
 * port is closed. Nothing waits for the camera. Speeds are read from the settings store at each command and
 * go out as they are stored, cut to a byte.
 *
 * Errors of the port are shown to the user in the port's own words, and the loss of the line in those of the
 * operating system; beyond that the link speaks through its signals only. While these are blocked it shows
 * nothing either.
 */
class AppVantrelSerial : public QObject
{
    Q_OBJECT

public:
    /** A closed link. */
    AppVantrelSerial();

    /** Closes the port and emits onDeviceDisconnected(). Uses neither the settings store nor the log. */
    ~AppVantrelSerial() override;

    /**
     * Opens the port that the settings name, with their baud rate, 8 data bits, no parity, one stop bit and
     * no flow control. Emits onDeviceConnected(), or shows the port's error and emits onDeviceError().
     */
    void openSerialPort();

    /** Closes the port if it is open; emits onDeviceDisconnected() in any case. */
    void closeSerialPort();

    /** Whether the port is open. */
    bool isConnected();

    /**
     * Applies the settings to the port. An open port stays the device it is, but takes its baud rate at once.
     */
    void setupSerialPort();

    /**
     * Finds the camera's adapter: the first port of the enumeration with the USB identifiers 1A86:7523 (WCH
     * CH340) or 0403:6015 (FTDI FT-X). Logs the name it finds.
     *
     * @return the port's name, or FallbackPort if no such adapter is attached
     */
    QString getCOMPortWhenAuto();

    /** Tilts up until moveStop(), with the stored tilt speed. */
    void moveUp();

    /** Tilts down until moveStop(), with the stored tilt speed. */
    void moveDown();

    /** Pans left until moveStop(), with the stored pan speed. */
    void moveLeft();

    /** Pans right until moveStop(), with the stored pan speed. */
    void moveRight();

    /** Stops panning and tilting. */
    void moveStop();

    /**
     * Sends the camera to its home position and, 1000 ms later, to its widest view. The second command is
     * dropped if the port is closed by then; it is not logged.
     */
    void moveHome();

    /** Zooms in until zoomStop(), with the stored zoom speed. */
    void zoomIn();

    /** Zooms out until zoomStop(), with the stored zoom speed. */
    void zoomOut();

    /** Stops zooming. */
    void zoomStop();

    /**
     * Sends the camera to a stored preset.
     *
     * @param preset counted from 1, as on the wire; the byte sent is the remainder of its division by 255
     */
    void callPreset(int preset);

    /**
     * Stores the camera's position as a preset and tells the user so; returns when the user has dismissed
     * that message, which is shown whether or not the port is open.
     *
     * @param preset as for callPreset()
     */
    void setPreset(int preset);

    /** Writes bytes as they are; drops them while the port is closed. Writes no log line. */
    void sendHex(char* bytes, int count);

    /**
     * Writes a complete reply to the activity log.
     *
     * @param data the reply, allocated with new[]; released here
     * @param length its length in bytes, terminator included
     */
    void analyzeBuffer(char* data, int length);

    /** Looks at the line whenever it wakes the event loop, before the port reads from it. */
    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /** The port was opened. */
    void onDeviceConnected();

    /** The port was closed: on request, because the device is gone, or with the link itself. */
    void onDeviceDisconnected();

    /** The port reported an error that leaves it as it is, open or closed. */
    void onDeviceError();

    /** Never emitted. */
    void onDataFull();

private slots:
    void onReadyToRead();
    void onErrorOccured(QSerialPort::SerialPortError err);

private:
    void drive(const QString& logLine, const char* direction);
    void writeZoomFrame(char motion, int speed);
    void writePresetFrame(char action, int preset);
    void writeFrame(const char* bytes, qint64 count);
    void collectReplyByte(char byte);
    bool noticeLoss();
    void showError(const QString& reason);

    QSerialPort* serialPort;
    char* replyBuffer = nullptr;
    int replyIndex;
    bool isOpening = false;
    // The texts of the errors whose boxes the user has not dismissed yet.
    QStringList errorsOnScreen;
};
