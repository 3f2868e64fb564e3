#pragma once

#include <string>

/**
 * The floor of the activity log: opens the file for appending, writes the entry and closes the file, with
 * plain system calls.
 */
void writePlainLogLine(const std::string& path, const std::string& line);
