#include "system/window/Desktop.h"

#include <QProcess>

Desktop& desktop()
{
    static const auto own = qgetenv("QT_QPA_PLATFORM") == "wayland" ? waylandDesktop() : x11Desktop();
    return *own;
}

QByteArray outputOf(const QString& tool, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(tool, arguments);
    if (!process.waitForFinished())
        qFatal("%s %s: %s", qPrintable(tool), qPrintable(arguments.join(' ')),
               qPrintable(process.errorString()));
    return process.readAll();
}
