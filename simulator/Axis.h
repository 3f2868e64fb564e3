#pragma once

#include <chrono>

/**
 * One moving part of the camera: pan, tilt or zoom.
 *
 * The position is a plain function of time, so it does not depend on how often anybody looks. Positions are
 * in the axis' own unit (degrees for pan and tilt, zoom steps for zoom), speeds in that unit per second, and
 * times are milliseconds on the camera's clock.
 */
class Axis
{
public:
    using Time = std::chrono::milliseconds;

    /** An axis that stands still at 0, somewhere between its mechanical limits. */
    Axis(double lowLimit, double highLimit);

    double position(Time now) const;

    /** Whether the position still changes. */
    bool isMoving(Time now) const;

    /** Runs at `speed` until a limit or the next order; a negative speed runs down, 0 stops. */
    void run(double speed, Time now);

    /** Goes to `target` (within the limits) at `speed` (greater than 0) and stays there. */
    void goTo(double target, double speed, Time now);

    /** Stops a goTo() under way; leaves an axis alone that runs without a target. */
    void abandonTarget(Time now);

    /** When the last goTo() reaches its target; time 0 for an axis that has no target. */
    Time arrival() const;

private:
    double low;
    double high;
    double from = 0;
    Time since{0};
    double velocity = 0;
    double until = 0;
    bool hasTarget = false;
};
