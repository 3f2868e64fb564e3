#pragma once

#include "Projection.h"

#include <QColor>
#include <QVector3D>

#include <vector>

class QPainter;

/**
 * What the camera looks at: a lecture hall with a stage ahead, its audience all around, and the camera in the
 * middle of it, two metres above the floor.
 *
 * Everything is flat faces in a room, drawn as vectors, so that it stays sharp at the tele end. The camera
 * turns but never walks: what hides what never changes, and the faces are kept in that order.
 */
class Scene
{
public:
    /** A coloured area, with the outlines of its parts in metres from the camera. */
    struct Face
    {
        std::vector<std::vector<QVector3D>> outlines;
        QColor colour;
    };

    /** Needs a QGuiApplication, for its letters. */
    Scene();

    /** Draws the whole picture, whose size the projection was made for. */
    void draw(QPainter& painter, const Projection& projection) const;

private:
    std::vector<Face> faces;
};
