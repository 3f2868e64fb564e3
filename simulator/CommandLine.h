#pragma once

#include "SerialCamera.h"

#include <QString>

#include <optional>

class QCoreApplication;

/** The options of vantrel-camera. */
struct CommandLine
{
    struct Replay
    {
        QString dialogue;
        QString port;
        int baudRate;
        /** Whether the dialogue may change what the camera stores, such as presets. */
        bool mayChange;
    };

    /** If set, the program replays this dialogue and uses no other member. */
    std::optional<Replay> replay;
    ViscaCamera::Options camera = ViscaCamera::BusyRules::Lenient;
    ReplyFaults faults;
    QString link;
    std::optional<ViscaCamera::Time> hangUpAfter;
    ViscaCamera::Time comeBackAfter{1000};
};

/** Reads the program's arguments. Ends the program if they ask for help or version, or are wrong. */
CommandLine readCommandLine(const QCoreApplication& application);

/** Prints a message on standard error. */
void complain(const QString& message);

/** Prints a message on standard error and ends the program with this exit status. */
[[noreturn]] void fail(const QString& message, int status);

/** The exit status for wrong arguments. */
constexpr int exitUsage = 2;
