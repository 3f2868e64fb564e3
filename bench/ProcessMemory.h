#pragma once

#include <QtGlobal>

/**
 * Reads a process's memory usage from /proc.
 *
 * @param field "VmRSS" for what it has in RAM now, "VmHWM" for the most that it has had
 * @return in KiB; 0 if there is no such process
 */
double processMemory(qint64 pid, const char* field);
