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

// More than any client sends before it waits for the camera, and a limit for one that never stops sending.
constexpr int mostPerRead = 0x10000;

// With EXTPROC, packet mode also reports each tcsetattr() of a client to the master. The bytes are not
// changed.
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

// QSerialPort creates this lock file for a port. A killed client leaves it behind, and another user cannot
// remove it.
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
        // Keep this terminal open meanwhile, so that the system returns another one.
        int locked = std::exchange(master, -1);
        const bool isOpened = openLine();
        closeDescriptor(locked);
        return isOpened;
    }

    // Keep the slave open as long as the line is up. Without it, the settings could be lost when the last
    // client closes the port, the master would report a hang-up all the time while there is no client, and an
    // exclusive use that a killed client left behind could not be ended. Open it for reading only:
    // IN_CLOSE_WRITE then reports only clients.
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

// The master reports a hang-up while no descriptor of the slave is open. So close ours to see whether a
// client has one.
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
        // In packet mode the first byte tells whether data follows or the client has changed the line. In the
        // second case macOS adds the client's settings.
        if (packet.front() == TIOCPKT_DATA)
            arrived.append(packet.data() + 1, static_cast<int>(size) - 1);
    }
    // We are not told when a client is killed, so end its exclusive use while it is still running.
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

// Close the master first: this hangs up the clients.
void PseudoTerminal::hangUp()
{
    closeDescriptor(master);
    closeDescriptor(slave);
    if (closings != -1)
        closeDescriptor(watched);
    closeDescriptor(closings);
    watched = -1;
}
