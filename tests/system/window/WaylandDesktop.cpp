#include "system/window/Desktop.h"

#include "virtual-keyboard-client-protocol.h"
#include "virtual-pointer-client-protocol.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRect>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryFile>
#include <QVector>

#include <linux/input-event-codes.h>
#include <wayland-client.h>

#include <algorithm>

namespace {

// Begins the identifier of a popup; sway identifies its windows by numbers.
constexpr char PopupPrefix[] = "popup ";

/** A window as sway lists it. */
struct SwayWindow
{
    QString id;
    QString title;
    QRect area;
    bool isVisible;
    bool isActive;
};

struct Key
{
    const char* name;
    uint code;
    uint modifier;
};

// The modifiers are bits of the keymap below.
constexpr Key Keys[] = {
    {"shift", KEY_LEFTSHIFT, 1},
    {"alt", KEY_LEFTALT, 8},
    {"space", KEY_SPACE, 0},
    {"Tab", KEY_TAB, 0},
    {"Return", KEY_ENTER, 0},
    {"Escape", KEY_ESC, 0},
    {"Home", KEY_HOME, 0},
    {"End", KEY_END, 0},
    {"Prior", KEY_PAGEUP, 0},
    {"Next", KEY_PAGEDOWN, 0},
    {"Down", KEY_DOWN, 0},
    {"Right", KEY_RIGHT, 0},
    {"F4", KEY_F4, 0},
    {"1", KEY_1, 0},
    {"2", KEY_2, 0},
    {"5", KEY_5, 0},
    {"6", KEY_6, 0},
    {"a", KEY_A, 0},
    {"d", KEY_D, 0},
    {"e", KEY_E, 0},
    {"k", KEY_K, 0},
    {"s", KEY_S, 0},
};

// An ordinary keyboard; the included files come with xkb.
constexpr char Keymap[] = "xkb_keymap {\n"
                          "xkb_keycodes { include \"evdev+aliases(qwerty)\" };\n"
                          "xkb_types { include \"complete\" };\n"
                          "xkb_compatibility { include \"complete\" };\n"
                          "xkb_symbols { include \"pc+us+inet(evdev)\" };\n"
                          "};\n";

const Key& keyNamed(const QString& name)
{
    const auto* key =
        std::find_if(std::begin(Keys), std::end(Keys), [&name](const Key& one) { return name == one.name; });
    if (key == std::end(Keys))
        qFatal("the keyboard has no key %s", qPrintable(name));
    return *key;
}

uint milliseconds()
{
    return static_cast<uint>(QDeadlineTimer::current(Qt::PreciseTimer).deadline());
}

/** The objects of sway that this process uses. */
struct Globals
{
    wl_seat* seat = nullptr;
    zwlr_virtual_pointer_manager_v1* mice = nullptr;
    zwp_virtual_keyboard_manager_v1* keyboards = nullptr;

    template <class Interface>
    static void bind(wl_registry* registry, uint name, const char* offered, const wl_interface& wanted,
                     Interface*& bound)
    {
        if (qstrcmp(offered, wanted.name) == 0)
            bound = static_cast<Interface*>(wl_registry_bind(registry, name, &wanted, 1));
    }
};

void onGlobal(void* data, wl_registry* registry, uint name, const char* interface, uint /*version*/)
{
    auto* globals = static_cast<Globals*>(data);
    Globals::bind(registry, name, interface, wl_seat_interface, globals->seat);
    Globals::bind(registry, name, interface, zwlr_virtual_pointer_manager_v1_interface, globals->mice);
    Globals::bind(registry, name, interface, zwp_virtual_keyboard_manager_v1_interface, globals->keyboards);
}

void onGlobalRemoved(void* /*data*/, wl_registry* /*registry*/, uint /*name*/) {}

constexpr wl_registry_listener RegistryListener{onGlobal, onGlobalRemoved};

QRect toRect(const QJsonObject& rect)
{
    return {rect["x"].toInt(), rect["y"].toInt(), rect["width"].toInt(), rect["height"].toInt()};
}

// The windows below this node of sway's tree.
void appendWindows(const QJsonObject& node, QVector<SwayWindow>& windows)
{
    if (node.contains("pid")) {
        windows.append({QString::number(node["id"].toInt()), node["name"].toString(),
                        toRect(node["rect"].toObject()), node["visible"].toBool(), node["focused"].toBool()});
    }
    for (const char* list : {"nodes", "floating_nodes"}) {
        const QJsonArray children = node[QLatin1String(list)].toArray();
        for (const auto& child : children)
            appendWindows(child.toObject(), windows);
    }
}

QVector<SwayWindow> windows()
{
    QVector<SwayWindow> found;
    appendWindows(QJsonDocument::fromJson(outputOf("swaymsg", {"-t", "get_tree"})).object(), found);
    return found;
}

// The number of an object in an argument of a message: "45" in "new id xdg_popup@45".
QString numberOf(const QString& argument)
{
    static const QRegularExpression number("\\d+$");
    return number.match(argument).captured();
}

/**
 * The compositor sway. It lists its windows, grim takes the pictures, and the mouse and the keyboard are
 * virtual ones of this process. Sway does not list menus and tooltips; they are found in its protocol log.
 */
class WaylandDesktop : public Desktop
{
public:
    WaylandDesktop()
        : display(wl_display_connect(nullptr))
        , protocol(QFileInfo(qEnvironmentVariable("WAYLAND_DISPLAY")).path() + "/protocol.log")
    {
        if (!display)
            qFatal("there is no Wayland display; tests/support/on-wayland makes one");
        if (!protocol.open(QFile::ReadOnly))
            qFatal("there is no %s", qPrintable(protocol.fileName()));
        plugInMouseAndKeyboard();
    }

    ~WaylandDesktop() override { wl_display_disconnect(display); }
    Q_DISABLE_COPY(WaylandDesktop)

    QString findWindow(const QString& title) override
    {
        const auto all = windows();
        for (const SwayWindow& window : all) {
            if (window.isVisible && window.title == title)
                return window.id;
        }
        return {};
    }

    QString findPopup() override
    {
        readProtocol();
        return popup.isDrawn ? PopupPrefix + popup.id : QString();
    }

    bool isOnScreen(const QString& window) override
    {
        if (window == findPopup())
            return true;
        const auto all = windows();
        return std::any_of(all.begin(), all.end(),
                           [&window](const SwayWindow& one) { return one.isVisible && one.id == window; });
    }

    QSize sizeOf(const QString& window) override { return areaOf(window).size(); }

    QImage pictureOf(const QString& window) override
    {
        const QRect area = areaOf(window);
        const QString geometry =
            QString("%1,%2 %3x%4").arg(area.x()).arg(area.y()).arg(area.width()).arg(area.height());
        return QImage::fromData(outputOf("grim", {"-t", "ppm", "-g", geometry, "-"}), "PPM");
    }

    void activate(const QString& window) override { outputOf("swaymsg", {"[con_id=" + window + "] focus"}); }

    // sway cannot minimise; its scratchpad takes a window off the screen in the same way.
    void minimise(const QString& window) override
    {
        outputOf("swaymsg", {"[con_id=" + window + "] move scratchpad"});
    }

    void pointAt(const QPoint& place, const QString& window) override
    {
        const QPoint onScreen = window.isEmpty() ? place : areaOf(window).topLeft() + place;
        // Enter the window one pixel beside and move from there: Qt ignores the place at which the pointer
        // enters.
        moveMouse(onScreen - QPoint(1, 0));
        moveMouse(onScreen);
    }

    void pressMouse(Qt::MouseButton button) override { setMouse(button, true); }

    void releaseMouse(Qt::MouseButton button) override { setMouse(button, false); }

    void clickMouse() override
    {
        setMouse(Qt::LeftButton, true);
        setMouse(Qt::LeftButton, false);
    }

    void pressKeys(const QStringList& keys) override
    {
        for (const QString& combination : keys) {
            QStringList together = combination.split('+');
            for (const QString& key : together)
                holdKey(key);
            std::reverse(together.begin(), together.end());
            for (const QString& key : together)
                releaseKey(key);
        }
    }

    void holdKey(const QString& key) override { setKey(key, true); }

    void releaseKey(const QString& key) override { setKey(key, false); }

    void changeKeys(const QString& from, const QString& to) override
    {
        releaseKey(from);
        holdKey(to);
    }

private:
    void plugInMouseAndKeyboard()
    {
        Globals globals;
        wl_registry* registry = wl_display_get_registry(display);
        wl_registry_add_listener(registry, &RegistryListener, &globals);
        waitForSway();
        if (!globals.seat || !globals.mice || !globals.keyboards)
            qFatal("this compositor has no virtual mouse or keyboard");

        mouse = zwlr_virtual_pointer_manager_v1_create_virtual_pointer(globals.mice, globals.seat);
        keyboard = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(globals.keyboards, globals.seat);

        QTemporaryFile keymap;
        if (!keymap.open() || keymap.write(Keymap, sizeof Keymap) != sizeof Keymap || !keymap.flush())
            qFatal("cannot write %s", qPrintable(keymap.fileName()));
        zwp_virtual_keyboard_v1_keymap(keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, keymap.handle(),
                                       sizeof Keymap);
        waitForSway();
    }

    // Waits until sway has carried out all requests.
    void waitForSway()
    {
        if (wl_display_roundtrip(display) < 0)
            qFatal("sway has gone");
    }

    // The area of a window on the screen.
    QRect areaOf(const QString& window) const
    {
        const bool isPopup = window.startsWith(PopupPrefix);
        const auto all = windows();
        for (const SwayWindow& one : all) {
            if (isPopup && one.isActive)
                return popup.areaInWindow.translated(one.area.topLeft());
            if (one.id == window)
                return one.area;
        }
        return {};
    }

    void moveMouse(const QPoint& placeOnScreen)
    {
        zwlr_virtual_pointer_v1_motion_absolute(
            mouse, milliseconds(), static_cast<uint>(placeOnScreen.x()), static_cast<uint>(placeOnScreen.y()),
            static_cast<uint>(ScreenSize.width()), static_cast<uint>(ScreenSize.height()));
        zwlr_virtual_pointer_v1_frame(mouse);
        waitForSway();
    }

    // Notes whether a key or button is held. Returns whether that is a change: a real one is not released
    // twice.
    bool remember(uint code, bool isHeld)
    {
        const bool wasHeld = held.contains(code);
        if (isHeld)
            held.insert(code);
        else
            held.remove(code);
        return isHeld != wasHeld;
    }

    void setMouse(Qt::MouseButton button, bool isHeld)
    {
        const uint code = button == Qt::LeftButton ? BTN_LEFT : BTN_RIGHT;
        if (!remember(code, isHeld))
            return;
        zwlr_virtual_pointer_v1_button(mouse, milliseconds(), code,
                                       isHeld ? WL_POINTER_BUTTON_STATE_PRESSED
                                              : WL_POINTER_BUTTON_STATE_RELEASED);
        zwlr_virtual_pointer_v1_frame(mouse);
        waitForSway();
    }

    void setKey(const QString& name, bool isHeld)
    {
        const Key& key = keyNamed(name);
        if (!remember(key.code, isHeld))
            return;
        zwp_virtual_keyboard_v1_key(keyboard, milliseconds(), key.code,
                                    isHeld ? WL_KEYBOARD_KEY_STATE_PRESSED : WL_KEYBOARD_KEY_STATE_RELEASED);
        if (key.modifier != 0) {
            heldModifiers ^= key.modifier;
            zwp_virtual_keyboard_v1_modifiers(keyboard, heldModifiers, 0, 0, 0);
        }
        waitForSway();
    }

    void readProtocol()
    {
        for (;;) {
            const qint64 begin = protocol.pos();
            const QByteArray line = protocol.readLine();
            if (!line.endsWith('\n')) {
                protocol.seek(begin);
                return;
            }
            follow(QString::fromLocal8Bit(line));
        }
    }

    // Follows the newest popup from its creation to its end. A program that has just started has none.
    void follow(const QString& line)
    {
        // E.g. "[2365959.457]  -> xdg_popup@45.configure(128, 0, 111, 192)"; newer ones write xdg_popup#45.
        static const QRegularExpression form("(\\w+)[@#](\\d+)\\.(\\w+)\\((.*)\\)");
        const QRegularExpressionMatch found = form.match(line);
        const QString message = found.captured(1) + '.' + found.captured(3);
        const QString id = found.captured(2);
        const QStringList arguments = found.captured(4).split(", ");

        const bool isProgramStart = message == "wl_registry.bind" && arguments.value(1) == "\"xdg_wm_base\"";
        const bool isEnd = message == "xdg_popup.destroy" && id == popup.id;
        if (isProgramStart || isEnd)
            popup = {};
        else if (message == "xdg_wm_base.get_xdg_surface")
            newestSurface = numberOf(arguments.value(1));
        else if (message == "xdg_surface.get_popup")
            popup = {numberOf(arguments.value(0)), newestSurface, {}, false};
        else if (message == "xdg_popup.configure" && id == popup.id)
            popup.areaInWindow = {arguments.value(0).toInt(), arguments.value(1).toInt(),
                                  arguments.value(2).toInt(), arguments.value(3).toInt()};
        else if (message == "wl_surface.attach" && id == popup.surface)
            popup.isDrawn = true;
    }

    wl_display* display;
    zwlr_virtual_pointer_v1* mouse = nullptr;
    zwp_virtual_keyboard_v1* keyboard = nullptr;
    QSet<uint> held;
    uint heldModifiers = 0;

    struct Popup
    {
        QString id;
        QString surface;
        QRect areaInWindow;
        bool isDrawn = false;
    };

    QFile protocol;
    QString newestSurface;
    Popup popup;
};

} // namespace

std::unique_ptr<Desktop> waylandDesktop()
{
    return std::make_unique<WaylandDesktop>();
}
