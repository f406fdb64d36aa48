#include "tools/laps/lapcsv.h"

#include "tools/laps/newfile.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <array>
#include <charconv>

namespace rataip::laps {

using TLM::SDK::Channel;
using TLM::SDK::Lap;

namespace {

constexpr char kLineEnd[] = "\r\n";
// A lap has millions of digits. They are written in pieces of about this many bytes.
constexpr qsizetype kPieceSize = 1 << 16;
// The longest is "-2.2250738585072014e-308".
constexpr std::size_t kLongestNumber = 32;

struct Column {
    QString name;
    const Channel* channel;
};

QList<Column> columnsOf(const Lap& lap) {
    QList<Column> columns;
    const Lap::ChannelMap& recorded = lap.channels();
    for (auto channel = recorded.cbegin(); channel != recorded.cend(); ++channel) {
        columns.append({channel.key(), channel->data()});
    }
    const QStringList calculated = lap.getAvailableCalculatedChannels();
    for (const QString& name : calculated) {
        columns.append(
            {name + QStringLiteral(" (calculated)"), lap.calculatedChannel(name).data()});
    }
    return columns;
}

qsizetype rowCount(const QList<Column>& columns) {
    qsizetype rows = 0;
    for (const Column& column : columns) {
        rows = std::max(rows, column.channel->samples.size());
    }
    return rows;
}

QByteArray cell(const QString& text) {
    QByteArray bytes = text.toUtf8();
    const bool needsQuotes = std::any_of(bytes.cbegin(), bytes.cend(), [](char letter) {
        return letter == '"' || letter == ',' || letter == '\r' || letter == '\n';
    });
    if (!needsQuotes) {
        return bytes;
    }
    return '"' + bytes.replace('"', "\"\"") + '"';
}

void appendNumber(QByteArray& line, double number) {
    std::array<char, kLongestNumber> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    line.append(digits.data(), end - digits.data());
}

void appendReading(QByteArray& line, const Channel& channel, qsizetype row) {
    if (row < channel.samples.size() && channel.isValid(row)) {
        appendNumber(line, channel.sample(row));
    }
}

/** Quotes the empty cell of a one-column table, since readers would skip a blank line. */
void endLine(QByteArray& text, qsizetype lineStart) {
    if (text.size() == lineStart) {
        text.append("\"\"");
    }
    text.append(kLineEnd);
}

template <typename AppendCell>
void appendLine(QByteArray& text, const QList<Column>& columns, const AppendCell& appendCell) {
    const qsizetype lineStart = text.size();
    bool isFirst = true;
    for (const Column& column : columns) {
        if (!isFirst) {
            text.append(',');
        }
        isFirst = false;
        appendCell(column);
    }
    endLine(text, lineStart);
}

bool writePiece(QByteArray& text, QIODevice& device) {
    const bool isWritten = writeAll(device, text);
    text.resize(0);  // keeps the capacity
    return isWritten;
}

}  // namespace

bool writeCsv(const Lap& lap, QIODevice& device) {
    const QList<Column> columns = columnsOf(lap);
    if (columns.isEmpty()) {
        return true;
    }
    QByteArray text;
    text.reserve(2 * kPieceSize);
    appendLine(text, columns, [&text](const Column& column) { text.append(cell(column.name)); });
    appendLine(text, columns,
               [&text](const Column& column) { text.append(cell(column.channel->unit())); });
    const qsizetype rows = rowCount(columns);
    for (qsizetype row = 0; row < rows; ++row) {
        appendLine(text, columns, [&text, row](const Column& column) {
            appendReading(text, *column.channel, row);
        });
        if (text.size() >= kPieceSize && !writePiece(text, device)) {
            return false;
        }
    }
    return writePiece(text, device);
}

LapFormat csvFormat() {
    return {QStringLiteral("csv"), &writeCsv};
}

}  // namespace rataip::laps
