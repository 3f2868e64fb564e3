#include "PseudoTerminal.h"
#include "support/OrdinaryUser.h"
#include "support/PlainClient.h"

#include <QDeadlineTimer>
#include <QProcess>
#include <QSerialPort>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <optional>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace {

QByteArray everyByte()
{
    QByteArray bytes;
    for (int value = 0; value < 0x100; ++value)
        bytes.append(static_cast<char>(value));
    return bytes;
}

bool isReadable(int descriptor)
{
    pollfd request{descriptor, POLLIN, 0};
    return poll(&request, 1, 0) == 1;
}

} // namespace

class PseudoTerminalTest : public QObject
{
    Q_OBJECT

private slots:

    void eachLineHasAPathOfItsOwn()
    {
        const PseudoTerminal one;
        const PseudoTerminal two;
        QVERIFY2(one.isOpen(), qPrintable(one.errorString()));
        QVERIFY2(two.isOpen(), qPrintable(two.errorString()));
        QVERIFY(QFile::exists(one.path()));
        QVERIFY(QFile::exists(two.path()));
        QVERIFY(one.path() != two.path());
    }

    void everyBytePassesBothWaysWithoutSettingsOrEcho()
    {
        PseudoTerminal terminal;
        PlainClient client(terminal.path());
        const QByteArray much = everyByte().repeated(2000);

        int sent = 0;
        QByteArray received;
        for (const QDeadlineTimer patience(5000); received.size() < much.size() && !patience.hasExpired();) {
            sent += client.send(much.mid(sent));
            received += terminal.read();
        }
        QCOMPARE(received, much);

        for (int block = 0; block < 2000; ++block) {
            QVERIFY(terminal.write(everyByte()));
            client.received();
        }
        QTRY_COMPARE(client.received().size(), much.size());
        QCOMPARE(client.received(), much);
        QVERIFY2(terminal.read().isEmpty(), "nothing is echoed");
    }

    void bytesOfAClientThatHasLeftAreKept()
    {
        PseudoTerminal terminal;
        PlainClient(terminal.path()).send("first");
        PlainClient(terminal.path()).send("second");
        QByteArray received;
        QTRY_COMPARE(received += terminal.read(), QByteArray("firstsecond"));
    }

    void anIdleLineIsNotReadable()
    {
        PseudoTerminal terminal;
        QVERIFY(!isReadable(terminal.descriptor()));
        {
            QSerialPort port(terminal.path());
            QVERIFY(port.open(QIODevice::ReadWrite));
        }
        QTRY_VERIFY(terminal.read().isEmpty() && !isReadable(terminal.descriptor()));
    }

    void aKilledClientDoesNotKeepTheNextOneOut()
    {
        PseudoTerminal terminal;
        const QByteArray path = QFile::encodeName(terminal.path());

        // Open the line as QSerialPort does, and send nothing.
        const pid_t client = fork();
        if (client == 0) {
            const int port = open(path.constData(), O_RDWR | O_NOCTTY);
            termios settings{};
            ioctl(port, TIOCEXCL);
            tcgetattr(port, &settings);
            tcsetattr(port, TCSANOW, &settings);
            pause();
        }
        const bool isNoticed = QTest::qWaitFor([&] { return isReadable(terminal.descriptor()); });
        const QByteArray sent = terminal.read();
        kill(client, SIGKILL);
        waitpid(client, nullptr, 0);
        QVERIFY(isNoticed);
        QCOMPARE(sent, QByteArray());

        // Root may open an exclusive terminal, too.
        const OrdinaryUser user;
        const PlainClient next(terminal.path());
        QVERIFY(next.descriptor != -1);
    }

    void aTerminalWithALockFileIsPassedOver()
    {
        // The next terminal gets the number of a closed one.
        const QString path = PseudoTerminal().path();
        QFile lock("/var/lock/LCK.." + path.mid(5).replace('/', '_'));
        QVERIFY(lock.open(QIODevice::WriteOnly));

        const PseudoTerminal line;
        QVERIFY(lock.remove());
        QVERIFY(line.isOpen());
        QVERIFY(line.path() != path);
    }

    void aFullLineTakesNothingUntilItIsRead()
    {
        PseudoTerminal terminal;
        PlainClient client(terminal.path());
        const QByteArray much = everyByte().repeated(64);
        int taken = 0;
        while (taken < 1000 && terminal.write(much))
            ++taken;
        QVERIFY(taken < 1000);

        QTRY_VERIFY2(client.received().size() >= taken * much.size(),
                     "everything that the line took arrives");
        QTRY_VERIFY((client.received(), terminal.write("again")));
    }

    void aLineThatNobodyHasOpenDropsWhatIsWritten()
    {
        PseudoTerminal terminal;
        QVERIFY2(terminal.write("early"), "dropped, which is no failure");
        {
            PlainClient client(terminal.path());
            QVERIFY(terminal.write("now"));
            QTRY_COMPARE(client.received(), QByteArray("now"));
            client.send("last words");
        }
        QByteArray received;
        QTRY_COMPARE(received += terminal.read(), QByteArray("last words"));
        QVERIFY(terminal.write("late"));

        PlainClient next(terminal.path());
        QVERIFY(terminal.write("again"));
        QTRY_COMPARE(next.received(), QByteArray("again"));
    }

#ifdef Q_OS_LINUX
    void bytesThatAClientLeavesUnreadAreDropped()
    {
        PseudoTerminal terminal;
        {
            PlainClient client(terminal.path());
            QVERIFY(terminal.write("unread"));
            QTRY_VERIFY(isReadable(client.descriptor));
            terminal.read();
        }
        QTRY_VERIFY2(isReadable(terminal.descriptor()), "the line reports that the client has left");
        terminal.read();
        PlainClient next(terminal.path());
        QVERIFY(terminal.write("now"));
        QTRY_COMPARE(next.received(), QByteArray("now"));
    }

    void aClientKeepsItsUnreadBytesWhenAnotherLeaves()
    {
        PseudoTerminal terminal;
        PlainClient client(terminal.path());
        QVERIFY(terminal.write("unread"));
        PlainClient(terminal.path()).send("from another");
        QByteArray received;
        QTRY_COMPARE(received += terminal.read(), QByteArray("from another"));
        QTRY_COMPARE(client.received(), QByteArray("unread"));
    }
#endif

    void hangingUpLooksLikeAPulledAdapter()
    {
        PseudoTerminal terminal;
        PlainClient client(terminal.path());
        terminal.hangUp();

        QTRY_VERIFY(client.isHungUp());
        char byte = 0;
        QCOMPARE(read(client.descriptor, &byte, 1), ssize_t(0));
        termios settings{};
        QCOMPARE(tcgetattr(client.descriptor, &settings), -1);
        QCOMPARE(errno, EIO);
        QVERIFY(!QFile::exists(terminal.path()));
    }

    void hangingUpEndsReadingAndWriting()
    {
        PseudoTerminal terminal;
        PlainClient client(terminal.path());
        client.send("too late");
        terminal.hangUp();
        QVERIFY(!terminal.isOpen());
        QCOMPARE(terminal.descriptor(), -1);
        QVERIFY(terminal.read().isEmpty());
        QVERIFY(!terminal.write("too late"));
        terminal.hangUp();
        QVERIFY(!terminal.isOpen());
    }

    void destructionHangsUp()
    {
        std::optional<PseudoTerminal> terminal(std::in_place);
        PlainClient client(terminal->path());
        terminal.reset();
        QTRY_VERIFY(client.isHungUp());
    }

    void aChildProcessDoesNotKeepTheLineUp()
    {
        PseudoTerminal terminal;
        PlainClient client(terminal.path());
        QProcess child;
        child.start("cat", QStringList());
        QVERIFY(child.waitForStarted());

        terminal.hangUp();
        QTRY_VERIFY(client.isHungUp());

        child.closeWriteChannel();
        QVERIFY(child.waitForFinished());
    }
};

QTEST_GUILESS_MAIN(PseudoTerminalTest)
#include "PseudoTerminalTest.moc"
