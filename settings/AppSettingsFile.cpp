#include "settings/AppSettingsFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

bool isUtf8(const QByteArray& bytes)
{
    // Some editors begin a file with a byte order mark. fromUtf8() drops it, so the texts would differ.
    return bytes.startsWith("\xEF\xBB\xBF") ||
           QString::fromUtf8(bytes.data(), bytes.size()).toUtf8() == bytes;
}

bool makeUtf8(const QString& path)
{
    QFile file(path);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (isUtf8(bytes))
        return true;
    QSaveFile converted(path);
    if (converted.open(QIODevice::WriteOnly))
        converted.write(QString::fromLatin1(bytes).toUtf8());
    return converted.isOpen() && converted.commit();
}

} // namespace

bool prepareSettingsFile(const QString& path)
{
    const QFileInfo lock(path + ".lock");
    if (lock.exists() && lock.size() == 0)
        QFile::remove(lock.filePath());
    return makeUtf8(path);
}
