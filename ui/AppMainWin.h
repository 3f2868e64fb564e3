#pragma once

#include <QMainWindow>

#include <optional>

class AppSettingWin;
class QLabel;
class Ui_AppMainWin;

/**
 * The main window with the controls of the camera. It forwards every action to the camera link and shows
 * whether the link is connected. Only the text of the connect button holds that state.
 */
class AppMainWin : public QMainWindow
{
    Q_OBJECT

public:
    /** Builds the window and tries to connect to the camera. */
    explicit AppMainWin(QWidget* parent);

    /** Deletes the settings window, the status label and the form. */
    ~AppMainWin() override;

    /**
     * Stores a preset's name.
     *
     * @param preset the preset's number, counted from 1
     * @param name the name; an empty one is stored as "Preset" and the number
     */
    void savePresetName(int preset, QString name);

    /**
     * Shows the stored names of presets 1 to 9 as the tooltips of their buttons. If a name contains markup,
     * Qt shows it as rich text.
     */
    void loadPresetNames();

private slots:
    void onSettingsBtnClicked();
    void onUpBtnClicked();
    void onUpBtnReleased();
    void onLeftBtnClicked();
    void onLeftBtnReleased();
    void onHomeBtnClicked();
    void onRightBtnClicked();
    void onRightBtnReleased();
    void onZoomInBtnClicked();
    void onZoomInBtnReleased();
    void onDownBtnClicked();
    void onDownBtnReleased();
    void onZoomOutBtnClicked();
    void onZoomOutBtnReleased();
    void onPreset1BtnClicked();
    void onPreset2BtnClicked();
    void onPreset3BtnClicked();
    void onPreset4BtnClicked();
    void onPreset5BtnClicked();
    void onPreset6BtnClicked();
    void onPreset7BtnClicked();
    void onPreset8BtnClicked();
    void onPreset9BtnClicked();
    void onSetPresetBtnClicked();
    void onRecallPresetBtnClicked();
    void onConnectBtnClicked();
    void onDeviceConnceted();
    void onDeviceDisconnected();
    void onDeviceError();

private:
    std::optional<int> enteredPreset() const;

    Ui_AppMainWin* ui;
    AppSettingWin* settingWin;
    QLabel* statusLabel;
};
