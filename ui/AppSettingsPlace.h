#pragma once

#include <QObject>

class QDialog;

/**
 * Puts the settings window beside the main window when it first opens, so that the user can try a speed while
 * setting it. Later it opens where the user has left it.
 */
class AppSettingsPlace : public QObject
{
    Q_OBJECT

public:
    /** Places this window beside its parent when it is first shown. */
    explicit AppSettingsPlace(QDialog* settings);

    /** Moves the window right before it appears for the first time. */
    bool eventFilter(QObject* watched, QEvent* event) override;
};
