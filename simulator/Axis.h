#pragma once

#include <chrono>

/**
 * One moving part of the camera: pan, tilt, zoom or focus.
 *
 * Its position is a plain function of time (milliseconds on the camera's clock) in the axis' own unit:
 * degrees for pan and tilt, the line's steps for zoom and focus. Speeds are that unit per second.
 */
class Axis
{
public:
    using Time = std::chrono::milliseconds;

    /** Stands still at `start`, somewhere between its limits. */
    Axis(double lowLimit, double highLimit, double start);

    double position(Time now) const;

    /** Whether the position still changes. */
    bool isMoving(Time now) const { return velocity != 0 && position(now) != until; }

    /** Whether it runs without a target, be it against a limit. */
    bool isDriven() const { return velocity != 0 && !hasTarget; }

    /** Whether nothing has ended the last goTo(), under way or arrived. */
    bool isTargeted() const { return hasTarget; }

    /** Runs until a limit or the next order; a negative speed runs down, 0 stops. */
    void run(double speed, Time now);

    /** Goes to `target`, or as far as the limits allow, at a speed greater than 0. */
    void goTo(double target, double speed, Time now);

    /** Stops a goTo() under way; leaves an axis alone that runs without a target. */
    void abandonTarget(Time now);

    /** When the last goTo(), which nothing has ended, reaches its target. */
    Time arrival() const;

    double lowLimit() const { return low; }

    double highLimit() const { return high; }

    /** The limits of the orders that follow; an axis that stands beyond them stays there until then. */
    void setLimits(double lowLimit, double highLimit);

private:
    double low;
    double high;
    double from;
    Time since{0};
    double velocity = 0;
    double until;
    bool hasTarget = false;
};
