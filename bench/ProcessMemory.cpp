#include "ProcessMemory.h"

#include <QByteArray>
#include <QFile>

double processMemory(qint64 pid, const char* field)
{
    QFile status("/proc/" + QString::number(pid) + "/status");
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const auto lines = status.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const auto words = line.simplified().split(' ');
        if (words.first() == QByteArray(field) + ':')
            return words.at(1).toDouble();
    }
    return 0;
}
