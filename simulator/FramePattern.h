#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>
#include <string_view>

/**
 * Patterns of frames and replies, written as in a camera's manual, such as "8x 01 04 47 0p 0p 0p 0p FF".
 *
 * A hexadecimal digit (0 to 9, A to F) stands for itself and "?" for any digit. Each other letter names a
 * number. A letter that occurs more than once stands for the digits of one number, the highest first.
 */

/** Ends each frame and each reply. */
constexpr char frameEnd = '\xFF';

/** The length of the longest valid frame in bytes, including header and FF. */
constexpr int longestFrame = 16;

/** The numbers in a frame, by the letters of its pattern. */
using FrameNumbers = QMap<char, int>;

/** Returns the numbers in `frame`; nothing if it does not match `pattern`. */
std::optional<FrameNumbers> matchFrame(const QByteArray& frame, std::string_view pattern);

/** Returns the frame that has these numbers in `pattern`. Negative numbers become two's complement. */
QByteArray makeFrame(std::string_view pattern, FrameNumbers numbers);

/** The bytes in the notation of manuals, "90 41 FF". */
QString hexadecimal(const QByteArray& bytes);
