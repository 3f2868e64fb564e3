#pragma once

#include "Dialogue.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSerialPort>
#include <QTimer>

/**
 * Holds a dialogue with whatever camera is at a serial port, as its controller, in the event loop of its
 * thread, and compares what comes back.
 */
class Replay : public QObject
{
    Q_OBJECT

public:
    explicit Replay(const Dialogue& dialogueToHold);

    /**
     * Opens the port (a name or a path; 8 data bits, no parity, one stop bit, no flow control) and begins.
     * Returns an empty text on success, otherwise the reason of the failure.
     */
    QString start(const QString& portName, int baudRate);

    /** How many answers were not the expected ones. */
    int differences() const { return differenceCount; }

    /** Why the dialogue ended before its time; empty if it did not. */
    QString failure() const { return failureReason; }

signals:
    /**
     * One line, without its end, for each frame sent and for each answer: the expected one, the one received,
     * and how many milliseconds after the frame it came.
     */
    void reported(const QString& line);

    /** The dialogue is over. */
    void finished();

private slots:
    void proceed();
    void giveUp(QSerialPort::SerialPortError error);

private:
    using Time = Dialogue::Time;

    bool perform(const Dialogue::Step& step);
    void send(const Dialogue::Step& step);
    QByteArray takeAnswer();
    void compare(const Dialogue::Step& step, const QByteArray& answer);
    void expectNothing();
    void report(const QString& expected, const QString& answer, const QString& difference);
    Time now() const;
    void wakeAt(Time time);

    const Dialogue dialogue;
    /** The width of the column of expected answers. */
    const int width;
    QSerialPort port;
    QTimer wakeTimer;
    QElapsedTimer sinceLastFrame;
    QByteArray received;
    std::size_t current = 0;
    Time endsAt{0};
    int differenceCount = 0;
    QString failureReason;
};
