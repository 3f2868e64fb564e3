#include "support/ReplyModel.h"

namespace {

constexpr char ReplyBegin = '\x90';
constexpr char ReplyEnd = '\xFF';
constexpr int LongestReply = 33;

QString listing(const QByteArray& reply)
{
    QString text;
    for (const char byte : reply)
        text += QString::asprintf("-%x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    return text + '-' + QString::number(reply.size());
}

} // namespace

QString ReplyModel::check(const QStringList& lines)
{
    decltype(lines.size()) position = 0;
    while (position < lines.size()) {
        const QByteArray chunk = QByteArray::fromHex(lines[position].toLatin1());
        if (chunk.isEmpty() || !onTheLine.startsWith(chunk))
            return "not a part of what was sent: \"" + lines[position] + '"';
        onTheLine.remove(0, chunk.size());

        const QStringList expected = linesFor(chunk);
        const QStringList found = lines.mid(position, expected.size());
        if (found != expected)
            return "expected \"" + expected.join('|') + "\", found \"" + found.join('|') + '"';
        position += expected.size();
    }
    return {};
}

QStringList ReplyModel::linesFor(const QByteArray& chunk)
{
    QStringList lines(chunk.toHex());
    stream += chunk;
    for (;;) {
        const auto begin = stream.indexOf(ReplyBegin);
        stream.remove(0, begin < 0 ? stream.size() : begin);
        const QByteArray candidate = stream.left(LongestReply);
        const auto end = candidate.indexOf(ReplyEnd);
        if (end < 0 && candidate.size() < LongestReply)
            return lines;

        stream.remove(0, end < 0 ? LongestReply : end + 1);
        if (end < 0)
            continue;
        lines << "Analyze Buffer" << listing(candidate.left(end + 1));
        ++replies;
    }
}
