#pragma once

#include <QFocusFrame>

/**
 * A white ring, two pixels wide, around the control of a window that has the keyboard: the style sheets draw
 * most controls the same with and without it. It lies outside the control, changes nothing in it, and is gone
 * while no control of the window has the keyboard. Qt's QFocusFrame keeps it in place.
 */
class AppFocusRing : public QFocusFrame
{
    Q_OBJECT

public:
    /** Follows the keyboard among the controls of this window, which becomes its parent. */
    explicit AppFocusRing(QWidget* window);

protected:
    void paintEvent(QPaintEvent* event) override;

private slots:
    void onFocusChanged(QWidget* old, QWidget* now);

private:
    QWidget* ownWindow;
};
