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

// In milliseconds: 62 pictures a second, the lowest rate above 60.
constexpr int frameInterval = 16;

// In pixels.
constexpr int margin = 10;
constexpr int padding = 8;
constexpr int rowHeight = 18;
constexpr double mapScale = 0.5;
constexpr int columnWidth = 88;
constexpr int captionWidth = 72;
constexpr double panelRadius = 5;
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
    // Round first, to avoid -0.0.
    const double tenths = std::round(degrees * 10) / 10;
    return (tenths > 0 ? "+" : "") + QString::number(tenths + 0.0, 'f', 1) + QChar(0xB0);
}

QFont fontOfHeight(QFont font, int pixels)
{
    font.setPixelSize(pixels);
    return font;
}

void fill(QPainter& painter, const QRectF& area, double radius, const QColor& colour)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawRoundedRect(area, radius, radius);
}

QRectF around(const QPointF& middle, double width, double height)
{
    return {middle.x() - width / 2, middle.y() - height / 2, width, height};
}

// Draws `text` on one row and elides it if it is too long.
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
{
    setWindowTitle("Simulated camera");
    setMinimumSize(640, 360);
    setAttribute(Qt::WA_OpaquePaintEvent);
    frameTimer.setTimerType(Qt::PreciseTimer);
    frameTimer.setInterval(frameInterval);
    connect(&frameTimer, SIGNAL(timeout()), this, SLOT(showPresent()));
    showPresent();
}

CameraView::Texts CameraView::texts() const
{
    QStringList numbers;
    for (auto preset = presets.cbegin(); preset != presets.cend(); ++preset)
        numbers += QString::number(preset.key());

    const QString times = QString::number(Projection::magnification(position.zoom), 'f', 1) + QChar(0xD7);
    const QString steps = QString("%1").arg(std::lround(position.zoom), 4, 16, QChar('0')).toUpper();
    return {signedDegrees(position.pan), signedDegrees(position.tilt),
            times + ' ' + steps,         command.words,
            hexadecimal(command.bytes),  reply.words,
            hexadecimal(reply.bytes),    numbers.join(' ')};
}

void CameraView::take(const ViscaCamera::Event& event)
{
    const bool isReply = event.kind == ViscaCamera::Event::Kind::Reply;
    reply = isReply ? event : ViscaCamera::Event{};
    if (!isReply)
        command = event;
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
    // Presets whose marks would overlap share one mark.
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
        const QRectF badge = around(place, std::max(letters.width() + padding, 2 * markRadius),
                                    std::max(letters.height(), 2 * markRadius));
        fill(painter, badge, markRadius, amber);
        painter.setPen(Qt::black);
        painter.drawText(badge, flags, text);
    }
}

// The ruler at the top shows the pan at half the height of the picture; the ruler on the left shows the tilt
// at half its width.
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
        // Draw no label that does not fit.
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
    fill(painter, area, panelRadius, panel);
    QRectF cell(area.left() + padding, area.top() + padding / 2.0, columnWidth, rowHeight);
    const auto paintColumn = [&](const char* caption, const QString& value) {
        painter.setFont(smallFont);
        paintText(painter, cell, dim, caption);
        painter.setFont(numberFont);
        paintText(painter, cell.translated(0, rowHeight), moving ? amber : bright, value);
        cell.translate(columnWidth, 0);
    };
    paintColumn("Pan", shown.pan);
    paintColumn("Tilt", shown.tilt);
    paintColumn("Zoom", shown.zoom);
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
    fill(painter, area.united(list).adjusted(-padding, -padding, padding, padding), panelRadius, panel);
    painter.setPen(bright);
    painter.drawText(list, Qt::TextWordWrap, presetList);

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QColor(0xff, 0xff, 0xff, 0x38));
    painter.drawRect(area);
    painter.drawLine(mapPointAt(-Mechanics::panLimit, 0), mapPointAt(Mechanics::panLimit, 0));
    painter.drawLine(mapPointAt(0, Mechanics::tiltLowLimit), mapPointAt(0, Mechanics::tiltHighLimit));

    for (const ViscaCamera::Position& preset : presets)
        fill(painter, around(mapPointAt(preset.pan, preset.tilt), 3, 3), 1.5, dim);

    // The section that the picture shows. Its size is only right near the horizon.
    const double field = Projection::fieldOfView(position.zoom);
    const QPointF here = mapPointAt(position.pan, position.tilt);
    painter.setPen(amber);
    painter.setBrush(QColor(0xff, 0xb0, 0x2e, 0x40));
    painter.drawRect(around(here, field * mapScale, field * mapScale * height() / width()) & area);
    fill(painter, around(here, 4, 4), 2, amber);
}

void CameraView::paintProtocol(QPainter& painter, const Texts& shown) const
{
    if (shown.command.isEmpty())
        return;
    const double left = rulerWidth + margin;
    const double high = 4 * rowHeight + padding;
    const QRectF area(left, height() - margin - high, width() - margin - left, high);
    fill(painter, area, panelRadius, panel);

    QRectF row(area.left() + padding, area.top() + padding / 2.0, area.width() - 2 * padding, rowHeight);
    const auto paintRow = [&](const QFont& font, const char* caption, const QColor& colour,
                              const QString& text) {
        painter.setFont(font);
        paintText(painter, row, dim, caption);
        paintText(painter, row.adjusted(captionWidth, 0, 0, 0), colour, text);
        row.translate(0, rowHeight);
    };
    paintRow(smallFont, "Command", bright, shown.command);
    paintRow(numberFont, "", amber, shown.commandBytes);
    paintRow(smallFont, "Reply", bright, shown.reply);
    paintRow(numberFont, "", amber, shown.replyBytes);
}
