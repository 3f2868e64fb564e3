#include "ui/AppSpokenField.h"

#include <QCoreApplication>
#include <QFocusEvent>
#include <QLineEdit>

AppSpokenField::AppSpokenField(QLineEdit* field)
    : QObject(field)
{
    field->installEventFilter(this);
}

bool AppSpokenField::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::FocusIn || !static_cast<QLineEdit*>(watched)->text().isEmpty())
        return false;
    const Qt::FocusReason reason = static_cast<QFocusEvent*>(event)->reason();
    if (reason != Qt::TabFocusReason && reason != Qt::BacktabFocusReason)
        return false;

    QFocusEvent withoutSelection(QEvent::FocusIn, Qt::OtherFocusReason);
    QCoreApplication::sendEvent(watched, &withoutSelection);
    return true;
}
