#include "settings/AppLoginEntry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

constexpr char EntryFileName[] = "Vantrel.desktop";
constexpr char EntryBegin[] = "[Desktop Entry]\nType=Application\nName=Vantrel\nIcon=vantrel\nExec=";

// An argument of Exec is escaped twice: for the quotes around it, then as a text of the file. A percent sign
// would begin a field code.
QString quoted(QString argument)
{
    for (const char special : {'\\', '"', '`', '$'})
        argument.replace(special, QString("\\") + special);
    argument.replace('\\', "\\\\").replace('\n', "\\n").replace('\t', "\\t").replace('\r', "\\r");
    return '"' + argument.replace('%', "%%") + '"';
}

} // namespace

void setLoginEntry(bool enabled)
{
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + "/autostart");
    const QString path = folder.filePath(EntryFileName);
    if (!enabled) {
        QFile::remove(path);
        return;
    }

    folder.mkpath(".");
    QSaveFile entry(path);
    if (!entry.open(QIODevice::WriteOnly))
        return;
    entry.write((EntryBegin + quoted(QCoreApplication::applicationFilePath()) + '\n').toUtf8());
    entry.commit();
}
