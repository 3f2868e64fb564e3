#include "PolygonFill.h"

#include <QImage>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace {

constexpr int samplesPerRow = 4;

/** Where the polygon lies at one height; empty where it does not reach. */
struct Span
{
    float left = std::numeric_limits<float>::max();
    float right = std::numeric_limits<float>::lowest();
};

using Row = std::array<Span, samplesPerRow>;

// Widens the spans at the heights that the edge crosses; `top` is the first row.
void addEdge(std::vector<Row>& rows, int top, QPointF from, QPointF to)
{
    if (from.y() > to.y())
        std::swap(from, to);
    const auto sampleBelow = [top](double y) {
        return static_cast<int>(std::ceil((y - top) * samplesPerRow - 0.5));
    };
    const int first = std::max(0, sampleBelow(from.y()));
    const int last = std::min(static_cast<int>(rows.size()) * samplesPerRow, sampleBelow(to.y()));
    const double slope = (to.x() - from.x()) / (to.y() - from.y());
    for (int sample = first; sample < last; ++sample) {
        const double y = top + (sample + 0.5) / samplesPerRow;
        const auto x = static_cast<float>(from.x() + (y - from.y()) * slope);
        Span& span = rows[static_cast<std::size_t>(sample / samplesPerRow)]
                         [static_cast<std::size_t>(sample % samplesPerRow)];
        span.left = std::min(span.left, x);
        span.right = std::max(span.right, x);
    }
}

// The share of the pixel from `x` to `x` + 1 that the polygon covers.
float coverage(const Row& row, int x)
{
    const auto left = static_cast<float>(x);
    float sum = 0;
    for (const Span& span : row)
        sum += std::max(0.0F, std::min(span.right, left + 1) - std::max(span.left, left));
    return sum / samplesPerRow;
}

QRgb mix(QRgb below, QRgb above, float share)
{
    const int weight = static_cast<int>(share * 256);
    const auto channel = [weight](int from, int to) { return from + (to - from) * weight / 256; };
    return qRgb(channel(qRed(below), qRed(above)), channel(qGreen(below), qGreen(above)),
                channel(qBlue(below), qBlue(above)));
}

void fillRow(QRgb* pixels, int width, const Row& row, QRgb colour)
{
    float outerLeft = row[0].left;
    float innerLeft = row[0].left;
    float innerRight = row[0].right;
    float outerRight = row[0].right;
    for (const Span& span : row) {
        outerLeft = std::min(outerLeft, span.left);
        innerLeft = std::max(innerLeft, span.left);
        innerRight = std::min(innerRight, span.right);
        outerRight = std::max(outerRight, span.right);
    }
    if (outerLeft > outerRight)
        return;

    const auto column = [width](float x) {
        return static_cast<int>(std::clamp(x, 0.0F, static_cast<float>(width)));
    };
    const int begin = column(std::floor(outerLeft));
    const int end = column(std::ceil(outerRight));
    const int solidBegin = std::min(end, column(std::ceil(innerLeft)));
    const int solidEnd = std::max(solidBegin, column(std::floor(innerRight)));
    for (int x = begin; x < solidBegin; ++x)
        pixels[x] = mix(pixels[x], colour, coverage(row, x));
    std::fill(pixels + solidBegin, pixels + solidEnd, colour);
    for (int x = solidEnd; x < end; ++x)
        pixels[x] = mix(pixels[x], colour, coverage(row, x));
}

} // namespace

void fillConvex(QImage& picture, const QPolygonF& outline, QRgb colour)
{
    const QRectF bounds = outline.boundingRect();
    const int top = std::max(0, static_cast<int>(std::floor(bounds.top())));
    const int bottom = std::min(picture.height(), static_cast<int>(std::ceil(bounds.bottom())));
    if (bottom <= top)
        return;

    std::vector<Row> rows(static_cast<std::size_t>(bottom - top));
    QPointF previous = outline.last();
    for (const QPointF& corner : outline) {
        addEdge(rows, top, previous, corner);
        previous = corner;
    }
    for (int y = top; y < bottom; ++y)
        fillRow(reinterpret_cast<QRgb*>(picture.scanLine(y)), picture.width(),
                rows[static_cast<std::size_t>(y - top)], colour);
}
