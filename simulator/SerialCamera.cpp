#include "SerialCamera.h"

#include "FramePattern.h"

#include <algorithm>

SerialCamera::SerialCamera(const ViscaCamera::Options& options, const ReplyFaults::Options& faults,
                           const QString& link)
    : camera(options)
    , faulty(faults.any())
    , replyFaults(faults)
    , portLink(link)
{
    clock.start();
    wakeTimer.setSingleShot(true);
    wakeTimer.setTimerType(Qt::PreciseTimer);
    connect(&wakeTimer, SIGNAL(timeout()), this, SLOT(passTime()));
}

SerialCamera::~SerialCamera() = default;

QString SerialCamera::plugIn()
{
    terminal.emplace();
    if (!terminal->isOpen())
        return QString("cannot open a pseudo-terminal: %1").arg(terminal->errorString());
    QString failure = portLink.pointTo(terminal->path());
    if (!failure.isEmpty())
        return failure;

    notifier.emplace(terminal->descriptor(), QSocketNotifier::Read);
    connect(&*notifier, &QSocketNotifier::activated, this, &SerialCamera::readLine);
    emit reported(QString("Camera at %1").arg(terminal->path()));
    if (!portLink.path().isEmpty())
        emit reported(QString("Link at %1").arg(portLink.path()));
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

void SerialCamera::readLine()
{
    handle(camera.receive(terminal->read(), now()));
}

void SerialCamera::passTime()
{
    handle(camera.advance(now()));
}

ViscaCamera::Time SerialCamera::now() const
{
    return ViscaCamera::Time(clock.elapsed());
}

void SerialCamera::handle(const std::vector<ViscaCamera::Event>& events)
{
    for (const ViscaCamera::Event& event : events) {
        const bool isReply = event.kind == ViscaCamera::Event::Kind::Reply;
        emit happened(event);
        emit reported(QString("%1 %2  %3").arg(isReply ? "->" : "<-", hexadecimal(event.bytes), event.words));
        if (isReply)
            replyFaults.take(event.bytes, now());
    }
    sendReplies();
    wakeWhenDue();
}

void SerialCamera::sendReplies()
{
    for (const QByteArray& piece : replyFaults.release(now())) {
        if (!terminal)
            continue;
        if (!terminal->write(piece))
            emit reported("Reply lost, nobody reads the line");
        else if (faulty)
            emit reported(QString(">> %1").arg(hexadecimal(piece)));
    }
}

void SerialCamera::wakeWhenDue()
{
    const auto cameraDue = camera.nextDue();
    const auto replyDue = replyFaults.nextDue();
    if (!cameraDue && !replyDue)
        return wakeTimer.stop();
    const auto due =
        std::min(cameraDue.value_or(ViscaCamera::Time::max()), replyDue.value_or(ViscaCamera::Time::max()));
    wakeTimer.start(std::max(due - now(), ViscaCamera::Time::zero()));
}
