#include "tools/simulator/laplog.h"

#include "tools/simulator/text.h"

namespace simulator {

const char* lapKindText(LapKind kind) {
    switch (kind) {
        case LapKind::Out:
            return "out";
        case LapKind::Flying:
            return "flying";
        case LapKind::In:
            return "in";
    }
    return "";
}

bool LapLog::open(const std::string& path) {
    m_file.open(path, std::ios::binary | std::ios::trunc);
    m_file << "# car\tlap\tkind\tseconds\tfloat\tsession\tstart\tfinish\tcomplete\n" << std::flush;
    return m_file.good();
}

void LapLog::add(const std::vector<LapRecord>& laps) {
    if (laps.empty() || !m_file.is_open()) {
        return;
    }
    for (const LapRecord& lap : laps) {
        m_file << line(lap) << '\n';
    }
    // A reader of the log must find every lap at once, even when this process is killed.
    m_file << std::flush;
}

std::string LapLog::line(const LapRecord& lap) {
    const double seconds = lap.seconds.value_or(-1.0);
    std::string text;
    const auto column = [&](const std::string& value) {
        text += (text.empty() ? "" : "\t") + value;
    };
    column(std::to_string(lap.car));
    column(std::to_string(lap.lap));
    column(lapKindText(lap.kind));
    column(fixedText(seconds, 4));
    column(shortestText(static_cast<float>(seconds)));
    column(std::to_string(lap.session));
    column(std::to_string(lap.start));
    column(std::to_string(lap.finish));
    column(lap.complete ? "yes" : "no");
    return text;
}

}  // namespace simulator
