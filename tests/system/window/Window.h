#pragma once

#include <QImage>
#include <QPoint>
#include <QRect>
#include <QString>

#include <functional>

class QWidget;

/**
 * A window of the running program on the desktop(). Where its controls are is known from a copy of it in this
 * process: a place is given by a widget of the copy, which stands for where one presses it, or in pixels from
 * the upper left corner of the window's content.
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

    /** Brings the window to the front and waits until it is there. */
    void activate() const;

    /** Takes the window off the screen as its minimise button does. */
    void minimise() const;

    /** Where this window has what its copy has there; the test fails unless both have the same size. */
    QRect areaOf(const QWidget* control) const;

    /** Where one presses the control: on the box of a check box, the handle of a slider, the middle of any
     * other. */
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

/** Points at the corner of the screen where no window is. */
void pointAway();

/** Types letters and digits. */
void type(const QString& text);
