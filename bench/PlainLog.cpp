#include "PlainLog.h"

#include <fcntl.h>
#include <unistd.h>

void writePlainLogLine(const std::string& path, const std::string& line)
{
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (file == -1)
        return;
    static_cast<void>(!write(file, line.data(), line.size()));
    close(file);
}
