#pragma once

#include "system/window/Desktop.h"

#include <QFile>
#include <QRect>
#include <QSet>

struct wl_display;
struct zwlr_virtual_pointer_v1;
struct zwp_virtual_keyboard_v1;

/**
 * The compositor sway. It lists its windows, grim takes the pictures, and the mouse and the keyboard are
 * virtual ones that this process plugs in. Menus and tooltips are in no list: what sway tells the program of
 * them is in its protocol log.
 */
class WaylandDesktop : public Desktop
{
public:
    WaylandDesktop();
    ~WaylandDesktop() override;
    Q_DISABLE_COPY(WaylandDesktop)

    QString findWindow(const QString& title) override;
    QString findPopup() override;
    bool isOnScreen(const QString& window) override;
    QSize sizeOf(const QString& window) override;
    QImage pictureOf(const QString& window) override;
    void activate(const QString& window) override;

    /** sway knows no minimising; its scratchpad takes a window off the screen in the same way. */
    void minimise(const QString& window) override;

    void pointAt(const QPoint& place, const QString& window) override;
    void pressMouse(Qt::MouseButton button) override;
    void releaseMouse(Qt::MouseButton button) override;
    void clickMouse() override;
    void pressKeys(const QStringList& keys) override;
    void holdKey(const QString& key) override;
    void releaseKey(const QString& key) override;
    void changeKeys(const QString& from, const QString& to) override;

private:
    QRect areaOf(const QString& window) const;
    void plugInMouseAndKeyboard();
    void moveMouse(const QPoint& placeOnScreen);
    bool remember(uint code, bool isHeld);
    void setMouse(Qt::MouseButton button, bool isHeld);
    void setKey(const QString& name, bool isHeld);
    void waitForSway();
    void readProtocol();
    void follow(const QString& line);

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
