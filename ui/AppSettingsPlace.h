#pragma once

#include <QObject>

class QDialog;

/**
 * Puts the settings window beside the controller when it first opens, so that a speed can be tried while it
 * is set. After that it stays where the user has it.
 */
class AppSettingsPlace : public QObject
{
    Q_OBJECT

public:
    /** Places this window beside its parent. */
    explicit AppSettingsPlace(QDialog* settings);

    /** Acts right before the window appears. */
    bool eventFilter(QObject* watched, QEvent* event) override;
};
