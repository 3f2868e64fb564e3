#pragma once

#include <QMap>
#include <QProcess>

/**
 * A built program in a process of its own. It has the account, the serial ports and the look of this process.
 * A warning of Qt ends it.
 */
class RunningProgram
{
public:
    using Variables = QMap<QString, QString>;

    /** @param environment variables in addition to those of this process */
    explicit RunningProgram(const QString& path = VANTREL_PATH, const QStringList& arguments = {},
                            const Variables& environment = {});

    /** Ends the program if it still runs; the test fails if the program does not end with success. */
    ~RunningProgram();
    Q_DISABLE_COPY(RunningProgram)

    /**
     * Waits until the program has ended.
     *
     * @return empty if it ended with success, or the exit code and what it printed
     */
    QString troubleAtExit();

    qint64 id() const { return process.processId(); }

    /** What it has printed so far. */
    QString output();

    /** Whether the running program has this file or device open. */
    bool hasOpen(const QString& path) const;

private:
    QProcess process;
    QString said;
};
