#include "CommandLine.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>
#include <type_traits>

namespace {

constexpr int longestLateness = 600000;
constexpr double longestSeconds = 86400;
// The width of the column with the names of frames in the help.
constexpr int nameWidth = 31;
constexpr int usualBaudRate = 9600;
constexpr int highestBaudRate = 4000000;

const char* const description =
    "A simulated pan-tilt-zoom camera on a pseudo-terminal, for any VISCA controller.\n"
    "\n"
    "It prints an entry for each event on standard output:\n"
    "  Camera at PATH          the port for the controller (the first entry)\n"
    "  Link at PATH            the symbolic link to this port, if --link is given\n"
    "  <- 81 01 06 04 FF  ...  bytes from the controller, and what they mean\n"
    "  -> 90 41 FF  ...        the camera's reply, and what it means\n"
    "  >> 90                   bytes of a reply, sent late (--late) or one by one (--split)\n"
    "  Reply lost, ...         the line is full, because the controller does not read the replies\n"
    "  Hung up                 the camera has hung up the line (--hang-up-after)\n"
    "  Window closed           the window of --view was closed, so the program ends\n"
    "\n"
    "With --replay it is a controller instead. It sends the frames of a dialogue to the camera at PORT and\n"
    "prints each expected answer beside the one received. Its exit status is 1 if an answer differs.";

const char* const frameLegend =
    "The camera understands these frames. Their letters stand for numbers: x is the camera's address, V\n"
    "and W are the speeds of pan and tilt, Y and Z their positions. p and q are what the frame's name says,\n"
    "such as a socket, a speed, a preset or the position of the zoom. For a setting, p is its value, and\n"
    "the valid values (hexadecimal) stand after the name. In 2-3, 2 is on, automatic or normal, and 3 is\n"
    "off, manual or low.";

// Returns the value of an option; nothing if it is not given. Ends the program if it is out of range.
template <typename Number>
std::optional<Number> number(const QCommandLineParser& parser, const QString& name, Number lowest,
                             Number highest)
{
    constexpr bool isWhole = std::is_integral_v<Number>;
    if (!parser.isSet(name))
        return std::nullopt;
    const QString given = parser.value(name);
    bool valid = false;
    Number value{};
    if constexpr (isWhole)
        value = given.toInt(&valid);
    else
        value = given.toDouble(&valid);
    if (!valid || !(value >= lowest && value <= highest)) {
        const QString complaint("--%1 takes %2 from %3 to %4, not \"%5\"");
        const char* const kind = isWhole ? "a whole number" : "seconds";
        fail(complaint.arg(name, kind).arg(lowest).arg(highest).arg(given), exitUsage);
    }
    return value;
}

std::optional<ViscaCamera::Time> seconds(const QCommandLineParser& parser, const QString& name)
{
    const std::chrono::duration<double> given(number(parser, name, 0.0, longestSeconds).value_or(-1));
    return given.count() < 0 ? std::nullopt : std::optional(std::chrono::round<ViscaCamera::Time>(given));
}

[[noreturn]] void showHelp(const QCommandLineParser& parser)
{
    QTextStream out(stdout);
    out << parser.helpText() << '\n' << frameLegend << "\n\n";
    for (const ViscaCamera::KnownFrame& known : ViscaCamera::knownFrames())
        out << QString("  %1  %2\n")
                   .arg((known.name + ' ' + known.range).trimmed(), -nameWidth)
                   .arg(QString(known.frame));
    out.flush();
    std::exit(EXIT_SUCCESS);
}

CommandLine::Replay readReplay(const QCommandLineParser& parser)
{
    const QStringList ports = parser.positionalArguments();
    if (ports.size() != 1)
        fail("--replay takes one port, such as /dev/ttyUSB0", exitUsage);
    const QStringList replayOptions{"replay", "baud", "allow-changes"};
    const QStringList options = parser.optionNames();
    for (const QString& option : options) {
        if (!replayOptions.contains(option))
            fail("--" + option + " is for the simulated camera, which --replay does without", exitUsage);
    }
    const int baudRate = number(parser, "baud", 1, highestBaudRate).value_or(usualBaudRate);
    return {parser.value("replay"), ports.constFirst(), baudRate, parser.isSet("allow-changes")};
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
        {"strict", "Refuse commands that would disturb a drive, a home, a position or a recall in progress, "
                   "and speed codes and positions out of range. Without it the newest command wins."},
        {"address", "Start with this address, 1 to 7 (default: 1).", "N"},
        {"presets", "Have N presets, numbered from 0 (default: 255).", "N"},
        {"standby", "Start in standby."},
        {"no-replies", "Never reply."},
        {"late", "Delay each reply by this many milliseconds.", "MS"},
        {"split", "Send each byte of a reply separately."},
        {"hang-up-after", "Hang up the line once, after this many seconds, as if the adapter were pulled.",
         "SECONDS"},
        {"come-back-after", "Come back at the same link, this many seconds after the hang-up (default: 1).",
         "SECONDS"},
        {"replay",
         "Hold a dialogue with the camera at PORT. DIALOGUE is a file, or the name of an installed "
         "dialogue, such as home. The camera moves.",
         "DIALOGUE"},
        {"allow-changes",
         "Also hold a dialogue that permanently changes the camera, for example its presets."},
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
    for (const char* const option : {"baud", "allow-changes"}) {
        if (parser.isSet(option))
            fail(QString("--%1 needs --replay").arg(option), exitUsage);
    }
    if (!parser.positionalArguments().isEmpty())
        fail(QString("unexpected argument \"%1\"").arg(parser.positionalArguments().constFirst()), exitUsage);
    if (parser.isSet("link") && parser.value("link").isEmpty())
        fail("--link takes a path", exitUsage);
    if (parser.isSet("come-back-after") && !parser.isSet("hang-up-after"))
        fail("--come-back-after needs --hang-up-after", exitUsage);

    settings.link = parser.value("link");
    if (parser.isSet("strict"))
        settings.camera.rules = ViscaCamera::BusyRules::Strict;
    settings.camera.address = number(parser, "address", 1, 7).value_or(settings.camera.address);
    settings.camera.presets = number(parser, "presets", 1, 255).value_or(settings.camera.presets);
    settings.camera.standby = parser.isSet("standby");
    settings.faults.noReplies = parser.isSet("no-replies");
    settings.faults.split = parser.isSet("split");
    settings.faults.late = ViscaCamera::Time(number(parser, "late", 0, longestLateness).value_or(0));
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
