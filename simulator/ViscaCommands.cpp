// What each frame means to the camera: the table of commands, and for each of them the check of its numbers,
// its words and its order.

#include "ViscaCamera.h"

#include <array>
#include <cmath>
#include <optional>

namespace {

constexpr int broadcast = 8;
constexpr int highestAddress = 7;

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
constexpr LensWays focusWays{
    {{"stop", Mechanics::Stopped}, {}, {"far", Mechanics::Backwards}, {"near", Mechanics::Forwards}}};

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

// Degrees.
struct Direction
{
    double pan;
    double tilt;
};

// The position on the line is in steps, as two's complement of 16 bits.
double degrees(int steps)
{
    return (steps < 0x8000 ? steps : steps - 0x10000) * Mechanics::degreesPerStep;
}

Direction directionIn(const FrameNumbers& numbers)
{
    return {degrees(numbers['Y']), degrees(numbers['Z'])};
}

bool isWithinMechanics(const Direction& direction)
{
    return std::abs(direction.pan) <= Mechanics::panLimit && direction.tilt >= Mechanics::tiltLowLimit &&
           direction.tilt <= Mechanics::tiltHighLimit;
}

QString words(const Direction& direction)
{
    return QString("pan %1, tilt %2 degrees").arg(direction.pan, 0, 'f', 1).arg(direction.tilt, 0, 'f', 1);
}

std::optional<Mechanics::Corner> cornerIn(const FrameNumbers& numbers)
{
    switch (numbers['w']) {
    case 0:
        return Mechanics::Corner::DownLeft;
    case 1:
        return Mechanics::Corner::UpRight;
    default:
        return std::nullopt;
    }
}

const char* cornerName(Mechanics::Corner corner)
{
    return corner == Mechanics::Corner::UpRight ? "up-right" : "down-left";
}

} // namespace

const std::vector<ViscaCamera::Command>& ViscaCamera::commands()
{
    static const std::vector<Command> table{
        {"address set", "88 30 0p FF", &ViscaCamera::decodeAddressSet},
        {"interface clear, broadcast", "88 01 00 01 FF", &ViscaCamera::decodeInterfaceClear},
        {"interface clear", "8x 01 00 01 FF", &ViscaCamera::decodeInterfaceClear},
        {"cancel", "8x 2s FF", &ViscaCamera::decodeCancel},
        {"power on", "8x 01 04 00 02 FF", &ViscaCamera::decodePowerOn},
        {"power off", "8x 01 04 00 03 FF", &ViscaCamera::decodePowerOff},
        {"pan-tilt drive", "8x 01 06 01 VV WW 0h 0v FF", &ViscaCamera::decodeDrive},
        {"home", "8x 01 06 04 FF", &ViscaCamera::decodeHome},
        {"absolute position", "8x 01 06 02 VV WW 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF",
         &ViscaCamera::decodeAbsolutePosition},
        {"relative position", "8x 01 06 03 VV WW 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF",
         &ViscaCamera::decodeRelativePosition},
        {"pan-tilt reset", "8x 01 06 05 FF", &ViscaCamera::decodePanTiltReset},
        {"pan-tilt limit set", "8x 01 06 07 00 0w 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF", &ViscaCamera::decodeLimitSet},
        {"pan-tilt limit clear", "8x 01 06 07 01 0w 07 0F 0F 0F 07 0F 0F 0F FF",
         &ViscaCamera::decodeLimitClear},
        {"zoom stop, tele, wide", "8x 01 04 07 pp FF", &ViscaCamera::decodeZoom},
        {"zoom direct", "8x 01 04 47 0p 0p 0p 0p FF", &ViscaCamera::decodeZoomDirect},
        {"focus stop, far, near", "8x 01 04 08 pp FF", &ViscaCamera::decodeFocus},
        {"focus direct", "8x 01 04 48 0p 0p 0p 0p FF", &ViscaCamera::decodeFocusDirect},
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
        return {"too long", [=] { reply("x0 60 01 FF", "message length"); }};
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
    return decodeRegister(frame).value_or(syntaxError("unknown command"));
}

ViscaCamera::Instruction ViscaCamera::syntaxError(const QString& words)
{
    return {words, [=] { reply("x0 60 02 FF", "syntax error"); }};
}

ViscaCamera::Instruction ViscaCamera::decodeAddressSet(const FrameNumbers& numbers)
{
    const int offered = numbers['p'];
    if (offered < 1 || offered > highestAddress)
        return {"address set, no address for a camera, ignored", {}};
    address = offered;
    return {QString("address set, %1").arg(offered), [=] {
                reply("88 30 0p FF", QString("the next camera would have address %1").arg(offered + 1),
                      {{'p', offered + 1}});
            }};
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

ViscaCamera::Instruction ViscaCamera::decodePowerOn(const FrameNumbers&)
{
    const auto start = [=] {
        if (on)
            return;
        on = true;
        registers = Registers();
        reply("x0 38 FF", "network change");
    };
    return {"power on", [=] { carryOut({Task::Power, {}, Completion::AtOnce, start}); }};
}

ViscaCamera::Instruction ViscaCamera::decodePowerOff(const FrameNumbers&)
{
    const auto start = [=] {
        mechanics.stop(clock);
        on = false;
    };
    return {"power off", [=] { carryOut({Task::Power, Mechanics::everyPart, Completion::AtOnce, start}); }};
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
    return {"home", [=] { carryOut({Task::Travel, Mechanics::PanTilt, Completion::OnArrival, start}); }};
}

ViscaCamera::Instruction ViscaCamera::decodePanTiltReset(const FrameNumbers& numbers)
{
    return {"pan-tilt reset", decodeHome(numbers).action};
}

ViscaCamera::Instruction ViscaCamera::decodeAbsolutePosition(const FrameNumbers& numbers)
{
    const int panCode = numbers['V'];
    const int tiltCode = numbers['W'];
    const QString fault = speedFault(panCode, tiltCode);
    if (!fault.isEmpty())
        return syntaxError("absolute position, " + fault);
    const Direction to = directionIn(numbers);
    if (!isWithinMechanics(to))
        return syntaxError("absolute position, out of range");
    const auto start = [=] { mechanics.goTo(to.pan, to.tilt, panCode, tiltCode, clock); };
    return {QString("absolute position, %1, pan speed %2, tilt speed %3")
                .arg(words(to))
                .arg(panCode)
                .arg(tiltCode),
            [=] {
                carryOut({Task::Travel, Mechanics::PanTilt, Completion::OnArrival, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodeRelativePosition(const FrameNumbers& numbers)
{
    const int panCode = numbers['V'];
    const int tiltCode = numbers['W'];
    const QString fault = speedFault(panCode, tiltCode);
    if (!fault.isEmpty())
        return syntaxError("relative position, " + fault);
    const Direction by = directionIn(numbers);
    const auto start = [=] {
        const Position here = position();
        mechanics.goTo(here.pan + by.pan, here.tilt + by.tilt, panCode, tiltCode, clock);
    };
    return {QString("relative position, %1, pan speed %2, tilt speed %3")
                .arg(words(by))
                .arg(panCode)
                .arg(tiltCode),
            [=] {
                carryOut({Task::Travel, Mechanics::PanTilt, Completion::OnArrival, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodeLimitSet(const FrameNumbers& numbers)
{
    const auto corner = cornerIn(numbers);
    const Direction at = directionIn(numbers);
    if (!corner || !isWithinMechanics(at))
        return syntaxError("limit, out of range");
    return {QString("limit %1 set, %2").arg(cornerName(*corner), words(at)), [=] {
                if (!mechanics.mayLimit(*corner, at.pan, at.tilt))
                    return refuse();
                const auto start = [=] { mechanics.setLimit(*corner, at.pan, at.tilt); };
                carryOut({Task::Other, {}, Completion::AtOnce, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodeLimitClear(const FrameNumbers& numbers)
{
    const auto corner = cornerIn(numbers);
    if (!corner)
        return syntaxError("limit, out of range");
    const auto start = [=] { mechanics.clearLimit(*corner); };
    return {QString("limit %1 cleared").arg(cornerName(*corner)), [=] {
                carryOut({Task::Other, {}, Completion::AtOnce, start});
            }};
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

ViscaCamera::Instruction ViscaCamera::decodeZoomDirect(const FrameNumbers& numbers)
{
    const int target = numbers['p'];
    if (target > Mechanics::zoomTele)
        return syntaxError("zoom direct, out of range");
    const auto start = [=] { mechanics.zoomTo(target, clock); };
    return {QString("zoom direct, %1").arg(target), [=] {
                carryOut({Task::Zoom, Mechanics::Zoom, Completion::OnArrival, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodeFocus(const FrameNumbers& numbers)
{
    const auto motion = lensMotion(focusWays, numbers['p'], fastestLensCode());
    if (!motion)
        return syntaxError("focus, unknown direction or speed");
    const auto start = [=] { mechanics.driveFocus(motion->way, motion->code, clock); };
    return {"focus " + motion->words, [=] {
                carryOut({Task::Other, Mechanics::Focus, Completion::AtOnce, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodeFocusDirect(const FrameNumbers& numbers)
{
    const int target = numbers['p'];
    if (target < Mechanics::focusFar || target > Mechanics::focusNear)
        return syntaxError("focus direct, out of range");
    const auto start = [=] { mechanics.focusTo(target, clock); };
    return {QString("focus direct, %1").arg(target), [=] {
                carryOut({Task::Other, Mechanics::Focus, Completion::OnArrival, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodePresetReset(const FrameNumbers& numbers)
{
    const int preset = numbers['p'];
    if (!hasPreset(preset))
        return presetOutOfRange(preset);
    const auto start = [=] { storedPresets.remove(preset); };
    return {QString("reset preset %1").arg(preset), [=] {
                carryOut({Task::ResetPreset, {}, Completion::AtOnce, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodePresetStore(const FrameNumbers& numbers)
{
    const int preset = numbers['p'];
    if (!hasPreset(preset))
        return presetOutOfRange(preset);
    const auto start = [=] { storedPresets.insert(preset, position()); };
    return {QString("store preset %1").arg(preset), [=] {
                carryOut({Task::StorePreset, {}, Completion::AtOnce, start});
            }};
}

ViscaCamera::Instruction ViscaCamera::decodePresetRecall(const FrameNumbers& numbers)
{
    const int preset = numbers['p'];
    if (!hasPreset(preset))
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

std::optional<ViscaCamera::Instruction> ViscaCamera::decodeRegister(const QByteArray& frame)
{
    // The table's forms have neither header nor FF.
    const QByteArray form = frame.mid(1, frame.size() - 2);
    for (const Registers::Line& line : Registers::table()) {
        if (const auto numbers = matchFrame(form, line.sets))
            return decodeRegisterValue(line, *numbers);
        if (const auto numbers = matchFrame(form, line.steps))
            return decodeRegisterStep(line, *numbers);
        if (matchFrame(form, line.inquiry))
            return Instruction{QString("%1 inquiry").arg(line.name), [this, &line] { answerRegister(line); }};
    }
    return std::nullopt;
}

ViscaCamera::Instruction ViscaCamera::decodeRegisterValue(const Registers::Line& line,
                                                          const FrameNumbers& numbers)
{
    if (!numbers.contains('p'))
        return changeRegister(line.name, [] {});
    const int value = numbers['p'];
    const QString words = QString("%1 %2").arg(line.name, QString::number(value, 16).toUpper());
    if (!Registers::hasValue(line, value))
        return syntaxError(words + " out of range");
    return changeRegister(words, [=, &line] { registers.set(line, value); });
}

ViscaCamera::Instruction ViscaCamera::decodeRegisterStep(const Registers::Line& line,
                                                         const FrameNumbers& numbers)
{
    const QString name = line.name;
    if (!numbers.contains('s'))
        return changeRegister(name + " toggle", [this, &line] { registers.toggle(line); });
    switch (numbers['s']) {
    case 0:
        return changeRegister(name + " reset", [this, &line] { registers.reset(line); });
    case 2:
        return changeRegister(name + " up", [this, &line] { registers.stepUp(line); });
    case 3:
        return changeRegister(name + " down", [this, &line] { registers.stepDown(line); });
    default:
        return syntaxError(name + ", unknown step");
    }
}

ViscaCamera::Instruction ViscaCamera::changeRegister(const QString& words,
                                                     const std::function<void()>& change)
{
    return {words, [=] { carryOut({Task::Other, {}, Completion::AtOnce, change}); }};
}

std::vector<ViscaCamera::KnownFrame> ViscaCamera::knownFrames()
{
    std::vector<KnownFrame> frames;
    for (const Command& command : commands())
        frames.push_back({command.name, command.frame});
    for (const Inquiry& inquiry : inquiries())
        frames.push_back({QString("%1 inquiry").arg(inquiry.name), inquiry.frame});

    const auto addForm = [&frames](const QString& name, const char* form) {
        if (*form != '\0')
            frames.push_back({name, Registers::frame(form)});
    };
    for (const Registers::Line& line : Registers::table()) {
        const QString name = line.name;
        addForm(QString("%1 %2").arg(name, line.range).trimmed(), line.sets);
        addForm(name + (QByteArray(line.steps).contains('s') ? " step" : " toggle"), line.steps);
        addForm(name + " inquiry", line.inquiry);
    }
    return frames;
}
