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
 * The lens: it projects points of the scene to pixels, counted from the upper left of the picture. Straight
 * edges stay straight. The camera is at the origin; x is right, y up and z ahead, in metres.
 */
class Projection
{
public:
    /** The horizontal field of view in degrees at `zoom` (0 to 0x4000): 60 degrees wide, 3.3 degrees tele. */
    static double fieldOfView(double zoom);

    /** The magnification relative to the wide end, 1 to 20. It is exponential, so that zooming looks even. */
    static double magnification(double zoom);

    /** Which sides of the picture are exchanged: left and right, top and bottom. */
    struct Turn
    {
        bool mirrored;
        bool flipped;
    };

    /** Projects to a picture of this size in pixels. The field of view is its width. */
    Projection(const ViscaCamera::Position& position, const QSizeF& size, const Turn& turn = {});

    /** Where this direction, in degrees, appears; perhaps outside the picture. Nothing if it is beside or
     * behind the camera. */
    std::optional<QPointF> pointAt(double pan, double tilt) const;

    /** The outline of a flat face with these corners, clipped at the edges of the picture; may be empty. */
    QPolygonF outlineOf(const std::vector<QVector3D>& corners) const;

private:
    QPointF project(const QVector3D& point) const;

    QVector3D right;
    QVector3D up;
    QVector3D ahead;
    float focal;
    QPointF middle;
    // The normals of the planes through the lens and each edge of the picture: unit vectors that point
    // inwards.
    std::array<QVector3D, 4> edges;
};
