#pragma once

#include "PseudoTerminal.h"

#include <QByteArray>
#include <QString>

/** The number of replies in a burst, which fits into the buffers of the line. */
constexpr int RepliesPerBurst = 500;

/** Acknowledgements and completions in turn, three bytes each, and an error reply at the end. */
QByteArray replyBurst();

/**
 * Sends the burst to the connected program and runs the event loop until the last entry that it causes is in
 * the activity log.
 */
void handle(const QByteArray& burst, PseudoTerminal& line, const QString& logPath);
