#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/**
 * A second reader of the camera's replies, as plain as it can be and with nothing of the program's in it: it
 * says which lines the activity log must hold for the bytes that the camera sent. How the line cuts the bytes
 * into chunks is not foreseeable, so the chunks are taken from the log itself; what they are made of and what
 * follows each of them is not.
 */
class ReplyModel
{
public:
    /** The camera has sent these bytes after all earlier ones. */
    void sent(const QByteArray& bytes) { onTheLine += bytes; }

    /** The line was closed: a reply that has only begun is lost. */
    void closed() { stream.clear(); }

    /**
     * Takes the next lines of the log, whole chunks only.
     *
     * @return what is wrong with them, empty if nothing is
     */
    QString check(const QStringList& lines);

    /** Whether every byte that was sent has been found in the log. */
    bool isComplete() const { return onTheLine.isEmpty(); }

    /** How many replies have been found in the log. */
    qint64 replyCount() const { return replies; }

private:
    QStringList linesFor(const QByteArray& chunk);

    QByteArray onTheLine;
    QByteArray stream;
    qint64 replies = 0;
};
