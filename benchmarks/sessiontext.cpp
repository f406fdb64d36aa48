// What it costs to read the session text into the tree.

#include "benchmarks/allocations.h"
#include "benchmarks/contest.h"
#include "benchmarks/figures.h"
#include "benchmarks/obvious/texttree.h"
#include "benchmarks/workload.h"
#include "yaml/tyamltree.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <yaml-cpp/yaml.h>
#include <yaml.h>

namespace bench {

namespace {

constexpr int kTicksPerLap = 5400;
constexpr int kRounds = 25;
constexpr double kChangedValues = 6.0 * kCarCount;  // six texts of each car's race result

std::string describe(const std::string& text) {
    return std::to_string(text.size() / 1000) + " kB";
}

/** Creates every event of the text, ignores it, and frees it as a reader has to. */
void runEvents(const std::string& text) {
    yaml_parser_t parser;
    yaml_parser_initialize(&parser);
    yaml_parser_set_input_string(&parser, reinterpret_cast<const unsigned char*>(text.data()),
                                 text.size());
    bool ended = false;
    while (!ended) {
        yaml_event_t event;
        if (yaml_parser_parse(&parser, &event) == 0) {
            std::abort();  // the text is ours and is YAML
        }
        ended = event.type == YAML_STREAM_END_EVENT;
        yaml_event_delete(&event);
    }
    yaml_parser_delete(&parser);
}

/**
 * Parsing into an empty tree. The trees are freed outside the measured time, the events one by one
 * within it.
 */
class FirstParseFigure {
public:
    FirstParseFigure() : m_text(Workload(kTicksPerLap).sessionText({})) {
        m_contest.add(
            "fast", 1.0, [this] { m_fast->setYaml(m_text.c_str()); },
            [this] { m_fast = std::make_unique<TYamlTree>(); });
        m_contest.add(
            "obvious", 1.0, [this] { m_obvious->setYaml(m_text.c_str()); },
            [this] { m_obvious = std::make_unique<obvious::TextTree>(); });
        m_contest.add("libyaml", 1.0, [this] { runEvents(m_text); });
        m_contest.add(
            "yaml-cpp", 1.0, [this] { m_node = YAML::Load(m_text); }, [this] { m_node.reset(); });
    }

    double round() { return m_contest.round(); }

    void report(Report& report) {
        report.add("session text, first parse: to libyaml's event run",
                   m_contest.ratio("fast", "libyaml"), atMost(0.7),
                   timeText(m_contest.seconds("fast")) + " : " +
                       timeText(m_contest.seconds("libyaml")) + ", " + describe(m_text));
        report.add("session text, first parse: to yaml-cpp's load",
                   m_contest.ratio("fast", "yaml-cpp"), atMost(1.0 / 12.0),
                   timeText(m_contest.seconds("yaml-cpp")));
        report.add("session text, first parse: times faster than the obvious way",
                   1.0 / m_contest.ratio("fast", "obvious"), std::nullopt,
                   timeText(m_contest.seconds("obvious")));
    }

private:
    std::string m_text;
    std::unique_ptr<TYamlTree> m_fast;
    std::unique_ptr<obvious::TextTree> m_obvious;
    YAML::Node m_node;
    Contest m_contest;
};

/** Parsing into a tree that has read an earlier text. */
class AgainFigure {
public:
    AgainFigure(const char* title, bool changed, double allowedAllocations)
        : m_title(title), m_allowedAllocations(allowedAllocations) {
        const Workload workload(kTicksPerLap);
        // If changed, every car is a lap further in the second text.
        m_texts = {workload.sessionText(workload.results(2 * kTicksPerLap)),
                   workload.sessionText(workload.results((changed ? 3 : 2) * kTicksPerLap))};
        m_fast.setYaml(m_texts[1].c_str());
        m_obvious.setYaml(m_texts[1].c_str());
        m_contest.add("fast", 2.0, [this] { parse(m_fast); });
        m_contest.add("obvious", 2.0, [this] { parse(m_obvious); });
        m_contest.add("libyaml", 2.0, [this] {
            for (const std::string& text : m_texts) {
                runEvents(text);
            }
        });
    }

    double round() { return m_contest.round(); }

    void report(Report& report) {
        const AllocationMeter meter;
        parse(m_fast);
        report.add(
            "session text, " + m_title + ": to libyaml's event run",
            m_contest.ratio("fast", "libyaml"), atMost(0.3),
            timeText(m_contest.seconds("fast")) + " : " + timeText(m_contest.seconds("libyaml")));
        report.add("session text, " + m_title + ": allocations",
                   static_cast<double>(meter.count()) / 2.0, atMost(m_allowedAllocations));
        report.add("session text, " + m_title + ": times faster than the obvious way",
                   1.0 / m_contest.ratio("fast", "obvious"), std::nullopt,
                   timeText(m_contest.seconds("obvious")));
    }

private:
    template <typename Tree>
    void parse(Tree& tree) {
        for (const std::string& text : m_texts) {
            tree.setYaml(text.c_str());
        }
    }

    std::string m_title;
    double m_allowedAllocations;
    std::array<std::string, 2> m_texts;
    TYamlTree m_fast;
    obvious::TextTree m_obvious;
    Contest m_contest;
};

}  // namespace

void registerSessionText(Report& report) {
    // One for the decoded text, and a few more that do not matter.
    constexpr double kFewAllocations = 8.0;
    registerFigure<FirstParseFigure>(report, "sessionText/first", kRounds);
    registerFigure<AgainFigure>(report, "sessionText/same", kRounds, "same again", false,
                                kFewAllocations);
    registerFigure<AgainFigure>(report, "sessionText/changed", kRounds, "384 values changed", true,
                                kChangedValues + kFewAllocations);
}

}  // namespace bench
