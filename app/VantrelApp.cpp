#include "app/VantrelApp.h"

#include "app/AppQuitSignals.h"
#include "camera/AppVantrelSerial.h"
#include "settings/AppSettingsManager.h"
#include "ui/AppAccessibleCheckBox.h"
#include "ui/AppFocusRing.h"
#include "ui/AppHoldGuard.h"
#include "ui/AppKeyRepeat.h"
#include "ui/AppMainWin.h"
#include "ui/AppSettingWin.h"
#include "ui/AppSettingsPlace.h"
#include "ui/AppSpokenField.h"
#include "ui/AppSpokenStatus.h"

#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>

namespace {

constexpr const char* MotionButtons[] = {"upBtn",     "leftBtn", "homeBtn",   "rightBtn",
                                         "zoomInBtn", "downBtn", "zoomOutBtn"};

// Qt keeps a reference to the argument count for as long as the application object lives.
int argumentCount = 0;

} // namespace

VantrelApp::VantrelApp(int argc, char** argv)
    : QApplication(argumentCount = argc, argv)
{
    // A Wayland desktop takes the program's icon from this desktop file.
    setDesktopFileName("vantrel");
    QIcon icon;
    for (const char* size : {"16", "24", "32", "48", "64", "128"})
        icon.addFile(QString(":/icon/") + size);
    setWindowIcon(icon);
    new AppQuitSignals(this);
    // Call it before the windows exist: Qt creates each accessible interface only once.
    AppAccessibleCheckBox::install();

    settingsManager = new AppSettingsManager();
    serial = new AppVantrelSerial();
    mainWin = new AppMainWin(nullptr);
    addHelpers();
    // Let the port write the recall of a start-up preset before the window is shown.
    processEvents(QEventLoop::ExcludeUserInputEvents);
    mainWin->show();
    // Apply the status bar's size hint now. On Wayland a window that grows after its first frame may be
    // shrunk again.
    sendPostedEvents(nullptr, QEvent::LayoutRequest);
}

void VantrelApp::addHelpers()
{
    for (const char* name : MotionButtons) {
        auto* guard = new AppHoldGuard(mainWin->findChild<QPushButton*>(name));
        // clicked() follows released() and closes the port. Send the stop command before that.
        connect(mainWin->findChild<QPushButton*>("connectBtn"), SIGNAL(released()), guard, SLOT(endMotion()));
        helpers.append(guard);
    }

    auto* settingWin = mainWin->findChild<AppSettingWin*>();
    helpers.append(new AppSettingsPlace(settingWin));
    helpers.append(new AppFocusRing(mainWin));
    helpers.append(new AppFocusRing(settingWin));
    helpers.append(new AppSpokenStatus(mainWin->statusBar()->findChild<QLabel*>()));
    helpers.append(new AppSpokenField(mainWin->findChild<QLineEdit*>("presetEdit")));
    helpers.append(new AppSpokenField(mainWin->findChild<QLineEdit*>("presetNameEdit")));
    // On other platforms Qt recognises the repeats of a held key.
    if (platformName() == "xcb")
        helpers.append(new AppKeyRepeat(mainWin));
    // No control has the focus at first, so a key cannot trigger one by accident.
    mainWin->centralWidget()->setFocus();
    settingWin->setFocus();
}

VantrelApp::~VantrelApp()
{
    qDeleteAll(helpers);
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
