#pragma once

#include "Dialogue.h"

#include <QMap>

#include <deque>
#include <set>
#include <utility>

/**
 * A dialogue being held with a camera, as its controller, without a line or a clock of its own.
 *
 * A frame is sent when the line is quiet, so that an answer too many or too few is one difference and not
 * one in every later step. A difference and the end stop what the dialogue has set in motion.
 */
class Conversation
{
public:
    using Time = Dialogue::Time;

    explicit Conversation(const Dialogue& dialogueToHold);

    /** Goes on at `now`, when the camera has said `bytes`. */
    void proceed(const QByteArray& bytes, Time now);

    /** Sends what stops the camera, now. */
    void stop(Time now);

    /** The bytes to be sent now, if any. */
    QByteArray takeOutput() { return std::exchange(output, {}); }

    /** A line for each frame sent and for each answer, with what was expected and its milliseconds. */
    QStringList takeReport() { return std::exchange(report, {}); }

    /** When to proceed() if the camera says nothing until then. */
    Time nextDue() const { return due; }

    bool isOver() const { return over; }

    /** Whether not a byte came, although answers were expected. */
    bool isMute() const { return sentCount > 0 && differenceCount > 0 && !heardAnything; }

    /** How many answers were missing, wrong, too early or not expected. */
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
    /** Those that were not expected where they came, until it is clear what they came instead of. */
    std::deque<Answer> unexpected;
    /** What stops what the camera was told to move, and what cancels what it does in its sockets. */
    QMap<std::size_t, QByteArray> stops;
    std::set<QByteArray> sockets;
    Time clock{0};
    Time sentAt{0};
    Time lastByteAt{0};
    Time due{0};
    int sentCount = 0;
    int differenceCount = 0;
    /** Nobody expects what the camera says before the first frame and to a stop. */
    bool isDeaf = true;
    bool hasDiffered = false;
    bool heardAnything = false;
    bool over = false;
};
