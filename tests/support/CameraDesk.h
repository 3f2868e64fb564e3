#pragma once

#include "ViscaCamera.h"

#include <QByteArray>
#include <QStringList>

#include <vector>

/** A simulated camera without a line, and its clock, which moves only while the camera is waited for. */
class CameraDesk
{
public:
    explicit CameraDesk(const ViscaCamera::Options& options = ViscaCamera::BusyRules::Lenient)
        : camera(options)
    {
    }

    /** Sends a frame in hexadecimal and waits; returns the replies with their times since then, such as
     * "25: 90 41 ff". */
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

    /** The words of all that has arrived. */
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
