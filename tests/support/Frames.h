#pragma once

#include <QByteArray>
#include <QString>

// The frames that the program sends with its default settings, as CameraEnd gives them.

constexpr char Up[] = "81 01 06 01 05 05 03 01 ff";
constexpr char Down[] = "81 01 06 01 05 05 03 02 ff";
constexpr char Left[] = "81 01 06 01 05 05 01 03 ff";
constexpr char Right[] = "81 01 06 01 05 05 02 03 ff";
constexpr char Stop[] = "81 01 06 01 05 05 03 03 ff";
constexpr char Home[] = "81 01 06 04 ff";
constexpr char FullWide[] = "81 01 04 07 37 ff";
constexpr char ZoomIn[] = "81 01 04 07 25 ff";
constexpr char ZoomOut[] = "81 01 04 07 35 ff";
constexpr char ZoomStop[] = "81 01 04 07 00 ff";

// The program never asks this.
constexpr char PositionInquiry[] = "81 09 06 12 ff";

inline QByteArray setPreset(int number)
{
    return QString("81 01 04 3f 01 %1 ff").arg(number, 2, 16, QChar('0')).toLatin1();
}

inline QByteArray recallPreset(int number)
{
    return QString("81 01 04 3f 02 %1 ff").arg(number, 2, 16, QChar('0')).toLatin1();
}
