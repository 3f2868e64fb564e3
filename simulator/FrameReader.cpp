#include "FrameReader.h"

#include <utility>

namespace {

// An unfinished frame followed by this much silence will never be finished.
constexpr FrameReader::Time frameTimeout{1000};

bool isHeader(char byte)
{
    return (static_cast<quint8>(byte) & 0xF0) == 0x80;
}

} // namespace

std::vector<FrameReader::Piece> FrameReader::take(const QByteArray& bytes, Time now)
{
    if (bytes.isEmpty())
        return {};
    if (!frame.isEmpty() && now - lastByteAt >= frameTimeout)
        pieces.push_back({Piece::Kind::Unfinished, std::exchange(frame, {})});
    lastByteAt = now;
    for (const char byte : bytes)
        takeByte(byte);
    finishNoise();
    return std::exchange(pieces, {});
}

void FrameReader::takeByte(char byte)
{
    if (frame.isEmpty() && !isHeader(byte)) {
        noise.append(byte);
        return;
    }
    finishNoise();
    // One byte too many is kept to tell a frame that is too long, and no more than that.
    if (frame.size() <= longestFrame)
        frame.append(byte);
    if (byte == terminator)
        pieces.push_back({Piece::Kind::Frame, std::exchange(frame, {})});
}

void FrameReader::finishNoise()
{
    if (!noise.isEmpty())
        pieces.push_back({Piece::Kind::Noise, std::exchange(noise, {})});
}
