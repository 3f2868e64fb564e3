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

AppHoldGuard::AppHoldGuard(QWidget* window, const QList<QAbstractButton*>& motion)
    : buttons(window->findChildren<QAbstractButton*>())
    , motionButtons(motion)
{
    keyReleaseTimer.setSingleShot(true);
    keyReleaseTimer.setInterval(KeyRepeatGapMs);
    connect(&keyReleaseTimer, SIGNAL(timeout()), this, SLOT(onKeyReleaseDue()));

    window->installEventFilter(this);
    for (QAbstractButton* button : std::as_const(buttons))
        button->installEventFilter(this);
}

AppHoldGuard::~AppHoldGuard()
{
    releaseHeldButtons();
}

bool AppHoldGuard::eventFilter(QObject* watched, QEvent* event)
{
    auto* button = qobject_cast<QAbstractButton*>(watched);
    switch (event->type()) {
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::WindowBlocked:
    case QEvent::WindowDeactivate:
        releaseHeldButtons();
        break;
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        if (button && isKeyRepeat(button, static_cast<QKeyEvent*>(event)))
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
    if (!motionButtons.contains(button) || !button->updatesEnabled())
        return;
    button->setUpdatesEnabled(false);
    QTimer::singleShot(0, button, [button] { button->setUpdatesEnabled(true); });
}

bool AppHoldGuard::isKeyRepeat(QAbstractButton* button, const QKeyEvent* event)
{
    const bool isPress = event->type() == QEvent::KeyPress;
    if (isPress && button == waitingButton && event->timestamp() == waitingSince) {
        waitingButton = nullptr;
        keyReleaseTimer.stop();
        return true;
    }
    onKeyReleaseDue();

    // Other platforms tell repeats from real releases by themselves; nothing there has to wait.
    static const bool isX11 = QGuiApplication::platformName() == "xcb";
    const bool isButtonKey = event->key() == Qt::Key_Space || event->key() == Qt::Key_Select;
    if (!isX11 || isPress || event->isAutoRepeat() || !isButtonKey || !button->isDown())
        return false;

    waitingButton = button;
    waitingSince = event->timestamp();
    keyReleaseTimer.start();
    return true;
}

void AppHoldGuard::onKeyReleaseDue()
{
    keyReleaseTimer.stop();
    if (!waitingButton)
        return;
    QAbstractButton* button = std::exchange(waitingButton, nullptr);
    drawLater(button);
    // Straight to the button: it has passed the filter.
    QKeyEvent release(QEvent::KeyRelease, Qt::Key_Space, Qt::NoModifier);
    static_cast<QObject*>(button)->event(&release);
}

void AppHoldGuard::releaseHeldButtons()
{
    onKeyReleaseDue();
    for (QAbstractButton* button : std::as_const(buttons)) {
        if (!button->isDown())
            continue;
        // A mouse button let go outside: otherwise the button would go down again when the mouse, still held,
        // moves on it.
        QMouseEvent letGo(QEvent::MouseButtonRelease, QPointF(-1, -1), Qt::LeftButton, Qt::NoButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(button, &letGo);
        emit button->released();
    }
}
