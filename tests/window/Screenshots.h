#pragma once

#include "window/Window.h"

#include <QRect>
#include <QString>

/**
 * Waits until a window looks like its stored picture, screenshots/<name>.png.
 *
 * A pixel differs when one of its colours is off by more than a shade. Of every small square of the picture a
 * share of the pixels may differ: enough for another way of smoothing the letters, too little for a missing
 * word, another symbol, or an edge that has moved by three pixels.
 *
 * With RENEW_SCREENSHOTS in the environment the window's present look is stored instead.
 *
 * @param part the part of the window to compare, for a picture put together of several moments; all by
 * default
 * @return empty, or what differs after five seconds; the window as it looks is then in screenshots/ below the
 *         current folder
 */
QString differenceFrom(const QString& name, const Window& window, const QRect& part = {});
