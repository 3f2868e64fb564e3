#include "ReplyFaults.h"

#include <algorithm>

namespace {

using Time = ReplyFaults::Time;

// Long enough that a controller reads the pieces one by one.
constexpr Time shortestGap{5};
constexpr Time longestGap{30};
// Long enough that an ACK often meets its completion, and both the next command's.
constexpr Time shortestWait{20};
constexpr Time longestWait{150};

constexpr int mostCuts = 3;
constexpr int mostNoise = 4;
constexpr char replyHeader = '\x90';

} // namespace

ReplyFaults::ReplyFaults(const Options& options)
    : faults(options)
    , random(options.seed)
{
}

void ReplyFaults::take(const QByteArray& reply, Time now)
{
    if (faults.noReplies)
        return;
    Time due = now + faults.late;
    if (faults.join) {
        if (due > joinsUntil)
            joinsUntil = due + randomTime(shortestWait, longestWait);
        due = joinsUntil;
    }

    QByteArray rest = faults.length ? resized(reply) : reply;
    if (faults.noise)
        rest.prepend(noise());
    if (faults.split) {
        for (int cuts = random.bounded(1, mostCuts + 1); cuts > 0 && rest.size() > 1; --cuts) {
            const int cut = random.bounded(1, static_cast<int>(rest.size()));
            send(rest.left(cut), due);
            rest.remove(0, cut);
            due = lastDue + randomTime(shortestGap, longestGap);
        }
    }
    send(rest, due);
}

std::vector<QByteArray> ReplyFaults::release(Time now)
{
    std::vector<QByteArray> released;
    for (; !pieces.empty() && pieces.front().due <= now; pieces.pop_front())
        released.push_back(pieces.front().bytes);
    return released;
}

std::optional<ReplyFaults::Time> ReplyFaults::nextDue() const
{
    if (pieces.empty())
        return std::nullopt;
    return pieces.front().due;
}

QByteArray ReplyFaults::resized(const QByteArray& reply) const
{
    const QByteArray body = reply.mid(1, reply.size() - 2).leftJustified(*faults.length, '\0', true);
    return reply.left(1) + body + reply.right(1);
}

QByteArray ReplyFaults::noise()
{
    QByteArray bytes;
    for (int left = random.bounded(1, mostNoise + 1); left > 0; --left) {
        const auto byte = static_cast<char>(random.bounded(0, 0x100));
        bytes.append(byte == replyHeader ? '\0' : byte);
    }
    return bytes;
}

// A piece never overtakes the one before it; two that join and are due together go out as one.
void ReplyFaults::send(const QByteArray& bytes, Time due)
{
    lastDue = std::max(lastDue, due);
    if (faults.join && !pieces.empty() && pieces.back().due == lastDue)
        pieces.back().bytes.append(bytes);
    else
        pieces.push_back({lastDue, bytes});
}

Time ReplyFaults::randomTime(Time shortest, Time longest)
{
    const auto from = static_cast<int>(shortest.count());
    const auto to = static_cast<int>(longest.count());
    return Time(random.bounded(from, to + 1));
}
