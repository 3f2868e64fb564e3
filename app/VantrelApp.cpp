#include "app/VantrelApp.h"

#include "camera/AppVantrelSerial.h"
#include "settings/AppSettingsManager.h"
#include "ui/AppMainWin.h"

#include <QMessageBox>

namespace {

// Qt keeps a reference to the argument count for as long as the application object lives.
int argumentCount = 0;

} // namespace

VantrelApp::VantrelApp(int argc, char** argv)
    : QApplication(argumentCount = argc, argv)
{
    settingsManager = new AppSettingsManager();
    serial = new AppVantrelSerial();
    mainWin = new AppMainWin(nullptr);
    mainWin->show();
}

VantrelApp::~VantrelApp()
{
    delete mainWin;
    delete settingsManager;
    delete serial;
}

void VantrelApp::showMessage(QString message)
{
    QMessageBox box;
    box.setWindowTitle("Vantrel");
    box.setText(message);
    box.exec();
}
