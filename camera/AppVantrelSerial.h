#pragma once

#include <QObject>
#include <QSerialPort>
#include <QString>
#include <QStringList>

class AppLineWatch;

/**
 * The link to the camera: one serial port, the VISCA commands that go out on it, and the reader that writes
 * the camera's replies to the activity log.
 *
 * Commands are addressed to camera 1 and may be given in any state. Each first writes a line to the activity
 * log, then gives its frame to the port, which sends it when the event loop next runs, or when the link
 * closes the port, as far as the line takes it. While the port is closed the frame is dropped silently.
 * Nothing waits for the camera. Speeds are read from the settings store at each command and go out as they
 * are stored, cut to a byte.
 *
 * Errors of the port are shown to the user in the port's own words, and the loss of the line in those of the
 * operating system; beyond that the link speaks through its signals only.
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

    /** Applies the settings to the port. An open port stays the device it is, but takes its baud rate at
     * once. */
    void setupSerialPort();

    /**
     * The name of the first port with the USB identifiers 1A86:7523 (WCH CH340) or 0403:6015 (FTDI FT-X),
     * which it logs; FallbackPort if no such adapter is attached.
     */
    QString getCOMPortWhenAuto();

    /** Tilt or pan until moveStop(), with the stored speeds. */
    void moveUp();
    void moveDown();
    void moveLeft();
    void moveRight();

    /** Stops panning and tilting. */
    void moveStop();

    /**
     * Sends the camera to its home position and, 1000 ms later, to its widest view. The second command is
     * dropped if the port is closed by then; it is not logged.
     */
    void moveHome();

    /** Zoom until zoomStop(), with the stored zoom speed. */
    void zoomIn();
    void zoomOut();

    /** Stops zooming. */
    void zoomStop();

    /** Recalls a preset, counted from 1 as on the wire: the byte is the remainder of its division by 255. */
    void callPreset(int preset);

    /**
     * Stores the camera's position as a preset, counted as above, and tells the user so, whether or not the
     * port is open; returns when the user has dismissed that message.
     */
    void setPreset(int preset);

    /** Writes bytes as they are; drops them while the port is closed. Writes no log line. */
    void sendHex(char* bytes, int count);

    /** Writes a reply of this many bytes to the activity log. Takes the bytes over, which are of new[]. */
    void analyzeBuffer(char* data, int length);

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
    void reset();
    void showError(const QString& reason);

    QSerialPort* serialPort;
    char* replyBuffer = nullptr;
    int replyIndex;
    AppLineWatch* lineWatch;
    bool isOpening = false;
    // The texts of the errors whose boxes the user has not dismissed yet.
    QStringList errorsOnScreen;
};
