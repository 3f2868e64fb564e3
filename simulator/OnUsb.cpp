#include "support/UsbBus.h"

#include <QCoreApplication>

#include <cstdio>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int exitUsage = 2;
constexpr int exitNotFound = 127;
constexpr int exitSignalBase = 128;

constexpr DeviceId wchCh340{"1a86", "7523"};

} // namespace

/**
 * Runs a program on a made-up computer whose one USB serial adapter leads to a terminal, and ends with the
 * program's exit status. So a controller finds the simulated camera by itself. Needs umockdev-wrapper around
 * it.
 */
int main(int argc, char* argv[])
{
    if (argc < 3) {
        static_cast<void>(std::fputs("Usage: on-usb TERMINAL PROGRAM [ARGUMENT...]\n", stderr));
        return exitUsage;
    }
    const QCoreApplication application(argc, argv);
    UsbBus bus;
    bus.plug("1-1", wchCh340, QString::fromLocal8Bit(argv[1]));

    const pid_t child = fork();
    if (child == 0) {
        // Without its computer it has no camera.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        execvp(argv[2], argv + 2);
        std::perror(argv[2]);
        _exit(exitNotFound);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : exitSignalBase + WTERMSIG(status);
}
