#pragma once

#include "FramePattern.h"
#include "FrameReader.h"
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
 * The owner hands it what arrives and tells it the time; the camera hands back what happened: each frame it
 * took from the stream and each reply it gives. The clock is milliseconds since any fixed moment and never
 * runs backwards (an earlier time than the last one counts as the last one). Nothing happens between two
 * calls, yet everything happens at its exact time: a late call catches up in order.
 *
 * Where real cameras differ, this one is fixed so:
 *  - It takes one frame per video frame, acts on it and answers it `replyDelay` later.
 *  - The newest command wins. One that moves pan and tilt ends a Home or recall under way, which is told its
 * completion; a zoom command takes only the zoom from a recall, which completes with pan and tilt.
 *  - Recalling a preset that was never stored is "not executable".
 *  - Frames for other cameras and unknown broadcasts get no answer. An address that it is offered holds for
 * the very next frame.
 *  - Home moves pan and tilt only; recalling a preset moves the zoom too. Both go at full speed, as does the
 * lens to a position. A position beyond what the mechanics can do is a syntax error; within that the limits
 * that were set are as far as the camera goes. A reset goes home.
 *  - In standby it refuses each command but power. Inquiries are answered, and so is what keeps the line in
 * order: address set, interface clear and cancel. Switched on, it stands where it stood, and its registers
 * are as after power-on.
 *  - Interface clear empties the sockets without a word and stops nothing. The strict rules no longer protect
 * a Home or recall that goes on so.
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
        /** Every command is accepted at any time. Speed code 00 is the slowest speed; tilt codes up to 18
           (hex) and zoom codes up to F act as the fastest. */
        Lenient,
        /** As one strict family of cameras: what would disturb a drive, a Home or a recall under way is
           refused, and so is each speed code without a speed of its own. */
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

    /** A camera that looks straight ahead, zoomed out, with no presets stored. */
    explicit ViscaCamera(const Options& options = BusyRules::Lenient);
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

    /** Whether it is switched on, not in standby. */
    bool isOn() const { return on; }

    /** Whether it shows left and right exchanged, or up and down. */
    bool isMirrored() const { return registers.value("mirror") == registerOn; }

    bool isFlipped() const { return registers.value("flip") == registerOn; }

    /** The stored presets by number, from 0. */
    const QMap<int, Position>& presets() const { return storedPresets; }

    /** A frame that the camera understands: its name and its pattern. */
    struct KnownFrame
    {
        QString name;
        QString frame;
    };

    /** All of them: commands, inquiries and what the registers have of both. */
    static std::vector<KnownFrame> knownFrames();

private:
    /** VISCA's values for what can be on or off. */
    static constexpr int registerOn = 2;

    /** What a frame asks for; a frame that gets no answer has no action. */
    struct Instruction
    {
        QString words;
        std::function<void()> action;
    };

    /** A line in the table of commands. */
    struct Command
    {
        const char* name;
        const char* frame;
        Instruction (ViscaCamera::*decode)(const FrameNumbers& numbers);
    };

    /** A line in the table of inquiries. */
    struct Inquiry
    {
        const char* name;
        const char* frame;
        void (ViscaCamera::*answer)(const FrameNumbers& numbers);
    };

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

    enum class Completion
    {
        AtOnce,
        OnArrival
    };

    /** What an accepted command does. */
    struct Order
    {
        Task task;
        /** What it moves from now on. */
        Mechanics::Parts parts;
        Completion completion;
        std::function<void()> start;
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
    std::vector<Event> takeEvents();
    void frameArrived(const QByteArray& frame);

    void carryOut(const Order& order);
    void refuse();
    bool isRefused(Task task) const;
    bool isUnderWay(Task task) const;
    static bool isEndedBy(const Socket& socket, Mechanics::Parts parts);
    void takeOver(Mechanics::Parts parts);
    void cancel(int socketNumber);
    void clearSockets();

    Socket* claimSocket(Mechanics::Parts parts);
    void complete(Socket& socket);
    void release(Socket& socket);
    std::optional<Time> completion(const Socket& socket) const;

    void reply(std::string_view pattern, const QString& words, FrameNumbers numbers = {});

    // ViscaCommands.cpp: what each frame means.
    static const std::vector<Command>& commands();
    Instruction decode(const QByteArray& frame);
    Instruction syntaxError(const QString& words);
    QString speedFault(int panCode, int tiltCode) const;
    int fastestLensCode() const;
    Instruction decodeAddressSet(const FrameNumbers& numbers);
    Instruction decodeInterfaceClear(const FrameNumbers& numbers);
    Instruction decodeCancel(const FrameNumbers& numbers);
    Instruction decodePowerOn(const FrameNumbers& numbers);
    Instruction decodePowerOff(const FrameNumbers& numbers);
    Instruction decodeDrive(const FrameNumbers& numbers);
    Instruction decodeHome(const FrameNumbers& numbers);
    Instruction decodeAbsolutePosition(const FrameNumbers& numbers);
    Instruction decodeRelativePosition(const FrameNumbers& numbers);
    Instruction decodePanTiltReset(const FrameNumbers& numbers);
    Instruction decodeLimitSet(const FrameNumbers& numbers);
    Instruction decodeLimitClear(const FrameNumbers& numbers);
    Instruction decodeZoom(const FrameNumbers& numbers);
    Instruction decodeZoomDirect(const FrameNumbers& numbers);
    Instruction decodeFocus(const FrameNumbers& numbers);
    Instruction decodeFocusDirect(const FrameNumbers& numbers);
    Instruction decodePresetReset(const FrameNumbers& numbers);
    Instruction decodePresetStore(const FrameNumbers& numbers);
    Instruction decodePresetRecall(const FrameNumbers& numbers);

    bool hasPreset(int preset) const { return preset < presetCount; }

    Instruction presetOutOfRange(int preset);
    void recallPreset(int preset);

    std::optional<Instruction> decodeRegister(const QByteArray& frame);
    Instruction decodeRegisterValue(const Registers::Line& line, const FrameNumbers& numbers);
    Instruction decodeRegisterStep(const Registers::Line& line, const FrameNumbers& numbers);
    Instruction changeRegister(const QString& words, const std::function<void()>& change);

    // ViscaInquiries.cpp: what the camera tells.
    static const std::vector<Inquiry>& inquiries();
    void answerVersion(const FrameNumbers& numbers);
    void answerPower(const FrameNumbers& numbers);
    void answerPanTiltPosition(const FrameNumbers& numbers);
    void answerPanTiltStatus(const FrameNumbers& numbers);
    void answerPanTiltMaximumSpeeds(const FrameNumbers& numbers);
    void answerZoomPosition(const FrameNumbers& numbers);
    void answerFocusPosition(const FrameNumbers& numbers);
    void answerRegister(const Registers::Line& line);
    void answerBlock(const FrameNumbers& numbers);

    const BusyRules rules;
    const int presetCount;
    int address;
    bool on;
    FrameReader reader;
    Mechanics mechanics;
    Registers registers;
    QMap<int, Position> storedPresets;
    Time clock{0};
    std::vector<Event> events;

    std::deque<PendingAction> pending;
    Time nextVideoFrame{0};
    std::array<Socket, 2> sockets;
};
