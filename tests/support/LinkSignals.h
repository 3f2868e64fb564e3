#pragma once

#include "camera/AppVantrelSerial.h"

/** Hears the camera link's signals from its construction on. */
class LinkSignals : public QObject
{
public:
    explicit LinkSignals(const AppVantrelSerial* link)
    {
        const auto hear = [this](const char* name) { return [this, name] { heard.append(name); }; };
        connect(link, &AppVantrelSerial::onDeviceConnected, this, hear("onDeviceConnected"));
        connect(link, &AppVantrelSerial::onDeviceDisconnected, this, hear("onDeviceDisconnected"));
        connect(link, &AppVantrelSerial::onDeviceError, this, hear("onDeviceError"));
        connect(link, &AppVantrelSerial::onDataFull, this, hear("onDataFull"));
    }

    /** The names of the signals that came, in the order in which they came. */
    QString names() const { return heard.join(' '); }

private:
    QStringList heard;
};
