#pragma once

#include "support/CameraEnd.h"
#include "support/MessageBoxWatcher.h"
#include "support/PrivateProfile.h"
#include "support/Program.h"

#include <QVariantMap>

#include <optional>

/** A user at work: a fresh account, a camera on the line, and the program, started and connected to it. */
class Desk
{
public:
    /** Starts the program with these settings besides the camera's port. */
    explicit Desk(const QVariantMap& settings = {})
    {
        profile.store("comport", camera.portName());
        for (auto setting = settings.begin(); setting != settings.end(); ++setting)
            profile.store(setting.key(), setting.value());
        program.emplace();
        static_cast<void>(QTest::qWaitFor([this] { return program->app.mainWin->isActiveWindow(); }));
    }

    /** A widget of the main window or of the settings dialog. */
    template <class Widget> Widget* find(const char* objectName) const
    {
        return program->find<Widget>(objectName);
    }

    AppSettingsManager* settings() const { return program->app.settingsManager; }

    AppVantrelSerial* link() const { return program->app.serial; }

    PrivateProfile profile;
    CameraEnd camera;
    MessageBoxWatcher user;
    std::optional<Program> program;
};
