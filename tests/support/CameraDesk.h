#pragma once

#include "ViscaCamera.h"

#include <QByteArray>
#include <QStringList>

#include <vector>

/** A simulated camera without a serial line. Its clock moves only during send() and wait(). */
class CameraDesk
{
public:
    explicit CameraDesk(const ViscaCamera::Options& options = ViscaCamera::BusyRules::Lenient)
        : camera(options)
    {
    }

    /** Sends a frame in hexadecimal and waits. Returns the replies with the milliseconds since it was sent,
     * such as "25: 90 41 ff". */
    QStringList send(const QByteArray& hex, ViscaCamera::Time patience = ViscaCamera::Time(100))
    {
        const ViscaCamera::Time sent = now;
        QStringList replies;
        note(camera.receive(QByteArray::fromHex(hex), now), sent, replies);
        while (now < sent + patience)
            note(camera.advance(++now), sent, replies);
        return replies;
    }

    QStringList wait(ViscaCamera::Time patience) { return send({}, patience); }

    /** What has arrived, in words. */
    QStringList heard;
    ViscaCamera camera;
    ViscaCamera::Time now{0};

private:
    void note(const std::vector<ViscaCamera::Event>& events, ViscaCamera::Time sent, QStringList& replies)
    {
        for (const ViscaCamera::Event& event : events) {
            if (event.kind == ViscaCamera::Event::Kind::Reply)
                replies += QString("%1: %2").arg((now - sent).count()).arg(QString(event.bytes.toHex(' ')));
            else
                heard += event.words;
        }
    }
};
