#include "system/window/Desktop.h"

#include "system/window/WaylandDesktop.h"
#include "system/window/X11Desktop.h"

#include <QProcess>

#include <memory>

Desktop& desktop()
{
    static const auto own = []() -> std::unique_ptr<Desktop> {
        if (qgetenv("QT_QPA_PLATFORM") == "wayland")
            return std::make_unique<WaylandDesktop>();
        return std::make_unique<X11Desktop>();
    }();
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
