#pragma once

#include <QFocusFrame>

/**
 * A white ring, two pixels wide, around the control that has the focus, or around the picture of an image
 * button. It replaces the style's own focus mark, which would be drawn over the picture. The ring is hidden
 * while no control of the window has the focus. QFocusFrame keeps it in place.
 *
 * It also replaces the style of the window and its buttons by one that is based on the desktop's style. The
 * new style draws no focus mark, and combo boxes open their lists below them instead of as menus over them.
 */
class AppFocusRing : public QFocusFrame
{
    Q_OBJECT

public:
    /** Follows the focus among the controls of this window, which becomes its parent. The controls have to
     * exist already. */
    explicit AppFocusRing(QWidget* window);

protected:
    void paintEvent(QPaintEvent* event) override;

private slots:
    void onFocusChanged(QWidget* old, QWidget* now);

private:
    QRect markedArea() const;

    QWidget* ownWindow;
};
