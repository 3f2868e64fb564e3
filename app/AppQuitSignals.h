#pragma once

#include <QObject>

/**
 * Turns the operating system's requests to end (SIGINT, SIGTERM and SIGHUP: Ctrl+C, a shutdown, a closed
 * terminal) into an ordinary quit, so that a moving camera is stopped and changed settings are written. The
 * second such signal ends the process at once. One object per process.
 */
class AppQuitSignals : public QObject
{
    Q_OBJECT

public:
    explicit AppQuitSignals(QObject* parent);
    ~AppQuitSignals() override;
};
