#pragma once

#include <QApplication>
#include <QObjectList>
#include <QString>

class AppMainWin;
class AppSettingsManager;
class AppVantrelSerial;

/**
 * The application object. It creates and owns the program's long-lived objects, and it is the one way to
 * reach them: see vantrelApp().
 */
class VantrelApp : public QApplication
{
public:
    /**
     * Creates the settings store, the camera link and the main window, in this order, and shows the window.
     * The window tries to connect to the camera while it is being built, so a port that cannot be opened
     * shows its error box before the window appears. Qt takes its own options out of the arguments.
     */
    VantrelApp(int argc, char** argv);

    /** Ends a motion that is still held; deletes the main window, the settings store and the camera link. */
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

    // What keyboard, mouse and assistive software need beyond the windows' own code.
    QObjectList helpers;
};

/** The one application object of the process; valid from its construction to its destruction. */
inline VantrelApp* vantrelApp()
{
    return static_cast<VantrelApp*>(QCoreApplication::instance());
}
