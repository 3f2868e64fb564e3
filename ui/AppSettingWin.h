#pragma once

#include <QDialog>

class Ui_AppSettingWin;

/**
 * The settings window. Every change is stored at once. Closing the window only hides it.
 */
class AppSettingWin : public QDialog
{
    Q_OBJECT

public:
    /** Builds the window, hidden, and loads the stored settings into its widgets. Stores nothing. */
    explicit AppSettingWin(QWidget* parent);

    /** Deletes the form. Stores nothing. */
    ~AppSettingWin() override;

    /** Copies the stored settings into the widgets. A value outside a widget's range stays in the store. */
    void loadSavedSettings();

    /**
     * Fills the port list when the window is opened: AutoPort, then the ports that are present. This sets the
     * stored port to AutoPort. Does nothing if only the window system shows the window again, for example
     * after it was minimised.
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
