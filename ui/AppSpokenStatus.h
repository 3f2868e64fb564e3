#pragma once

#include <QObject>

class QLabel;

/**
 * Makes a screen reader read the status aloud when the link connects or disconnects. The label gets the
 * accessible role of a notification, which a screen reader reads aloud when it is shown. With Qt 6.8 or later
 * an announcement event is sent instead.
 */
class AppSpokenStatus : public QObject
{
    Q_OBJECT

public:
    /** Announces the text of this label. The main window sets it before. */
    explicit AppSpokenStatus(QLabel* label);

private slots:
    void speak();

private:
    QLabel* statusLabel;
};
