#include "app/AppQuitSignals.h"
#include "support/Desk.h"
#include "support/WhenShown.h"

#include <QMessageBox>
#include <QPushButton>
#include <QSerialPort>
#include <QSet>
#include <QStyle>

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>

// main() under another name, so that a test can call it.
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

// Called by the store's constructor, which writes to the debug output.
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
        const auto moveAndEnd = [&] {
            link = vantrelApp()->serial;
            vantrelApp()->settingsManager->setPanSpeed(9);
            QTest::mousePress(vantrelApp()->mainWin->findChild<QPushButton*>("upBtn"), Qt::LeftButton);
            end();
        };
        const WhenShown whenShown([&](QWidget* window) {
            QTimer::singleShot(0, window, moveAndEnd);
            QTimer::singleShot(GiveUpMs, window, [] { QCoreApplication::exit(GaveUp); });
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
        // With Qt 6 both are always on.
#if QT_VERSION_MAJOR < 6
        QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling, false);
        QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps, false);
#endif
        QGuiApplication::setDesktopSettingsAware(false);
        const WhenShown whenShown([&asked](QWidget* window) {
#if QT_VERSION_MAJOR < 6
            asked << QCoreApplication::testAttribute(Qt::AA_EnableHighDpiScaling)
                  << QCoreApplication::testAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
            asked << QGuiApplication::desktopSettingsAware();
            QTimer::singleShot(0, window, [] { QCoreApplication::exit(); });
        });

        runMain();

        QVERIFY(!asked.isEmpty() && !asked.contains(false));
    }

    void aSignalIsHandledOnceAndOnlyUntilTheExit()
    {
        {
            const Desk desk;
            // No signal interrupts a system call.
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

    void withoutAPipeTheSignalsKeepTheirHandlers()
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

    void qtTakesItsOwnArgumentsAndKeepsTheOthers()
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
        // Overwrites the stack of the constructor, where a reference to its argument count would be lost.
        QCoreApplication::processEvents();

        QCOMPARE(QApplication::style()->objectName(), "windows");
        QCOMPARE(QCoreApplication::arguments(), QStringList({"Vantrel", "--preset"}));
    }

    void theStoreIsBuiltFirstThenTheLinkThenTheWindow()
    {
        const PrivateProfile profile;
        MessageBoxWatcher user;
        bool linkIsWithoutWindow = false;
        // The window's constructor opens the port, which is missing.
        user.whenOpen([&linkIsWithoutWindow] {
            linkIsWithoutWindow =
                vantrelApp()->settingsManager && vantrelApp()->serial && !vantrelApp()->mainWin;
        });
        const QtMessageHandler oldHandler = qInstallMessageHandler(lookAtTheStart);

        const Program program;
        qInstallMessageHandler(oldHandler);

        QVERIFY(storeIsFirst);
        QVERIFY(linkIsWithoutWindow);
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

    void openFilesAreNotInheritedAndAreClosedAtTheExit()
    {
        // Qt keeps open what it opens at the first start in a process.
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

    void theProgramNamesItsDesktopFileAndHasItsIconInEverySize()
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

    void aMessageIsShownUnchangedWithAnOkButtonAndBlocksTheProgram_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("marks and other letters") << u8"<b>bold</b> &amp; %1 %s &File\n größer カメラ ";
        QTest::newRow("empty") << "";
    }

    void aMessageIsShownUnchangedWithAnOkButtonAndBlocksTheProgram()
    {
        QFETCH(QString, text);
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

        QCOMPARE(desk.user.texts(), QStringList(text));
        QCOMPARE(desk.user.boxes().constFirst().title, "Vantrel");
        QCOMPARE(buttons, QMessageBox::Ok);
        QCOMPARE(modality, Qt::ApplicationModal);
        QCOMPARE(furtherText, "");
        QVERIFY(parentless);
        QVERIFY(!returnedWhileOpen);
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
