#include "support/Desk.h"
#include "support/Form.h"
#include "support/Frames.h"
#include "support/HeldPointer.h"
#include "support/WhenShown.h"

#include "ui_AppMainWin.h"

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QFocusFrame>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QSerialPort>
#include <QStatusBar>

namespace {

QLabel* statusLabel(const QWidget* window)
{
    return window->findChild<QStatusBar*>("statusBar")->findChild<QLabel*>();
}

/** How the window shows the connection: the text of its button, and its status. */
QStringList shown(const QWidget* window)
{
    return {window->findChild<QPushButton*>("connectBtn")->text(), statusLabel(window)->text()};
}

QStringList connected(const QString& port, int baudRate = 9600)
{
    return {"Disconnect", "Connected to Port: " + port + "\tBaudRate: " + QString::number(baudRate)};
}

QStringList disconnected()
{
    return {"Connect", "Device disconnected"};
}

QStringList neverConnected()
{
    return {"Connect", ""};
}

/** A name that no other test opens: QSerialPort locks a port's name for the whole machine. */
QString missingPort(const PrivateProfile& profile)
{
    return profile.folder() + "/camera";
}

QString openError(const QString& portName)
{
    QSerialPort port(portName);
    return port.open(QIODevice::ReadWrite) ? QString() : port.errorString();
}

/** Calls a function with the receiver of each event of one type. */
class EventWatcher : public QObject
{
public:
    EventWatcher(QEvent::Type seenType, std::function<void(QObject*)> onEvent)
        : type(seenType)
        , see(std::move(onEvent))
    {
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == type)
            see(watched);
        return false;
    }

private:
    QEvent::Type type;
    std::function<void(QObject*)> see;
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
        QByteArrayList declared = privateSlots(AppMainWin::staticMetaObject);
        for (QByteArray& slot : declared)
            slot.replace("()", "");
        QCOMPARE(declared, expected);
    }

    void theWindowIsADialogWithMinimiseAndCloseButtons()
    {
        const Desk desk;
        const AppMainWin* window = desk.program->app.mainWin;
        // Qt gives every such window the title and the system menu as well.
        QCOMPARE(window->windowFlags(), Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint |
                                            Qt::WindowMinimizeButtonHint | Qt::WindowCloseButtonHint);
    }

    void theWindowFitsItsContent()
    {
        const QSize fitting = FormAlone<QMainWindow, Ui_AppMainWin>::fittingSize();
        QVERIFY(fitting != QSize(248, 599));

        QSize atShow;
        const WhenShown whenShown([&](const QWidget* window) { atShow = window->size(); });
        const Desk desk;
        QCOMPARE(atShow, fitting);
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

        QStringList atShow;
        QStringList toolTips;
        QByteArray recall;
        const WhenShown whenShown([&](const QWidget* window) {
            atShow = shown(window);
            toolTips = presetToolTips(window);
            recall = camera.take(7);
        });
        const Program program;

        QCOMPARE(atShow, connected(camera.portName(), 115200));
        QCOMPARE(toolTips.at(3), QString("Altar"));
        QCOMPARE(recall, recallPreset(12));
        QCOMPARE(profile.log(), QStringList({"Call Preset12"}));
    }

    void theWindowKeepsTheSizeInWhichItAppears()
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

    void withoutACameraTheErrorComesFirstThenTheWindow()
    {
        const PrivateProfile profile;
        const QString port = missingPort(profile);
        profile.store("comport", port);
        profile.store("isstartuppreset", true);
        profile.store(port + "_1", "Altar");

        QStringList atShow;
        bool boxCameFirst = false;
        MessageBoxWatcher user;
        user.whenOpen([&] { boxCameFirst = atShow.isEmpty(); });
        const WhenShown whenShown([&](const QWidget* window) { atShow = shown(window); });
        const Program program;

        QVERIFY(boxCameFirst);
        QCOMPARE(user.texts(), QStringList({program.app.serial->findChild<QSerialPort*>()->errorString()}));
        QCOMPARE(user.boxes().constFirst().title, QString("Vantrel"));
        QCOMPARE(atShow, neverConnected());
        QCOMPARE(presetToolTips(program.app.mainWin), defaultPresetNames());
        QCOMPARE(profile.log(), QStringList());
    }

    void aFailedConnectChangesNothingUntilThePortIsRight()
    {
        const PrivateProfile profile;
        const QString missing = missingPort(profile);
        profile.store("comport", missing);
        MessageBoxWatcher user;
        const CameraEnd camera;
        const Program program;
        auto* button = program.find<QPushButton>("connectBtn");

        button->click();
        QCOMPARE(user.texts(), QStringList({openError(missing), openError(missing)}));
        QCOMPARE(shown(program.app.mainWin), neverConnected());

        program.app.settingsManager->setCOMPort(camera.portName());
        button->click();
        QVERIFY(program.app.serial->isConnected());
        QCOMPARE(shown(program.app.mainWin), connected(camera.portName()));
        QCOMPARE(user.boxes().size(), 2);
    }

    void theConnectButtonDisconnectsAndConnectsAgain()
    {
        const Desk desk;
        auto* button = desk.find<QPushButton>("connectBtn");

        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(!desk.link()->isConnected());
        QCOMPARE(shown(desk.program->app.mainWin), disconnected());

        QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(desk.link()->isConnected());
        QCOMPARE(shown(desk.program->app.mainWin), connected(desk.camera.portName()));
        QVERIFY(desk.user.boxes().isEmpty());
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

    void onlyTheExactTextConnectOpens()
    {
        const Desk desk;
        auto* button = desk.find<QPushButton>("connectBtn");
        desk.link()->closeSerialPort();
        for (const char* text : {"connect", "", "Connect "}) {
            button->setText(text);
            button->click();
            QVERIFY(!desk.link()->isConnected());
            QCOMPARE(button->text(), QString("Connect"));
        }
    }

    void everyConnectionRecallsTheStartUpPresetIfItIsChecked()
    {
        Desk desk({{"startuppreset", 64}, {"isstartuppreset", true}});
        QCOMPARE(desk.camera.nextFrame(), recallPreset(64));

        desk.find<QPushButton>("connectBtn")->click();
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.camera.nextFrame(), recallPreset(64));

        desk.find<QComboBox>("startUpPresetCombo")->setCurrentText("PRESET33");
        desk.find<QPushButton>("connectBtn")->click();
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.camera.nextFrame(), recallPreset(33));

        desk.find<QAbstractButton>("startUpPresetCheck")->click();
        desk.find<QPushButton>("connectBtn")->click();
        desk.find<QPushButton>("connectBtn")->click();
        QCOMPARE(desk.profile.log(), QStringList({"Call Preset64", "Call Preset64", "Call Preset33"}));
    }

    void aConnectionRecallsThenShowsTheStatusThenTheNames()
    {
        Desk desk({{"isstartuppreset", true}});
        desk.find<QPushButton>("connectBtn")->click();
        const auto earlierRecalls = desk.profile.log().size();

        QStringList named;
        const EventWatcher toolTips(QEvent::ToolTipChange, [&](const QObject* changed) {
            QCOMPARE(shown(desk.program->app.mainWin), connected(desk.camera.portName()));
            QCOMPARE(desk.profile.log().size(), earlierRecalls + 1);
            named.append(changed->objectName());
        });
        desk.find<QPushButton>("connectBtn")->click();

        QCOMPARE(named, QStringList({"preset1Btn", "preset2Btn", "preset3Btn", "preset4Btn", "preset5Btn",
                                     "preset6Btn", "preset7Btn", "preset8Btn", "preset9Btn"}));
    }

    void withAutomaticDetectionTheStatusSaysAuto()
    {
        const Desk desk;
        desk.settings()->setCOMPort("AUTO");
        QMetaObject::invokeMethod(desk.link(), "onDeviceConnected");
        QCOMPARE(shown(desk.program->app.mainWin), connected("AUTO"));
    }

    void noControlIsEverDisabled()
    {
        Desk desk;
        const auto controls = desk.find<QWidget>("centralWidget")->findChildren<QWidget*>();
        const auto allEnabled = [&] {
            return std::all_of(controls.begin(), controls.end(),
                               [](const QWidget* w) { return w->isEnabled(); });
        };

        QVERIFY(allEnabled());
        desk.find<QPushButton>("connectBtn")->click();
        QVERIFY(allEnabled());
        desk.find<QPushButton>("connectBtn")->click();
        desk.camera.pull();
        QTRY_COMPARE(shown(desk.program->app.mainWin), disconnected());
        QVERIFY(allEnabled());
    }

    void theStatusIsAtTheRightAsWideAsItsText()
    {
        const Desk desk;
        QWidget* window = desk.program->app.mainWin;
        window->resize(window->width() + 200, window->height());
        QTRY_VERIFY(statusLabel(window)->x() > 200);
        QCOMPARE(statusLabel(window)->width(), statusLabel(window)->sizeHint().width());
    }

    void theStatusStaysWhateverElseTheBarShows()
    {
        const Desk desk;
        auto* bar = desk.find<QStatusBar>("statusBar");
        QCOMPARE(bar->findChildren<QLabel*>().size(), 1);
        QCOMPARE(bar->currentMessage(), QString());

        bar->showMessage("A temporary message");
        QVERIFY(statusLabel(desk.program->app.mainWin)->isVisible());
    }

    // The slot does nothing, so only its connection can be checked.
    void theErrorsOfTheLinkReachTheWindow()
    {
        const Desk desk;
        QVERIFY(disconnect(desk.link(), SIGNAL(onDeviceError()), desk.program->app.mainWin,
                                               SLOT(onDeviceError())));
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

        desk.find<QPushButton>("settingsBtn")->click();
        QVERIFY(dialog->isVisible());
        QVERIFY(!dialog->isModal());
        QCOMPARE(desk.program->app.mainWin->findChildren<QDialog*>().size(), 1);
    }

    void theSettingsButtonDoesNotRaiseAnOpenDialog()
    {
        const Desk desk;
        auto* dialog = desk.find<QDialog>("AppSettingWin");
        desk.find<QPushButton>("settingsBtn")->click();
        QTRY_VERIFY(dialog->isActiveWindow());
        desk.program->app.mainWin->activateWindow();
        QTRY_VERIFY(desk.program->app.mainWin->isActiveWindow());

        const EventWatcher raised(QEvent::ZOrderChange,
                                  [&](const QObject* window) { QVERIFY(window != dialog); });
        desk.find<QPushButton>("settingsBtn")->click();
        QCoreApplication::processEvents();
        QVERIFY(desk.program->app.mainWin->isActiveWindow());
        QVERIFY(dialog->isVisible());
    }

    void aPressThatIsDraggedOffDoesNothing()
    {
        const Desk desk;
        desk.find<QLineEdit>("presetEdit")->setText("3");
        QStringList names{"settingsBtn", "connectBtn", "callBtn", "setBtn"};
        for (int preset = 1; preset <= 9; ++preset)
            names.append(QString("preset%1Btn").arg(preset));

        for (const QString& name : names) {
            auto* button = desk.find<QPushButton>(qPrintable(name));
            QTest::mousePress(button, Qt::LeftButton);
            moveHeldPointer(button, {-20, -20});
            QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, {-20, -20});
        }

        QVERIFY(desk.find<QDialog>("AppSettingWin")->isHidden());
        QVERIFY(desk.link()->isConnected());
        QCOMPARE(desk.profile.log(), QStringList());
        QVERIFY(desk.user.boxes().isEmpty());
    }

    void theShowSettingsActionDoesNothing()
    {
        const Desk desk;
        auto* action = desk.find<QAction>("actionShow_Settings");
        QVERIFY(action->shortcut().isEmpty());
        QVERIFY(action->associatedWidgets().isEmpty());

        action->trigger();
        QVERIFY(desk.find<QDialog>("AppSettingWin")->isHidden());
        QVERIFY(desk.link()->isConnected());
        QCOMPARE(desk.profile.log(), QStringList());
    }

    void theWindowsPartsAreDeletedInOrder()
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

        desk.program.reset();
        QCOMPARE(gone,
                 QStringList({"focus ring", "settings' focus ring", "settings", "status", "status bar"}));
    }
};

QTEST_APPLESS_MAIN(MainWindowTest)
#include "MainWindowTest.moc"
