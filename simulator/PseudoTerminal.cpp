#include "PseudoTerminal.h"

#include <QFile>
#include <QtGlobal>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace {

// Enough for any client that takes turns with its camera, and a bound for one that never stops sending.
constexpr int mostPerRead = 0x10000;

// A child process that inherits a descriptor would keep the line up after hangUp().
bool closeOnExec(int descriptor)
{
    return fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0;
}

// EXTPROC with packet mode on the other side reports each tcsetattr() of a client there; the bytes stay
// untouched.
bool makeRaw(int descriptor)
{
    termios settings{};
    if (tcgetattr(descriptor, &settings) != 0)
        return false;
    cfmakeraw(&settings);
    settings.c_cflag |= static_cast<tcflag_t>(CLOCAL | CREAD);
    settings.c_lflag |= static_cast<tcflag_t>(EXTPROC);
    return tcsetattr(descriptor, TCSANOW, &settings) == 0;
}

void closeDescriptor(int& descriptor)
{
    if (descriptor != -1)
        close(std::exchange(descriptor, -1));
}

} // namespace

PseudoTerminal::PseudoTerminal()
{
    if (openLine())
        return;
    error = qt_error_string(errno);
    hangUp();
}

PseudoTerminal::~PseudoTerminal()
{
    hangUp();
}

bool PseudoTerminal::openLine()
{
    master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master == -1 || grantpt(master) != 0 || unlockpt(master) != 0)
        return false;
    const char* name = ptsname(master);
    if (!name)
        return false;
    slavePath = QFile::decodeName(name);

    // Held open for as long as the line is up: without it the settings could be lost with the last client,
    // the master would report "hung up" without end while there is none, and an exclusive use left behind
    // could not be lifted.
    slave = open(name, O_RDWR | O_NOCTTY);
    if (slave == -1 || !makeRaw(slave))
        return false;

    int on = 1;
    return closeOnExec(master) && closeOnExec(slave) && ioctl(master, TIOCPKT, &on) == 0 &&
           fcntl(master, F_SETFL, O_NONBLOCK) == 0;
}

QByteArray PseudoTerminal::read()
{
    if (!isOpen())
        return {};
    QByteArray arrived;
    std::array<char, 4096> packet;
    while (arrived.size() < mostPerRead) {
        const ssize_t size = ::read(master, packet.data(), packet.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            break;
        // In packet mode the first byte says whether data follows or the client did something to the line;
        // macOS then adds the client's settings.
        if (packet.front() == TIOCPKT_DATA)
            arrived.append(packet.data() + 1, static_cast<int>(size) - 1);
    }
    // Nobody tells this side that a client was killed, so its exclusive use is lifted while it is still
    // alive.
    ioctl(slave, TIOCNXCL);
    return arrived;
}

bool PseudoTerminal::write(const QByteArray& bytes)
{
    if (!isOpen())
        return bytes.isEmpty();
    int sent = 0;
    while (sent < bytes.size()) {
        const ssize_t size =
            ::write(master, bytes.constData() + sent, static_cast<std::size_t>(bytes.size() - sent));
        if (size < 0 && errno == EINTR)
            continue;
        if (size <= 0)
            return false;
        sent += static_cast<int>(size);
    }
    return true;
}

// The master goes first: that is what hangs up the clients.
void PseudoTerminal::hangUp()
{
    closeDescriptor(master);
    closeDescriptor(slave);
}
