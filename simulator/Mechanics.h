#pragma once

#include "Axis.h"

#include <QFlags>

#include <chrono>

/**
 * What moves in the camera: pan and tilt, the zoom and the focus.
 *
 * Speeds come as VISCA's codes; a code beyond a part's slowest or fastest acts as that. Times are
 * milliseconds on the camera's clock.
 */
class Mechanics
{
public:
    using Time = std::chrono::milliseconds;

    /** What a command moves as one. */
    enum Part
    {
        PanTilt = 1,
        Zoom = 2,
        Focus = 4
    };
    Q_DECLARE_FLAGS(Parts, Part)

    static constexpr Parts everyPart{PanTilt | Zoom | Focus};

    /** One step of the pan and tilt positions on the line, in degrees. */
    static constexpr double degreesPerStep = 0.075;
    /** The mechanical limits, in degrees: pan goes as far to either side, tilt from low to high. */
    static constexpr double panLimit = 0x08DB * degreesPerStep;
    static constexpr double tiltLowLimit = -0x0190 * degreesPerStep;
    static constexpr double tiltHighLimit = 0x04B0 * degreesPerStep;
    /** The zoom position at the tele end; the wide end is 0. */
    static constexpr double zoomTele = 0x4000;
    /** The focus positions of the farthest and of the nearest things. */
    static constexpr double focusFar = 0x1000;
    static constexpr double focusNear = 0xF000;

    /** The speed codes with a speed of their own. */
    static constexpr int slowestCode = 0x01;
    static constexpr int fastestPanCode = 0x18;
    static constexpr int fastestTiltCode = 0x14;
    static constexpr int standardLensCode = 3;
    static constexpr int fastestLensCode = 7;

    /** A direction on one axis: right, up, tele and near are forwards. */
    enum Way
    {
        Backwards = -1,
        Stopped = 0,
        Forwards = 1
    };

    /**
     * Where the camera looks: pan and tilt in degrees (plus is right and up), zoom from 0 (wide) to 0x4000
     * (tele).
     */
    struct Position
    {
        double pan;
        double tilt;
        double zoom;
    };

    /** The two corners that the pan-tilt limits are set by, as VISCA numbers them. */
    enum class Corner
    {
        DownLeft = 0,
        UpRight = 1
    };

    /** Looks straight ahead, zoomed out, focused on what is far. */
    Mechanics();

    Position position(Time now) const;
    double focus(Time now) const;

    /** Whether pan, tilt or zoom still change. */
    bool isMoving(Time now) const;

    /** Whether pan or tilt run without a target, or would if they were not at their limit. */
    bool isDriven() const;

    /** Runs until the limits or the next order. */
    void drive(Way panWay, int panCode, Way tiltWay, int tiltCode, Time now);
    void driveZoom(Way way, int code, Time now);
    void driveFocus(Way way, int code, Time now);

    /** Goes to a direction in degrees, or as far as the limits allow; without speed codes at full speed. */
    void goTo(double pan, double tilt, Time now);
    void goTo(double pan, double tilt, int panCode, int tiltCode, Time now);
    /** Goes to a position of the lens at full speed. */
    void zoomTo(double zoom, Time now);
    void focusTo(double focus, Time now);

    /** Stops what is on its way to a target among `parts`; leaves alone what is driven. */
    void abandonTargets(Parts parts, Time now);

    /** Stops everything. */
    void stop(Time now);

    /** When `parts`, all on their way to a target, have reached it; time 0 for no part. */
    Time arrival(Parts parts) const;

    /** Whether a limit there leaves anything between it and the opposite corner. */
    bool mayLimit(Corner corner, double pan, double tilt) const;

    /** Lets pan and tilt go no further than that direction, in degrees, from the next order on. */
    void setLimit(Corner corner, double pan, double tilt);

    /** Only the mechanics limit that corner. */
    void clearLimit(Corner corner);

    /** The answer to VISCA's pan-tilt status inquiry: initialised, moving or arrived, and at which limits. */
    int panTiltStatus(Time now) const;

private:
    Axis panAxis;
    Axis tiltAxis;
    Axis zoomAxis;
    Axis focusAxis;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Mechanics::Parts)
