#include "Replay.h"

#include "FramePattern.h"
#include "FrameReader.h"

#include <algorithm>
#include <cstring>

namespace {

using Time = Dialogue::Time;

// What else the camera has to say has come by then.
constexpr Time silenceAtTheEnd{100};
const char* const nothing = "nothing";

int widestAnswer(const Dialogue& dialogue)
{
    int width = static_cast<int>(std::strlen("expected"));
    for (const Dialogue::Step& step : dialogue.steps) {
        if (step.kind == Dialogue::Step::Kind::Expect)
            width = std::max(width, static_cast<int>(step.bytes.size()));
    }
    return width;
}

} // namespace

Replay::Replay(const Dialogue& dialogueToHold)
    : dialogue(dialogueToHold)
    , width(widestAnswer(dialogueToHold))
{
    wakeTimer.setSingleShot(true);
    wakeTimer.setTimerType(Qt::PreciseTimer);
    connect(&wakeTimer, SIGNAL(timeout()), this, SLOT(proceed()));
    connect(&port, SIGNAL(readyRead()), this, SLOT(proceed()));
    connect(&port, SIGNAL(errorOccurred(QSerialPort::SerialPortError)), this,
                          SLOT(giveUp(QSerialPort::SerialPortError)));
}

QString Replay::start(const QString& portName, int baudRate)
{
    port.setPortName(portName);
    // The other settings of a closed port are those wanted: 8N1 without flow control.
    port.setBaudRate(baudRate);
    if (!port.open(QIODevice::ReadWrite))
        return QString("cannot open %1: %2").arg(portName, port.errorString());
    // What was there before belongs to no dialogue.
    port.clear();
    sinceLastFrame.start();
    if (!dialogue.cameraOptions.isEmpty())
        emit reported(QString("for a camera like vantrel-camera %1").arg(dialogue.cameraOptions.join(' ')));
    emit reported(QString("  %1  received").arg("expected", -width));
    proceed();
    return {};
}

void Replay::proceed()
{
    received += port.readAll();
    while (current < dialogue.steps.size()) {
        if (!perform(dialogue.steps[current]))
            return;
        ++current;
        endsAt = now() + silenceAtTheEnd;
    }
    expectNothing();
    if (now() < endsAt)
        return wakeAt(endsAt);
    if (!received.isEmpty())
        report(nothing, hexadecimal(received), "differs");
    port.close();
    emit reported(differenceCount == 0 ? QString("as expected")
                                       : QString("differences: %1").arg(differenceCount));
    emit finished();
}

void Replay::giveUp(QSerialPort::SerialPortError error)
{
    // A successful open() says that there is no error; a failed one is told by start().
    if (error == QSerialPort::NoError || !port.isOpen())
        return;
    failureReason = QString("the port is lost: %1").arg(port.errorString());
    wakeTimer.stop();
    port.close();
    emit finished();
}

// Whether the step is over; if not, a timer or an answer goes on with it.
bool Replay::perform(const Dialogue::Step& step)
{
    using Kind = Dialogue::Step::Kind;
    const Time until = step.kind == Kind::Send ? step.after : step.within;
    const QByteArray answer = step.kind == Kind::Expect ? takeAnswer() : QByteArray();
    if (step.kind == Kind::Silence)
        expectNothing();
    if (answer.isEmpty() && now() < until) {
        wakeAt(until);
        return false;
    }
    if (step.kind == Kind::Send)
        send(step);
    else if (step.kind == Kind::Expect)
        compare(step, answer);
    return true;
}

void Replay::send(const Dialogue::Step& step)
{
    expectNothing();
    emit reported(QString("> %1").arg(QString(step.bytes)));
    // Before the bytes are gone: the camera cannot be early then.
    sinceLastFrame.restart();
    port.write(QByteArray::fromHex(step.bytes));
    port.flush();
}

// The next whole answer, empty if there is none yet.
QByteArray Replay::takeAnswer()
{
    const auto size = received.indexOf(FrameReader::terminator) + 1;
    QByteArray answer = received.left(size);
    received.remove(0, size);
    return answer;
}

void Replay::compare(const Dialogue::Step& step, const QByteArray& answer)
{
    if (!matchFrame(answer, step.bytes.constData()))
        report(step.bytes, answer.isEmpty() ? nothing : hexadecimal(answer), "differs");
    else
        report(step.bytes, hexadecimal(answer), now() < step.after ? "too early" : "");
}

void Replay::expectNothing()
{
    for (QByteArray answer = takeAnswer(); !answer.isEmpty(); answer = takeAnswer())
        report(nothing, hexadecimal(answer), "differs");
}

void Replay::report(const QString& expected, const QString& answer, const QString& difference)
{
    if (!difference.isEmpty())
        ++differenceCount;
    emit reported(QString("< %1  %2  %3 ms  %4")
                      .arg(expected, -width)
                      .arg(answer, -width)
                      .arg(now().count(), 5)
                      .arg(difference)
                      .trimmed());
}

Replay::Time Replay::now() const
{
    return Time(sinceLastFrame.elapsed());
}

void Replay::wakeAt(Time time)
{
    wakeTimer.start(std::max(time - now(), Time(0)));
}
