#include "ViscaCamera.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

using Time = ViscaCamera::Time;

// A camera takes one command per video frame; 60 of them a second.
constexpr Time videoFrame{17};
// Cameras in the field acknowledge 20 to 35 ms after the command and complete a drive 11 ms later.
constexpr Time replyDelay{25};
constexpr Time completionDelay{11};
// About a second of commands; what arrives beyond that is answered like a command that finds both sockets
// busy.
constexpr std::size_t longestQueue = 64;

} // namespace

ViscaCamera::ViscaCamera(const Options& options)
    : rules(options.rules)
    , presetCount(options.presets)
    , address(options.address)
    , on(!options.standby)
    , sockets{{{1}, {2}}}
{
}

std::vector<ViscaCamera::Event> ViscaCamera::receive(const QByteArray& bytes, Time now)
{
    runUntil(now);
    for (const FrameReader::Piece& piece : reader.take(bytes, clock)) {
        if (piece.kind == FrameReader::Piece::Kind::Frame)
            frameArrived(piece.bytes);
        else if (piece.kind == FrameReader::Piece::Kind::Noise)
            events.push_back({Event::Kind::Noise, piece.bytes, "no frame, ignored"});
        else
            events.push_back({Event::Kind::Noise, piece.bytes, "unfinished frame, forgotten"});
    }
    return takeEvents();
}

std::vector<ViscaCamera::Event> ViscaCamera::advance(Time now)
{
    runUntil(now);
    return takeEvents();
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
    return next;
}

ViscaCamera::Position ViscaCamera::position() const
{
    return mechanics.position(clock);
}

bool ViscaCamera::isMoving() const
{
    return mechanics.isMoving(clock);
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
    const PendingAction next = std::move(pending.front());
    pending.pop_front();
    next.action();
}

std::vector<ViscaCamera::Event> ViscaCamera::takeEvents()
{
    return std::exchange(events, {});
}

void ViscaCamera::frameArrived(const QByteArray& frame)
{
    Instruction instruction = decode(frame);
    events.push_back({Event::Kind::Frame, frame, instruction.words});
    if (!instruction.action)
        return;
    if (pending.size() == longestQueue)
        return reply("x0 60 03 FF", "too many commands at once");
    const Time taken = std::max(clock, nextVideoFrame);
    nextVideoFrame = taken + videoFrame;
    pending.push_back({taken + replyDelay, std::move(instruction.action)});
}

void ViscaCamera::carryOut(const Order& order)
{
    if (isRefused(order.task))
        return refuse();
    Socket* socket = claimSocket(order.parts);
    if (!socket)
        return;
    takeOver(order.parts);
    order.start();
    const bool travels = order.completion == Completion::OnArrival;
    *socket = {socket->number, travels ? Socket::State::Travelling : Socket::State::Finishing,
               clock + completionDelay, order.task, order.parts};
    reply("x0 4s FF", QString("ACK, socket %1").arg(socket->number), {{'s', socket->number}});
}

void ViscaCamera::refuse()
{
    if (const Socket* socket = claimSocket({})) {
        reply("x0 6s 41 FF", QString("not executable now, socket %1").arg(socket->number),
              {{'s', socket->number}});
    }
}

bool ViscaCamera::isRefused(Task task) const
{
    // What is under way, and what is refused then.
    static constexpr std::pair<Task, Task> refusals[] = {
        {Task::Drive, Task::Travel},       {Task::Drive, Task::Recall},
        {Task::Drive, Task::StorePreset},  {Task::Travel, Task::Drive},
        {Task::Travel, Task::Recall},      {Task::Travel, Task::StorePreset},
        {Task::Travel, Task::ResetPreset}, {Task::Recall, Task::Drive},
        {Task::Recall, Task::Travel},      {Task::Recall, Task::StorePreset},
        {Task::Recall, Task::ResetPreset}, {Task::Recall, Task::Zoom},
    };
    if (!on)
        return task != Task::Power;
    return rules == BusyRules::Strict &&
           std::any_of(std::begin(refusals), std::end(refusals), [&](const std::pair<Task, Task>& refusal) {
               return refusal.second == task && isUnderWay(refusal.first);
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

// Whoever loses pan and tilt ends; whoever loses only the zoom goes on, unless there is nothing else to it.
bool ViscaCamera::isEndedBy(const Socket& socket, Mechanics::Parts parts)
{
    const Mechanics::Parts lost = socket.parts & parts;
    return socket.state == Socket::State::Travelling && lost &&
           (lost == socket.parts || lost.testFlag(Mechanics::PanTilt));
}

// What ends is told its completion as soon as the newer command has its ACK.
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
    const auto socket = std::find_if(sockets.begin(), sockets.end(), [=](const Socket& candidate) {
        return candidate.number == socketNumber && candidate.state != Socket::State::Free;
    });
    if (socket == sockets.end()) {
        return reply("x0 6s 05 FF", QString("no such socket, socket %1").arg(socketNumber),
                     {{'s', socketNumber}});
    }
    release(*socket);
    reply("x0 6s 04 FF", QString("cancelled, socket %1").arg(socketNumber), {{'s', socketNumber}});
}

void ViscaCamera::clearSockets()
{
    for (Socket& socket : sockets)
        socket.state = Socket::State::Free;
}

// A free socket; where there is none, that of a command which a newer one that moves `parts` ends anyway.
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
    reply("x0 5s FF", QString("completion, socket %1").arg(socket.number), {{'s', socket.number}});
}

// A travelling socket takes its journey with it: what it moves stands where it is. After an arrival that
// changes nothing.
void ViscaCamera::release(Socket& socket)
{
    if (socket.state == Socket::State::Travelling)
        mechanics.abandonTargets(socket.parts, clock);
    socket.state = Socket::State::Free;
}

std::optional<ViscaCamera::Time> ViscaCamera::completion(const Socket& socket) const
{
    switch (socket.state) {
    case Socket::State::Finishing:
        return socket.completesFrom;
    case Socket::State::Travelling:
        return std::max(socket.completesFrom, mechanics.arrival(socket.parts));
    case Socket::State::Free:
        break;
    }
    return std::nullopt;
}

void ViscaCamera::reply(std::string_view pattern, const QString& words, FrameNumbers numbers)
{
    // Camera 1 answers as 9, camera 2 as A.
    numbers.insert('x', address + 8);
    events.push_back({Event::Kind::Reply, makeFrame(pattern, numbers), words});
}
