#pragma once

#include "SerialCamera.h"

#include <QString>

#include <optional>

class QCoreApplication;

/** What the program was asked for. */
struct CommandLine
{
    struct Replay
    {
        QString dialogue;
        QString port;
        int baudRate;
        /** Also a dialogue that changes what the camera keeps. */
        bool mayChange;
    };

    /** The dialogue to hold with the camera at some port; if set, nothing else is asked for. */
    std::optional<Replay> replay;
    ViscaCamera::Options camera = ViscaCamera::BusyRules::Lenient;
    ReplyFaults faults;
    QString link;
    std::optional<ViscaCamera::Time> hangUpAfter;
    ViscaCamera::Time comeBackAfter{1000};
};

/** Reads the program's arguments. Ends the program where they ask for help or version or are wrong. */
CommandLine readCommandLine(const QCoreApplication& application);

/** Complains on standard error. */
void complain(const QString& message);

/** Complains and ends the program with that status. */
[[noreturn]] void fail(const QString& message, int status);

/** The status of a wrong use of the program. */
constexpr int exitUsage = 2;
