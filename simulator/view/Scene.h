#pragma once

#include "Projection.h"

#include <QColor>
#include <QVector3D>

#include <vector>

class QPainter;
class QPainterPath;

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
    /** Needs a QGuiApplication, for its letters. */
    Scene();

    /** Draws the whole picture, whose size the projection was made for. */
    void draw(QPainter& painter, const Projection& projection) const;

private:
    /** A sheet in the room to draw on, in metres from `origin`. */
    struct Sheet
    {
        QVector3D origin;
        QVector3D right;
        QVector3D up;
    };

    struct Person
    {
        QColor skin;
        QColor hair;
        QColor clothes;
        bool longHair;
        bool glasses;
    };

    /** A coloured area. */
    struct Face
    {
        std::vector<std::vector<QVector3D>> outlines;
        QColor colour;
    };

    void add(const Sheet& sheet, const QPainterPath& drawing, const QColor& colour);

    void addRoom();
    void addStageWall();
    void addClock();
    void addStage();
    void addWindows();
    void addRightWall();
    void addBackWall();
    void addAudience();
    void addPanel();
    void addSpeaker();
    void addDoor(const Sheet& wall, double x);
    void addFacing(const Sheet& sheet, double headHeight, const Person& person);
    void addFromBehind(const Sheet& sheet, const Person& person);

    std::vector<Face> faces;
};
