#pragma once

#include <QObject>
#include <QSerialPort>
#include <QString>
#include <QStringList>

class AppLineWatch;

/**
 * The link to the camera: one serial port, the VISCA commands that it sends, and the reader that writes the
 * camera's replies to the activity log.
 *
 * Commands are addressed to camera 1 and may be called in any state. Each one first writes an entry to the
 * activity log and then hands its frame to the port. The port sends the frame when the event loop next runs,
 * or when the link closes the port; what the serial line does not accept then is lost. While the port is
 * closed, frames are dropped silently. Nothing waits for the camera. Each command reads the speeds from the
 * settings store and sends them unchecked, as the low byte of the stored number.
 *
 * A message box shows each port error with the port's own text, and the loss of the device with the operating
 * system's. The same text is not shown again while its box is open. The other classes learn of the link's
 * state from its signals only.
 */
class AppVantrelSerial : public QObject
{
    Q_OBJECT

public:
    /** Creates a closed link. */
    AppVantrelSerial();

    /** Closes the port and emits onDeviceDisconnected(). Uses neither the settings store nor the log. */
    ~AppVantrelSerial() override;

    /**
     * Opens the stored port with the stored baud rate, 8 data bits, no parity, one stop bit and no flow
     * control. Emits onDeviceConnected(); on failure, shows the port's error and emits onDeviceError().
     */
    void openSerialPort();

    /** Closes the port if it is open; emits onDeviceDisconnected() in any case. */
    void closeSerialPort();

    /** Whether the port is open. */
    bool isConnected();

    /** Applies the settings to the port. If it is open, the new baud rate acts at once, but the new port name
     * only at the next open. */
    void setupSerialPort();

    /**
     * Finds the first port with the USB identifiers 1A86:7523 (WCH CH340) or 0403:6015 (FTDI FT-X), and logs
     * its name.
     *
     * @return the port's name; FallbackPort if no such adapter is attached
     */
    QString getCOMPortWhenAuto();

    /** Start tilting or panning, with the stored speeds. The camera moves until moveStop(). */
    void moveUp();
    void moveDown();
    void moveLeft();
    void moveRight();

    /** Stops panning and tilting. */
    void moveStop();

    /**
     * Sends the camera to its home position and, 1000 ms later, zooms out at full speed to the widest view.
     * The second command is not logged; it is dropped if the port is closed by then.
     */
    void moveHome();

    /** Start zooming, with the stored zoom speed. The camera zooms until zoomStop(). */
    void zoomIn();
    void zoomOut();

    /** Stops zooming. */
    void zoomStop();

    /**
     * Moves the camera to a stored preset.
     *
     * @param preset the preset's number, counted from 1; sent as it is, modulo 255
     */
    void callPreset(int preset);

    /**
     * Stores the camera's position as a preset, then shows a message that it is set, even if the port is
     * closed. Returns when the user has dismissed the message.
     *
     * @param preset the preset's number, as for callPreset()
     */
    void setPreset(int preset);

    /** Sends bytes unchanged; drops them while the port is closed. Logs nothing. */
    void sendHex(char* bytes, int count);

    /** Logs a reply of `length` bytes. Takes ownership of `data`, which has to be allocated by new[]. */
    void analyzeBuffer(char* data, int length);

signals:
    /** The port was opened. */
    void onDeviceConnected();

    /** The port was closed: on request, because the device is gone, or because the link is destroyed. */
    void onDeviceDisconnected();

    /** The port reported an error that does not change whether it is open. */
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
