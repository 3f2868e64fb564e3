// What the camera tells: the table of inquiries and their answers.

#include "ViscaCamera.h"

#include <array>
#include <cmath>

const std::vector<ViscaCamera::Inquiry>& ViscaCamera::inquiries()
{
    static const std::vector<Inquiry> table{
        {"version", "8x 09 00 02 FF", &ViscaCamera::answerVersion},
        {"power", "8x 09 04 00 FF", &ViscaCamera::answerPower},
        {"pan-tilt position", "8x 09 06 12 FF", &ViscaCamera::answerPanTiltPosition},
        {"pan-tilt status", "8x 09 06 10 FF", &ViscaCamera::answerPanTiltStatus},
        {"maximum speeds", "8x 09 06 11 FF", &ViscaCamera::answerPanTiltMaximumSpeeds},
        {"zoom position", "8x 09 04 47 FF", &ViscaCamera::answerZoomPosition},
        {"focus position", "8x 09 04 48 FF", &ViscaCamera::answerFocusPosition},
        {"block", "8x 09 7E 7E 0p FF", &ViscaCamera::answerBlock},
    };
    return table;
}

void ViscaCamera::answerVersion(const FrameNumbers&)
{
    // Vendor "VA", model 1, firmware 1.0, two sockets.
    reply("x0 50 56 41 00 01 01 00 02 FF", "vendor 5641, model 0001, firmware 0100, 2 sockets");
}

void ViscaCamera::answerPower(const FrameNumbers&)
{
    reply(on ? "x0 50 02 FF" : "x0 50 03 FF", on ? "on" : "standby");
}

void ViscaCamera::answerPanTiltPosition(const FrameNumbers&)
{
    const Position here = position();
    const auto steps = [](double degrees) {
        return static_cast<int>(std::lround(degrees / Mechanics::degreesPerStep));
    };
    reply("x0 50 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF",
          QString("pan %1, tilt %2 degrees").arg(here.pan, 0, 'f', 1).arg(here.tilt, 0, 'f', 1),
          {{'Y', steps(here.pan)}, {'Z', steps(here.tilt)}});
}

void ViscaCamera::answerPanTiltStatus(const FrameNumbers&)
{
    const int status = mechanics.panTiltStatus(clock);
    reply("x0 50 pp pp FF", QString("status %1").arg(status, 4, 16, QChar('0')), {{'p', status}});
}

void ViscaCamera::answerPanTiltMaximumSpeeds(const FrameNumbers&)
{
    reply(
        "x0 50 VV WW FF",
        QString("pan speed %1, tilt speed %2").arg(Mechanics::fastestPanCode).arg(Mechanics::fastestTiltCode),
        {{'V', Mechanics::fastestPanCode}, {'W', Mechanics::fastestTiltCode}});
}

void ViscaCamera::answerZoomPosition(const FrameNumbers&)
{
    const int steps = static_cast<int>(std::lround(position().zoom));
    reply("x0 50 0p 0p 0p 0p FF", QString("zoom %1 of %2").arg(steps).arg(std::lround(Mechanics::zoomTele)),
          {{'p', steps}});
}

void ViscaCamera::answerFocusPosition(const FrameNumbers&)
{
    const int steps = static_cast<int>(std::lround(mechanics.focus(clock)));
    reply("x0 50 0p 0p 0p 0p FF", QString("focus %1").arg(steps), {{'p', steps}});
}

void ViscaCamera::answerRegister(const Registers::Line& line)
{
    const int value = registers.value(line.name);
    reply(Registers::answer(line).constData(),
          QString("%1 %2").arg(line.name, QString::number(value, 16).toUpper()), {{'p', value}});
}

// The layout is that of several cameras' manuals: the lens, the picture, the rest, and the digital zoom, of
// which this camera has nothing to tell.
void ViscaCamera::answerBlock(const FrameNumbers& numbers)
{
    static constexpr std::array blocks{
        "x0 50 0z 0z 0z 0z 00 00 0t 0t 0t 0t 00 0m 00 FF",
        "x0 50 0r 0r 0b 0b 0w 0p 0v 0k ss ii gg 00 ll FF",
        "x0 50 0o 0n 00 00 00 00 00 00 00 00 00 00 00 FF",
        "x0 50 00 00 00 00 00 00 00 00 00 00 00 00 00 FF",
    };
    const auto block = static_cast<std::size_t>(numbers['p']);
    if (block >= blocks.size())
        return reply("x0 60 02 FF", "syntax error");

    const auto bit = [this](const char* name, int mask) {
        return registers.value(name) == registerOn ? mask : 0;
    };
    reply(blocks.at(block), QString("block %1").arg(block),
          {{'z', static_cast<int>(std::lround(position().zoom))},
           {'t', static_cast<int>(std::lround(mechanics.focus(clock)))},
           {'m', bit("focus mode", 0x01) | bit("digital zoom", 0x02)},
           {'r', registers.value("red gain")},
           {'b', registers.value("blue gain")},
           {'w', registers.value("white balance mode")},
           {'p', registers.value("aperture")},
           {'v', registers.value("exposure mode")},
           {'k', bit("backlight", 0x04) | bit("exposure compensation", 0x02)},
           {'s', registers.value("shutter")},
           {'i', registers.value("iris")},
           {'g', registers.value("gain")},
           {'l', registers.value("compensation level")},
           {'o', on ? 0x01 : 0},
           {'n', bit("mirror", 0x04)}});
}
