#pragma once

#include "Axis.h"

#include <QFlags>

#include <array>

/**
 * What moves in the camera: pan and tilt in degrees (plus is right and up), the zoom from 0 (wide) to 0x4000
 * (tele) and the focus from 0x1000 (far) to 0xF000 (near). Speeds come as VISCA's codes; one beyond a part's
 * slowest or fastest acts as that. Times are milliseconds on the camera's clock.
 */
class Mechanics
{
public:
    using Time = std::chrono::milliseconds;

    /** The moving parts, in the order of their axes. */
    enum Part
    {
        Pan = 1,
        Tilt = 2,
        PanTilt = Pan | Tilt,
        Zoom = 4,
        Focus = 8,
        Everything = PanTilt | Zoom | Focus
    };
    Q_DECLARE_FLAGS(Parts, Part)

    /** One step of the pan and tilt positions on the line, in degrees. */
    static constexpr double degreesPerStep = 0.075;

    /** A direction on the line, in steps as two's complement of 16 bits, in degrees. */
    static double degrees(int steps) { return (steps < 0x8000 ? steps : steps - 0x10000) * degreesPerStep; }

    /** Pan goes as far to either side. */
    static constexpr double panLimit = 0x08DB * degreesPerStep;
    static constexpr double tiltLowLimit = -0x0190 * degreesPerStep;
    static constexpr double tiltHighLimit = 0x04B0 * degreesPerStep;
    static constexpr double zoomTele = 0x4000;
    static constexpr double focusFar = 0x1000;
    static constexpr double focusNear = 0xF000;

    /** The speed codes with a speed of their own. */
    static constexpr int slowestCode = 0x01;
    static constexpr int fastestPanCode = 0x18;
    static constexpr int fastestTiltCode = 0x14;
    static constexpr int standardLensCode = 3;
    static constexpr int fastestLensCode = 7;

    /** Where the camera looks. */
    struct Position
    {
        double pan;
        double tilt;
        double zoom;
    };

    enum class Corner
    {
        DownLeft,
        UpRight
    };

    Position position(Time now) const
    {
        return {panAxis.position(now), tiltAxis.position(now), zoomAxis.position(now)};
    }

    double focus(Time now) const { return focusAxis.position(now); }

    /** Whether one of the parts still changes. */
    bool isMoving(Parts parts, Time now) const;

    /** Whether pan or tilt run without a target, or would if they were not at their limit. */
    bool isDriven() const { return panAxis.isDriven() || tiltAxis.isDriven(); }

    /** Runs until the limits or the next order. A way is -1, 0 (stops) or 1: right, up, tele, near. */
    void drive(int panWay, int panCode, int tiltWay, int tiltCode, Time now);
    void driveLens(Part part, int way, int code, Time now);

    /** Goes to a direction in degrees, or as far as the limits allow. Tilt code 0 means the speed of pan. */
    void goTo(double pan, double tilt, int panCode, int tiltCode, Time now);

    /** Sends zoom or focus, or neither, to a position or as far as it can go, at full speed. */
    void lensTo(Parts parts, double target, Time now);

    /** Stops what is on its way to a target; leaves alone what is driven. */
    void abandonTargets(Parts parts, Time now);

    void stopEverything(Time now);

    /** Whether there are parts and all of them were sent to a target. */
    bool areTargeted(Parts parts) const;

    /** When `parts`, all sent to a target, have reached it; time 0 for no part. */
    Time arrival(Parts parts) const;

    /** Whether a limit there leaves anything between it and the opposite corner. */
    bool mayLimit(Corner corner, double pan, double tilt) const;

    /** Lets pan and tilt go no further than that direction, in degrees, from the next order on. */
    void setLimit(Corner corner, double pan, double tilt);

    /** The answer to VISCA's pan-tilt status inquiry: initialised, moving or arrived, and at which limits. */
    int panTiltStatus(Time now) const;

private:
    std::array<Axis, 4> axes{Axis{-panLimit, panLimit, 0}, Axis{tiltLowLimit, tiltHighLimit, 0},
                             Axis{0, zoomTele, 0}, Axis{focusFar, focusNear, focusFar}};
    Axis& panAxis = axes[0];
    Axis& tiltAxis = axes[1];
    Axis& zoomAxis = axes[2];
    Axis& focusAxis = axes[3];
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Mechanics::Parts)
