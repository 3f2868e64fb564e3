#pragma once

#include "Conversation.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSerialPort>
#include <QTimer>

/** Holds a dialogue with whatever camera is at a serial port, in the event loop of its thread. */
class Replay : public QObject
{
    Q_OBJECT

public:
    explicit Replay(const Dialogue& dialogue);

    /** Opens the port, a name or a path, and begins. Returns an empty text, or why it failed. */
    QString start(const QString& portName, int baudRate);

    /** Stops what a dialogue not over yet has set in motion. Returns whether there was one. */
    bool interrupt();

    /** How many answers were not the expected ones. */
    int differences() const { return conversation.differences(); }

    /** Why the dialogue ended before its time; empty if it did not. */
    QString failure() const { return failureReason; }

signals:
    /** A line of Conversation::takeReport(). */
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
