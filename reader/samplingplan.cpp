#include "reader/samplingplan.h"

#include "reader/numbers.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace reader {

namespace {

// Arrays with an element for each car; the rest of the name is the key of the value.
constexpr auto kPerCarPrefix = "caridx"_L1;

Reading readingOfType(qint32 type) {
    switch (type) {
        case irsdk_char:
            return Reading::CharAsInt;
        case irsdk_bool:
            return Reading::Bool;
        case irsdk_int:
        case irsdk_bitField:
            return Reading::Int;
        case irsdk_float:
            return Reading::Float;
        case irsdk_double:
            return Reading::Double;
        default:
            return Reading::None;
    }
}

/** Orders by key and keeps of each key the value planned last. */
void settle(std::vector<PlannedValue>& values) {
    std::stable_sort(
        values.begin(), values.end(),
        [](const PlannedValue& left, const PlannedValue& right) { return left.key < right.key; });
    const auto isSameKey = [](const PlannedValue& left, const PlannedValue& right) {
        return left.key == right.key;
    };
    // From the back, so that the one that stays of a run is its last.
    const auto kept = std::unique(values.rbegin(), values.rend(), isSameKey);
    values.erase(values.begin(), kept.base());
}

}  // namespace

/** The elements of one variable. */
class SamplingPlan::Elements {
public:
    explicit Elements(const Entry& entry)
        : m_reading(readingOfType(entry.type)),
          m_offset(entry.offset),
          m_size(static_cast<qint64>(irsdk_varTypeSize(entry.type))),
          // Of a text only the first character is a value.
          m_count(entry.type == irsdk_char ? 1 : entry.count) {}

    [[nodiscard]] qint64 count() const { return m_count; }

    [[nodiscard]] bool fit(qint64 dataLength) const {
        const bool isRead = m_reading != Reading::None && m_count > 0;
        return !isRead || (m_offset >= 0 && m_offset + m_count * m_size <= dataLength);
    }

    [[nodiscard]] Source source(qint64 index, const Source& last) const {
        return m_reading == Reading::None
                   ? last
                   : Source{m_reading, static_cast<qint32>(m_offset + index * m_size)};
    }

private:
    Reading m_reading;
    qint64 m_offset;
    qint64 m_size;
    qint64 m_count;
};

bool SamplingPlan::matches(const irsdk_varHeader* vars, qsizetype count, const Mode& mode) const {
    return m_isResolved && mode == m_mode &&
           std::equal(m_table.begin(), m_table.end(), vars, vars + count,
                      [](const Entry& entry, const irsdk_varHeader& header) {
                          return entry == Entry(header);
                      });
}

void SamplingPlan::resolve(const irsdk_varHeader* vars, qsizetype count, const QStringList& names,
                           const QStringList& units, const Mode& mode) {
    m_isResolved = false;
    m_mode = mode;
    m_table.clear();
    m_table.reserve(static_cast<std::size_t>(count));
    for (qsizetype i = 0; i < count; ++i) {
        m_table.emplace_back(vars[i]);
    }
    m_cars.assign(static_cast<std::size_t>(mode.carCount), {});
    Source last;
    for (qsizetype i = 0; i < count; ++i) {
        const Elements elements(m_table[static_cast<std::size_t>(i)]);
        if (elements.fit(mode.dataLength)) {
            planVariable(elements, names[i], units[i], last);
        }
    }
    planSessionClock();
    std::for_each(m_cars.begin(), m_cars.end(), settle);
    ++m_version;
    m_isResolved = true;
}

void SamplingPlan::planVariable(const Elements& elements, const QString& name, const QString& unit,
                                Source& last) {
    if (!m_mode.diskLoading && name.startsWith(kPerCarPrefix)) {
        planPerCar(elements, name.sliced(kPerCarPrefix.size()), unit, last);
    } else if (elements.count() > 0) {
        planOwn(elements, name, unit, last);
    }
}

void SamplingPlan::planPerCar(const Elements& elements, const QString& key, const QString& unit,
                              Source& last) {
    const int count = static_cast<int>(std::min<qint64>(elements.count(), m_mode.carCount));
    for (int car = 0; car < count; ++car) {
        last = elements.source(car, last);
        // The own car's values come from its own variables, which say more.
        if (car != m_mode.ownCar || !m_mode.live) {
            add(car, key, unit, last);
        }
    }
    // Elements without a slot go nowhere, but they are converted like the others.
    if (elements.count() > count) {
        last = elements.source(elements.count() - 1, last);
    }
}

void SamplingPlan::planOwn(const Elements& elements, const QString& key, const QString& unit,
                           Source& last) {
    // Every element of an array has the same key, so that the last one is what remains.
    last = elements.source(elements.count() - 1, last);
    if (m_mode.ownCar >= 0) {
        add(m_mode.ownCar, key, unit, last);
    }
}

void SamplingPlan::planSessionClock() {
    m_includesSessionClock = false;
    m_tick = {};
    if (m_mode.diskLoading || m_mode.ownCar < 0) {
        return;
    }
    const PlannedValue* const time = ownValue(u"sessiontime"_s);
    const PlannedValue* const timeRemain = ownValue(u"sessiontimeremain"_s);
    const PlannedValue* const tick = ownValue(u"sessiontick"_s);
    if (time == nullptr || timeRemain == nullptr || tick == nullptr) {
        return;
    }
    m_includesSessionClock = true;
    m_tick = {tick->reading, tick->offset};
    for (int car = 0; car < m_mode.carCount; ++car) {
        if (car != m_mode.ownCar) {
            add(car, time->key, time->unit, {time->reading, time->offset});
            add(car, timeRemain->key, timeRemain->unit, {timeRemain->reading, timeRemain->offset});
            add(car, tick->key, QString(), {Reading::Tick, 0});
        }
    }
}

const PlannedValue* SamplingPlan::ownValue(const QString& key) const {
    const std::vector<PlannedValue>& values = m_cars[static_cast<std::size_t>(m_mode.ownCar)];
    const auto found = std::find_if(values.rbegin(), values.rend(),
                                    [&key](const PlannedValue& value) { return value.key == key; });
    return found == values.rend() ? nullptr : &*found;
}

void SamplingPlan::add(int car, const QString& key, const QString& unit, const Source& source) {
    m_cars[static_cast<std::size_t>(car)].push_back({key, unit, source.reading, source.offset});
}

quint64 SamplingPlan::sessionTick(const char* data) const {
    const char* const bytes = data + m_tick.offset;
    switch (m_tick.reading) {
        case Reading::CharAsInt:
            return static_cast<quint64>(loadNumber<signed char>(bytes));
        case Reading::Bool:
            return loadNumber<unsigned char>(bytes) != 0 ? 1 : 0;
        case Reading::Int:
            return static_cast<quint64>(loadNumber<qint32>(bytes));
        case Reading::Float:
            return toULongLong(static_cast<double>(loadNumber<float>(bytes)));
        case Reading::Double:
            return toULongLong(loadNumber<double>(bytes));
        case Reading::Tick:
        case Reading::None:
            break;
    }
    return 0;
}

}  // namespace reader
