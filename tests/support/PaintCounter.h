#pragma once

#include <QEvent>
#include <QWidget>

#include <functional>
#include <utility>

/** Asks for a drawing of a widget, and counts how often it is drawn from then on. */
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
        if (event->type() == QEvent::Paint) {
            ++count;
            if (const auto action = std::exchange(beforeDrawing, nullptr))
                action();
        }
        return QObject::eventFilter(watched, event);
    }

    /** What to do once, right before the next drawing. */
    void whenDrawn(std::function<void()> action) { beforeDrawing = std::move(action); }

    int count = 0;

private:
    std::function<void()> beforeDrawing;
};
