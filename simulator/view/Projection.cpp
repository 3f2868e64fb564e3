#include "Projection.h"

#include <QtMath>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double widestField = 60;
constexpr double highestMagnification = 20;

// A direction whose angle to the optical axis is close to 90 degrees or larger is not in front of the lens.
constexpr float smallestCosine = 0.05F;

// Faces are clipped this many pixels outside the picture, so that the cut edges are not visible.
constexpr double bleed = 2;

// The unit vector of this direction, given in degrees.
QVector3D direction(double pan, double tilt)
{
    const double p = qDegreesToRadians(pan);
    const double t = qDegreesToRadians(tilt);
    return QVector3D(static_cast<float>(std::sin(p) * std::cos(t)), static_cast<float>(std::sin(t)),
                     static_cast<float>(std::cos(p) * std::cos(t)));
}

// Clips an outline at a plane through the lens. The normal `plane` points to the side that is kept.
void cutOff(std::vector<QVector3D>& outline, const QVector3D& plane)
{
    const auto inside = [&plane](const QVector3D& point) { return QVector3D::dotProduct(plane, point) >= 0; };
    if (std::all_of(outline.begin(), outline.end(), inside))
        return;

    std::vector<QVector3D> rest;
    rest.reserve(outline.size() + 1);
    for (std::size_t index = 0; index < outline.size(); ++index) {
        const QVector3D& from = outline[index];
        const QVector3D& to = outline[(index + 1) % outline.size()];
        const float fromDepth = QVector3D::dotProduct(plane, from);
        const float toDepth = QVector3D::dotProduct(plane, to);
        if (fromDepth >= 0)
            rest.push_back(from);
        if ((fromDepth >= 0) != (toDepth >= 0))
            rest.push_back(from + fromDepth / (fromDepth - toDepth) * (to - from));
    }
    outline = std::move(rest);
}

} // namespace

double Projection::magnification(double zoom)
{
    return std::pow(highestMagnification, zoom / Mechanics::zoomTele);
}

double Projection::fieldOfView(double zoom)
{
    return qRadiansToDegrees(2 *
                             std::atan(std::tan(qDegreesToRadians(widestField / 2)) / magnification(zoom)));
}

Projection::Projection(const ViscaCamera::Position& position, const QSizeF& size, const Turn& turn)
    : right(direction(position.pan + 90, 0) * (turn.mirrored ? -1.0F : 1.0F))
    , up(direction(position.pan, position.tilt + 90) * (turn.flipped ? -1.0F : 1.0F))
    , ahead(direction(position.pan, position.tilt))
    , focal(
          static_cast<float>(size.width() / 2 / std::tan(qDegreesToRadians(fieldOfView(position.zoom) / 2))))
    , middle(size.width() / 2, size.height() / 2)
{
    const float x = static_cast<float>(middle.x() + bleed);
    const float y = static_cast<float>(middle.y() + bleed);
    edges = {focal * right + x * ahead, -focal * right + x * ahead, focal * up + y * ahead,
             -focal * up + y * ahead};
    for (QVector3D& edge : edges)
        edge.normalize();
}

std::optional<QPointF> Projection::pointAt(double pan, double tilt) const
{
    const QVector3D point = direction(pan, tilt);
    if (QVector3D::dotProduct(point, ahead) < smallestCosine)
        return std::nullopt;
    return project(point);
}

QPolygonF Projection::outlineOf(const std::vector<QVector3D>& corners) const
{
    std::vector<QVector3D> outline = corners;
    for (const QVector3D& edge : edges)
        cutOff(outline, edge);

    QPolygonF polygon(static_cast<int>(outline.size()));
    std::transform(outline.begin(), outline.end(), polygon.begin(),
                   [this](const QVector3D& point) { return project(point); });
    return polygon;
}

QPointF Projection::project(const QVector3D& point) const
{
    const float scale = focal / QVector3D::dotProduct(point, ahead);
    return middle + QPointF(static_cast<double>(QVector3D::dotProduct(point, right) * scale),
                            static_cast<double>(-QVector3D::dotProduct(point, up) * scale));
}
