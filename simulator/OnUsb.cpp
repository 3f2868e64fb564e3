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

// The signals that end programs, and SIGCHLD.
sigset_t awaitedSignals()
{
    sigset_t awaited;
    sigemptyset(&awaited);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGCHLD})
        sigaddset(&awaited, number);
    return awaited;
}

// Passes signals on and waits until the child has ended, because the child needs the mocked bus.
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
 * Runs a program with a mocked USB bus, whose only serial adapter is connected to a terminal, so that AUTO
 * finds the simulated camera there. Ends with the program's exit status. Start it with umockdev-wrapper.
 */
int main(int argc, char* argv[])
{
    if (argc < 4) {
        static_cast<void>(std::fputs("Usage: on-usb PORT TERMINAL PROGRAM [ARGUMENT...]\n", stderr));
        return exitUsage;
    }
    // Block the signals before the bus starts threads. Otherwise a thread could receive them.
    const sigset_t awaited = awaitedSignals();
    sigset_t former;
    sigprocmask(SIG_BLOCK, &awaited, &former);

    const QCoreApplication application(argc, argv);
    UsbBus bus;
    bus.plug("1-1", wchCh340, QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[1]));

    const pid_t child = fork();
    if (child == 0) {
        sigprocmask(SIG_SETMASK, &former, nullptr);
        // In a process group of its own, the child gets Ctrl+C only once, from us. A second one would end it
        // at once.
        setpgid(0, 0);
        // End the program when on-usb ends: the mocked bus goes with it.
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        execvp(argv[3], argv + 3);
        std::perror(argv[3]);
        _exit(exitNotFound);
    }
    return statusAtEndOf(child, awaited);
}
