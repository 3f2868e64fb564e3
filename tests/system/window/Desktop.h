#pragma once

#include <QByteArray>
#include <QImage>
#include <QPoint>
#include <QSize>
#include <QString>
#include <QStringList>

#include <memory>

/**
 * The display that shows the program, with a mouse and a keyboard: what a person sees and does, on X11 and on
 * Wayland. Windows are named by identifiers.
 */
class Desktop
{
public:
    /** In pixels; tests/support/on-display and sway/config make it. */
    static constexpr QSize ScreenSize{1280, 1024};

    Desktop() = default;
    virtual ~Desktop() = default;
    Q_DISABLE_COPY(Desktop)

    /** The window with exactly this title; empty if there is none on the screen. */
    virtual QString findWindow(const QString& title) = 0;

    /** The program's menu or tooltip, which has no title; empty if there is none on the screen. */
    virtual QString findPopup() = 0;

    virtual bool isOnScreen(const QString& window) = 0;

    virtual QSize sizeOf(const QString& window) = 0;

    /** What the screen shows where the window is. */
    virtual QImage pictureOf(const QString& window) = 0;

    /** Brings the window to the front and gives it the focus. */
    virtual void activate(const QString& window) = 0;

    /** Takes the window off the screen until it is activated. */
    virtual void minimise(const QString& window) = 0;

    /**
     * Moves the pointer.
     *
     * @param place in pixels from the upper left corner of the window's content, or of the screen if no
     * window is given
     */
    virtual void pointAt(const QPoint& place, const QString& window = {}) = 0;

    /** Presses a button of the mouse, or releases it. */
    virtual void pressMouse(Qt::MouseButton button = Qt::LeftButton) = 0;
    virtual void releaseMouse(Qt::MouseButton button = Qt::LeftButton) = 0;

    /** Presses and releases the left button at once: a menu takes a slow click for two clicks. */
    virtual void clickMouse() = 0;

    /**
     * Presses and releases keys, one after the other, in the window that has the focus.
     *
     * @param keys the names of X11's key symbols, e.g. {"Tab", "alt+F4"}
     */
    virtual void pressKeys(const QStringList& keys) = 0;

    /** Holds a key down until releaseKey(); meanwhile it repeats as a key of any keyboard does. */
    virtual void holdKey(const QString& key) = 0;
    virtual void releaseKey(const QString& key) = 0;

    /** Releases a key and presses another at the same moment. */
    virtual void changeKeys(const QString& from, const QString& to) = 0;
};

/** The display on which the program is shown, as QT_QPA_PLATFORM says. */
Desktop& desktop();

/** An X server with a window manager. */
std::unique_ptr<Desktop> x11Desktop();

/** The compositor sway. */
std::unique_ptr<Desktop> waylandDesktop();

/** What a tool of the display prints, its errors included; ends the test if it cannot be run. */
QByteArray outputOf(const QString& tool, const QStringList& arguments);
