#include "window/Window.h"

#include <QGuiApplication>
#include <QPixmap>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QtTest>

namespace {

constexpr char ProgramClass[] = "^Vantrel$";
constexpr int AppearMs = 10000;

// What xdotool prints, its errors included. That an action failed shows in what the window does then.
QString xdotool(const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start("xdotool", arguments);
    if (!process.waitForFinished())
        qFatal("xdotool %s: %s", qPrintable(arguments.join(' ')), qPrintable(process.errorString()));
    return QString::fromLocal8Bit(process.readAll()).trimmed();
}

QStringList titled(const QString& title)
{
    return {"--name", '^' + QRegularExpression::escape(title) + '$'};
}

// The windows on the screen that match, one identifier a line.
QString findWindows(const QStringList& conditions)
{
    QString found;
    // A window that goes while xdotool looks at it ends the search.
    do
        found = xdotool(QStringList{"search", "--onlyvisible"} + conditions);
    while (found.contains("BadWindow"));
    return found;
}

QStringList pointing(const QString& window, const QPoint& place)
{
    return {"mousemove", "--window", window, QString::number(place.x()), QString::number(place.y())};
}

} // namespace

Window::Window(const QString& title)
    : Window(titled(title), title)
{
}

Window Window::popup()
{
    // The window manager puts every other window of the program into a frame.
    return Window({"--maxdepth", "1", "--class", ProgramClass}, "a menu or tooltip");
}

Window::Window(const QStringList& conditions, const QString& description)
{
    static_cast<void>(QTest::qWaitFor(
        [&] {
            id = findWindows(conditions);
            return !id.isEmpty();
        },
        AppearMs));
    if (id.isEmpty())
        QTest::qFail(qPrintable("not on the screen: " + description), __FILE__, __LINE__);
}

bool Window::isOnScreen(const QString& title)
{
    return !findWindows(titled(title)).isEmpty();
}

bool Window::isOnScreen() const
{
    return findWindows({"--class", ProgramClass}).split('\n').contains(id);
}

void Window::activate() const
{
    xdotool({"windowactivate", "--sync", id});
    // A minimised window is active already while it is still on its way back.
    QTRY_VERIFY(isOnScreen());
}

void Window::minimise() const
{
    xdotool({"windowminimize", "--sync", id});
}

void Window::pointAt(const QPoint& place) const
{
    xdotool(pointing(id, place));
}

void Window::press(const QPoint& place) const
{
    xdotool(pointing(id, place) + QStringList{"mousedown", "1"});
}

void Window::click(const QPoint& place) const
{
    xdotool(pointing(id, place) + QStringList{"click", "1"});
}

QImage Window::picture() const
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(static_cast<WId>(id.toULongLong()))
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

void releaseMouse()
{
    xdotool({"mouseup", "1"});
}

void pointAway()
{
    const QPoint corner = QGuiApplication::primaryScreen()->geometry().bottomRight();
    xdotool({"mousemove", QString::number(corner.x()), QString::number(corner.y())});
}

void pressKeys(const QStringList& keys)
{
    xdotool(QStringList("key") + keys);
}

void holdKey(const QString& key)
{
    xdotool({"keydown", key});
}

void releaseKey(const QString& key)
{
    xdotool({"keyup", key});
}

void type(const QString& text)
{
    xdotool({"type", text});
}
