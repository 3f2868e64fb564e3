#pragma once

#include <QProcess>
#include <QStringList>
#include <QtTest>

#include <algorithm>
#include <iterator>

/** The simulated camera as a process of its own, and its output. */
class CameraProgram
{
public:
    explicit CameraProgram(const QStringList& options = {}) { process.start(VANTREL_CAMERA_PATH, options); }

    ~CameraProgram()
    {
        process.terminate();
        process.waitForFinished();
    }

    CameraProgram(const CameraProgram&) = delete;
    CameraProgram& operator=(const CameraProgram&) = delete;

    /** The lines printed so far. */
    QStringList lines()
    {
        output += QString::fromLocal8Bit(process.readAllStandardOutput());
        return output.split('\n', Qt::SkipEmptyParts);
    }

    /** Those of them that begin with `mark`, such as "->". */
    QStringList lines(const QString& mark)
    {
        const QStringList all = lines();
        QStringList marked;
        std::copy_if(all.begin(), all.end(), std::back_inserter(marked),
                     [&mark](const QString& line) { return line.startsWith(mark); });
        return marked;
    }

    /** What it has printed to standard error since the last call. */
    QString complaint() { return QString::fromLocal8Bit(process.readAllStandardError()); }

    /** The port of the camera's line; waits until the program has printed one `count` times. */
    QString path(int count = 1)
    {
        const QString mark("Camera at ");
        static_cast<void>(QTest::qWaitFor([&] { return lines(mark).size() >= count; }, patienceMs));
        return lines(mark).value(count - 1).mid(mark.size());
    }

    /** Waits for the end; returns the exit status, or -1 if it did not end by itself. */
    int exitStatus()
    {
        if (process.state() != QProcess::NotRunning && !process.waitForFinished())
            return -1;
        return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    QProcess process;

private:
    // Many may be started at once, on a busy machine.
    static constexpr int patienceMs = 30000;

    QString output;
};
