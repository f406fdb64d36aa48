#include "benchmarks/obvious/texttree.h"
#include "tests/support/printqt.h"
#include "tests/yaml/treetext.h"
#include "yaml/tyamltree.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// Every construct that the reader knows, and some that it takes for something else.
const std::string kEveryConstruct =
    "---\n"
    "WeekendInfo:\n"
    " TrackName: Ring: East\n"
    " Empty: \n"
    " NoSeparator\n"
    " WeekendOptions:\n"
    "  NumStarters: 0\r\n"
    "\n"
    "DriverInfo:\n"
    " Drivers:\n"
    " - CarIdx: 0\n"
    "   UserName: Zo\xEB\n"
    " - CarIdx: 3\n"
    "   License:\n"
    "    Level: 1\n"
    " -\n"
    "   \n"
    "\t Tab: 1\n"
    ":\n"
    "        Jump: 2\n"
    "Back: 3\n"
    "...\n";

void expectTheObviousTree(const std::string& text) {
    TYamlTree tree;
    obvious::TextTree plain;
    tree.setYaml(text.c_str());
    plain.setYaml(text.c_str());
    ASSERT_EQ(treeText(tree), treeText(plain)) << text;
}

// The depth of `tree` along its first children.
int depthOf(const TStringTree& tree) {
    int depth = 0;
    for (const TStringTree* node = &tree; !node->subTreesKeys().isEmpty();
         node = node->sub(node->subTreesKeys().first())) {
        ++depth;
    }
    return depth;
}

}  // namespace

TEST(TYamlTreeHostile, ReadsEveryConstructCutOffAtEveryByte) {
    for (std::size_t length = 0; length <= kEveryConstruct.size(); ++length) {
        const std::string text = kEveryConstruct.substr(0, length);
        ASSERT_NO_FATAL_FAILURE(expectTheObviousTree(text));
    }
}

TEST(TYamlTreeHostile, ReadsEverySingleChangedByte) {
    for (std::size_t at = 0; at < kEveryConstruct.size(); ++at) {
        for (const char replacement : {'\0', '\n', '\r', '\t', ' ', '-', ':', '/', 'x', '\xFF'}) {
            std::string text = kEveryConstruct;
            text[at] = replacement;
            ASSERT_NO_FATAL_FAILURE(expectTheObviousTree(text));
        }
    }
}

TEST(TYamlTreeHostile, ReadsATextOfLineBreaksAsNothing) {
    TYamlTree tree;
    tree.setYaml(std::string(100'000, '\n').c_str());
    EXPECT_EQ(treeText(tree), "");
}

TEST(TYamlTreeHostile, ReadsATextOfSpacesAsNothing) {
    TYamlTree tree;
    tree.setYaml(std::string(1'000'000, ' ').c_str());
    EXPECT_EQ(treeText(tree), "");
}

TEST(TYamlTreeHostile, ReadsLinesOfSpacesAsAValueWithoutName) {
    std::string text;
    for (int i = 0; i < 1000; ++i) {
        text += std::string(static_cast<std::size_t>(i), ' ') + '\n';
    }
    TYamlTree tree;
    tree.setYaml(text.c_str());
    EXPECT_EQ(treeText(tree), "=\n");
}

TEST(TYamlTreeHostile, ReadsALineOfAMegabyte) {
    constexpr std::size_t kMegabyte = 1U << 20U;
    const std::string longText(kMegabyte, 'x');
    TYamlTree tree;
    tree.setYaml(("---\na: " + longText + "\n" + longText + ": b\n").c_str());
    EXPECT_EQ(tree.value("a").size(), kMegabyte);
    EXPECT_EQ(tree.value(QString::fromStdString(longText)), "b");
}

TEST(TYamlTreeHostile, ReadsAMegabyteOfSeparators) {
    std::string separators;
    for (int i = 0; i < 500'000; ++i) {
        separators += ": ";
    }
    TYamlTree tree;
    tree.setYaml(("---\n" + separators + "\nL:\n - " + separators + "\n").c_str());
    EXPECT_EQ(treeText(tree), "=\nL:\nL/:\n");
}

TEST(TYamlTreeHostile, ReadsAMegabyteOfIndentationBeforeAndAfterEveryLine) {
    const std::string spaces(1U << 20U, ' ');
    TYamlTree tree;
    tree.setYaml(("---\n" + spaces + "a: 1\nB:\n" + spaces + "- c: 2\nd: 3\n").c_str());
    EXPECT_EQ(treeText(tree), "a=1\nd=3\nB:\nB/2:\n");
}

// Entries in the same column nest too, which keeps the text's size linear.
TEST(TYamlTreeHostile, NestsTwoHundredThousandLevelsAndIsDestroyed) {
    constexpr int kLevels = 200'000;
    std::string text = "---\n";
    for (int i = 0; i < kLevels; ++i) {
        text += "- a: 0\n";
    }
    text += "- b: 1\nc: 2\n";
    TYamlTree tree;
    tree.setYaml(text.c_str());
    EXPECT_EQ(depthOf(tree), kLevels + 1);
    tree.setYaml(text.c_str());
    EXPECT_EQ(depthOf(tree), kLevels + 1);
    tree.clear();
    EXPECT_EQ(depthOf(tree), 0);
    tree.setYaml(text.c_str());
}

TEST(TYamlTreeHostile, NestsSectionsOneLevelPerColumn) {
    constexpr int kLevels = 2'000;
    std::string text = "---\n";
    for (int i = 0; i < kLevels; ++i) {
        text += std::string(static_cast<std::size_t>(i), ' ') + "a:\n";
    }
    text += std::string(kLevels, ' ') + "b: 1\nc: 2\n";
    TYamlTree tree;
    tree.setYaml(text.c_str());
    EXPECT_EQ(depthOf(tree), kLevels);
    EXPECT_EQ(tree.value("c"), "2");
}

TEST(TYamlTreeHostile, StopsAtTheZeroThatEndsTheText) {
    const std::string text("---\na: 1\n\0b: 2\n", 15);
    TYamlTree tree;
    tree.setYaml(text.c_str());
    EXPECT_EQ(treeText(tree), "a=1\n");
}
