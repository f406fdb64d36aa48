#include "tools/viewer/cartablemodel.h"

#include "tools/host/laptext.h"

#include <QFont>
#include <QTime>

#include <algorithm>

namespace rataip::viewer {

namespace {

// Greater than every number that a car can have.
constexpr int kLastInOrder = 1'000'000'000;

QVariant countText(const std::optional<int>& count) {
    return count ? QVariant(*count) : QVariant(QStringLiteral("–"));
}

QString lapTimeText(const std::optional<double>& seconds) {
    constexpr double kDay = 24.0 * 3600.0;
    // Truncated in single precision, as the plugin does with a lap's time, so that a lap has the
    // same time in all tables.
    constexpr float kMillisecondsPerSecond = 1000.0F;
    if (!seconds || *seconds >= kDay) {
        return QStringLiteral("–");
    }
    return host::lapTimeText(QTime::fromMSecsSinceStartOfDay(
        static_cast<int>(kMillisecondsPerSecond * static_cast<float>(*seconds))));
}

QVariant textOf(const CarState& car, int column) {
    switch (column) {
        case CarTableModel::Position:
            return countText(car.position);
        case CarTableModel::Slot:
            return car.info.carId();
        case CarTableModel::Driver:
            return car.isOwn() ? QStringLiteral("▶ ") + car.info.driverName()
                               : car.info.driverName();
        case CarTableModel::Team:
            return car.info.teamName();
        case CarTableModel::Car:
            return car.info.carName();
        case CarTableModel::Class:
            return car.info.className();
        case CarTableModel::Status:
            return TLM::SDK::carStatusToString(car.info.status());
        case CarTableModel::Lap:
            return countText(car.lap);
        case CarTableModel::LastLap:
            return lapTimeText(car.lastLapSeconds);
        default:
            return {};
    }
}

QVariant sortKeyOf(const CarState& car, int column) {
    switch (column) {
        case CarTableModel::Position:
            return car.position.value_or(kLastInOrder);
        case CarTableModel::Slot:
            return car.info.carId().toInt();
        case CarTableModel::Driver:
            return car.info.driverName();
        case CarTableModel::Lap:
            return car.lap.value_or(kLastInOrder);
        case CarTableModel::LastLap:
            return car.lastLapSeconds.value_or(kLastInOrder);
        default:
            return textOf(car, column);
    }
}

bool isNumber(int column) {
    return column == CarTableModel::Position || column == CarTableModel::Slot ||
           column == CarTableModel::Lap || column == CarTableModel::LastLap;
}

/** Whether the cars or their names differ, not just what the cars are doing. */
bool isDifferentField(const QList<CarState>& left, const QList<CarState>& right) {
    return !std::equal(
        left.cbegin(), left.cend(), right.cbegin(), right.cend(),
        [](const CarState& a, const CarState& b) {
            return a.info.carId() == b.info.carId() && a.info.driverName() == b.info.driverName() &&
                   a.info.teamName() == b.info.teamName() && a.info.carName() == b.info.carName() &&
                   a.info.className() == b.info.className() && a.isOwn() == b.isOwn();
        });
}

bool looksTheSame(const CarState& left, const CarState& right) {
    for (int column = 0; column < CarTableModel::ColumnCount; ++column) {
        if (textOf(left, column) != textOf(right, column)) {
            return false;
        }
    }
    return left.isInWorld() == right.isInWorld();
}

}  // namespace

void CarTableModel::setCars(const QList<CarState>& cars) {
    if (isDifferentField(cars, m_cars)) {
        beginResetModel();
        m_cars = cars;
        endResetModel();
        return;
    }
    for (qsizetype row = 0; row < cars.size(); ++row) {
        const bool hasChanged = !looksTheSame(m_cars.at(row), cars.at(row));
        m_cars[row] = cars.at(row);
        if (hasChanged) {
            emit dataChanged(index(static_cast<int>(row), 0),
                             index(static_cast<int>(row), ColumnCount - 1));
        }
    }
}

int CarTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_cars.size());
}

int CarTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant CarTableModel::data(const QModelIndex& index, int role) const {
    const CarState& car = m_cars.at(index.row());
    switch (role) {
        case Qt::DisplayRole:
            return textOf(car, index.column());
        case kSortRole:
            return sortKeyOf(car, index.column());
        case Qt::TextAlignmentRole:
            return isNumber(index.column())
                       ? QVariant(static_cast<int>(Qt::AlignRight | Qt::AlignVCenter))
                       : QVariant();
        case Qt::ForegroundRole:
            return car.isInWorld() ? QVariant()
                                   : QVariant(m_palette.brush(QPalette::Disabled, QPalette::Text));
        case Qt::FontRole: {
            QFont bold;
            bold.setBold(true);
            return car.isOwn() ? QVariant(bold) : QVariant();
        }
        default:
            return {};
    }
}

QVariant CarTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    static const char* const kNames[ColumnCount] = {"Pos",   "Slot",   "Driver", "Team",    "Car",
                                                    "Class", "Status", "Lap",    "Last lap"};
    return section >= 0 && section < ColumnCount ? QVariant(QString::fromLatin1(kNames[section]))
                                                 : QVariant();
}

}  // namespace rataip::viewer
