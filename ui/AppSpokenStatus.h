#pragma once

#include <QObject>

class QLabel;

/**
 * Has a screen reader speak the status each time that the link connects or disconnects. For assistive
 * software the label is a notification, which is read aloud as soon as it is shown; from Qt 6.8 on it is an
 * announcement.
 */
class AppSpokenStatus : public QObject
{
    Q_OBJECT

public:
    /** Speaks the text of this label, which the main window sets before. */
    explicit AppSpokenStatus(QLabel* label);

private slots:
    void speak();

private:
    QLabel* statusLabel;
};
