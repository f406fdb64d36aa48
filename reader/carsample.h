#pragma once

#include "reader/samplingplan.h"
#include "sdk/sample.h"

#include <QString>

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace reader {

/** Values that the recorder looks at in every tick of every car. */
enum class KnownValue { LapDistPct, SessionState, SessionTick, OnPitRoad, Speed };

inline constexpr std::size_t kKnownValueCount = 5;

/** The name of a known value in a sample. */
[[nodiscard]] const QString& nameOf(KnownValue value);

/** What a row of numbers stands for: the names and units of a sample's values, in their order. */
struct RowLayout {
    struct Column {
        QString name;
        QString unit;

        bool operator==(const Column&) const = default;
    };
    std::vector<Column> columns;

    /** The place of a name in the row; the number of columns for a name that it does not have. */
    [[nodiscard]] std::size_t columnOf(const QString& name) const;
};

/**
 * The sample of one car. It is filled tick after tick without building a name, looking one up or
 * taking memory, also while the host keeps samples of earlier ticks, and it has the tick's numbers
 * as one row.
 *
 * A sample that the host keeps shares its values with this one, and writing to shared values would
 * copy them all. So a few generations of the values are kept: when the newest is shared, the next
 * tick goes into one that nobody holds any more. Values that somebody else holds are never written
 * to. A host that keeps every sample costs a copy of the values a tick.
 *
 * Nobody else knows where the values are. Whatever changes them by name sees to it that they are
 * found anew.
 */
class CarSample : public TLM::SDK::Sample {
public:
    CarSample() = default;
    ~CarSample() = default;
    // Where the values are is known for the original alone. Moving would be no cheaper.
    CarSample(const CarSample& other) : Sample(other) {}
    CarSample& operator=(const CarSample& other);

    /**
     * Reads the plan's values of slot `car` from a snapshot; the other values stay. `tick` is the
     * own car's session tick.
     */
    void fill(const SamplingPlan& plan, int car, const char* snapshot, quint64 tick);

    /** Stores a value under any name. */
    void set(const QString& name, const TLM::SDK::Value& value);

    /** Removes all values. */
    void clear();

    [[nodiscard]] const TLM::SDK::Sample& get() const { return *this; }

    /** A known value; null while the sample has none. */
    [[nodiscard]] const QVariant* known(KnownValue value) const;

    /**
     * The values as numbers, in the order of their names, as QVariant::toDouble() has them. Good
     * while there is a layout().
     */
    [[nodiscard]] const double* row() const { return m_places.row.data(); }

    /** The layout of the row: the same object while it is the same. Null while there is no row. */
    [[nodiscard]] const std::shared_ptr<const RowLayout>& layout() const;

    /** Whether somebody may change the values at any time, see handOut(). */
    [[nodiscard]] bool isHandedOut() const { return m_isHandedOut; }

    // For those who use the sample as a Sample that they may change. Whoever has been given it in
    // this way may do so at any time: from then on its values are found anew in each tick, and it
    // has no row.

    Sample& handOut();
    CarSample& operator=(const Sample& sample);
    using Sample::data;
    ValueMap& data() { return handOut().data(); }
    using Sample::setValue;
    void setValue(const QString& name, const TLM::SDK::Value& value) { set(name, value); }
    void setValue(const QString& name, const QVariant& value, const QString& unit) {
        set(name, TLM::SDK::Value(value, unit));
    }
    void removeValue(const QString& name);
    void removeValues() { clear(); }

private:
    /** Where the values of one generation are, and what they are. */
    struct Places {
        std::vector<void*> planned;  // the numbers themselves, in the order of m_sources
        std::vector<double> row;
        std::array<const QVariant*, kKnownValueCount> known{};
        bool areFound = false;
    };

    /** Values that were those of the sample. */
    struct Generation {
        ValueMap values;
        Places places;
    };

    /** Where a planned number is in a snapshot and in the row. */
    struct Source {
        qint32 offset;
        quint32 rowPlace;
    };

    /** What a value is, by its place in the order of the names; -1 for neither. */
    struct Rank {
        int planned = -1;
        int known = -1;
    };

    [[nodiscard]] ValueMap& values() { return Sample::data(); }
    void invalidate();
    void resolve(const std::vector<PlannedValue>& planned);
    void groupByReading(const std::vector<PlannedValue>& planned);
    void refreshLayout();
    void locate();
    [[nodiscard]] bool takeFreeGeneration();
    void continueWithCopy();
    void exchange(Generation& spare);
    template <bool isWhole>
    void store(const char* snapshot, quint64 tick);
    template <Reading reading, bool isWhole>
    void storeGroup(const char* snapshot, quint64 tick);

    // Enough for a host that keeps the last two samples while a third is on its way to it.
    static constexpr std::size_t kSpareCount = 3;

    bool m_isHandedOut = false;
    quint64 m_planVersion = 0;  // of the plan that the places are those of, 0 while there are none
    Places m_places;
    std::vector<Source> m_sources;                          // of the planned numbers, by reading
    std::array<std::size_t, kReadingCount + 1> m_groups{};  // first source of each reading
    std::vector<Rank> m_ranks;
    std::shared_ptr<const RowLayout> m_layout;
    std::array<Generation, kSpareCount> m_spares;
    std::size_t m_oldest = 0;
};

}  // namespace reader
