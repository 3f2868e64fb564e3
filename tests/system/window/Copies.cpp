#include "system/window/Copies.h"

#include "ui/AppFocusRing.h"

#include <QtTest>

CopyingApplication::CopyingApplication()
{
    qputenv("FONTCONFIG_FILE", SOURCE_DIR "/tests/system/window/fonts.conf");
    qputenv("LC_ALL", "C.UTF-8");
    qputenv("QT_FONT_DPI", "96");
    qputenv("QT_QPA_PLATFORMTHEME", "generic");
    qputenv("QT_SCALE_FACTOR", "1");
    application.emplace(count, arguments);
    QApplication::setStyle("fusion");
    // The font that a program has by default, without a desktop's settings.
    QApplication::setFont(QFont("Sans Serif", 9));
}

MainWindowCopy::MainWindowCopy(const State& first)
{
    setupUi(&window);
    window.adjustSize();
    new AppFocusRing(&window);
    statusBar->addPermanentWidget(&status);
    centralWidget->setFocus();
    show(first);
    window.show();
}

void MainWindowCopy::show(const State& state)
{
    connectBtn->setText(state.connectButton);
    status.setText(state.status);
}

SettingsCopy::SettingsCopy(const QStringList& ports)
{
    setupUi(&dialog);
    dialog.adjustSize();
    new AppFocusRing(&dialog);
    dialog.setFocus();
    for (int preset = 1; preset <= 64; ++preset)
        startUpPresetCombo->addItem("PRESET" + QString::number(preset));
    startUpPresetCombo->setEnabled(false);
    for (const char* baudRate : {"1200", "2400", "4800", "9600", "19200", "38400", "57600", "115200"})
        baudRateCombo->addItem(QString("Baud") + baudRate);
    baudRateCombo->setCurrentText("Baud9600");
    comPortCombo->addItem("AUTO");
    comPortCombo->addItems(ports);
    setSpeeds(5, 5, 5);
    dialog.show();
}

void SettingsCopy::setSpeeds(int pan, int tilt, int zoom)
{
    panSpeedSlider->setValue(pan);
    panSpeedLabel->setText(QString("Pan Speed(%1)").arg(pan));
    tiltSpeedSlider->setValue(tilt);
    tiltSpeedLabel->setText(QString("Tilt Speed(%1)").arg(tilt));
    zoomSpeedSlider->setValue(zoom);
    zoomSpeedLabel->setText(QString("Zoom Speed(%1)").arg(zoom));
}

void giveFocusTo(QWidget* control)
{
    control->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(control->window()));
    control->setFocus();
}
