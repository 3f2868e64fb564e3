#include "UsbBus.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int exitUsage = 2;
constexpr int exitNotFound = 127;
constexpr int exitSignalBase = 128;

constexpr DeviceId wchCh340{"1a86", "7523"};

// The signals that end programs, and the one that says that a child has ended.
sigset_t awaitedSignals()
{
    sigset_t awaited;
    sigemptyset(&awaited);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD})
        sigaddset(&awaited, number);
    return awaited;
}

// Passes on what asks for the end, and stays until the child has ended: it needs the mocked bus to the last.
int statusAtEndOf(pid_t child, const sigset_t& awaited)
{
    int status = 0;
    while (waitpid(child, &status, WNOHANG) == 0) {
        const int number = sigwaitinfo(&awaited, nullptr);
        if (number > 0 && number != SIGCHLD)
            kill(child, number);
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : exitSignalBase + WTERMSIG(status);
}

} // namespace

/**
 * Runs a program on a made-up computer whose one USB serial adapter leads to a terminal, and ends with the
 * program's exit status. So a controller finds the simulated camera by itself. Needs umockdev-wrapper around
 * it.
 */
int main(int argc, char* argv[])
{
    if (argc < 4) {
        static_cast<void>(std::fputs("Usage: on-usb PORT TERMINAL PROGRAM [ARGUMENT...]\n", stderr));
        return exitUsage;
    }
    // Before the bus starts threads, which would take them otherwise.
    const sigset_t awaited = awaitedSignals();
    sigset_t former;
    sigprocmask(SIG_BLOCK, &awaited, &former);

    const QCoreApplication application(argc, argv);
    UsbBus bus;
    bus.plug("1-1", wchCh340, QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[1]));

    const pid_t child = fork();
    if (child == 0) {
        sigprocmask(SIG_SETMASK, &former, nullptr);
        // Out of the terminal's reach: Ctrl+C comes once, from here. The second one would end it at once.
        setpgid(0, 0);
        // Without its computer it has no camera.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        execvp(argv[3], argv + 3);
        std::perror(argv[3]);
        _exit(exitNotFound);
    }
    return statusAtEndOf(child, awaited);
}
