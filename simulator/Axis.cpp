#include "Axis.h"

#include <algorithm>

Axis::Axis(double lowLimit, double highLimit)
    : low(lowLimit)
    , high(highLimit)
{
}

double Axis::position(Time now) const
{
    const double seconds = std::chrono::duration<double>(now - since).count();
    const double unlimited = from + velocity * seconds;
    return velocity < 0 ? std::max(unlimited, until) : std::min(unlimited, until);
}

bool Axis::isMoving(Time now) const
{
    return velocity != 0 && position(now) != until;
}

void Axis::run(double speed, Time now)
{
    from = position(now);
    since = now;
    velocity = speed;
    until = speed < 0 ? low : high;
    hasTarget = false;
}

void Axis::goTo(double target, double speed, Time now)
{
    from = position(now);
    since = now;
    until = target;
    velocity = until < from ? -speed : speed;
    hasTarget = true;
}

void Axis::abandonTarget(Time now)
{
    if (hasTarget)
        run(0, now);
}

Axis::Time Axis::arrival() const
{
    if (!hasTarget)
        return Time::zero();
    const std::chrono::duration<double> journey((until - from) / velocity);
    return since + std::chrono::ceil<Time>(journey);
}
