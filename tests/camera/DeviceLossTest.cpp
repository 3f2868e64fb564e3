#include "support/Desk.h"
#include "support/Frames.h"
#include "support/LinkSignals.h"

#include <QLabel>
#include <QPushButton>
#include <QSerialPort>
#include <QStatusBar>
#include <QTimer>

#include <cerrno>
#include <cstring>

namespace {

constexpr char Lost[] = "Connect, Device disconnected, closed, told once, onDeviceDisconnected";

// How the window and the link stand, and what the user and the window have been told of it.
QString stateOf(Desk& desk, const LinkSignals& heard)
{
    const auto told = desk.user.boxes().size() + MessageBoxWatcher::openCount();
    return QStringList({desk.find<QPushButton>("connectBtn")->text(),
                        desk.find<QStatusBar>("statusBar")->findChild<QLabel*>()->text(),
                        desk.link()->isConnected() ? "open" : "closed",
                        told == 1 ? QString("told once") : QString("told %1 times").arg(told), heard.names()})
        .join(", ");
}

// What the operating system says of a line that is gone.
QString lineIsGone()
{
    return QString::fromLocal8Bit(std::strerror(EIO));
}

// The reply reader's state is private; an explicit instantiation may name it.
QString readerOf(const AppVantrelSerial& link);

template <char* AppVantrelSerial::*Buffer, int AppVantrelSerial::*Index> struct ReaderOf
{
    friend QString readerOf(const AppVantrelSerial& link)
    {
        return QString("%1 buffer, index %2").arg(link.*Buffer ? "a" : "no").arg(link.*Index);
    }
};

template struct ReaderOf<&AppVantrelSerial::replyBuffer, &AppVantrelSerial::replyIndex>;

QSerialPort* portOf(const Desk& desk)
{
    return desk.link()->findChild<QSerialPort*>();
}

} // namespace

class DeviceLossTest : public QObject
{
    Q_OBJECT

private slots:
    void pulledAdapterIsToldOnceAndDisconnects();
    void pulledAdapterIsNoticedBeforeThePortReads();
    void linkIsClosedBeforeTheUserIsTold();
    void disconnectionIsSignalledAfterTheBoxIsDismissed();
    void pulledWhileAButtonIsHeld();
    void pulledWithAHomeFollowUpPending();
    void pulledInAFloodOfReplies();
    void pulledRightBeforeACommand_data();
    void pulledRightBeforeACommand();
    void pulledRightBeforeManyCommands();
    void pulledRightBeforeAPresetIsStored();
    void pulledWithTheSettingsOpen();
    void pulledWithAnotherBoxOpen();
    void pulledRightBeforeDisconnecting();
    void pulledRightBeforeTheExit();
    void pulledBeforeTheExitStopsAHeldButton();
    void pulledAsTheStartUpPresetGoesOut();

    void resourceErrorOnAStandingLineClosesItAfterTheBox();
    void anyErrorOfADeadLineIsALoss_data();
    void anyErrorOfADeadLineIsALoss();

    void reconnectingToAMissingAdapterIsReported();
    void lostAndReconnectedManyTimesInARow();

    void errorRepeatedWhileItsBoxIsOpenShowsOneBox();
    void errorRepeatedLaterIsShownAgain();
    void differentErrorStacksItsBox();
};

void DeviceLossTest::pulledAdapterIsToldOnceAndDisconnects()
{
    Desk desk;
    const LinkSignals heard(desk.link());

    desk.camera.pull();

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QCoreApplication::processEvents();
    QCOMPARE(stateOf(desk, heard), Lost);
    QCOMPARE(desk.user.boxes().constFirst().title, "Vantrel");
    QCOMPARE(desk.user.texts(), QStringList(lineIsGone()));
    QCOMPARE(desk.profile.log(), QStringList());
}

// With Qt 5.15.19 and 6.8 the port reads nothing and says nothing, with 5.15.8 it reports read errors without
// end.
void DeviceLossTest::pulledAdapterIsNoticedBeforeThePortReads()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    QVector<QSerialPort::SerialPortError> errors;
    connect(portOf(desk), &QSerialPort::errorOccurred, this, [&errors](auto error) { errors.append(error); });

    desk.camera.pull();

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QCOMPARE(errors, {QSerialPort::ResourceError});
}

void DeviceLossTest::linkIsClosedBeforeTheUserIsTold()
{
    Desk desk;
    desk.camera.reply("90 41");
    QTRY_COMPARE(desk.profile.log(), QStringList("9041"));
    QString whileTold;
    desk.user.whenOpen(
        [&] { whileTold = readerOf(*desk.link()) + (desk.link()->isConnected() ? ", open" : ""); });

    desk.camera.pull();

    QTRY_COMPARE(desk.user.boxes().size(), 1);
    QCOMPARE(whileTold, "no buffer, index -1");
}

void DeviceLossTest::disconnectionIsSignalledAfterTheBoxIsDismissed()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    QString heardWhileTold = "nothing";
    desk.user.whenOpen([&] { heardWhileTold = heard.names(); });

    desk.camera.pull();

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QCOMPARE(heardWhileTold, "");
}

void DeviceLossTest::pulledWhileAButtonIsHeld()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    auto* button = desk.find<QPushButton>("upBtn");
    QTest::mousePress(button, Qt::LeftButton);
    QCOMPARE(desk.camera.nextFrame(), Up);

    desk.camera.pull();

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QVERIFY(!button->isDown());
    QTest::mouseRelease(button, Qt::LeftButton);
    QCOMPARE(stateOf(desk, heard), Lost);
    QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
}

void DeviceLossTest::pulledWithAHomeFollowUpPending()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    desk.link()->moveHome();
    const auto* followUp = desk.link()->findChild<QTimer*>();

    desk.camera.pull();

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QVERIFY(followUp->isActive());
    QTRY_VERIFY(!followUp->isActive());
    QCOMPARE(stateOf(desk, heard), Lost);
}

void DeviceLossTest::pulledInAFloodOfReplies()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    desk.camera.reply(QByteArray("9041ff").repeated(500));
    QTRY_VERIFY(!desk.profile.log().isEmpty());
    desk.camera.reply(QByteArray("9051ff").repeated(500));

    desk.camera.pull();

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QCoreApplication::processEvents();
    QCOMPARE(stateOf(desk, heard), Lost);
}

void DeviceLossTest::pulledRightBeforeACommand_data()
{
    QTest::addColumn<QString>("button");
    for (const char* button : {"upBtn", "homeBtn", "zoomInBtn", "preset1Btn"})
        QTest::newRow(button) << button;
}

void DeviceLossTest::pulledRightBeforeACommand()
{
    QFETCH(QString, button);
    Desk desk;
    const LinkSignals heard(desk.link());

    desk.camera.pull();
    desk.find<QPushButton>(qPrintable(button))->click();

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QCoreApplication::processEvents();
    QCOMPARE(stateOf(desk, heard), Lost);
}

void DeviceLossTest::pulledRightBeforeManyCommands()
{
    Desk desk;
    const LinkSignals heard(desk.link());

    desk.camera.pull();
    for (int preset = 1; preset <= 20; ++preset)
        desk.link()->callPreset(preset);

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QCOMPARE(desk.profile.log().size(), 20);
}

void DeviceLossTest::pulledRightBeforeAPresetIsStored()
{
    Desk desk;
    const LinkSignals heard(desk.link());

    desk.camera.pull();
    desk.link()->setPreset(5);

    QCOMPARE(heard.names(), "onDeviceDisconnected");
    QCOMPARE(desk.user.boxes().size(), 2);
    QCOMPARE(desk.user.texts().constLast(), "Preset No5 is set.");
}

void DeviceLossTest::pulledWithTheSettingsOpen()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    desk.find<QPushButton>("settingsBtn")->click();
    const auto* dialog = desk.find<QWidget>("AppSettingWin");
    QVERIFY(dialog->isVisible());

    desk.camera.pull();

    QTRY_COMPARE(stateOf(desk, heard), Lost);
    QVERIFY(dialog->isVisible());
}

void DeviceLossTest::pulledWithAnotherBoxOpen()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    desk.user.holdUntil([] { return MessageBoxWatcher::openCount() == 2; });
    QTimer::singleShot(0, this, [&desk] { desk.camera.pull(); });

    desk.link()->setPreset(5);

    QCOMPARE(heard.names(), "onDeviceDisconnected");
    QCOMPARE(desk.user.boxes().size(), 2);
    QCOMPARE(desk.user.texts().constLast(), "Preset No5 is set.");
    QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Connect");
}

void DeviceLossTest::pulledRightBeforeDisconnecting()
{
    Desk desk;
    const LinkSignals heard(desk.link());

    desk.camera.pull();
    desk.find<QPushButton>("connectBtn")->click();
    QCoreApplication::processEvents();

    QCOMPARE(stateOf(desk, heard),
             "Connect, Device disconnected, closed, told 0 times, onDeviceDisconnected");
}

void DeviceLossTest::pulledRightBeforeTheExit()
{
    Desk desk;

    desk.camera.pull();
    desk.program.reset();

    QCOMPARE(desk.user.texts(), QStringList());
}

void DeviceLossTest::pulledBeforeTheExitStopsAHeldButton()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    QTest::mousePress(desk.find<QPushButton>("upBtn"), Qt::LeftButton);
    QCOMPARE(desk.camera.nextFrame(), Up);
    QString heardByTheWindow;
    connect(desk.program->app.mainWin, &QObject::destroyed, this, [&] { heardByTheWindow = heard.names(); });

    desk.camera.pull();
    desk.program.reset();

    QCOMPARE(desk.user.texts(), QStringList());
    QCOMPARE(heardByTheWindow, "");
    QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
}

void DeviceLossTest::pulledAsTheStartUpPresetGoesOut()
{
    Desk desk({{"isstartuppreset", true}, {"startuppreset", 7}});
    desk.link()->closeSerialPort();
    // The adapter is pulled between the opening of the port and the window's answer to it.
    QObject* window = desk.program->app.mainWin;
    disconnect(desk.link(), SIGNAL(onDeviceConnected()), window, SLOT(onDeviceConnceted()));
    connect(desk.link(), &AppVantrelSerial::onDeviceConnected, this, [&desk] { desk.camera.pull(); });
    connect(desk.link(), SIGNAL(onDeviceConnected()), window, SLOT(onDeviceConnceted()));
    const LinkSignals heard(desk.link());

    desk.find<QPushButton>("connectBtn")->click();

    QTRY_COMPARE(stateOf(desk, heard),
                 "Connect, Device disconnected, closed, told once, onDeviceConnected onDeviceDisconnected");
    QCoreApplication::processEvents();
    QCOMPARE(desk.user.boxes().size(), 1);
}

void DeviceLossTest::resourceErrorOnAStandingLineClosesItAfterTheBox()
{
    Desk desk;
    const LinkSignals heard(desk.link());
    bool openWhileTold = false;
    desk.user.whenOpen([&] { openWhileTold = desk.link()->isConnected(); });
    const QString reason = portOf(desk)->errorString();

    emit portOf(desk)->errorOccurred(QSerialPort::ResourceError);

    QCOMPARE(stateOf(desk, heard), Lost);
    QVERIFY(openWhileTold);
    QCOMPARE(desk.user.texts(), QStringList(reason));
}

void DeviceLossTest::anyErrorOfADeadLineIsALoss_data()
{
    QTest::addColumn<QSerialPort::SerialPortError>("error");
    QTest::newRow("read") << QSerialPort::ReadError;
    QTest::newRow("write") << QSerialPort::WriteError;
    QTest::newRow("unknown") << QSerialPort::UnknownError;
    QTest::newRow("resource") << QSerialPort::ResourceError;
}

void DeviceLossTest::anyErrorOfADeadLineIsALoss()
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

void DeviceLossTest::reconnectingToAMissingAdapterIsReported()
{
    Desk desk;
    desk.camera.pull();
    QTRY_COMPARE(desk.user.boxes().size(), 1);
    QTRY_COMPARE(desk.find<QPushButton>("connectBtn")->text(), "Connect");
    // Another process may have been given the number of the line that is gone.
    desk.settings()->setCOMPort(desk.profile.folder() + "/adapter");
    const LinkSignals heard(desk.link());

    desk.find<QPushButton>("connectBtn")->click();

    QCOMPARE(desk.user.boxes().size(), 2);
    QCOMPARE(heard.names(), "onDeviceError");
    QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Connect");
}

void DeviceLossTest::lostAndReconnectedManyTimesInARow()
{
    constexpr int times = 20;
    Desk desk;
    desk.find<QPushButton>("connectBtn")->click();
    const QSignalSpy disconnected(desk.link(), &AppVantrelSerial::onDeviceDisconnected);

    for (int i = 1; i <= times; ++i) {
        CameraEnd camera;
        desk.settings()->setCOMPort(camera.portName());
        desk.find<QPushButton>("connectBtn")->click();
        desk.link()->zoomStop();
        QCOMPARE(camera.nextFrame(), ZoomStop);
        camera.reply("90 50 ff");
        QTRY_COMPARE(desk.profile.log().filter("-90-50-ff-3").size(), i);

        camera.pull();
        QTRY_COMPARE(disconnected.count(), i);
        QCOMPARE(desk.user.boxes().size(), i);
        QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Connect");
    }
}

void DeviceLossTest::errorRepeatedWhileItsBoxIsOpenShowsOneBox()
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
}

void DeviceLossTest::errorRepeatedLaterIsShownAgain()
{
    Desk desk;

    emit portOf(desk)->errorOccurred(QSerialPort::UnknownError);
    emit portOf(desk)->errorOccurred(QSerialPort::UnknownError);

    QCOMPARE(desk.user.boxes().size(), 2);
}

void DeviceLossTest::differentErrorStacksItsBox()
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

QTEST_APPLESS_MAIN(DeviceLossTest)

#include "DeviceLossTest.moc"
