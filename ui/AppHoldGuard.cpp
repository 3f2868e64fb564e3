#include "ui/AppHoldGuard.h"

#include <QAbstractButton>
#include <QEvent>

AppHoldGuard::AppHoldGuard(QWidget* window, const QList<QAbstractButton*>& guardedButtons)
    : buttons(guardedButtons)
{
    window->installEventFilter(this);
    for (QAbstractButton* button : guardedButtons)
        button->installEventFilter(this);
}

AppHoldGuard::~AppHoldGuard()
{
    releaseHeldButtons();
}

bool AppHoldGuard::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::WindowBlocked:
    case QEvent::WindowDeactivate:
        releaseHeldButtons();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void AppHoldGuard::releaseHeldButtons()
{
    for (QAbstractButton* button : qAsConst(buttons)) {
        if (!button->isDown())
            continue;
        button->setDown(false);
        emit button->released();
    }
}
