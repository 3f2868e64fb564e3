#pragma once

#include "ViscaCamera.h"

#include <QPointF>
#include <QPolygonF>
#include <QSizeF>
#include <QVector3D>

#include <array>
#include <optional>
#include <vector>

/**
 * The lens: where things in the world appear in the picture, in pixels from its upper left. Straight edges
 * stay straight. The camera stands at the origin, x to the right, y up and z ahead, in metres.
 */
class Projection
{
public:
    /** The horizontal field of view in degrees at `zoom` (0 to 0x4000): 60 degrees wide, 3.3 degrees tele. */
    static double fieldOfView(double zoom);

    /** How many times larger things appear than at the wide end, 1 to 20: exponential, so a zoom looks even.
     */
    static double magnification(double zoom);

    /** Which sides of the picture are exchanged: left and right, up and down. */
    struct Turn
    {
        bool mirrored;
        bool flipped;
    };

    /** A picture of `size` whose whole width is the field of view. */
    Projection(const ViscaCamera::Position& position, const QSizeF& size, const Turn& turn = {});

    /** Where it appears, perhaps outside of the picture; nothing if it is beside or behind the camera. */
    std::optional<QPointF> pointAt(double pan, double tilt) const;

    /** The outline of a flat face with these corners, cut off at the edges of the picture; perhaps empty. */
    QPolygonF outlineOf(const std::vector<QVector3D>& corners) const;

private:
    QPointF project(const QVector3D& point) const;

    QVector3D right;
    QVector3D up;
    QVector3D ahead;
    float focal;
    QPointF middle;
    // Unit vectors at right angles to the planes through the lens and the edges of the picture, inwards.
    std::array<QVector3D, 4> edges;
};
