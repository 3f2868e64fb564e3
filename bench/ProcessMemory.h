#pragma once

#include <QtGlobal>

/**
 * What Linux tells in /proc about a process's memory.
 *
 * @param field "VmRSS" for what it has in RAM now, "VmHWM" for the most that it ever had
 * @return in KiB; 0 if there is no such process
 */
double processMemory(qint64 pid, const char* field);
