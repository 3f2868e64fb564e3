#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <vector>

/** What a controller sends and a camera answers, read from a file as simulator/dialogues/README.md describes.
 */
struct Dialogue
{
    using Time = std::chrono::milliseconds;

    struct Step
    {
        /** The controller sends the bytes, the camera answers with them, or it says nothing. */
        enum class Kind
        {
            Send,
            Expect,
            Silence
        };

        Kind kind;
        /** As in the file: hexadecimal, with ? for any digit of an answer. */
        QByteArray bytes;
        /** Not earlier and not later than this, counted from the last Send. */
        Time after;
        Time within;
        QString remark;
    };

    /** The name of its file, without folder and ending. */
    QString name;
    /** What stands above the first frame. */
    QStringList remarks;
    /** What vantrel-camera has to be started with to answer like this. */
    QStringList cameraOptions;
    /** Only a camera without --strict answers like this. */
    bool isLenient = false;
    /** Whether an answer has to come from the very socket; otherwise any of the two will do. */
    bool socketsMatter = false;
    /** What the camera keeps of it at the end, such as presets; empty for nothing. */
    QString changes;
    std::vector<Step> steps;

    /** Reads a file at that path or an installed one of that name. Returns nothing, or why it failed. */
    QString read(const QString& nameOrPath);

private:
    QString readLine(const QString& line, const QString& remark);
    QString readHead(const QString& line);
    QString readStep(const QString& line, const QString& remark);
};
