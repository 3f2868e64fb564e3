// What the camera tells: the table of inquiries and their answers.

#include "ViscaCamera.h"

#include <cmath>

const std::vector<ViscaCamera::Inquiry>& ViscaCamera::inquiries()
{
    static const std::vector<Inquiry> table{
        {"version", "8x 09 00 02 FF", &ViscaCamera::answerVersion},
        {"pan-tilt position", "8x 09 06 12 FF", &ViscaCamera::answerPanTiltPosition},
        {"zoom position", "8x 09 04 47 FF", &ViscaCamera::answerZoomPosition},
    };
    return table;
}

void ViscaCamera::answerVersion(const FrameNumbers&)
{
    // Vendor "VA", model 1, firmware 1.0, two sockets.
    reply("x0 50 56 41 00 01 01 00 02 FF", "vendor 5641, model 0001, firmware 0100, 2 sockets");
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

void ViscaCamera::answerZoomPosition(const FrameNumbers&)
{
    const int steps = static_cast<int>(std::lround(position().zoom));
    reply("x0 50 0p 0p 0p 0p FF", QString("zoom %1 of %2").arg(steps).arg(std::lround(Mechanics::zoomTele)),
          {{'p', steps}});
}
