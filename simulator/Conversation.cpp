#include "Conversation.h"

#include "FramePattern.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cstring>

namespace {

using Time = Conversation::Time;
using Kind = Dialogue::Step::Kind;

// The line is quiet when nothing has arrived for `quiet`. Wait for that at most `longestChatter`.
constexpr Time quiet{50};
constexpr Time longestChatter{3000};
// How long to wait at the end for answers that are not expected.
constexpr Time silenceAtTheEnd{100};
// If this many frames get no answer, there is no camera.
constexpr int framesToAnswer = 2;
const char* const nothing = "nothing";

// A command that moves a part of the camera until it is stopped, and the command that stops it.
struct Motion
{
    const char* drive;
    const char* stop;
};

constexpr std::array<Motion, 3> motions{{
    {"8x 01 06 01 ?? ?? ?? ?? FF", "8x 01 06 01 VV WW 03 03 FF"},
    {"8x 01 04 07 ?? FF", "8x 01 04 07 00 FF"},
    {"8x 01 04 08 ?? FF", "8x 01 04 08 00 FF"},
}};

int widestAnswer(const Dialogue& dialogue)
{
    int width = static_cast<int>(std::strlen("expected"));
    for (const Dialogue::Step& step : dialogue.steps) {
        if (step.kind == Kind::Expect)
            width = std::max(width, static_cast<int>(step.bytes.size()));
    }
    return width;
}

QString afterGap(const QString& remark)
{
    return remark.isEmpty() ? QString() : "  # " + remark;
}

} // namespace

Conversation::Conversation(const Dialogue& dialogueToHold)
    : dialogue(dialogueToHold)
    , width(widestAnswer(dialogueToHold))
{
    report += "Dialogue " + dialogue.name;
    for (const QString& remark : dialogue.remarks)
        report += "# " + remark;
    if (!dialogue.cameraOptions.isEmpty())
        report += QString("for a camera like vantrel-camera %1").arg(dialogue.cameraOptions.join(' '));
    if (dialogue.isLenient)
        report += "for a camera like vantrel-camera without --strict";
    report += QString("  %1  received").arg("expected", -width);
}

void Conversation::proceed(const QByteArray& bytes, Time now)
{
    clock = now;
    takeAnswers(bytes);
    while (!over && current < dialogue.steps.size() && perform(dialogue.steps[current]))
        ++current;
    if (over || current < dialogue.steps.size() || !settles(sentAt + silenceAtTheEnd))
        return;
    over = true;
    if (differenceCount == 0)
        report += "as expected";
    else if (!isMute())
        report += QString("differences: %1").arg(differenceCount);
}

void Conversation::stop(Time now)
{
    clock = now;
    isDeaf = true;
    lastByteAt = clock + quiet;
    for (const QByteArray& cancel : std::exchange(sockets, {}))
        say(cancel, "stops what is under way");
    const auto frames = std::exchange(stops, {});
    for (const QByteArray& frame : frames)
        say(frame, "stops what moves");
}

void Conversation::takeAnswers(const QByteArray& bytes)
{
    if (bytes.isEmpty())
        return;
    lastByteAt = clock;
    if (isDeaf)
        return;
    heardAnything = true;
    received += bytes;
    while (received.contains(frameEnd)) {
        const QByteArray answer = received.left(received.indexOf(frameEnd) + 1);
        received.remove(0, answer.size());
        noteSocket(answer);
        answers.push_back({answer, clock});
    }
}

// A socket is in use from its ACK to its completion or error. Store the frame that cancels it.
void Conversation::noteSocket(const QByteArray& answer)
{
    const auto cancel = [](FrameNumbers numbers) {
        numbers['x'] -= 8;
        return makeFrame("8x 2s FF", numbers);
    };
    if (const auto ack = matchFrame(answer, "x0 4s FF"))
        sockets.insert(cancel(*ack));
    for (const char* const end : {"x0 5s FF", "x0 6s ?? FF"}) {
        if (const auto numbers = matchFrame(answer, end))
            sockets.erase(cancel(*numbers));
    }
}

// Whether the step is over. If not, proceed() performs it again later.
bool Conversation::perform(const Dialogue::Step& step)
{
    if (step.kind == Kind::Expect)
        return expect(step);
    if (step.kind == Kind::Silence) {
        rejectAnswers();
        return !waits(sentAt + step.within);
    }
    if (!settles(sentAt + step.after))
        return false;
    isDeaf = false;
    hasDiffered = false;
    sentAt = clock;
    ++sentCount;
    say(QByteArray::fromHex(step.bytes), step.remark);
    return true;
}

// Whether `time` has come and the line is quiet. After a difference and at the end, first stops what moves.
bool Conversation::settles(Time time)
{
    if (waits(std::max(time, std::min(lastByteAt + quiet, time + longestChatter))))
        return false;
    if (!received.isEmpty())
        answers.push_back({std::exchange(received, {}), lastByteAt});
    rejectAnswers();
    if (isMute() && sentCount >= framesToAnswer) {
        over = true;
        return false;
    }
    const bool moves = !sockets.empty() || !stops.isEmpty();
    if (!moves || (!hasDiffered && current < dialogue.steps.size()))
        return true;
    stop(clock);
    return !waits(lastByteAt + quiet);
}

bool Conversation::waits(Time time)
{
    due = time;
    return clock < time;
}

bool Conversation::expect(const Dialogue::Step& step)
{
    for (; !answers.empty() && !isExpectedLater(answers.front().bytes); answers.pop_front()) {
        const Answer answer = answers.front();
        if (!matches(step, answer.bytes)) {
            unexpected.push_back(answer);
            continue;
        }
        answers.pop_front();
        rejectUnexpected();
        tell(step.bytes, answer, answer.at < sentAt + step.after ? "too early" : "", step.remark);
        return true;
    }
    if (answers.empty() && waits(sentAt + step.within))
        return false;
    if (unexpected.empty())
        unexpected.push_back({{}, clock});
    tell(step.bytes, unexpected.front(), "differs", step.remark);
    unexpected.pop_front();
    return true;
}

// Whether an answer does not match the current step, but a later one before the next frame.
bool Conversation::isExpectedLater(const QByteArray& answer) const
{
    for (auto step = current; step < dialogue.steps.size(); ++step) {
        if (dialogue.steps[step].kind != Kind::Expect)
            return false;
        if (matches(dialogue.steps[step], answer))
            return step > current;
    }
    return false;
}

bool Conversation::matches(const Dialogue::Step& step, const QByteArray& answer) const
{
    // The socket in a reply such as "90 41 FF", which the camera may choose.
    static const QRegularExpression socketReply("(?<=^.. [456])[12]");
    QString expected = step.bytes;
    const int socket = answer.size() > 1 ? answer.at(1) & 0x0F : 0;
    if (!dialogue.socketsMatter && (socket == 1 || socket == 2))
        expected.replace(socketReply, QString::number(socket));
    return matchFrame(answer, expected.toLatin1().constData()).has_value();
}

void Conversation::rejectAnswers()
{
    unexpected.insert(unexpected.end(), answers.begin(), answers.end());
    answers.clear();
    rejectUnexpected();
}

void Conversation::rejectUnexpected()
{
    for (const Answer& answer : std::exchange(unexpected, {}))
        tell(nothing, answer, "differs");
}

// Outputs frames and keeps track of what they set in motion and what they stop.
void Conversation::say(const QByteArray& frames, const QString& remark)
{
    report += QString("> %1%2").arg(hexadecimal(frames), afterGap(remark));
    output += frames;
    const QList<QByteArray> parts = frames.split(frameEnd);
    for (const QByteArray& part : parts) {
        const QByteArray frame = part + frameEnd;
        for (std::size_t index = 0; index < motions.size(); ++index) {
            if (matchFrame(frame, motions[index].stop))
                stops.remove(index);
            else if (const auto drive = matchFrame(frame, motions[index].drive))
                stops[index] = makeFrame(motions[index].stop, {{'x', drive->value('x')}, {'V', 1}, {'W', 1}});
        }
    }
}

void Conversation::tell(const QByteArray& expected, const Answer& answer, const QString& difference,
                        const QString& remark)
{
    if (!difference.isEmpty()) {
        ++differenceCount;
        hasDiffered = true;
    }
    const QString text = answer.bytes.isEmpty() ? nothing : hexadecimal(answer.bytes);
    report += QString("< %1  %2  %3 ms  %4")
                  .arg(QString(expected), -width)
                  .arg(text, -width)
                  .arg((answer.at - sentAt).count(), 5)
                  .arg(difference)
                  .trimmed() +
              afterGap(remark);
}
