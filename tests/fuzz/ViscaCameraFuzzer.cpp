// Feeds the simulated camera with any bytes in any chunks at any times, and compares the frames that it reads
// with those of a second, plain reader. The camera must answer each frame for it and nothing else, and stop
// answering when nothing more arrives.
//
// An input begins with the byte stream. How the camera starts, and for each chunk its size, its repeats and
// the pause after it, is read from the end backwards; the last chunk takes the rest.

#include "ViscaCamera.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>

namespace {

using Event = ViscaCamera::Event;
using Time = ViscaCamera::Time;

constexpr char FrameEnd = '\xFF';
constexpr int LongestFrame = 16;
constexpr Time FrameTimeout{1000};
// A command gets an ACK and a completion.
constexpr int MostRepliesToAFrame = 2;
// Replies that still come when nothing more arrives: to a full queue, and to two movements.
constexpr int MostRepliesAtTheEnd = 64 * MostRepliesToAFrame + 2;

constexpr std::size_t LargestChunk = 64;
constexpr int MostChunks = 8;
constexpr int MostRepeats = 20;
constexpr int LongestPauseMs = 3000;

// A second reader of frames, plain, slow and without a limit of memory.
class PlainReader
{
public:
    explicit PlainReader(int address)
        : address(address)
    {
    }

    // Takes a chunk. Afterwards `pieces` has what it completes, and `frames` how many of these the camera
    // answers.
    void take(const QByteArray& chunk, Time now)
    {
        pieces.clear();
        frames = 0;
        if (!frame.isEmpty() && now - lastByteAt >= FrameTimeout)
            finish(frame);
        if (chunk.isEmpty())
            return;
        for (const char byte : chunk) {
            QByteArray& current = frame.isEmpty() && (byte & 0xF0) != 0x80 ? noise : frame;
            if (&current == &frame)
                finish(noise);
            current.append(byte);
            if (&current == &frame && byte == FrameEnd) {
                frames += isForIt();
                finish(frame);
            }
        }
        finish(noise);
        lastByteAt = now;
    }

    int address;
    QList<QByteArray> pieces;
    int frames = 0;

private:
    void finish(QByteArray& bytes)
    {
        if (!bytes.isEmpty())
            pieces.append(&bytes == &frame ? bytes.left(LongestFrame + 1) : bytes);
        bytes.clear();
    }

    bool isForIt()
    {
        const int receiver = frame.at(0) & 0xF;
        if (frame.size() == 4 && frame.startsWith("\x88\x30") && frame.at(2) >= 1 && frame.at(2) <= 7) {
            address = frame.at(2);
            return true;
        }
        return receiver == address || frame == QByteArray("\x88\x01\x00\x01\xFF", 5);
    }

    QByteArray frame;
    QByteArray noise;
    Time lastByteAt{0};
};

// Checks the camera's events. Returns the number of replies, and appends what it has read to `pieces`.
int look(const std::vector<Event>& events, QList<QByteArray>& pieces)
{
    int replies = 0;
    for (const Event& event : events) {
        if (event.words.isEmpty())
            qFatal("an event without words: %s", event.bytes.toHex(' ').constData());
        if (event.kind != Event::Kind::Reply) {
            pieces.append(event.bytes);
            continue;
        }
        ++replies;
        if (event.bytes.size() < 3 || event.bytes.size() > LongestFrame || !event.bytes.endsWith(FrameEnd) ||
            event.bytes.indexOf(FrameEnd) != event.bytes.size() - 1)
            qFatal("not a valid reply: %s", event.bytes.toHex(' ').constData());
    }
    return replies;
}

void checkPosition(const ViscaCamera& camera)
{
    const auto here = camera.position();
    const bool isPossible = std::abs(here.pan) <= Mechanics::panLimit &&
                            here.tilt >= Mechanics::tiltLowLimit && here.tilt <= Mechanics::tiltHighLimit &&
                            here.zoom >= 0 && here.zoom <= Mechanics::zoomTele;
    if (!isPossible)
        qFatal("the camera is at %f, %f, %f", here.pan, here.tilt, here.zoom);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    ViscaCamera::Options options(input.ConsumeBool() ? ViscaCamera::BusyRules::Strict
                                                     : ViscaCamera::BusyRules::Lenient);
    options.standby = input.ConsumeBool();
    options.address = input.ConsumeIntegralInRange(1, 7);
    options.presets = input.ConsumeIntegralInRange(1, 255);
    ViscaCamera camera(options);
    PlainReader model(options.address);
    Time now{0};
    int frames = 0;
    int replies = 0;

    for (int chunks = 1; input.remaining_bytes() > 0; ++chunks) {
        const bool isLast = chunks == MostChunks;
        const auto chunkSize = input.ConsumeIntegralInRange<std::size_t>(1, LargestChunk);
        const int repeats = input.ConsumeIntegralInRange(1, MostRepeats);
        const Time pause(input.ConsumeIntegralInRange(0, LongestPauseMs));
        const QByteArray chunk = QByteArray::fromStdString(
                                     input.ConsumeBytesAsString(isLast ? input.remaining_bytes() : chunkSize))
                                     .repeated(repeats);

        QList<QByteArray> pieces;
        replies += look(camera.advance(now), pieces);
        if (replies > MostRepliesToAFrame * frames)
            qFatal("%d replies to %d frames", replies, frames);
        replies += look(camera.receive(chunk, now), pieces);
        model.take(chunk, now);
        if (pieces != model.pieces)
            qFatal("the camera reads other frames than the model in %s", chunk.toHex(' ').constData());
        frames += model.frames;
        checkPosition(camera);
        now += pause;
    }

    QList<QByteArray> pieces;
    int repliesAtTheEnd = 0;
    while (const auto due = camera.nextDue())
        repliesAtTheEnd += look(camera.advance(*due), pieces);
    replies += repliesAtTheEnd;
    model.take({}, now + FrameTimeout);
    if (pieces != model.pieces || repliesAtTheEnd > MostRepliesAtTheEnd)
        qFatal("at the end there were %d more replies", repliesAtTheEnd);
    if (replies < frames || replies > MostRepliesToAFrame * frames)
        qFatal("%d replies to %d frames", replies, frames);
    checkPosition(camera);
    return 0;
}
