#pragma once

#include "system/window/Desktop.h"

struct xcb_connection_t;

/** An X server with a window manager; xdotool finds the windows and is the mouse and the keyboard. */
class X11Desktop : public Desktop
{
public:
    X11Desktop();
    ~X11Desktop() override;
    Q_DISABLE_COPY(X11Desktop)

    QString findWindow(const QString& title) override;
    QString findPopup() override;
    bool isOnScreen(const QString& window) override;
    QSize sizeOf(const QString& window) override;
    QImage pictureOf(const QString& window) override;
    void activate(const QString& window) override;
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
    xcb_connection_t* server;
};
