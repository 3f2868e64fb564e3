#pragma once

#include <QObject>
#include <QString>

class QSettings;

/** The port setting that means: find the camera's adapter by its USB identifiers. */
constexpr char AutoPort[] = "AUTO";

/** The port to open if none is stored, or if AutoPort finds no adapter. */
constexpr char FallbackPort[] = "COM1";

/** The baud rate if none is stored. */
constexpr int DefaultBaudRate = 9600;

/** The lowest number of a preset that a user can choose. */
constexpr int FirstPreset = 1;

/** The highest number of a preset that a user can choose. */
constexpr int LastPreset = 64;

/** The name of a preset that the user has not named: "Preset" and its number. */
QString defaultPresetName(int preset);

/**
 * The settings store. It keeps all settings in the INI file "setting.ini". It also writes the activity log
 * "app.log" in the same folder, and registers the program as a login item.
 *
 * Getters return the stored value unchecked, or the default if none is stored. QVariant converts it: a text
 * in place of a number gives 0. Setters change the value in memory at once; QSettings writes the file when
 * the event loop next runs, at the latest at destruction. Failures are silent: if the file cannot be read,
 * the defaults apply; if it cannot be written, the values last until the program ends.
 */
class AppSettingsManager : public QObject
{
    Q_OBJECT

public:
    /** Opens the settings file and writes its folder to the debug output. */
    AppSettingsManager();

    /** Writes pending changes to the file. */
    ~AppSettingsManager() override;

    /**
     * The per-user folder of "setting.ini" and "app.log", with a trailing separator. It may not exist yet.
     */
    QString getDefaultPath();

    /** The executable's path with a trailing separator. */
    QString getApplicationPath();

    /** The port to open: AutoPort, or a name as QSerialPortInfo lists it. Default FallbackPort. */
    QString getCOMPort();
    void setCOMPort(QString port);

    /** The baud rate of the serial line. Default DefaultBaudRate. */
    int getBaudRate();
    void setBaudRate(int baudRate);

    /** The pan speed code; a VISCA camera takes 1 to 24 (hexadecimal 18) on common models. Default 5. */
    int getPanSpeed();
    void setPanSpeed(int speed);

    /** The tilt speed code; a VISCA camera takes 1 to 20 (hexadecimal 14) on common models. Default 5. */
    int getTiltSpeed();
    void setTiltSpeed(int speed);

    /** The zoom speed code; a VISCA camera takes 0 to 7. Default 5. */
    int getZoomSpeed();
    void setZoomSpeed(int speed);

    /** Whether Left and Right are swapped. Default false. */
    bool getInvertPan();
    void setInvertPan(bool invert);

    /** Whether Up and Down are swapped. Default false. */
    bool getInvertTilt();
    void setInvertTilt(bool invert);

    /** The preset to recall on connection if getIsStartUpPreset(), counted from 1. Default 1. */
    int getStartUpPreset();
    void setStartUpPreset(int preset);

    /** Whether a preset is recalled on every connection. Default false. */
    bool getIsStartUpPreset();
    void setIsStartUpPreset(bool enabled);

    /** Whether the user wants the program started at login. Default false. */
    bool getRunOnStartUp();

    /**
     * Stores the choice, then runs "osascript" once, which adds the application bundle to the user's macOS
     * login items or removes it. Blocks until "osascript" has ended; a failure is not reported. On Linux it
     * also writes or removes the autostart file, see setLoginEntry().
     */
    void setRunOnStartUp(bool enabled);

    /** Whether to run as administrator. The choice is stored, but nothing uses it. Default false. */
    bool getRunAsAdmin();
    void setRunAsAdmin(bool enabled);

    /**
     * The name of a preset. Each port setting has names of its own; these belong to the present one.
     *
     * @param preset the preset's number, counted from 1
     * @return the stored name, by default defaultPresetName()
     */
    QString getPresetName(int preset);
    void setPresetName(int preset, QString name);

    /** The bundle's name up to its first dot, e.g. "Vantrel" for Vantrel.app. */
    QString macOSXAppBundleName();

    /** The folder two levels above the executable's own, which on macOS is the bundle. No trailing "/". */
    QString macOSXAppBundlePath();

    /**
     * Appends an entry to the activity log. It is in the file when this returns. It is lost silently if the
     * folder does not exist or the file cannot be written.
     *
     * @param message the entry without its line feed; written as UTF-8
     */
    void log(QString message);

private:
    QSettings* settings;
};
