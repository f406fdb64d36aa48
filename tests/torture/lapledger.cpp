#include "tests/torture/lapledger.h"

#include <algorithm>
#include <iterator>

namespace torture {

using testsupport::DrivenLap;

namespace {

// Ticks that may be missing around a lap's end: a new starting point after the status was off takes
// one, and the tick that closes a lap is not recorded.
constexpr long long kSlack = 3;

bool endsWith(const HandedLap& handed, const DrivenLap& driven) {
    const long long before = driven.finish - handed.lastTick;
    return handed.car == driven.car && before >= 1 && before <= kSlack;
}

}  // namespace

LapBalance& LapBalance::operator+=(const LapBalance& other) {
    driven += other.driven;
    handedOver += other.handedOver;
    inPieces += other.inPieces;
    cutShort += other.cutShort;
    lost += other.lost;
    twice += other.twice;
    wrongEnd += other.wrongEnd;
    carriedOver += other.carriedOver;
    mixed += other.mixed;
    neverDriven += other.neverDriven;
    return *this;
}

void LapLedger::see(long long tick, bool joins) {
    if (joins && !m_windows.empty()) {
        m_windows.back().to = tick;
    } else {
        m_windows.push_back({tick, tick});
    }
}

void LapLedger::hand(const HandedLap& lap) {
    const long long newest = m_windows.empty() ? 0 : m_windows.back().to;
    if (lap.lastTick > newest + kSlack) {
        ++m_ofEarlierRuns;
    } else {
        m_handed.push_back(lap);
    }
}

bool LapLedger::wasSeen(const DrivenLap& lap) const {
    return std::any_of(m_windows.begin(), m_windows.end(), [&lap](const Window& window) {
        return window.from + kSlack <= lap.finish &&
               lap.finish + testsupport::kResultTicks <= window.to;
    });
}

bool LapLedger::wasSeen(const HandedLap& lap) const {
    return std::any_of(m_windows.begin(), m_windows.end(), [&lap](const Window& window) {
        return window.from + kSlack <= lap.lastTick && lap.lastTick <= window.to;
    });
}

std::vector<HandedLap> LapLedger::handedFor(const DrivenLap& lap) const {
    std::vector<HandedLap> found;
    std::copy_if(m_handed.begin(), m_handed.end(), std::back_inserter(found),
                 [&lap](const HandedLap& handed) { return endsWith(handed, lap); });
    return found;
}

bool LapLedger::isOwnCar(int car) const {
    return std::any_of(m_handed.begin(), m_handed.end(), [car](const HandedLap& handed) {
        return handed.car == car && handed.isOwnCar;
    });
}

LapLedger::Pieces LapLedger::piecesOf(const DrivenLap& lap) const {
    std::vector<HandedLap> pieces;
    std::copy_if(m_handed.begin(), m_handed.end(), std::back_inserter(pieces),
                 [&lap](const HandedLap& handed) {
                     return handed.car == lap.car && handed.lastTick >= lap.start;
                 });
    std::sort(pieces.begin(), pieces.end(), [](const HandedLap& left, const HandedLap& right) {
        return left.firstTick < right.firstTick;
    });
    long long covered = lap.start;
    for (const HandedLap& piece : pieces) {
        if (covered + kSlack >= lap.finish) {
            break;
        }
        if (piece.firstTick > covered + kSlack) {
            return Pieces::WithAGap;
        }
        covered = std::max(covered, piece.lastTick + 1);
    }
    return covered + kSlack >= lap.finish ? Pieces::Whole : Pieces::OpenAtTheEnd;
}

LapBalance LapLedger::balance(const std::vector<DrivenLap>& driven, Trust trust) const {
    LapBalance balance;
    balance.carriedOver = m_ofEarlierRuns;
    const auto isTrusted = [&](int car) { return trust == Trust::AllCars || isOwnCar(car); };
    for (const DrivenLap& lap : driven) {
        if (!isHandedOver(lap)) {
            continue;
        }
        ++balance.driven;
        const std::vector<HandedLap> handed = handedFor(lap);
        if (handed.size() > 1) {
            ++balance.twice;
        }
        if (!handed.empty()) {
            ++balance.handedOver;
            balance.wrongEnd += handed.front().completed == lap.complete ? 0 : 1;
        } else if (!wasSeen(lap) || vanishedBeforeItsResult(lap, driven)) {
            ++balance.cutShort;
        } else if (isTrusted(lap.car)) {
            ++balance.lost;
        } else {
            const Pieces pieces = piecesOf(lap);
            balance.inPieces += pieces == Pieces::Whole ? 1 : 0;
            balance.cutShort += pieces == Pieces::OpenAtTheEnd ? 1 : 0;
            balance.lost += pieces == Pieces::WithAGap ? 1 : 0;
        }
    }
    for (const HandedLap& handed : m_handed) {
        // Results of an earlier run can keep another car's lap open from one line to the next.
        const bool isForeign = handed.isOwnCar && handed.foreignSamples > testsupport::kResultTicks;
        balance.mixed += isForeign ? 1 : 0;
        balance.carriedOver += handed.foreignSamples > 0 && !isForeign ? 1 : 0;
        const bool known = std::any_of(driven.begin(), driven.end(),
                                       [&](const DrivenLap& lap) { return endsWith(handed, lap); });
        const bool isClaim = handed.completed && wasSeen(handed) && isTrusted(handed.car);
        balance.neverDriven += isClaim && !known ? 1 : 0;
    }
    return balance;
}

}  // namespace torture
