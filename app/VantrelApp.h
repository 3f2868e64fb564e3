#pragma once

#include <QApplication>
#include <QObjectList>
#include <QString>

class AppMainWin;
class AppSettingsManager;
class AppVantrelSerial;

/**
 * The application object. It creates and owns the program's long-lived objects. All other classes reach them
 * through vantrelApp().
 */
class VantrelApp : public QApplication
{
public:
    /**
     * Creates the settings store, the camera link and the main window, in this order, and shows the window.
     * The window's constructor tries to connect to the camera. If the port cannot be opened, the error box
     * comes before the window. Qt reads its own options from the arguments.
     */
    VantrelApp(int argc, char** argv);

    /** Stops a motion whose button is held. Deletes the main window, the settings store and the link. */
    ~VantrelApp() override;

    /**
     * Shows a text, unchanged, in a modal box titled "Vantrel" and returns when the user has dismissed it.
     * The event loop runs meanwhile, so the camera's replies are still read and logged.
     */
    void showMessage(QString message);

    /** The main window; null until it has been built. */
    AppMainWin* mainWin = nullptr;

    /** The settings store and activity log. */
    AppSettingsManager* settingsManager = nullptr;

    /** The link to the camera. */
    AppVantrelSerial* serial = nullptr;

private:
    void addHelpers();

    // Objects that add keyboard, mouse and accessibility behaviour to the windows.
    QObjectList helpers;
};

/** The one application object of the process; valid from its construction to its destruction. */
inline VantrelApp* vantrelApp()
{
    return static_cast<VantrelApp*>(QCoreApplication::instance());
}
