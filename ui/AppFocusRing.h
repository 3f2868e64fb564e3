#pragma once

#include <QFocusFrame>

/**
 * A white ring, two pixels wide, around what the user sees of the control that has the keyboard: its picture,
 * or the whole control. The style's own mark of the focus, which would lie over the picture, is left out. The
 * ring changes nothing inside the control, and it is hidden while no control of the window has the keyboard.
 * Qt's QFocusFrame keeps it in place.
 */
class AppFocusRing : public QFocusFrame
{
    Q_OBJECT

public:
    /** Follows the keyboard among the controls of this window, which becomes its parent and has its form
     * already. */
    explicit AppFocusRing(QWidget* window);

protected:
    void paintEvent(QPaintEvent* event) override;

private slots:
    void onFocusChanged(QWidget* old, QWidget* now);

private:
    QRect markedArea() const;

    QWidget* ownWindow;
};
