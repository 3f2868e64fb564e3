#include "ui/AppHoldGuard.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

namespace {

// The press of a repeating key follows its release at once; this much covers a busy machine.
constexpr int KeyRepeatGapMs = 25;

} // namespace

AppHoldGuard::AppHoldGuard(const QList<QAbstractButton*>& motionButtons)
    : buttons(motionButtons)
{
    keyReleaseTimer.setSingleShot(true);
    keyReleaseTimer.setInterval(KeyRepeatGapMs);
    connect(&keyReleaseTimer, SIGNAL(timeout()), this, SLOT(onKeyReleaseDue()));

    for (QAbstractButton* button : std::as_const(buttons))
        button->installEventFilter(this);
}

AppHoldGuard::~AppHoldGuard()
{
    releaseHeldButtons();
}

bool AppHoldGuard::eventFilter(QObject* watched, QEvent* event)
{
    auto* button = static_cast<QAbstractButton*>(watched);
    switch (event->type()) {
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::WindowBlocked:
    case QEvent::WindowDeactivate:
        releaseHeldButtons();
        break;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        if (isKeyRepeat(button, static_cast<QKeyEvent*>(event)))
            return true;
        [[fallthrough]];
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseMove:
        drawLater(button);
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void AppHoldGuard::drawLater(QAbstractButton* button)
{
    button->setUpdatesEnabled(false);
    QTimer::singleShot(0, button, [button] { button->setUpdatesEnabled(true); });
}

bool AppHoldGuard::isKeyRepeat(QAbstractButton* button, const QKeyEvent* event)
{
    const bool isPress = event->type() == QEvent::KeyPress;
    if (isPress && button == waitingButton && event->timestamp() == waitingSince) {
        waitingButton = nullptr;
        return true;
    }
    onKeyReleaseDue();

    // Other platforms tell repeats from real releases by themselves; nothing there has to wait.
    static const bool isX11 = QGuiApplication::platformName() == "xcb";
    if (!isX11 || isPress || !button->isDown())
        return false;

    waitingButton = button;
    waitingKey = event->key();
    waitingSince = event->timestamp();
    keyReleaseTimer.start();
    return true;
}

void AppHoldGuard::onKeyReleaseDue()
{
    if (!waitingButton)
        return;
    QAbstractButton* button = std::exchange(waitingButton, nullptr);
    drawLater(button);
    // Straight to the button: it has passed the filter.
    QKeyEvent release(QEvent::KeyRelease, waitingKey, Qt::NoModifier);
    static_cast<QObject*>(button)->event(&release);
}

void AppHoldGuard::releaseHeldButtons()
{
    waitingButton = nullptr;
    for (QAbstractButton* button : std::as_const(buttons)) {
        if (!button->isDown())
            continue;
        // A mouse button let go outside: otherwise the button would go down again when the mouse, still held,
        // moves on it.
        const QPoint outside(-1, -1);
        QMouseEvent letGo(QEvent::MouseButtonRelease, outside, button->mapToGlobal(outside), Qt::LeftButton,
                          Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(button, &letGo);
        emit button->released();
    }
}
