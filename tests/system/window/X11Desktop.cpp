#include "system/window/X11Desktop.h"

#include <QRegularExpression>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace {

struct Free
{
    void operator()(void* reply) const { std::free(reply); }
};

/** What the server answers; nothing if it refuses, because the window has gone. */
template <class Type> using Reply = std::unique_ptr<Type, Free>;

constexpr char ProgramClass[] = "^Vantrel$";

QString buttonNumber(Qt::MouseButton button)
{
    return button == Qt::LeftButton ? "1" : "3";
}

QString xdotool(const QStringList& arguments)
{
    return QString::fromLocal8Bit(outputOf("xdotool", arguments)).trimmed();
}

// The windows on the screen that match, one identifier a line.
QString search(const QStringList& conditions)
{
    QString found;
    // A window that goes while xdotool looks at it ends the search.
    do
        found = xdotool(QStringList{"search", "--onlyvisible"} + conditions);
    while (found.contains("BadWindow"));
    return found;
}

} // namespace

X11Desktop::X11Desktop()
    : server(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(server))
        qFatal("there is no X11 display; tests/support/on-display makes one");
}

X11Desktop::~X11Desktop()
{
    xcb_disconnect(server);
}

QString X11Desktop::findWindow(const QString& title)
{
    return search({"--name", '^' + QRegularExpression::escape(title) + '$'});
}

QString X11Desktop::findPopup()
{
    // The window manager puts every other window of the program into a frame.
    return search({"--maxdepth", "1", "--class", ProgramClass});
}

bool X11Desktop::isOnScreen(const QString& window)
{
    const auto request = xcb_get_window_attributes(server, window.toUInt());
    const Reply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(server, request, nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

QSize X11Desktop::sizeOf(const QString& window)
{
    const Reply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(server, xcb_get_geometry(server, window.toUInt()), nullptr));
    return geometry ? QSize(geometry->width, geometry->height) : QSize();
}

QImage X11Desktop::pictureOf(const QString& window)
{
    const QSize size = sizeOf(window);
    const auto width = static_cast<quint16>(size.width());
    const auto height = static_cast<quint16>(size.height());
    constexpr quint32 allPlanes = ~0U;
    const auto request =
        xcb_get_image(server, XCB_IMAGE_FORMAT_Z_PIXMAP, window.toUInt(), 0, 0, width, height, allPlanes);
    const Reply<xcb_get_image_reply_t> image(xcb_get_image_reply(server, request, nullptr));
    if (!image)
        return {};
    return QImage(xcb_get_image_data(image.get()), width, height, QImage::Format_RGB32).copy();
}

void X11Desktop::activate(const QString& window)
{
    xdotool({"windowactivate", "--sync", window});
}

void X11Desktop::minimise(const QString& window)
{
    xdotool({"windowminimize", "--sync", window});
}

void X11Desktop::pointAt(const QPoint& place, const QString& window)
{
    const QStringList origin = window.isEmpty() ? QStringList() : QStringList({"--window", window});
    xdotool(QStringList("mousemove") + origin +
            QStringList({QString::number(place.x()), QString::number(place.y())}));
}

void X11Desktop::pressMouse(Qt::MouseButton button)
{
    xdotool({"mousedown", buttonNumber(button)});
}

void X11Desktop::releaseMouse(Qt::MouseButton button)
{
    xdotool({"mouseup", buttonNumber(button)});
}

void X11Desktop::clickMouse()
{
    xdotool({"click", buttonNumber(Qt::LeftButton)});
}

void X11Desktop::pressKeys(const QStringList& keys)
{
    xdotool(QStringList("key") + keys);
}

void X11Desktop::holdKey(const QString& key)
{
    xdotool({"keydown", key});
}

void X11Desktop::releaseKey(const QString& key)
{
    xdotool({"keyup", key});
}

void X11Desktop::changeKeys(const QString& from, const QString& to)
{
    xdotool({"keyup", "--delay", "0", from, "keydown", "--delay", "0", to});
}
