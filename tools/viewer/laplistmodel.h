#pragma once

#include "tools/viewer/lapstore.h"

#include <QAbstractTableModel>

namespace rataip::viewer {

/** The finished laps as a table with a row per lap. See LapStore for how many are kept. */
class LapListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column {
        Slot,
        Driver,
        Number,
        Type,
        Time,
        Completed,
        Samples,
        Channels,
        ColumnCount,
    };

    /** The key that rows are sorted by. */
    static constexpr int kSortRole = Qt::UserRole;

    explicit LapListModel(qsizetype maxReadings = LapStore::kDefaultLimit,
                          QObject* parent = nullptr);

    /** Appends a lap. Ignores laps without channels. */
    void add(const LapStore::LapPointer& lap);

    /** The lap of a row. */
    [[nodiscard]] LapStore::LapPointer lap(int row) const { return m_store.laps().at(row); }
    [[nodiscard]] const QList<LapStore::LapPointer>& laps() const { return m_store.laps(); }

    /** How many laps were released to stay within the limit. */
    [[nodiscard]] qsizetype released() const { return m_store.released(); }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role) const override;

private:
    LapStore m_store;
};

}  // namespace rataip::viewer
