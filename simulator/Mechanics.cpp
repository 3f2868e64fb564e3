#include "Mechanics.h"

#include <algorithm>

namespace {

using Time = Mechanics::Time;
using Parts = Mechanics::Parts;

// Seconds from one end of the range to the other, for zoom and focus at the standard speed.
constexpr double lensCrossing = 4.5;

// The bits of the pan-tilt status.
constexpr int initialised = 0x2000;
constexpr int moving = 0x0400;
constexpr int arrived = 0x0800;
constexpr int atTiltLowLimit = 0x08;
constexpr int atTiltHighLimit = 0x04;
constexpr int atPanHighLimit = 0x02;
constexpr int atPanLowLimit = 0x01;

// In degrees per second. The fastest codes have 80 (pan) and 50 (tilt).
double panSpeed(int code)
{
    return std::clamp(code, Mechanics::slowestCode, Mechanics::fastestPanCode) * 80.0 /
           Mechanics::fastestPanCode;
}

double tiltSpeed(int code)
{
    return std::clamp(code, Mechanics::slowestCode, Mechanics::fastestTiltCode) * 50.0 /
           Mechanics::fastestTiltCode;
}

// Code 0 is the slowest speed, not a stop.
double lensSpeed(const Axis& axis, int code)
{
    const double speedPerCode =
        (axis.highLimit() - axis.lowLimit()) / lensCrossing / (Mechanics::standardLensCode + 1);
    return (std::min(code, Mechanics::fastestLensCode) + 1) * speedPerCode;
}

// Calls `action` with the axis of each part.
template <typename Axes, typename Action> void forEach(Axes& axes, Parts parts, Action action)
{
    for (std::size_t index = 0; index < axes.size(); ++index) {
        if (parts & Mechanics::Part(1 << index))
            action(axes[index]);
    }
}

} // namespace

bool Mechanics::isMoving(Parts parts, Time now) const
{
    bool moves = false;
    forEach(axes, parts, [&](const Axis& axis) { moves = moves || axis.isMoving(now); });
    return moves;
}

void Mechanics::drive(int panWay, int panCode, int tiltWay, int tiltCode, Time now)
{
    panAxis.run(panWay * panSpeed(panCode), now);
    tiltAxis.run(tiltWay * tiltSpeed(tiltCode), now);
}

void Mechanics::driveLens(Part part, int way, int code, Time now)
{
    forEach(axes, part, [&](Axis& axis) { axis.run(way * lensSpeed(axis, code), now); });
}

void Mechanics::goTo(double pan, double tilt, int panCode, int tiltCode, Time now)
{
    panAxis.goTo(pan, panSpeed(panCode), now);
    const double asPan = std::min(panSpeed(panCode), tiltSpeed(fastestTiltCode));
    tiltAxis.goTo(tilt, tiltCode == 0 ? asPan : tiltSpeed(tiltCode), now);
}

void Mechanics::lensTo(Parts parts, double target, Time now)
{
    forEach(axes, parts, [&](Axis& axis) { axis.goTo(target, lensSpeed(axis, fastestLensCode), now); });
}

void Mechanics::abandonTargets(Parts parts, Time now)
{
    forEach(axes, parts, [now](Axis& axis) { axis.abandonTarget(now); });
}

void Mechanics::stopEverything(Time now)
{
    forEach(axes, Everything, [now](Axis& axis) { axis.run(0, now); });
}

bool Mechanics::areTargeted(Parts parts) const
{
    bool all = parts != Parts();
    forEach(axes, parts, [&all](const Axis& axis) { all = all && axis.isTargeted(); });
    return all;
}

Time Mechanics::arrival(Parts parts) const
{
    Time last{0};
    forEach(axes, parts, [&last](const Axis& axis) { last = std::max(last, axis.arrival()); });
    return last;
}

bool Mechanics::mayLimit(Corner corner, double pan, double tilt) const
{
    if (corner == Corner::UpRight)
        return pan >= panAxis.lowLimit() && tilt >= tiltAxis.lowLimit();
    return pan <= panAxis.highLimit() && tilt <= tiltAxis.highLimit();
}

void Mechanics::setLimit(Corner corner, double pan, double tilt)
{
    const bool isUpRight = corner == Corner::UpRight;
    panAxis.setLimits(isUpRight ? panAxis.lowLimit() : pan, isUpRight ? pan : panAxis.highLimit());
    tiltAxis.setLimits(isUpRight ? tiltAxis.lowLimit() : tilt, isUpRight ? tilt : tiltAxis.highLimit());
}

int Mechanics::panTiltStatus(Time now) const
{
    int status = initialised;
    if (isMoving(PanTilt, now))
        status |= moving;
    else if (areTargeted(PanTilt))
        status |= arrived;
    const auto at = [now](const Axis& axis, int low, int high) {
        return (axis.position(now) <= axis.lowLimit() ? low : 0) |
               (axis.position(now) >= axis.highLimit() ? high : 0);
    };
    return status | at(panAxis, atPanLowLimit, atPanHighLimit) |
           at(tiltAxis, atTiltLowLimit, atTiltHighLimit);
}
