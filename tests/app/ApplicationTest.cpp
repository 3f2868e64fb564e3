#include "app/AppQuitSignals.h"
#include "support/Desk.h"

#include <QMessageBox>
#include <QPushButton>
#include <QSerialPort>
#include <QSet>
#include <QStyle>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>

// The process entry under another name, so that a test can run it and see what it returns.
#define main vantrelMain
#include "app/main.cpp" // NOLINT(bugprone-suspicious-include)
#undef main

using Action = std::function<void()>;
Q_DECLARE_METATYPE(Action)

namespace {

constexpr int GiveUpMs = 5000;
constexpr int GaveUp = 125;

constexpr int QuitSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

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
    explicit WhenWindowIsShown(Action action)
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

    static Action& next()
    {
        static Action action;
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

/** The program as a whole: its start, its end, and its messages. */
class ApplicationTest : public QObject
{
    Q_OBJECT

private slots:

    void howeverItEndsTheCameraStopsAndTheSettingsAreStored_data()
    {
        QTest::addColumn<Action>("end");
        QTest::addColumn<int>("status");
        const auto signal = [](int number) { return Action([number] { QCOMPARE(std::raise(number), 0); }); };
        QTest::newRow("interrupted") << signal(SIGINT) << 0;
        QTest::newRow("terminated") << signal(SIGTERM) << 0;
        QTest::newRow("hung up") << signal(SIGHUP) << 0;
        QTest::newRow("broken pipe") << signal(SIGPIPE) << 0;
        QTest::newRow("window closed") << Action([] { vantrelApp()->mainWin->close(); }) << 0;
        QTest::newRow("any status") << Action([] { QCoreApplication::exit(42); }) << 42;
    }

    void howeverItEndsTheCameraStopsAndTheSettingsAreStored()
    {
        QFETCH(Action, end);
        QFETCH(int, status);
        Desk desk;
        desk.program.reset();
        QPointer<QObject> link;
        WhenWindowIsShown moveAndEnd([&] {
            link = vantrelApp()->serial;
            vantrelApp()->settingsManager->setPanSpeed(9);
            QTest::mousePress(vantrelApp()->mainWin->findChild<QPushButton*>("upBtn"), Qt::LeftButton);
            end();
        });

        QCOMPARE(runMain(), status);

        QCOMPARE(desk.profile.log(), QStringList({"MoveUp", "MoveStop"}));
        QCOMPARE(desk.camera.take(18), "81 01 06 01 09 05 03 01 ff 81 01 06 01 09 05 03 03 ff");
        QCOMPARE(desk.profile.stored("panspeed").toInt(), 9);
        QVERIFY(!link);
        QVERIFY(!QCoreApplication::instance());
    }

    void mainAsksForHighDpiScalingAndDesktopSettings()
    {
        Desk desk;
        desk.program.reset();
        QList<bool> asked;
        // Qt 6 scales, and draws pictures from all of their pixels, unasked.
#if QT_VERSION_MAJOR < 6
        QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, false);
        QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, false);
#endif
        QGuiApplication::setDesktopSettingsAware(false);
        WhenWindowIsShown exit([&asked] {
#if QT_VERSION_MAJOR < 6
            asked << QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling)
                  << QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
            asked << QGuiApplication::desktopSettingsAware();
            QCoreApplication::exit();
        });

        runMain();

        QVERIFY(!asked.isEmpty() && !asked.contains(false));
    }

    void aSignalIsTakenOverUntilTheExitAndOnlyOnce()
    {
        {
            const Desk desk;
            // No system call is cut short.
            for (const int number : QuitSignals)
                QVERIFY(actionOn(number).sa_flags & static_cast<int>(SA_RESTART));

            QCOMPARE(std::raise(SIGTERM), 0);
            QVERIFY(actionOn(SIGTERM).sa_handler == SIG_DFL);
            QVERIFY(actionOn(SIGINT).sa_handler != SIG_DFL);
        }
        for (const int number : QuitSignals)
            QVERIFY(actionOn(number).sa_handler == SIG_DFL);
    }

    void aSignalThatWasIgnoredStaysIgnored()
    {
        const auto earlier = std::signal(SIGHUP, SIG_IGN);
        {
            const Desk desk;
            QVERIFY(actionOn(SIGHUP).sa_handler == SIG_IGN);
        }
        QVERIFY(actionOn(SIGHUP).sa_handler == SIG_IGN);
        QVERIFY(std::signal(SIGHUP, earlier) == SIG_IGN);
    }

    void signalsKeepTheirMeaningWhereNoPipeIsLeft()
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

    void argumentsGoToQtWhichTakesItsOwn()
    {
        Desk desk;
        desk.program.reset();
        char name[] = "Vantrel";
        char option[] = "-style";
        char style[] = "windows";
        char other[] = "--preset";
        char* arguments[] = {name, option, style, other, nullptr};
        const auto start = [&arguments] { return std::make_unique<VantrelApp>(4, arguments); };

        const auto app = start();
        QTest::qWait(0);

        QCOMPARE(QApplication::style()->objectName(), "windows");
        QCOMPARE(QCoreApplication::arguments(), QStringList({"Vantrel", "--preset"}));
    }

    void theStoreComesFirstThenTheLinkThenAnErrorOfThePortThenTheWindow()
    {
        const PrivateProfile profile;
        MessageBoxWatcher user;
        bool linkIsWithoutWindow = false;
        bool windowWasVisible = false;
        user.whenOpen([&] {
            linkIsWithoutWindow =
                vantrelApp()->settingsManager && vantrelApp()->serial && !vantrelApp()->mainWin;
            const auto widgets = QApplication::topLevelWidgets();
            for (const QWidget* widget : widgets)
                windowWasVisible |= widget->isVisible() && widget->inherits("AppMainWin");
        });
        const QtMessageHandler oldHandler = qInstallMessageHandler(lookAtTheStart);

        const Program program;
        qInstallMessageHandler(oldHandler);

        QVERIFY(storeIsFirst);
        QVERIFY(linkIsWithoutWindow);
        QVERIFY(!windowWasVisible);
        QVERIFY(program.app.mainWin->isVisible());
        QCOMPARE(user.texts(), QStringList(program.app.serial->findChild<QSerialPort*>()->errorString()));
        QCOMPARE(program.find<QPushButton>("connectBtn")->text(), "Connect");
    }

    void theWindowGoesFirstThenTheStoreThenThePortThenTheLink()
    {
        QStringList gone;
        Desk desk;
        connect(desk.program->app.mainWin, &QObject::destroyed, this, [&gone] { gone.append("window"); });
        connect(desk.settings(), &QObject::destroyed, this, [&gone] { gone.append("store"); });
        connect(desk.link(), &AppVantrelSerial::onDeviceDisconnected, this,
                [&gone] { gone.append("disconnected"); });
        connect(desk.link()->findChild<QSerialPort*>(), &QObject::destroyed, this,
                [&gone] { gone.append("port"); });
        connect(desk.link(), &QObject::destroyed, this, [&gone] {
            gone.append(qobject_cast<QApplication*>(QCoreApplication::instance()) ? "link" : "application");
        });
        QVERIFY(!desk.program->app.mainWin->parent() && !desk.settings()->parent() && !desk.link()->parent());

        desk.program.reset();

        QCOMPARE(gone, QStringList({"window", "store", "disconnected", "port", "link"}));
    }

    void whatTheProgramOpensNoChildInheritsAndTheExitCloses()
    {
        // What Qt opens at the first start of a process it keeps.
        Desk desk;
        desk.program.reset();
        const QSet<int> before = openDescriptors();

        desk.program.emplace();
        const auto opened = openDescriptors() - before;
        QVERIFY(!opened.isEmpty());
        for (const int descriptor : opened)
            QVERIFY2(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, qPrintable(QString::number(descriptor)));

        desk.program.reset();
        QCOMPARE(openDescriptors(), before);
    }

    void theDesktopFindsTheProgramsFileAndItsIconInEverySize()
    {
        const Desk desk;
        const QString file = QGuiApplication::desktopFileName() + ".desktop";
        QVERIFY(QFile::exists(SOURCE_DIR "/packaging/linux/" + file));

        QList<int> widths;
        const auto sizes = QApplication::windowIcon().availableSizes();
        for (const QSize& size : sizes)
            widths.append(size.width());
        std::sort(widths.begin(), widths.end());
        QCOMPARE(widths, QList<int>({16, 24, 32, 48, 64, 128}));
    }

    void aMessageIsShownUnchangedWithAnOkButtonAndBlocksTheProgram()
    {
        const QString text = u8"<b>bold</b> &amp; %1 %s &File\n größer カメラ ";
        Desk desk;
        QMessageBox::StandardButtons buttons;
        Qt::WindowModality modality = Qt::NonModal;
        QString furtherText = "nothing seen";
        bool parentless = false;
        bool returned = false;
        bool returnedWhileOpen = true;
        desk.user.whenOpen([&] {
            const auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            buttons = box->standardButtons();
            modality = box->windowModality();
            furtherText = box->informativeText() + box->detailedText();
            parentless = !box->parent() && box->icon() == QMessageBox::NoIcon;
            returnedWhileOpen = returned;
        });

        desk.program->app.showMessage(text);
        returned = true;

        QCOMPARE(desk.user.boxes().constFirst().title, "Vantrel");
        QCOMPARE(desk.user.texts(), QStringList(text));
        QCOMPARE(buttons, QMessageBox::Ok);
        QCOMPARE(modality, Qt::ApplicationModal);
        QCOMPARE(furtherText, "");
        QVERIFY(parentless);
        QVERIFY(!returnedWhileOpen);
    }

    void anEmptyMessageIsShownLikeAnyOther()
    {
        Desk desk;
        desk.program->app.showMessage("");
        QCOMPARE(desk.user.boxes().size(), 1);
        QCOMPARE(desk.user.boxes().constFirst().title, "Vantrel");
        QCOMPARE(desk.user.boxes().constFirst().text, "");
        QCOMPARE(desk.user.boxes().constFirst().buttons.size(), 1);
    }

    void repliesAreLoggedWhileAMessageIsOpen()
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
};

QTEST_APPLESS_MAIN(ApplicationTest)
#include "ApplicationTest.moc"
