#include "system/window/Desktop.h"

#include <QRegularExpression>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace {

struct Free
{
    void operator()(void* reply) const { std::free(reply); }
};

/** An answer of the server; null if it refuses, because the window is gone. */
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

// The windows on the screen that match, one identifier in each line.
QString search(const QStringList& conditions)
{
    QString found;
    // If a window closes while xdotool looks at it, the search fails; repeat it.
    do
        found = xdotool(QStringList{"search", "--onlyvisible"} + conditions);
    while (found.contains("BadWindow"));
    return found;
}

/** An X server with a window manager; xdotool finds the windows and is the mouse and the keyboard. */
class X11Desktop : public Desktop
{
public:
    X11Desktop()
        : server(xcb_connect(nullptr, nullptr))
    {
        if (xcb_connection_has_error(server))
            qFatal("there is no X11 display; tests/support/on-display makes one");
    }

    ~X11Desktop() override { xcb_disconnect(server); }
    Q_DISABLE_COPY(X11Desktop)

    QString findWindow(const QString& title) override
    {
        return search({"--name", '^' + QRegularExpression::escape(title) + '$'});
    }

    QString findPopup() override
    {
        // The window manager puts every other window of the program into a frame.
        return search({"--maxdepth", "1", "--class", ProgramClass});
    }

    bool isOnScreen(const QString& window) override
    {
        const auto request = xcb_get_window_attributes(server, window.toUInt());
        const Reply<xcb_get_window_attributes_reply_t> attributes(
            xcb_get_window_attributes_reply(server, request, nullptr));
        return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    }

    QSize sizeOf(const QString& window) override
    {
        const Reply<xcb_get_geometry_reply_t> geometry(
            xcb_get_geometry_reply(server, xcb_get_geometry(server, window.toUInt()), nullptr));
        return geometry ? QSize(geometry->width, geometry->height) : QSize();
    }

    QImage pictureOf(const QString& window) override
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

    void activate(const QString& window) override { xdotool({"windowactivate", "--sync", window}); }

    void minimise(const QString& window) override { xdotool({"windowminimize", "--sync", window}); }

    void pointAt(const QPoint& place, const QString& window) override
    {
        const QStringList origin = window.isEmpty() ? QStringList() : QStringList({"--window", window});
        xdotool(QStringList("mousemove") + origin +
                QStringList({QString::number(place.x()), QString::number(place.y())}));
    }

    void pressMouse(Qt::MouseButton button) override { xdotool({"mousedown", buttonNumber(button)}); }

    void releaseMouse(Qt::MouseButton button) override { xdotool({"mouseup", buttonNumber(button)}); }

    void clickMouse() override { xdotool({"click", buttonNumber(Qt::LeftButton)}); }

    void pressKeys(const QStringList& keys) override { xdotool(QStringList("key") + keys); }

    void holdKey(const QString& key) override { xdotool({"keydown", key}); }

    void releaseKey(const QString& key) override { xdotool({"keyup", key}); }

    void changeKeys(const QString& from, const QString& to) override
    {
        xdotool({"keyup", "--delay", "0", from, "keydown", "--delay", "0", to});
    }

private:
    xcb_connection_t* server;
};

} // namespace

std::unique_ptr<Desktop> x11Desktop()
{
    return std::make_unique<X11Desktop>();
}
