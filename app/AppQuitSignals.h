#pragma once

#include <QObject>

/**
 * Turns the operating system's requests to end (SIGINT, SIGTERM, SIGHUP and SIGPIPE: Ctrl+C, a shutdown, a
 * closed terminal, a reader of the output that went away) into an ordinary quit, so that destructors run: a
 * moving camera is stopped, changed settings are written. The same signal a second time ends the process at
 * once. A signal that the process was started to ignore, as by nohup, stays ignored. One object per process.
 */
class AppQuitSignals : public QObject
{
    Q_OBJECT

public:
    /** Takes the signals over; where the system has no pipe left they keep ending the process at once. */
    explicit AppQuitSignals(QObject* parent);

    /** Gives the signals back. */
    ~AppQuitSignals() override;
};
