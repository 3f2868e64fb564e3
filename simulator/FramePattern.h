#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <optional>
#include <string_view>

/**
 * Frames and replies as a camera's manual writes them, such as "8x 01 04 47 0p 0p 0p 0p FF".
 *
 * A hexadecimal digit (0 to 9, A to F) stands for itself and "?" for any digit. Each other letter names a
 * number; where it stands more than once, these are the digits of one number, the highest first.
 */

/** Ends each frame and each reply. */
constexpr char frameEnd = '\xFF';

/** The most bytes that a frame has, header and FF included. */
constexpr int longestFrame = 16;

/** The numbers of a frame by the letters of its pattern. */
using FrameNumbers = QMap<char, int>;

/** The numbers in `frame`; nothing if it does not look like `pattern`. */
std::optional<FrameNumbers> matchFrame(const QByteArray& frame, std::string_view pattern);

/** The frame that looks like `pattern` with these numbers; negative ones are sent as two's complement. */
QByteArray makeFrame(std::string_view pattern, FrameNumbers numbers);

/** The bytes as manuals write them, "90 41 FF". */
QString hexadecimal(const QByteArray& bytes);
