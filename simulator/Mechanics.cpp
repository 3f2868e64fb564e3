#include "Mechanics.h"

#include <algorithm>

namespace {

// Degrees per second.
constexpr double panSpeedPerCode = 3.3;
constexpr double tiltSpeedPerCode = 2.5;
constexpr double fastestPan = 80;
constexpr double fastestTilt = 50;

// At the standard speed the lens goes from end to end in 4.5 seconds.
constexpr double lensCrossing = 4.5;

// The bits of the pan-tilt status.
constexpr int initialised = 0x2000;
constexpr int moving = 0x0400;
constexpr int arrived = 0x0800;
constexpr int atTiltLowLimit = 0x20;
constexpr int atTiltHighLimit = 0x10;
constexpr int atPanHighLimit = 0x02;
constexpr int atPanLowLimit = 0x01;

double velocity(Mechanics::Way way, double speed)
{
    return static_cast<int>(way) * speed;
}

double panSpeed(int code)
{
    return std::min(std::max(code, Mechanics::slowestCode) * panSpeedPerCode, fastestPan);
}

double tiltSpeed(int code)
{
    return std::min(std::max(code, Mechanics::slowestCode) * tiltSpeedPerCode, fastestTilt);
}

// By the range that the lens part has. Code 0 is the slowest speed, not a stop.
double lensSpeed(double range, int code)
{
    const double speedPerCode = range / lensCrossing / (Mechanics::standardLensCode + 1);
    return (std::min(code, Mechanics::fastestLensCode) + 1) * speedPerCode;
}

double zoomSpeed(int code)
{
    return lensSpeed(Mechanics::zoomTele, code);
}

double focusSpeed(int code)
{
    return lensSpeed(Mechanics::focusNear - Mechanics::focusFar, code);
}

} // namespace

Mechanics::Mechanics()
    : panAxis(-panLimit, panLimit, 0)
    , tiltAxis(tiltLowLimit, tiltHighLimit, 0)
    , zoomAxis(0, zoomTele, 0)
    , focusAxis(focusFar, focusNear, focusFar)
{
}

Mechanics::Position Mechanics::position(Time now) const
{
    return {panAxis.position(now), tiltAxis.position(now), zoomAxis.position(now)};
}

double Mechanics::focus(Time now) const
{
    return focusAxis.position(now);
}

bool Mechanics::isMoving(Time now) const
{
    return panAxis.isMoving(now) || tiltAxis.isMoving(now) || zoomAxis.isMoving(now);
}

bool Mechanics::isDriven() const
{
    return panAxis.isDriven() || tiltAxis.isDriven();
}

void Mechanics::drive(Way panWay, int panCode, Way tiltWay, int tiltCode, Time now)
{
    panAxis.run(velocity(panWay, panSpeed(panCode)), now);
    tiltAxis.run(velocity(tiltWay, tiltSpeed(tiltCode)), now);
}

void Mechanics::driveZoom(Way way, int code, Time now)
{
    zoomAxis.run(velocity(way, zoomSpeed(code)), now);
}

void Mechanics::driveFocus(Way way, int code, Time now)
{
    focusAxis.run(velocity(way, focusSpeed(code)), now);
}

void Mechanics::goTo(double pan, double tilt, Time now)
{
    panAxis.goTo(pan, fastestPan, now);
    tiltAxis.goTo(tilt, fastestTilt, now);
}

void Mechanics::goTo(double pan, double tilt, int panCode, int tiltCode, Time now)
{
    panAxis.goTo(pan, panSpeed(panCode), now);
    tiltAxis.goTo(tilt, tiltSpeed(tiltCode), now);
}

void Mechanics::zoomTo(double zoom, Time now)
{
    zoomAxis.goTo(zoom, zoomSpeed(fastestLensCode), now);
}

void Mechanics::focusTo(double focus, Time now)
{
    focusAxis.goTo(focus, focusSpeed(fastestLensCode), now);
}

void Mechanics::abandonTargets(Parts parts, Time now)
{
    if (parts & PanTilt) {
        panAxis.abandonTarget(now);
        tiltAxis.abandonTarget(now);
    }
    if (parts & Zoom)
        zoomAxis.abandonTarget(now);
    if (parts & Focus)
        focusAxis.abandonTarget(now);
}

void Mechanics::stop(Time now)
{
    for (Axis* axis : {&panAxis, &tiltAxis, &zoomAxis, &focusAxis})
        axis->run(0, now);
}

Mechanics::Time Mechanics::arrival(Parts parts) const
{
    Time last{0};
    if (parts & PanTilt)
        last = std::max({last, panAxis.arrival(), tiltAxis.arrival()});
    if (parts & Zoom)
        last = std::max(last, zoomAxis.arrival());
    if (parts & Focus)
        last = std::max(last, focusAxis.arrival());
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
    if (corner == Corner::UpRight) {
        panAxis.setLimits(panAxis.lowLimit(), pan);
        tiltAxis.setLimits(tiltAxis.lowLimit(), tilt);
    } else {
        panAxis.setLimits(pan, panAxis.highLimit());
        tiltAxis.setLimits(tilt, tiltAxis.highLimit());
    }
}

void Mechanics::clearLimit(Corner corner)
{
    if (corner == Corner::UpRight)
        setLimit(corner, panLimit, tiltHighLimit);
    else
        setLimit(corner, -panLimit, tiltLowLimit);
}

int Mechanics::panTiltStatus(Time now) const
{
    int status = initialised;
    if (panAxis.isMoving(now) || tiltAxis.isMoving(now))
        status |= moving;
    else if (panAxis.hasArrived(now) && tiltAxis.hasArrived(now))
        status |= arrived;
    if (panAxis.position(now) <= panAxis.lowLimit())
        status |= atPanLowLimit;
    if (panAxis.position(now) >= panAxis.highLimit())
        status |= atPanHighLimit;
    if (tiltAxis.position(now) <= tiltAxis.lowLimit())
        status |= atTiltLowLimit;
    if (tiltAxis.position(now) >= tiltAxis.highLimit())
        status |= atTiltHighLimit;
    return status;
}
