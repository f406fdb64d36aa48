#include "reader/resultstable.h"

#include "reader/numbers.h"
#include "yaml/tstringtree.h"

#include <QString>

#include <cstddef>

using namespace Qt::StringLiterals;

void ResultsTable::refresh(const TStringTree& tree, int session, int carCount) {
    const Origin origin{tree.revision(), session, carCount};
    if (origin == m_origin) {
        return;
    }
    m_origin = origin;
    m_results.assign(static_cast<std::size_t>(carCount), std::nullopt);
    const TStringTree* const positions = tree.pathSub(
        "SessionInfo/Sessions/"_L1 + QString::number(session) + "/ResultsPositions"_L1);
    if (positions != nullptr) {
        readPositions(*positions, carCount);
    }
}

void ResultsTable::readPositions(const TStringTree& positions, int count) {
    for (int i = 1; i <= count; ++i) {
        if (const TStringTree* const position = positions.sub(QString::number(i))) {
            readPosition(*position);
        }
    }
}

void ResultsTable::readPosition(const TStringTree& position) {
    const int car = position.value(u"CarIdx"_s).toInt();
    if (car < 0 || car >= static_cast<int>(m_results.size())) {
        return;
    }
    std::optional<CarResult>& result = m_results[static_cast<std::size_t>(car)];
    if (!result) {
        result = CarResult{reader::incrementSaturated(position.value(u"LapsComplete"_s).toInt()),
                           static_cast<float>(position.value(u"LastTime"_s).toDouble())};
    }
}

std::optional<CarResult> ResultsTable::result(int car) const {
    return m_results[static_cast<std::size_t>(car)];
}
