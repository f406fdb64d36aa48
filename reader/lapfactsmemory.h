#pragma once

#include "reader/lapfacts.h"

#include <QHash>
#include <QString>
#include <QtGlobal>

#include <optional>

/**
 * Remembers the facts of each car while what they were made from stays the same: they fill half a
 * hundred values of every lap, and at a session's end 64 laps are closed in one tick.
 */
class LapFactsMemory {
public:
    /** What facts were made from: revisions of parts of the tree, 0 for one that is missing. */
    struct Origin {
        quint64 weekend = 0;
        quint64 driverInfo = 0;
        quint64 carSetup = 0;
        std::optional<QString> sessionType;

        bool operator==(const Origin&) const = default;
    };

    /** The facts of car `car`, from `make()` when they are not known. Good until the next call. */
    template <typename Make>
    const LapFacts& of(int car, const Origin& origin, Make make) {
        if (origin != m_origin || m_facts.size() > maxCars) {
            m_facts.clear();
            m_origin = origin;
        }
        auto known = m_facts.constFind(car);
        if (known == m_facts.cend()) {
            known = m_facts.insert(car, make());
        }
        return *known;
    }

private:
    // Only the car slots are asked for again and again.
    static constexpr qsizetype maxCars = 64;

    Origin m_origin;
    QHash<int, LapFacts> m_facts;
};
