#pragma once

#include "irsdk/layout.h"
#include "reader/carsample.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <random>
#include <vector>

namespace readertest {

/**
 * A simulator with one car: a table of variables and a snapshot of random readings, which fill a
 * sample as a reader does.
 */
class SnapshotSource {
public:
    struct Variable {
        const char* name;
        irsdk_VarType type;
        const char* unit;
    };

    explicit SnapshotSource(const std::vector<Variable>& variables, unsigned int seed = 1)
        : m_random(seed) {
        for (const Variable& variable : variables) {
            irsdk_varHeader header{};
            header.type = variable.type;
            header.count = 1;
            header.offset = static_cast<std::int32_t>(m_snapshot.size());
            m_names.append(QString::fromLatin1(variable.name));
            m_units.append(QString::fromLatin1(variable.unit));
            m_table.push_back(header);
            m_snapshot.resize(m_snapshot.size() + irsdk_varTypeSize(variable.type));
        }
    }

    /** Changes some readings; floats and doubles may be NaNs, infinities and zeros. */
    void change() {
        for (std::size_t i = 0; i < m_table.size(); ++i) {
            if (number(3) == 0) {
                char* const place = m_snapshot.data() + m_table[i].offset;
                std::generate_n(place, irsdk_varTypeSize(m_table[i].type), [this] {
                    return static_cast<char>(kBytes[number(kBytes.size())]);
                });
            }
        }
    }

    void fill(reader::CarSample& sample) { fill(sample, m_plan); }

    /** With a plan that other sources use too, as when the simulator's table changes. */
    void fill(reader::CarSample& sample, reader::SamplingPlan& plan) const {
        const reader::SamplingPlan::Mode mode{
            .ownCar = 0, .carCount = 1, .dataLength = static_cast<qint64>(m_snapshot.size())};
        if (!plan.matches(m_table.data(), m_names.size(), mode)) {
            plan.resolve(m_table.data(), m_names.size(), m_names, m_units, mode);
        }
        sample.fill(plan, 0, m_snapshot.data(), 0);
    }

    /** Fills a sample by names. */
    void setByName(TLM::SDK::Sample& sample) const {
        for (std::size_t i = 0; i < m_table.size(); ++i) {
            sample.setValue(m_names[static_cast<qsizetype>(i)], reading(i),
                            m_units[static_cast<qsizetype>(i)]);
        }
    }

    std::size_t number(std::size_t below) { return m_random() % below; }

private:
    // Bytes that often make zeros of both signs, infinities and NaNs of both kinds.
    static constexpr std::array<unsigned char, 8> kBytes{0x00, 0x80, 0x7F, 0xFF,
                                                         0xF0, 0xA0, 0xC0, 0x01};

    template <typename Number>
    Number load(std::size_t variable) const {
        return reader::loadNumber<Number>(m_snapshot.data() + m_table[variable].offset);
    }

    QVariant reading(std::size_t variable) const {
        switch (m_table[variable].type) {
            case irsdk_char:
                return QVariant::fromValue<int>(load<signed char>(variable));
            case irsdk_bool:
                return QVariant::fromValue<bool>(load<unsigned char>(variable) != 0);
            case irsdk_float:
                return QVariant::fromValue<float>(load<float>(variable));
            case irsdk_double:
                return QVariant::fromValue<double>(load<double>(variable));
            default:
                return QVariant::fromValue<int>(load<qint32>(variable));
        }
    }

    std::mt19937 m_random;
    std::vector<irsdk_varHeader> m_table;
    QStringList m_names;
    QStringList m_units;
    std::vector<char> m_snapshot;
    reader::SamplingPlan m_plan;
};

/** Variables of every type, known values among them. */
inline std::vector<SnapshotSource::Variable> variablesOfEveryType() {
    return {{"lapdistpct", irsdk_float, "%"}, {"sessiontime", irsdk_double, "s"},
            {"onpitroad", irsdk_bool, ""},    {"sessionstate", irsdk_int, ""},
            {"flags", irsdk_bitField, ""},    {"letter", irsdk_char, ""},
            {"speed", irsdk_float, "m/s"}};
}

}  // namespace readertest
