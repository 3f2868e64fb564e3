#include "SerialCamera.h"
#include "app/AppQuitSignals.h"
#include "view/CameraView.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>

namespace {

constexpr int exitUsage = 2;
constexpr int longestLateness = 600000;
constexpr int longestReply = 65535;
constexpr double longestSeconds = 86400;

const char* const description =
    "A simulated pan-tilt-zoom camera on a pseudo-terminal, for any VISCA controller.\n"
    "\n"
    "Standard output gets one line per event:\n"
    "  Camera at PATH          where the controller connects (the first line)\n"
    "  Link at PATH            the same by the name given with --link\n"
    "  <- 81 01 06 04 FF  ...  bytes from the controller and what they mean\n"
    "  -> 90 41 FF  ...        the camera's reply and what it means\n"
    "  >> 90 41                bytes put on the line, when faults are asked for\n"
    "  Hung up                 the line is gone";

struct Settings
{
    ViscaCamera::BusyRules busyRules = ViscaCamera::BusyRules::Lenient;
    ReplyFaults::Options faults;
    QString link;
    std::optional<ViscaCamera::Time> hangUpAfter;
    ViscaCamera::Time comeBackAfter{1000};
};

void complain(const QString& message)
{
    QTextStream(stderr) << "vantrel-camera: " << message << '\n';
}

[[noreturn]] void fail(const QString& message, int status)
{
    complain(message);
    std::exit(status);
}

// The value of `name` as a whole number between `lowest` and `highest`; nothing if the option is not given.
std::optional<qint64> wholeNumber(const QCommandLineParser& parser, const QString& name, qint64 lowest,
                                  qint64 highest)
{
    if (!parser.isSet(name))
        return std::nullopt;
    bool valid = false;
    const qint64 number = parser.value(name).toLongLong(&valid);
    if (!valid || number < lowest || number > highest) {
        fail(QString("--%1 takes a whole number from %2 to %3, not \"%4\"")
                 .arg(name)
                 .arg(lowest)
                 .arg(highest)
                 .arg(parser.value(name)),
             exitUsage);
    }
    return number;
}

// The value of `name`, given in seconds; nothing if the option is not given.
std::optional<ViscaCamera::Time> seconds(const QCommandLineParser& parser, const QString& name)
{
    if (!parser.isSet(name))
        return std::nullopt;
    bool valid = false;
    const double number = parser.value(name).toDouble(&valid);
    if (!valid || !(number >= 0 && number <= longestSeconds)) {
        fail(QString("--%1 takes seconds from 0 to %2, not \"%3\"")
                 .arg(name)
                 .arg(longestSeconds)
                 .arg(parser.value(name)),
             exitUsage);
    }
    return std::chrono::round<ViscaCamera::Time>(std::chrono::duration<double>(number));
}

Settings readCommandLine(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description);
    parser.addVersionOption();
    parser.addOptions({
        {{"h", "help"}, "Show this help."},
        {"view", "Open a window that shows what the camera sees."},
        {"link", "Make a symbolic link to the pseudo-terminal.", "PATH"},
        {"strict", "Refuse drives during home or recall, and these during a drive. Without it the newest "
                   "command wins."},
        {"no-replies", "Never reply."},
        {"late", "Reply this many milliseconds later.", "MS"},
        {"split", "Send each reply in pieces, cut at random places."},
        {"join", "Hold replies back and send several at once."},
        {"noise", "Put random bytes before each reply."},
        {"reply-length", "Pad or cut each reply to N bytes between its first byte and FF.", "N"},
        {"hang-up-after", "Hang up the line, once, as if the adapter were pulled.", "SECONDS"},
        {"come-back-after", "After hanging up, come back at the same link (default: 1).", "SECONDS"},
        {"seed", "Start the random numbers of the faults elsewhere (default: 1).", "N"},
    });

    if (!parser.parse(application.arguments()))
        fail(parser.errorText(), exitUsage);
    if (parser.isSet("help"))
        parser.showHelp();
    if (parser.isSet("version"))
        parser.showVersion();
    if (!parser.positionalArguments().isEmpty())
        fail(QString("unexpected argument \"%1\"").arg(parser.positionalArguments().constFirst()), exitUsage);
    if (parser.isSet("link") && parser.value("link").isEmpty())
        fail("--link takes a path", exitUsage);
    if (parser.isSet("come-back-after") && !parser.isSet("hang-up-after"))
        fail("--come-back-after needs --hang-up-after", exitUsage);

    Settings settings;
    settings.link = parser.value("link");
    if (parser.isSet("strict"))
        settings.busyRules = ViscaCamera::BusyRules::Strict;
    settings.faults.noReplies = parser.isSet("no-replies");
    settings.faults.split = parser.isSet("split");
    settings.faults.join = parser.isSet("join");
    settings.faults.noise = parser.isSet("noise");
    settings.faults.late = ReplyFaults::Time(wholeNumber(parser, "late", 0, longestLateness).value_or(0));
    if (const auto length = wholeNumber(parser, "reply-length", 0, longestReply))
        settings.faults.length = static_cast<int>(*length);
    if (const auto seed = wholeNumber(parser, "seed", 0, UINT32_MAX))
        settings.faults.seed = static_cast<quint32>(*seed);
    settings.hangUpAfter = seconds(parser, "hang-up-after");
    settings.comeBackAfter = seconds(parser, "come-back-after").value_or(settings.comeBackAfter);
    return settings;
}

// Qt aborts where it finds no display; this ends the program in good order instead.
void failWithoutDisplay(QtMsgType type, const QMessageLogContext&, const QString&)
{
    if (type == QtFatalMsg)
        fail("--view needs a display, and there is none", EXIT_FAILURE);
}

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool withView)
{
    if (!withView)
        return std::make_unique<QCoreApplication>(argc, argv);
#if QT_VERSION_MAJOR < 6
    // Qt 6 always scales.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
#endif
    const QtMessageHandler usual = qInstallMessageHandler(failWithoutDisplay);
    auto application = std::make_unique<QApplication>(argc, argv);
    qInstallMessageHandler(usual);
    return application;
}

void printLine(const QString& line)
{
    QTextStream(stdout) << line << '\n';
}

} // namespace

int main(int argc, char* argv[])
{
    const bool wantsView =
        std::any_of(argv, argv + argc, [](const char* word) { return std::strcmp(word, "--view") == 0; });
    const auto application = makeApplication(argc, argv, wantsView);
    QCoreApplication::setApplicationName("vantrel-camera");
    QCoreApplication::setApplicationVersion(VANTREL_VERSION);
    const Settings settings = readCommandLine(*application);

    // They end the event loop, and the link is removed.
    const AppQuitSignals quitSignals(nullptr);
    SerialCamera camera(settings.busyRules, settings.faults, settings.link);
    QObject::connect(&camera, &SerialCamera::reported, application.get(), printLine);
    std::optional<CameraView> view;
    if (wantsView) {
        view.emplace([&]() -> const ViscaCamera& { return camera.present(); });
        QObject::connect(&camera, &SerialCamera::happened, &*view, &CameraView::take);
    }
    const QString failure = camera.plugIn();
    if (!failure.isEmpty())
        fail(failure, exitUsage);
    if (view)
        view->show();

    QTimer comeBack;
    comeBack.setSingleShot(true);
    comeBack.setInterval(settings.comeBackAfter);
    QObject::connect(&comeBack, &QTimer::timeout, &camera, [&camera] {
        const QString reason = camera.plugIn();
        if (reason.isEmpty())
            return;
        complain(reason);
        QCoreApplication::exit(EXIT_FAILURE);
    });

    QTimer hangUp;
    hangUp.setSingleShot(true);
    QObject::connect(&hangUp, &QTimer::timeout, &camera, &SerialCamera::unplug);
    QObject::connect(&hangUp, &QTimer::timeout, &comeBack, qOverload<>(&QTimer::start));
    if (settings.hangUpAfter)
        hangUp.start(*settings.hangUpAfter);
    return QCoreApplication::exec();
}
