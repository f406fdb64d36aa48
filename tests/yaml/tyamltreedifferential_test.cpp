#include "benchmarks/obvious/texttree.h"
#include "tests/support/printqt.h"
#include "tests/yaml/treetext.h"
#include "yaml/tyamltree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>

namespace {

class RandomTexts {
public:
    explicit RandomTexts(unsigned seed) : m_random(seed) {}

    std::string next(int mostLines) {
        std::string text = below(10) == 0 ? "" : "---\n";
        for (int lines = below(mostLines); lines > 0; --lines) {
            text += line();
        }
        text += pick(std::array{"", "...", "end: 1", "  ", "- bare"});
        return text;
    }

private:
    // Mostly lines as the simulator writes them, each indented a little more or less than the one
    // before, and some odd ones.
    std::string line() {
        if (below(12) == 0) {
            return oddLine() + '\n';
        }
        if (below(8) == 0) {
            return pick(std::array{"\n", " \n", "   \n"});
        }
        m_indentation = below(8) == 0 ? below(10) : std::max(0, m_indentation + below(4) - 2);
        std::string text(static_cast<std::size_t>(m_indentation), ' ');
        switch (below(4)) {
            case 0:
                text += word() + ':';
                break;
            case 1:
                text += "- " + word() + ": " + word();
                break;
            default:
                text += word() + ": " + word();
        }
        return text + pick(std::array{"\n", "\n", "\n", "\n", "\r\n", " \n", ":\n", ": \n"});
    }

    std::string oddLine() {
        std::string text;
        for (int pieces = below(6); pieces > 0; --pieces) {
            text += pick(std::array{" ", "  ", "-", "- ", ":", ": ", "a", "\t", "\r", "/", "\xA0",
                                    "\xE4", "\x85", "---"});
        }
        return text;
    }

    std::string word() { return pick(std::array{"a", "b", "A", "ab", "0", "1", "7", "a b", ""}); }

    template <std::size_t N>
    std::string pick(const std::array<const char*, N>& choices) {
        return choices[static_cast<std::size_t>(below(static_cast<int>(N)))];
    }

    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }

    std::mt19937 m_random;
    int m_indentation = 0;
};

}  // namespace

TEST(TYamlTreeDifferential, GivesTheTreeOfTheObviousWayForTextAfterTextInOneTree) {
    struct Shape {
        unsigned trees;
        int texts;
        int mostLines;
    };
    for (const Shape& shape : {Shape{10'000, 2, 30}, Shape{300, 4, 200}}) {
        for (unsigned seed = 0; seed < shape.trees; ++seed) {
            RandomTexts texts(seed);
            TYamlTree tree;
            obvious::TextTree plain;
            for (int i = 0; i < shape.texts; ++i) {
                const std::string text = texts.next(shape.mostLines);
                tree.setYaml(text.c_str());
                plain.setYaml(text.c_str());
                ASSERT_EQ(treeText(tree), treeText(plain)) << "seed " << seed << '\n' << text;
            }
        }
    }
}
