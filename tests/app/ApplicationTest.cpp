#include "app/AppQuitSignals.h"
#include "support/Desk.h"

#include <QAbstractButton>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSerialPort>
#include <QSet>
#include <QStatusBar>
#include <QStyle>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>

// The process entry under another name, so that a test can run it and see what it returns.
#define main vantrelMain
#include "app/main.cpp" // NOLINT(bugprone-suspicious-include)
#undef main

namespace {

constexpr int GiveUpMs = 5000;
constexpr int GaveUp = 125;

constexpr int QuitSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

// An account whose port setting names a line with a camera at its other end.
struct AccountWithCamera
{
    AccountWithCamera() { profile.store("comport", camera.portName()); }

    PrivateProfile profile;
    CameraEnd camera;
    MessageBoxWatcher user;
};

int runMain()
{
    char name[] = "Vantrel";
    char* arguments[] = {name, nullptr};
    return vantrelMain(1, arguments);
}

// Runs `action` from the event loop of the next program, once its window is on the screen.
class WhenWindowIsShown
{
public:
    explicit WhenWindowIsShown(std::function<void()> action)
    {
        next() = std::move(action);
        static const bool registered = (qAddPreRoutine(&WhenWindowIsShown::watch), true);
        Q_UNUSED(registered)
    }

private:
    static void watch()
    {
        if (!next())
            return;
        auto* timer = new QTimer(QCoreApplication::instance());
        QObject::connect(timer, &QTimer::timeout, timer, [timer] {
            if (!vantrelApp()->mainWin || !vantrelApp()->mainWin->isVisible())
                return;
            timer->stop();
            std::exchange(next(), nullptr)();
        });
        timer->start(1);
        // A window that never comes must not hold up the test.
        QTimer::singleShot(GiveUpMs, timer, [] { QCoreApplication::exit(GaveUp); });
    }

    static std::function<void()>& next()
    {
        static std::function<void()> action;
        return action;
    }
};

struct sigaction actionOn(int signalNumber)
{
    struct sigaction action = {};
    sigaction(signalNumber, nullptr, &action);
    return action;
}

QSet<int> openDescriptors()
{
    constexpr int MoreThanATestOpens = 1024;
    QSet<int> open;
    for (int descriptor = 0; descriptor < MoreThanATestOpens; ++descriptor) {
        if (fcntl(descriptor, F_GETFD) != -1)
            open.insert(descriptor);
    }
    return open;
}

bool storeIsFirst = false;

// The store's constructor writes to the debug output.
void lookAtTheStart(QtMsgType type, const QMessageLogContext&, const QString&)
{
    if (type == QtDebugMsg)
        storeIsFirst = vantrelApp() && !vantrelApp()->serial && !vantrelApp()->mainWin;
}

} // namespace

class ApplicationTest : public QObject
{
    Q_OBJECT

private slots:
    void mainReturnsWhatTheEventLoopReturned_data();
    void mainReturnsWhatTheEventLoopReturned();
    void closingTheWindowEndsTheProgramWithSuccess();
    void mainAsksForHighDpiScalingAndDesktopSettings();
    void mainDestroysTheProgramBeforeItReturns();

    void quitSignalEndsTheProgramWithSuccess_data();
    void quitSignalEndsTheProgramWithSuccess();
    void quitSignalStopsAMovingCamera();
    void quitSignalStoresPendingSettings();
    void theSameSignalASecondTimeHasItsDefaultMeaning();
    void aSignalThatWasIgnoredStaysIgnored();
    void aSignalCutsNoSystemCallShort();
    void signalsHaveTheirDefaultMeaningAfterTheExit();
    void signalsKeepTheirMeaningWhereNoPipeIsLeft();

    void argumentsGoToQtWhichTakesItsOwn();
    void argumentsStayValidForTheWholeRun();

    void settingsStoreIsCreatedFirst();
    void storeAndLinkAreThereBeforeTheWindow();
    void longLivedObjectsHaveNoParent();
    void windowIsShownAtStart();
    void theIconIsThereInEverySize();
    void theDesktopFindsTheProgramsFile();
    void missingPortShowsItsErrorBeforeTheWindow();
    void emptyPortSettingIsReportedLikeAMissingPort();

    void theWindowGoesFirstThenTheStoreThenThePortThenTheLink();
    void noSignalOfTheLinkReachesTheWindowAtExit();
    void applicationIsThereUntilTheLinkHasGone();
    void programStartsAgainAfterItsExit();
    void theExitClosesWhatTheProgramOpened();
    void noChildProcessInheritsWhatTheProgramOpened();

    void messageIsShownUnchanged_data();
    void messageIsShownUnchanged();
    void messageBoxHasOneOkButtonAndNothingElse();
    void messageBoxIsParentlessAndBlocksTheWholeProgram();
    void messageReturnsWhenTheBoxIsDismissed();
    void messageIsDismissedByEscape();
    void repliesAreLoggedWhileAMessageIsOpen();
    void aSecondMessageStacksOnTheFirst();
};

void ApplicationTest::mainReturnsWhatTheEventLoopReturned_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("success") << 0;
    QTest::newRow("failure") << 1;
    QTest::newRow("any value") << 42;
}

void ApplicationTest::mainReturnsWhatTheEventLoopReturned()
{
    QFETCH(int, status);
    AccountWithCamera account;
    WhenWindowIsShown exit([status] { QCoreApplication::exit(status); });

    QCOMPARE(runMain(), status);
}

void ApplicationTest::closingTheWindowEndsTheProgramWithSuccess()
{
    AccountWithCamera account;
    WhenWindowIsShown close([] { vantrelApp()->mainWin->close(); });

    QCOMPARE(runMain(), 0);
}

void ApplicationTest::mainAsksForHighDpiScalingAndDesktopSettings()
{
#if QT_VERSION_MAJOR < 6
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, false);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, false);
#endif
    QGuiApplication::setDesktopSettingsAware(false);
    AccountWithCamera account;
    // Qt 6 does both unasked.
    bool scaling = true;
    bool sharpPictures = true;
    bool desktopSettings = false;
    WhenWindowIsShown exit([&] {
#if QT_VERSION_MAJOR < 6
        scaling = QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling);
        sharpPictures = QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
        desktopSettings = QGuiApplication::desktopSettingsAware();
        QCoreApplication::exit();
    });

    runMain();

    QVERIFY(scaling);
    QVERIFY(sharpPictures);
    QVERIFY(desktopSettings);
}

void ApplicationTest::mainDestroysTheProgramBeforeItReturns()
{
    AccountWithCamera account;
    QPointer<QObject> link;
    WhenWindowIsShown exit([&link] {
        link = vantrelApp()->serial;
        QCoreApplication::quit();
    });

    runMain();

    QVERIFY(!link);
    QVERIFY(!QCoreApplication::instance());
}

void ApplicationTest::quitSignalEndsTheProgramWithSuccess_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("interrupt") << SIGINT;
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("hang up") << SIGHUP;
    QTest::newRow("broken pipe") << SIGPIPE;
}

void ApplicationTest::quitSignalEndsTheProgramWithSuccess()
{
    QFETCH(int, number);
    AccountWithCamera account;
    WhenWindowIsShown interrupt([number] { QCOMPARE(std::raise(number), 0); });

    QCOMPARE(runMain(), 0);
}

void ApplicationTest::quitSignalStopsAMovingCamera()
{
    AccountWithCamera account;
    WhenWindowIsShown interrupt([] {
        QTest::mousePress(vantrelApp()->mainWin->findChild<QPushButton*>("upBtn"), Qt::LeftButton);
        QCOMPARE(std::raise(SIGTERM), 0);
    });

    QCOMPARE(runMain(), 0);

    QCOMPARE(account.profile.log(), QStringList({"MoveUp", "MoveStop"}));
    QCOMPARE(account.camera.take(18), "81 01 06 01 05 05 03 01 ff 81 01 06 01 05 05 03 03 ff");
}

void ApplicationTest::quitSignalStoresPendingSettings()
{
    AccountWithCamera account;
    WhenWindowIsShown interrupt([] {
        vantrelApp()->settingsManager->setPanSpeed(9);
        QCOMPARE(std::raise(SIGTERM), 0);
    });

    QCOMPARE(runMain(), 0);

    QCOMPARE(account.profile.stored("panspeed").toInt(), 9);
}

void ApplicationTest::theSameSignalASecondTimeHasItsDefaultMeaning()
{
    const Desk desk;

    QCOMPARE(std::raise(SIGTERM), 0);

    QVERIFY(actionOn(SIGTERM).sa_handler == SIG_DFL);
    QVERIFY(actionOn(SIGINT).sa_handler != SIG_DFL);
}

void ApplicationTest::aSignalThatWasIgnoredStaysIgnored()
{
    const auto earlier = std::signal(SIGHUP, SIG_IGN);
    {
        const Desk desk;
        QVERIFY(actionOn(SIGHUP).sa_handler == SIG_IGN);
    }
    QVERIFY(actionOn(SIGHUP).sa_handler == SIG_IGN);
    QVERIFY(std::signal(SIGHUP, earlier) == SIG_IGN);
}

void ApplicationTest::aSignalCutsNoSystemCallShort()
{
    const Desk desk;
    for (const int number : QuitSignals)
        QVERIFY(actionOn(number).sa_flags & static_cast<int>(SA_RESTART));
}

void ApplicationTest::signalsHaveTheirDefaultMeaningAfterTheExit()
{
    {
        const Desk desk;
    }

    for (const int number : QuitSignals)
        QVERIFY(actionOn(number).sa_handler == SIG_DFL);
}

void ApplicationTest::signalsKeepTheirMeaningWhereNoPipeIsLeft()
{
    const auto handlers = [] {
        QVector<void (*)(int)> all;
        for (const int number : QuitSignals)
            all.append(actionOn(number).sa_handler);
        return all;
    };
    const auto before = handlers();
    const QSet<int> open = openDescriptors();
    rlimit descriptors{};
    getrlimit(RLIMIT_NOFILE, &descriptors);
    const rlimit none{0, descriptors.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    {
        const AppQuitSignals quitSignals(nullptr);
        setrlimit(RLIMIT_NOFILE, &descriptors);

        QCOMPARE(handlers(), before);
    }
    QCOMPARE(openDescriptors(), open);
}

void ApplicationTest::argumentsGoToQtWhichTakesItsOwn()
{
    AccountWithCamera account;
    char name[] = "Vantrel";
    char option[] = "-style";
    char style[] = "windows";
    char other[] = "--preset";
    char* arguments[] = {name, option, style, other, nullptr};

    const VantrelApp app(4, arguments);

    QCOMPARE(QApplication::style()->objectName(), "windows");
    QCOMPARE(QCoreApplication::arguments(), QStringList({"Vantrel", "--preset"}));
}

void ApplicationTest::argumentsStayValidForTheWholeRun()
{
    AccountWithCamera account;
    char name[] = "Vantrel";
    char first[] = "one";
    char* arguments[] = {name, first, nullptr};
    const auto start = [&arguments] { return std::make_unique<VantrelApp>(2, arguments); };

    const auto app = start();
    QTest::qWait(0);

    QCOMPARE(QCoreApplication::arguments(), QStringList({"Vantrel", "one"}));
}

void ApplicationTest::settingsStoreIsCreatedFirst()
{
    AccountWithCamera account;
    const QtMessageHandler oldHandler = qInstallMessageHandler(lookAtTheStart);

    const Program program;
    qInstallMessageHandler(oldHandler);

    QVERIFY(storeIsFirst);
}

void ApplicationTest::storeAndLinkAreThereBeforeTheWindow()
{
    const PrivateProfile profile;
    MessageBoxWatcher user;
    bool windowIsUnderConstruction = false;
    user.whenOpen([&] {
        windowIsUnderConstruction =
            vantrelApp()->settingsManager && vantrelApp()->serial && !vantrelApp()->mainWin;
    });

    const Program program;

    QVERIFY(windowIsUnderConstruction);
    QVERIFY(program.app.mainWin);
}

void ApplicationTest::longLivedObjectsHaveNoParent()
{
    const Desk desk;

    QVERIFY(!desk.program->app.mainWin->parent());
    QVERIFY(desk.program->app.mainWin->isWindow());
    QVERIFY(!desk.settings()->parent());
    QVERIFY(!desk.link()->parent());
}

void ApplicationTest::windowIsShownAtStart()
{
    const Desk desk;

    QVERIFY(desk.program->app.mainWin->isVisible());
    QCOMPARE(desk.user.boxes().size(), 0);
    QCOMPARE(desk.find<QPushButton>("connectBtn")->text(), "Disconnect");
}

void ApplicationTest::theIconIsThereInEverySize()
{
    const Desk desk;

    QList<int> widths;
    const auto sizes = QApplication::windowIcon().availableSizes();
    for (const QSize& size : sizes)
        widths.append(size.width());
    std::sort(widths.begin(), widths.end());

    QCOMPARE(widths, QList<int>({16, 24, 32, 48, 64, 128}));
}

void ApplicationTest::theDesktopFindsTheProgramsFile()
{
    const Desk desk;

    QVERIFY(QFile::exists(SOURCE_DIR "/packaging/linux/" + QGuiApplication::desktopFileName() + ".desktop"));
}

void ApplicationTest::missingPortShowsItsErrorBeforeTheWindow()
{
    const PrivateProfile profile;
    MessageBoxWatcher user;
    bool windowWasVisible = false;
    user.whenOpen([&windowWasVisible] {
        const auto widgets = QApplication::topLevelWidgets();
        for (const QWidget* widget : widgets)
            windowWasVisible |= widget->isVisible() && widget->inherits("AppMainWin");
    });

    const Program program;

    QCOMPARE(user.boxes().size(), 1);
    QCOMPARE(user.boxes().constFirst().title, "Vantrel");
    QCOMPARE(user.boxes().constFirst().text, program.app.serial->findChild<QSerialPort*>()->errorString());
    QVERIFY(!user.boxes().constFirst().text.isEmpty());
    QVERIFY(!windowWasVisible);
    QVERIFY(program.app.mainWin->isVisible());
    QCOMPARE(program.find<QPushButton>("connectBtn")->text(), "Connect");
    QCOMPARE(program.find<QStatusBar>("statusBar")->findChild<QLabel*>()->text(), "");
}

void ApplicationTest::emptyPortSettingIsReportedLikeAMissingPort()
{
    const PrivateProfile profile;
    profile.store("comport", "");
    const MessageBoxWatcher user;

    const Program program;

    QCOMPARE(user.boxes().size(), 1);
    QVERIFY(program.app.mainWin->isVisible());
    QCOMPARE(program.find<QPushButton>("connectBtn")->text(), "Connect");
}

void ApplicationTest::theWindowGoesFirstThenTheStoreThenThePortThenTheLink()
{
    AccountWithCamera account;
    QStringList gone;
    {
        const Program program;
        connect(program.app.mainWin, &QObject::destroyed, [&gone] { gone.append("window"); });
        connect(program.app.settingsManager, &QObject::destroyed, [&gone] { gone.append("store"); });
        connect(program.app.serial, &AppVantrelSerial::onDeviceDisconnected,
                [&gone] { gone.append("disconnected"); });
        connect(program.app.serial->findChild<QSerialPort*>(), &QObject::destroyed,
                [&gone] { gone.append("port"); });
        connect(program.app.serial, &QObject::destroyed, [&gone] { gone.append("link"); });
    }

    QCOMPARE(gone, QStringList({"window", "store", "disconnected", "port", "link"}));
}

void ApplicationTest::noSignalOfTheLinkReachesTheWindowAtExit()
{
    AccountWithCamera account;
    bool windowIsGone = false;
    QPointer<QWidget> window;
    {
        const Program program;
        window = program.app.mainWin;
        connect(program.app.serial, &AppVantrelSerial::onDeviceDisconnected,
                [&windowIsGone, &window] { windowIsGone = window.isNull(); });
    }

    QVERIFY(windowIsGone);
}

void ApplicationTest::applicationIsThereUntilTheLinkHasGone()
{
    AccountWithCamera account;
    bool present = false;
    {
        const Program program;
        connect(program.app.serial, &QObject::destroyed,
                [&present] { present = qobject_cast<QApplication*>(QCoreApplication::instance()); });
    }

    QVERIFY(present);
    QVERIFY(!QCoreApplication::instance());
}

void ApplicationTest::programStartsAgainAfterItsExit()
{
    AccountWithCamera account;
    for (int start = 0; start < 3; ++start) {
        const Program program;
        QVERIFY(program.app.serial->isConnected());
    }
    QCOMPARE(account.user.texts(), QStringList());
}

void ApplicationTest::theExitClosesWhatTheProgramOpened()
{
    AccountWithCamera account;
    // What Qt opens at the first start of a process it keeps.
    {
        const Program first;
    }
    const QSet<int> before = openDescriptors();
    {
        const Program program;
        QVERIFY(openDescriptors().size() > before.size());
    }
    QCOMPARE(openDescriptors(), before);
}

void ApplicationTest::noChildProcessInheritsWhatTheProgramOpened()
{
    AccountWithCamera account;
    const QSet<int> before = openDescriptors();
    const Program program;

    const auto opened = openDescriptors() - before;
    for (const int descriptor : opened)
        QVERIFY2(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, qPrintable(QString::number(descriptor)));
}

void ApplicationTest::messageIsShownUnchanged_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("text") << "Preset No5 is set.";
    QTest::newRow("empty") << "";
    QTest::newRow("blanks around") << "  text  ";
    QTest::newRow("lines") << "one\ntwo\n";
    QTest::newRow("markup") << "<b>bold</b> &amp; %1 %s &File";
    QTest::newRow("long") << QString(5000, 'x');
    QTest::newRow("not Latin") << QString::fromUtf8("Kamera größer カメラ 🎥");
}

void ApplicationTest::messageIsShownUnchanged()
{
    QFETCH(QString, message);
    Desk desk;

    desk.program->app.showMessage(message);

    QCOMPARE(desk.user.boxes().size(), 1);
    QCOMPARE(desk.user.boxes().constFirst().title, "Vantrel");
    QCOMPARE(desk.user.boxes().constFirst().text, message);
}

void ApplicationTest::messageBoxHasOneOkButtonAndNothingElse()
{
    Desk desk;
    QMessageBox::StandardButtons buttons;
    QMessageBox::Icon icon = QMessageBox::Critical;
    QString furtherText = "none";
    desk.user.whenOpen([&] {
        const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        buttons = box->standardButtons();
        icon = box->icon();
        furtherText = box->informativeText() + box->detailedText();
    });

    desk.program->app.showMessage("");

    QCOMPARE(buttons, QMessageBox::Ok);
    QCOMPARE(desk.user.boxes().constFirst().buttons.size(), 1);
    QCOMPARE(icon, QMessageBox::NoIcon);
    QCOMPARE(furtherText, "");
}

void ApplicationTest::messageBoxIsParentlessAndBlocksTheWholeProgram()
{
    Desk desk;
    bool parentless = false;
    Qt::WindowModality modality = Qt::NonModal;
    desk.user.whenOpen([&] {
        const QWidget* box = QApplication::activeModalWidget();
        parentless = !box->parent();
        modality = box->windowModality();
    });

    desk.program->app.showMessage("text");

    QVERIFY(parentless);
    QCOMPARE(modality, Qt::ApplicationModal);
}

void ApplicationTest::messageReturnsWhenTheBoxIsDismissed()
{
    Desk desk;
    bool returned = false;
    bool returnedWhileOpen = true;
    QPointer<QWidget> box;
    desk.user.whenOpen([&] {
        box = QApplication::activeModalWidget();
        returnedWhileOpen = returned;
    });

    desk.program->app.showMessage("text");
    returned = true;

    QVERIFY(!returnedWhileOpen);
    QVERIFY(!box);
    QVERIFY(desk.program->app.mainWin->isVisible());
}

void ApplicationTest::messageIsDismissedByEscape()
{
    Desk desk;
    bool pressed = false;
    desk.user.whenOpen([&pressed] {
        QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape);
        pressed = QApplication::activeModalWidget() == nullptr;
    });

    desk.program->app.showMessage("text");

    QVERIFY(pressed);
}

void ApplicationTest::repliesAreLoggedWhileAMessageIsOpen()
{
    Desk desk;
    QStringList log;
    desk.user.whenOpen([&] {
        desk.camera.reply("90 41 ff");
        QTRY_COMPARE(desk.profile.log().size(), 3);
        log = desk.profile.log();
    });

    desk.program->app.showMessage("text");

    QCOMPARE(log, QStringList({"9041ff", "Analyze Buffer", "-90-41-ff-3"}));
}

void ApplicationTest::aSecondMessageStacksOnTheFirst()
{
    Desk desk;
    QStringList returned;
    desk.user.holdUntil([] { return MessageBoxWatcher::openCount() == 2; });
    QTimer::singleShot(0, &desk.program->app, [&] {
        desk.program->app.showMessage("second");
        returned.append("second");
    });

    desk.program->app.showMessage("first");
    returned.append("first");

    QCOMPARE(desk.user.texts(), QStringList({"second", "first"}));
    QCOMPARE(returned, QStringList({"second", "first"}));
}

QTEST_APPLESS_MAIN(ApplicationTest)

#include "ApplicationTest.moc"
