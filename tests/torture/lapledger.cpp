#include "tests/torture/lapledger.h"

#include <algorithm>
#include <iterator>
#include <sstream>

namespace torture {

using testsupport::DrivenLap;

namespace {

// Ticks that may be missing at a lap's end: the first one after the status was off only
// synchronizes, and the tick that closes a lap is not recorded.
constexpr long long kSlack = 3;

std::ostream& operator<<(std::ostream& out, const DrivenLap& lap) {
    return out << lap.kind << " lap " << lap.lap << " of car " << lap.car << ", ticks " << lap.start
               << " to " << lap.finish;
}

std::ostream& operator<<(std::ostream& out, const HandedLap& lap) {
    return out << (lap.completed ? "completed" : "incomplete") << " lap of car " << lap.car
               << (lap.isOwnCar ? " (own)" : "") << ", ticks " << lap.firstTick << " to "
               << lap.lastTick << ", foreign " << lap.foreignSamples;
}

template <typename Lap>
std::string textOf(const Lap& lap) {
    std::ostringstream text;
    text << lap;
    return text.str();
}

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
    complaints.insert(complaints.end(), other.complaints.begin(), other.complaints.end());
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

/** The window in which the host saw the lap's end and its result. */
std::optional<LapLedger::Window> LapLedger::windowOf(const DrivenLap& lap) const {
    const auto window =
        std::find_if(m_windows.begin(), m_windows.end(), [&lap](const Window& candidate) {
            return candidate.contains(lap.finish - kSlack, lap.finish + testsupport::kResultTicks);
        });
    return window == m_windows.end() ? std::nullopt : std::optional(*window);
}

bool LapLedger::wasSeen(const HandedLap& lap) const {
    return std::any_of(m_windows.begin(), m_windows.end(), [&lap](const Window& window) {
        return window.contains(lap.lastTick - kSlack, lap.lastTick);
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

std::string LapLedger::complaint(const char* what, const std::string& lap, int car) const {
    std::ostringstream text;
    text << what << ": " << lap << "; seen:";
    for (const Window& window : m_windows) {
        text << ' ' << window.from << " to " << window.to;
    }
    text << "; handed over:";
    for (const HandedLap& handed : m_handed) {
        if (handed.car == car) {
            text << " [" << handed << ']';
        }
    }
    return text.str();
}

LapLedger::Pieces LapLedger::piecesOf(const DrivenLap& lap, const Window& seen) const {
    std::vector<HandedLap> pieces;
    // Ignores those that begin later: a lap that was open when the host stopped looking is
    // discarded.
    std::copy_if(m_handed.begin(), m_handed.end(), std::back_inserter(pieces),
                 [&](const HandedLap& handed) {
                     return handed.car == lap.car && handed.lastTick >= lap.start &&
                            handed.firstTick <= seen.to;
                 });
    std::sort(pieces.begin(), pieces.end(), [](const HandedLap& left, const HandedLap& right) {
        return left.firstTick < right.firstTick;
    });
    // Nothing was recorded while the host did not look.
    long long covered = std::max(lap.start, seen.from);
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
    const auto complain = [&](int& count, const char* what, const auto& lap) {
        ++count;
        balance.complaints.push_back(complaint(what, textOf(lap), lap.car));
    };
    const auto isTrusted = [&](int car) { return trust == Trust::AllCars || isOwnCar(car); };
    for (const DrivenLap& lap : driven) {
        if (!isHandedOver(lap)) {
            continue;
        }
        ++balance.driven;
        const std::vector<HandedLap> handed = handedFor(lap);
        const std::optional<Window> seen = windowOf(lap);
        if (handed.size() > 1) {
            complain(balance.twice, "twice", lap);
        }
        if (!handed.empty()) {
            ++balance.handedOver;
            if (handed.front().completed != lap.complete) {
                complain(balance.wrongEnd, "with the wrong end", lap);
            }
        } else if (!seen || vanishedBeforeItsResult(lap, driven)) {
            ++balance.cutShort;
        } else if (isTrusted(lap.car)) {
            complain(balance.lost, "lost", lap);
        } else if (const Pieces pieces = piecesOf(lap, *seen); pieces == Pieces::WithAGap) {
            complain(balance.lost, "lost in part", lap);
        } else {
            ++(pieces == Pieces::Whole ? balance.inPieces : balance.cutShort);
        }
    }
    for (const HandedLap& handed : m_handed) {
        // Results of an earlier run can keep another car's lap open from one line to the next.
        const bool isForeign = handed.isOwnCar && handed.foreignSamples > testsupport::kResultTicks;
        if (isForeign) {
            complain(balance.mixed, "mixed", handed);
        }
        balance.carriedOver += handed.foreignSamples > 0 && !isForeign ? 1 : 0;
        const bool known = std::any_of(driven.begin(), driven.end(),
                                       [&](const DrivenLap& lap) { return endsWith(handed, lap); });
        const bool isClaim = handed.completed && wasSeen(handed) && isTrusted(handed.car);
        if (isClaim && !known) {
            complain(balance.neverDriven, "never driven", handed);
        }
    }
    return balance;
}

}  // namespace torture
