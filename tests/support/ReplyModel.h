#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/**
 * A second reader of the camera's replies, which shares no code with the program. It tells which entries the
 * activity log must hold for the bytes that the camera sent. Nobody can foresee in which chunks the bytes
 * arrive, so the model reads the chunks in the log. It checks their bytes, and the entries that follow each.
 */
class ReplyModel
{
public:
    /** The camera has sent these bytes. */
    void sent(const QByteArray& bytes) { onTheLine += bytes; }

    /** The port was closed: a reply that is not complete is lost. */
    void closed() { stream.clear(); }

    /**
     * Takes the next entries of the log, whole chunks only.
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
