#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <vector>

/** What a controller sends and what the camera has to answer. The file format is described in
 * simulator/dialogues/README.md. */
struct Dialogue
{
    using Time = std::chrono::milliseconds;

    struct Step
    {
        /** The controller sends the bytes, the camera answers with them, or the camera sends nothing. */
        enum class Kind
        {
            Send,
            Expect,
            Silence
        };

        Kind kind;
        /** Hexadecimal, as in the file; in an answer, ? stands for any digit. */
        QByteArray bytes;
        /** The earliest and the latest time, counted from the last Send. */
        Time after;
        Time within;
        QString remark;
    };

    /** The file name without folder and suffix. */
    QString name;
    /** The remarks above the first frame. */
    QStringList remarks;
    /** The options with which vantrel-camera answers like this. */
    QStringList cameraOptions;
    /** Only a camera without --strict answers like this. */
    bool isLenient = false;
    /** Whether the socket in an answer has to match. Otherwise either socket is accepted. */
    bool socketsMatter = false;
    /** What the dialogue changes permanently in the camera, such as presets; empty for nothing. */
    QString changes;
    std::vector<Step> steps;

    /** Reads the file at this path, or the installed dialogue of this name. Returns the reason of a failure,
     * else an empty text. */
    QString read(const QString& nameOrPath);

private:
    QString readLine(const QString& line, const QString& remark);
    QString readHead(const QString& line);
    QString readStep(const QString& line, const QString& remark);
};
