#pragma once

#include "SerialCamera.h"

#include <QString>

#include <optional>

class QCoreApplication;

/** What the program was asked for. */
struct CommandLine
{
    /** A dialogue to hold with the camera at some port. */
    struct Replay
    {
        QString dialogue;
        QString port;
        int baudRate;
        /** Also one that changes what the camera keeps. */
        bool mayChange;
    };

    /** If set, the program replays this dialogue and ignores all other options. */
    std::optional<Replay> replay;
    ViscaCamera::Options camera = ViscaCamera::BusyRules::Lenient;
    ReplyFaults faults;
    QString link;
    std::optional<ViscaCamera::Time> hangUpAfter;
    ViscaCamera::Time comeBackAfter{1000};
};

/** Reads the program's arguments. Shows help or version and ends the program where they ask for it, and ends
 * it with a complaint and status 2 where they are wrong. */
CommandLine readCommandLine(const QCoreApplication& application);

/** Complains on standard error. */
void complain(const QString& message);

/** Complains and ends the program with that status. */
[[noreturn]] void fail(const QString& message, int status);

/** The status of a wrong use of the program. */
constexpr int exitUsage = 2;
