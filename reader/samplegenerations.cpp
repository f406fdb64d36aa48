#include "reader/samplegenerations.h"

#include "reader/heldalone.h"

#include <QVariant>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

using TLM::SDK::Value;

namespace {

/** Where the number of a value is: in the QVariant itself, which shares it with no other. */
void* placeOf(Value& value) {
    return const_cast<void*>(std::as_const(value.value).constData());
}

constexpr bool areInOrder() {
    for (std::size_t i = 0; i < knownKeys.size(); ++i) {
        if (static_cast<std::size_t>(knownKeys[i].value) != i) {
            return false;
        }
    }
    return true;
}

static_assert(areInOrder(), "a key is found by the number of its value");

// A host is taken to keep everything after so many copies in a row: by then one that lets go has
// given a spare back. After so many more, some four seconds, it is tried whether it still does: a
// trial costs some two copies more, so that one a second would add a thirtieth.
constexpr int patience = 4;
constexpr int trialInterval = 256;

/** The index of a known value, or -1. */
int knownIndex(QStringView key) {
    const auto found = std::find_if(knownKeys.begin(), knownKeys.end(),
                                    [key](const KnownKey& known) { return known.key == key; });
    return found == knownKeys.end() ? -1 : static_cast<int>(found->value);
}

}  // namespace

const QString& keyOf(KnownValue value) {
    static const auto keys = [] {
        std::array<QString, knownValueCount> texts;
        std::transform(knownKeys.begin(), knownKeys.end(), texts.begin(),
                       [](const KnownKey& known) { return known.key.toString(); });
        return texts;
    }();
    return keys[static_cast<std::size_t>(value)];
}

void SampleGenerations::write(TLM::SDK::Sample& sample, const SamplingPlan& plan, int car,
                              quint64 revision, const char* data, quint64 tick) {
    const std::vector<PlannedValue>& planned = plan.values(car);
    if (planned.empty()) {
        return;
    }
    ValueMap& values = sample.data();
    const Stamp stamp{plan.version(), revision};
    // Here and not with the last copy, because until now known values were read from the original.
    if (m_host == Host::KeepsEverything && m_copiesInARow == trialInterval) {
        takeHostToLetGo();
    }
    if (stamp != m_stamp) {
        m_stamp = stamp;
        takeHostToLetGo();
        resolve(values, planned);
    } else if (isHeldAlone(values)) {
        takeHostToLetGo();
    } else if (m_host == Host::KeepsEverything) {
        giveCopy(values, data, tick);
        return;
    } else if (!takeFreeGeneration(values)) {
        continueWithCopy(values);
    }
    store(values, data, tick);
}

SampleGenerations::Way SampleGenerations::wayOf(Reading reading) {
    switch (reading) {
        case Reading::Int:
        case Reading::Float:
            return Way::FourBytes;
        case Reading::Double:
            return Way::EightBytes;
        case Reading::Bool:
            return Way::Bool;
        case Reading::CharAsInt:
            return Way::CharAsInt;
        case Reading::Tick:
            return Way::Tick;
        case Reading::None:
            break;
    }
    return Way::Nothing;
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
        ++m_groups[static_cast<std::size_t>(wayOf(value.reading)) + 1];
    }
    std::partial_sum(m_groups.begin(), m_groups.end(), m_groups.begin());

    rank(values, planned);
    m_places.areFound = false;
}

void SampleGenerations::rank(const ValueMap& values, const std::vector<PlannedValue>& planned) {
    m_offsets.resize(planned.size());
    m_ranks.clear();
    auto nextOfGroup = m_groups;
    auto next = planned.begin();
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        Rank entry;
        entry.known = knownIndex(it.key());
        if (next != planned.end() && next->key == it.key()) {
            const std::size_t place = nextOfGroup[static_cast<std::size_t>(wayOf(next->reading))]++;
            m_offsets[place] = next->offset;
            entry.planned = static_cast<int>(place);
            ++next;
        }
        m_ranks.push_back(entry);
    }
}

void SampleGenerations::locate(ValueMap& values) {
    m_places.planned.resize(m_offsets.size());
    m_places.stored.resize(m_offsets.size());
    m_places.known.fill(nullptr);
    auto entry = m_ranks.cbegin();
    for (Value& value : values) {
        if (entry->planned >= 0) {
            m_places.planned[static_cast<std::size_t>(entry->planned)] = placeOf(value);
        }
        if (entry->known >= 0) {
            m_places.known[static_cast<std::size_t>(entry->known)] = &value.value;
        }
        ++entry;
    }
    m_places.areFound = true;
}

std::optional<const QVariant*> SampleGenerations::find(KnownValue value, quint64 revision) const {
    if (m_stamp.planVersion == 0 || m_stamp.revision != revision) {
        return std::nullopt;
    }
    return m_places.known[static_cast<std::size_t>(value)];
}

bool SampleGenerations::takeFreeGeneration(ValueMap& values) {
    for (Generation& spare : m_spares) {
        if (spare.stamp == m_stamp && isHeldAlone(spare.values)) {
            exchange(values, spare);
            m_copiesInARow = 0;
            return true;
        }
    }
    return false;
}

void SampleGenerations::continueWithCopy(ValueMap& values) {
    Generation& oldest = m_spares[m_oldest];
    m_oldest = (m_oldest + 1) % spareCount;
    exchange(values, oldest);
    values = oldest.values;
    values.detach();
    m_places.areFound = false;
    ++m_copiesInARow;
    if (m_copiesInARow == patience) {
        m_host = Host::KeepsEverything;
        m_copiesInARow = 0;
    }
}

void SampleGenerations::takeHostToLetGo() {
    if (m_host == Host::KeepsEverything) {
        m_original.clear();
        m_places.areFound = false;
    }
    m_host = Host::LetsGo;
    m_copiesInARow = 0;
}

/** The places in the original stay, and nothing but the copy itself is left to do. */
void SampleGenerations::giveCopy(ValueMap& values, const char* data, quint64 tick) {
    if (m_copiesInARow == 0) {
        m_original = values;
        m_original.detach();
        m_places.areFound = false;
    }
    store(m_original, data, tick);
    values = m_original;
    values.detach();
    ++m_copiesInARow;
}

void SampleGenerations::exchange(ValueMap& values, Generation& spare) {
    values.swap(spare.values);
    std::swap(m_places, spare.places);
    spare.stamp = m_stamp;
}

template <SampleGenerations::Way way>
quint64 SampleGenerations::load(const char* bytes, quint64 tick) {
    if constexpr (way == Way::FourBytes) {
        return loadNumber<quint32>(bytes);
    } else if constexpr (way == Way::EightBytes) {
        return loadNumber<quint64>(bytes);
    } else if constexpr (way == Way::Bool) {
        return loadNumber<unsigned char>(bytes) != 0 ? 1 : 0;
    } else if constexpr (way == Way::CharAsInt) {
        return static_cast<quint32>(loadNumber<signed char>(bytes));
    } else {
        return tick;
    }
}

template <SampleGenerations::Way way>
void SampleGenerations::put(void* place, quint64 number) {
    if constexpr (way == Way::FourBytes || way == Way::CharAsInt) {
        const auto fourBytes = static_cast<quint32>(number);
        std::memcpy(place, &fourBytes, sizeof fourBytes);
    } else if constexpr (way == Way::Bool) {
        const bool truth = number != 0;
        std::memcpy(place, &truth, sizeof truth);
    } else {
        std::memcpy(place, &number, sizeof number);
    }
}

template <SampleGenerations::Way way, bool all>
void SampleGenerations::storeGroup(const char* data, quint64 tick) {
    const std::size_t end = m_groups[static_cast<std::size_t>(way) + 1];
    for (std::size_t i = m_groups[static_cast<std::size_t>(way)]; i < end; ++i) {
        const quint64 number = load<way>(data + m_offsets[i], tick);
        if (all || number != m_places.stored[i]) {
            m_places.stored[i] = number;
            put<way>(m_places.planned[i], number);
        }
    }
}

template <bool all>
void SampleGenerations::storeNumbers(const char* data, quint64 tick) {
    storeGroup<Way::FourBytes, all>(data, tick);
    storeGroup<Way::EightBytes, all>(data, tick);
    storeGroup<Way::Bool, all>(data, tick);
    storeGroup<Way::CharAsInt, all>(data, tick);
    storeGroup<Way::Tick, all>(data, tick);
}

void SampleGenerations::store(ValueMap& values, const char* data, quint64 tick) {
    if (m_places.areFound) {
        storeNumbers<false>(data, tick);
    } else {
        locate(values);
        storeNumbers<true>(data, tick);
    }
}
