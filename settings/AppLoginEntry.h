#pragma once

/**
 * Writes or removes the entry that makes a Linux desktop start the program when the user logs in:
 * "Vantrel.desktop" in the XDG autostart folder, which does nothing once the program is removed. The file is
 * replaced as a whole or not at all. Failures are silent. The rules of the entry are freedesktop.org's
 * "Desktop Entry" and "Desktop Application Autostart".
 */
void setLoginEntry(bool enabled);
