#pragma once

#include "FrameReader.h"
#include "Mechanics.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <array>
#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

/**
 * A pan-tilt-zoom camera that speaks VISCA as camera 1, without a line, a screen or a clock of its own.
 *
 * The owner hands it what arrives and tells it the time; the camera hands back what happened: each frame it
 * took from the stream and each reply it gives. The clock is milliseconds since any fixed moment and never
 * runs backwards (an earlier time than the last one counts as the last one). Nothing happens between two
 * calls, yet everything happens at its exact time: a late call catches up in order.
 *
 * Where real cameras differ, this one is fixed so:
 *  - It takes one frame per video frame, acts on it and answers it `replyDelay` later.
 *  - Pan speed codes are 01 to 18 (hex) and tilt speed codes 01 to 14; any other, 00 in a stop frame too, is
 * a syntax error. Presets are 0 to 127. Recalling a preset that was never stored is "not executable".
 *  - A frame runs from its header (8x) to FF; bytes before a header are ignored. A frame longer than 16 bytes
 * is one syntax error, and an unfinished frame is forgotten after a second of silence.
 *  - Frames for other cameras and unknown broadcasts get no answer.
 *  - Home moves pan and tilt only; recalling a preset moves the zoom too. Both go at full speed.
 *  - A zoom command during a recall takes the zoom over; the recall then completes with pan and tilt.
 *  - Interface clear empties the sockets without a word and stops a Home or recall; a drive goes on.
 *
 * Any byte stream is survived with bounded memory.
 */
class ViscaCamera
{
public:
    using Time = std::chrono::milliseconds;
    using Position = Mechanics::Position;

    enum class BusyRules
    {
        /** Everything is accepted; the newest command wins, and a Home or recall that it ends is told
           "cancelled". */
        Lenient,
        /** A drive or stop is refused during Home or recall, and these during a drive. A second Home or
           recall waits in the other socket for the first. */
        Strict
    };

    /** Something that happened, in bytes and in words (English, ASCII, without the bytes). */
    struct Event
    {
        enum class Kind
        {
            /** A frame from the controller, from its header to FF; of one too long the first 17 bytes. */
            Frame,
            /** Bytes that belong to no frame. */
            Noise,
            /** A reply to the controller. */
            Reply
        };

        Kind kind;
        QByteArray bytes;
        QString words;
    };

    /** A camera that has just been switched on: looking straight ahead, zoomed out, no presets stored. */
    explicit ViscaCamera(BusyRules busyRules = BusyRules::Lenient);
    ViscaCamera(const ViscaCamera&) = delete;
    ViscaCamera& operator=(const ViscaCamera&) = delete;

    /** Takes `bytes` as arriving at `now`, cut anywhere. Returns what fell due until now, then what arrived.
     */
    std::vector<Event> receive(const QByteArray& bytes, Time now);

    /** Lets time pass until `now` and returns what fell due, in order. */
    std::vector<Event> advance(Time now);

    /** When advance() next has something to do; nothing while no reply is outstanding, even if the camera
     * moves. */
    std::optional<Time> nextDue() const;

    /** The position at the last time the camera was told. */
    Position position() const;

    /** Whether it was moving at that time: pan, tilt or zoom. */
    bool isMoving() const;

    /** The stored presets by number, 0 to 127. */
    const QMap<int, Position>& presets() const { return storedPresets; }

private:
    /** What a frame asks for; a frame that gets no answer has no action. */
    struct Instruction
    {
        QString words;
        std::function<void()> action;
    };

    struct PendingAction
    {
        Time due;
        std::function<void()> action;
    };

    /** Where Home or a recall goes; Home leaves the zoom alone. */
    struct Journey
    {
        double pan;
        double tilt;
        std::optional<double> zoom;
    };

    /** One of the two places in which VISCA keeps a command from its ACK to its completion. */
    struct Socket
    {
        enum class State
        {
            Free,
            Finishing,
            Waiting,
            Travelling
        };

        int number;
        State state = State::Free;
        Time completesFrom{0};
        Journey journey{};
    };

    void runUntil(Time now);
    void performNext();
    std::vector<Event> takeEvents();

    void frameArrived(const QByteArray& frame);

    Instruction decode(const QByteArray& frame);
    Instruction decodeDrive(const QByteArray& frame);
    Instruction decodeZoom(const QByteArray& frame);
    Instruction decodeMemory(const QByteArray& frame);
    Instruction refusal(const QString& words);

    void drive(Mechanics::Way panWay, int panCode, Mechanics::Way tiltWay, int tiltCode);
    void zoom(Mechanics::Way way, int code);
    void travel(const Journey& journey);
    void storePreset(int preset);
    void resetPreset(int preset);
    void recallPreset(int preset);
    void cancel(int socketNumber);
    void clearSockets();
    void answerPanTiltPosition();
    void answerZoomPosition();

    Socket* claimSocket();
    Socket* travellingSocket();
    void departNext();
    void release(Socket& socket);
    std::optional<Time> completion(const Socket& socket) const;

    void acknowledge(Socket& socket, Socket::State state);
    void refuseNow(const Socket& socket);
    void reply(const QByteArray& bytes, const QString& words);

    const BusyRules rules;
    FrameReader reader;
    Mechanics mechanics;
    Time clock{0};
    std::vector<Event> events;

    std::deque<PendingAction> pending;
    Time nextVideoFrame{0};
    std::array<Socket, 2> sockets;

    QMap<int, Position> storedPresets;
};
