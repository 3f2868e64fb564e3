#include "ui/AppMainWin.h"

#include "app/VantrelApp.h"
#include "camera/AppVantrelSerial.h"
#include "settings/AppSettingsManager.h"
#include "ui/AppSettingWin.h"
#include "ui_AppMainWin.h"

#include <QLabel>

namespace {

constexpr char ConnectText[] = "Connect";
constexpr char DisconnectText[] = "Disconnect";

} // namespace

AppMainWin::AppMainWin(QWidget* parent)
    : QMainWindow(parent)
    , ui(new Ui_AppMainWin)
{
    ui->setupUi(this);
    adjustSize();

    settingWin = new AppSettingWin(this);

    statusLabel = new QLabel();
    ui->statusBar->addPermanentWidget(statusLabel, 0);

    setWindowFlags(Qt::Dialog | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);

    connect(ui->settingsBtn, SIGNAL(clicked(bool)), this, SLOT(onSettingsBtnClicked()));
    connect(ui->setBtn, SIGNAL(clicked(bool)), this, SLOT(onSetPresetBtnClicked()));
    connect(ui->callBtn, SIGNAL(clicked(bool)), this, SLOT(onRecallPresetBtnClicked()));
    connect(ui->connectBtn, SIGNAL(clicked(bool)), this, SLOT(onConnectBtnClicked()));
    connect(ui->upBtn, SIGNAL(pressed()), this, SLOT(onUpBtnClicked()));
    connect(ui->upBtn, SIGNAL(released()), this, SLOT(onUpBtnReleased()));
    connect(ui->leftBtn, SIGNAL(pressed()), this, SLOT(onLeftBtnClicked()));
    connect(ui->leftBtn, SIGNAL(released()), this, SLOT(onLeftBtnReleased()));
    connect(ui->homeBtn, SIGNAL(pressed()), this, SLOT(onHomeBtnClicked()));
    connect(ui->rightBtn, SIGNAL(pressed()), this, SLOT(onRightBtnClicked()));
    connect(ui->rightBtn, SIGNAL(released()), this, SLOT(onRightBtnReleased()));
    connect(ui->zoomInBtn, SIGNAL(pressed()), this, SLOT(onZoomInBtnClicked()));
    connect(ui->zoomInBtn, SIGNAL(released()), this, SLOT(onZoomInBtnReleased()));
    connect(ui->downBtn, SIGNAL(pressed()), this, SLOT(onDownBtnClicked()));
    connect(ui->downBtn, SIGNAL(released()), this, SLOT(onDownBtnReleased()));
    connect(ui->zoomOutBtn, SIGNAL(pressed()), this, SLOT(onZoomOutBtnClicked()));
    connect(ui->zoomOutBtn, SIGNAL(released()), this, SLOT(onZoomOutBtnReleased()));
    connect(ui->preset1Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset1BtnClicked()));
    connect(ui->preset2Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset2BtnClicked()));
    connect(ui->preset3Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset3BtnClicked()));
    connect(ui->preset4Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset4BtnClicked()));
    connect(ui->preset5Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset5BtnClicked()));
    connect(ui->preset6Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset6BtnClicked()));
    connect(ui->preset7Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset7BtnClicked()));
    connect(ui->preset8Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset8BtnClicked()));
    connect(ui->preset9Btn, SIGNAL(clicked(bool)), this, SLOT(onPreset9BtnClicked()));

    AppVantrelSerial* serial = vantrelApp()->serial;
    connect(serial, SIGNAL(onDeviceConnected()), this, SLOT(onDeviceConnceted()));
    connect(serial, SIGNAL(onDeviceDisconnected()), this, SLOT(onDeviceDisconnected()));
    connect(serial, SIGNAL(onDeviceError()), this, SLOT(onDeviceError()));

    onConnectBtnClicked();
}

AppMainWin::~AppMainWin()
{
    delete settingWin;
    delete statusLabel;
    delete ui;
}

void AppMainWin::onSettingsBtnClicked()
{
    // Do not use isHidden(): with Qt 6.8 it is false for the closed dialog once this window was minimised.
    if (!settingWin->isVisible())
        settingWin->show();
}

void AppMainWin::onConnectBtnClicked()
{
    if (ui->connectBtn->text() == ConnectText)
        vantrelApp()->serial->openSerialPort();
    else
        vantrelApp()->serial->closeSerialPort();
}

void AppMainWin::onDeviceConnceted()
{
    AppSettingsManager* settings = vantrelApp()->settingsManager;

    ui->connectBtn->setText(DisconnectText);
    if (settings->getIsStartUpPreset())
        vantrelApp()->serial->callPreset(settings->getStartUpPreset());
    statusLabel->setText("Connected to Port: " + settings->getCOMPort() +
                         "\tBaudRate: " + QString::number(settings->getBaudRate()));
    loadPresetNames();
}

void AppMainWin::onDeviceDisconnected()
{
    ui->connectBtn->setText(ConnectText);
    statusLabel->setText("Device disconnected");
}

void AppMainWin::onDeviceError()
{
    // The link has already shown the error, and the port is open or closed as before.
}

void AppMainWin::onUpBtnClicked()
{
    if (vantrelApp()->settingsManager->getInvertTilt())
        vantrelApp()->serial->moveDown();
    else
        vantrelApp()->serial->moveUp();
}

void AppMainWin::onUpBtnReleased()
{
    vantrelApp()->serial->moveStop();
}

void AppMainWin::onDownBtnClicked()
{
    if (vantrelApp()->settingsManager->getInvertTilt())
        vantrelApp()->serial->moveUp();
    else
        vantrelApp()->serial->moveDown();
}

void AppMainWin::onDownBtnReleased()
{
    vantrelApp()->serial->moveStop();
}

void AppMainWin::onLeftBtnClicked()
{
    if (vantrelApp()->settingsManager->getInvertPan())
        vantrelApp()->serial->moveRight();
    else
        vantrelApp()->serial->moveLeft();
}

void AppMainWin::onLeftBtnReleased()
{
    vantrelApp()->serial->moveStop();
}

void AppMainWin::onRightBtnClicked()
{
    if (vantrelApp()->settingsManager->getInvertPan())
        vantrelApp()->serial->moveLeft();
    else
        vantrelApp()->serial->moveRight();
}

void AppMainWin::onRightBtnReleased()
{
    vantrelApp()->serial->moveStop();
}

void AppMainWin::onHomeBtnClicked()
{
    vantrelApp()->serial->moveHome();
}

void AppMainWin::onZoomInBtnClicked()
{
    vantrelApp()->serial->zoomIn();
}

void AppMainWin::onZoomInBtnReleased()
{
    vantrelApp()->serial->zoomStop();
}

void AppMainWin::onZoomOutBtnClicked()
{
    vantrelApp()->serial->zoomOut();
}

void AppMainWin::onZoomOutBtnReleased()
{
    vantrelApp()->serial->zoomStop();
}

void AppMainWin::onPreset1BtnClicked()
{
    vantrelApp()->serial->callPreset(1);
}

void AppMainWin::onPreset2BtnClicked()
{
    vantrelApp()->serial->callPreset(2);
}

void AppMainWin::onPreset3BtnClicked()
{
    vantrelApp()->serial->callPreset(3);
}

void AppMainWin::onPreset4BtnClicked()
{
    vantrelApp()->serial->callPreset(4);
}

void AppMainWin::onPreset5BtnClicked()
{
    vantrelApp()->serial->callPreset(5);
}

void AppMainWin::onPreset6BtnClicked()
{
    vantrelApp()->serial->callPreset(6);
}

void AppMainWin::onPreset7BtnClicked()
{
    vantrelApp()->serial->callPreset(7);
}

void AppMainWin::onPreset8BtnClicked()
{
    vantrelApp()->serial->callPreset(8);
}

void AppMainWin::onPreset9BtnClicked()
{
    vantrelApp()->serial->callPreset(9);
}

void AppMainWin::onRecallPresetBtnClicked()
{
    if (const auto preset = enteredPreset())
        vantrelApp()->serial->callPreset(*preset);
}

void AppMainWin::onSetPresetBtnClicked()
{
    const auto preset = enteredPreset();
    if (!preset)
        return;

    vantrelApp()->serial->setPreset(*preset);
    savePresetName(*preset, ui->presetNameEdit->text());
    loadPresetNames();
}

std::optional<int> AppMainWin::enteredPreset() const
{
    const int number = ui->presetEdit->text().toInt();
    if (number >= FirstPreset && number <= LastPreset)
        return number;

    vantrelApp()->showMessage("Please enter number between 1 and 64.");
    return std::nullopt;
}

void AppMainWin::savePresetName(int preset, QString name)
{
    if (name.isEmpty())
        name = defaultPresetName(preset);
    vantrelApp()->settingsManager->setPresetName(preset, name);
}

void AppMainWin::loadPresetNames()
{
    QPushButton* const buttons[] = {ui->preset1Btn, ui->preset2Btn, ui->preset3Btn,
                                    ui->preset4Btn, ui->preset5Btn, ui->preset6Btn,
                                    ui->preset7Btn, ui->preset8Btn, ui->preset9Btn};
    int preset = FirstPreset;
    for (QPushButton* button : buttons)
        button->setToolTip(vantrelApp()->settingsManager->getPresetName(preset++));
}
