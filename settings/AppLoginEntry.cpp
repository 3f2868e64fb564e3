#include "settings/AppLoginEntry.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

constexpr char EntryFileName[] = "Vantrel.desktop";
constexpr char EntryBegin[] = "[Desktop Entry]\nType=Application\nName=Vantrel\nIcon=vantrel\n";

// Escapes a string value of a desktop entry.
QString escaped(QString text)
{
    return text.replace('\\', "\\\\").replace('\n', "\\n").replace('\t', "\\t").replace('\r', "\\r");
}

// Quotes an argument of Exec. It is escaped twice: for its quotes, and as a string value. A single percent
// sign would begin a field code.
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
