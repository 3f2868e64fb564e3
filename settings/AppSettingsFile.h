#pragma once

#include <QString>

/**
 * Prepares a settings file for QSettings. Failures are silent.
 *
 * - Removes an empty lock file. A program that is killed while QSettings creates the lock leaves one behind,
 *   and the next change of a setting would wait 30 seconds for its owner.
 * - Converts a file that is not UTF-8 to UTF-8. Its bytes are read as Latin-1, as Qt 5 reads them. Qt 6 reads
 *   every file as UTF-8 and would lose these characters.
 *
 * @param path the settings file; it may be missing
 * @return whether the file is UTF-8 now; false if it could not be converted
 */
bool prepareSettingsFile(const QString& path);
