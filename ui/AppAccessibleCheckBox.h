#pragma once

#include <QAccessibleWidget>

class QCheckBox;

/**
 * The accessible interface of a check box. Its toggle action acts like a mouse click. Qt's own interface
 * changes the check mark without clicked(), so the setting would not be stored.
 */
class AppAccessibleCheckBox : public QAccessibleWidget
{
public:
    /** Makes Qt use this interface for every check box. Call it before the check boxes exist. */
    static void install();

    QAccessible::State state() const override;

    /** The toggle action and the actions of every widget. */
    QStringList actionNames() const override;

    /** Returns at once. The event loop makes the click later, because its slot may take long. */
    void doAction(const QString& actionName) override;

private:
    explicit AppAccessibleCheckBox(QCheckBox* box);
    static QAccessibleInterface* create(const QString& className, QObject* object);
};
