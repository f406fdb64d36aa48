#include "benchmarks/obvious/texttree.h"
#include "benchmarks/workload.h"
#include "tests/support/printqt.h"
#include "yaml/tyamltree.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace fastpath {
namespace {

testing::AssertionResult areSameTrees(const TStringTree& fast, const obvious::TextTree& plain) {
    if (fast.valueKeys() != plain.valueKeys() || fast.subTreesKeys() != plain.subTreesKeys()) {
        return testing::AssertionFailure() << "other keys";
    }
    const QStringList values = fast.valueKeys();
    for (const QString& key : values) {
        if (fast.value(key) != plain.value(key)) {
            return testing::AssertionFailure() << key.toStdString() << " has another value";
        }
    }
    const QStringList subs = fast.subTreesKeys();
    for (const QString& key : subs) {
        const testing::AssertionResult same = areSameTrees(*fast.sub(key), *plain.sub(key));
        if (!same) {
            return testing::AssertionFailure() << key.toStdString() << '/' << same.message();
        }
    }
    return testing::AssertionSuccess();
}

class RandomTexts {
public:
    explicit RandomTexts(unsigned int seed) : m_random(seed) {}

    /** Lines as the simulator writes them, and some that it never would. */
    std::string next(int lines) {
        std::string text;
        int indentation = 0;
        for (int i = 0; i < lines; ++i) {
            indentation = std::clamp(indentation + number(4) - 1 - number(2), 0, 9);
            text.append(static_cast<std::size_t>(indentation), ' ').append(pick()).append("\n");
        }
        return text.append(pick());
    }

    int number(int count) { return std::uniform_int_distribution(0, count - 1)(m_random); }

private:
    std::string pick() {
        static const std::array<std::string, 18> contents{"Key: value",  "Other: 1: 2",
                                                          "Section:",    "- Name: 7",
                                                          "- Name: 8",   "- bare",
                                                          "-",           "",
                                                          " ",           "NoSeparator",
                                                          "Key: ",       "Trail: x  ",
                                                          "Return: x\r", ":",
                                                          "Sub:",        "Key: other",
                                                          "\tTab: 1",    "Latin: \xe4\xff"};
        return contents[static_cast<std::size_t>(number(static_cast<int>(contents.size())))];
    }

    std::mt19937 m_random;
};

TEST(SessionTextFastPath, GivesTheTreeOfTheObviousWayForRandomTexts) {
    constexpr int trees = 300;
    constexpr int textsPerTree = 4;
    RandomTexts texts(29);
    int lines = 0;
    for (int i = 0; i < trees; ++i) {
        TYamlTree fast;
        obvious::TextTree plain;
        for (int j = 0; j < textsPerTree; ++j) {
            const int count = texts.number(200);
            lines += count;
            const std::string text = texts.next(count);
            fast.setYaml(text.c_str());
            plain.setYaml(text.c_str());
            ASSERT_TRUE(areSameTrees(fast, plain)) << text;
        }
    }
    EXPECT_GE(lines, 100'000);
}

TEST(SessionTextFastPath, GivesTheTreeOfTheObviousWayForARacesTexts) {
    constexpr int ticksPerLap = 300;
    const bench::Workload workload(ticksPerLap);
    TYamlTree fast;
    obvious::TextTree plain;
    for (int tick = 0; tick < 4 * ticksPerLap; tick += ticksPerLap / 3) {
        const std::string text = workload.sessionText(workload.results(tick));
        fast.setYaml(text.c_str());
        plain.setYaml(text.c_str());
        ASSERT_TRUE(areSameTrees(fast, plain)) << "tick " << tick;
    }
}

}  // namespace
}  // namespace fastpath
