#include "CameraView.h"

#include "FramePattern.h"

#include <QFontDatabase>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// 62 a second: the nearest that whole milliseconds allow above 60.
constexpr int frameInterval = 16;
constexpr QSize defaultSize(800, 450);
constexpr QSize smallestSize(640, 360);

// Pixels.
constexpr int margin = 10;
constexpr int padding = 8;
constexpr int rowHeight = 18;
constexpr double mapScale = 0.5;
constexpr int columnWidth = 88;
constexpr int captionWidth = 72;
constexpr int presetsWidth = 120;
constexpr double markRadius = 9;

// Degrees: in a narrower picture the scale gets finer.
constexpr double closeField = 15;

const QColor amber(0xff, 0xb0, 0x2e);
const QColor bright(0xf0, 0xf0, 0xf0);
const QColor dim(0xa8, 0xa8, 0xa8);
const QColor scaleColour(0xff, 0xff, 0xff, 0x90);
const QColor panel(0x1c, 0x1c, 0x1c, 0xe0);

QString signedDegrees(double degrees)
{
    // Rounded first, so that there is no -0.0.
    const double tenths = std::round(degrees * 10) / 10;
    return (tenths > 0 ? "+" : "") + QString::number(tenths + 0.0, 'f', 1) + QChar(0xB0);
}

QFont fontOfHeight(QFont font, int pixels)
{
    font.setPixelSize(pixels);
    return font;
}

void paintPanel(QPainter& painter, const QRectF& area)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(panel);
    painter.drawRoundedRect(area, 5, 5);
}

// `text` on one row, cut with an ellipsis where it is too long.
void paintText(QPainter& painter, const QRectF& area, const QColor& colour, const QString& text,
               int alignment = Qt::AlignLeft)
{
    painter.setPen(colour);
    painter.drawText(area, alignment | Qt::AlignVCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, static_cast<int>(area.width())));
}

} // namespace

CameraView::CameraView(Look lookAtCamera, QWidget* parent)
    : QWidget(parent)
    , look(std::move(lookAtCamera))
    , smallFont(fontOfHeight(font(), 12))
    , numberFont(fontOfHeight(QFontDatabase::systemFont(QFontDatabase::FixedFont), 12))
    , frameTimer(this)
{
    setWindowTitle("Simulated camera");
    setMinimumSize(smallestSize);
    setAttribute(Qt::WA_OpaquePaintEvent);
    frameTimer.setTimerType(Qt::PreciseTimer);
    frameTimer.setInterval(frameInterval);
    connect(&frameTimer, SIGNAL(timeout()), this, SLOT(showPresent()));
    showPresent();
}

QSize CameraView::sizeHint() const
{
    return defaultSize;
}

CameraView::Texts CameraView::texts() const
{
    QStringList numbers;
    for (auto preset = presets.cbegin(); preset != presets.cend(); ++preset)
        numbers += QString::number(preset.key());

    const QString zoom =
        QString("%1%2").arg(Projection::magnification(position.zoom), 0, 'f', 1).arg(QChar(0xD7));
    const QString steps = QString("%1").arg(std::lround(position.zoom), 4, 16, QChar('0')).toUpper();
    return {signedDegrees(position.pan),       signedDegrees(position.tilt),
            QString("%1 %2").arg(zoom, steps), command.words,
            hexadecimal(command.bytes),        reply.words,
            hexadecimal(reply.bytes),          numbers.join(' ')};
}

void CameraView::take(const ViscaCamera::Event& event)
{
    if (event.kind == ViscaCamera::Event::Kind::Reply) {
        reply = event;
    } else {
        command = event;
        reply = {};
    }
    update();
    if (!frameTimer.isActive())
        frameTimer.start();
}

void CameraView::showPresent()
{
    const ViscaCamera& camera = look();
    position = camera.position();
    presets = camera.presets();
    turn = {camera.isMirrored(), camera.isFlipped()};
    on = camera.isOn();
    moving = camera.isMoving();
    if (!moving)
        frameTimer.stop();
    update();
}

void CameraView::paintEvent(QPaintEvent*)
{
    const QSize pixels = size() * devicePixelRatioF();
    if (picture.size() != pixels)
        picture = QImage(pixels, QImage::Format_RGB32);
    if (on)
        scene.draw(picture, Projection(position, pixels, turn));
    else
        picture.fill(Qt::black);

    QPainter painter(this);
    painter.drawImage(rect(), picture);
    painter.setRenderHint(QPainter::Antialiasing);
    if (on) {
        const Projection projection(position, size(), turn);
        painter.setFont(smallFont);
        paintScale(painter, projection);
        paintPresetMarks(painter, projection);
    }

    const Texts shown = texts();
    paintPosition(painter, shown);
    paintMap(painter);
    paintProtocol(painter, shown);
}

// Marks on the horizon and on the upright line through the home position.
void CameraView::paintScale(QPainter& painter, const Projection& projection) const
{
    const bool close = Projection::fieldOfView(position.zoom) < closeField;
    const int step = close ? 1 : 10;
    for (int pan = -180; pan < 180; pan += step)
        paintTick(painter, projection, pan, 0, pan);
    for (int tilt = -30; tilt <= 90; tilt += step) {
        if (tilt != 0)
            paintTick(painter, projection, 0, tilt, tilt);
    }
}

void CameraView::paintTick(QPainter& painter, const Projection& projection, double pan, double tilt,
                           int degrees) const
{
    const auto point = projection.pointAt(pan, tilt);
    if (!point || !rect().contains(point->toPoint()))
        return;
    const bool close = Projection::fieldOfView(position.zoom) < closeField;
    const bool labelled = degrees % (close ? 5 : 30) == 0;
    const double length = labelled ? 5 : 3;
    const bool onHorizon = tilt == 0;
    const QPointF half = onHorizon ? QPointF(0, length) : QPointF(length, 0);
    painter.setPen(scaleColour);
    painter.drawLine(*point - half, *point + half);
    if (!labelled)
        return;
    const QString text = degrees == 0 ? "Home" : QString::number(degrees) + QChar(0xB0);
    QRectF label(0, 0, painter.fontMetrics().horizontalAdvance(text), rowHeight);
    label.moveCenter(*point + (onHorizon ? QPointF(0, length + rowHeight / 2.0)
                                         : QPointF(length + 4 + label.width() / 2, 0)));
    // Whole at the edges, too.
    label.moveLeft(std::clamp(label.left(), 0.0, width() - label.width()));
    painter.drawText(label, Qt::AlignCenter | Qt::TextDontClip, text);
}

void CameraView::paintPresetMarks(QPainter& painter, const Projection& projection) const
{
    for (auto preset = presets.cbegin(); preset != presets.cend(); ++preset) {
        const auto point = projection.pointAt(preset->pan, preset->tilt);
        if (!point)
            continue;
        const QRectF badge(point->x() - markRadius, point->y() - markRadius, 2 * markRadius, 2 * markRadius);
        if (!badge.intersects(rect()))
            continue;
        painter.setPen(Qt::NoPen);
        painter.setBrush(amber);
        painter.drawEllipse(badge);
        painter.setPen(Qt::black);
        painter.drawText(badge, Qt::AlignCenter, QString::number(preset.key()));
    }
}

void CameraView::paintPosition(QPainter& painter, const Texts& shown) const
{
    const QRectF area(margin, margin, 3 * columnWidth + 2 * padding, 2 * rowHeight + padding);
    paintPanel(painter, area);
    QRectF cell(area.left() + padding, area.top() + padding / 2.0, columnWidth, rowHeight);
    const std::pair<const char*, const QString*> columns[] = {
        {"Pan", &shown.pan}, {"Tilt", &shown.tilt}, {"Zoom", &shown.zoom}};
    for (const auto& [caption, value] : columns) {
        painter.setFont(smallFont);
        paintText(painter, cell, dim, caption);
        painter.setFont(numberFont);
        paintText(painter, cell.translated(0, rowHeight), moving ? amber : bright, *value);
        cell.translate(columnWidth, 0);
    }
}

QRectF CameraView::mapArea() const
{
    const double wide = 2 * Mechanics::panLimit * mapScale;
    const double high = (Mechanics::tiltHighLimit - Mechanics::tiltLowLimit) * mapScale;
    return {width() - margin - padding - wide, margin + padding + 0.0, wide, high};
}

QPointF CameraView::mapPointAt(double pan, double tilt) const
{
    return mapArea().topLeft() +
           QPointF((pan + Mechanics::panLimit) * mapScale, (Mechanics::tiltHighLimit - tilt) * mapScale);
}

void CameraView::paintMap(QPainter& painter) const
{
    const QRectF area = mapArea();
    paintPanel(painter, area.adjusted(-padding, -padding, padding, padding));

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QColor(0xff, 0xff, 0xff, 0x38));
    painter.drawRect(area);
    painter.drawLine(mapPointAt(-Mechanics::panLimit, 0), mapPointAt(Mechanics::panLimit, 0));
    painter.drawLine(mapPointAt(0, Mechanics::tiltLowLimit), mapPointAt(0, Mechanics::tiltHighLimit));

    painter.setPen(Qt::NoPen);
    painter.setBrush(dim);
    for (const ViscaCamera::Position& preset : presets)
        painter.drawEllipse(mapPointAt(preset.pan, preset.tilt), 1.5, 1.5);

    // What the picture shows, as wide and high as it is near the horizon.
    const double field = Projection::fieldOfView(position.zoom);
    QRectF seen(0, 0, field * mapScale, field * mapScale * height() / width());
    seen.moveCenter(mapPointAt(position.pan, position.tilt));
    painter.setPen(amber);
    painter.setBrush(QColor(0xff, 0xb0, 0x2e, 0x40));
    painter.drawRect(seen & area);
    painter.setPen(Qt::NoPen);
    painter.setBrush(amber);
    painter.drawEllipse(seen.center(), 2, 2);
}

void CameraView::paintProtocol(QPainter& painter, const Texts& shown) const
{
    const double high = 4 * rowHeight + padding;
    const QRectF area(margin, height() - margin - high, width() - 2 * margin, high);
    paintPanel(painter, area);

    const QRectF inside = area.adjusted(padding, padding / 2.0, -padding, -padding / 2.0);
    const double framesLeft = inside.left() + captionWidth;
    const double presetsLeft = inside.right() - presetsWidth;
    const auto row = [&](int number, double left, double right) {
        return QRectF(left, inside.top() + number * rowHeight, right - left, rowHeight);
    };

    painter.setFont(smallFont);
    paintText(painter, row(0, inside.left(), framesLeft), dim, "Command");
    paintText(painter, row(0, framesLeft, presetsLeft - padding), bright, shown.command);
    paintText(painter, row(2, inside.left(), framesLeft), dim, "Reply");
    paintText(painter, row(2, framesLeft, presetsLeft - padding), bright, shown.reply);
    paintText(painter, row(0, presetsLeft, inside.right()), dim, "Presets");
    paintText(painter, row(1, presetsLeft, inside.right()), bright,
              shown.presets.isEmpty() ? "none" : shown.presets);
    painter.setFont(numberFont);
    paintText(painter, row(1, framesLeft, presetsLeft - padding), amber, shown.commandBytes);
    paintText(painter, row(3, framesLeft, presetsLeft - padding), amber, shown.replyBytes);
}
