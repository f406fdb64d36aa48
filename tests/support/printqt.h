#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <ostream>

// GoogleTest finds these functions by the namespace of the type and prints readable texts on
// failures.

inline void PrintTo(const QString& text, std::ostream* out) {
    *out << (text.isNull() ? "null" : '"' + text.toStdString() + '"');
}

inline void PrintTo(const QStringList& texts, std::ostream* out) {
    *out << '[' << texts.join(", ").toStdString() << ']';
}

inline void PrintTo(const QSize& size, std::ostream* out) {
    *out << size.width() << 'x' << size.height();
}
