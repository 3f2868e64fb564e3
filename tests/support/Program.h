#pragma once

#include "app/VantrelApp.h"
#include "camera/AppVantrelSerial.h"
#include "settings/AppSettingsManager.h"
#include "ui/AppMainWin.h"

#include <QtTest>

/** The program from its start to its exit, in the test's own process and with the real classes. */
class Program
{
public:
    /** A widget of the main window or, with its object name "AppSettingWin", the settings dialog. */
    template <class Widget> Widget* find(const char* objectName) const
    {
        auto* widget = app.mainWin->findChild<Widget*>(objectName);
        if (!widget)
            qFatal("there is no %s", objectName);
        return widget;
    }

private:
    char name[8] = "Vantrel";
    char* arguments[2] = {name, nullptr};

public:
    VantrelApp app{1, arguments};
};
