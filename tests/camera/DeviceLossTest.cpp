#include "soak/Soak.h"
#include "support/Desk.h"
#include "support/Frames.h"
#include "support/LinkSignals.h"

#include <QAbstractEventDispatcher>
#include <QLabel>
#include <QPushButton>
#include <QSerialPort>
#include <QStatusBar>
#include <QTimer>

#include <cerrno>
#include <cstring>

namespace {

constexpr char Lost[] = "Connect, Device disconnected, closed, boxes: 1, onDeviceDisconnected";

void click(const Desk& desk, const char* button)
{
    desk.find<QPushButton>(button)->click();
}

struct Step
{
    const char* name;
    void (*take)(Desk&);
};

// What a user and the camera do; the adapter is pulled before each of these, and after the last.
const Step Story[] = {
    {"Up is pressed", [](Desk& desk) { QTest::mousePress(desk.find<QPushButton>("upBtn"), Qt::LeftButton); }},
    {"Up is released",
     [](Desk& desk) { QTest::mouseRelease(desk.find<QPushButton>("upBtn"), Qt::LeftButton); }},
    {"Home is called", [](Desk& desk) { click(desk, "homeBtn"); }},
    {"many presets are called",
     [](Desk& desk) {
         for (int preset = 1; preset <= 20; ++preset)
             desk.link()->callPreset(preset);
     }},
    {"replies flood in",
     [](Desk& desk) {
         desk.camera.reply(QByteArray("9041ff9051ff").repeated(500));
         QCoreApplication::processEvents();
         desk.camera.reply(QByteArray("9041ff9051ff").repeated(500));
     }},
    {"the settings open", [](Desk& desk) { click(desk, "settingsBtn"); }},
};
constexpr int Steps = std::size(Story);

// When Qt reads the end of a lost line, it reports the errno that an earlier call has left.
constexpr int StaleErrors[] = {0, EAGAIN, EIO, ENXIO};

// What the window shows, whether the port is open, how many boxes there were, and the link's signals.
QString stateOf(Desk& desk, const LinkSignals& heard)
{
    const auto boxes = desk.user.boxes().size() + MessageBoxWatcher::openCount();
    return QStringList({desk.find<QPushButton>("connectBtn")->text(),
                        desk.find<QStatusBar>("statusBar")->findChild<QLabel*>()->text(),
                        desk.link()->isConnected() ? "open" : "closed", QString("boxes: %1").arg(boxes),
                        heard.names()})
        .join(", ");
}

// The operating system's text for a line that is gone.
QString lineIsGone()
{
    return QString::fromLocal8Bit(std::strerror(EIO));
}

QSerialPort* portOf(const Desk& desk)
{
    return desk.link()->findChild<QSerialPort*>();
}

} // namespace

/** The adapter is pulled, or its port reports errors. */
class DeviceLossTest : public QObject
{
    Q_OBJECT

private slots:

    void aPulledAdapterIsToldOnce_data()
    {
        QTest::addColumn<int>("before");
        for (int step = 0; step < Steps; ++step)
            QTest::addRow("before %s", Story[step].name) << step;
        QTest::newRow("at the end") << Steps;
    }

    void aPulledAdapterIsToldOnce()
    {
        QFETCH(int, before);
        const int count = rounds(8, 320);
        for (int round = 0; round < count; ++round) {
            Desk desk;
            const LinkSignals heard(desk.link());
            const int staleError = StaleErrors[round / 2 % 4];
            connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
                    [staleError] { errno = staleError; });
            QString duringTheBox;
            desk.user.whenOpen(
                [&] { duringTheBox = (desk.link()->isConnected() ? "open" : "closed") + heard.names(); });
            for (int step = 0; step < before; ++step)
                Story[step].take(desk);

            desk.camera.pull();
            // In every second round the next step comes before the link notices the loss.
            if (round % 2 == 1 && before < Steps)
                Story[before].take(desk);

            QTRY_COMPARE(stateOf(desk, heard), Lost);
            // A port that is still open reports another error each time the event loop runs.
            for (int turn = 0; turn < 20; ++turn)
                QCoreApplication::processEvents();
            QCOMPARE(stateOf(desk, heard), Lost);
            QCOMPARE(desk.user.texts(), QStringList(lineIsGone()));
            QCOMPARE(duringTheBox, "closed");
            QVERIFY(!desk.find<QPushButton>("upBtn")->isDown());
            const QStringList log = desk.profile.log();
            QCOMPARE(log.count("MoveStop"), log.count("MoveUp"));
        }
        qInfo("adapter pulled %s: %d times, one box each", QTest::currentDataTag(), count);
    }

    // After a pull, the port of Qt 5.15.19 and 6.8 reads nothing and reports nothing; that of 5.15.8 reports
    // read errors without end.
    void pulledAdapterIsNoticedBeforeThePortReads()
    {
        Desk desk;
        const LinkSignals heard(desk.link());
        QVector<QSerialPort::SerialPortError> errors;
        connect(portOf(desk), &QSerialPort::errorOccurred, this,
                [&errors](auto error) { errors.append(error); });

        desk.camera.pull();

        QTRY_COMPARE(stateOf(desk, heard), Lost);
        QCOMPARE(errors, {QSerialPort::ResourceError});
    }

    void adapterPulledWhileABoxIsOpenIsReportedOnTopOfIt()
    {
        Desk desk;
        const LinkSignals heard(desk.link());
        desk.user.holdUntil([] { return MessageBoxWatcher::openCount() == 2; });
        QTimer::singleShot(0, this, [&desk] { desk.camera.pull(); });

        desk.link()->setPreset(5);

        QCOMPARE(heard.names(), "onDeviceDisconnected");
        QCOMPARE(desk.user.texts(), QStringList({lineIsGone(), "Preset No5 is set."}));
        QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Connect");
    }

    void adapterPulledRightBeforeDisconnectingIsNotReported()
    {
        Desk desk;
        const LinkSignals heard(desk.link());

        desk.camera.pull();
        click(desk, "connectBtn");
        QCoreApplication::processEvents();

        QCOMPARE(stateOf(desk, heard),
                 "Connect, Device disconnected, closed, boxes: 0, onDeviceDisconnected");
    }

    void adapterPulledRightBeforeTheExitIsNotReportedAndAHeldButtonStops()
    {
        Desk desk;
        const LinkSignals heard(desk.link());
        QTest::mousePress(desk.find<QPushButton>("upBtn"), Qt::LeftButton);
        QCOMPARE(desk.camera.nextFrame(), Up);
        QString heardByTheWindow;
        connect(desk.program->app.mainWin, &QObject::destroyed, this,
                [&] { heardByTheWindow = heard.names(); });

        desk.camera.pull();
        desk.program.reset();

        QCOMPARE(desk.user.texts(), QStringList());
        QCOMPARE(heardByTheWindow, "");
        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    }

    void adapterPulledAsTheStartUpPresetIsSentIsReportedOnce()
    {
        Desk desk({{"isstartuppreset", true}, {"startuppreset", 7}});
        desk.link()->closeSerialPort();
        // The adapter is pulled between the opening of the port and the window's answer to it.
        QObject* window = desk.program->app.mainWin;
        disconnect(desk.link(), SIGNAL(onDeviceConnected()), window, SLOT(onDeviceConnceted()));
        connect(desk.link(), &AppVantrelSerial::onDeviceConnected, this, [&desk] { desk.camera.pull(); });
        connect(desk.link(), SIGNAL(onDeviceConnected()), window, SLOT(onDeviceConnceted()));
        const LinkSignals heard(desk.link());

        click(desk, "connectBtn");

        QTRY_COMPARE(
            stateOf(desk, heard),
            "Connect, Device disconnected, closed, boxes: 1, onDeviceConnected onDeviceDisconnected");
        QCoreApplication::processEvents();
        QCOMPARE(desk.user.boxes().size(), 1);
    }

    void anyErrorOfADeadLineIsALoss_data()
    {
        QTest::addColumn<QSerialPort::SerialPortError>("error");
        for (const auto error : {QSerialPort::ReadError, QSerialPort::WriteError, QSerialPort::UnknownError,
                                 QSerialPort::ResourceError})
            QTest::addRow("error %d", error) << error;
    }

    void anyErrorOfADeadLineIsALoss()
    {
        QFETCH(QSerialPort::SerialPortError, error);
        Desk desk;
        const LinkSignals heard(desk.link());

        desk.camera.pull();
        emit portOf(desk)->errorOccurred(error);

        QCOMPARE(stateOf(desk, heard), Lost);
        QCoreApplication::processEvents();
        QCOMPARE(stateOf(desk, heard), Lost);
        QCOMPARE(desk.user.texts(), QStringList(lineIsGone()));
    }

    void resourceErrorOfAWorkingLineClosesThePortAfterTheBox()
    {
        Desk desk;
        const LinkSignals heard(desk.link());
        bool openDuringTheBox = false;
        desk.user.whenOpen([&] { openDuringTheBox = desk.link()->isConnected(); });
        const QString reason = portOf(desk)->errorString();

        emit portOf(desk)->errorOccurred(QSerialPort::ResourceError);

        QCOMPARE(stateOf(desk, heard), Lost);
        QVERIFY(openDuringTheBox);
        QCOMPARE(desk.user.texts(), QStringList(reason));
    }

    void reconnectingToAMissingAdapterIsReported()
    {
        Desk desk;
        desk.camera.pull();
        QTRY_COMPARE(desk.user.boxes().size(), 1);
        QTRY_COMPARE(desk.find<QPushButton>("connectBtn")->text(), "Connect");
        // Another process may have got the number of the terminal that is gone.
        desk.settings()->setCOMPort(desk.profile.folder() + "/adapter");
        const LinkSignals heard(desk.link());

        click(desk, "connectBtn");

        QCOMPARE(stateOf(desk, heard), "Connect, Device disconnected, closed, boxes: 2, onDeviceError");
    }

    void errorRepeatedWhileItsBoxIsOpenShowsOneBox()
    {
        Desk desk;
        const LinkSignals heard(desk.link());
        desk.user.whenOpen([&desk] {
            for (int i = 0; i < 100; ++i)
                emit portOf(desk)->errorOccurred(QSerialPort::UnknownError);
            QCOMPARE(MessageBoxWatcher::openCount(), 1);
        });

        emit portOf(desk)->errorOccurred(QSerialPort::UnknownError);
        QCOMPARE(desk.user.boxes().size(), 1);
        QCOMPARE(heard.names().count("onDeviceError"), 101);
        QVERIFY(desk.link()->isConnected());

        emit portOf(desk)->errorOccurred(QSerialPort::UnknownError);
        QCOMPARE(desk.user.boxes().size(), 2);
    }

    void anotherErrorOpensItsBoxOnTop()
    {
        Desk desk;
        const LinkSignals heard(desk.link());
        const QString first = portOf(desk)->errorString();
        desk.user.holdUntil([] { return MessageBoxWatcher::openCount() == 2; });
        QTimer::singleShot(0, this, [&desk] { desk.link()->openSerialPort(); });

        emit portOf(desk)->errorOccurred(QSerialPort::UnknownError);

        const QString second = portOf(desk)->errorString();
        QVERIFY(first != second);
        QCOMPARE(desk.user.texts(), QStringList({second, first}));
        QCOMPARE(heard.names(), "onDeviceError onDeviceError");
        QVERIFY(desk.link()->isConnected());
    }
};

QTEST_APPLESS_MAIN(DeviceLossTest)
#include "DeviceLossTest.moc"
