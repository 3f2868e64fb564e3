#include "ViscaCamera.h"

#include <algorithm>
#include <map>
#include <set>

namespace {

using Time = ViscaCamera::Time;

// A camera accepts one command per video frame, 60 a second.
constexpr Time videoFrame{17};
// Real cameras acknowledge a command after 20 to 35 ms and complete a drive 11 ms later.
constexpr Time replyDelay{25};
constexpr Time completionDelay{11};
// About a second of commands. Further ones are answered as if both sockets were busy.
constexpr std::size_t longestQueue = 64;
// After this time without bytes, an unfinished frame is dropped.
constexpr Time frameTimeout{1000};

constexpr int broadcast = 8;
constexpr int highestAddress = 7;

// Describes a frame, such as "absolute position, pan 19.2, tilt -9.6 degrees, speeds 5 and 5".
QString inWords(const ViscaCamera::KnownFrame& known, const FrameNumbers& numbers)
{
    QString words = known.name;
    const auto add = [&](const char* text, char letter, const auto& toText) {
        if (numbers.contains(letter))
            words += QString(text).arg(toText(numbers[letter]));
    };
    const auto decimal = [](int number) { return QString::number(number); };
    const auto value = [&](int number) {
        return QString::number(number, known.range.isEmpty() ? 10 : 16).toUpper();
    };
    const auto degrees = [](int steps) { return QString::number(Mechanics::degrees(steps), 'f', 1); };
    add(" %1", 'p', value);
    add(", %1", 'q', decimal);
    add(", pan %1", 'Y', degrees);
    add(", tilt %1 degrees", 'Z', degrees);
    add(", speeds %1", 'V', decimal);
    add(" and %1", 'W', decimal);
    return words;
}

} // namespace

ViscaCamera::ViscaCamera(const Options& options)
    : rules(options.rules)
    , presetCount(options.presets)
    , address(options.address)
    , on(!options.standby)
{
}

std::vector<ViscaCamera::Event> ViscaCamera::comeOntoLine(Time now)
{
    runUntil(now);
    reply("x0 38 FF", "network change");
    return std::exchange(events, {});
}

std::vector<ViscaCamera::Event> ViscaCamera::receive(const QByteArray& bytes, Time now)
{
    runUntil(now);
    if (!bytes.isEmpty())
        lastByteAt = clock;
    for (const char byte : bytes)
        takeByte(byte);
    finishNoise();
    return std::exchange(events, {});
}

std::vector<ViscaCamera::Event> ViscaCamera::advance(Time now)
{
    runUntil(now);
    return std::exchange(events, {});
}

std::optional<ViscaCamera::Time> ViscaCamera::nextDue() const
{
    std::optional<Time> next;
    const auto consider = [&next](Time due) { next = std::min(next.value_or(due), due); };
    if (!pending.empty())
        consider(pending.front().due);
    for (const Socket& socket : sockets) {
        if (const auto due = completion(socket))
            consider(*due);
    }
    if (const auto due = patienceEnds())
        consider(*due);
    return next;
}

void ViscaCamera::runUntil(Time now)
{
    for (auto due = nextDue(); due && *due <= now; due = nextDue()) {
        clock = std::max(clock, *due);
        performNext();
    }
    clock = std::max(clock, now);
}

void ViscaCamera::performNext()
{
    for (Socket& socket : sockets) {
        if (completion(socket).value_or(Time::max()) <= clock)
            return complete(socket);
    }
    if (patienceEnds().value_or(Time::max()) <= clock) {
        return events.push_back(
            {Event::Kind::Noise, std::exchange(unfinished, {}), "unfinished frame, forgotten"});
    }
    const PendingAction next = std::move(pending.front());
    pending.pop_front();
    next.action();
}

// A frame runs from its header (80 to 8F) to FF; bytes before a header are noise.
void ViscaCamera::takeByte(char byte)
{
    const bool isHeader = (static_cast<quint8>(byte) & 0xF0) == 0x80;
    if (unfinished.isEmpty() && !isHeader) {
        noise.append(byte);
        return;
    }
    finishNoise();
    // Store one byte more than a valid frame has: this is enough to recognise one that is too long.
    if (unfinished.size() <= longestFrame)
        unfinished.append(byte);
    if (byte == frameEnd)
        frameArrived(std::exchange(unfinished, {}));
}

void ViscaCamera::finishNoise()
{
    if (!noise.isEmpty())
        events.push_back({Event::Kind::Noise, std::exchange(noise, {}), "no frame, ignored"});
}

// When an unfinished frame is dropped.
std::optional<Time> ViscaCamera::patienceEnds() const
{
    return unfinished.isEmpty() ? std::nullopt : std::optional(lastByteAt + frameTimeout);
}

void ViscaCamera::frameArrived(const QByteArray& frame)
{
    QString words;
    std::function<void()> action = decode(frame, words);
    events.push_back({Event::Kind::Frame, frame, words});
    if (!action)
        return;
    if (pending.size() == longestQueue)
        return reply("x0 60 03 FF", "too many commands at once");
    const Time taken = std::max(clock, nextVideoFrame);
    nextVideoFrame = taken + videoFrame;
    pending.push_back({taken + replyDelay, std::move(action)});
}

// Returns the action for a frame, and its description in `words`. There is no action for a frame without an
// answer.
std::function<void()> ViscaCamera::decode(const QByteArray& frame, QString& words)
{
    const int receiver = frame.at(0) & 0x0F;
    if (receiver != address && receiver != broadcast) {
        words = QString("for camera %1, ignored").arg(receiver);
        return {};
    }
    if (frame.size() > longestFrame && receiver == address) {
        words = "too long";
        return [=] { reply("x0 60 01 FF", "message length"); };
    }
    for (const KnownFrame& known : knownFrames()) {
        const auto numbers = matchFrame(frame, known.frame.constData());
        if (!numbers || numbers->contains('x') == (receiver == broadcast))
            continue;
        if (known.frame == addressSet && (numbers->value('p') < 1 || numbers->value('p') > highestAddress))
            continue;
        words = inWords(known, *numbers);
        // Change it now, because it applies to the next frame, which may arrive before the answer.
        if (known.frame == addressSet)
            address = numbers->value('p');
        return [this, &known, found = *numbers] { known.act(*this, found); };
    }
    words = receiver == broadcast ? "unknown broadcast, ignored" : "unknown command";
    return receiver == broadcast ? std::function<void()>() : [=] { syntaxError("unknown command"); };
}

void ViscaCamera::carryOut(Task task, Mechanics::Parts parts, const std::function<void()>& start)
{
    if (isRefused(task))
        return refuse();
    Socket* socket = claimSocket(parts);
    if (!socket)
        return;
    takeOver(parts);
    start();
    const bool travels = mechanics.areTargeted(parts);
    *socket = {socket->number, travels ? Socket::State::Travelling : Socket::State::Finishing,
               clock + completionDelay, task, parts};
    replyFrom(socket->number, "x0 4s FF", "ACK");
}

void ViscaCamera::refuse()
{
    if (const Socket* socket = claimSocket({}))
        replyFrom(socket->number, "x0 6s 41 FF", "not executable now");
}

bool ViscaCamera::isRefused(Task task) const
{
    // The task in progress, and the tasks that are refused during it.
    static const std::map<Task, std::set<Task>> refusals{
        {Task::Drive, {Task::Travel, Task::Recall, Task::StorePreset}},
        {Task::Travel, {Task::Drive, Task::Recall, Task::StorePreset, Task::ResetPreset}},
        {Task::Recall, {Task::Drive, Task::Travel, Task::StorePreset, Task::ResetPreset, Task::Zoom}},
    };
    if (!on)
        return task != Task::Power;
    return rules == BusyRules::Strict &&
           std::any_of(refusals.begin(), refusals.end(), [&](const auto& refusal) {
               return refusal.second.count(task) > 0 && isUnderWay(refusal.first);
           });
}

bool ViscaCamera::isUnderWay(Task task) const
{
    if (task == Task::Drive)
        return mechanics.isDriven();
    return std::any_of(sockets.begin(), sockets.end(), [task](const Socket& socket) {
        return socket.state == Socket::State::Travelling && socket.task == task;
    });
}

// A command ends when a newer one takes its pan and tilt, or all its parts. If only the zoom is taken, it
// continues with what remains.
bool ViscaCamera::isEndedBy(const Socket& socket, Mechanics::Parts parts)
{
    const Mechanics::Parts lost = socket.parts & parts;
    return socket.state == Socket::State::Travelling && lost &&
           (lost == socket.parts || lost.testFlag(Mechanics::PanTilt));
}

// A command that ends here gets its completion right after the ACK of the newer one.
void ViscaCamera::takeOver(Mechanics::Parts parts)
{
    for (Socket& socket : sockets) {
        if (isEndedBy(socket, parts)) {
            mechanics.abandonTargets(socket.parts, clock);
            socket.state = Socket::State::Finishing;
            socket.completesFrom = clock;
        }
        socket.parts &= ~parts;
    }
}

void ViscaCamera::cancel(int socketNumber)
{
    for (Socket& socket : sockets) {
        if (socket.number != socketNumber || socket.state == Socket::State::Free)
            continue;
        release(socket);
        return replyFrom(socketNumber, "x0 6s 04 FF", "cancelled");
    }
    replyFrom(socketNumber, "x0 6s 05 FF", "no such socket");
}

// Returns a free socket. If there is none, completes a command that a newer one for `parts` would end anyway,
// and returns its socket.
ViscaCamera::Socket* ViscaCamera::claimSocket(Mechanics::Parts parts)
{
    for (Socket& socket : sockets) {
        if (socket.state == Socket::State::Free)
            return &socket;
    }
    for (Socket& socket : sockets) {
        if (isEndedBy(socket, parts)) {
            complete(socket);
            return &socket;
        }
    }
    reply("x0 60 03 FF", "both sockets busy");
    return nullptr;
}

void ViscaCamera::complete(Socket& socket)
{
    release(socket);
    replyFrom(socket.number, "x0 5s FF", "completion");
}

// Freeing a socket stops its motion. If it has arrived, nothing changes.
void ViscaCamera::release(Socket& socket)
{
    if (socket.state == Socket::State::Travelling)
        mechanics.abandonTargets(socket.parts, clock);
    socket.state = Socket::State::Free;
}

std::optional<ViscaCamera::Time> ViscaCamera::completion(const Socket& socket) const
{
    if (socket.state == Socket::State::Free)
        return std::nullopt;
    const bool travels = socket.state == Socket::State::Travelling;
    return travels ? std::max(socket.completesFrom, mechanics.arrival(socket.parts)) : socket.completesFrom;
}

void ViscaCamera::reply(std::string_view pattern, const QString& words, FrameNumbers numbers)
{
    // Camera 1 answers with the digit 9, camera 2 with A.
    numbers.insert('x', address + 8);
    events.push_back({Event::Kind::Reply, makeFrame(pattern, numbers), words});
}

void ViscaCamera::replyFrom(int socket, std::string_view pattern, const QString& words)
{
    reply(pattern, QString("%1, socket %2").arg(words).arg(socket), {{'s', socket}});
}
