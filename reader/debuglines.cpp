#include "reader/debuglines.h"

#include <QDebug>

namespace reader {

void writeDebugLines(const QStringList& lines) {
    for (const QString& line : lines) {
        // Not by a stream: that writes in its destructor, out of which no exception can come.
        qDebug("%s", qUtf8Printable(line));
    }
}

}  // namespace reader
