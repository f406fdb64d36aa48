#include "reader/samplegenerations.h"

#include <QVariant>

#include <algorithm>
#include <numeric>
#include <utility>

using namespace Qt::StringLiterals;
using TLM::SDK::Value;

namespace {

/**
 * Whether nobody else holds the values. The look at the counter alone does not order what another
 * thread read before it let go of them before what is written next; taking a hold and giving it
 * back does.
 */
template <typename Map>
bool isWritable(const Map& values) {
    if (!values.isDetached()) {
        return false;
    }
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the hold is what is wanted
    [[maybe_unused]] const Map hold = values;
    return true;
}

template <typename Number>
void storeNumber(void* place, Number number) {
    *static_cast<Number*>(place) = number;
}

const std::array<QString, knownValueCount>& knownKeys() {
    static const std::array<QString, knownValueCount> keys{
        u"lapdistpct"_s, u"sessionstate"_s, u"sessiontick"_s, u"onpitroad"_s, u"Speed"_s};
    return keys;
}

/** The index of a known value, or -1. */
int knownIndex(const QString& key) {
    const auto& keys = knownKeys();
    const auto found = std::find(keys.begin(), keys.end(), key);
    return found == keys.end() ? -1 : static_cast<int>(found - keys.begin());
}

std::size_t groupOf(Reading reading) {
    return static_cast<std::size_t>(reading);
}

}  // namespace

const QString& keyOf(KnownValue value) {
    return knownKeys()[static_cast<std::size_t>(value)];
}

void SampleGenerations::write(TLM::SDK::Sample& sample, const SamplingPlan& plan, int car,
                              quint64 revision, const char* data, quint64 tick) {
    const std::vector<PlannedValue>& planned = plan.values(car);
    if (planned.empty()) {
        return;
    }
    ValueMap& values = sample.data();
    const Stamp stamp{plan.version(), revision};
    if (stamp != m_stamp) {
        m_stamp = stamp;
        resolve(values, planned);
    } else if (!isWritable(values) && !takeFreeGeneration(values)) {
        continueWithCopy(values);
    }
    store(data, tick);
}

void SampleGenerations::resolve(ValueMap& values, const std::vector<PlannedValue>& planned) {
    // Both are in ascending order of the keys.
    auto entry = values.begin();
    for (const PlannedValue& value : planned) {
        while (entry != values.end() && entry.key() < value.key) {
            ++entry;
        }
        const Value initial(emptyValue(value.reading), value.unit);
        if (entry != values.end() && entry.key() == value.key) {
            *entry = initial;
        } else {
            entry = values.insert(entry, value.key, initial);
        }
    }

    m_groups.fill(0);
    for (const PlannedValue& value : planned) {
        ++m_groups[groupOf(value.reading) + 1];
    }
    std::partial_sum(m_groups.begin(), m_groups.end(), m_groups.begin());

    rank(values, planned);
    locate(values);
}

void SampleGenerations::rank(const ValueMap& values, const std::vector<PlannedValue>& planned) {
    m_offsets.resize(planned.size());
    m_places.planned.resize(planned.size());
    m_ranks.clear();
    auto nextOfGroup = m_groups;
    auto next = planned.begin();
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        Rank entry;
        entry.known = knownIndex(it.key());
        if (next != planned.end() && next->key == it.key()) {
            const std::size_t place = nextOfGroup[groupOf(next->reading)]++;
            m_offsets[place] = next->offset;
            entry.planned = static_cast<int>(place);
            ++next;
        }
        m_ranks.push_back(entry);
    }
}

void SampleGenerations::locate(ValueMap& values) {
    m_places.known.fill(nullptr);
    auto entry = m_ranks.cbegin();
    for (Value& value : values) {
        if (entry->planned >= 0) {
            m_places.planned[static_cast<std::size_t>(entry->planned)] = value.value.data();
        }
        if (entry->known >= 0) {
            m_places.known[static_cast<std::size_t>(entry->known)] = &value.value;
        }
        ++entry;
    }
}

std::optional<const QVariant*> SampleGenerations::find(KnownValue value, quint64 revision) const {
    if (m_stamp.planVersion == 0 || m_stamp.revision != revision) {
        return std::nullopt;
    }
    return m_places.known[static_cast<std::size_t>(value)];
}

bool SampleGenerations::takeFreeGeneration(ValueMap& values) {
    for (Generation& spare : m_spares) {
        if (spare.stamp == m_stamp && isWritable(spare.values)) {
            values.swap(spare.values);
            std::swap(m_places, spare.places);
            return true;
        }
    }
    return false;
}

void SampleGenerations::continueWithCopy(ValueMap& values) {
    Generation& spare = m_spares[m_nextSpare];
    m_nextSpare = (m_nextSpare + 1) % spareCount;
    spare.values = values;
    spare.places = m_places;
    spare.stamp = m_stamp;
    values.detach();
    locate(values);
}

void SampleGenerations::store(const char* data, quint64 tick) const {
    const auto forEach = [this](Reading reading, auto storeAt) {
        const std::size_t end = m_groups[groupOf(reading) + 1];
        for (std::size_t i = m_groups[groupOf(reading)]; i < end; ++i) {
            storeAt(m_places.planned[i], m_offsets[i]);
        }
    };
    forEach(Reading::CharAsInt, [data](void* place, qint64 offset) {
        storeNumber<int>(place, loadNumber<signed char>(data + offset));
    });
    forEach(Reading::Bool, [data](void* place, qint64 offset) {
        storeNumber<bool>(place, loadNumber<unsigned char>(data + offset) != 0);
    });
    forEach(Reading::Int, [data](void* place, qint64 offset) {
        storeNumber<int>(place, loadNumber<qint32>(data + offset));
    });
    forEach(Reading::Float, [data](void* place, qint64 offset) {
        storeNumber<float>(place, loadNumber<float>(data + offset));
    });
    forEach(Reading::Double, [data](void* place, qint64 offset) {
        storeNumber<double>(place, loadNumber<double>(data + offset));
    });
    forEach(Reading::Tick, [tick](void* place, qint64) { storeNumber<quint64>(place, tick); });
}
