#include "benchmarks/obvious/texttree.h"
#include "benchmarks/workload.h"
#include "tests/support/printqt.h"
#include "tests/yaml/treetext.h"
#include "yaml/tyamltree.h"

#include <gtest/gtest.h>

#include <string>

namespace fastpath {
namespace {

TEST(SessionTextFastPath, GivesTheTreeOfTheObviousWayForARacesTexts) {
    constexpr int kTicksPerLap = 300;
    const bench::Workload workload(kTicksPerLap);
    TYamlTree fast;
    obvious::TextTree plain;
    for (int tick = 0; tick < 4 * kTicksPerLap; tick += kTicksPerLap / 3) {
        const std::string text = workload.sessionText(workload.results(tick));
        fast.setYaml(text.c_str());
        plain.setYaml(text.c_str());
        ASSERT_EQ(treeText(fast), treeText(plain)) << "tick " << tick;
    }
}

}  // namespace
}  // namespace fastpath
