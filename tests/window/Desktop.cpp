#include "window/Desktop.h"

#include "window/X11Desktop.h"

#include <QProcess>

Desktop& desktop()
{
    static X11Desktop own;
    return own;
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
