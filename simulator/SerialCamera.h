#pragma once

#include "PortLink.h"
#include "PseudoTerminal.h"
#include "ViscaCamera.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <deque>
#include <optional>
#include <vector>

/** Faults that a bad line or camera adds to the replies. They can be combined. */
struct ReplyFaults
{
    bool noReplies = false;
    ViscaCamera::Time late{0};
    /** Sends every byte separately, a few milliseconds after the one before. */
    bool split = false;
};

/**
 * A camera on a serial line. Needs an event loop. No timer runs while nothing is due. While it is unplugged,
 * the camera keeps moving and its replies are lost.
 */
class SerialCamera : public QObject
{
    Q_OBJECT

public:
    /** The camera is not plugged in yet. `link` is the path of its symbolic link, empty for none. */
    SerialCamera(const ViscaCamera::Options& options, const ReplyFaults& replyFaults, const QString& link);

    /** Opens a new line and points the link to it. Returns the reason of a failure, else an empty text. */
    QString plugIn();

    /** Hangs up the line, removes the link and reports "Hung up". */
    void unplug();

    /** Returns the camera in its present state. First reports what has become due. */
    const ViscaCamera& present();

signals:
    /** The camera has received a frame or noise, or has given a reply. */
    void happened(const ViscaCamera::Event& event);

    /** An entry for standard output, without line feed, as listed in the program's help. */
    void reported(const QString& line);

private slots:

    void passTime() { handle(camera.advance(now())); }

private:
    /** Bytes to write in one go, and the time for it. */
    struct Piece
    {
        ViscaCamera::Time due;
        QByteArray bytes;
    };

    ViscaCamera::Time now() const { return ViscaCamera::Time(clock.elapsed()); }

    void handle(const std::vector<ViscaCamera::Event>& events);
    void tell(const ViscaCamera::Event& event);
    void queueReply(const QByteArray& reply);
    void sendReplies();
    void wakeWhenDue();

    QElapsedTimer clock;
    ViscaCamera camera;
    const ReplyFaults faults;
    std::deque<Piece> pieces;
    ViscaCamera::Time lastDue{0};
    PortLink portLink;
    std::optional<PseudoTerminal> terminal;
    std::optional<QSocketNotifier> notifier;
    QTimer wakeTimer;
};
