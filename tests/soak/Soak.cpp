#include "soak/Soak.h"

#include <QDir>
#include <QFile>

#include <cstddef>
#include <malloc.h>
#include <unistd.h>
#ifdef __SANITIZE_ADDRESS__
// libgcc has the function, but no header declares it.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace {

qint64 allocatedBytes()
{
#ifdef __SANITIZE_ADDRESS__
    return static_cast<qint64>(__sanitizer_get_current_allocated_bytes());
#else
    const struct mallinfo2 heap = mallinfo2();
    return static_cast<qint64>(heap.uordblks) + static_cast<qint64>(heap.hblkhd);
#endif
}

qint64 residentPages()
{
    QFile file("/proc/self/statm");
    if (!file.open(QIODevice::ReadOnly))
        qFatal("the process cannot read its own memory use");
    return file.readAll().split(' ').at(1).toLongLong();
}

QString inKiB(qint64 bytes)
{
    return (bytes < 0 ? "" : "+") + QString::number(static_cast<double>(bytes) / 1024, 'f', 1) + " KiB";
}

} // namespace

Memory Memory::now()
{
    return {allocatedBytes(), residentPages() * sysconf(_SC_PAGESIZE)};
}

QString Memory::growthSince(const Memory& earlier) const
{
    return "heap " + inKiB(heapBytes - earlier.heapBytes) + ", resident " +
           inKiB(residentBytes - earlier.residentBytes);
}

qint64 openDescriptors()
{
    return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System | QDir::NoDotAndDotDot).size();
}

LogTail::LogTail(const QString& file)
    : path(file)
{
}

QStringList LogTail::newLines()
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(position))
        return {};
    const QByteArray added = file.readAll();
    const QByteArray whole = added.left(added.lastIndexOf('\n') + 1);
    position += whole.size();
    QStringList lines = QString::fromUtf8(whole).split('\n');
    lines.removeLast();
    return lines;
}
