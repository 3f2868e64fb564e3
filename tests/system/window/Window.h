#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QString>

#include <functional>

class QWidget;

/**
 * A window of the running program on the desktop(). A copy of it in this process tells where its controls
 * are. So a place is given as a widget of the copy, or in pixels from the upper left corner of the window's
 * content.
 */
class Window
{
public:
    /** Waits until a window with exactly this title is on the screen; after ten seconds the test fails. */
    explicit Window(const QString& title);

    /** Waits until a menu or a tooltip is on the screen; after ten seconds the test fails. */
    static Window popup();

    static bool isOnScreen(const QString& title);
    bool isOnScreen() const;

    /** Brings the window to the front and waits until it is there. */
    void activate() const;

    /** Minimises the window. */
    void minimise() const;

    /** The area of a control in this window; the test fails unless window and copy have the same size. */
    QRect areaOf(const QWidget* control) const;

    /** Where to press a control: on the box of a check box, on the handle of a slider, else in its middle. */
    QPoint spotOf(const QWidget* control) const;

    void pointAt(const QPoint& place) const;
    void pointAt(const QWidget* control) const;

    /** Points there and holds the left mouse button down. */
    void press(const QWidget* control) const;

    /** Presses and releases the left mouse button there. */
    void click(const QPoint& place) const;
    void click(const QWidget* control) const;

    /** What the screen shows where the window is. */
    QImage picture() const;

private:
    Window(const std::function<QString()>& find, const QString& description);

    QString id;
};

/** Points at a corner of the screen where there is no window. */
void pointAway();

/** Types letters and digits. */
void type(const QString& text);
