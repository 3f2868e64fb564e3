#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <array>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

/** A program that opens a serial line without setting it up, as a shell's redirection does. */
class PlainClient
{
public:
    explicit PlainClient(const QString& path)
        : descriptor(open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
    }

    ~PlainClient() { close(descriptor); }

    PlainClient(const PlainClient&) = delete;
    PlainClient& operator=(const PlainClient&) = delete;

    /** Sends bytes; returns how many of them the line took. */
    int send(const QByteArray& bytes)
    {
        const ssize_t size = write(descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()));
        return size < 0 ? 0 : static_cast<int>(size);
    }

    /** Sends bytes given in hexadecimal. */
    void sendHex(const QByteArray& hex) { send(QByteArray::fromHex(hex)); }

    /** All bytes received so far. */
    QByteArray received()
    {
        std::array<char, 4096> buffer;
        for (;;) {
            const ssize_t size = read(descriptor, buffer.data(), buffer.size());
            if (size <= 0)
                return all;
            all.append(buffer.data(), static_cast<int>(size));
        }
    }

    /** The same in hexadecimal, such as "90 41 ff". */
    QByteArray receivedHex() { return received().toHex(' '); }

    bool isHungUp() const
    {
        pollfd request{descriptor, POLLIN, 0};
        return poll(&request, 1, 0) == 1 && (request.revents & POLLHUP) != 0;
    }

    const int descriptor;

private:
    QByteArray all;
};
