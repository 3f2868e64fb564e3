#pragma once

#include "camera/AppVantrelSerial.h"

#include <QSignalSpy>

/** What the camera link has said since this was made. */
class LinkSignals
{
public:
    explicit LinkSignals(const AppVantrelSerial* link)
        : connected(link, &AppVantrelSerial::onDeviceConnected)
        , disconnected(link, &AppVantrelSerial::onDeviceDisconnected)
        , error(link, &AppVantrelSerial::onDeviceError)
        , dataFull(link, &AppVantrelSerial::onDataFull)
    {
    }

    /** Each signal that came, in the order of their declaration, as often as it came. */
    QString names() const
    {
        QStringList names;
        for (const QSignalSpy* spy : {&connected, &disconnected, &error, &dataFull}) {
            for (int i = 0; i < spy->count(); ++i)
                names.append(QString(spy->signal()).chopped(2));
        }
        return names.join(' ');
    }

private:
    QSignalSpy connected;
    QSignalSpy disconnected;
    QSignalSpy error;
    QSignalSpy dataFull;
};
