#include "ReplyBurst.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace {

constexpr char Acknowledge[] = "\x90\x41\xFF";
constexpr char Completion[] = "\x90\x51\xFF";
constexpr char LastReply[] = "\x90\x60\x02\xFF";
constexpr char LastLogLine[] = "-90-60-2-ff-4\n";
constexpr int LastLogLineSize = sizeof(LastLogLine) - 1;

} // namespace

QByteArray replyBurst()
{
    QByteArray burst;
    for (int reply = 1; reply < RepliesPerBurst; ++reply)
        burst += reply % 2 == 1 ? Acknowledge : Completion;
    return burst + LastReply;
}

void handle(const QByteArray& burst, PseudoTerminal& line, const QString& logPath)
{
    const qint64 sizeBefore = QFileInfo(logPath).size();
    line.write(burst);
    for (bool isHandled = false; !isHandled;) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QFile log(logPath);
        isHandled = log.open(QIODevice::ReadOnly) && log.size() > sizeBefore &&
                    log.seek(log.size() - LastLogLineSize) && log.readAll() == LastLogLine;
    }
}
