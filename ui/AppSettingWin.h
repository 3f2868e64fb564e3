#pragma once

#include <QDialog>

class Ui_AppSettingWin;

/**
 * The settings window. Every change goes to the settings store the moment it is made; closing the window
 * only hides it.
 */
class AppSettingWin : public QDialog
{
    Q_OBJECT

public:
    /** Builds the window, hidden, with the stored settings in its widgets. Stores nothing. */
    explicit AppSettingWin(QWidget* parent);

    /** Stores nothing more: every change was stored as it was made. */
    ~AppSettingWin() override;

    /** Copies the stored settings into the widgets; values out of a widget's range stay in the store. */
    void loadSavedSettings();

    /**
     * Fills the port list anew when the window is opened: AutoPort, then the ports that are present. This
     * puts the stored port back to AutoPort. Being shown again by the window system is not opening.
     */
    void showEvent(QShowEvent* event) override;

private slots:
    void onPanSpeedChanged(int val);
    void onTiltSpeedChanged(int val);
    void onZoomSpeedChanged(int val);
    void onRunAsAdminChecked();
    void onRunOnStartUpChecked();
    void onStartupPresetChecked();
    void onStartupPresetChanged(int val);
    void onComPortChanged(QString val);
    void onBaudRateChanged(QString val);
    void onInvertPanChecked();
    void onInvertTiltChecked();

private:
    bool isLoading;
    Ui_AppSettingWin* ui;
};
