#include "app/AppQuitSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int QuitSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

// A signal handler may do next to nothing: it puts a byte into this pipe, and the event loop does the rest.
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

    // The byte is never read: a quit asked for while the start-up's error box is open holds for the event
    // loop that follows, too.
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
