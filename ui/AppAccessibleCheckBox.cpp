#include "ui/AppAccessibleCheckBox.h"

#include <QCheckBox>

AppAccessibleCheckBox::AppAccessibleCheckBox(QCheckBox* box)
    : QAccessibleWidget(box, QAccessible::CheckBox, box->text())
{
}

void AppAccessibleCheckBox::install()
{
    QAccessible::installFactory(create);
}

QAccessibleInterface* AppAccessibleCheckBox::create(const QString&, QObject* object)
{
    auto* box = qobject_cast<QCheckBox*>(object);
    return box ? new AppAccessibleCheckBox(box) : nullptr;
}

QAccessible::State AppAccessibleCheckBox::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    state.checkable = true;
    state.checked = static_cast<QCheckBox*>(widget())->isChecked();
    return state;
}

QStringList AppAccessibleCheckBox::actionNames() const
{
    return QStringList(toggleAction()) + QAccessibleWidget::actionNames();
}

void AppAccessibleCheckBox::doAction(const QString& actionName)
{
    if (actionName == toggleAction())
        QMetaObject::invokeMethod(widget(), "click", Qt::QueuedConnection);
    else
        QAccessibleWidget::doAction(actionName);
}
