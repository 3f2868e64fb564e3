#pragma once

#include <QObject>
#include <QString>

class QSettings;

/** The port setting that stands for "find the camera's adapter by its USB identifiers". */
constexpr char AutoPort[] = "AUTO";

/** The port used while none is stored, and when no adapter is found. */
constexpr char FallbackPort[] = "COM1";

/** The line's speed, in baud, while none is stored. */
constexpr int DefaultBaudRate = 9600;

/** The presets that a user can choose are counted from here ... */
constexpr int FirstPreset = 1;

/** ... to here. */
constexpr int LastPreset = 64;

/** The name of a preset that was given none: "Preset" and its number. */
QString defaultPresetName(int preset);

/**
 * The settings store: every setting that outlives the program, in the INI file "setting.ini"; also the
 * activity log "app.log" beside it, and the registration as a login item.
 *
 * Getters return the stored value unchecked, converted as QVariant does it (a text where a number belongs
 * reads as 0), or the default when nothing is stored. Setters take effect at once in memory; QSettings
 * writes the file when the event loop next runs, at the latest at destruction. Failures are silent: a file
 * that cannot be read gives the defaults, one that cannot be written keeps the values for this run only.
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

    /** The port to open: AutoPort or a name as the platform's enumeration gives it. Default FallbackPort. */
    QString getCOMPort();
    void setCOMPort(QString port);

    /** The line's speed in baud. Default DefaultBaudRate. */
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

    /** Whether Left and Right change places. Default false. */
    bool getInvertPan();
    void setInvertPan(bool invert);

    /** Whether Up and Down change places. Default false. */
    bool getInvertTilt();
    void setInvertTilt(bool invert);

    /** The preset, counted from 1, recalled on connection if getIsStartUpPreset(). Default 1. */
    int getStartUpPreset();
    void setStartUpPreset(int preset);

    /** Whether a preset is recalled on every connection. Default false. */
    bool getIsStartUpPreset();
    void setIsStartUpPreset(bool enabled);

    /** Whether the user wants the program started at login. Default false. */
    bool getRunOnStartUp();

    /**
     * Stores the choice, then adds the application bundle to the user's macOS login items or removes it, by
     * one run of "osascript". Blocks until that has ended; whether it succeeded is not reported. On Linux it
     * also writes or removes the desktop's start entry, see setLoginEntry().
     */
    void setRunOnStartUp(bool enabled);

    /** A stored choice that nothing acts on. Default false. */
    bool getRunAsAdmin();
    void setRunAsAdmin(bool enabled);

    /**
     * The name of a preset. Names belong to the port setting in force: another port setting has other names.
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
     * Appends one line to the activity log. The line is on disk when this returns. It is lost, silently,
     * while the folder does not exist or the file cannot be written.
     *
     * @param message the line without its line feed; written as UTF-8
     */
    void log(QString message);

private:
    QSettings* settings;
};
