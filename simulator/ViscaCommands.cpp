// The table of the commands and inquiries that the camera knows, and what each of them does.

#include "ViscaCamera.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using Corner = Mechanics::Corner;
using C = ViscaCamera;
using N = const FrameNumbers&;

// Without --strict, tilt codes above the fastest are accepted up to this one.
constexpr int lenientFastestTiltCode = 0x18;

int steps(double degrees)
{
    return static_cast<int>(std::lround(degrees / Mechanics::degreesPerStep));
}

int whole(double position)
{
    return static_cast<int>(std::lround(position));
}

} // namespace

const std::vector<ViscaCamera::KnownFrame>& ViscaCamera::knownFrames()
{
    static const std::vector<KnownFrame> all = [] {
        std::vector<KnownFrame> frames;
        addCommands(frames);
        addInquiries(frames);
        addRegisters(frames);
        return frames;
    }();
    return all;
}

void ViscaCamera::addCommands(std::vector<KnownFrame>& frames)
{
    const auto add = [&frames](const char* name, const char* frame, auto act) {
        frames.push_back({name, frame, act});
    };
    const auto drive = [](int panWay, int tiltWay) {
        return [=](C& c, N n) {
            if (c.hasSpeeds(n['V'], n['W']))
                c.carryOut(Task::Drive, Mechanics::PanTilt,
                           [=, &c] { c.mechanics.drive(panWay, n['V'], tiltWay, n['W'], c.clock); });
        };
    };
    const auto home = [](C& c, N) { c.travel(0, 0, Mechanics::fastestPanCode, Mechanics::fastestTiltCode); };
    // A frame without a speed means the standard speed.
    const auto lens = [](Mechanics::Part part, int way) {
        return
            [=](C& camera, N n) { camera.driveLens(part, way, n.value('p', Mechanics::standardLensCode)); };
    };
    const auto zoom = [=](int way) { return lens(Mechanics::Zoom, way); };
    const auto focus = [=](int way) { return lens(Mechanics::Focus, way); };
    const auto clear = [](const char* answer) {
        return [=](C& c, N) {
            for (Socket& socket : c.sockets)
                c.release(socket);
            c.reply(answer, "interface cleared");
        };
    };
    const auto limit = [](Corner corner) {
        return [=](C& c, N n) { c.setLimit(corner, Mechanics::degrees(n['Y']), Mechanics::degrees(n['Z'])); };
    };
    add("address set", addressSet, [](C& c, N n) {
        const int next = n['p'] + 1;
        c.reply("88 30 0p FF", QString("the next camera would have address %1").arg(next), {{'p', next}});
    });
    add("interface clear, broadcast", "88 01 00 01 FF", clear("88 01 00 01 FF"));
    add("interface clear", "8x 01 00 01 FF", clear("x0 50 FF"));
    add("cancel socket", "8x 2p FF", [](C& c, N n) { c.cancel(n['p']); });
    add("power on", "8x 01 04 00 02 FF", [](C& c, N) {
        c.carryOut(Task::Power, {}, [&c] {
            if (!c.on)
                c.registers = Registers();
            c.on = true;
        });
    });
    add("power off", "8x 01 04 00 03 FF", [](C& c, N) {
        c.carryOut(Task::Power, Mechanics::Everything, [&c] {
            c.mechanics.stopEverything(c.clock);
            c.on = false;
        });
    });
    add("drive up", "8x 01 06 01 VV WW 03 01 FF", drive(0, 1));
    add("drive down", "8x 01 06 01 VV WW 03 02 FF", drive(0, -1));
    add("drive left", "8x 01 06 01 VV WW 01 03 FF", drive(-1, 0));
    add("drive right", "8x 01 06 01 VV WW 02 03 FF", drive(1, 0));
    add("drive up-left", "8x 01 06 01 VV WW 01 01 FF", drive(-1, 1));
    add("drive up-right", "8x 01 06 01 VV WW 02 01 FF", drive(1, 1));
    add("drive down-left", "8x 01 06 01 VV WW 01 02 FF", drive(-1, -1));
    add("drive down-right", "8x 01 06 01 VV WW 02 02 FF", drive(1, -1));
    add("drive stop", "8x 01 06 01 VV WW 03 03 FF", drive(0, 0));
    add("home", "8x 01 06 04 FF", home);
    add("pan-tilt reset", "8x 01 06 05 FF", home);
    add("absolute position", "8x 01 06 02 VV WW 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF",
        [](C& c, N n) { c.goTo(n, {}); });
    add("relative position", "8x 01 06 03 VV WW 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF",
        [](C& c, N n) { c.goTo(n, c.position()); });
    add("limit down-left set", "8x 01 06 07 00 00 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF", limit(Corner::DownLeft));
    add("limit up-right set", "8x 01 06 07 00 01 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF", limit(Corner::UpRight));
    add("limit down-left cleared", "8x 01 06 07 01 00 07 0F 0F 0F 07 0F 0F 0F FF",
        [](C& c, N) { c.setLimit(Corner::DownLeft, -Mechanics::panLimit, Mechanics::tiltLowLimit); });
    add("limit up-right cleared", "8x 01 06 07 01 01 07 0F 0F 0F 07 0F 0F 0F FF",
        [](C& c, N) { c.setLimit(Corner::UpRight, Mechanics::panLimit, Mechanics::tiltHighLimit); });
    add("zoom stop", "8x 01 04 07 00 FF", zoom(0));
    add("zoom tele, standard speed", "8x 01 04 07 02 FF", zoom(1));
    add("zoom wide, standard speed", "8x 01 04 07 03 FF", zoom(-1));
    add("zoom tele, speed", "8x 01 04 07 2p FF", zoom(1));
    add("zoom wide, speed", "8x 01 04 07 3p FF", zoom(-1));
    add("zoom direct", "8x 01 04 47 0p 0p 0p 0p FF",
        [](C& c, N n) { c.lensTo(Mechanics::Zoom, n['p'], {}); });
    add("zoom and focus direct", "8x 01 04 47 0p 0p 0p 0p 0q 0q 0q 0q FF",
        [](C& c, N n) { c.lensTo(Mechanics::Zoom | Mechanics::Focus, n['p'], n['q']); });
    add("focus stop", "8x 01 04 08 00 FF", focus(0));
    add("focus far, standard speed", "8x 01 04 08 02 FF", focus(-1));
    add("focus near, standard speed", "8x 01 04 08 03 FF", focus(1));
    add("focus far, speed", "8x 01 04 08 2p FF", focus(-1));
    add("focus near, speed", "8x 01 04 08 3p FF", focus(1));
    add("focus direct", "8x 01 04 48 0p 0p 0p 0p FF",
        [](C& c, N n) { c.lensTo(Mechanics::Focus, {}, n['p']); });
    add("focus infinity", "8x 01 04 18 02 FF",
        [](C& c, N) { c.lensTo(Mechanics::Focus, {}, whole(Mechanics::focusFar)); });
    add("reset preset", "8x 01 04 3F 00 pp FF", [](C& c, N n) {
        c.changePreset(n['p'], Task::ResetPreset, [&c, preset = n['p']] {
            c.storedPresets.remove(preset);
            c.presetSpeeds.remove(preset);
            if (c.lastRecalled == preset)
                c.lastRecalled = 0;
        });
    });
    add("store preset", "8x 01 04 3F 01 pp FF", [](C& c, N n) {
        c.changePreset(n['p'], Task::StorePreset, [&c, n] { c.storedPresets[n['p']] = c.position(); });
    });
    add("speed of preset", "8x 01 7E 01 0B pp qq FF", [](C& c, N n) {
        if (c.hasSpeeds(n['q'], Mechanics::slowestCode))
            c.changePreset(n['p'], Task::Other, [&c, n] { c.presetSpeeds[n['p']] = n['q']; });
    });
    add("recall preset", "8x 01 04 3F 02 pp FF", [](C& c, N n) { c.recallPreset(n['p']); });
}

void ViscaCamera::addInquiries(std::vector<KnownFrame>& frames)
{
    const auto add = [&frames](const char* name, const char* frame, auto act) {
        frames.push_back({name, frame, act});
    };
    const auto tell = [](const char* answer, const char* words, auto value) {
        return [=](C& c, N) { c.reply(answer, QString(words).arg(value(c)), {{'p', value(c)}}); };
    };
    const char* const position = "x0 50 0p 0p 0p 0p FF";
    // Vendor "VA", model 1, firmware 1.0, two sockets.
    add("version inquiry", "8x 09 00 02 FF", [](C& c, N) {
        c.reply("x0 50 56 41 00 01 01 00 02 FF", "vendor 5641, model 0001, firmware 0100, 2 sockets");
    });
    add("power inquiry", "8x 09 04 00 FF",
        [](C& c, N) { c.reply(c.on ? "x0 50 02 FF" : "x0 50 03 FF", c.on ? "on" : "standby"); });
    add("pan-tilt position inquiry", "8x 09 06 12 FF", [](C& c, N) {
        const Position here = c.position();
        c.reply("x0 50 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF",
                QString("pan %1, tilt %2 degrees").arg(here.pan, 0, 'f', 1).arg(here.tilt, 0, 'f', 1),
                {{'Y', steps(here.pan)}, {'Z', steps(here.tilt)}});
    });
    add("pan-tilt status inquiry", "8x 09 06 10 FF", [](C& c, N) {
        const int status = c.mechanics.panTiltStatus(c.clock);
        c.reply("x0 50 pp pp FF", QString("status %1").arg(status, 4, 16, QChar('0')), {{'p', status}});
    });
    add("maximum speeds inquiry", "8x 09 06 11 FF", [](C& c, N) {
        const FrameNumbers codes{{'V', Mechanics::fastestPanCode}, {'W', Mechanics::fastestTiltCode}};
        c.reply("x0 50 VV WW FF", QString("pan speed %1, tilt speed %2").arg(codes['V']).arg(codes['W']),
                codes);
    });
    add("zoom position inquiry", "8x 09 04 47 FF",
        tell(position, "zoom %1", [](C& c) { return whole(c.position().zoom); }));
    add("focus position inquiry", "8x 09 04 48 FF",
        tell(position, "focus %1", [](C& c) { return whole(c.mechanics.focus(c.clock)); }));
    add("last preset inquiry", "8x 09 04 3F FF",
        tell("x0 50 pp FF", "preset %1", [](C& c) { return c.lastRecalled; }));
    add("block inquiry", "8x 09 7E 7E 0p FF",
        [](C& c, N n) { c.tellBlock(static_cast<std::size_t>(n['p'])); });
}

void ViscaCamera::addRegisters(std::vector<KnownFrame>& frames)
{
    const auto add = [&frames](const QString& name, const QByteArray& form, auto act,
                               const char* range = "") {
        if (!form.isEmpty())
            frames.push_back({name, "8x " + form + " FF", act, range});
    };
    for (const Register& row : Registers::table()) {
        const QString name = row.name;
        const QByteArray steps = row.steps;
        const auto step = [&row](int places) {
            return [=, &row](C& c, N) {
                c.setRegister(row, row.neighbour(c.registers.value(row.name), places));
            };
        };
        add(
            name, row.sets, [&row](C& c, N n) { c.setRegister(row, n.value('p', row.afterPowerOn)); },
            row.range);
        if (steps.contains('s')) {
            add(name + " reset", QByteArray(steps).replace('s', '0'),
                [&row](C& c, N) { c.setRegister(row, row.afterPowerOn); });
            add(name + " up", QByteArray(steps).replace('s', '2'), step(1));
            add(name + " down", QByteArray(steps).replace('s', '3'), step(-1));
        } else {
            add(name + " toggle", steps, [&row](C& c, N) {
                c.setRegister(row, c.registers.isOn(row.name) ? Registers::off : Registers::on);
            });
        }
        add(name + " inquiry", row.inquiry, [&row](C& c, N) {
            const int value = c.registers.value(row.name);
            c.reply(row.answer().constData(),
                    QString("%1 %2").arg(row.name, QString::number(value, 16).toUpper()), {{'p', value}});
        });
    }
}

// Whether both are valid speed codes. If not, answers with a syntax error.
bool ViscaCamera::hasSpeeds(int panCode, int tiltCode)
{
    const bool strict = rules == BusyRules::Strict;
    const int slowest = strict ? Mechanics::slowestCode : 0;
    const int fastestTilt = strict ? Mechanics::fastestTiltCode : lenientFastestTiltCode;
    const bool has = panCode >= slowest && panCode <= Mechanics::fastestPanCode && tiltCode >= slowest &&
                     tiltCode <= fastestTilt;
    if (!has)
        syntaxError("no such speed");
    return has;
}

// Whether a command with this position is accepted. If not, answers with a syntax error.
bool ViscaCamera::accepts(double position, double low, double high)
{
    const bool accepted = rules == BusyRules::Lenient || (position > low - 0.01 && position < high + 0.01);
    if (!accepted)
        syntaxError("out of range");
    return accepted;
}

bool ViscaCamera::acceptsDirection(double pan, double tilt)
{
    return accepts(pan, -Mechanics::panLimit, Mechanics::panLimit) &&
           accepts(tilt, Mechanics::tiltLowLimit, Mechanics::tiltHighLimit);
}

// The position in the frame is relative to `from`. Tilt code 0 means that the speed of pan is for both axes,
// as several camera families have it.
void ViscaCamera::goTo(const FrameNumbers& numbers, const Position& from)
{
    const double pan = from.pan + Mechanics::degrees(numbers['Y']);
    const double tilt = from.tilt + Mechanics::degrees(numbers['Z']);
    const int panCode = numbers['V'];
    const int tiltCode = numbers['W'];
    if (hasSpeeds(panCode, tiltCode == 0 ? Mechanics::slowestCode : tiltCode) && acceptsDirection(pan, tilt))
        travel(pan, tilt, panCode, tiltCode);
}

void ViscaCamera::travel(double pan, double tilt, int panCode, int tiltCode)
{
    carryOut(Task::Travel, Mechanics::PanTilt, [=] { mechanics.goTo(pan, tilt, panCode, tiltCode, clock); });
}

void ViscaCamera::setLimit(Corner corner, double pan, double tilt)
{
    if (!acceptsDirection(pan, tilt))
        return;
    const double furthestPan = std::clamp(pan, -Mechanics::panLimit, Mechanics::panLimit);
    const double furthestTilt = std::clamp(tilt, Mechanics::tiltLowLimit, Mechanics::tiltHighLimit);
    if (mechanics.mayLimit(corner, furthestPan, furthestTilt))
        carryOut(Task::Other, {}, [=] { mechanics.setLimit(corner, furthestPan, furthestTilt); });
    else
        refuse();
}

void ViscaCamera::driveLens(Mechanics::Part part, int way, int code)
{
    if (rules == BusyRules::Strict && code > Mechanics::fastestLensCode)
        return syntaxError("no such speed");
    orderLens(part, [=] { mechanics.driveLens(part, way, code, clock); });
}

// Sends those of zoom and focus that are in `parts` to a position.
void ViscaCamera::lensTo(Mechanics::Parts parts, int zoom, int focus)
{
    const bool accepted =
        (!(parts & Mechanics::Zoom) || accepts(zoom, 0, Mechanics::zoomTele)) &&
        (!(parts & Mechanics::Focus) || accepts(focus, Mechanics::focusFar, Mechanics::focusNear));
    if (!accepted)
        return;
    orderLens(parts, [=] {
        mechanics.lensTo(parts & Mechanics::Zoom, zoom, clock);
        mechanics.lensTo(parts & Mechanics::Focus, focus, clock);
    });
}

// A focus command is refused while the focus is automatic.
void ViscaCamera::orderLens(Mechanics::Parts parts, const std::function<void()>& start)
{
    if (parts & Mechanics::Focus && registers.isOn(Registers::focusMode))
        return refuse();
    carryOut(parts & Mechanics::Zoom ? Task::Zoom : Task::Other, parts, start);
}

void ViscaCamera::changePreset(int preset, Task task, const std::function<void()>& change)
{
    if (preset < presetCount)
        carryOut(task, {}, change);
    else
        syntaxError("no such preset");
}

void ViscaCamera::recallPreset(int preset)
{
    if (preset >= presetCount)
        return syntaxError("no such preset");
    if (!storedPresets.contains(preset))
        return refuse();
    carryOut(Task::Recall, Mechanics::PanTilt | Mechanics::Zoom, [=] {
        const Position target = storedPresets[preset];
        const int code = presetSpeeds.value(preset, registers.value(Registers::recallSpeed));
        mechanics.goTo(target.pan, target.tilt, code, code, clock);
        mechanics.lensTo(Mechanics::Zoom, target.zoom, clock);
        lastRecalled = preset;
    });
}

void ViscaCamera::setRegister(const Register& row, int value)
{
    if (*row.range != '\0' && !row.hasValue(value))
        return syntaxError("out of range");
    carryOut(Task::Other, {}, [=, &row] { registers.set(row, value); });
}

// The layout is common in manuals: the lens, the picture, other settings, and the digital zoom. This camera
// has no values for the last block.
void ViscaCamera::tellBlock(std::size_t block)
{
    static constexpr std::array blocks{
        "x0 50 0z 0z 0z 0z 00 00 0t 0t 0t 0t 00 0m 0c FF",
        "x0 50 0r 0r 0b 0b ww 0p 0v 0k ss ii gg 00 ll FF",
        "x0 50 0o 0n 00 00 00 00 00 00 00 00 00 00 00 FF",
        "x0 50 00 00 00 00 00 00 00 00 00 00 00 00 00 FF",
    };
    if (block >= blocks.size())
        return syntaxError("no such block");

    const auto isOn = [this](const char* name, int bit) { return registers.isOn(name) ? bit : 0; };
    const auto moves = [this](Mechanics::Part part, int bit) {
        return mechanics.isMoving(part, clock) ? bit : 0;
    };
    FrameNumbers numbers{
        {'z', whole(position().zoom)},
        {'t', whole(mechanics.focus(clock))},
        {'m', isOn(Registers::focusMode, 0x01) | isOn(Registers::digitalZoom, 0x02)},
        {'c', moves(Mechanics::Zoom, 0x01) | moves(Mechanics::Focus, 0x02) |
                  (isUnderWay(Task::Recall) ? 0x04 : 0)},
        {'k', isOn(Registers::backlight, 0x04) | isOn(Registers::exposureCompensation, 0x02)},
        {'o', on ? 0x01 : 0},
        {'n', isOn(Registers::mirror, 0x04)},
    };
    for (const Register& row : Registers::table()) {
        if (row.blockLetter != 0)
            numbers.insert(row.blockLetter, registers.value(row.name));
    }
    reply(blocks[block], QString("block %1").arg(block), numbers);
}
