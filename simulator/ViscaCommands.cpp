// What each frame means to the camera: the table of commands, and for each of them the check of its numbers,
// its words and its order.

#include "ViscaCamera.h"

#include <array>
#include <optional>

namespace {

constexpr int broadcast = 8;
constexpr int highestPreset = 127;

// The speed codes that are accepted, beyond those with a speed of their own.
constexpr int lenientSlowestCode = 0x00;
constexpr int lenientFastestTiltCode = 0x18;
constexpr int lenientFastestLensCode = 0x0F;

// The ways that the lens goes, by the digit that VISCA has for each.
struct LensWay
{
    const char* name;
    Mechanics::Way way;
};

using LensWays = std::array<LensWay, 4>;
constexpr LensWays zoomWays{
    {{"stop", Mechanics::Stopped}, {}, {"tele", Mechanics::Forwards}, {"wide", Mechanics::Backwards}}};

struct LensMotion
{
    Mechanics::Way way;
    int code;
    QString words;
};

// 00 is a stop, 02 and 03 go either way at the standard speed, 2p and 3p at speed p. Nothing for anything
// else.
std::optional<LensMotion> lensMotion(const LensWays& ways, int parameter, int fastestCode)
{
    if (parameter == 0)
        return LensMotion{ways[0].way, 0, ways[0].name};
    const bool standard = parameter < 0x10;
    const int digit = standard ? parameter : parameter >> 4;
    const int code = standard ? Mechanics::standardLensCode : parameter & 0x0F;
    if (digit < 2 || digit > 3 || code > fastestCode)
        return std::nullopt;
    const LensWay& chosen = ways[static_cast<std::size_t>(digit)];
    const QString speed = standard ? QString("standard speed") : QString("speed %1").arg(code);
    return LensMotion{chosen.way, code, QString("%1, %2").arg(chosen.name, speed)};
}

} // namespace

const std::vector<ViscaCamera::Command>& ViscaCamera::commands()
{
    static const std::vector<Command> table{
        {"address set", "88 30 01 FF", &ViscaCamera::decodeAddressSet},
        {"interface clear, broadcast", "88 01 00 01 FF", &ViscaCamera::decodeInterfaceClear},
        {"interface clear", "8x 01 00 01 FF", &ViscaCamera::decodeInterfaceClear},
        {"cancel", "8x 2s FF", &ViscaCamera::decodeCancel},
        {"pan-tilt drive", "8x 01 06 01 VV WW 0h 0v FF", &ViscaCamera::decodeDrive},
        {"home", "8x 01 06 04 FF", &ViscaCamera::decodeHome},
        {"zoom stop, tele, wide", "8x 01 04 07 pp FF", &ViscaCamera::decodeZoom},
        {"preset reset", "8x 01 04 3F 00 pp FF", &ViscaCamera::decodePresetReset},
        {"preset store", "8x 01 04 3F 01 pp FF", &ViscaCamera::decodePresetStore},
        {"preset recall", "8x 01 04 3F 02 pp FF", &ViscaCamera::decodePresetRecall},
    };
    return table;
}

ViscaCamera::Instruction ViscaCamera::decode(const QByteArray& frame)
{
    const int receiver = frame.at(0) & 0x0F;
    if (receiver != address && receiver != broadcast)
        return {QString("for camera %1, ignored").arg(receiver), {}};
    if (frame.size() > FrameReader::longestFrame && receiver == address)
        return syntaxError("too long");
    for (const Command& command : commands()) {
        const auto numbers = matchFrame(frame, command.frame);
        if (numbers && numbers->contains('x') == (receiver != broadcast))
            return (this->*command.decode)(*numbers);
    }
    if (receiver == broadcast)
        return {"unknown broadcast, ignored", {}};
    for (const Inquiry& inquiry : inquiries()) {
        if (const auto numbers = matchFrame(frame, inquiry.frame))
            return {QString("%1 inquiry").arg(inquiry.name), [=] { (this->*inquiry.answer)(*numbers); }};
    }
    return syntaxError("unknown command");
}

ViscaCamera::Instruction ViscaCamera::syntaxError(const QString& words)
{
    return {words, [=] { reply("x0 60 02 FF", "syntax error"); }};
}

ViscaCamera::Instruction ViscaCamera::decodeAddressSet(const FrameNumbers&)
{
    return {"address set", [=] { reply("88 30 02 FF", "the next camera would have address 2"); }};
}

ViscaCamera::Instruction ViscaCamera::decodeInterfaceClear(const FrameNumbers& numbers)
{
    const bool toAll = !numbers.contains('x');
    return {toAll ? "interface clear, broadcast" : "interface clear", [=] {
                clearSockets();
                reply(toAll ? "88 01 00 01 FF" : "x0 50 FF", "interface cleared");
            }};
}

ViscaCamera::Instruction ViscaCamera::decodeCancel(const FrameNumbers& numbers)
{
    const int socket = numbers['s'];
    return {QString("cancel socket %1").arg(socket), [=] { cancel(socket); }};
}

// What is wrong with these speed codes, if anything.
QString ViscaCamera::speedFault(int panCode, int tiltCode) const
{
    const bool strict = rules == BusyRules::Strict;
    const int slowest = strict ? Mechanics::slowestCode : lenientSlowestCode;
    const int fastestTilt = strict ? Mechanics::fastestTiltCode : lenientFastestTiltCode;
    if (panCode < slowest || panCode > Mechanics::fastestPanCode)
        return QString("pan speed %1 out of range").arg(panCode);
    if (tiltCode < slowest || tiltCode > fastestTilt)
        return QString("tilt speed %1 out of range").arg(tiltCode);
    return {};
}

ViscaCamera::Instruction ViscaCamera::decodeDrive(const FrameNumbers& numbers)
{
    const int panCode = numbers['V'];
    const int tiltCode = numbers['W'];
    const QString fault = speedFault(panCode, tiltCode);
    if (!fault.isEmpty())
        return syntaxError("drive, " + fault);

    // By direction digit: 1 left or up, 2 right or down, 3 not at all.
    using Way = Mechanics::Way;
    static constexpr std::array<Way, 4> panWays{{{}, Way::Backwards, Way::Forwards, Way::Stopped}};
    static constexpr std::array<Way, 4> tiltWays{{{}, Way::Forwards, Way::Backwards, Way::Stopped}};
    static constexpr std::array<std::array<const char*, 4>, 4> names{{
        {},
        {"", "up-left", "up-right", "up"},
        {"", "down-left", "down-right", "down"},
        {"", "left", "right", "stop"},
    }};
    const auto pan = static_cast<std::size_t>(numbers['h']);
    const auto tilt = static_cast<std::size_t>(numbers['v']);
    if (pan < 1 || pan > 3 || tilt < 1 || tilt > 3)
        return syntaxError("drive, unknown direction");
    const auto start = [=] { mechanics.drive(panWays[pan], panCode, tiltWays[tilt], tiltCode, clock); };
    return {QString("drive %1, pan speed %2, tilt speed %3").arg(names[tilt][pan]).arg(panCode).arg(tiltCode),
            [=] {
                carryOut({Task::Drive, Mechanics::PanTilt, Completion::AtOnce, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodeHome(const FrameNumbers&)
{
    const auto start = [=] { mechanics.goTo(0, 0, clock); };
    return {"home", [=] { carryOut({Task::Home, Mechanics::PanTilt, Completion::OnArrival, start}); }};
}

int ViscaCamera::fastestLensCode() const
{
    return rules == BusyRules::Strict ? Mechanics::fastestLensCode : lenientFastestLensCode;
}

ViscaCamera::Instruction ViscaCamera::decodeZoom(const FrameNumbers& numbers)
{
    const auto motion = lensMotion(zoomWays, numbers['p'], fastestLensCode());
    if (!motion)
        return syntaxError("zoom, unknown direction or speed");
    const auto start = [=] { mechanics.driveZoom(motion->way, motion->code, clock); };
    return {"zoom " + motion->words, [=] {
                carryOut({Task::Zoom, Mechanics::Zoom, Completion::AtOnce, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodePresetReset(const FrameNumbers& numbers)
{
    const int preset = numbers['p'];
    if (preset > highestPreset)
        return presetOutOfRange(preset);
    const auto start = [=] { storedPresets.remove(preset); };
    return {QString("reset preset %1").arg(preset), [=] {
                carryOut({Task::ResetPreset, {}, Completion::AtOnce, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodePresetStore(const FrameNumbers& numbers)
{
    const int preset = numbers['p'];
    if (preset > highestPreset)
        return presetOutOfRange(preset);
    const auto start = [=] { storedPresets.insert(preset, position()); };
    return {QString("store preset %1").arg(preset), [=] {
                carryOut({Task::StorePreset, {}, Completion::AtOnce, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodePresetRecall(const FrameNumbers& numbers)
{
    const int preset = numbers['p'];
    if (preset > highestPreset)
        return presetOutOfRange(preset);
    return {QString("recall preset %1").arg(preset), [=] { recallPreset(preset); }};
}

ViscaCamera::Instruction ViscaCamera::presetOutOfRange(int preset)
{
    return syntaxError(QString("preset %1 out of range").arg(preset));
}

void ViscaCamera::recallPreset(int preset)
{
    const auto stored = storedPresets.constFind(preset);
    if (stored == storedPresets.cend())
        return refuse();
    const auto start = [this, target = *stored] {
        mechanics.goTo(target.pan, target.tilt, clock);
        mechanics.zoomTo(target.zoom, clock);
    };
    carryOut({Task::Recall, Mechanics::PanTilt | Mechanics::Zoom, Completion::OnArrival, start});
}
