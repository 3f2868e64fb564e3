#pragma once

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>

/** Moves the mouse with its left button held. The pressed widget gets the move, wherever the pointer is. */
inline void moveHeldPointer(QWidget* widget, const QPoint& position)
{
    QMouseEvent move(QEvent::MouseMove, position, widget->mapToGlobal(position), Qt::NoButton, Qt::LeftButton,
                     Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
}
