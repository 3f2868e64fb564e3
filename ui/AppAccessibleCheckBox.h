#pragma once

#include <QAccessibleWidget>

class QCheckBox;

/**
 * A check box as assistive software sees it. Switching it acts as a click of the mouse does; with Qt's own
 * interface the box changes its look, but says nothing of a click, and nothing is stored.
 */
class AppAccessibleCheckBox : public QAccessibleWidget
{
public:
    /** Makes Qt use this interface for every check box from now on. */
    static void install();

    QAccessible::State state() const override;

    /** Switching, and what every widget can do. */
    QStringList actionNames() const override;

    /** Returns at once; the click follows in the event loop, for what it starts may take its time. */
    void doAction(const QString& actionName) override;

private:
    explicit AppAccessibleCheckBox(QCheckBox* box);
    static QAccessibleInterface* create(const QString& className, QObject* object);
};
