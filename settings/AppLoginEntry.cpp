#include "settings/AppLoginEntry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

constexpr char EntryFileName[] = "Vantrel.desktop";
constexpr char EntryBegin[] = "[Desktop Entry]\nType=Application\nName=Vantrel\nIcon=vantrel\n";

// A text of the file.
QString escaped(QString text)
{
    return text.replace('\\', "\\\\").replace('\n', "\\n").replace('\t', "\\t").replace('\r', "\\r");
}

// An argument of Exec, which is escaped twice: for the quotes around it, then as a text of the file. A
// percent sign would begin a field code.
QString quoted(QString argument)
{
    for (const char special : {'\\', '"', '`', '$'})
        argument.replace(special, QString("\\") + special);
    return '"' + escaped(argument).replace('%', "%%") + '"';
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
    const QString program = QCoreApplication::applicationFilePath();
    entry.write((EntryBegin + ("TryExec=" + escaped(program)) + "\nExec=" + quoted(program) + '\n').toUtf8());
    entry.commit();
}
