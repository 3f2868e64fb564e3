#include "Dialogue.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

namespace {

using Time = Dialogue::Time;

const char* const noSuchLine = "this is no frame, answer or line of a head: ";

// Some real cameras take this long to acknowledge a recall.
constexpr Time usualPatience{3000};

// Returns the time after `word` in " after 300 ms within 2 s", or `otherwise` if there is none.
Time timeAfter(const QString& word, const QString& times, Time otherwise)
{
    const QRegularExpression form(word + " +(\\d+) +(m?s)");
    const QRegularExpressionMatch match = form.match(times);
    if (!match.hasMatch())
        return otherwise;
    const int number = match.captured(1).toInt();
    return match.captured(2) == "s" ? std::chrono::seconds(number) : Time(number);
}

// Its place relative to the program is the same when installed and when built.
QString folder()
{
    return QCoreApplication::applicationDirPath() + "/../share/vantrel/dialogues";
}

} // namespace

QString Dialogue::read(const QString& nameOrPath)
{
    QFile file(QFile::exists(nameOrPath) ? nameOrPath : QString("%1/%2.txt").arg(folder(), nameOrPath));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString("there is no dialogue %1, neither a file nor a name in %2").arg(nameOrPath, folder());
    name = QFileInfo(file).completeBaseName();
    for (int number = 1; !file.atEnd(); ++number) {
        const QString text = QString::fromUtf8(file.readLine());
        const QString fault = readLine(text.section('#', 0, 0).simplified(), text.section('#', 1).trimmed());
        if (!fault.isEmpty())
            return QString("%1:%2: %3").arg(nameOrPath).arg(number).arg(fault);
    }
    return steps.empty() ? QString("%1: no frame is sent").arg(nameOrPath) : QString();
}

QString Dialogue::readLine(const QString& line, const QString& remark)
{
    const bool isStep = line.startsWith('<') || line.startsWith('>');
    if (isStep)
        return readStep(line, remark);
    if (steps.empty() && !remark.isEmpty())
        remarks += remark;
    return line.isEmpty() ? QString() : readHead(line);
}

QString Dialogue::readHead(const QString& line)
{
    static const QRegularExpression options(
        "^((--strict|--standby|--address [1-7]|--presets [1-9][0-9]{0,2})( |$))+$");
    if (!steps.empty())
        return "this is no frame or answer, and the head stands before the first frame: " + line;
    if (options.match(line).hasMatch())
        cameraOptions += line.split(' ');
    else if (line == "without --strict")
        isLenient = true;
    else if (line == "sockets matter")
        socketsMatter = true;
    else if (line.startsWith("changes "))
        changes = line.section(' ', 1);
    else
        return noSuchLine + line;
    return {};
}

QString Dialogue::readStep(const QString& line, const QString& remark)
{
    static const QRegularExpression form("^([<>]) ?((?:[0-9A-Fa-f?]{2} )*[0-9A-Fa-f?]{2}|nothing)"
                                         "((?: (?:after|within) \\d{1,6} m?s)*)$");
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch())
        return noSuchLine + line;
    const bool sends = match.captured(1) == ">";
    const QString bytes = match.captured(2);
    const QString times = match.captured(3);
    const bool isSilence = bytes == "nothing";
    if (sends && (isSilence || bytes.contains('?') || times.contains("within")))
        return "a controller sends bytes, at one time";
    if (isSilence && (times.contains("after") || !times.contains("within")))
        return "nothing is expected within a time";
    if (!sends && steps.empty())
        return "the controller speaks first";
    const auto kind = sends ? Step::Kind::Send : isSilence ? Step::Kind::Silence : Step::Kind::Expect;
    steps.push_back({kind, bytes.toUpper().toLatin1(), timeAfter("after", times, Time(0)),
                     timeAfter("within", times, usualPatience), remark});
    return {};
}
