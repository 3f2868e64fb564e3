#include "Scene.h"

#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>
#include <QVector2D>

#include <array>
#include <initializer_list>
#include <random>

namespace {

using Faces = std::vector<Scene::Face>;

// The room; distances are in metres from the lens.
constexpr double leftWall = -9;
constexpr double rightWall = 9;
constexpr double stageWall = 12;
constexpr double rearWall = -8;
constexpr double floorLevel = -2;
constexpr double ceilingLevel = 4;
constexpr double stageLevel = -1.4;
constexpr double stageEdge = 9;
constexpr double roomWidth = rightWall - leftWall;
constexpr double roomLength = stageWall - rearWall;
constexpr double roomHeight = ceilingLevel - floorLevel;
// The height of the wainscots along the walls.
constexpr double wainscot = 1.1;

const QColor amber(0xff, 0xb0, 0x2e);

constexpr std::array<QRgb, 5> skins{0xffe3b590, 0xffd19a72, 0xffb07a52, 0xff8a5a3b, 0xfff0cba8};
constexpr std::array<QRgb, 6> hairs{0xff2a211c, 0xff4a3325, 0xff6e4b2c, 0xff8d8a86, 0xffa97f45, 0xff1d1d20};
constexpr std::array<QRgb, 8> clothes{0xff41566b, 0xff5b4a5f, 0xff3f5a53, 0xff6a4740,
                                      0xff4b4d52, 0xff76643f, 0xff39465a, 0xff585f4a};

struct Person
{
    QColor skin;
    QColor hair;
    QColor clothes;
    bool longHair;
    bool glasses;
};

struct Shape
{
    QPainterPath path;
    QColor colour;
};

// A rectangle given by its lower left corner: on a sheet, y points up.
Shape box(double x, double y, double width, double height, const QColor& colour)
{
    QPainterPath path;
    path.addRect(x, y, width, height);
    return {path, colour};
}

Shape roundBox(double x, double y, double width, double height, double radius, const QColor& colour)
{
    QPainterPath path;
    path.addRoundedRect(x, y, width, height, radius, radius);
    return {path, colour};
}

Shape disc(double x, double y, double horizontalRadius, double verticalRadius, const QColor& colour)
{
    QPainterPath path;
    path.addEllipse(QPointF(x, y), horizontalRadius, verticalRadius);
    return {path, colour};
}

Shape polygon(const QVector<QPointF>& corners, const QColor& colour)
{
    QPainterPath path;
    path.addPolygon(QPolygonF(corners));
    path.closeSubpath();
    return {path, colour};
}

// A hand of a dial, from one distance from its centre to another. 0 degrees is up; angles are clockwise.
Shape hand(double x, double y, double degrees, double from, double to, double width, const QColor& colour)
{
    const QTransform place = QTransform::fromTranslate(x, y).rotate(-degrees);
    return {place.map(box(-width / 2, from, width, to - from, colour).path), colour};
}

// The upper body, from the hips to the shoulders.
Shape torso(double bottom, double top, const QColor& colour)
{
    QPainterPath path(QPointF(-0.27, bottom));
    path.cubicTo(-0.3, bottom + 0.4, -0.28, top - 0.04, -0.17, top);
    path.lineTo(0.17, top);
    path.cubicTo(0.28, top - 0.04, 0.3, bottom + 0.4, 0.27, bottom);
    path.closeSubpath();
    return {path, colour};
}

// Text centred at x, with its base line at y. `height` is that of the capitals.
Shape lettering(const QString& text, double x, double y, double height, const QColor& colour,
                QFont::Weight weight = QFont::Normal)
{
    constexpr double size = 100;
    QFont font;
    font.setPixelSize(static_cast<int>(size));
    font.setWeight(weight);
    QPainterPath letters;
    letters.addText(0, 0, font, text);
    const double scale = height / (0.73 * size);
    const QTransform place = QTransform::fromTranslate(x, y).scale(scale, -scale);
    return {(QTransform::fromTranslate(-letters.boundingRect().center().x(), 0) * place).map(letters),
            colour};
}

QVector3D vector(double x, double y, double z)
{
    return QVector3D(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
}

// A flat sheet in the room to draw on. Coordinates on it are in metres from its origin. By default it is
// upright and faces a camera that looks straight ahead.
struct Sheet
{
    Faces& faces;
    QVector3D origin;
    QVector3D right{1, 0, 0};
    QVector3D up{0, 1, 0};

    // Draws the shapes in this order, each over the ones before.
    void draw(std::initializer_list<Shape> shapes) const
    {
        for (const Shape& shape : shapes)
            faces.push_back({outlinesOf(shape.path), shape.colour});
    }

    std::vector<std::vector<QVector3D>> outlinesOf(const QPainterPath& path) const
    {
        // Curves become polygons, so fine that the corners are not visible even at the tele end.
        constexpr double fineness = 600;
        std::vector<std::vector<QVector3D>> outlines;
        const auto polygons = path.toSubpathPolygons(QTransform::fromScale(fineness, fineness));
        for (const QPolygonF& polygon : polygons) {
            std::vector<QVector3D>& corners = outlines.emplace_back();
            // The last corner of a closed outline is its first.
            for (int index = 1; index < polygon.size(); ++index) {
                const QVector2D corner(polygon.at(index) / fineness);
                corners.push_back(origin + right * corner.x() + up * corner.y());
            }
        }
        return outlines;
    }
};

void addFloorAndCeiling(Faces& faces)
{
    const Sheet floor{faces, vector(0, floorLevel, 0), {1, 0, 0}, {0, 0, 1}};
    floor.draw({box(leftWall, rearWall, roomWidth, roomLength, 0x2e2a28),
                box(-0.7, rearWall, 1.4, roomLength, 0x40302f)});

    const Sheet ceiling{faces, vector(0, ceilingLevel, 0), {1, 0, 0}, {0, 0, 1}};
    ceiling.draw({box(leftWall, rearWall, roomWidth, roomLength, 0x2b2c2f)});
    for (const double z : {-6.0, -3.0, 0.0, 3.0, 6.0, 9.0})
        ceiling.draw({box(leftWall, z + 1.3, roomWidth, 0.35, 0x242528)});
    for (const double z : {-6.0, -3.0, 3.0, 6.0}) {
        for (const double x : {-6.0, -2.0, 2.0, 6.0})
            ceiling.draw({disc(x, z, 0.55, 0.55, 0x3a3732), disc(x, z, 0.3, 0.3, 0xf2dfb8)});
    }
    // A ring lamp right above the camera.
    ceiling.draw({disc(0, 0, 1.6, 1.6, 0x3a3732), disc(0, 0, 1.25, 1.25, 0xf2dfb8),
                  disc(0, 0, 1.05, 1.05, 0x302f2e), disc(0, 0, 0.12, 0.12, 0x55524d)});
}

void addStageWall(Faces& faces)
{
    const Sheet wall{faces, vector(0, 0, stageWall)};
    wall.draw({box(leftWall, floorLevel, roomWidth, roomHeight, 0x3b3838), disc(0.3, 0, 5.2, 2.7, 0x454140),
               disc(0.3, 0, 3.3, 2.0, 0x504944)});

    // The screen and its slide.
    wall.draw({box(-5.55, -0.05, 4.5, 2.8, 0x1f2022), box(-5.45, 0.05, 4.3, 2.6, 0xe8e4dc),
               box(-5.45, 2.1, 4.3, 0.55, 0x33363b),
               lettering("Focus", -3.3, 2.26, 0.24, 0xf4f1ea, QFont::Bold)});
    double x = -5.05;
    for (const double bar : {0.45, 0.7, 0.6, 0.95, 1.2}) {
        wall.draw({box(x, 0.35, 0.26, bar, 0x6d7883)});
        x += 0.36;
    }
    wall.draw({box(x, 0.35, 0.26, 1.45, amber), box(-5.15, 0.33, 2.25, 0.02, 0x33363b),
               lettering("near", -2.0, 1.5, 0.12, 0x33363b), lettering("far", -2.0, 1.1, 0.12, 0x33363b),
               lettering("calm", -2.0, 0.7, 0.12, 0x33363b),
               lettering("a smaller line is only legible at the tele end", -1.98, 0.38, 0.018, 0x55585d)});

    // Curtains on either side, in folds.
    for (const double side : {-1.0, 1.0}) {
        wall.draw({box(side * 7.55 - 1.45, stageLevel, 2.9, ceilingLevel - stageLevel, 0x4b2527)});
        for (const double fold : {6.45, 7.35, 8.25})
            wall.draw({box(side * fold - 0.25, stageLevel, 0.5, ceilingLevel - stageLevel, 0x5a2d2e)});
    }
    wall.draw(
        {box(leftWall, 3.45, roomWidth, 0.55, 0x46242a), box(leftWall, 3.4, roomWidth, 0.05, 0x8a6a35)});
}

void addClock(Faces& faces)
{
    const Sheet wall{faces, vector(1.7, 2.2, stageWall)};
    wall.draw({disc(0, 0, 0.48, 0.48, 0x1f2022), disc(0, 0, 0.43, 0.43, 0xece8df)});
    for (int minute = 0; minute < 60; ++minute) {
        const bool hour = minute % 5 == 0;
        wall.draw({hand(0, 0, 6 * minute, hour ? 0.345 : 0.385, 0.405, hour ? 0.02 : 0.007, 0x2b2d30)});
    }
    wall.draw({hand(0, 0, 305, -0.06, 0.23, 0.03, 0x2b2d30), hand(0, 0, 60, -0.08, 0.35, 0.02, 0x2b2d30),
               hand(0, 0, 192, -0.1, 0.37, 0.008, amber.darker(115)), disc(0, 0, 0.025, 0.025, 0x2b2d30),
               lettering("Vantrel", 0, -0.2, 0.035, 0x85827c, QFont::Bold)});
}

void addStage(Faces& faces)
{
    const Sheet top{faces, vector(0, stageLevel, 0), {1, 0, 0}, {0, 0, 1}};
    top.draw({box(-8.2, stageEdge, 16.4, stageWall - stageEdge, 0x5d4837)});
    for (int board = 1; board < 8; ++board)
        top.draw({box(-8.2, stageEdge + 0.375 * board, 16.4, 0.015, 0x503d2f)});
    const Sheet front{faces, vector(0, 0, stageEdge)};
    front.draw({box(-8.2, floorLevel, 16.4, stageLevel - floorLevel, 0x392c24),
                box(-8.2, stageLevel - 0.05, 16.4, 0.05, 0x80623f), box(-0.9, floorLevel, 1.8, 0.4, 0x2b221d),
                box(-0.9, floorLevel + 0.18, 1.8, 0.03, 0x57442f),
                box(-0.9, floorLevel + 0.38, 1.8, 0.03, 0x57442f)});
}

void addWindows(Faces& faces)
{
    const Sheet wall{faces, vector(leftWall, 0, 0), {0, 0, 1}};
    wall.draw({box(rearWall, floorLevel, roomLength, roomHeight, 0x37383b),
               box(rearWall, floorLevel, roomLength, wainscot, 0x2f2c2a)});
    for (const double z : {-6.2, -3.1, 0.0, 3.1, 6.2}) {
        wall.draw({box(z - 0.95, -0.85, 1.9, 3.9, 0x232427)});
        // The evening sky outside.
        double y = -0.75;
        for (const QRgb sky : {0x8a6248U, 0x6f5a5aU, 0x545061U, 0x434a61U, 0x363f57U, 0x2b344bU}) {
            wall.draw({box(z - 0.85, y, 1.7, 0.64, sky)});
            y += 0.617;
        }
        // Houses.
        const double shift = z / 20;
        wall.draw({box(z - 0.85, -0.75, 0.35, 0.85 + shift, 0x25272d),
                   box(z - 0.5, -0.75, 0.4, 1.2, 0x25272d), box(z - 0.1, -0.75, 0.4, 0.7, 0x25272d),
                   box(z + 0.3, -0.75, 0.4, 1.05 - shift, 0x25272d),
                   box(z + 0.7, -0.75, 0.15, 0.75, 0x25272d)});
        for (int light = 0; light < 4; ++light)
            wall.draw({box(z - 0.42 + 0.3 * light, -0.45 + 0.11 * ((light * 3) % 4), 0.06, 0.08, 0xd9a552)});
        wall.draw({box(z - 0.03, -0.75, 0.06, 3.7, 0x232427), box(z - 0.85, 1.3, 1.7, 0.06, 0x232427)});
    }
    wall.draw({disc(3.45, 2.4, 0.16, 0.16, 0xe9e3d0)});
}

void addDoor(const Sheet& wall, double x)
{
    wall.draw({box(x - 1.0, floorLevel, 2.0, 2.75, 0x26241f)});
    for (const double left : {x - 0.92, x + 0.02})
        wall.draw({box(left, floorLevel, 0.9, 2.67, 0x5a4330),
                   box(left + 0.14, floorLevel + 0.3, 0.62, 0.95, 0x4d3928),
                   box(left + 0.14, floorLevel + 1.45, 0.62, 0.95, 0x4d3928)});
    wall.draw({disc(x - 0.1, floorLevel + 1.1, 0.04, 0.04, 0xc9a05a),
               disc(x + 0.1, floorLevel + 1.1, 0.04, 0.04, 0xc9a05a),
               roundBox(x - 0.4, 0.95, 0.8, 0.3, 0.04, 0x2f6b4f),
               lettering("EXIT", x, 1.03, 0.14, 0xe6f2ea, QFont::Bold)});
}

void addPicture(const Sheet& wall, double x, const QColor& field, double sun)
{
    wall.draw({box(x - 0.7, 0.1, 1.4, 1.0, 0x6b5836), box(x - 0.63, 0.17, 1.26, 0.86, 0xd6cfc0),
               box(x - 0.5, 0.28, 1.0, 0.64, field), disc(x + sun, 0.7, 0.1, 0.1, 0xe8c98a),
               polygon({{x - 0.5, 0.28}, {x - 0.15, 0.6}, {x + 0.1, 0.42}, {x + 0.3, 0.55}, {x + 0.5, 0.28}},
                       0x2e3338)});
}

void addRightWall(Faces& faces)
{
    const Sheet wall{faces, vector(rightWall, 0, 0), {0, 0, -1}};
    wall.draw({box(-stageWall, floorLevel, roomLength, roomHeight, 0x363638),
               box(-stageWall, floorLevel, roomLength, wainscot, 0x2e2b29)});
    addDoor(wall, -6.5);
    addDoor(wall, 5.2);
    for (const double x : {-9.3, -3.6, -0.6, 2.4, 7.6})
        wall.draw(
            {disc(x, 1.35, 0.75, 1.1, 0x413e3b), disc(x, 1.3, 0.42, 0.7, 0x4e4841),
             polygon({{x - 0.16, 1.0}, {x + 0.16, 1.0}, {x + 0.24, 1.45}, {x - 0.24, 1.45}}, 0xf0dcb2)});
    // Between the lamps.
    addPicture(wall, -2.1, 0x44606b, -0.2);
    addPicture(wall, 0.9, 0x7c5a3a, 0);
    addPicture(wall, 3.7, 0x5d6a4a, 0.2);
}

// `h` is the height of the head's centre above the origin of the sheet.
void addFacing(const Sheet& sheet, double h, const Person& person)
{
    const QColor shade = person.skin.darker(110);
    if (person.longHair)
        sheet.draw({roundBox(-0.125, h - 0.24, 0.25, 0.36, 0.11, person.hair.darker(115))});
    sheet.draw({torso(h - 0.85, h - 0.22, person.clothes),
                polygon({{-0.07, h - 0.22}, {0.07, h - 0.22}, {0, h - 0.42}}, 0xd8d4cb),
                roundBox(-0.05, h - 0.25, 0.1, 0.2, 0.03, person.skin.darker(118)),
                disc(-0.095, h - 0.005, 0.018, 0.03, shade), disc(0.095, h - 0.005, 0.018, 0.03, shade),
                disc(0, h + 0.025, 0.1, 0.12, person.hair),
                roundBox(-0.09, h - 0.135, 0.18, 0.24, 0.085, person.skin)});

    QPainterPath fringe(QPointF(-0.096, h + 0.01));
    fringe.cubicTo(-0.11, h + 0.16, 0.11, h + 0.16, 0.096, h + 0.01);
    fringe.cubicTo(0.085, h + 0.075, 0.05, h + 0.085, -0.02, h + 0.075);
    fringe.cubicTo(-0.06, h + 0.07, -0.085, h + 0.06, -0.096, h + 0.01);
    sheet.draw({{fringe, person.hair}});

    for (const double side : {-1.0, 1.0}) {
        sheet.draw({disc(side * 0.037, h + 0.005, 0.016, 0.009, 0xf4f0ea),
                    disc(side * 0.037, h + 0.005, 0.008, 0.0085, 0x2a2320),
                    hand(side * 0.037, h + 0.034, 90 + side * 4, -0.02, 0.02, 0.007, person.hair)});
        if (!person.glasses)
            continue;
        Shape rim = roundBox(side * 0.038 - 0.028, h - 0.018, 0.056, 0.044, 0.014, 0x1d1d1f);
        rim.path.addPath(
            roundBox(side * 0.038 - 0.024, h - 0.014, 0.048, 0.036, 0.011, {}).path.toReversed());
        sheet.draw({rim});
    }
    if (person.glasses)
        sheet.draw({box(-0.011, h + 0.004, 0.022, 0.004, 0x1d1d1f)});
    sheet.draw({polygon({{-0.006, h}, {0.006, h}, {0.015, h - 0.04}, {-0.015, h - 0.04}}, shade)});

    QPainterPath smile(QPointF(-0.034, h - 0.07));
    smile.quadTo(0, h - 0.084, 0.034, h - 0.07);
    smile.quadTo(0, h - 0.1, -0.034, h - 0.07);
    sheet.draw({{smile, 0x8a4a40}});
}

void addFromBehind(const Sheet& sheet, const Person& person)
{
    constexpr double h = 1.2;
    const QColor hair = person.hair.darker(125);
    // The house lights are low, so people ahead are dark against the stage.
    sheet.draw({torso(0.6, 1.0, person.clothes.darker(175))});
    if (!person.longHair)
        return sheet.draw({roundBox(-0.05, 0.95, 0.1, 0.2, 0.03, person.skin.darker(190)),
                           disc(0, h + 0.01, 0.112, 0.14, hair)});
    QPainterPath mane(QPointF(-0.125, h - 0.2));
    mane.cubicTo(-0.13, h + 0.1, -0.09, h + 0.155, 0, h + 0.155);
    mane.cubicTo(0.09, h + 0.155, 0.13, h + 0.1, 0.125, h - 0.2);
    mane.quadTo(0, h - 0.26, -0.125, h - 0.2);
    sheet.draw({{mane, hair}});
}

void addBackWall(Faces& faces)
{
    const Sheet wall{faces, vector(0, 0, rearWall), {-1, 0, 0}};
    wall.draw({box(-rightWall, floorLevel, roomWidth, roomHeight, 0x323336),
               box(-rightWall, floorLevel, roomWidth, wainscot, 0x2c2a29)});

    // The control room with its operator.
    wall.draw({box(-2.3, 1.0, 4.6, 1.7, 0x1e1f21), box(-2.2, 1.1, 4.4, 1.5, 0x4a4438),
               box(-2.2, 1.1, 4.4, 0.45, 0x2a2826)});
    for (int monitor = 0; monitor < 3; ++monitor) {
        const double x = -1.9 + 0.95 * monitor;
        wall.draw({box(x, 1.35, 0.75, 0.5, 0x17181a),
                   box(x + 0.04, 1.39, 0.67, 0.42, monitor == 1 ? 0x8d7346 : 0x51606e)});
    }
    addFacing({faces, vector(-1.55, 0.5, rearWall), {-1, 0, 0}}, 1.52,
              {skins[1], hairs[0], clothes[4], false, true});
    wall.draw({box(-0.02, 1.1, 0.04, 1.5, 0x1e1f21)});

    // Rows of letters of decreasing size, to try the zoom.
    wall.draw({box(-6.5, -0.6, 2.2, 2.9, 0xe4e0d6)});
    double y = 1.6;
    double size = 0.5;
    for (const char* const row : {"V", "A N", "T R E", "L O O K", "C L O S E R", "P A N T I L T"}) {
        wall.draw({lettering(row, -5.4, y, size, 0x2b2d30, QFont::Bold)});
        size *= 0.66;
        y -= size * 1.75;
    }
    wall.draw(
        {lettering("and if you can read this, the zoom is at its tele end", -5.4, -0.45, 0.02, 0x55585d)});
    addDoor(wall, 4.9);
}

void addPanel(Faces& faces)
{
    struct Seat
    {
        double x;
        const char* name;
        Person person;
    };

    const Seat seats[] = {{-1.15, "Dr. Amara", {skins[3], hairs[5], clothes[0], true, false}},
                          {0, "M. Lindqvist", {skins[4], hairs[3], clothes[3], false, true}},
                          {1.15, "Prof. Costa", {skins[0], hairs[4], clothes[2], true, false}}};
    constexpr double x = 3.9;
    const Sheet behindDesk{faces, vector(x, stageLevel, 10.9)};
    for (const Seat& seat : seats) {
        behindDesk.draw({roundBox(seat.x - 0.26, 0.3, 0.52, 0.85, 0.1, 0x26272a)});
        addFacing({faces, vector(x + seat.x, stageLevel, 10.8)}, 1.26, seat.person);
    }
    const Sheet desk{faces, vector(x, stageLevel, 10.3)};
    desk.draw({box(-1.9, 0, 3.8, 0.72, 0x4a3828), box(-1.8, 0.08, 3.6, 0.54, 0x433224),
               box(-1.95, 0.7, 3.9, 0.06, 0x8a6b48)});
    for (const Seat& seat : seats) {
        desk.draw({box(seat.x - 0.26, 0.76, 0.52, 0.12, 0xe4e0d6),
                   lettering(seat.name, seat.x, 0.797, 0.048, 0x2b2d30),
                   hand(seat.x + 0.36, 0.76, -25, 0, 0.26, 0.012, 0x1b1c1e),
                   disc(seat.x + 0.25, 1.0, 0.025, 0.035, 0x1b1c1e),
                   roundBox(seat.x - 0.42, 0.76, 0.07, 0.13, 0.01, 0x8fa0a8)});
    }
}

void addSpeaker(Faces& faces)
{
    const Sheet place{faces, vector(0, stageLevel, 10.4)};
    place.draw({box(-0.17, 0, 0.14, 0.85, 0x26282d), box(0.03, 0, 0.14, 0.85, 0x26282d)});
    addFacing(place, 1.56, {skins[0], hairs[1], 0x3b4a5f, false, true});

    const Sheet lectern{faces, vector(0, stageLevel, 10)};
    lectern.draw({polygon({{-0.3, 0}, {0.3, 0}, {0.36, 1.05}, {-0.36, 1.05}}, 0x54402e),
                  polygon({{-0.24, 0.1}, {0.24, 0.1}, {0.28, 0.95}, {-0.28, 0.95}}, 0x493727),
                  polygon({{-0.4, 1.05}, {0.4, 1.05}, {0.37, 1.13}, {-0.37, 1.13}}, 0x8a6b48),
                  lettering("V", 0, 0.45, 0.27, 0xd8d2c6, QFont::Bold), disc(0, 0.72, 0.035, 0.035, amber)});
    for (const double side : {-1.0, 1.0})
        lectern.draw({hand(side * 0.2, 1.12, -side * 28, 0, 0.28, 0.012, 0x1b1c1e),
                      disc(side * 0.068, 1.375, 0.022, 0.03, 0x1b1c1e)});
}

void addAudience(Faces& faces)
{
    constexpr double aisle = 0.75;
    constexpr double benchLength = 6.9;
    // With the default seed, the scene is the same at every start.
    std::minstd_rand random; // NOLINT(cert-msc32-c, cert-msc51-cpp)
    const auto oneOf = [&random](std::size_t count) { return static_cast<unsigned>(random() % count); };
    for (const double z : {7.4, 6.4, 5.4, 4.4, 3.4, -6.6, -5.6, -4.6, -3.6, -2.6}) {
        const bool ahead = z > 0;
        for (int seat = 8; seat >= 0; --seat) {
            for (const double side : {-1.0, 1.0}) {
                if (oneOf(6) == 0)
                    continue;
                const Person person{skins[oneOf(skins.size())], hairs[oneOf(hairs.size())],
                                    clothes[oneOf(clothes.size())], oneOf(2) == 0, oneOf(4) == 0};
                // Turned towards the camera.
                const double x = side * (aisle + 0.4 + 0.75 * seat);
                const Sheet place{faces, vector(x, floorLevel, z), vector(z, 0, -x).normalized()};
                if (ahead)
                    addFromBehind(place, person);
                else
                    addFacing(place, 1.18 + 0.02 * oneOf(5), person);
            }
        }
        // The backs of the benches ahead, and the desks of the benches behind, hide the lower bodies.
        const Sheet bench{faces, vector(0, floorLevel, z + (ahead ? -0.2 : 0.3))};
        for (const double left : {-aisle - benchLength, aisle})
            bench.draw(
                {box(left, 0, benchLength, 0.82, 0x2b2324), box(left, 0.82, benchLength, 0.05, 0x4a3a30)});
    }
}

} // namespace

Scene::Scene()
{
    for (const auto add : {addFloorAndCeiling, addStageWall, addClock, addWindows, addRightWall, addBackWall,
                           addStage, addPanel, addSpeaker, addAudience})
        add(faces);
}

void Scene::draw(QPainter& painter, const Projection& projection) const
{
    for (const Face& face : faces) {
        QPainterPath area;
        area.setFillRule(Qt::WindingFill);
        for (const auto& outline : face.outlines)
            area.addPolygon(projection.outlineOf(outline));
        painter.fillPath(area, face.colour);
    }
}
