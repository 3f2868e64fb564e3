#include "CommandLine.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int longestLateness = 600000;
constexpr int longestReply = 65535;
constexpr double longestSeconds = 86400;

// The width of the names of frames.
constexpr int nameWidth = 29;
constexpr int usualBaudRate = 9600;
constexpr int highestBaudRate = 4000000;

const char* const description =
    "A simulated pan-tilt-zoom camera on a pseudo-terminal, for any VISCA controller.\n"
    "\n"
    "Standard output gets one line per event:\n"
    "  Camera at PATH          where the controller connects (the first line)\n"
    "  Link at PATH            the same by the name given with --link\n"
    "  <- 81 01 06 04 FF  ...  bytes from the controller and what they mean\n"
    "  -> 90 41 FF  ...        the camera's reply and what it means\n"
    "  >> 90 41                bytes put on the line, when faults are asked for\n"
    "  Hung up                 the line is gone\n"
    "  Window closed           the camera of --view ends\n"
    "\n"
    "With --replay it is the controller instead, and the camera is at PORT: it sends the frames of a\n"
    "dialogue, prints each expected answer beside the one received, and ends with status 1 on a difference.";

const char* const frameLegend =
    "Frames it understands. x is the address, V and W are the speeds of pan and tilt, Y and Z their\n"
    "positions; h and v are 1 for left or up, 2 for right or down, 3 for neither; w is 1 for the corner\n"
    "up-right, 0 for down-left. p is the value in its range (in 2-3, 2 is on or automatic, 3 is off or\n"
    "manual), the preset, the position, the block, the address, or of zoom and focus 00 for stop, 02 for\n"
    "tele or far, 03 for wide or near, 2p and 3p the same at speed p. s is the socket, or 0 for reset,\n"
    "2 for up, 3 for down.";

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

[[noreturn]] void showHelp(const QCommandLineParser& parser)
{
    QTextStream out(stdout);
    out << parser.helpText() << '\n' << frameLegend << "\n\n";
    for (const ViscaCamera::KnownFrame& known : ViscaCamera::knownFrames())
        out << QString("  %1  %2").arg(known.name, -nameWidth).arg(known.frame) << '\n';
    out.flush();
    std::exit(EXIT_SUCCESS);
}

CommandLine::Replay readReplay(const QCommandLineParser& parser)
{
    const QStringList ports = parser.positionalArguments();
    if (ports.size() != 1)
        fail("--replay takes one port, such as /dev/ttyUSB0", exitUsage);
    const QStringList options = parser.optionNames();
    for (const QString& option : options) {
        if (option != "replay" && option != "baud")
            fail(QString("--%1 is for the simulated camera, which --replay does without").arg(option),
                 exitUsage);
    }
    const qint64 baudRate = wholeNumber(parser, "baud", 1, highestBaudRate).value_or(usualBaudRate);
    return {parser.value("replay"), ports.constFirst(), static_cast<int>(baudRate)};
}

} // namespace

CommandLine readCommandLine(const QCoreApplication& application)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(description);
    parser.addVersionOption();
    parser.addOptions({
        {{"h", "help"}, "Show this help."},
        {"view", "Open a window that shows what the camera sees."},
        {"link", "Make a symbolic link to the pseudo-terminal.", "PATH"},
        {"strict", "Refuse what would disturb a drive, a home or a recall under way, and each speed code "
                   "without a speed of its own. Without it the newest command wins."},
        {"address", "Start with this address, 1 to 7 (default: 1).", "N"},
        {"presets", "Have N presets, numbered from 0 (default: 255).", "N"},
        {"standby", "Start in standby."},
        {"no-replies", "Never reply."},
        {"late", "Reply this many milliseconds later.", "MS"},
        {"split", "Send each reply in pieces, cut at random places."},
        {"join", "Hold replies back and send several at once."},
        {"noise", "Put random bytes before each reply."},
        {"reply-length", "Pad or cut each reply to N bytes between its first byte and FF.", "N"},
        {"hang-up-after", "Hang up the line, once, as if the adapter were pulled.", "SECONDS"},
        {"come-back-after", "After hanging up, come back at the same link (default: 1).", "SECONDS"},
        {"seed", "Start the random numbers of the faults elsewhere (default: 1).", "N"},
        {"replay", "Hold the dialogue in FILE with the camera at PORT.", "FILE"},
        {"baud", "The baud rate for --replay (default: 9600).", "RATE"},
    });
    parser.addPositionalArgument("port", "The serial port for --replay.", "[PORT]");

    if (!parser.parse(application.arguments()))
        fail(parser.errorText(), exitUsage);
    if (parser.isSet("help"))
        showHelp(parser);
    if (parser.isSet("version"))
        parser.showVersion();

    CommandLine settings;
    if (parser.isSet("replay")) {
        settings.replay = readReplay(parser);
        return settings;
    }
    if (parser.isSet("baud"))
        fail("--baud needs --replay", exitUsage);
    if (!parser.positionalArguments().isEmpty())
        fail(QString("unexpected argument \"%1\"").arg(parser.positionalArguments().constFirst()), exitUsage);
    if (parser.isSet("link") && parser.value("link").isEmpty())
        fail("--link takes a path", exitUsage);
    if (parser.isSet("come-back-after") && !parser.isSet("hang-up-after"))
        fail("--come-back-after needs --hang-up-after", exitUsage);

    settings.link = parser.value("link");
    if (parser.isSet("strict"))
        settings.camera.rules = ViscaCamera::BusyRules::Strict;
    if (const auto address = wholeNumber(parser, "address", 1, 7))
        settings.camera.address = static_cast<int>(*address);
    if (const auto presets = wholeNumber(parser, "presets", 1, 255))
        settings.camera.presets = static_cast<int>(*presets);
    settings.camera.standby = parser.isSet("standby");
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

void complain(const QString& message)
{
    QTextStream(stderr) << "vantrel-camera: " << message << '\n';
}

void fail(const QString& message, int status)
{
    complain(message);
    std::exit(status);
}
