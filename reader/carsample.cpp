#include "reader/carsample.h"

#include "reader/unshared.h"

#include <QVariant>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <utility>

using namespace Qt::StringLiterals;
using TLM::SDK::Sample;
using TLM::SDK::Value;

namespace reader {

namespace {

/** The known value of that name, or -1. */
int knownIndex(const QString& name) {
    for (std::size_t i = 0; i < kKnownValueCount; ++i) {
        if (nameOf(static_cast<KnownValue>(i)) == name) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

/** What a QVariant of such a reading holds. */
template <Reading reading>
auto read(const char* bytes, quint64 tick) {
    if constexpr (reading == Reading::CharAsInt) {
        return int{loadNumber<signed char>(bytes)};
    } else if constexpr (reading == Reading::Bool) {
        return loadNumber<unsigned char>(bytes) != 0;
    } else if constexpr (reading == Reading::Int) {
        return loadNumber<qint32>(bytes);
    } else if constexpr (reading == Reading::Float) {
        return loadNumber<float>(bytes);
    } else if constexpr (reading == Reading::Double) {
        return loadNumber<double>(bytes);
    } else {
        return tick;
    }
}

/**
 * Whether a number may be another one than that of which the row's entry is left. To the bit: zeros
 * have signs, and there are many NaNs. A signalling one always may be.
 */
template <typename Number>
bool mayDiffer(Number number, double entry) {
    if constexpr (std::is_same_v<Number, quint64>) {
        return true;  // a double does not hold all of it
    } else {
        using Bytes = std::array<std::byte, sizeof(Number)>;
        return std::bit_cast<Bytes>(static_cast<Number>(entry)) != std::bit_cast<Bytes>(number);
    }
}

}  // namespace

const QString& nameOf(KnownValue value) {
    // "Speed" has a capital S, which no value of the simulator has: no car is held back as
    // standing. Hosts are used to the readings of a car that stands.
    static const std::array<QString, kKnownValueCount> kNames{
        u"lapdistpct"_s, u"sessionstate"_s, u"sessiontick"_s, u"onpitroad"_s, u"Speed"_s};
    return kNames[static_cast<std::size_t>(value)];
}

std::size_t RowLayout::columnOf(const QString& name) const {
    const auto found = std::find_if(columns.begin(), columns.end(),
                                    [&name](const Column& column) { return column.name == name; });
    return static_cast<std::size_t>(found - columns.begin());
}

void CarSample::fill(const SamplingPlan& plan, int car, const char* snapshot, quint64 tick) {
    const std::vector<PlannedValue>& planned = plan.values(car);
    if (planned.empty()) {
        return;
    }
    if (m_planVersion != plan.version() || m_isHandedOut) {
        resolve(planned);
        m_planVersion = plan.version();
    } else if (!isUnshared(values()) && !takeFreeGeneration()) {
        continueWithCopy();
    }
    if (m_places.areFound) {
        store<false>(snapshot, tick);
    } else {
        locate();
        store<true>(snapshot, tick);
    }
}

void CarSample::set(const QString& name, const Value& value) {
    invalidate();
    Sample::setValue(name, value);
}

void CarSample::removeValue(const QString& name) {
    invalidate();
    Sample::removeValue(name);
}

void CarSample::clear() {
    invalidate();
    DynamicData::clear();
}

Sample& CarSample::handOut() {
    invalidate();
    m_isHandedOut = true;
    return *this;
}

CarSample& CarSample::operator=(const CarSample& other) {
    return this == &other ? *this : *this = other.get();
}

CarSample& CarSample::operator=(const Sample& sample) {
    invalidate();
    Sample::operator=(sample);
    return *this;
}

const QVariant* CarSample::known(KnownValue value) const {
    if (m_planVersion != 0 && !m_isHandedOut) {
        return m_places.known[static_cast<std::size_t>(value)];
    }
    const auto found = get().data().constFind(nameOf(value));
    return found == get().data().cend() ? nullptr : &found->value;
}

const std::shared_ptr<const RowLayout>& CarSample::layout() const {
    static const std::shared_ptr<const RowLayout> kNone;
    return m_planVersion != 0 && !m_isHandedOut ? m_layout : kNone;
}

/** The values are others than those of the remembered places and generations. */
void CarSample::invalidate() {
    if (m_planVersion != 0) {
        m_planVersion = 0;
        m_spares = {};
    }
}

void CarSample::resolve(const std::vector<PlannedValue>& planned) {
    invalidate();
    // Both are in ascending order of the names.
    auto entry = values().begin();
    for (const PlannedValue& value : planned) {
        while (entry != values().end() && entry.key() < value.key) {
            ++entry;
        }
        const Value initial(emptyValue(value.reading), value.unit);
        if (entry != values().end() && entry.key() == value.key) {
            *entry = initial;
        } else {
            entry = values().insert(entry, value.key, initial);
        }
    }
    groupByReading(planned);
    refreshLayout();
    m_places.areFound = false;
}

void CarSample::groupByReading(const std::vector<PlannedValue>& planned) {
    m_groups.fill(0);
    for (const PlannedValue& value : planned) {
        ++m_groups[static_cast<std::size_t>(value.reading) + 1];
    }
    std::partial_sum(m_groups.begin(), m_groups.end(), m_groups.begin());

    m_sources.resize(planned.size());
    m_ranks.clear();
    auto nextOfGroup = m_groups;
    auto next = planned.begin();
    for (auto it = get().data().cbegin(); it != get().data().cend(); ++it) {
        Rank rank{.known = knownIndex(it.key())};
        if (next != planned.end() && next->key == it.key()) {
            const std::size_t place = nextOfGroup[static_cast<std::size_t>(next->reading)]++;
            m_sources[place] = {next->offset, static_cast<quint32>(m_ranks.size())};
            // A value that nothing is read for stays as it is.
            rank.planned = next->reading == Reading::None ? -1 : static_cast<int>(place);
            ++next;
        }
        m_ranks.push_back(rank);
    }
}

void CarSample::refreshLayout() {
    RowLayout layout;
    layout.columns.reserve(static_cast<std::size_t>(get().data().size()));
    for (auto it = get().data().cbegin(); it != get().data().cend(); ++it) {
        layout.columns.push_back({it.key(), it->unit()});
    }
    if (m_layout == nullptr || m_layout->columns != layout.columns) {
        m_layout = std::make_shared<const RowLayout>(std::move(layout));
    }
}

void CarSample::locate() {
    m_places.planned.resize(m_sources.size());
    m_places.row.resize(m_ranks.size());
    m_places.known.fill(nullptr);
    std::size_t place = 0;
    for (Value& value : values()) {
        const Rank rank = m_ranks[place];
        if (rank.planned >= 0) {
            m_places.planned[static_cast<std::size_t>(rank.planned)] = value.value.data();
        } else {
            m_places.row[place] = value.value.toDouble();
        }
        if (rank.known >= 0) {
            m_places.known[static_cast<std::size_t>(rank.known)] = &value.value;
        }
        ++place;
    }
    m_places.areFound = true;
}

bool CarSample::takeFreeGeneration() {
    for (Generation& spare : m_spares) {
        if (isUnshared(spare.values)) {
            exchange(spare);
            return true;
        }
    }
    return false;
}

void CarSample::continueWithCopy() {
    Generation& oldest = m_spares[m_oldest];
    m_oldest = (m_oldest + 1) % kSpareCount;
    exchange(oldest);
    m_places.areFound = false;
    values() = oldest.values;
    values().detach();
}

void CarSample::exchange(Generation& spare) {
    values().swap(spare.values);
    std::swap(m_places, spare.places);
}

template <bool isWhole>
void CarSample::store(const char* snapshot, quint64 tick) {
    storeGroup<Reading::CharAsInt, isWhole>(snapshot, tick);
    storeGroup<Reading::Bool, isWhole>(snapshot, tick);
    storeGroup<Reading::Int, isWhole>(snapshot, tick);
    storeGroup<Reading::Float, isWhole>(snapshot, tick);
    storeGroup<Reading::Double, isWhole>(snapshot, tick);
    storeGroup<Reading::Tick, isWhole>(snapshot, tick);
}

/** Leaves a number alone that is there already: most are, and their places lie far apart. */
template <Reading reading, bool isWhole>
void CarSample::storeGroup(const char* snapshot, quint64 tick) {
    // By locals, because a number that is stored may be any of the members as far as compilers see.
    const Source* const sources = m_sources.data();
    void* const* const planned = m_places.planned.data();
    double* const row = m_places.row.data();
    const std::size_t end = m_groups[static_cast<std::size_t>(reading) + 1];
    for (std::size_t i = m_groups[static_cast<std::size_t>(reading)]; i < end; ++i) {
        const auto number = read<reading>(snapshot + sources[i].offset, tick);
        double& entry = row[sources[i].rowPlace];
        if (isWhole || mayDiffer(number, entry)) {
            entry = static_cast<double>(number);
            std::memcpy(planned[i], &number, sizeof number);
        }
    }
}

}  // namespace reader
