#include "ui/AppSpokenStatus.h"

#include "app/VantrelApp.h"
#include "camera/AppVantrelSerial.h"

#include <QAccessibleWidget>
#include <QLabel>

AppSpokenStatus::AppSpokenStatus(QLabel* label)
    : statusLabel(label)
{
    // If an error box was open during the start, a screen reader may already have created an interface for
    // the label. Replace it.
    QAccessibleInterface* earlier = QAccessible::queryAccessibleInterface(label);
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(earlier));
    QAccessible::registerAccessibleInterface(new QAccessibleWidget(label, QAccessible::Notification));
    // The main window connected its slots earlier, so it has set the text before these slots run.
    connect(vantrelApp()->serial, SIGNAL(onDeviceConnected()), this, SLOT(speak()));
    connect(vantrelApp()->serial, SIGNAL(onDeviceDisconnected()), this, SLOT(speak()));
    if (!label->text().isEmpty())
        speak();
}

void AppSpokenStatus::speak()
{
    statusLabel->setAccessibleName(statusLabel->text());
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    QAccessibleAnnouncementEvent notice(statusLabel, statusLabel->text());
#else
    QAccessibleEvent notice(statusLabel, QAccessible::ObjectShow);
#endif
    QAccessible::updateAccessibility(&notice);
}
