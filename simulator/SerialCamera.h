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
    /** Nothing ever comes back. */
    bool noReplies = false;
    /** Every reply comes this much later. */
    ViscaCamera::Time late{0};
    /** Every byte comes by itself, a few milliseconds after the one before. */
    bool split = false;
};

/**
 * A camera on a serial line: joins ViscaCamera and PseudoTerminal in the event loop of its thread and reports
 * each frame and reply. No timer runs while nothing is due.
 *
 * The camera lives on while it is unplugged: it keeps moving and loses what it says.
 */
class SerialCamera : public QObject
{
    Q_OBJECT

public:
    /** A camera not plugged in yet; `link` is the path of its symbolic link, empty for none. */
    SerialCamera(const ViscaCamera::Options& options, const ReplyFaults& replyFaults, const QString& link);
    ~SerialCamera() override;

    /**
     * Opens a new line, makes the link lead there and reports "Camera at PATH", with a link followed by "Link
     * at PATH", and the network change that the camera tells then. Returns an empty text on success,
     * otherwise the reason of the failure. Must not be called twice without unplug() in between.
     */
    QString plugIn();

    /** Hangs up the line, takes the link away and reports "Hung up". */
    void unplug();

    /** The camera as it is now; what fell due until now is reported first. */
    const ViscaCamera& present();

signals:
    /** A frame, noise or a reply, at the moment the camera takes or gives it. */
    void happened(const ViscaCamera::Event& event);

    /**
     * One line, without its end, for each thing that happens:
     *   "<- 81 01 06 04 FF  home"            a frame from the controller
     *   "<- 12 34  no frame, ignored"        bytes that are no frame
     *   "-> 90 41 FF  ACK, socket 1"         a reply as the camera gives it
     *   ">> 90"                              bytes put on the line late or in pieces
     */
    void reported(const QString& line);

private slots:
    void readLine();
    void passTime();

private:
    /** Bytes to be written by themselves, and when. */
    struct Piece
    {
        ViscaCamera::Time due;
        QByteArray bytes;
    };

    ViscaCamera::Time now() const;
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
