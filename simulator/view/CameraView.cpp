#include "CameraView.h"

#include "FramePattern.h"

#include <QFontDatabase>
#include <QPainter>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

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
constexpr double markRadius = 9;
constexpr double widestMark = 120;
constexpr double rulerHeight = 20;
constexpr double rulerWidth = 38;
constexpr double tickLength = 4;
constexpr double closestTicks = 50;

const QColor amber(0xff, 0xb0, 0x2e);
const QColor bright(0xf0, 0xf0, 0xf0);
const QColor dim(0xa8, 0xa8, 0xa8);
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
void paintText(QPainter& painter, const QRectF& area, const QColor& colour, const QString& text)
{
    painter.setPen(colour);
    painter.drawText(area, Qt::AlignVCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(text, Qt::ElideRight, static_cast<int>(area.width())));
}

int rulerStep(double pixelsPerDegree)
{
    for (const int step : {1, 5, 10, 30, 90}) {
        if (step * pixelsPerDegree >= closestTicks)
            return step;
    }
    return 360;
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
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(smallFont);
    if (on) {
        const Projection projection(position, size(), turn);
        scene.draw(painter, projection);
        paintPresetMarks(painter, projection);
        paintRulers(painter, projection);
    } else {
        painter.fillRect(rect(), Qt::black);
    }

    const Texts shown = texts();
    paintPosition(painter, shown);
    paintMap(painter, shown);
    paintProtocol(painter, shown);
}

void CameraView::paintPresetMarks(QPainter& painter, const Projection& projection) const
{
    // Presets whose marks would touch share one.
    std::vector<std::pair<QPointF, QStringList>> marks;
    for (auto preset = presets.cbegin(); preset != presets.cend(); ++preset) {
        const auto point = projection.pointAt(preset->pan, preset->tilt);
        if (!point)
            continue;
        auto mark = std::find_if(marks.begin(), marks.end(), [&](const auto& other) {
            return QLineF(other.first, *point).length() < 2 * markRadius;
        });
        if (mark == marks.end())
            mark = marks.insert(mark, {*point, {}});
        mark->second += QString::number(preset.key());
    }
    for (const auto& [place, numbers] : marks) {
        constexpr int flags = Qt::AlignCenter | Qt::TextWordWrap;
        const QString text = numbers.join(' ');
        const QRectF letters = painter.boundingRect(QRectF(0, 0, widestMark, height()), flags, text);
        QRectF badge({}, (letters.size() + QSizeF(padding, 0)).expandedTo({2 * markRadius, 2 * markRadius}));
        badge.moveCenter(place);
        painter.setPen(Qt::NoPen);
        painter.setBrush(amber);
        painter.drawRoundedRect(badge, markRadius, markRadius);
        painter.setPen(Qt::black);
        painter.drawText(badge, flags, text);
    }
}

// Along the top edge the pan at the middle height of the picture, along the left edge the tilt at its middle.
void CameraView::paintRulers(QPainter& painter, const Projection& projection) const
{
    const QRectF top(rulerWidth, 0, width() - rulerWidth, rulerHeight);
    const QRectF left(0, rulerHeight, rulerWidth, height() - rulerHeight);
    painter.fillRect(QRectF(0, 0, width(), rulerHeight), panel);
    painter.fillRect(left, panel);

    painter.setPen(dim);
    const auto paintMark = [&](const QRectF& ruler, const QPointF& middle, const QLineF& tick, int degrees) {
        const QString text = QString::number(degrees) + QChar(0xB0);
        QRectF label = painter.boundingRect(ruler, Qt::AlignCenter, text);
        label.moveCenter(middle);
        // Whole or not at all.
        if (!ruler.contains(label))
            return;
        painter.drawText(label, Qt::AlignCenter, text);
        painter.drawLine(tick);
    };
    const double pixelsPerDegree = width() / Projection::fieldOfView(position.zoom);
    const double tilt = qDegreesToRadians(position.tilt);
    const int panStep = rulerStep(pixelsPerDegree * std::cos(tilt));
    for (int pan = -180; pan < 180; pan += panStep) {
        const double there = std::atan(std::cos(qDegreesToRadians(pan - position.pan)) * std::tan(tilt));
        if (const auto point = projection.pointAt(pan, qRadiansToDegrees(there)))
            paintMark(top, {point->x(), (rulerHeight - tickLength) / 2},
                      {point->x(), rulerHeight - tickLength, point->x(), rulerHeight}, pan);
    }
    for (int height = -30; height <= 90; height += rulerStep(pixelsPerDegree)) {
        if (const auto point = projection.pointAt(position.pan, height))
            paintMark(left, {(rulerWidth - tickLength) / 2, point->y()},
                      {rulerWidth - tickLength, point->y(), rulerWidth, point->y()}, height);
    }
}

void CameraView::paintPosition(QPainter& painter, const Texts& shown) const
{
    const QRectF area(rulerWidth + margin, rulerHeight + margin, 3 * columnWidth + 2 * padding,
                      2 * rowHeight + padding);
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
    return {width() - margin - padding - wide, rulerHeight + margin + padding, wide, high};
}

QPointF CameraView::mapPointAt(double pan, double tilt) const
{
    return mapArea().topLeft() +
           QPointF((pan + Mechanics::panLimit) * mapScale, (Mechanics::tiltHighLimit - tilt) * mapScale);
}

void CameraView::paintMap(QPainter& painter, const Texts& shown) const
{
    const QRectF area = mapArea();
    const QString presetList = shown.presets.isEmpty() ? QString() : "Presets: " + shown.presets;
    const QRectF below(area.left(), area.bottom() + padding, area.width(), height());
    painter.setFont(smallFont);
    const QRectF list = painter.boundingRect(below, Qt::TextWordWrap, presetList);
    paintPanel(painter, area.united(list).adjusted(-padding, -padding, padding, padding));
    painter.setPen(bright);
    painter.drawText(list, Qt::TextWordWrap, presetList);

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
    if (shown.command.isEmpty())
        return;
    const double left = rulerWidth + margin;
    const double high = 4 * rowHeight + padding;
    const QRectF area(left, height() - margin - high, width() - margin - left, high);
    paintPanel(painter, area);

    const QRectF row(area.left() + padding, area.top() + padding / 2.0, area.width() - 2 * padding,
                     rowHeight);
    const QRectF words = row.adjusted(captionWidth, 0, 0, 0);
    painter.setFont(smallFont);
    paintText(painter, row, dim, "Command");
    paintText(painter, words, bright, shown.command);
    paintText(painter, row.translated(0, 2 * rowHeight), dim, "Reply");
    paintText(painter, words.translated(0, 2 * rowHeight), bright, shown.reply);
    painter.setFont(numberFont);
    paintText(painter, words.translated(0, rowHeight), amber, shown.commandBytes);
    paintText(painter, words.translated(0, 3 * rowHeight), amber, shown.replyBytes);
}
