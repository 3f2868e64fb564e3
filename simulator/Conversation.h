#pragma once

#include "Dialogue.h"

#include <QMap>

#include <deque>
#include <set>
#include <utility>

/**
 * Plays the controller in a dialogue with a camera. It has no serial line and no clock: the owner passes
 * bytes and times.
 *
 * It sends a frame only when the line is quiet, so one missing or additional answer is one difference and
 * does not shift all later steps. After a difference and at the end, it stops what the dialogue has set in
 * motion.
 */
class Conversation
{
public:
    using Time = Dialogue::Time;

    explicit Conversation(const Dialogue& dialogueToHold);

    /** Takes the bytes that the camera has sent and continues the dialogue at the time `now`. */
    void proceed(const QByteArray& bytes, Time now);

    /** Outputs the frames that stop what the dialogue has set in motion. */
    void stop(Time now);

    /** Returns the bytes to send now and removes them here. */
    QByteArray takeOutput() { return std::exchange(output, {}); }

    /** Returns the new entries of the report: one for each frame sent, and one for each answer, with the
     * expected answer and the time in milliseconds. */
    QStringList takeReport() { return std::exchange(report, {}); }

    /** When to call proceed() next if no bytes arrive before. */
    Time nextDue() const { return due; }

    bool isOver() const { return over; }

    /** Whether the camera has sent nothing, although answers were expected. */
    bool isMute() const { return sentCount > 0 && differenceCount > 0 && !heardAnything; }

    /** The number of answers that were missing, wrong, too early or not expected. */
    int differences() const { return differenceCount; }

private:
    struct Answer
    {
        QByteArray bytes;
        Time at;
    };

    void takeAnswers(const QByteArray& bytes);
    void noteSocket(const QByteArray& answer);
    bool perform(const Dialogue::Step& step);
    bool settles(Time time);
    bool waits(Time time);
    bool expect(const Dialogue::Step& step);
    bool isExpectedLater(const QByteArray& answer) const;
    bool matches(const Dialogue::Step& step, const QByteArray& answer) const;
    void rejectAnswers();
    void rejectUnexpected();
    void say(const QByteArray& frames, const QString& remark);
    void tell(const QByteArray& expected, const Answer& answer, const QString& difference,
              const QString& remark = {});

    const Dialogue dialogue;
    /** The width of the column of expected answers. */
    const int width;
    std::size_t current = 0;
    QByteArray output;
    QStringList report;
    QByteArray received;
    std::deque<Answer> answers;
    /** Answers that were not expected, until it is known which expected answer each replaces, if any. */
    std::deque<Answer> unexpected;
    /** The frame that stops each part set in motion, and the cancel frame of each socket in use. */
    QMap<std::size_t, QByteArray> stops;
    std::set<QByteArray> sockets;
    Time clock{0};
    Time sentAt{0};
    Time lastByteAt{0};
    Time due{0};
    int sentCount = 0;
    int differenceCount = 0;
    /** Whether to ignore what arrives: before the first frame, and after the frames that stop the camera. */
    bool isDeaf = true;
    bool hasDiffered = false;
    bool heardAnything = false;
    bool over = false;
};
