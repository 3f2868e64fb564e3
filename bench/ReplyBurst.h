#pragma once

#include "PseudoTerminal.h"

#include <QByteArray>
#include <QString>

/** The number of replies in a burst. So many fit into the buffers of the line. */
constexpr int RepliesPerBurst = 500;

/** Acknowledgements and completions in turn, three bytes each, and an error reply at the end. */
QByteArray replyBurst();

/**
 * Sends the burst to the connected program, then runs the event loop until the activity log has the entry of
 * its last reply.
 */
void handle(const QByteArray& burst, PseudoTerminal& line, const QString& logPath);
