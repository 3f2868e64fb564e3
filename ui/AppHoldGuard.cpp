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
        // A box that opened as the focus came here has held this press up, and the user has let go since.
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
    // The mouse let go outside takes the button up without released(), also when a key holds it.
    if (isMoving && !motionButton->isDown())
        emit motionButton->released();
}

void AppHoldGuard::endMotion()
{
    // Let the mouse go outside: a mouse that still holds the button would press it again when it moves on it.
    const QPoint outside(-1, -1);
    QMouseEvent letGo(QEvent::MouseButtonRelease, outside, motionButton->mapToGlobal(outside), Qt::LeftButton,
                      Qt::NoButton, Qt::NoModifier);
    // Call event() directly, so that the filter does not put drawing off.
    static_cast<QObject*>(motionButton)->event(&letGo);
    if (isMoving)
        emit motionButton->released();
}
