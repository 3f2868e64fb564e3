#include "ui/AppHoldGuard.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QMouseEvent>

AppHoldGuard::AppHoldGuard(QAbstractButton* button)
    : motionButton(button)
{
    connect(button, &QAbstractButton::pressed, this, [this] { isMoving = true; });
    connect(button, &QAbstractButton::released, this, [this] { isMoving = false; });
    nextTurn.setSingleShot(true);
    connect(&nextTurn, SIGNAL(timeout()), this, SLOT(catchUp()));
    button->installEventFilter(this);
}

AppHoldGuard::~AppHoldGuard()
{
    endMotion();
}

bool AppHoldGuard::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::WindowBlocked:
    case QEvent::WindowDeactivate:
        endMotion();
        break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        // The change of focus before this press may have opened a message box. If the user has let go of the
        // mouse while it was open, drop the press.
        if (event->spontaneous() && QGuiApplication::mouseButtons() == Qt::NoButton)
            return true;
        [[fallthrough]];
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::MouseButtonRelease:
        motionButton->setUpdatesEnabled(false);
        nextTurn.start();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void AppHoldGuard::catchUp()
{
    motionButton->setUpdatesEnabled(true);
    // A mouse release outside the button raises it without released(), even while a key holds it down.
    if (isMoving && !motionButton->isDown())
        emit motionButton->released();
}

void AppHoldGuard::endMotion()
{
    // Simulate a mouse release outside the button. After setDown(false) alone, a move of the mouse over the
    // button would press it again while the user still holds the mouse button.
    const QPoint outside(-1, -1);
    QMouseEvent letGo(QEvent::MouseButtonRelease, outside, motionButton->mapToGlobal(outside), Qt::LeftButton,
                      Qt::NoButton, Qt::NoModifier);
    // Call event() directly, so that our filter does not postpone the redrawing.
    static_cast<QObject*>(motionButton)->event(&letGo);
    if (isMoving)
        emit motionButton->released();
}
