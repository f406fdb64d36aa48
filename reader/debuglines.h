#pragma once

#include <QStringList>

namespace reader {

/**
 * Writes lines to the debug log of the default category, in their order.
 *
 * The log's handler is the host's and may do whatever a slot of the host may: run an event loop,
 * disconnect or delete the plugin. So lines are kept while anything is half done, and whoever calls
 * this MUST have finished and MUST own the lines itself.
 */
void writeDebugLines(const QStringList& lines);

}  // namespace reader
