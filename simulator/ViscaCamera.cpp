#include "ViscaCamera.h"

#include "FramePattern.h"

#include <algorithm>
#include <cmath>
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

constexpr char terminator = '\xFF';

constexpr int highestPreset = 127;

int byteAt(const QByteArray& frame, int index)
{
    return static_cast<quint8>(frame.at(index));
}

// VISCA sends a 16-bit number as four bytes of four bits each, the highest first; negative ones as two's
// complement.
QByteArray nibbles(long value)
{
    QByteArray bytes;
    for (int shift = 12; shift >= 0; shift -= 4)
        bytes.append(static_cast<char>((value >> shift) & 0xF));
    return bytes;
}

QByteArray answer(const QByteArray& body)
{
    return "\x90" + body + terminator;
}

// An ACK, completion or error of one socket: 4s, 5s or 6s, then the error code if it is one.
QByteArray socketReply(int type, int socket, const QByteArray& errorCode = {})
{
    return answer(static_cast<char>(type | socket) + errorCode);
}

} // namespace

ViscaCamera::ViscaCamera(BusyRules busyRules)
    : rules(busyRules)
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
        if (completion(socket).value_or(Time::max()) > clock)
            continue;
        release(socket);
        reply(socketReply(0x50, socket.number), QString("completion, socket %1").arg(socket.number));
        departNext();
        return;
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
    if (pending.size() == longestQueue) {
        reply(answer({"\x60\x03"}), "too many commands at once");
        return;
    }
    const Time taken = std::max(clock, nextVideoFrame);
    nextVideoFrame = taken + videoFrame;
    pending.push_back({taken + replyDelay, std::move(instruction.action)});
}

ViscaCamera::Instruction ViscaCamera::decode(const QByteArray& frame)
{
    if (matchFrame(frame, "88 30 01 FF"))
        return {"address set", [=] { reply("\x88\x30\x02\xFF", "the next camera would have address 2"); }};
    if (matchFrame(frame, "88 01 00 01 FF")) {
        return {"interface clear, broadcast", [=] {
                    clearSockets();
                    reply(frame, "interface cleared");
                }};
    }
    const int address = byteAt(frame, 0) & 0xF;
    if (address == 8)
        return {"unknown broadcast, ignored", {}};
    if (address != 1)
        return {QString("for camera %1, ignored").arg(address), {}};
    if (frame.size() > FrameReader::longestFrame)
        return refusal("too long");
    if (matchFrame(frame, "81 01 06 01 ?? ?? 0? 0? FF"))
        return decodeDrive(frame);
    if (matchFrame(frame, "81 01 06 04 FF"))
        return {"home", [=] { travel({0, 0, std::nullopt}); }};
    if (matchFrame(frame, "81 01 04 07 ?? FF"))
        return decodeZoom(frame);
    if (matchFrame(frame, "81 01 04 3F 0? ?? FF"))
        return decodeMemory(frame);
    if (matchFrame(frame, "81 2? FF")) {
        const int socket = byteAt(frame, 1) & 0xF;
        return {QString("cancel socket %1").arg(socket), [=] { cancel(socket); }};
    }
    if (matchFrame(frame, "81 01 00 01 FF")) {
        return {"interface clear", [=] {
                    clearSockets();
                    reply(answer("\x50"), "interface cleared");
                }};
    }
    if (matchFrame(frame, "81 09 00 02 FF")) {
        // Vendor "VA", model 1, firmware 1.0, two sockets.
        static constexpr char version[] = {0x50, 0x56, 0x41, 0x00, 0x01, 0x01, 0x00, 0x02};
        return {
            "version inquiry", [=] {
                reply(answer({version, sizeof version}), "vendor 5641, model 0001, firmware 0100, 2 sockets");
            }};
    }
    if (matchFrame(frame, "81 09 06 12 FF"))
        return {"pan-tilt position inquiry", [=] { answerPanTiltPosition(); }};
    if (matchFrame(frame, "81 09 04 47 FF"))
        return {"zoom position inquiry", [=] { answerZoomPosition(); }};
    return refusal("unknown command");
}

ViscaCamera::Instruction ViscaCamera::decodeDrive(const QByteArray& frame)
{
    const int panCode = byteAt(frame, 4);
    const int tiltCode = byteAt(frame, 5);
    const int panWay = byteAt(frame, 6);
    const int tiltWay = byteAt(frame, 7);
    if (panCode < 1 || panCode > Mechanics::fastestPanCode)
        return refusal(QString("drive, pan speed %1 out of range").arg(panCode));
    if (tiltCode < 1 || tiltCode > Mechanics::fastestTiltCode)
        return refusal(QString("drive, tilt speed %1 out of range").arg(tiltCode));
    if (panWay < 1 || panWay > 3 || tiltWay < 1 || tiltWay > 3)
        return refusal("drive, unknown direction");

    // By direction byte: 01 left or up, 02 right or down, 03 not at all.
    using Way = Mechanics::Way;
    static constexpr std::array<Way, 4> panWays{{{}, Way::Backwards, Way::Forwards, Way::Stopped}};
    static constexpr std::array<Way, 4> tiltWays{{{}, Way::Forwards, Way::Backwards, Way::Stopped}};
    static constexpr std::array<std::array<const char*, 4>, 4> names{{
        {},
        {"", "up-left", "up-right", "up"},
        {"", "down-left", "down-right", "down"},
        {"", "left", "right", "stop"},
    }};
    const auto pan = static_cast<std::size_t>(panWay);
    const auto tilt = static_cast<std::size_t>(tiltWay);
    return {QString("drive %1, pan speed %2, tilt speed %3").arg(names[tilt][pan]).arg(panCode).arg(tiltCode),
            [=] { drive(panWays[pan], panCode, tiltWays[tilt], tiltCode); }};
}

ViscaCamera::Instruction ViscaCamera::decodeZoom(const QByteArray& frame)
{
    const int parameter = byteAt(frame, 4);
    switch (parameter) {
    case 0x00:
        return {"zoom stop", [=] { zoom(Mechanics::Way::Stopped, 0); }};
    case 0x02:
        return {"zoom tele, standard speed",
                [=] { zoom(Mechanics::Way::Forwards, Mechanics::standardLensCode); }};
    case 0x03:
        return {"zoom wide, standard speed",
                [=] { zoom(Mechanics::Way::Backwards, Mechanics::standardLensCode); }};
    default:
        break;
    }
    const int way = parameter & 0xF0;
    const int code = parameter & 0x0F;
    if ((way != 0x20 && way != 0x30) || code > Mechanics::fastestLensCode)
        return refusal("zoom, unknown direction or speed");
    if (way == 0x20)
        return {QString("zoom tele, speed %1").arg(code), [=] { zoom(Mechanics::Way::Forwards, code); }};
    return {QString("zoom wide, speed %1").arg(code), [=] { zoom(Mechanics::Way::Backwards, code); }};
}

ViscaCamera::Instruction ViscaCamera::decodeMemory(const QByteArray& frame)
{
    const int preset = byteAt(frame, 5);
    if (preset > highestPreset)
        return refusal(QString("preset %1 out of range").arg(preset));
    switch (byteAt(frame, 4)) {
    case 0x00:
        return {QString("reset preset %1").arg(preset), [=] { resetPreset(preset); }};
    case 0x01:
        return {QString("store preset %1").arg(preset), [=] { storePreset(preset); }};
    case 0x02:
        return {QString("recall preset %1").arg(preset), [=] { recallPreset(preset); }};
    default:
        return refusal("preset, unknown action");
    }
}

ViscaCamera::Instruction ViscaCamera::refusal(const QString& words)
{
    return {words, [=] { reply(answer("\x60\x02"), "syntax error"); }};
}

void ViscaCamera::drive(Mechanics::Way panWay, int panCode, Mechanics::Way tiltWay, int tiltCode)
{
    Socket* socket = claimSocket();
    if (!socket)
        return;
    if (const Socket* travelling = travellingSocket()) {
        if (rules == BusyRules::Strict)
            return refuseNow(*socket);
        cancel(travelling->number);
    }
    mechanics.drive(panWay, panCode, tiltWay, tiltCode, clock);
    acknowledge(*socket, Socket::State::Finishing);
}

void ViscaCamera::zoom(Mechanics::Way way, int code)
{
    Socket* socket = claimSocket();
    if (!socket)
        return;
    mechanics.driveZoom(way, code, clock);
    acknowledge(*socket, Socket::State::Finishing);
}

void ViscaCamera::travel(const Journey& journey)
{
    Socket* socket = claimSocket();
    if (!socket)
        return;
    if (rules == BusyRules::Strict && mechanics.isDriven())
        return refuseNow(*socket);
    const Socket* travelling = travellingSocket();
    if (rules == BusyRules::Lenient && travelling)
        cancel(travelling->number);
    acknowledge(*socket, Socket::State::Waiting);
    socket->journey = journey;
    departNext();
}

void ViscaCamera::storePreset(int preset)
{
    Socket* socket = claimSocket();
    if (!socket)
        return;
    storedPresets.insert(preset, position());
    acknowledge(*socket, Socket::State::Finishing);
}

void ViscaCamera::resetPreset(int preset)
{
    Socket* socket = claimSocket();
    if (!socket)
        return;
    storedPresets.remove(preset);
    acknowledge(*socket, Socket::State::Finishing);
}

void ViscaCamera::recallPreset(int preset)
{
    const auto stored = storedPresets.constFind(preset);
    if (stored != storedPresets.cend())
        return travel({stored->pan, stored->tilt, stored->zoom});
    if (const Socket* socket = claimSocket())
        refuseNow(*socket);
}

void ViscaCamera::cancel(int socketNumber)
{
    const auto socket = std::find_if(sockets.begin(), sockets.end(), [=](const Socket& candidate) {
        return candidate.number == socketNumber && candidate.state != Socket::State::Free;
    });
    if (socket == sockets.end()) {
        reply(socketReply(0x60, socketNumber, "\x05"),
              QString("no such socket, socket %1").arg(socketNumber));
        return;
    }
    release(*socket);
    reply(socketReply(0x60, socketNumber, "\x04"), QString("cancelled, socket %1").arg(socketNumber));
    departNext();
}

void ViscaCamera::clearSockets()
{
    for (Socket& socket : sockets)
        release(socket);
}

void ViscaCamera::answerPanTiltPosition()
{
    const Position here = position();
    const QByteArray pan = nibbles(std::lround(here.pan / Mechanics::degreesPerStep));
    const QByteArray tilt = nibbles(std::lround(here.tilt / Mechanics::degreesPerStep));
    reply(answer("\x50" + pan + tilt),
          QString("pan %1, tilt %2 degrees").arg(here.pan, 0, 'f', 1).arg(here.tilt, 0, 'f', 1));
}

void ViscaCamera::answerZoomPosition()
{
    const long steps = std::lround(position().zoom);
    reply(answer("\x50" + nibbles(steps)),
          QString("zoom %1 of %2").arg(steps).arg(std::lround(Mechanics::zoomTele)));
}

ViscaCamera::Socket* ViscaCamera::claimSocket()
{
    for (Socket& socket : sockets) {
        if (socket.state == Socket::State::Free)
            return &socket;
    }
    reply(answer("\x60\x03"), "both sockets busy");
    return nullptr;
}

ViscaCamera::Socket* ViscaCamera::travellingSocket()
{
    const auto socket = std::find_if(sockets.begin(), sockets.end(), [](const Socket& candidate) {
        return candidate.state == Socket::State::Travelling;
    });
    return socket == sockets.end() ? nullptr : &*socket;
}

void ViscaCamera::departNext()
{
    if (travellingSocket())
        return;
    for (Socket& socket : sockets) {
        if (socket.state != Socket::State::Waiting)
            continue;
        socket.state = Socket::State::Travelling;
        mechanics.goTo(socket.journey.pan, socket.journey.tilt, clock);
        if (socket.journey.zoom)
            mechanics.zoomTo(*socket.journey.zoom, clock);
        return;
    }
}

// A travelling socket takes its journey with it: the camera stands where it is. After an arrival that changes
// nothing.
void ViscaCamera::release(Socket& socket)
{
    if (socket.state == Socket::State::Travelling)
        mechanics.abandonTargets(Mechanics::everyPart, clock);
    socket.state = Socket::State::Free;
}

std::optional<ViscaCamera::Time> ViscaCamera::completion(const Socket& socket) const
{
    switch (socket.state) {
    case Socket::State::Finishing:
        return socket.completesFrom;
    case Socket::State::Travelling:
        return std::max(socket.completesFrom, mechanics.arrival(Mechanics::everyPart));
    case Socket::State::Free:
    case Socket::State::Waiting:
        break;
    }
    return std::nullopt;
}

void ViscaCamera::acknowledge(Socket& socket, Socket::State state)
{
    socket.state = state;
    socket.completesFrom = clock + completionDelay;
    reply(socketReply(0x40, socket.number), QString("ACK, socket %1").arg(socket.number));
}

void ViscaCamera::refuseNow(const Socket& socket)
{
    reply(socketReply(0x60, socket.number, "\x41"),
          QString("not executable now, socket %1").arg(socket.number));
}

void ViscaCamera::reply(const QByteArray& bytes, const QString& words)
{
    events.push_back({Event::Kind::Reply, bytes, words});
}
