#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

/** Replaces the content of a file; the test ends if the file cannot be written. */
void writeFile(const QString& path, const QByteArray& content);

/** What is in a file; nothing if it cannot be read. */
QByteArray fileContent(const QString& path);

/**
 * A user's account made for one test: empty settings and log folders, and an "osascript" on PATH that records
 * how it is run. Create it before the program.
 */
class PrivateProfile
{
public:
    PrivateProfile();
    ~PrivateProfile();
    Q_DISABLE_COPY(PrivateProfile)

    /** The folder of "setting.ini" and "app.log", without a trailing separator. It does not exist at first.
     */
    QString folder() const;
    void createFolder() const;

    QString settingsFile() const { return folder() + "/setting.ini"; }

    QString logFile() const { return folder() + "/app.log"; }

    /** Stores a setting as an earlier run of the program would have; creates the folder. */
    void store(const QString& key, const QVariant& value) const;

    /** What the settings file holds now; invalid if the key is missing. */
    QVariant stored(const QString& key) const;

    /** The entries of the activity log; empty if there is none. */
    QStringList log() const;

    /** The arguments of every run of osascript so far, in order. */
    QVector<QStringList> osascriptRuns() const;

    /** Makes the recorder end with this exit code from now on. */
    void setOsascriptExitCode(int code) const;

    /** Makes the next run of osascript wait for setOsascriptExitCode(). */
    void holdOsascript() const;

    /** Takes osascript off PATH. */
    void removeOsascript() const;

private:
    QTemporaryDir home;
    QByteArray oldPath;
};
