#pragma once

#include "system/window/Window.h"

#include <QString>

class QWidget;

/**
 * Waits until a window of the program, or a part of it, looks like its copy in this process.
 *
 * @param copy the copied window, or a widget of it for that part alone
 * @return empty, or what differs after five seconds
 */
QString differenceFromCopy(const Window& window, QWidget* copy);

/**
 * Waits until a window looks like its stored picture, screenshots/<name>.png, where that tells anything: with
 * the Qt and on the system in screenshots/README.md. Elsewhere it is left out.
 *
 * With RENEW_SCREENSHOTS in the environment the window's present look is stored instead.
 *
 * @return empty, or what differs after five seconds; the window as it looks is then in screenshots/ below the
 *         current folder
 */
QString differenceFromPicture(const QString& name, const Window& window);

/** Empty where the stored pictures are compared, or why they are left out. */
QString whyPicturesAreLeftOut();

/**
 * What a button or a slider's handle shows by its image or its colour: "at rest", "under the pointer" or
 * "pressed"; else what it shows instead.
 *
 * @param control the widget of the window's copy
 */
QString stateShown(const Window& window, const QWidget* control);
