#include "Scene.h"

#include <QFont>
#include <QPainter>
#include <QPainterPath>
#include <QTransform>

#include <array>
#include <random>

namespace {

// The room, in metres from the lens.
constexpr double leftWall = -9;
constexpr double rightWall = 9;
constexpr double stageWall = 12;
constexpr double rearWall = -8;
constexpr double floorLevel = -2;
constexpr double ceilingLevel = 4;
constexpr double stageLevel = -1.4;
constexpr double stageEdge = 9;

const QColor amber(0xff, 0xb0, 0x2e);

QVector3D vector(double x, double y, double z)
{
    return QVector3D(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
}

// On a sheet y points up, so a rectangle is given by its lower left corner.
QPainterPath box(double x, double y, double width, double height)
{
    QPainterPath path;
    path.addRect(x, y, width, height);
    return path;
}

QPainterPath roundBox(double x, double y, double width, double height, double radius)
{
    QPainterPath path;
    path.addRoundedRect(x, y, width, height, radius, radius);
    return path;
}

QPainterPath disc(double x, double y, double horizontalRadius, double verticalRadius)
{
    QPainterPath path;
    path.addEllipse(QPointF(x, y), horizontalRadius, verticalRadius);
    return path;
}

QPainterPath polygon(const QVector<QPointF>& corners)
{
    QPainterPath path;
    path.addPolygon(QPolygonF(corners));
    path.closeSubpath();
    return path;
}

// A bar of some width from the middle of a dial outwards; 0 degrees is up, clockwise.
QPainterPath hand(double x, double y, double degrees, double from, double to, double width)
{
    QTransform turn;
    turn.translate(x, y);
    turn.rotate(-degrees);
    return turn.map(box(-width / 2, from, width, to - from));
}

// From the hips to the shoulders.
QPainterPath torso(double bottom, double top)
{
    QPainterPath path;
    path.moveTo(-0.27, bottom);
    path.cubicTo(-0.3, bottom + 0.4, -0.28, top - 0.04, -0.17, top);
    path.lineTo(0.17, top);
    path.cubicTo(0.28, top - 0.04, 0.3, bottom + 0.4, 0.27, bottom);
    path.closeSubpath();
    return path;
}

// Letters with their base line's middle at x, y and capitals of this height.
QPainterPath lettering(const QString& text, double x, double y, double height, bool bold = false)
{
    constexpr double size = 100;
    QFont font;
    font.setPixelSize(static_cast<int>(size));
    font.setBold(bold);
    QPainterPath letters;
    letters.addText(0, 0, font, text);
    const double scale = height / (0.73 * size);
    QTransform place;
    place.translate(x, y);
    place.scale(scale, -scale);
    place.translate(-letters.boundingRect().center().x(), 0);
    return place.map(letters);
}

constexpr std::array<QRgb, 5> skins{0xffe3b590, 0xffd19a72, 0xffb07a52, 0xff8a5a3b, 0xfff0cba8};
constexpr std::array<QRgb, 6> hairs{0xff2a211c, 0xff4a3325, 0xff6e4b2c, 0xff8d8a86, 0xffa97f45, 0xff1d1d20};
constexpr std::array<QRgb, 8> clothes{0xff41566b, 0xff5b4a5f, 0xff3f5a53, 0xff6a4740,
                                      0xff4b4d52, 0xff76643f, 0xff39465a, 0xff585f4a};

} // namespace

Scene::Scene()
{
    addRoom();
    addStageWall();
    addClock();
    addWindows();
    addRightWall();
    addBackWall();
    addStage();
    addPanel();
    addSpeaker();
    addAudience();
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

void Scene::add(const Sheet& sheet, const QPainterPath& drawing, const QColor& colour)
{
    // Curves become polygons of a fineness that even the tele end does not show.
    constexpr double fineness = 600;
    Face face;
    face.colour = colour;
    const auto outlines = drawing.toSubpathPolygons(QTransform::fromScale(fineness, fineness));
    for (const QPolygonF& outline : outlines) {
        std::vector<QVector3D> corners;
        // The last corner of a closed outline is its first.
        for (int index = 1; index < outline.size(); ++index) {
            const QPointF corner = outline.at(index) / fineness;
            corners.push_back(sheet.origin + sheet.right * static_cast<float>(corner.x()) +
                              sheet.up * static_cast<float>(corner.y()));
        }
        face.outlines.push_back(std::move(corners));
    }
    faces.push_back(std::move(face));
}

void Scene::addRoom()
{
    const Sheet ahead{vector(0, 0, stageWall), vector(1, 0, 0), vector(0, 1, 0)};
    const Sheet behind{vector(0, 0, rearWall), vector(-1, 0, 0), vector(0, 1, 0)};
    const Sheet left{vector(leftWall, 0, 0), vector(0, 0, 1), vector(0, 1, 0)};
    const Sheet rightHand{vector(rightWall, 0, 0), vector(0, 0, -1), vector(0, 1, 0)};
    const Sheet floor{vector(0, floorLevel, 0), vector(1, 0, 0), vector(0, 0, 1)};
    const Sheet ceiling{vector(0, ceilingLevel, 0), vector(1, 0, 0), vector(0, 0, 1)};
    constexpr double width = rightWall - leftWall;
    constexpr double length = stageWall - rearWall;
    constexpr double height = ceilingLevel - floorLevel;

    add(floor, box(leftWall, rearWall, width, length), 0x2e2a28);
    add(floor, box(-0.7, rearWall, 1.4, length), 0x40302f);
    add(ceiling, box(leftWall, rearWall, width, length), 0x2b2c2f);
    add(ahead, box(leftWall, floorLevel, width, height), 0x3b3838);
    add(behind, box(-rightWall, floorLevel, width, height), 0x323336);
    add(left, box(rearWall, floorLevel, length, height), 0x37383b);
    add(rightHand, box(-stageWall, floorLevel, length, height), 0x363638);

    // Wainscots, so that the walls have a foot.
    add(behind, box(-rightWall, floorLevel, width, 1.1), 0x2c2a29);
    add(left, box(rearWall, floorLevel, length, 1.1), 0x2f2c2a);
    add(rightHand, box(-stageWall, floorLevel, length, 1.1), 0x2e2b29);

    for (const double z : {-6.0, -3.0, 0.0, 3.0, 6.0, 9.0})
        add(ceiling, box(leftWall, z + 1.3, width, 0.35), 0x242528);
    for (const double z : {-6.0, -3.0, 3.0, 6.0}) {
        for (const double x : {-6.0, -2.0, 2.0, 6.0}) {
            add(ceiling, disc(x, z, 0.55, 0.55), 0x3a3732);
            add(ceiling, disc(x, z, 0.3, 0.3), 0xf2dfb8);
        }
    }
    // A ring lamp right above the camera.
    add(ceiling, disc(0, 0, 1.6, 1.6), 0x3a3732);
    add(ceiling, disc(0, 0, 1.25, 1.25), 0xf2dfb8);
    add(ceiling, disc(0, 0, 1.05, 1.05), 0x302f2e);
    add(ceiling, disc(0, 0, 0.12, 0.12), 0x55524d);
}

void Scene::addStageWall()
{
    const Sheet wall{vector(0, 0, stageWall), vector(1, 0, 0), vector(0, 1, 0)};
    add(wall, disc(0.3, 0, 5.2, 2.7), 0x454140);
    add(wall, disc(0.3, 0, 3.3, 2.0), 0x504944);

    // The screen and its slide.
    add(wall, box(-5.55, -0.05, 4.5, 2.8), 0x1f2022);
    add(wall, box(-5.45, 0.05, 4.3, 2.6), 0xe8e4dc);
    add(wall, box(-5.45, 2.1, 4.3, 0.55), 0x33363b);
    add(wall, lettering("Focus", -3.3, 2.26, 0.24, true), 0xf4f1ea);
    const std::array<double, 6> bars{0.45, 0.7, 0.6, 0.95, 1.2, 1.45};
    for (std::size_t bar = 0; bar < bars.size(); ++bar) {
        const double x = -5.05 + 0.36 * static_cast<double>(bar);
        add(wall, box(x, 0.35, 0.26, bars[bar]), bar + 1 == bars.size() ? amber : QColor(0x6d7883));
    }
    add(wall, box(-5.15, 0.33, 2.25, 0.02), 0x33363b);
    const char* const lines[] = {"near", "far", "calm"};
    for (int line = 0; line < 3; ++line)
        add(wall, lettering(lines[line], -2.0, 1.5 - 0.4 * line, 0.12), 0x33363b);
    add(wall, lettering("a smaller line is only legible at the tele end", -1.98, 0.38, 0.018), 0x55585d);

    // Curtains on either side, in folds.
    for (const double side : {-1.0, 1.0}) {
        add(wall, box(side * 7.55 - 1.45, stageLevel, 2.9, ceilingLevel - stageLevel), 0x4b2527);
        for (const double fold : {6.45, 7.35, 8.25})
            add(wall, box(side * fold - 0.25, stageLevel, 0.5, ceilingLevel - stageLevel), 0x5a2d2e);
    }
    add(wall, box(leftWall, 3.45, rightWall - leftWall, 0.55), 0x46242a);
    add(wall, box(leftWall, 3.4, rightWall - leftWall, 0.05), 0x8a6a35);
}

void Scene::addClock()
{
    const Sheet wall{vector(1.7, 2.2, stageWall), vector(1, 0, 0), vector(0, 1, 0)};
    add(wall, disc(0, 0, 0.48, 0.48), 0x1f2022);
    add(wall, disc(0, 0, 0.43, 0.43), 0xece8df);
    for (int minute = 0; minute < 60; ++minute) {
        const bool hour = minute % 5 == 0;
        add(wall, hand(0, 0, 6 * minute, hour ? 0.345 : 0.385, 0.405, hour ? 0.02 : 0.007), 0x2b2d30);
    }
    add(wall, hand(0, 0, 305, -0.06, 0.23, 0.03), 0x2b2d30);
    add(wall, hand(0, 0, 60, -0.08, 0.35, 0.02), 0x2b2d30);
    add(wall, hand(0, 0, 192, -0.1, 0.37, 0.008), amber.darker(115));
    add(wall, disc(0, 0, 0.025, 0.025), 0x2b2d30);
    add(wall, lettering("Vantrel", 0, -0.2, 0.035, true), 0x85827c);
}

void Scene::addStage()
{
    const Sheet top{vector(0, stageLevel, 0), vector(1, 0, 0), vector(0, 0, 1)};
    const Sheet front{vector(0, 0, stageEdge), vector(1, 0, 0), vector(0, 1, 0)};
    add(top, box(-8.2, stageEdge, 16.4, stageWall - stageEdge), 0x5d4837);
    for (int board = 1; board < 8; ++board)
        add(top, box(-8.2, stageEdge + 0.375 * board, 16.4, 0.015), 0x503d2f);
    add(front, box(-8.2, floorLevel, 16.4, stageLevel - floorLevel), 0x392c24);
    add(front, box(-8.2, stageLevel - 0.05, 16.4, 0.05), 0x80623f);
    add(front, box(-0.9, floorLevel, 1.8, 0.4), 0x2b221d);
    add(front, box(-0.9, floorLevel + 0.18, 1.8, 0.03), 0x57442f);
    add(front, box(-0.9, floorLevel + 0.38, 1.8, 0.03), 0x57442f);
}

void Scene::addWindows()
{
    // Dusk outside.
    const Sheet wall{vector(leftWall, 0, 0), vector(0, 0, 1), vector(0, 1, 0)};
    constexpr std::array<QRgb, 6> sky{0x8a6248, 0x6f5a5a, 0x545061, 0x434a61, 0x363f57, 0x2b344b};
    for (const double z : {-6.2, -3.1, 0.0, 3.1, 6.2}) {
        add(wall, box(z - 0.95, -0.85, 1.9, 3.9), 0x232427);
        for (std::size_t band = 0; band < sky.size(); ++band)
            add(wall, box(z - 0.85, -0.75 + 0.617 * static_cast<double>(band), 1.7, 0.64), sky[band]);
        const double shift = z / 20;
        // Houses.
        add(wall, box(z - 0.85, -0.75, 0.35, 0.85 + shift), 0x25272d);
        add(wall, box(z - 0.5, -0.75, 0.4, 1.2), 0x25272d);
        add(wall, box(z - 0.1, -0.75, 0.4, 0.7), 0x25272d);
        add(wall, box(z + 0.3, -0.75, 0.4, 1.05 - shift), 0x25272d);
        add(wall, box(z + 0.7, -0.75, 0.15, 0.75), 0x25272d);
        for (int light = 0; light < 4; ++light)
            add(wall, box(z - 0.42 + 0.3 * light, -0.45 + 0.11 * ((light * 3) % 4), 0.06, 0.08), 0xd9a552);
        add(wall, box(z - 0.03, -0.75, 0.06, 3.7), 0x232427);
        add(wall, box(z - 0.85, 1.3, 1.7, 0.06), 0x232427);
    }
    add(wall, disc(3.45, 2.4, 0.16, 0.16), 0xe9e3d0);
}

void Scene::addDoor(const Sheet& wall, double x)
{
    add(wall, box(x - 1.0, floorLevel, 2.0, 2.75), 0x26241f);
    for (const double leaf : {-0.92, 0.02}) {
        add(wall, box(x + leaf, floorLevel, 0.9, 2.67), 0x5a4330);
        add(wall, box(x + leaf + 0.14, floorLevel + 0.3, 0.62, 0.95), 0x4d3928);
        add(wall, box(x + leaf + 0.14, floorLevel + 1.45, 0.62, 0.95), 0x4d3928);
    }
    add(wall, disc(x - 0.1, floorLevel + 1.1, 0.04, 0.04), 0xc9a05a);
    add(wall, disc(x + 0.1, floorLevel + 1.1, 0.04, 0.04), 0xc9a05a);
    add(wall, roundBox(x - 0.4, 0.95, 0.8, 0.3, 0.04), 0x2f6b4f);
    add(wall, lettering("EXIT", x, 1.03, 0.14, true), 0xe6f2ea);
}

void Scene::addRightWall()
{
    const Sheet wall{vector(rightWall, 0, 0), vector(0, 0, -1), vector(0, 1, 0)};
    addDoor(wall, -6.5);
    addDoor(wall, 5.2);
    for (const double x : {-9.3, -3.6, -0.6, 2.4, 7.6}) {
        add(wall, disc(x, 1.35, 0.75, 1.1), 0x413e3b);
        add(wall, disc(x, 1.3, 0.42, 0.7), 0x4e4841);
        add(wall, polygon({{x - 0.16, 1.0}, {x + 0.16, 1.0}, {x + 0.24, 1.45}, {x - 0.24, 1.45}}), 0xf0dcb2);
    }
    // Framed pictures between the lamps.
    const double places[] = {-2.1, 0.9, 3.7};
    const QRgb fields[] = {0x44606b, 0x7c5a3a, 0x5d6a4a};
    for (int picture = 0; picture < 3; ++picture) {
        const double x = places[picture];
        add(wall, box(x - 0.7, 0.1, 1.4, 1.0), 0x6b5836);
        add(wall, box(x - 0.63, 0.17, 1.26, 0.86), 0xd6cfc0);
        add(wall, box(x - 0.5, 0.28, 1.0, 0.64), fields[picture]);
        add(wall, disc(x - 0.2 + 0.2 * picture, 0.7, 0.1, 0.1), 0xe8c98a);
        add(wall,
            polygon({{x - 0.5, 0.28}, {x - 0.15, 0.6}, {x + 0.1, 0.42}, {x + 0.3, 0.55}, {x + 0.5, 0.28}}),
            0x2e3338);
    }
}

void Scene::addBackWall()
{
    const Sheet wall{vector(0, 0, rearWall), vector(-1, 0, 0), vector(0, 1, 0)};
    // The control room with its operator.
    add(wall, box(-2.3, 1.0, 4.6, 1.7), 0x1e1f21);
    add(wall, box(-2.2, 1.1, 4.4, 1.5), 0x4a4438);
    add(wall, box(-2.2, 1.1, 4.4, 0.45), 0x2a2826);
    for (int monitor = 0; monitor < 3; ++monitor) {
        const double x = -1.9 + 0.95 * monitor;
        add(wall, box(x, 1.35, 0.75, 0.5), 0x17181a);
        add(wall, box(x + 0.04, 1.39, 0.67, 0.42), monitor == 1 ? 0x8d7346 : 0x51606e);
    }
    addFacing({vector(-1.55, 0.5, rearWall), vector(-1, 0, 0), vector(0, 1, 0)}, 1.52,
              {skins[1], hairs[0], clothes[4], false, true});
    add(wall, box(-0.02, 1.1, 0.04, 1.5), 0x1e1f21);

    // Letters in ever smaller rows, to see what the zoom can do.
    add(wall, box(-6.5, -0.6, 2.2, 2.9), 0xe4e0d6);
    const char* const rows[] = {"V", "A N", "T R E", "L O O K", "C L O S E R", "P A N T I L T"};
    double y = 1.6;
    double size = 0.5;
    for (const char* const row : rows) {
        add(wall, lettering(row, -5.4, y, size, true), 0x2b2d30);
        size *= 0.66;
        y -= size * 1.75;
    }
    add(wall, lettering("and if you can read this, the zoom is at its tele end", -5.4, -0.45, 0.02),
        0x55585d);

    addDoor(wall, 4.9);
}

void Scene::addPanel()
{
    constexpr double x = 3.9;
    const Sheet behindDesk{vector(x, stageLevel, 10.9), vector(1, 0, 0), vector(0, 1, 0)};
    const std::array<Person, 3> people{{{skins[3], hairs[5], clothes[0], true, false},
                                        {skins[4], hairs[3], clothes[3], false, true},
                                        {skins[0], hairs[4], clothes[2], true, false}}};
    for (int seat = 0; seat < 3; ++seat) {
        const double shift = 1.15 * (seat - 1);
        add(behindDesk, roundBox(shift - 0.26, 0.3, 0.52, 0.85, 0.1), 0x26272a);
        addFacing({vector(x + shift, stageLevel, 10.8), vector(1, 0, 0), vector(0, 1, 0)}, 1.26,
                  people[static_cast<std::size_t>(seat)]);
    }

    const Sheet desk{vector(x, stageLevel, 10.3), vector(1, 0, 0), vector(0, 1, 0)};
    add(desk, box(-1.9, 0, 3.8, 0.72), 0x4a3828);
    add(desk, box(-1.8, 0.08, 3.6, 0.54), 0x433224);
    add(desk, box(-1.95, 0.7, 3.9, 0.06), 0x8a6b48);
    const char* const names[] = {"Dr. Amara", "M. Lindqvist", "Prof. Costa"};
    for (int seat = 0; seat < 3; ++seat) {
        const double shift = 1.15 * (seat - 1);
        add(desk, box(shift - 0.26, 0.76, 0.52, 0.12), 0xe4e0d6);
        add(desk, lettering(names[seat], shift, 0.797, 0.048), 0x2b2d30);
        add(desk, hand(shift + 0.36, 0.76, -25, 0, 0.26, 0.012), 0x1b1c1e);
        add(desk, disc(shift + 0.25, 1.0, 0.025, 0.035), 0x1b1c1e);
        add(desk, roundBox(shift - 0.42, 0.76, 0.07, 0.13, 0.01), 0x8fa0a8);
    }
}

void Scene::addSpeaker()
{
    const Sheet place{vector(0, stageLevel, 10.4), vector(1, 0, 0), vector(0, 1, 0)};
    add(place, box(-0.17, 0, 0.14, 0.85), 0x26282d);
    add(place, box(0.03, 0, 0.14, 0.85), 0x26282d);
    addFacing(place, 1.56, {skins[0], hairs[1], 0x3b4a5f, false, true});

    const Sheet lectern{vector(0, stageLevel, 10), vector(1, 0, 0), vector(0, 1, 0)};
    add(lectern, polygon({{-0.3, 0}, {0.3, 0}, {0.36, 1.05}, {-0.36, 1.05}}), 0x54402e);
    add(lectern, polygon({{-0.24, 0.1}, {0.24, 0.1}, {0.28, 0.95}, {-0.28, 0.95}}), 0x493727);
    add(lectern, polygon({{-0.4, 1.05}, {0.4, 1.05}, {0.37, 1.13}, {-0.37, 1.13}}), 0x8a6b48);
    add(lectern, lettering("V", 0, 0.45, 0.27, true), 0xd8d2c6);
    add(lectern, disc(0, 0.72, 0.035, 0.035), amber);
    for (const double side : {-1.0, 1.0}) {
        add(lectern, hand(side * 0.2, 1.12, -side * 28, 0, 0.28, 0.012), 0x1b1c1e);
        add(lectern, disc(side * 0.068, 1.375, 0.022, 0.03), 0x1b1c1e);
    }
}

void Scene::addAudience()
{
    constexpr double aisle = 0.75;
    constexpr double benchLength = 6.9;
    // The same at every start.
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
                const Sheet place{vector(x, floorLevel, z), vector(z, 0, -x).normalized(), vector(0, 1, 0)};
                if (ahead)
                    addFromBehind(place, person);
                else
                    addFacing(place, 1.18 + 0.02 * oneOf(5), person);
            }
        }
        // The backs of the benches ahead and the desks of those behind hide what is below.
        const double towardsCamera = ahead ? -0.2 : 0.3;
        const Sheet bench{vector(0, floorLevel, z + towardsCamera), vector(1, 0, 0), vector(0, 1, 0)};
        for (const double left : {-aisle - benchLength, aisle}) {
            add(bench, box(left, 0, benchLength, 0.82), 0x2b2324);
            add(bench, box(left, 0.82, benchLength, 0.05), 0x4a3a30);
        }
    }
}

// `headHeight` is the middle of the head above the sheet's origin.
void Scene::addFacing(const Sheet& sheet, double headHeight, const Person& person)
{
    const double h = headHeight;
    if (person.longHair)
        add(sheet, roundBox(-0.125, h - 0.24, 0.25, 0.36, 0.11), person.hair.darker(115));

    add(sheet, torso(h - 0.85, h - 0.22), person.clothes);
    add(sheet, polygon({{-0.07, h - 0.22}, {0.07, h - 0.22}, {0, h - 0.42}}), 0xd8d4cb);
    add(sheet, roundBox(-0.05, h - 0.25, 0.1, 0.2, 0.03), person.skin.darker(118));
    add(sheet, disc(-0.095, h - 0.005, 0.018, 0.03), person.skin.darker(110));
    add(sheet, disc(0.095, h - 0.005, 0.018, 0.03), person.skin.darker(110));
    add(sheet, disc(0, h + 0.025, 0.1, 0.12), person.hair);
    add(sheet, roundBox(-0.09, h - 0.135, 0.18, 0.24, 0.085), person.skin);

    QPainterPath fringe;
    fringe.moveTo(-0.096, h + 0.01);
    fringe.cubicTo(-0.11, h + 0.16, 0.11, h + 0.16, 0.096, h + 0.01);
    fringe.cubicTo(0.085, h + 0.075, 0.05, h + 0.085, -0.02, h + 0.075);
    fringe.cubicTo(-0.06, h + 0.07, -0.085, h + 0.06, -0.096, h + 0.01);
    add(sheet, fringe, person.hair);

    for (const double side : {-1.0, 1.0}) {
        add(sheet, disc(side * 0.037, h + 0.005, 0.016, 0.009), 0xf4f0ea);
        add(sheet, disc(side * 0.037, h + 0.005, 0.008, 0.0085), 0x2a2320);
        add(sheet, hand(side * 0.037, h + 0.034, 90 + side * 4, -0.02, 0.02, 0.007), person.hair);
        if (person.glasses) {
            QPainterPath rim = roundBox(side * 0.038 - 0.028, h - 0.018, 0.056, 0.044, 0.014);
            rim.addPath(roundBox(side * 0.038 - 0.024, h - 0.014, 0.048, 0.036, 0.011).toReversed());
            add(sheet, rim, 0x1d1d1f);
        }
    }
    if (person.glasses)
        add(sheet, box(-0.011, h + 0.004, 0.022, 0.004), 0x1d1d1f);
    add(sheet, polygon({{-0.006, h + 0.0}, {0.006, h + 0.0}, {0.015, h - 0.04}, {-0.015, h - 0.04}}),
        person.skin.darker(110));

    QPainterPath smile;
    smile.moveTo(-0.034, h - 0.07);
    smile.quadTo(0, h - 0.084, 0.034, h - 0.07);
    smile.quadTo(0, h - 0.1, -0.034, h - 0.07);
    add(sheet, smile, 0x8a4a40);
}

void Scene::addFromBehind(const Sheet& sheet, const Person& person)
{
    constexpr double h = 1.2;
    // The house lights are low: who sits ahead shows dark against the stage.
    add(sheet, torso(0.6, 1.0), person.clothes.darker(175));
    if (person.longHair) {
        QPainterPath hair;
        hair.moveTo(-0.125, h - 0.2);
        hair.cubicTo(-0.13, h + 0.1, -0.09, h + 0.155, 0, h + 0.155);
        hair.cubicTo(0.09, h + 0.155, 0.13, h + 0.1, 0.125, h - 0.2);
        hair.quadTo(0, h - 0.26, -0.125, h - 0.2);
        add(sheet, hair, person.hair.darker(125));
    } else {
        add(sheet, roundBox(-0.05, 0.95, 0.1, 0.2, 0.03), person.skin.darker(190));
        add(sheet, disc(0, h + 0.01, 0.112, 0.14), person.hair.darker(125));
    }
}
