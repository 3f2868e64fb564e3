#pragma once

#include <QEvent>
#include <QWidget>

/** Counts how often a widget is drawn, from a first time on that it asks for. */
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget)
    {
        widget->installEventFilter(this);
        widget->update();
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++count;
        return QObject::eventFilter(watched, event);
    }

    int count = 0;
};
