#include "ui/AppSettingsPlace.h"

#include <QDialog>
#include <QEvent>
#include <QScreen>
#include <QWindow>

AppSettingsPlace::AppSettingsPlace(QDialog* settings)
{
    settings->installEventFilter(this);
}

bool AppSettingsPlace::eventFilter(QObject* watched, QEvent* event)
{
    auto* settings = static_cast<QDialog*>(watched);
    const QWidget* controller = settings->parentWidget();
    if (event->type() != QEvent::Show)
        return QObject::eventFilter(watched, event);

    settings->removeEventFilter(this);
    // The settings window's frame is not known yet. Assume that it is as wide as the main window's.
    const QRect screen = controller->windowHandle()->screen()->availableGeometry();
    const QRect own = controller->frameGeometry();
    const int width = settings->width() + own.width() - controller->width();
    const bool fitsAtTheRight = own.x() + own.width() + width <= screen.x() + screen.width();
    const int offset = fitsAtTheRight ? own.width() : qMax(screen.x() - own.x(), -width);
    // Do not use move(): on X11 Qt does not know the frame of a hidden window.
    settings->setGeometry({controller->geometry().topLeft() + QPoint(offset, 0), settings->size()});
    return false;
}
