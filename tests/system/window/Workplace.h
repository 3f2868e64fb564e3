#pragma once

#include "UsbBus.h"
#include "support/CameraEnd.h"
#include "support/Form.h"
#include "support/PrivateProfile.h"
#include "system/RunningProgram.h"
#include "system/window/Copies.h"
#include "system/window/Desktop.h"
#include "system/window/Window.h"

#include <QByteArrayList>
#include <QStringList>
#include <QtTest>

#include <optional>

constexpr char MainTitle[] = "Vantrel Controller";
constexpr char SettingsTitle[] = "Settings";
constexpr char BoxTitle[] = "Vantrel";

constexpr DeviceId WchCh340{"1a86", "7523"};

/** A user at the screen: a fresh account, a camera on its USB adapter, and the program, connected to it. */
class Workplace
{
public:
    Workplace()
    {
        profile.store("comport", "AUTO");
        plugCamera();
        pointAway();
        start();
    }

    // Releases what a failed test has left pressed.
    ~Workplace()
    {
        desktop().releaseMouse();
        desktop().releaseKey("space");
    }
    Q_DISABLE_COPY(Workplace)

    void plugCamera() { port = bus.plug("1-1", WchCh340, camera.portName()); }

    void start()
    {
        program.emplace();
        findWindow();
    }

    void findWindow()
    {
        window.emplace(MainTitle);
        window->activate();
    }

    Window openSettings()
    {
        window->click(main.settingsBtn);
        return openedSettings({port});
    }

    /**
     * Opens the settings by the keyboard while no port is listed. A port's name differs from run to run and
     * would change the width of its list.
     */
    Window openSettingsWithoutPorts()
    {
        bus.unplug(port);
        window->activate();
        desktop().pressKeys({"Tab", "space"});
        return openedSettings({});
    }

    /** The settings that have just been opened, with these ports in the list besides AUTO. */
    Window openedSettings(const QStringList& ports)
    {
        settings.emplace(ports);
        Window opened(SettingsTitle);
        opened.activate();
        return opened;
    }

    /** Closes the main window by Alt+F4; returns what troubleAtExit() does. */
    QString quit()
    {
        window->activate();
        desktop().pressKeys({"alt+F4"});
        return program->troubleAtExit();
    }

    /** Waits for the next frames that the camera receives. */
    QByteArrayList received(CameraEnd::Size count)
    {
        QByteArrayList frames;
        while (count-- > 0)
            frames.append(camera.nextFrame());
        return frames;
    }

    /** The log since the program connected. */
    QStringList log() const { return profile.log().mid(1); }

    QString stored(const QString& key) const { return profile.stored(key).toString(); }

    /** Every stored setting as "key=value", in the order of the keys. */
    QStringList allStored() const
    {
        QStringList lines = QSettings(profile.settingsFile(), QSettings::IniFormat).allKeys();
        for (QString& line : lines)
            line += '=' + stored(line);
        return lines;
    }

    /** Whether the program has the camera's line open. */
    bool isPortOpen() const { return program->hasOpen(camera.portName()); }

    PrivateProfile profile;
    CameraEnd camera;
    UsbBus bus;
    QString port;
    MainWindowCopy main{MainWindowCopy::Connected};
    std::optional<SettingsCopy> settings;
    std::optional<RunningProgram> program;
    std::optional<Window> window;
};
