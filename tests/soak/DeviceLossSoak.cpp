#include "soak/Soak.h"
#include "support/Desk.h"
#include "support/Frames.h"

#include <QAbstractEventDispatcher>
#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>

#include <cerrno>
#include <cstring>
#include <ctime>

namespace {

constexpr qint64 LeakAllowance = 65536;

/** A connected program. Its camera is plugged in and pulled like a USB adapter, always with the same port
 * name. */
class Socket
{
public:
    Socket()
    {
        user.emplace();
        plugIn();
        profile.store("comport", port);
        program.emplace();
    }

    void plugIn()
    {
        QFile::remove(port);
        camera.emplace();
        if (!QFile::link(camera->portName(), port))
            qFatal("cannot make the port %s", qPrintable(port));
    }

    template <class Widget> Widget* find(const char* objectName) const
    {
        return program->find<Widget>(objectName);
    }

    AppVantrelSerial* link() const { return program->app.serial; }

    QString connectText() const { return find<QPushButton>("connectBtn")->text(); }

    QString status() const { return find<QStatusBar>("statusBar")->findChild<QLabel*>()->text(); }

    PrivateProfile profile;
    QTemporaryDir devices;
    const QString port = devices.filePath("camera");
    std::optional<CameraEnd> camera;
    std::optional<MessageBoxWatcher> user;
    std::optional<Program> program;
};

/** What the user and the camera are doing when the adapter is pulled. */
struct Situation
{
    const char* name;
    void (*pull)(Socket&);
};

const Situation Situations[] = {
    {"idle", [](Socket& socket) { socket.camera->pull(); }},
    {"a button is held",
     [](Socket& socket) {
         QTest::mousePress(socket.find<QPushButton>("upBtn"), Qt::LeftButton);
         QCOMPARE(socket.camera->nextFrame(), QByteArray(Up));
         socket.camera->pull();
     }},
    {"the view after Home is still to come",
     [](Socket& socket) {
         socket.find<QPushButton>("homeBtn")->click();
         socket.camera->pull();
     }},
    {"replies flood in",
     [](Socket& socket) {
         const QByteArray replies = QByteArray("9041ff9051ff").repeated(500);
         socket.camera->reply(replies);
         QCoreApplication::processEvents();
         socket.camera->reply(replies);
         socket.camera->pull();
     }},
    {"a frame is being written",
     [](Socket& socket) {
         socket.camera->pull();
         socket.find<QPushButton>("preset1Btn")->click();
     }},
    {"a button goes down",
     [](Socket& socket) {
         socket.camera->pull();
         QTest::mousePress(socket.find<QPushButton>("leftBtn"), Qt::LeftButton);
     }},
    {"the settings are open",
     [](Socket& socket) {
         socket.find<QPushButton>("settingsBtn")->click();
         socket.camera->pull();
     }},
};

// When Qt reads the end of a lost line, it takes the errno that an earlier call left behind for the cause.
const int StaleErrors[] = {0, EAGAIN, EIO, ENXIO};

clock_t processorMs()
{
    return clock() / (CLOCKS_PER_SEC / 1000);
}

} // namespace

Q_DECLARE_METATYPE(Situation)

/** The adapter is pulled and plugged in again, at any moment and many times. */
class DeviceLossSoak : public QObject
{
    Q_OBJECT

private slots:

    void aPulledAdapterIsReportedOnce_data()
    {
        QTest::addColumn<Situation>("situation");
        QTest::addColumn<int>("staleError");
        for (const Situation& situation : Situations) {
            for (const int error : StaleErrors)
                QTest::addRow("while %s, errno %d", situation.name, error) << situation << error;
        }
    }

    void aPulledAdapterIsReportedOnce()
    {
        QFETCH(Situation, situation);
        QFETCH(int, staleError);
        for (int round = 0; round < rounds(1, 40); ++round) {
            Socket socket;
            const auto leaveError = [staleError] { errno = staleError; };
            connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this, leaveError);
            QSignalSpy disconnections(socket.link(), SIGNAL(onDeviceDisconnected()));
            bool openWithBox = true;
            socket.user->whenOpen([&] { openWithBox = socket.link()->isConnected(); });
            QCOMPARE(socket.connectText(), QString("Disconnect"));

            situation.pull(socket);
            QTRY_COMPARE(disconnections.count(), 1);

            // If the port were still open, it would report another error the next time the event loop runs.
            for (int turn = 0; turn < 20; ++turn)
                QCoreApplication::processEvents();
            QCOMPARE(socket.user->texts().size(), 1);
            QCOMPARE(socket.user->texts().constFirst(), QString::fromLocal8Bit(std::strerror(EIO)));
            QVERIFY(!openWithBox);
            QCOMPARE(disconnections.count(), 1);
            QCOMPARE(socket.connectText(), QString("Connect"));
            QCOMPARE(socket.status(), QString("Device disconnected"));
            QVERIFY(!socket.find<QPushButton>("upBtn")->isDown());
            QVERIFY(!socket.find<QPushButton>("leftBtn")->isDown());
            ++losses;
        }
    }

    void aPulledAdapterUnderAnotherMessageAddsOneBox()
    {
        Socket socket;
        QSignalSpy disconnections(socket.link(), SIGNAL(onDeviceDisconnected()));
        socket.find<QLineEdit>("presetEdit")->setText("3");
        socket.user->holdUntil([] { return MessageBoxWatcher::openCount() == 2; });
        QTimer::singleShot(0, this, [&socket] { socket.camera->pull(); });

        socket.find<QPushButton>("setBtn")->click();
        QTRY_COMPARE(socket.user->texts().size(), 2);
        QCOMPARE(socket.user->texts().filter("Preset No3 is set.").size(), 1);
        QCOMPARE(disconnections.count(), 1);
        QCOMPARE(socket.connectText(), QString("Connect"));
    }

    void theBoxOfAPulledAdapterTakesNoProcessorTime_data()
    {
        QTest::addColumn<int>("staleError");
        for (const int error : {0, EAGAIN})
            QTest::addRow("errno %d", error) << error;
    }

    void theBoxOfAPulledAdapterTakesNoProcessorTime()
    {
        QFETCH(int, staleError);
        Socket socket;
        connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
                [staleError] { errno = staleError; });
        clock_t used = -1;
        socket.user->whenOpen([&used] {
            const clock_t before = processorMs();
            QTest::qWait(1000);
            used = processorMs() - before;
        });

        socket.camera->pull();
        QTRY_COMPARE(socket.connectText(), QString("Connect"));
        qInfo("box of a pulled adapter open for 1000 ms: %ld ms of processor time", used);
        QVERIFY(used >= 0 && used < 100);
    }

    void pluggingInAndConnectingWorksEveryTime()
    {
        Socket socket;
        const int warmUp = rounds(10, 100);
        const int count = rounds(50, 1000);
        Memory before = Memory::now();
        qint64 descriptors = 0;
        for (int round = 0; round < warmUp + count; ++round) {
            if (round == warmUp) {
                before = Memory::now();
                descriptors = openDescriptors();
            }
            socket.user.emplace();
            socket.camera->pull();
            QTRY_COMPARE(socket.connectText(), QString("Connect"));
            QCOMPARE(socket.user->texts().size(), 1);
            socket.plugIn();
            socket.find<QPushButton>("connectBtn")->click();
            QCOMPARE(socket.connectText(), QString("Disconnect"));

            QTest::mouseClick(socket.find<QPushButton>("upBtn"), Qt::LeftButton);
            QCOMPARE(socket.camera->nextFrame(), QByteArray(Up));
            QCOMPARE(socket.camera->nextFrame(), QByteArray(Stop));
        }
        QCOMPARE(openDescriptors(), descriptors);
        const Memory after = Memory::now();
        qInfo("pulled, plugged in and connected %d times: %s, one box each", count,
              qPrintable(after.growthSince(before)));
        QVERIFY(after.heapBytes - before.heapBytes < LeakAllowance);
    }

    void anErrorThatRepeatsUnderItsBoxIsShownOnce()
    {
        Desk desk;
        QSignalSpy errors(desk.link(), SIGNAL(onDeviceError()));
        const int repetitions = rounds(100, 10000);
        int stackedByItself = 0;
        int stackedByAnother = 0;
        QTimer::singleShot(0, this, [&] {
            for (int round = 0; round < repetitions; ++round)
                desk.link()->openSerialPort();
            stackedByItself = MessageBoxWatcher::openCount();

            QTimer::singleShot(0, this, [&] { stackedByAnother = MessageBoxWatcher::openCount(); });
            desk.link()->closeSerialPort();
            desk.settings()->setCOMPort("/nowhere/at/all");
            desk.link()->openSerialPort();
        });
        desk.user.holdUntil([&] { return stackedByAnother > 0; });

        desk.link()->openSerialPort();
        QCOMPARE(stackedByItself, 1);
        QCOMPARE(stackedByAnother, 2);
        QCOMPARE(desk.user.texts().size(), 2);
        QVERIFY(desk.user.texts().at(0) != desk.user.texts().at(1));
        QVERIFY(errors.count() >= repetitions + 2);
        qInfo("an error repeated %d times under its own box: 1 box; another error: 1 more", repetitions);
    }

    void cleanupTestCase() { qInfo("adapter pulled in any situation: %d times, one box each", losses); }

private:
    int losses = 0;
};

QTEST_APPLESS_MAIN(DeviceLossSoak)
#include "DeviceLossSoak.moc"
