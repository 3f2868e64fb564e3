#pragma once

#include <QByteArray>
#include <QRandomGenerator>

#include <chrono>
#include <deque>
#include <optional>
#include <vector>

/**
 * What a bad line or a bad camera does to the replies on their way to the controller.
 *
 * It is handed each reply when the camera gives it and hands back the bytes to put on the line and when.
 * Times are milliseconds on the caller's clock and never run backwards. Bytes never change places, and split,
 * join and late lose none. With the same seed the same replies get the same faults, on every platform.
 */
class ReplyFaults
{
public:
    using Time = std::chrono::milliseconds;

    /** The faults asked for; by default none. They combine. */
    struct Options
    {
        /** Nothing ever comes back. */
        bool noReplies = false;
        /** Every reply comes this much later. */
        Time late{0};
        /** Every reply comes in two to four pieces, cut at random places, a random while apart. */
        bool split = false;
        /** Replies wait a random while for others and come in one piece with them. */
        bool join = false;
        /** One to four random bytes before every reply, any but 90, which would begin a reply. */
        bool noise = false;
        /** Exactly this many bytes (0 or more) between the first byte and FF: padded with 00 or cut. */
        std::optional<int> length;
        /** Start of the random numbers. */
        quint32 seed = 1;

        bool any() const { return noReplies || late > Time::zero() || split || join || noise || length; }
    };

    explicit ReplyFaults(const Options& options);

    /** Takes one whole reply (header to FF) that the camera gives at `now`. */
    void take(const QByteArray& reply, Time now);

    /** The pieces to be sent by `now`, in order, each in a write of its own. */
    std::vector<QByteArray> release(Time now);

    /** When release() next has something; nothing when all is sent. */
    std::optional<Time> nextDue() const;

private:
    struct Piece
    {
        Time due;
        QByteArray bytes;
    };

    QByteArray resized(const QByteArray& reply) const;
    QByteArray noise();
    void send(const QByteArray& bytes, Time due);
    Time randomTime(Time shortest, Time longest);

    const Options faults;
    QRandomGenerator random;
    std::deque<Piece> pieces;
    Time lastDue{0};
    Time joinsUntil{-1};
};
