#include "support/Desk.h"
#include "support/Form.h"
#include "support/Frames.h"

#include "ui_AppMainWin.h"

#include <QAction>
#include <QDialog>
#include <QFocusFrame>
#include <QLabel>
#include <QMainWindow>
#include <QMetaMethod>
#include <QPushButton>
#include <QScreen>
#include <QSerialPort>
#include <QStatusBar>

namespace {

QLabel* statusLabel(const QWidget* window)
{
    return window->findChild<QStatusBar*>("statusBar")->findChild<QLabel*>();
}

QString connectText(const QWidget* window)
{
    return window->findChild<QPushButton*>("connectBtn")->text();
}

QString statusText(const QString& port, int baudRate = 9600)
{
    return "Connected to Port: " + port + "\tBaudRate: " + QString::number(baudRate);
}

QStringList presetToolTips(const QWidget* window)
{
    QStringList toolTips;
    for (int preset = 1; preset <= 9; ++preset)
        toolTips.append(window->findChild<QWidget*>("preset" + QString::number(preset) + "Btn")->toolTip());
    return toolTips;
}

QStringList defaultPresetNames()
{
    return {"Preset1", "Preset2", "Preset3", "Preset4", "Preset5",
            "Preset6", "Preset7", "Preset8", "Preset9"};
}

/** No other test opens a port of that name: QSerialPort locks a name for the whole machine. */
QString missingPort(const PrivateProfile& profile)
{
    return profile.folder() + "/camera";
}

QString openError(const QString& portName)
{
    QSerialPort port(portName);
    return port.open(QIODevice::ReadWrite) ? QString() : port.errorString();
}

/** Looks at the next program's main window in the moment in which it is first shown. */
class FirstShow : public QObject
{
public:
    explicit FirstShow(std::function<void(QWidget*)> lookAtWindow)
        : look(std::move(lookAtWindow))
    {
        current = this;
        static const bool registered = (qAddPreRoutine(&FirstShow::watch), true);
        Q_UNUSED(registered)
    }

    ~FirstShow() override { current = nullptr; }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Show && qobject_cast<AppMainWin*>(watched) && look)
            std::exchange(look, nullptr)(static_cast<QWidget*>(watched));
        return false;
    }

private:
    static void watch()
    {
        if (current)
            QCoreApplication::instance()->installEventFilter(current);
    }

    static FirstShow* current;
    std::function<void(QWidget*)> look;
};

FirstShow* FirstShow::current = nullptr;

/** Hears of every change of a tooltip. */
class ToolTipWatcher : public QObject
{
public:
    explicit ToolTipWatcher(std::function<void(QObject*)> onChange)
        : seeChange(std::move(onChange))
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::ToolTipChange)
            seeChange(watched);
        return false;
    }

private:
    std::function<void(QObject*)> seeChange;
};

/** Counts what brings a window to the front. */
class FrontWatcher : public QObject
{
public:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        Q_UNUSED(watched)
        switch (event->type()) {
        case QEvent::Show:
        case QEvent::ZOrderChange:
        case QEvent::WindowActivate:
            ++count;
            break;
        default:
            break;
        }
        return false;
    }

    int count = 0;
};

} // namespace

/** The main window's life: start, connecting and disconnecting, the settings button, the end. */
class MainWindowTest : public QObject
{
    Q_OBJECT

private slots:

    void theSlotsAreDeclaredInOrder()
    {
        const QByteArrayList expected{
            "onSettingsBtnClicked",     "onUpBtnClicked",       "onUpBtnReleased",
            "onLeftBtnClicked",         "onLeftBtnReleased",    "onHomeBtnClicked",
            "onRightBtnClicked",        "onRightBtnReleased",   "onZoomInBtnClicked",
            "onZoomInBtnReleased",      "onDownBtnClicked",     "onDownBtnReleased",
            "onZoomOutBtnClicked",      "onZoomOutBtnReleased", "onPreset1BtnClicked",
            "onPreset2BtnClicked",      "onPreset3BtnClicked",  "onPreset4BtnClicked",
            "onPreset5BtnClicked",      "onPreset6BtnClicked",  "onPreset7BtnClicked",
            "onPreset8BtnClicked",      "onPreset9BtnClicked",  "onSetPresetBtnClicked",
            "onRecallPresetBtnClicked", "onConnectBtnClicked",  "onDeviceConnceted",
            "onDeviceDisconnected",     "onDeviceError"};
        QCOMPARE(expected.size(), 29);

        const QMetaObject& type = AppMainWin::staticMetaObject;
        QByteArrayList declared;
        for (int index = type.methodOffset(); index < type.methodCount(); ++index) {
            const QMetaMethod method = type.method(index);
            declared.append(method.name());
            QCOMPARE(method.methodType(), QMetaMethod::Slot);
            QCOMPARE(method.access(), QMetaMethod::Private);
            QCOMPARE(method.parameterCount(), 0);
            QCOMPARE(method.returnType(), int(QMetaType::Void));
        }
        QCOMPARE(declared, expected);
    }

    void theWindowIsADialogWithMinimiseAndCloseButtons()
    {
        const Desk desk;
        const AppMainWin* window = desk.program->app.mainWin;
        // Qt gives every such window the title and the system menu as well.
        QCOMPARE(window->windowFlags(), Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                            Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
        QCOMPARE(window->windowTitle(), QString("Vantrel Controller"));
        QVERIFY(!window->parent());
        QVERIFY(window->isVisible());
    }

    void theWindowFitsItsContent()
    {
        QSize fitting;
        {
            const BareApplication application;
            QMainWindow window;
            Ui_AppMainWin ui;
            ui.setupUi(&window);
            window.adjustSize();
            fitting = window.size();
        }
        QVERIFY(fitting != QSize(248, 599));

        QSize shown;
        const FirstShow atFirstShow([&](const QWidget* window) { shown = window->size(); });
        const Desk desk;
        QCOMPARE(shown.width(), fitting.width());
        QCOMPARE(shown.height(), fitting.height());
    }

    void theWindowOpensConnected()
    {
        const PrivateProfile profile;
        CameraEnd camera;
        profile.store("comport", camera.portName());
        profile.store("baudrate", 115200);
        profile.store("startuppreset", 12);
        profile.store("isstartuppreset", true);
        profile.store(camera.portName() + "_4", "Altar");

        QString button;
        QString status;
        QStringList toolTips;
        QStringList log;
        QByteArray recall;
        const FirstShow atFirstShow([&](const QWidget* window) {
            button = connectText(window);
            status = statusLabel(window)->text();
            toolTips = presetToolTips(window);
            log = profile.log();
            recall = camera.take(7);
        });
        const Program program;

        QCOMPARE(button, QString("Disconnect"));
        QCOMPARE(status, statusText(camera.portName(), 115200));
        QCOMPARE(toolTips.at(3), QString("Altar"));
        QCOMPARE(log, QStringList({"Call Preset12"}));
        QCOMPARE(recall, recallPreset(12));
    }

    void theWindowAppearsAsWideAsItStays()
    {
        const PrivateProfile profile;
        const CameraEnd camera;
        profile.store("comport", camera.portName());
        const Program program;
        const QWidget* window = program.app.mainWin;

        const QSize appeared = window->size();
        QVERIFY(QTest::qWaitForWindowExposed(program.app.mainWin));
        QCoreApplication::sendPostedEvents();
        QCOMPARE(window->size(), appeared);
    }

    void withoutTheStartUpPresetNothingIsRecalled()
    {
        Desk desk({{"startuppreset", 12}, {"isstartuppreset", false}});
        QCOMPARE(desk.profile.log(), QStringList());
        QCOMPARE(desk.camera.pending(), QByteArray());
    }

    void withoutACameraTheErrorComesFirstThenTheWindow_data()
    {
        QTest::addColumn<bool>("isFreshAccount");
        QTest::newRow("a port that is missing") << false;
        QTest::newRow("a fresh account's port") << true;
    }

    void withoutACameraTheErrorComesFirstThenTheWindow()
    {
        QFETCH(bool, isFreshAccount);
        const PrivateProfile profile;
        const QString port = isFreshAccount ? "COM1" : missingPort(profile);
        if (!isFreshAccount)
            profile.store("comport", port);
        profile.store("isstartuppreset", true);
        profile.store(port + "_1", "Altar");

        bool windowWasShown = false;
        bool boxCameFirst = false;
        QString button;
        QString status = "nothing seen";
        MessageBoxWatcher user;
        user.whenOpen([&] { boxCameFirst = !windowWasShown; });
        const FirstShow atFirstShow([&](const QWidget* window) {
            windowWasShown = true;
            button = connectText(window);
            status = statusLabel(window)->text();
        });
        const Program program;

        QVERIFY(windowWasShown);
        QVERIFY(boxCameFirst);
        QCOMPARE(user.texts(), QStringList({program.app.serial->findChild<QSerialPort*>()->errorString()}));
        QCOMPARE(user.boxes().constFirst().title, QString("Vantrel"));
        QCOMPARE(button, QString("Connect"));
        QCOMPARE(status, QString());
        QCOMPARE(presetToolTips(program.app.mainWin), defaultPresetNames());
        QCOMPARE(profile.log(), QStringList());
    }

    void aFailedConnectChangesNothing()
    {
        const PrivateProfile profile;
        profile.store("comport", missingPort(profile));
        MessageBoxWatcher user;
        const Program program;

        program.find<QPushButton>("connectBtn")->click();
        QCOMPARE(user.texts(),
                 QStringList({openError(missingPort(profile)), openError(missingPort(profile))}));
        QCOMPARE(connectText(program.app.mainWin), QString("Connect"));
        QCOMPARE(statusLabel(program.app.mainWin)->text(), QString());
        QCOMPARE(presetToolTips(program.app.mainWin), defaultPresetNames());
    }

    void theConnectButtonConnectsOnceThePortIsRight()
    {
        const PrivateProfile profile;
        profile.store("comport", missingPort(profile));
        const MessageBoxWatcher user;
        const CameraEnd camera;
        const Program program;

        program.app.settingsManager->setCOMPort(camera.portName());
        QTest::mouseClick(program.find<QPushButton>("connectBtn"), Qt::LeftButton);
        QVERIFY(program.app.serial->isConnected());
        QCOMPARE(connectText(program.app.mainWin), QString("Disconnect"));
        QCOMPARE(statusLabel(program.app.mainWin)->text(), statusText(camera.portName()));
        QCOMPARE(user.boxes().size(), 1);
    }

    void theConnectButtonDisconnectsAndConnectsAgain()
    {
        const Desk desk;
        auto* button = desk.find<QPushButton>("connectBtn");
        const QLabel* status = statusLabel(desk.program->app.mainWin);
        QCOMPARE(button->text(), QString("Disconnect"));

        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(!desk.link()->isConnected());
        QCOMPARE(button->text(), QString("Connect"));
        QCOMPARE(status->text(), QString("Device disconnected"));

        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(desk.link()->isConnected());
        QCOMPARE(button->text(), QString("Disconnect"));
        QCOMPARE(status->text(), statusText(desk.camera.portName()));
        QVERIFY(desk.user.boxes().isEmpty());
    }

    void aFailedReconnectKeepsTheDisconnectedState()
    {
        const Desk desk;
        desk.find<QPushButton>("connectBtn")->click();
        desk.settings()->setCOMPort(missingPort(desk.profile));

        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.user.texts(), QStringList({openError(missingPort(desk.profile))}));
        QCOMPARE(connectText(desk.program->app.mainWin), QString("Connect"));
        QCOMPARE(statusLabel(desk.program->app.mainWin)->text(), QString("Device disconnected"));
    }

    void theStatusIsTheNameThatAScreenReaderSpeaks()
    {
        const Desk desk;
        const QLabel* status = statusLabel(desk.program->app.mainWin);
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(status->accessibleName(), status->text());
            desk.find<QPushButton>("connectBtn")->click();
        }
    }

    void onlyTheExactTextConnectOpens_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("lower case") << QString("connect");
        QTest::newRow("empty") << QString();
        QTest::newRow("another text") << QString("Connect ");
    }

    void onlyTheExactTextConnectOpens()
    {
        QFETCH(QString, text);
        const Desk desk;
        auto* button = desk.find<QPushButton>("connectBtn");
        desk.link()->closeSerialPort();
        button->setText(text);

        button->click();
        QVERIFY(!desk.link()->isConnected());
        QCOMPARE(button->text(), QString("Connect"));
    }

    void everyConnectionRecallsTheStartUpPreset()
    {
        Desk desk({{"startuppreset", 64}, {"isstartuppreset", true}});
        QCOMPARE(desk.camera.nextFrame(), recallPreset(64));

        desk.find<QPushButton>("connectBtn")->click();
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.camera.nextFrame(), recallPreset(64));
        QCOMPARE(desk.profile.log(), QStringList({"Call Preset64", "Call Preset64"}));
    }

    void aConnectionRecallsThenShowsTheStatusThenTheNames()
    {
        Desk desk({{"isstartuppreset", true}});
        desk.find<QPushButton>("connectBtn")->click();
        const auto earlierRecalls = desk.profile.log().size();

        QStringList named;
        const ToolTipWatcher toolTips([&](const QObject* changed) {
            QCOMPARE(statusLabel(desk.program->app.mainWin)->text(), statusText(desk.camera.portName()));
            QCOMPARE(desk.profile.log().size(), earlierRecalls + 1);
            named.append(changed->objectName());
        });
        desk.find<QPushButton>("connectBtn")->click();

        QCOMPARE(named, QStringList({"preset1Btn", "preset2Btn", "preset3Btn", "preset4Btn", "preset5Btn",
                                     "preset6Btn", "preset7Btn", "preset8Btn", "preset9Btn"}));
    }

    void aLostCameraIsShownOnceTheBoxIsDismissed()
    {
        Desk desk;
        QString textWhileOpen;
        desk.user.whenOpen([&] { textWhileOpen = connectText(desk.program->app.mainWin); });

        desk.camera.pull();
        QTRY_COMPARE(connectText(desk.program->app.mainWin), QString("Connect"));
        QCOMPARE(statusLabel(desk.program->app.mainWin)->text(), QString("Device disconnected"));
        QCOMPARE(textWhileOpen, QString("Disconnect"));
        QCOMPARE(desk.user.boxes().size(), 1);
    }

    void withAutomaticDetectionTheStatusSaysAuto()
    {
        const Desk desk;
        desk.settings()->setCOMPort("AUTO");
        QMetaObject::invokeMethod(desk.link(), "onDeviceConnected");
        QCOMPARE(statusLabel(desk.program->app.mainWin)->text(),
                 QString("Connected to Port: AUTO\tBaudRate: 9600"));
    }

    void newPortSettingsActAtTheNextConnection()
    {
        Desk desk;
        CameraEnd other;
        desk.settings()->setCOMPort(other.portName());
        desk.settings()->setBaudRate(19200);
        QCOMPARE(statusLabel(desk.program->app.mainWin)->text(), statusText(desk.camera.portName()));
        QVERIFY(desk.link()->isConnected());
        desk.find<QPushButton>("preset1Btn")->click();
        QCOMPARE(desk.camera.nextFrame(), recallPreset(1));

        desk.find<QPushButton>("connectBtn")->click();
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(statusLabel(desk.program->app.mainWin)->text(), statusText(other.portName(), 19200));
        desk.find<QPushButton>("preset2Btn")->click();
        QCOMPARE(other.nextFrame(), recallPreset(2));
    }

    void otherSignalsOfTheLinkChangeNothing()
    {
        const Desk desk;
        QMetaObject::invokeMethod(desk.link(), "onDeviceError");
        QMetaObject::invokeMethod(desk.link(), "onDataFull");
        QCOMPARE(connectText(desk.program->app.mainWin), QString("Disconnect"));
        QCOMPARE(statusLabel(desk.program->app.mainWin)->text(), statusText(desk.camera.portName()));
        QVERIFY(desk.link()->isConnected());
        QVERIFY(desk.user.boxes().isEmpty());
    }

    void noControlIsEverDisabled()
    {
        Desk desk;
        const auto controls = desk.find<QWidget>("centralWidget")->findChildren<QWidget*>();
        QCOMPARE(controls.size(), 23);
        const auto allEnabled = [&] {
            return std::all_of(controls.begin(), controls.end(),
                               [](const QWidget* w) { return w->isEnabled(); });
        };

        QVERIFY(allEnabled());
        desk.find<QPushButton>("connectBtn")->click();
        QVERIFY(allEnabled());
        desk.find<QPushButton>("connectBtn")->click();
        desk.camera.pull();
        QTRY_COMPARE(connectText(desk.program->app.mainWin), QString("Connect"));
        QVERIFY(allEnabled());
    }

    void theStatusStandsAtTheRightAndStays()
    {
        const Desk desk;
        auto* bar = desk.find<QStatusBar>("statusBar");
        const QLabel* status = statusLabel(desk.program->app.mainWin);
        QCOMPARE(bar->findChildren<QLabel*>().size(), 1);
        QCOMPARE(bar->currentMessage(), QString());

        bar->showMessage("A temporary message");
        QVERIFY(status->isVisible());
        bar->clearMessage();
        desk.program->app.mainWin->resize(900, desk.program->app.mainWin->height());
        QTRY_COMPARE(bar->width(), 900);
        const int rightMargin = bar->width() - status->mapTo(bar, QPoint(status->width(), 0)).x();
        QVERIFY(rightMargin >= 0 && rightMargin < 40);
        QVERIFY(status->width() < bar->width() - 100);
    }

    void everySignalOfTheLinkIsConnected()
    {
        const Desk desk;
        auto* serial = desk.program->app.serial;
        auto* window = desk.program->app.mainWin;

        QVERIFY(disconnect(serial, SIGNAL(onDeviceConnected()), window, SLOT(onDeviceConnceted())));
        QVERIFY(disconnect(serial, SIGNAL(onDeviceDisconnected()), window, SLOT(onDeviceDisconnected())));
        QVERIFY(disconnect(serial, SIGNAL(onDeviceError()), window, SLOT(onDeviceError())));
    }

    void theSettingsButtonOpensTheOneSettingsDialog()
    {
        const Desk desk;
        const auto dialogs = desk.program->app.mainWin->findChildren<QDialog*>();
        QCOMPARE(dialogs.size(), 1);
        const QDialog* dialog = dialogs.constFirst();
        QCOMPARE(dialog->metaObject()->className(), "AppSettingWin");
        QCOMPARE(dialog->parentWidget(), desk.program->app.mainWin);
        QVERIFY(dialog->isHidden());

        auto* button = desk.find<QPushButton>("settingsBtn");
        QTest::mousePress(button, Qt::LeftButton);
        QVERIFY(dialog->isHidden());
        QTest::mouseRelease(button, Qt::LeftButton);
        QVERIFY(dialog->isVisible());
        QVERIFY(!dialog->isModal());
        QCOMPARE(desk.program->app.mainWin->findChildren<QDialog*>().size(), 1);
    }

    void theSettingsButtonLeavesAnOpenDialogWhereItIs()
    {
        const Desk desk;
        auto* dialog = desk.find<QDialog>("AppSettingWin");
        desk.find<QPushButton>("settingsBtn")->click();
        QTRY_VERIFY(dialog->isActiveWindow());
        desk.program->app.mainWin->activateWindow();
        QTRY_VERIFY(desk.program->app.mainWin->isActiveWindow());

        FrontWatcher front;
        dialog->installEventFilter(&front);
        desk.find<QPushButton>("settingsBtn")->click();
        QCoreApplication::processEvents();
        QCOMPARE(front.count, 0);
        QVERIFY(desk.program->app.mainWin->isActiveWindow());
        QVERIFY(dialog->isVisible());
    }

    void theSettingsOpenBesideTheMainWindow_data()
    {
        QTest::addColumn<bool>("atTheRightEdge");
        QTest::newRow("room at the right") << false;
        QTest::newRow("room at the left") << true;
    }

    void theSettingsOpenBesideTheMainWindow()
    {
        QFETCH(bool, atTheRightEdge);
        const Desk desk;
        AppMainWin* window = desk.program->app.mainWin;
        const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
        window->move(atTheRightEdge ? screen.right() - window->width() : screen.left(), screen.top());
        const auto* dialog = desk.find<QDialog>("AppSettingWin");

        desk.find<QPushButton>("settingsBtn")->click();

        QVERIFY(!dialog->frameGeometry().intersects(window->frameGeometry()));
        QVERIFY(screen.contains(dialog->frameGeometry()));
    }

    void theShowSettingsActionDoesNothing()
    {
        const Desk desk;
        const auto* action = desk.program->app.mainWin->findChild<QAction*>("actionShow_Settings");
        QCOMPARE(action->text(), QString("Show Settings"));
        QVERIFY(action->shortcut().isEmpty());
        QVERIFY(action->associatedWidgets().isEmpty());

        desk.find<QAction>("actionShow_Settings")->trigger();
        QVERIFY(desk.find<QDialog>("AppSettingWin")->isHidden());
        QVERIFY(desk.link()->isConnected());
        QCOMPARE(desk.profile.log(), QStringList());
    }

    void theWindowsAreTakenApartInOrder()
    {
        QStringList gone;
        Desk desk;
        const auto watch = [&](const QObject* object, const char* name) {
            connect(object, &QObject::destroyed, this, [list = &gone, name] { list->append(name); });
        };
        const auto ringOf = [](const QWidget* window) {
            return window->findChild<QFocusFrame*>({}, Qt::FindDirectChildrenOnly);
        };
        const auto* settings = desk.find<QDialog>("AppSettingWin");
        watch(ringOf(desk.program->app.mainWin), "focus ring");
        watch(ringOf(settings), "settings' focus ring");
        watch(settings, "settings");
        watch(statusLabel(desk.program->app.mainWin), "status");
        watch(desk.find<QStatusBar>("statusBar"), "status bar");
        watch(desk.program->app.mainWin, "main window");

        desk.program.reset();
        gone.removeOne("main window");
        QCOMPARE(gone,
                 QStringList({"focus ring", "settings' focus ring", "settings", "status", "status bar"}));
    }

    void nothingOfTheLinkReachesTheWindowAtTheEnd()
    {
        QStringList order;
        Desk desk;
        connect(desk.program->app.mainWin, &QObject::destroyed, this,
                [list = &order] { list->append("window gone"); });
        connect(desk.link(), &AppVantrelSerial::onDeviceDisconnected, this,
                [list = &order] { list->append("disconnected"); });

        desk.program.reset();
        QCOMPARE(order, QStringList({"window gone", "disconnected"}));
    }
};

QTEST_APPLESS_MAIN(MainWindowTest)
#include "MainWindowTest.moc"
