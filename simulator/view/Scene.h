#pragma once

#include "Projection.h"

#include <QColor>
#include <QVector3D>

#include <vector>

class QPainter;

/**
 * The scene that the camera sees: a lecture hall with a stage ahead and an audience all around. The camera is
 * in the middle, two metres above the floor.
 *
 * The scene consists of flat faces, drawn as vectors, so that it stays sharp at the tele end. The camera
 * turns but never moves, so the order in which faces hide each other never changes. They are stored in this
 * order, from back to front.
 */
class Scene
{
public:
    /** A coloured face: the outlines of its parts, in metres from the camera. */
    struct Face
    {
        std::vector<std::vector<QVector3D>> outlines;
        QColor colour;
    };

    /** Needs a QGuiApplication, because the scene has text. */
    Scene();

    /** Draws the whole picture in the size of the projection. */
    void draw(QPainter& painter, const Projection& projection) const;

private:
    std::vector<Face> faces;
};
