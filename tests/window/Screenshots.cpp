#include "window/Screenshots.h"

#include <QDir>
#include <QPainter>
#include <QtTest>

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int MostColourDistance = 12;
constexpr int SquareSize = 16;
constexpr int MostDifferingPercent = 6;

// A look that is being stored for the first time has nothing to be waited for.
constexpr int SettleMs = 600;

QString storedFile(const QString& name)
{
    return SOURCE_DIR "/tests/screenshots/" + name + ".png";
}

bool differs(QRgb one, QRgb other)
{
    const int distance = std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                                   std::abs(qBlue(one) - qBlue(other))});
    return distance > MostColourDistance;
}

int differingPercent(const QImage& seen, const QImage& stored, const QRect& square)
{
    int count = 0;
    for (int y = square.top(); y <= square.bottom(); ++y) {
        for (int x = square.left(); x <= square.right(); ++x)
            count += differs(seen.pixel(x, y), stored.pixel(x, y)) ? 1 : 0;
    }
    return count * 100 / (SquareSize * SquareSize);
}

QString describeDifference(const QImage& seen, const QImage& stored, const QRect& part)
{
    if (stored.isNull())
        return "there is no stored picture";
    if (seen.size() != stored.size())
        return QString("the size is %1 x %2 and was %3 x %4")
            .arg(seen.width())
            .arg(seen.height())
            .arg(stored.width())
            .arg(stored.height());

    const QRect area = part.isNull() ? seen.rect() : part.intersected(seen.rect());
    for (int y = area.top(); y <= area.bottom(); y += SquareSize) {
        for (int x = area.left(); x <= area.right(); x += SquareSize) {
            const QRect square = QRect(x, y, SquareSize, SquareSize).intersected(area);
            const int percent = differingPercent(seen, stored, square);
            if (percent > MostDifferingPercent)
                return QString("%1 % of the pixels around (%2, %3) differ").arg(percent).arg(x).arg(y);
        }
    }
    return {};
}

void renew(const QString& name, const Window& window, const QRect& part)
{
    QTest::qWait(SettleMs);
    QImage image = window.picture();
    const QImage before(storedFile(name));
    if (!part.isNull() && before.size() == image.size()) {
        const QImage seen = std::exchange(image, before.convertToFormat(image.format()));
        QPainter(&image).drawImage(part, seen, part);
    }
    if (!image.save(storedFile(name)))
        qFatal("cannot write %s", qPrintable(storedFile(name)));
}

} // namespace

QString differenceFrom(const QString& name, const Window& window, const QRect& part)
{
    if (qEnvironmentVariableIsSet("RENEW_SCREENSHOTS")) {
        renew(name, window, part);
        return {};
    }

    const QImage stored(storedFile(name));
    QImage seen;
    QString difference;
    const bool same = QTest::qWaitFor([&] {
        seen = window.picture();
        difference = describeDifference(seen, stored, part);
        return difference.isEmpty();
    });
    if (same)
        return {};

    QDir().mkpath("screenshots");
    seen.save("screenshots/" + name + ".png");
    return QString("%1: %2; see %3")
        .arg(name, difference, QDir("screenshots").absoluteFilePath(name + ".png"));
}
