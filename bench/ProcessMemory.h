#pragma once

#include <QtGlobal>

/**
 * Reads a process's memory usage from /proc.
 *
 * @param field "VmRSS" for its resident memory now, "VmHWM" for the peak of it
 * @return the memory in KiB; 0 if there is no such process
 */
double processMemory(qint64 pid, const char* field);
