#include "app/VantrelApp.h"

#include "app/AppQuitSignals.h"
#include "camera/AppVantrelSerial.h"
#include "settings/AppSettingsManager.h"
#include "ui/AppMainWin.h"

#include <QIcon>
#include <QMessageBox>

namespace {

// Qt keeps a reference to the argument count for as long as the application object lives.
int argumentCount = 0;

} // namespace

VantrelApp::VantrelApp(int argc, char** argv)
    : QApplication(argumentCount = argc, argv)
{
    // A Wayland desktop finds the program's icon by it.
    setDesktopFileName("vantrel");
    QIcon icon;
    for (const char* size : {"16", "24", "32", "48", "64", "128"})
        icon.addFile(QString(":/icon/") + size);
    setWindowIcon(icon);
    new AppQuitSignals(this);

    settingsManager = new AppSettingsManager();
    serial = new AppVantrelSerial();
    mainWin = new AppMainWin(nullptr);
    mainWin->show();
    // The status bar has told its width only now; on Wayland a window that widens after its first picture may
    // be made narrow again.
    sendPostedEvents(nullptr, QEvent::LayoutRequest);
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
