#pragma once

#include "Axis.h"

#include <QFlags>

#include <array>

/**
 * The moving parts of the camera: pan and tilt in degrees (positive is right and up), the zoom from 0 (wide)
 * to 0x4000 (tele) and the focus from 0x1000 (far) to 0xF000 (near). Speeds are VISCA's speed codes; a code
 * out of a part's range acts as its slowest or fastest. Times are in milliseconds on the camera's clock.
 */
class Mechanics
{
public:
    using Time = std::chrono::milliseconds;

    /** The moving parts, as flags in the order of `axes`. */
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

    /** One step of VISCA's pan and tilt positions, in degrees. */
    static constexpr double degreesPerStep = 0.075;

    /** Converts a VISCA pan or tilt position, 16 bits in two's complement, to degrees. */
    static double degrees(int steps) { return (steps < 0x8000 ? steps : steps - 0x10000) * degreesPerStep; }

    /** Pan has the same limit on both sides. */
    static constexpr double panLimit = 0x08DB * degreesPerStep;
    static constexpr double tiltLowLimit = -0x0190 * degreesPerStep;
    static constexpr double tiltHighLimit = 0x04B0 * degreesPerStep;
    static constexpr double zoomTele = 0x4000;
    static constexpr double focusFar = 0x1000;
    static constexpr double focusNear = 0xF000;

    /** The slowest, standard and fastest speed codes. */
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

    /** Whether the position of at least one of these parts still changes. */
    bool isMoving(Parts parts, Time now) const;

    /** Whether pan or tilt was told to run without a target. Stays true when it has stopped at a limit. */
    bool isDriven() const { return panAxis.isDriven() || tiltAxis.isDriven(); }

    /** Run until they reach a limit or get the next order. A way is -1, 0 (stop) or 1 (right, up, tele,
     * near). */
    void drive(int panWay, int panCode, int tiltWay, int tiltCode, Time now);
    void driveLens(Part part, int way, int code, Time now);

    /** Goes to a position in degrees, or as far as the limits allow. Tilt code 0 means the speed of pan. */
    void goTo(double pan, double tilt, int panCode, int tiltCode, Time now);

    /** Sends those of zoom and focus that are in `parts` to a position, or as far as the limits allow, at
     * full speed. */
    void lensTo(Parts parts, double target, Time now);

    /** Stops parts on their way to a target. Does not stop parts that run without one. */
    void abandonTargets(Parts parts, Time now);

    void stopEverything(Time now);

    /** Whether `parts` is not empty and all of them were sent to a target. */
    bool areTargeted(Parts parts) const;

    /** When all these parts reach their target; 0 for no part. Call it only for parts sent to a target. */
    Time arrival(Parts parts) const;

    /** Whether this limit would not be beyond the limit of the opposite corner. */
    bool mayLimit(Corner corner, double pan, double tilt) const;

    /** Limits pan and tilt to this position, in degrees, from the next order on. */
    void setLimit(Corner corner, double pan, double tilt);

    /** The status bits for VISCA's pan-tilt status inquiry: initialised, moving or arrived, and at which
     * limits. */
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
