#pragma once

#include "tools/viewer/carstate.h"

#include <QAbstractTableModel>
#include <QList>
#include <QPalette>

namespace rataip::viewer {

/**
 * The cars of the session as a table with a row per car. The own car is marked by an arrow and bold
 * text, cars out of the world are grey.
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

    /** The key that rows are sorted by. */
    static constexpr int kSortRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    /**
     * Replaces the cars. Views are told only about rows that changed; a different set of cars or
     * names resets the model.
     */
    void setCars(const QList<CarState>& cars);

    /** The palette that the grey is taken from. */
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
