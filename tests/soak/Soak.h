#pragma once

#include <QString>
#include <QStringList>

/** How often the long tests repeat something: a few times, or many times if VANTREL_SOAK is set. */
inline int rounds(int ordinary, int soak)
{
    return qEnvironmentVariableIsSet("VANTREL_SOAK") ? soak : ordinary;
}

/** The heap may be this much larger after any number of rounds. */
constexpr qint64 LeakAllowance = 65536;

/** The memory of this process. */
struct Memory
{
    /** The process as it is now. */
    static Memory now();

    /** "heap +1.2 KiB, resident +0 KiB", from an earlier state to this one. */
    QString growthSince(const Memory& earlier) const;

    /** What has been allocated and not freed. */
    qint64 heapBytes;

    /** What the process has in RAM (VmRSS). */
    qint64 residentBytes;
};

/** How many files and lines the process has open. */
qint64 openDescriptors();

/** Follows a log file. */
class LogTail
{
public:
    explicit LogTail(const QString& file);

    /** The whole entries that have been added since the last call. */
    QStringList newLines();

private:
    QString path;
    qint64 position = 0;
};
