#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <vector>

/**
 * A conversation of a controller with a camera, as data: what is sent, and what has to come back and when.
 *
 * It is read from a text file, whose lines are described in tests/dialogues/README.md.
 */
struct Dialogue
{
    using Time = std::chrono::milliseconds;

    struct Step
    {
        enum class Kind
        {
            /** The controller sends the bytes. */
            Send,
            /** The camera answers with the bytes. */
            Expect,
            /** The camera says nothing. */
            Silence
        };

        Kind kind;
        /** As in the file: hexadecimal, with ? for any digit of an answer. */
        QByteArray bytes;
        /** Not earlier and not later than this, counted from the last Send. */
        Time after;
        Time within;
    };

    /** What vantrel-camera has to be started with to answer like this. */
    QStringList cameraOptions;
    std::vector<Step> steps;

    /** Reads it from a file. Returns an empty text on success, otherwise the reason of the failure, with the
     * line where it lies. */
    QString read(const QString& path);

private:
    QString readLine(const QString& line);
    QString readStep(const QString& line);
};
