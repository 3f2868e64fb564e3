#include "PortLink.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <cerrno>
#include <cstdio>

#include <unistd.h>

namespace {

// The terminals of one kind differ only in their number: "/dev/pts/12" and "/dev/pts/3", "/dev/ttys012" and
// "/dev/ttys003".
QString withoutNumber(const QString& terminal)
{
    static const QRegularExpression number("\\d+$");
    return QString(terminal).remove(number);
}

} // namespace

QString PortLink::pointTo(const QString& terminal)
{
    if (linkPath.isEmpty())
        return {};
    const QFileInfo present(linkPath);
    if (present.isSymLink() && withoutNumber(present.symLinkTarget()) != withoutNumber(terminal))
        return QString("%1 is a link to something else: %2").arg(linkPath, present.symLinkTarget());
    if (!present.isSymLink() && present.exists())
        return QString("%1 exists and is not a link").arg(linkPath);

    const QByteArray link = QFile::encodeName(linkPath);
    const QByteArray newLink = link + '.' + QByteArray::number(QCoreApplication::applicationPid());
    if (symlink(QFile::encodeName(terminal).constData(), newLink.constData()) != 0 ||
        std::rename(newLink.constData(), link.constData()) != 0) {
        const QString reason = qt_error_string(errno);
        unlink(newLink.constData());
        return QString("cannot make the link %1: %2").arg(linkPath, reason);
    }
    target = terminal;
    return {};
}

void PortLink::remove()
{
    if (!target.isEmpty() && QFileInfo(linkPath).symLinkTarget() == target)
        QFile::remove(linkPath);
    target.clear();
}
