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
 * Waits until a window looks like its stored picture, screenshots/<name>.png. The pictures are compared only
 * with the Qt and on the system that screenshots/README.md names.
 *
 * With RENEW_SCREENSHOTS in the environment, stores the window's present look instead.
 *
 * @return empty, or what differs after five seconds; what the window shows then is saved in screenshots/ in
 * the current folder
 */
QString differenceFromPicture(const QString& name, const Window& window);

/** Why the stored pictures are not compared; empty if they are. */
QString whyPicturesAreLeftOut();

/**
 * The state that a button or a slider's handle shows by its image or its colour: "at rest", "under the
 * pointer" or "pressed"; otherwise a description of what it shows.
 *
 * @param control the widget of the window's copy
 */
QString stateShown(const Window& window, const QWidget* control);
