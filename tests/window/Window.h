#pragma once

#include <QImage>
#include <QPoint>
#include <QString>
#include <QStringList>

/**
 * A window of the running program, used as a person uses it: through the screen, the pointer and the keyboard
 * of the X server. Places are in pixels from the upper left corner of the window's content.
 */
class Window
{
public:
    /** Waits until a window with exactly this title is on the screen; after ten seconds the test fails. */
    explicit Window(const QString& title);

    /** Waits until a menu or a tooltip is on the screen, which has no title; after ten seconds the test
     * fails. */
    static Window popup();

    static bool isOnScreen(const QString& title);
    bool isOnScreen() const;

    /** Brings the window to the front and waits until it has the keyboard. */
    void activate() const;

    /** Takes the window off the screen as its minimise button does. */
    void minimise() const;

    void pointAt(const QPoint& place) const;

    /** Points at the place and holds the left mouse button down there. */
    void press(const QPoint& place) const;

    /** Presses and releases there, at the pace of a quick finger. */
    void click(const QPoint& place) const;

    /** What the screen shows where the window is. */
    QImage picture() const;

private:
    Window(const QStringList& conditions, const QString& description);

    QString id;
};

/** Lets the left mouse button go. */
void releaseMouse();

/** Points at the corner of the screen where no window is. */
void pointAway();

/** Presses keys and lets each go, one after the other, e.g. {"Tab", "alt+F4"}, in the window that has the
 * keyboard. */
void pressKeys(const QStringList& keys);

/** Holds a key down until releaseKey(); the X server repeats it as it repeats a key of a real keyboard. */
void holdKey(const QString& key);
void releaseKey(const QString& key);

void type(const QString& text);
