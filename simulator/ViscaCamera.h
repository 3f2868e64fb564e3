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
 * A pan-tilt-zoom camera that speaks VISCA, without a line, a screen or a clock of its own.
 *
 * The owner hands it what arrives and tells it the time, in milliseconds since any fixed moment; the camera
 * hands back each frame it took from the stream and each reply it gives. Nothing happens between two calls,
 * yet everything happens at its exact time: a late call catches up in order, an earlier time counts as the
 * last one. Any byte stream is survived with bounded memory.
 *
 * Where real cameras differ, this one is fixed so:
 *  - The newest command wins. One that moves pan and tilt ends a Home or recall under way, which is told its
 *    completion; a zoom command takes only the zoom from a recall, which completes with pan and tilt.
 *  - Recalling a preset that was never stored is "not executable", and so is moving the focus by hand while
 *    it is automatic.
 *  - Home and a reset move pan and tilt only. A position out of range leads to the limit.
 *  - In standby it refuses each command but power; inquiries and what keeps the line in order are answered.
 *    Switched on, it stands where it stood, and its registers are as after power-on.
 *  - Interface clear ends every journey where it is, without a word; a drive goes on.
 */
class ViscaCamera
{
public:
    using Time = std::chrono::milliseconds;
    using Position = Mechanics::Position;

    enum class BusyRules
    {
        /** Every command is accepted, and a speed code beyond the slowest or fastest acts as that. */
        Lenient,
        /** What would disturb a motion under way is refused, and so is a speed or position out of range. */
        Strict
    };

    /** How a camera is when it is plugged in. */
    struct Options
    {
        /** Most cameras differ in nothing else, so the rules alone will do where options are wanted. */
        Options(BusyRules busyRules)
            : rules(busyRules)
        {
        }

        BusyRules rules;
        /** 1 to 7. */
        int address = 1;
        /** How many presets there are, numbered from 0; 1 to 255. */
        int presets = 255;
        bool standby = false;
    };

    /** Something that happened, in bytes and in words (English, ASCII, without the bytes). */
    struct Event
    {
        /** A whole frame, of one too long the first 17 bytes; bytes of no whole frame; or a reply. */
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

    /** Looks straight ahead, zoomed out, with no presets stored. */
    explicit ViscaCamera(const Options& options = BusyRules::Lenient);
    Q_DISABLE_COPY(ViscaCamera)

    /** Tells that the camera has come onto the line: the network change, which nobody asked for. */
    std::vector<Event> comeOntoLine(Time now);

    /** Takes `bytes`, cut anywhere, and returns what fell due until now, then what arrived. */
    std::vector<Event> receive(const QByteArray& bytes, Time now);

    /** Lets time pass until `now` and returns what fell due, in order. */
    std::vector<Event> advance(Time now);

    /** When advance() next has something to do; nothing while the camera only moves or rests. */
    std::optional<Time> nextDue() const;

    /** The position at the last time it was told. */
    Position position() const { return mechanics.position(clock); }

    /** Whether it was moving at that time: pan, tilt or zoom. */
    bool isMoving() const { return mechanics.isMoving(Mechanics::PanTilt | Mechanics::Zoom, clock); }

    bool isOn() const { return on; }

    /** Whether it shows left and right exchanged. */
    bool isMirrored() const { return registers.isOn(Registers::mirror); }

    /** Whether it shows up and down exchanged. */
    bool isFlipped() const { return registers.isOn(Registers::flip); }

    /** The stored presets by number, from 0. */
    const QMap<int, Position>& presets() const { return storedPresets; }

    /** A frame that the camera understands. */
    struct KnownFrame
    {
        QString name;
        /** Its pattern. */
        QByteArray frame;
        std::function<void(ViscaCamera& camera, const FrameNumbers& numbers)> act;
        /** The values of a register. */
        QString range = {};
    };

    /** All of them: commands and inquiries. */
    static const std::vector<KnownFrame>& knownFrames();

private:
    static constexpr char addressSet[] = "88 30 0p FF";

    struct PendingAction
    {
        Time due;
        std::function<void()> action;
    };

    /** What the busy rules tell apart. */
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

    /** One of the two places in which VISCA keeps a command from its ACK to its completion. */
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
        /** What a travelling command still moves. */
        Mechanics::Parts parts{};
    };

    // ViscaCamera.cpp: the line, the sockets and the replies.
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

    // ViscaCommands.cpp: what the frames mean.
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
    /** What has arrived of a frame, and bytes that belong to none. */
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
