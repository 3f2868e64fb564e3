#include "PseudoTerminal.h"

#include <QFile>
#include <QtGlobal>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>
#ifdef Q_OS_LINUX
#include <sys/epoll.h>
#include <sys/inotify.h>
#endif

namespace {

// Enough for any client that takes turns with its camera, and a bound for one that never stops sending.
constexpr int mostPerRead = 0x10000;

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

// QSerialPort locks a port by this file. A client that was killed leaves it behind, and of another user's
// only that user gets rid.
bool hasLock(const QString& path)
{
    constexpr char devices[] = "/dev/";
    return QFile::exists("/var/lock/LCK.." + path.mid(sizeof(devices) - 1).replace('/', '_'));
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

bool PseudoTerminal::openLine()
{
    master = posix_openpt(O_RDWR | O_NOCTTY);
    if (master == -1 || grantpt(master) != 0 || unlockpt(master) != 0)
        return false;
    const char* name = ptsname(master);
    if (!name)
        return false;
    slavePath = QFile::decodeName(name);
    if (hasLock(slavePath)) {
        // Open for so long that the next one is another.
        int locked = std::exchange(master, -1);
        const bool isOpened = openLine();
        closeDescriptor(locked);
        return isOpened;
    }

    // Held open for as long as the line is up: without it the settings could be lost with the last client,
    // the master would report "hung up" without end while there is none, and an exclusive use left behind
    // could not be lifted. For reading only, which tells its closing from that of a client.
    slave = open(name, O_RDONLY | O_NOCTTY | O_CLOEXEC);
    int on = 1;
    return slave != -1 && makeRaw(slave) && fcntl(master, F_SETFD, FD_CLOEXEC) == 0 &&
           ioctl(master, TIOCPKT, &on) == 0 && fcntl(master, F_SETFL, O_NONBLOCK) == 0 && watchLine();
}

bool PseudoTerminal::watchLine()
{
#ifdef Q_OS_LINUX
    closings = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    watched = epoll_create1(EPOLL_CLOEXEC);
    const auto watch = [this](int descriptor) {
        epoll_event event{EPOLLIN, {}};
        return epoll_ctl(watched, EPOLL_CTL_ADD, descriptor, &event) == 0;
    };
    return inotify_add_watch(closings, QFile::encodeName(slavePath).constData(), IN_CLOSE_WRITE) != -1 &&
           watch(closings) && watch(master);
#else
    watched = master;
    return true;
#endif
}

// The master says "hung up" while no descriptor of the other side is open, so this side's must not be.
bool PseudoTerminal::hasClient()
{
    ioctl(slave, TIOCNXCL);
    closeDescriptor(slave);
    pollfd request{master, 0, 0};
    const bool isHungUp = poll(&request, 1, 0) == 1;
    slave = open(QFile::encodeName(slavePath).constData(), O_RDONLY | O_NOCTTY | O_CLOEXEC);
    return !isHungUp;
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
    if (closings != -1 && ::read(closings, packet.data(), packet.size()) > 0 && !hasClient()) {
        tcflush(master, TCOFLUSH);
        tcflush(slave, TCIFLUSH);
    }
    return arrived;
}

bool PseudoTerminal::write(const QByteArray& bytes)
{
    if (!isOpen())
        return bytes.isEmpty();
    int sent = hasClient() ? 0 : static_cast<int>(bytes.size());
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
    if (closings != -1)
        closeDescriptor(watched);
    closeDescriptor(closings);
    watched = -1;
}
