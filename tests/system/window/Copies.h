#pragma once

#include "ui_AppMainWin.h"
#include "ui_AppSettingWin.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMainWindow>

#include <optional>

/**
 * The application object behind the copies. It gives this process, and programs started from here, the same
 * look on every machine: one font, one style, one resolution. This process draws offscreen.
 */
class CopyingApplication
{
public:
    CopyingApplication();

private:
    int count = 3;
    char name[7] = "copies";
    char platform[10] = "-platform";
    char offscreen[10] = "offscreen";
    char* arguments[4] = {name, platform, offscreen, nullptr};
    std::optional<QApplication> application;
};

/**
 * The main window's form in this process, in the program's font and style. With every version of Qt
 * it is laid out and drawn as the program's window is.
 */
struct MainWindowCopy : Ui_AppMainWin
{
    /** The texts that say whether the camera is connected. */
    struct State
    {
        const char* connectButton;
        const char* status;
    };

    static constexpr State Connected{"Disconnect", "Connected to Port: AUTO\tBaudRate: 9600"};
    static constexpr State Disconnected{"Connect", "Device disconnected"};
    static constexpr State NeverConnected{"Connect", ""};

    /** @param first the state in which the program starts; its status text may widen the window */
    explicit MainWindowCopy(const State& first);

    void show(const State& state);

    QMainWindow window;
    QLabel status;
};

/** The same for the settings, with the values of a fresh account. */
struct SettingsCopy : Ui_AppSettingWin
{
    /** @param ports the ports that are listed besides AUTO */
    explicit SettingsCopy(const QStringList& ports);

    void setSpeeds(int pan, int tilt, int zoom);

    QDialog dialog;
};

/** Gives a control of a copy the focus of this process, as the program's control has it there. */
void giveFocusTo(QWidget* control);
