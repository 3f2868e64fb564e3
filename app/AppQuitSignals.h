#pragma once

#include <QObject>

/**
 * Turns SIGINT (Ctrl+C), SIGTERM (a shutdown), SIGHUP (a closed terminal) and SIGPIPE (the reader of the
 * output has ended) into an ordinary quit, so that the destructors run: they stop a moving camera and write
 * changed settings. The same signal a second time ends the process at once. A signal that was ignored when
 * the process started, for example by nohup, stays ignored. Create one object per process.
 */
class AppQuitSignals : public QObject
{
    Q_OBJECT

public:
    /** Installs the signal handlers. If pipe() fails, the signals still end the process at once. */
    explicit AppQuitSignals(QObject* parent);

    /** Restores the default action of each handled signal. */
    ~AppQuitSignals() override;
};
