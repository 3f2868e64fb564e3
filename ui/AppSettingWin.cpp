#include "ui/AppSettingWin.h"

#include "app/VantrelApp.h"
#include "settings/AppSettingsManager.h"
#include "ui_AppSettingWin.h"

#include <QSerialPortInfo>
#include <QShowEvent>

namespace {

constexpr int BaudRates[] = {1200, 2400, 4800, 9600, 19200, 38400, 57600, 115200};
constexpr char BaudPrefix[] = "Baud";
constexpr int BaudPrefixLength = sizeof(BaudPrefix) - 1;

QString baudText(int baudRate)
{
    return BaudPrefix + QString::number(baudRate);
}

QString speedText(const char* axis, int speed)
{
    return QString(axis) + " Speed(" + QString::number(speed) + ')';
}

} // namespace

AppSettingWin::AppSettingWin(QWidget* parent)
    : QDialog(parent)
    , isLoading(true)
    , ui(new Ui_AppSettingWin)
{
    ui->setupUi(this);
    adjustSize();
    setWindowFlags(Qt::Dialog | Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);

    for (int preset = FirstPreset; preset <= LastPreset; ++preset)
        ui->startUpPresetCombo->addItem("PRESET" + QString::number(preset));
    for (const int baudRate : BaudRates)
        ui->baudRateCombo->addItem(baudText(baudRate));

    connect(ui->panSpeedSlider, SIGNAL(valueChanged(int)), this, SLOT(onPanSpeedChanged(int)));
    connect(ui->tiltSpeedSlider, SIGNAL(valueChanged(int)), this, SLOT(onTiltSpeedChanged(int)));
    connect(ui->zoomSpeedSlider, SIGNAL(valueChanged(int)), this, SLOT(onZoomSpeedChanged(int)));
    connect(ui->runOnStartUpCheck, SIGNAL(clicked(bool)), this, SLOT(onRunOnStartUpChecked()));
    connect(ui->startUpPresetCheck, SIGNAL(clicked(bool)), this, SLOT(onStartupPresetChecked()));
    connect(ui->startUpPresetCombo, SIGNAL(currentIndexChanged(int)), this,
                                           SLOT(onStartupPresetChanged(int)));
    connect(ui->comPortCombo, SIGNAL(currentTextChanged(QString)), this, SLOT(onComPortChanged(QString)));
#if QT_VERSION_MAJOR < 6
    connect(ui->baudRateCombo, SIGNAL(currentIndexChanged(QString)), this, SLOT(onBaudRateChanged(QString)));
#else
    // Qt 6 has no currentIndexChanged(QString). This signal does the same, because no entry is ever renamed.
    connect(ui->baudRateCombo, SIGNAL(currentTextChanged(QString)), this, SLOT(onBaudRateChanged(QString)));
#endif
    connect(ui->invertPanCheck, SIGNAL(clicked(bool)), this, SLOT(onInvertPanChecked()));
    connect(ui->invertTiltCheck, SIGNAL(clicked(bool)), this, SLOT(onInvertTiltChecked()));

    loadSavedSettings();
}

AppSettingWin::~AppSettingWin()
{
    delete ui;
}

void AppSettingWin::loadSavedSettings()
{
    AppSettingsManager* settings = vantrelApp()->settingsManager;

    ui->runOnStartUpCheck->setChecked(settings->getRunOnStartUp());
    ui->startUpPresetCheck->setChecked(settings->getIsStartUpPreset());
    // A preset below 1 selects nothing. qMax() avoids an overflow if the lowest int is stored.
    ui->startUpPresetCombo->setCurrentIndex(qMax(0, settings->getStartUpPreset()) - 1);
    ui->startUpPresetCombo->setEnabled(ui->startUpPresetCheck->isChecked());
    ui->baudRateCombo->setCurrentText(baudText(settings->getBaudRate()));
    ui->comPortCombo->setCurrentText(settings->getCOMPort());
    ui->panSpeedSlider->setValue(settings->getPanSpeed());
    ui->tiltSpeedSlider->setValue(settings->getTiltSpeed());
    ui->zoomSpeedSlider->setValue(settings->getZoomSpeed());
    ui->invertPanCheck->setChecked(settings->getInvertPan());
    ui->invertTiltCheck->setChecked(settings->getInvertTilt());
    isLoading = false;
}

void AppSettingWin::showEvent(QShowEvent* event)
{
    if (event->spontaneous())
        return;

    ui->comPortCombo->clear();
    ui->comPortCombo->addItem(AutoPort);
    const auto ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo& port : ports)
        ui->comPortCombo->addItem(port.portName());
}

void AppSettingWin::onPanSpeedChanged(int val)
{
    ui->panSpeedLabel->setText(speedText("Pan", val));
    if (!isLoading)
        vantrelApp()->settingsManager->setPanSpeed(val);
}

void AppSettingWin::onTiltSpeedChanged(int val)
{
    ui->tiltSpeedLabel->setText(speedText("Tilt", val));
    if (!isLoading)
        vantrelApp()->settingsManager->setTiltSpeed(val);
}

void AppSettingWin::onZoomSpeedChanged(int val)
{
    ui->zoomSpeedLabel->setText(speedText("Zoom", val));
    if (!isLoading)
        vantrelApp()->settingsManager->setZoomSpeed(val);
}

void AppSettingWin::onRunAsAdminChecked()
{
    // No widget uses this slot, and the program never asks for administrator rights.
}

void AppSettingWin::onRunOnStartUpChecked()
{
    if (!isLoading)
        vantrelApp()->settingsManager->setRunOnStartUp(ui->runOnStartUpCheck->isChecked());
}

void AppSettingWin::onStartupPresetChecked()
{
    const bool checked = ui->startUpPresetCheck->isChecked();
    ui->startUpPresetCombo->setEnabled(checked);
    if (!isLoading)
        vantrelApp()->settingsManager->setIsStartUpPreset(checked);
}

void AppSettingWin::onStartupPresetChanged(int val)
{
    if (!isLoading)
        vantrelApp()->settingsManager->setStartUpPreset(val + 1);
}

void AppSettingWin::onComPortChanged(QString val)
{
    if (!isLoading)
        vantrelApp()->settingsManager->setCOMPort(val);
}

void AppSettingWin::onBaudRateChanged(QString val)
{
    if (isLoading)
        return;

    const int baudRate = val.remove(0, BaudPrefixLength).toInt();
    vantrelApp()->settingsManager->setBaudRate(baudRate == 0 ? DefaultBaudRate : baudRate);
}

void AppSettingWin::onInvertPanChecked()
{
    if (!isLoading)
        vantrelApp()->settingsManager->setInvertPan(ui->invertPanCheck->isChecked());
}

void AppSettingWin::onInvertTiltChecked()
{
    if (!isLoading)
        vantrelApp()->settingsManager->setInvertTilt(ui->invertTiltCheck->isChecked());
}
