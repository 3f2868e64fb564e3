#pragma once

#include <QProcess>

/**
 * The built program in a process of its own, in the account and with the serial ports of this process. Its
 * look depends on nothing of the machine: one font, one style, one resolution. A warning of Qt ends it.
 */
class RunningProgram
{
public:
    RunningProgram();

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
