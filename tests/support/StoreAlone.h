#pragma once

#include "settings/AppSettingsManager.h"
#include "support/PrivateProfile.h"

#include <QCoreApplication>

#include <optional>

/** A fresh account with the program's settings store, but without its window and its link. */
class StoreAlone
{
public:
    AppSettingsManager* operator->() { return &*store; }

    PrivateProfile profile;

private:
    char name[8] = "Vantrel";
    char* arguments[2] = {name, nullptr};
    int argumentCount = 1;
    QCoreApplication app{argumentCount, arguments};

public:
    std::optional<AppSettingsManager> store{std::in_place};
};
