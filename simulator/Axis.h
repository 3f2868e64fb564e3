#pragma once

#include <chrono>

/**
 * One moving part of the camera: pan, tilt, zoom or focus.
 *
 * Its position is a function of time, which is in milliseconds on the camera's clock. Pan and tilt are in
 * degrees, zoom and focus in VISCA's position steps. Speeds are in degrees or steps per second.
 */
class Axis
{
public:
    using Time = std::chrono::milliseconds;

    /** Stands still at `start`, which has to be within the limits. */
    Axis(double lowLimit, double highLimit, double start);

    double position(Time now) const;

    /** Whether the position still changes. */
    bool isMoving(Time now) const { return velocity != 0 && position(now) != until; }

    /** Whether it was told to run without a target. Stays true when it has stopped at a limit. */
    bool isDriven() const { return velocity != 0 && !hasTarget; }

    /** Whether the last order was goTo() and was not abandoned. Stays true when it has arrived. */
    bool isTargeted() const { return hasTarget; }

    /** Runs until it reaches a limit or gets the next order. A negative speed runs down, 0 stops. */
    void run(double speed, Time now);

    /** Goes to `target`, or as far as the limits allow. The speed has to be greater than 0. */
    void goTo(double target, double speed, Time now);

    /** Stops a goTo() that has not arrived yet. Does not stop an axis that runs without a target. */
    void abandonTarget(Time now);

    /** When goTo() reaches its target. Call it only while isTargeted(). */
    Time arrival() const;

    double lowLimit() const { return low; }

    double highLimit() const { return high; }

    /** Sets the limits for later orders. An axis that is outside them stays there until the next order. */
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
