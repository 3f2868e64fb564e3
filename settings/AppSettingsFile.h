#pragma once

#include <QString>

/**
 * Makes a settings file ready for QSettings. Failures are silent.
 *
 * - Removes its lock file if that is empty. A program killed while QSettings makes the lock leaves it so, and
 *   the next change of a setting would wait 30 seconds for its owner.
 * - Turns a file that is no UTF-8 into UTF-8, taking each byte for a character of Latin-1, as Qt 5 does. Qt 6
 *   takes every file for UTF-8 and would lose these characters.
 *
 * @param path the settings file; it may not exist
 * @return whether the file is UTF-8 now; it is not if it was not and cannot be written
 */
bool prepareSettingsFile(const QString& path);
