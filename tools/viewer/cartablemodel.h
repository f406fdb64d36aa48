#pragma once

#include "tools/viewer/carstate.h"

#include <QAbstractTableModel>
#include <QList>
#include <QPalette>

namespace rataip::viewer {

/**
 * The cars of the session as a table, a row a car. The own car's driver carries an arrow and is
 * bold; cars that are not in the world are greyed.
 */
class CarTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        Position,
        Slot,
        Driver,
        Team,
        Car,
        Class,
        Status,
        Lap,
        LastLap,
        ColumnCount,
    };

    /** What rows are sorted by. */
    static constexpr int SortRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    /**
     * Takes the cars over; tells the views only of what is another now. Another set of cars, or
     * other names, begin the table anew.
     */
    void setCars(const QList<CarState>& cars);

    /** Where the grey comes from. */
    void setPalette(const QPalette& palette) { m_palette = palette; }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

private:
    QList<CarState> m_cars;
    QPalette m_palette;
};

}  // namespace rataip::viewer
