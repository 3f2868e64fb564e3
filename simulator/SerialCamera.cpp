#include "SerialCamera.h"

#include "FramePattern.h"

#include <algorithm>

namespace {

// So long that a controller reads each byte separately.
constexpr ViscaCamera::Time gapBetweenBytes{5};

} // namespace

SerialCamera::SerialCamera(const ViscaCamera::Options& options, const ReplyFaults& replyFaults,
                           const QString& link)
    : camera(options)
    , faults(replyFaults)
    , portLink(link)
{
    clock.start();
    wakeTimer.setSingleShot(true);
    wakeTimer.setTimerType(Qt::PreciseTimer);
    connect(&wakeTimer, SIGNAL(timeout()), this, SLOT(passTime()));
}

QString SerialCamera::plugIn()
{
    terminal.emplace();
    if (!terminal->isOpen())
        return QString("cannot open a pseudo-terminal: %1").arg(terminal->errorString());
    QString failure = portLink.pointTo(terminal->path());
    if (!failure.isEmpty())
        return failure;

    notifier.emplace(terminal->descriptor(), QSocketNotifier::Read);
    connect(&*notifier, &QSocketNotifier::activated, this,
            [this] { handle(camera.receive(terminal->read(), now())); });
    emit reported(QString("Camera at %1").arg(terminal->path()));
    if (!portLink.path().isEmpty())
        emit reported(QString("Link at %1").arg(portLink.path()));
    // Do not delay it, whatever the faults: a controller that opens the port meanwhile would take it for an
    // answer.
    for (const ViscaCamera::Event& event : camera.comeOntoLine(now())) {
        tell(event);
        terminal->write(event.bytes);
    }
    return {};
}

void SerialCamera::unplug()
{
    portLink.remove();
    notifier.reset();
    terminal.reset();
    emit reported("Hung up");
}

const ViscaCamera& SerialCamera::present()
{
    passTime();
    return camera;
}

void SerialCamera::handle(const std::vector<ViscaCamera::Event>& events)
{
    for (const ViscaCamera::Event& event : events) {
        tell(event);
        if (event.kind == ViscaCamera::Event::Kind::Reply)
            queueReply(event.bytes);
    }
    sendReplies();
    wakeWhenDue();
}

void SerialCamera::tell(const ViscaCamera::Event& event)
{
    const char* const way = event.kind == ViscaCamera::Event::Kind::Reply ? "->" : "<-";
    emit happened(event);
    emit reported(QString("%1 %2  %3").arg(way, hexadecimal(event.bytes), event.words));
}

// A reply never overtakes the one before it.
void SerialCamera::queueReply(const QByteArray& reply)
{
    if (faults.noReplies)
        return;
    lastDue = std::max(lastDue, now() + faults.late);
    if (!faults.split)
        return pieces.push_back({lastDue, reply});
    for (const char byte : reply) {
        pieces.push_back({lastDue, QByteArray(1, byte)});
        lastDue += gapBetweenBytes;
    }
}

void SerialCamera::sendReplies()
{
    const bool isFaulty = faults.split || faults.late > ViscaCamera::Time::zero();
    for (; !pieces.empty() && pieces.front().due <= now(); pieces.pop_front()) {
        const QByteArray& bytes = pieces.front().bytes;
        if (!terminal)
            continue;
        if (!terminal->write(bytes))
            emit reported("Reply lost, nobody reads the line");
        else if (isFaulty)
            emit reported(QString(">> %1").arg(hexadecimal(bytes)));
    }
}

void SerialCamera::wakeWhenDue()
{
    auto due = camera.nextDue();
    if (!pieces.empty())
        due = std::min(due.value_or(pieces.front().due), pieces.front().due);
    if (!due)
        return wakeTimer.stop();
    wakeTimer.start(std::max(*due - now(), ViscaCamera::Time::zero()));
}
