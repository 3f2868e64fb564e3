#include "system/window/Looks.h"

#include "support/Form.h"

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QSlider>
#include <QStyle>
#include <QSysInfo>
#include <QtTest>

#include <algorithm>
#include <cstdlib>

namespace {

// A pixel differs if one of its colours differs by more than this distance. In every small square a share of
// the pixels may differ: enough for letters that are smoothed otherwise, too little for a missing word,
// another symbol, or an edge that has moved by three pixels.
constexpr int MostColourDistance = 12;
constexpr int SquareSize = 16;
constexpr int MostDifferingPercent = 6;

// A new picture cannot be compared with a stored one. So give the window this time to settle.
constexpr int SettleMs = 600;

constexpr char Folder[] = SOURCE_DIR "/tests/system/screenshots/";
constexpr char Readme[] = SOURCE_DIR "/tests/system/screenshots/README.md";

constexpr QRgb Grey = 0xff808080;
constexpr QRgb LightGrey = 0xffc9c9c9;
constexpr QRgb AlmostBlack = 0xff474747;

// In the order of an image's frames.
constexpr const char* States[] = {"at rest", "under the pointer", "pressed"};
constexpr QRgb StateColours[] = {Grey, LightGrey, AlmostBlack};

QString storedFile(const QString& name)
{
    return Folder + name + ".png";
}

QString presentSystem()
{
    return QString("Qt %1 on %2").arg(qVersion(), QSysInfo::prettyProductName());
}

// The README.md beside pictures that were made on this system.
QByteArray readmeOf(const QString& system)
{
    return QString("The windows as tests/system/renew-screenshots has stored them, with\n\n"
                   "    %1\n\n"
                   "and the font of `tests/system/window/fonts.conf`. They are compared there, and nowhere "
                   "else.\n")
        .arg(system)
        .toUtf8();
}

bool differs(QRgb one, QRgb other)
{
    const int distance = std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                                   std::abs(qBlue(one) - qBlue(other))});
    return distance > MostColourDistance;
}

int differingPercent(const QImage& seen, const QImage& expected, const QRect& square)
{
    int count = 0;
    for (int y = square.top(); y <= square.bottom(); ++y) {
        for (int x = square.left(); x <= square.right(); ++x)
            count += differs(seen.pixel(x, y), expected.pixel(x, y)) ? 1 : 0;
    }
    return count * 100 / (SquareSize * SquareSize);
}

QString differenceBetween(const QImage& seen, const QImage& expected)
{
    if (seen.size() != expected.size())
        return QString("the size is %1 x %2 and not %3 x %4")
            .arg(seen.width())
            .arg(seen.height())
            .arg(expected.width())
            .arg(expected.height());

    for (int y = 0; y < seen.height(); y += SquareSize) {
        for (int x = 0; x < seen.width(); x += SquareSize) {
            const QRect square = QRect(x, y, SquareSize, SquareSize).intersected(seen.rect());
            const int percent = differingPercent(seen, expected, square);
            if (percent > MostDifferingPercent)
                return QString("%1 % of the pixels around (%2, %3) differ").arg(percent).arg(x).arg(y);
        }
    }
    return {};
}

// Waits until the comparison finds no difference. If one remains, keeps what is seen as a file of this name.
QString lastingDifference(const QString& name, const Window& window,
                          const std::function<QString(const QImage& seen)>& compare)
{
    QImage seen;
    QString difference;
    const bool same = QTest::qWaitFor([&] {
        seen = window.picture();
        difference = compare(seen);
        return difference.isEmpty();
    });
    if (same)
        return {};

    QDir().mkpath("screenshots");
    const QString file = QDir("screenshots").absoluteFilePath(name + ".png");
    seen.save(file);
    return QString("%1: %2; see %3").arg(name, difference, file);
}

void renew(const QString& name, const Window& window)
{
    QTest::qWait(SettleMs);
    QFile readme(Readme);
    if (!window.picture().save(storedFile(name)) || !readme.open(QFile::WriteOnly) ||
        readme.write(readmeOf(presentSystem())) < 0)
        qFatal("cannot write to %s", Folder);
}

QString shownColour(QRgb colour)
{
    const auto* known = std::find(std::begin(StateColours), std::end(StateColours), colour);
    return known == std::end(StateColours) ? QColor(colour).name() : States[known - std::begin(StateColours)];
}

// The image on a button; empty if it has a text instead.
QString imageOf(const QString& button)
{
    if (button == SettingsButton.name)
        return SettingsButton.image;
    const auto* found = std::find_if(std::begin(ImageButtons), std::end(ImageButtons),
                                     [&button](const ImageButton& one) { return button == one.name; });
    return found == std::end(ImageButtons) ? QString() : found->image;
}

// The part of a control that is drawn: of an image button only the image.
QRect seenArea(const Window& window, const QWidget* control)
{
    const QRect area = window.areaOf(control);
    const QString image = imageOf(control->objectName());
    if (image.isEmpty())
        return area;
    const int side = QImage(":/assets/" + image).width();
    return QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, {side, side}, area);
}

QString shownFrame(const QImage& seen, const QString& image)
{
    for (int frame = 0; frame < 3; ++frame) {
        if (seen == buttonWithFrame(seen.size(), image, frame).convertToFormat(seen.format()))
            return States[frame];
    }
    return "no frame of " + image;
}

} // namespace

QString differenceFromCopy(const Window& window, QWidget* copy)
{
    const QRect part = window.areaOf(copy);
    const QString name = QString(copy->metaObject()->className()) + '-' + copy->objectName();
    return lastingDifference(name, window, [&](const QImage& seen) {
        return differenceBetween(seen.copy(part), copy->window()->grab(part).toImage());
    });
}

QString whyPicturesAreLeftOut()
{
    QFile readme(Readme);
    if (!readme.open(QFile::ReadOnly))
        return readme.errorString();
    if (readme.readAll() == readmeOf(presentSystem()))
        return {};
    return QString("the stored pictures are not compared with %1, but with what %2 says")
        .arg(presentSystem(), Readme);
}

QString differenceFromPicture(const QString& name, const Window& window)
{
    if (qEnvironmentVariableIsSet("RENEW_SCREENSHOTS")) {
        renew(name, window);
        return {};
    }
    if (!whyPicturesAreLeftOut().isEmpty())
        return {};

    const QImage stored(storedFile(name));
    return lastingDifference(name, window,
                             [&](const QImage& seen) { return differenceBetween(seen, stored); });
}

QString stateShown(const Window& window, const QWidget* control)
{
    const QImage seen = window.picture().copy(seenArea(window, control));
    if (const auto* slider = qobject_cast<const QSlider*>(control))
        return shownColour(seen.pixel(handle(slider).center()));
    const QString image = imageOf(control->objectName());
    if (!image.isEmpty())
        return shownFrame(seen, image);
    const QPoint besideTheText(6, seen.height() / 2);
    return shownColour(seen.pixel(besideTheText));
}
