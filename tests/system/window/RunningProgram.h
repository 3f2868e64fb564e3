#pragma once

#include <QProcess>

/**
 * A built program in a process of its own, in the account, with the serial ports and with the look of this
 * process. A warning of Qt ends it.
 */
class RunningProgram
{
public:
    explicit RunningProgram(const QString& path, const QStringList& arguments = {});

    /** Ends the program if it still runs; the test fails if the program does not end with success. */
    ~RunningProgram();
    Q_DISABLE_COPY(RunningProgram)

    /**
     * Waits until the program has ended by itself.
     *
     * @return empty if it ended with success, or what happened and what it said
     */
    QString troubleAtExit();

    /** Whether the running program has this file or device open. */
    bool hasOpen(const QString& path) const;

private:
    QProcess process;
};
