#include "yaml/tyamltree.h"

#include "tests/support/printqt.h"
#include "tests/yaml/treetext.h"

#include <QList>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

// The tree of `body` between a document's start and its end.
QString parsed(const std::string& body) {
    TYamlTree tree;
    tree.setYaml(("---\n" + body + "...").c_str());
    return treeText(tree);
}

int indentationOf(const QString& line, bool& isListItem) {
    return TYamlTree().countLeadingSpaces(line, isListItem);
}

// Whether the first of `lines` opens a section.
bool opensSection(QList<QString> lines) {
    return TYamlTree().isNewSection(lines.begin(), lines.end());
}

struct Example {
    const char* body;
    const char* tree;
};

/** A rule of the reader, as a sentence, with examples. */
struct Rule {
    const char* name;
    std::vector<Example> examples;
};

void PrintTo(const Rule& rule, std::ostream* out) {
    *out << rule.name;
}

const Rule kRules[] = {
    {"ReadsTheSimulatorsLayout",
     {{"DriverInfo:\n"
       " DriverCarIdx: 3\n"
       " Drivers:\n"
       " - CarIdx: 0\n"
       "   UserName: A\n"
       " - CarIdx: 3\n"
       "   UserName: B\n",
       "DriverInfo:\n"
       "DriverInfo/DriverCarIdx=3\n"
       "DriverInfo/Drivers:\n"
       "DriverInfo/Drivers/0:\n"
       "DriverInfo/Drivers/0/UserName=A\n"
       "DriverInfo/Drivers/3:\n"
       "DriverInfo/Drivers/3/UserName=B\n"}}},
    {"StoresAValueUpToASecondSeparator",
     {{"a: b: c: d\n", "a=b\n"},
      {"a:: b\n", "a:=b\n"},
      {"a: b:c\n", "a=b:c\n"},
      {"a: : c\n", "a=\n"},
      {": b\n", "=b\n"}}},
    {"TrimsKeysButNotValues",
     {{"a  : b  \n", "a=b  \n"},
      {"a:  b \r\n", "a= b \r\n"},
      {"\ta\t: b\t\n", "a=b\t\n"},
      // A no-break space counts as white space in a key.
      {"\xA0 a: b\n", "a=b\n"}}},
    {"KeepsACarriageReturnOutOfKeysOnly",
     {// After trimming, the colon is the section line's last character.
      {"A:\r\n b: 1\r\n", "A:\nA/b=1\r\n"},
      {"L:\r\n- i: 5\r\n", "L:\nL/5:\n"},
      // A line that is only a carriage return is not an empty line.
      {"\r\n", "=\n"}}},
    {"CutsTheLastCharacterOffASectionsName",
     {{"Name\n b: 1\n", "Nam:\nNam/b=1\n"}, {"a: 5\n b: 1\n", "a: :\na: /b=1\n"}}},
    {"StaysInTheNodeForASectionWithoutAName",
     {{":\n b: 1\n", "b=1\n"},
      {"A:\n x: 1\n :\n  b: 1\n", "A:\nA/b=1\nA/x=1\n"},
      {"\t\n b: 1\n", "b=1\n"},
      {"   \n b: 1\n", "b=1\n"}}},
    {"ReusesASectionOfTheSameName", {{"A:\n b: 1\nA:\n c: 2\n", "A:\nA/b=1\nA/c=2\n"}}},
    {"SkipsEmptyLines", {{"A:\n b: 1\n\n c: 2\n\n\nd: 3\n", "d=3\nA:\nA/b=1\nA/c=2\n"}}},
    {"OpensNoSectionBeforeAnEmptyLine", {{"A:\n\n b: 1\n", "A:=\nb=1\n"}}},
    {"GoesUpOneNodePerColumnForALineFurtherOut",
     {{"A:\n B:\n  C:\n   d: 1\n e: 2\nf: 3\n", "f=3\nA:\nA/e=2\nA/B:\nA/B/C:\nA/B/C/d=1\n"}}},
    {"OpensASectionFurtherOut",
     {{"A:\n B:\n  c: 1\n D:\n  e: 2\nF:\n g: 3\n",
       "A:\nA/B:\nA/B/c=1\nA/D:\nA/D/e=2\nF:\nF/g=3\n"}}},
    {"OpensAListEntryFurtherOut",
     {{"L:\n - i: 0\n   S:\n    a: 1\n - i: 1\n   b: 2\n",
       "L:\nL/0:\nL/0/S:\nL/0/S/a=1\nL/1:\nL/1/b=2\n"}}},
    {"KeysAListEntryByTheTextAfterItsLastSeparator",
     {{"L:\n - a: b: c \n", "L:\nL/c:\n"},
      {"L:\n - a: \n", "L:\nL/:\n"},
      {"L:\n - : x\n", "L:\nL/x:\n"}}},
    {"KeysAListEntryWithoutSeparatorByItselfWithItsDash",
     {{"L:\n - item \n", "L:\nL/- item:\n"}, {"L:\n -\n", "L:\nL/-:\n"}, {"-a:\n", "-a::\n"}}},
    // Two entries in the same column: the second is opened within the first, because nothing
    // climbs.
    {"NestsListEntriesWithoutFieldsOfTheirOwn", {{"L:\n- i: 0\n- i: 1\n", "L:\nL/0:\nL/0/1:\n"}}},
    {"TakesADeeperListEntryForAnEntryNotASection",
     {{"L:\n- i: 0\n     b: 1\n", "L:\nL/0:\nL/0/b=1\n"}}},
    // One node is opened for three columns, and the way back climbs three nodes, at most to the
    // root.
    {"DoesNotBalanceADeepJump",
     {{"A:\n B:\n     c: 1\n d: 2\ne: 3\n", "d=2\ne=3\nA:\nA/B:\nA/B/c=1\n"},
      {"A:\n B:\n  C:\n   D:\n     e: 1\n   f: 2\n",
       "A:\nA/B:\nA/B/f=2\nA/B/C:\nA/B/C/D:\nA/B/C/D/e=1\n"}}},
    {"StopsClimbingAtTheRoot", {{"         a: 1\nb: 2\nC:\n d: 3\n", "a=1\nb=2\nC:\nC/d=3\n"}}},
    // A list directly below a top-level section, with one leading blank: the line of spaces counts
    // as
    // an entry without indentation and climbs to the root, where it adds a child without a name.
    {"TakesALineOfSpacesAfterAListEntryForAnEntryWithoutName",
     {{"L:\n - i: 0\n   \nb: 1\n", ":\n/b=1\nL:\nL/0:\n"}}},
    {"ClimbsByColumnsAtALineOfSpaces",
     {// As many nodes as columns: up to the root.
      {"A:\n L:\n  - i: 0\n  \n", ":\nA:\nA/L:\nA/L/0:\n"},
      // More nodes than columns: it stays within the list.
      {"L:\n- i: 0\n  \n", "L:\nL/:\nL/0:\n"},
      // More columns than nodes: the root ends the climb.
      {"L:\n     - i: 0\n  \n", ":\nL:\nL/0:\n"}}},
    {"TakesALineOfSpacesAfterAValueForAValueWithoutName",
     {{"A:\n b: 1\n  \nc: 2\n", "=\nc=2\nA:\nA/b=1\n"}}},
    {"TakesALineOfSpacesBeforeADeeperLineForASectionWithoutName",
     {{"A:\n b: 1\n  \n c: 2\n", "c=2\nA:\nA/b=1\n"}}},
    // Further out, a line that could be both is a list entry, not a section.
    {"TakesALineOfSpacesAfterAnEntryForAnEntryThoughADeeperLineFollows",
     {{"L:\n - i: 0\n  \n c: 2\n", ":\n/c=2\nL:\nL/0:\n"}}},
    // At the same indentation, such a line is a section, not a list entry.
    {"TakesASecondLineOfSpacesForASectionWhereADeeperLineFollows",
     {{"L:\n - i: 0\n  \n  \n c: 2\n", ":\n/c=2\nL:\nL/0:\n"},
      {"L:\n - i: 0\n  \n  \nc: 2\n", ":\n/:\n//c=2\nL:\nL/0:\n"}}},
    {"KeepsTheListFlagOverEmptyLines", {{"L:\n - i: 0\n\n\n   \nb: 1\n", ":\n/b=1\nL:\nL/0:\n"}}},
    {"TakesALineOfTabsForAValue", {{"A:\n b: 1\n\t\t\n", "=\nA:\nA/b=1\n"}}},
};

}  // namespace

TEST(CountLeadingSpaces, CountsSpacesBeforeTheFirstOtherCharacter) {
    bool isListItem = true;
    EXPECT_EQ(indentationOf("key: value", isListItem), 0);
    EXPECT_FALSE(isListItem);
    EXPECT_EQ(indentationOf("   key: value  ", isListItem), 3);
    EXPECT_FALSE(isListItem);
}

TEST(CountLeadingSpaces, CountsAListsDashAsAColumn) {
    bool isListItem = false;
    EXPECT_EQ(indentationOf("- a", isListItem), 1);
    EXPECT_TRUE(isListItem);
    isListItem = false;
    EXPECT_EQ(indentationOf("  -", isListItem), 3);
    EXPECT_TRUE(isListItem);
    EXPECT_EQ(indentationOf("  a - b", isListItem), 2);
    EXPECT_FALSE(isListItem);
}

TEST(CountLeadingSpaces, TakesTabsForOrdinaryCharacters) {
    bool isListItem = true;
    EXPECT_EQ(indentationOf("\t  key", isListItem), 0);
    EXPECT_FALSE(isListItem);
    EXPECT_EQ(indentationOf(" \t- key", isListItem), 1);
    EXPECT_FALSE(isListItem);
    EXPECT_EQ(indentationOf(QString(QChar(0xA0)) + "key", isListItem), 0);
}

TEST(CountLeadingSpaces, LeavesTheListFlagOfABlankLineAsItWas) {
    for (const bool before : {true, false}) {
        for (const QString& line : {QString(), QString(""), QString("   ")}) {
            bool isListItem = before;
            EXPECT_EQ(indentationOf(line, isListItem), 0);
            EXPECT_EQ(isListItem, before);
        }
    }
}

TEST(IsNewSection, IsTrueBeforeADeeperLine) {
    EXPECT_TRUE(opensSection({"a:", " b: 1"}));
    EXPECT_TRUE(opensSection({" a:", "   b: 1"}));
    EXPECT_FALSE(opensSection({"a:", "b: 1"}));
    EXPECT_FALSE(opensSection({" a:", "b: 1"}));
    EXPECT_TRUE(opensSection({"no colon", " b: 1"}));
}

TEST(IsNewSection, IsFalseBeforeTheEnd) {
    EXPECT_FALSE(opensSection({"a:"}));
    QList<QString> lines{"a:", " b: 1"};
    EXPECT_FALSE(TYamlTree().isNewSection(lines.begin(), lines.begin() + 1));
    EXPECT_FALSE(TYamlTree().isNewSection(lines.end(), lines.end()));
}

TEST(IsNewSection, IsFalseBeforeABlankLine) {
    EXPECT_FALSE(opensSection({"a:", ""}));
    EXPECT_FALSE(opensSection({"a:", "     "}));
}

TEST(IsNewSection, CountsTheDashOfTheNextLine) {
    EXPECT_TRUE(opensSection({"a:", "- b"}));
    EXPECT_TRUE(opensSection({" a:", " - b"}));
    EXPECT_FALSE(opensSection({" a:", "- b"}));
    EXPECT_FALSE(opensSection({"  a:", " - b"}));
}

TEST(IsNewSection, IsFalseForAListItem) {
    EXPECT_FALSE(opensSection({"- a:", "    b: 1"}));
    EXPECT_FALSE(opensSection({" - a", "      b: 1"}));
}

TEST(IsNewSection, TakesALineOfSpacesForAnUnindentedLine) {
    EXPECT_TRUE(opensSection({"     ", " b"}));
    EXPECT_FALSE(opensSection({"     ", "b"}));
    EXPECT_TRUE(opensSection({"", "- b"}));
}

class TYamlTreeBy : public ::testing::TestWithParam<Rule> {};

TEST_P(TYamlTreeBy, Rule) {
    for (const Example& example : GetParam().examples) {
        EXPECT_EQ(parsed(example.body), example.tree) << example.body;
    }
}

INSTANTIATE_TEST_SUITE_P(Every, TYamlTreeBy, ::testing::ValuesIn(kRules),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(TYamlTree, KeysAListEntryByItsFirstValueWithoutStoringIt) {
    TYamlTree tree;
    tree.setYaml("---\nDrivers:\n- CarIdx: 7\n  UserName: A\n");
    ASSERT_NE(tree.pathSub("Drivers/7"), nullptr);
    EXPECT_TRUE(tree.pathValue("Drivers/7/CarIdx").isNull());
    EXPECT_EQ(tree.pathValue("Drivers/7/UserName"), "A");
}

TEST(TYamlTree, IsARootWithoutParent) {
    const TYamlTree tree;
    EXPECT_FALSE(tree.hasParent());
}

TEST(TYamlTree, ReadsNothingFromNullAndFromTextsWithoutClosedLines) {
    for (const char* text :
         {static_cast<const char*>(nullptr), "", "a: 1", "a: 1\n", "a: 1\nb: 2"}) {
        TYamlTree tree;
        tree.setYaml(text);
        EXPECT_EQ(treeText(tree), "") << (text == nullptr ? "null" : text);
    }
}

TEST(TYamlTree, IgnoresTheFirstLineAndWhatFollowsTheLastBreak) {
    TYamlTree tree;
    tree.setYaml("first: 1\nb: 2\nlast: 3");
    EXPECT_EQ(treeText(tree), "b=2\n");
}

TEST(TYamlTree, DoesNotTakeTheTextAfterTheLastBreakForANextLine) {
    TYamlTree tree;
    tree.setYaml("---\nA:\n b: 1");
    EXPECT_EQ(treeText(tree), "A:=\n") << "a section needs a deeper line that is read";
}

TEST(TYamlTree, ReadsEachByteAsOneLatin1Character) {
    TYamlTree tree;
    tree.setYaml("---\nName: Zo\xC3\xAB\xFF\n\xE9: x\n");
    EXPECT_EQ(tree.value("Name"), QString("Zo") + QChar(0xC3) + QChar(0xAB) + QChar(0xFF));
    EXPECT_EQ(tree.value(QString(QChar(0xE9))), "x");
}

TEST(TYamlTree, StoresALineWithoutSeparatorUnderItselfWithAnEmptyText) {
    TYamlTree tree;
    tree.setYaml("---\n text\r\nempty:\nblank: \n");
    EXPECT_EQ(tree.valueKeys(), QStringList({"blank", "empty:", "text"}));
    EXPECT_TRUE(tree.value("text").isEmpty());
    EXPECT_FALSE(tree.value("text").isNull());
    EXPECT_FALSE(tree.value("blank").isNull());
}

TEST(TYamlTreeAgain, ReplacesValuesAndReusesNodes) {
    TYamlTree tree;
    tree.setYaml("---\nA:\n b: 1\n c: 2\n");
    TStringTree* const node = tree.sub("A");
    tree.setYaml("---\nA:\n b: 3\n");
    EXPECT_EQ(tree.sub("A"), node);
    EXPECT_EQ(treeText(tree), "A:\nA/b=3\nA/c=2\n");
}

TEST(TYamlTreeAgain, KeepsADriverThatTheNewTextLacks) {
    TYamlTree tree;
    tree.setYaml("---\nD:\n - i: 0\n   n: A\n - i: 1\n   n: B\n");
    tree.setYaml("---\nD:\n - i: 1\n   n: C\n");
    EXPECT_EQ(treeText(tree), "D:\nD/0:\nD/0/n=A\nD/1:\nD/1/n=C\n");
}

TEST(TYamlTreeAgain, StartsAtTheRootAsANewTreeDoes) {
    TYamlTree tree;
    tree.setYaml("---\nA:\n - i: 0\n");
    tree.setYaml("---\n   \nb: 1\n");
    EXPECT_EQ(treeText(tree), "=\nb=1\nA:\nA/0:\n");
}

TEST(TYamlTreeAgain, EmptiesAValueThatNoLongerHasAText) {
    TYamlTree tree;
    tree.setYaml("---\na: 1\n");
    tree.setYaml("---\na: \n");
    EXPECT_EQ(tree.value("a"), "");
}

TEST(TYamlTreeAgain, DoesNotReplaceEqualTexts) {
    const char* const text = "---\nA:\n b: some text\n";
    TYamlTree tree;
    tree.setYaml(text);
    const QString held = tree.pathValue("A/b");
    tree.setYaml(text);
    EXPECT_EQ(tree.pathValue("A/b").constData(), held.constData());
}
