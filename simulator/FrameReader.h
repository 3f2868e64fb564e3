#pragma once

#include <QByteArray>

#include <chrono>
#include <vector>

/**
 * Cuts what arrives on the line into VISCA frames.
 *
 * A frame runs from its header (80 to 8F) to FF; bytes before a header are noise. Of a frame that is too long
 * only the beginning is kept, and a frame that is not finished within a second of silence is forgotten, so
 * any byte stream takes bounded memory. Times are milliseconds on the caller's clock.
 */
class FrameReader
{
public:
    using Time = std::chrono::milliseconds;

    /** Ends each frame and each reply. */
    static constexpr char terminator = '\xFF';

    /** The most bytes that a frame has, header and FF included. */
    static constexpr int longestFrame = 16;

    struct Piece
    {
        enum class Kind
        {
            /** From its header to FF; of one too long the first 17 bytes. */
            Frame,
            /** Bytes that belong to no frame. */
            Noise,
            /** The beginning of a frame whose rest never came. */
            Unfinished
        };

        Kind kind;
        QByteArray bytes;
    };

    /** Takes `bytes` as arriving at `now`, cut anywhere, and returns what is complete with them, in order. */
    std::vector<Piece> take(const QByteArray& bytes, Time now);

private:
    void takeByte(char byte);
    void finishNoise();

    std::vector<Piece> pieces;
    QByteArray frame;
    QByteArray noise;
    Time lastByteAt{0};
};
