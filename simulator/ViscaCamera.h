#pragma once

#include "FramePattern.h"
#include "Mechanics.h"
#include "Registers.h"

#include <QByteArray>
#include <QMap>
#include <QString>

#include <array>
#include <chrono>
#include <deque>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

/**
 * A pan-tilt-zoom camera that speaks VISCA. It has no serial line, no display and no clock.
 *
 * The owner passes the received bytes and the time, in milliseconds since any fixed moment. The camera
 * returns each frame that it found and each reply that it gives. It does something only when it is called,
 * but each event takes effect at its exact time: a late call processes what is due, in order. A time earlier
 * than the last one counts as the last one. Any byte stream is accepted, and memory is bounded.
 *
 * Where real cameras differ, this one behaves like this:
 *  - The newest command wins. A command that moves pan and tilt ends a home, position or recall in progress,
 *    which gets its completion. A zoom command takes only the zoom from a recall; pan and tilt continue.
 *  - Recalling a preset that was never stored is "not executable". So is a focus command while the focus is
 *    automatic.
 *  - Home and reset move only pan and tilt. For a position out of range, the camera goes to the limit.
 *  - In standby it refuses each command except power. It answers inquiries, address set, interface clear and
 *    cancel. When switched on, it keeps its position, and its registers have their values after power-on.
 *  - Interface clear stops every motion to a target, and its command gets no completion. A drive continues.
 */
class ViscaCamera
{
public:
    using Time = std::chrono::milliseconds;
    using Position = Mechanics::Position;

    enum class BusyRules
    {
        /** Refuses no command because of a motion. Tilt, zoom and focus codes above the fastest speed act as
         * the fastest one, and code 00 as the slowest. */
        Lenient,
        /** Refuses what would disturb a motion in progress, and each speed or position out of range. */
        Strict
    };

    /** The properties of a camera, and its state at the start. */
    struct Options
    {
        /** Implicit: where options are expected, rules alone are enough. */
        Options(BusyRules busyRules)
            : rules(busyRules)
        {
        }

        BusyRules rules;
        /** From 1 to 7. */
        int address = 1;
        /** The number of presets, from 1 to 255. They are numbered from 0. */
        int presets = 255;
        bool standby = false;
    };

    /** Something received or sent: its bytes, and what they mean (English, ASCII, without the bytes). */
    struct Event
    {
        /** A complete frame (the first 17 bytes if it is too long), bytes that belong to no complete frame,
         * or a reply. */
        enum class Kind
        {
            Frame,
            Noise,
            Reply
        };

        Kind kind;
        QByteArray bytes;
        QString words;
    };

    /** Creates a camera that looks straight ahead, is zoomed out and has no presets stored. */
    explicit ViscaCamera(const Options& options = BusyRules::Lenient);
    Q_DISABLE_COPY(ViscaCamera)

    /** The camera has been connected to the line. Returns the network change, which it sends unasked. */
    std::vector<Event> comeOntoLine(Time now);

    /** Takes bytes, which may begin and end anywhere in a frame. Returns what became due until now, then what
     * arrived. */
    std::vector<Event> receive(const QByteArray& bytes, Time now);

    /** Returns what became due until `now`, in order. */
    std::vector<Event> advance(Time now);

    /** When to call advance() next; nothing if no event is due, even if the camera moves. */
    std::optional<Time> nextDue() const;

    /** The position at the time of the last call. */
    Position position() const { return mechanics.position(clock); }

    /** Whether pan, tilt or zoom was moving at the time of the last call. */
    bool isMoving() const { return mechanics.isMoving(Mechanics::PanTilt | Mechanics::Zoom, clock); }

    bool isOn() const { return on; }

    /** Whether the picture has left and right exchanged. */
    bool isMirrored() const { return registers.isOn(Registers::mirror); }

    /** Whether the picture has top and bottom exchanged. */
    bool isFlipped() const { return registers.isOn(Registers::flip); }

    /** The stored presets by number, from 0. */
    const QMap<int, Position>& presets() const { return storedPresets; }

    /** A frame that the camera understands. */
    struct KnownFrame
    {
        QString name;
        /** Its pattern, see FramePattern.h. */
        QByteArray frame;
        std::function<void(ViscaCamera& camera, const FrameNumbers& numbers)> act;
        /** For a frame that sets a register, its valid values; else empty. */
        QString range = {};
    };

    /** All commands and inquiries. */
    static const std::vector<KnownFrame>& knownFrames();

private:
    static constexpr char addressSet[] = "88 30 0p FF";

    struct PendingAction
    {
        Time due;
        std::function<void()> action;
    };

    /** The kinds of commands that the busy rules distinguish. */
    enum class Task
    {
        Drive,
        /** Home, a position or a reset. */
        Travel,
        Recall,
        StorePreset,
        ResetPreset,
        Zoom,
        Power,
        Other
    };

    /** The camera works on up to two commands at once. Each occupies a socket from its ACK to its completion.
     */
    struct Socket
    {
        enum class State
        {
            Free,
            Finishing,
            Travelling
        };

        int number;
        State state = State::Free;
        Time completesFrom{0};
        Task task = Task::Other;
        /** The parts that a travelling command still moves. */
        Mechanics::Parts parts{};
    };

    // ViscaCamera.cpp: receiving, the sockets and the replies.
    void runUntil(Time now);
    void performNext();
    void takeByte(char byte);
    void finishNoise();
    std::optional<Time> patienceEnds() const;
    void frameArrived(const QByteArray& frame);
    std::function<void()> decode(const QByteArray& frame, QString& words);
    void carryOut(Task task, Mechanics::Parts parts, const std::function<void()>& start);
    void refuse();
    bool isRefused(Task task) const;
    bool isUnderWay(Task task) const;
    static bool isEndedBy(const Socket& socket, Mechanics::Parts parts);
    void takeOver(Mechanics::Parts parts);
    void cancel(int socketNumber);
    Socket* claimSocket(Mechanics::Parts parts);
    void complete(Socket& socket);
    void release(Socket& socket);
    std::optional<Time> completion(const Socket& socket) const;
    void reply(std::string_view pattern, const QString& words, FrameNumbers numbers = {});
    void replyFrom(int socket, std::string_view pattern, const QString& words);

    void syntaxError(const QString& reason) { reply("x0 60 02 FF", "syntax error, " + reason); }

    // ViscaCommands.cpp: the commands and inquiries.
    static void addCommands(std::vector<KnownFrame>& frames);
    static void addInquiries(std::vector<KnownFrame>& frames);
    static void addRegisters(std::vector<KnownFrame>& frames);
    bool hasSpeeds(int panCode, int tiltCode);
    bool accepts(double position, double low, double high);
    bool acceptsDirection(double pan, double tilt);
    void goTo(const FrameNumbers& numbers, const Position& from);
    void travel(double pan, double tilt, int panCode, int tiltCode);
    void setLimit(Mechanics::Corner corner, double pan, double tilt);
    void driveLens(Mechanics::Part part, int way, int code);
    void lensTo(Mechanics::Parts parts, int zoom, int focus);
    void orderLens(Mechanics::Parts parts, const std::function<void()>& start);
    void changePreset(int preset, Task task, const std::function<void()>& change);
    void recallPreset(int preset);
    void setRegister(const Register& row, int value);
    void tellBlock(std::size_t block);

    const BusyRules rules;
    const int presetCount;
    int address;
    bool on;
    /** The received part of a frame, and bytes that belong to no frame. */
    QByteArray unfinished;
    QByteArray noise;
    Time lastByteAt{0};
    Mechanics mechanics;
    Registers registers;
    QMap<int, Position> storedPresets;
    QMap<int, int> presetSpeeds;
    int lastRecalled = 0;
    Time clock{0};
    std::vector<Event> events;

    std::deque<PendingAction> pending;
    Time nextVideoFrame{0};
    std::array<Socket, 2> sockets{{{1}, {2}}};
};
