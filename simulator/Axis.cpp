#include "Axis.h"

#include <algorithm>

Axis::Axis(double lowLimit, double highLimit, double start)
    : low(lowLimit)
    , high(highLimit)
    , from(start)
    , until(start)
{
}

double Axis::position(Time now) const
{
    const double seconds = std::chrono::duration<double>(now - since).count();
    const double unlimited = from + velocity * seconds;
    return velocity < 0 ? std::max(unlimited, until) : std::min(unlimited, until);
}

void Axis::run(double speed, Time now)
{
    from = position(now);
    since = now;
    velocity = speed;
    until = speed < 0 ? std::min(low, from) : std::max(high, from);
    hasTarget = false;
}

void Axis::goTo(double target, double speed, Time now)
{
    from = position(now);
    since = now;
    until = std::clamp(target, low, high);
    velocity = until < from ? -speed : speed;
    hasTarget = true;
}

void Axis::abandonTarget(Time now)
{
    if (hasTarget && isMoving(now))
        run(0, now);
}

Axis::Time Axis::arrival() const
{
    const std::chrono::duration<double> seconds((until - from) / velocity);
    return since + std::chrono::ceil<Time>(seconds);
}

void Axis::setLimits(double lowLimit, double highLimit)
{
    low = lowLimit;
    high = highLimit;
}
