#include "Dialogue.h"

#include <QFile>
#include <QRegularExpression>

namespace {

using Time = Dialogue::Time;

// Some cameras in the field acknowledge a recall as late as that.
constexpr Time usualPatience{3000};

// The time after `word` in " after 300 ms within 2 s"; `otherwise` where there is none.
Time timeAfter(const QString& word, const QString& times, Time otherwise)
{
    const QRegularExpression form(word + " +(\\d+) +(m?s)");
    const QRegularExpressionMatch match = form.match(times);
    if (!match.hasMatch())
        return otherwise;
    const int number = match.captured(1).toInt();
    return match.captured(2) == "s" ? std::chrono::seconds(number) : Time(number);
}

} // namespace

QString Dialogue::read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString("cannot read %1: %2").arg(path, file.errorString());
    for (int number = 1; !file.atEnd(); ++number) {
        const QString line = QString::fromUtf8(file.readLine()).section('#', 0, 0).trimmed();
        const QString fault = line.isEmpty() ? QString() : readLine(line);
        if (!fault.isEmpty())
            return QString("%1:%2: %3").arg(path).arg(number).arg(fault);
    }
    return steps.empty() ? QString("%1: no frame is sent").arg(path) : QString();
}

QString Dialogue::readLine(const QString& line)
{
    if (!line.startsWith("--"))
        return readStep(line);
    if (!steps.empty())
        return "the camera's options stand before the first frame";
    cameraOptions += line.split(' ', Qt::SkipEmptyParts);
    return {};
}

QString Dialogue::readStep(const QString& line)
{
    static const QRegularExpression form("^([<>]) *((?:[0-9A-Fa-f?]{2} +)*[0-9A-Fa-f?]{2}|nothing)"
                                         "((?: +(?:after|within) +\\d{1,6} +m?s)*)$");
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch())
        return QString("this is no frame, answer or option: %1").arg(line);
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
    steps.push_back({kind, bytes.simplified().toUpper().toLatin1(), timeAfter("after", times, Time(0)),
                     timeAfter("within", times, usualPatience)});
    return {};
}
