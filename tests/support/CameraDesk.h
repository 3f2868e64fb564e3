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

/** The replies to a command that is done at once, to one that is not known, and to one that does not go now.
 */
inline QStringList acknowledgedAndCompleted()
{
    return {"25: 90 41 ff", "36: 90 51 ff"};
}

inline QStringList syntaxError()
{
    return {"25: 90 60 02 ff"};
}

inline QStringList notExecutable()
{
    return {"25: 90 61 41 ff"};
}

/** The frame in hexadecimal with `value` in place of "XX". */
inline QByteArray withByte(QByteArray frame, int value)
{
    return frame.replace("XX", QByteArray(1, static_cast<char>(value)).toHex());
}
