#include "support/PrivateProfile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <sys/stat.h>

namespace {

// Each run appends its arguments, a zero byte after each, and a line feed; then it exits with the chosen
// code.
constexpr char Recorder[] = "#!/bin/sh\n"
                            "cd \"$(dirname \"$0\")\" || exit 125\n"
                            "{ for argument; do printf '%s\\0' \"$argument\"; done; echo; } >>runs\n"
                            "exit \"$(cat exit-code)\"\n";

} // namespace

void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

QByteArray fileContent(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

PrivateProfile::PrivateProfile()
    : oldPath(qgetenv("PATH"))
{
    QCoreApplication::setApplicationName("Vantrel");
    QDir(home.path()).mkdir("bin");
    QDir(home.path()).mkdir("run");
    QFile::setPermissions(home.filePath("run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    qputenv("HOME", home.path().toLocal8Bit());
    qputenv("XDG_DATA_HOME", home.filePath("data").toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", home.filePath("config").toLocal8Bit());
    qputenv("XDG_RUNTIME_DIR", home.filePath("run").toLocal8Bit());
    qputenv("PATH", home.filePath("bin").toLocal8Bit() + ':' + oldPath);

    writeFile(home.filePath("bin/osascript"), Recorder);
    QFile::setPermissions(home.filePath("bin/osascript"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    setOsascriptExitCode(0);
}

PrivateProfile::~PrivateProfile()
{
    qputenv("PATH", oldPath);
}

QString PrivateProfile::folder() const
{
    return home.filePath("data/Vantrel");
}

void PrivateProfile::createFolder() const
{
    QDir().mkpath(folder());
}

void PrivateProfile::store(const QString& key, const QVariant& value) const
{
    QSettings settings(settingsFile(), QSettings::IniFormat);
    settings.setValue(key, value);
}

QVariant PrivateProfile::stored(const QString& key) const
{
    // Read a copy: QSettings does not read a file again while its time and size are the same.
    const QTemporaryDir folder;
    const QString copy = folder.filePath("setting.ini");
    QFile::copy(settingsFile(), copy);
    return QSettings(copy, QSettings::IniFormat).value(key);
}

QStringList PrivateProfile::log() const
{
    QStringList entries = QString::fromUtf8(fileContent(logFile())).split('\n');
    entries.removeLast();
    return entries;
}

QVector<QStringList> PrivateProfile::osascriptRuns() const
{
    QVector<QStringList> runs;
    QFile file(home.filePath("bin/runs"));
    if (!file.open(QIODevice::ReadOnly))
        return runs;
    while (!file.atEnd()) {
        QByteArrayList arguments = file.readLine().split('\0');
        arguments.removeLast();
        runs.append(QStringList());
        for (const QByteArray& argument : std::as_const(arguments))
            runs.last().append(QString::fromUtf8(argument));
    }
    return runs;
}

void PrivateProfile::setOsascriptExitCode(int code) const
{
    writeFile(home.filePath("bin/exit-code"), QByteArray::number(code));
}

void PrivateProfile::holdOsascript() const
{
    const QString exitCode = home.filePath("bin/exit-code");
    QFile::remove(exitCode);
    if (mkfifo(qPrintable(exitCode), S_IRUSR | S_IWUSR) != 0)
        qFatal("cannot make %s", qPrintable(exitCode));
}

void PrivateProfile::removeOsascript() const
{
    QFile::remove(home.filePath("bin/osascript"));
}
