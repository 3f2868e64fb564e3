#pragma once

/**
 * Writes or removes "Vantrel.desktop" in the XDG autostart folder, which makes a Linux desktop start the
 * program when the user logs in. Once the program is removed, the desktop ignores the file. The file is
 * replaced as a whole or not at all. Failures are silent. Its format is that of freedesktop.org's "Desktop
 * Entry" and "Desktop Application Autostart".
 */
void setLoginEntry(bool enabled);
