#include "app/AppQuitSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int QuitSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

// A signal handler may call few functions. It writes a byte to this pipe, and the event loop does the rest.
int pipeEnds[2] = {-1, -1};

void requestQuit(int)
{
    const int savedError = errno;
    const char byte = 0;
    static_cast<void>(!write(pipeEnds[1], &byte, 1));
    errno = savedError;
}

} // namespace

AppQuitSignals::AppQuitSignals(QObject* parent)
    : QObject(parent)
{
    if (pipe(pipeEnds) != 0)
        return;
    for (const int end : pipeEnds)
        fcntl(end, F_SETFD, FD_CLOEXEC);

    // Never read the byte. If the signal comes while the error box of the start-up is open, it has to end the
    // main event loop as well.
    auto* notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [] { QCoreApplication::exit(); });

    for (const int number : QuitSignals) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue;
        action.sa_handler = requestQuit;
        action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
        sigaction(number, &action, nullptr);
    }
}

AppQuitSignals::~AppQuitSignals()
{
    for (const int number : QuitSignals) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler == requestQuit)
            static_cast<void>(std::signal(number, SIG_DFL));
    }
    for (const int end : pipeEnds)
        close(end);
}
