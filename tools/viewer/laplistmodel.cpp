#include "tools/viewer/laplistmodel.h"

#include "tools/host/laptext.h"

#include <QFont>

namespace rataip::viewer {

using TLM::SDK::Lap;

namespace {

QVariant textOf(const Lap& lap, int column) {
    switch (column) {
        case LapListModel::Slot:
            return lap.carId();
        case LapListModel::Driver:
            return lap.driverName();
        case LapListModel::Number:
            return lap.lapInSession();
        case LapListModel::Type:
            return host::lapTypeText(lap.lapType());
        case LapListModel::Time:
            return host::lapTimeText(lap.lapTime());
        case LapListModel::Completed:
            return lap.completed() ? QStringLiteral("yes") : QStringLiteral("no");
        case LapListModel::Samples:
            return lap.size();
        case LapListModel::Channels:
            return host::channelCount(lap);
        default:
            return {};
    }
}

/** Numbers sort by value, "no time" after every time. */
QVariant sortKeyOf(const Lap& lap, int column) {
    switch (column) {
        case LapListModel::Slot:
            return lap.carId().toInt();
        case LapListModel::Time:
            return host::hasLapTime(lap.lapTime()) ? lap.lapTime().msecsSinceStartOfDay()
                                                   : 24 * 3600 * 1000;
        default:
            return textOf(lap, column);
    }
}

bool isNumber(int column) {
    return column == LapListModel::Slot || column == LapListModel::Number ||
           column == LapListModel::Time || column == LapListModel::Samples ||
           column == LapListModel::Channels;
}

}  // namespace

LapListModel::LapListModel(qsizetype maxReadings, QObject* parent)
    : QAbstractTableModel(parent), m_store(maxReadings) {}

void LapListModel::add(const LapStore::LapPointer& lap) {
    if (lap->isEmpty()) {
        return;
    }
    const int row = rowCount();
    beginInsertRows({}, row, row);
    m_store.add(lap);
    endInsertRows();
    while (const std::optional<qsizetype> surplus = m_store.surplus()) {
        const int gone = static_cast<int>(*surplus);
        beginRemoveRows({}, gone, gone);
        m_store.release(gone);
        endRemoveRows();
    }
}

int LapListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_store.laps().size());
}

int LapListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant LapListModel::data(const QModelIndex& index, int role) const {
    const Lap& lap = *m_store.laps().at(index.row());
    if (role == Qt::DisplayRole) {
        return textOf(lap, index.column());
    }
    if (role == kSortRole) {
        return sortKeyOf(lap, index.column());
    }
    if (role == Qt::TextAlignmentRole && isNumber(index.column())) {
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    }
    if (role == Qt::FontRole && lap.detailedTelemetry()) {
        QFont bold;
        bold.setBold(true);
        return bold;
    }
    return {};
}

QVariant LapListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    static const char* const kNames[ColumnCount] = {"Slot", "Driver",    "Lap",     "Type",
                                                    "Time", "Completed", "Samples", "Channels"};
    return section >= 0 && section < ColumnCount ? QVariant(QString::fromLatin1(kNames[section]))
                                                 : QVariant();
}

}  // namespace rataip::viewer
