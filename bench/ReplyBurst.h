#pragma once

#include "PseudoTerminal.h"

#include <QByteArray>
#include <QString>

/** How many replies a burst has: few enough to fit into the line's buffers. */
constexpr int RepliesPerBurst = 500;

/** Acknowledges and completions by turns, three bytes each, and one error reply at the end. */
QByteArray replyBurst();

/**
 * Sends the burst to the connected program and runs the event loop until the last line that it causes stands
 * in the activity log.
 */
void handle(const QByteArray& burst, PseudoTerminal& line, const QString& logPath);
