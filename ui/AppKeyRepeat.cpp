#include "ui/AppKeyRepeat.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>

#include <utility>

// X11 sends a repeat's press right after its release; wait this long for it.
static constexpr int RepeatGapMs = 25;

AppKeyRepeat::AppKeyRepeat(QWidget* window)
    : QObject(window)
{
    waitingTime.setSingleShot(true);
    connect(&waitingTime, SIGNAL(timeout()), this, SLOT(release()));
    const auto buttons = window->findChildren<QAbstractButton*>();
    for (QAbstractButton* button : buttons)
        button->installEventFilter(this);
}

AppKeyRepeat::~AppKeyRepeat()
{
    release();
}

bool AppKeyRepeat::eventFilter(QObject* watched, QEvent* event)
{
    if (isReleasing)
        return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::FocusOut || event->type() == QEvent::MouseButtonPress)
        release();
    if (event->type() != QEvent::KeyPress && event->type() != QEvent::KeyRelease)
        return QObject::eventFilter(watched, event);

    const bool isPress = event->type() == QEvent::KeyPress;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (isPress && waitingButton && key->key() == waitingKey && key->timestamp() == waitingSince) {
        waitingButton = nullptr;
        return true;
    }
    release();

    // Hold back only a release that may raise the button: a held arrow key has to keep moving the focus.
    const auto* button = static_cast<QAbstractButton*>(watched);
    if (isPress || key->isAutoRepeat() || (key->key() != Qt::Key_Space && !button->isDown()))
        return QObject::eventFilter(watched, event);

    waitingButton = watched;
    waitingKey = key->key();
    waitingSince = key->timestamp();
    waitingTime.start(RepeatGapMs);
    return true;
}

void AppKeyRepeat::release()
{
    if (!waitingButton)
        return;
    QKeyEvent event(QEvent::KeyRelease, waitingKey, Qt::NoModifier);
    const QScopedValueRollback<bool> passing(isReleasing, true);
    QCoreApplication::sendEvent(std::exchange(waitingButton, nullptr), &event);
}
