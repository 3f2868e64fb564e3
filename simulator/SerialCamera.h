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

/** What a bad line or a bad camera does to the replies on their way to the controller. They combine. */
struct ReplyFaults
{
    bool noReplies = false;
    ViscaCamera::Time late{0};
    /** Every byte comes by itself, a few milliseconds after the one before. */
    bool split = false;
};

/**
 * A camera on a serial line, in the event loop of its thread. No timer runs while nothing is due. Unplugged
 * it lives on: it keeps moving and loses what it says.
 */
class SerialCamera : public QObject
{
    Q_OBJECT

public:
    /** Not plugged in yet; `link` is the path of its symbolic link, empty for none. */
    SerialCamera(const ViscaCamera::Options& options, const ReplyFaults& replyFaults, const QString& link);

    /** Opens a new line, to which the link then leads. Returns an empty text, or why it failed. */
    QString plugIn();

    /** Hangs up the line, takes the link away and reports "Hung up". */
    void unplug();

    /** The camera as it is now; what fell due until now is reported first. */
    const ViscaCamera& present();

signals:
    /** A frame, noise or a reply, at the moment the camera takes or gives it. */
    void happened(const ViscaCamera::Event& event);

    /** One line, without its end, for each thing that happens, as the program's help lists them. */
    void reported(const QString& line);

private slots:

    void passTime() { handle(camera.advance(now())); }

private:
    /** Bytes to be written by themselves, and when. */
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
