#pragma once

#include "Conversation.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSerialPort>
#include <QTimer>

/** Holds a dialogue with the camera at a serial port. Needs an event loop. */
class Replay : public QObject
{
    Q_OBJECT

public:
    explicit Replay(const Dialogue& dialogue);

    /** Opens the port, given by name or path, and begins. Returns the reason of a failure, else an empty
     * text. */
    QString start(const QString& portName, int baudRate);

    /** If the dialogue is not over yet, ends it and stops what it has set in motion. Returns whether it was.
     */
    bool interrupt();

    /** The number of answers that were missing, wrong, too early or not expected. */
    int differences() const { return conversation.differences(); }

    /** Why the dialogue ended early; empty if it did not. */
    QString failure() const { return failureReason; }

signals:
    /** A new entry of Conversation::takeReport(). */
    void reported(const QString& line);

    /** The dialogue is over. */
    void finished();

private slots:
    void proceed();

private:
    Conversation::Time now() const { return Conversation::Time(clock.elapsed()); }

    void exchange();
    void finish(const QString& reason);

    Conversation conversation;
    QSerialPort port;
    /** The port as the user named it. */
    QString given;
    QTimer wakeTimer;
    QElapsedTimer clock;
    QString failureReason;
};
