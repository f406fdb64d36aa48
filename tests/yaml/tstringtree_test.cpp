#include "yaml/tstringtree.h"

#include "tests/support/printqt.h"
#include "tests/yaml/treetext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

static_assert(!std::is_copy_constructible_v<TStringTree>);
static_assert(!std::is_move_constructible_v<TStringTree>);
static_assert(std::has_virtual_destructor_v<TStringTree>);

TEST(TStringTree, StartsEmptyUnderItsParent) {
    TStringTree root(nullptr);
    EXPECT_FALSE(root.hasParent());
    EXPECT_EQ(root.parent(), nullptr);
    EXPECT_TRUE(root.valueKeys().isEmpty());
    EXPECT_TRUE(root.subTreesKeys().isEmpty());
    const TStringTree child(&root);
    EXPECT_TRUE(child.hasParent());
    EXPECT_EQ(child.parent(), &root);
    EXPECT_TRUE(root.subTreesKeys().isEmpty()) << "a child is known once addSub() has made it";
}

TEST(TStringTree, StoresAndReplacesValues) {
    TStringTree tree(nullptr);
    tree.set("key", "one");
    EXPECT_EQ(tree.value("key"), "one");
    tree.set("key", "two");
    EXPECT_EQ(tree.value("key"), "two");
    EXPECT_EQ(tree.valueKeys(), QStringList({"key"}));
}

TEST(TStringTree, StoresAndReplacesSlices) {
    TStringTree tree(nullptr);
    tree.set(QStringView(u"key"), QStringView(u"one"));
    EXPECT_EQ(tree.value(QStringView(u"key")), "one");
    tree.set(QStringView(u"key"), QStringView(u"two"));
    EXPECT_EQ(tree.value("key"), "two");
    EXPECT_EQ(tree.valueKeys(), QStringList({"key"}));
}

TEST(TStringTree, DoesNotReplaceAnEqualValue) {
    TStringTree tree(nullptr);
    tree.set("key", "one");
    const QString held = tree.value("key");
    tree.set(QStringView(u"key"), QStringView(u"one"));
    EXPECT_EQ(tree.value("key").constData(), held.constData());
    tree.set(QString("key"), QString("one"));
    EXPECT_EQ(tree.value("key").constData(), held.constData());
}

TEST(TStringTree, GivesANullTextForAMissingKey) {
    TStringTree tree(nullptr);
    tree.set("empty", "");
    EXPECT_TRUE(tree.value("missing").isNull());
    EXPECT_FALSE(tree.value("empty").isNull());
    EXPECT_TRUE(tree.value("empty").isEmpty());
}

TEST(TStringTree, GivesNullForAMissingChild) {
    TStringTree tree(nullptr);
    tree.set("key", "a value is not a child");
    EXPECT_EQ(tree.sub("key"), nullptr);
    EXPECT_EQ(std::as_const(tree).sub("key"), nullptr);
}

TEST(TStringTree, GivesTheSameChildForTheSameKey) {
    TStringTree tree(nullptr);
    TStringTree* const child = tree.addSub("child");
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->parent(), &tree);
    child->set("key", "value");
    EXPECT_EQ(tree.addSub("child"), child);
    EXPECT_EQ(tree.addSub(QStringView(u"child")), child);
    EXPECT_EQ(tree.sub("child"), child);
    EXPECT_EQ(std::as_const(tree).sub("child"), child);
    EXPECT_EQ(child->value("key"), "value");
}

TEST(TStringTree, ComparesKeysWithCaseAndListsThemByCodeUnits) {
    TStringTree tree(nullptr);
    for (const QString& key : {QString("b"), QString("A"), QString("a"), QString(QChar(0xE4)),
                               QString("ab"), QString("")}) {
        tree.set(key, "x");
        tree.addSub(key);
    }
    const QStringList expected{"", "A", "a", "ab", "b", QString(QChar(0xE4))};
    EXPECT_EQ(tree.valueKeys(), expected);
    EXPECT_EQ(tree.subTreesKeys(), expected);
}

TEST(TStringTree, ClearDeletesTheChildrenAndKeepsTheValues) {
    TStringTree tree(nullptr);
    tree.set("key", "value");
    tree.pathSet("a/b/c", "deep");
    tree.pathSet("a/d/c", "deep");
    tree.pathSet("e", "beside");
    tree.clear();
    EXPECT_TRUE(tree.subTreesKeys().isEmpty());
    EXPECT_EQ(tree.value("key"), "value");
    EXPECT_EQ(tree.value("e"), "beside");
    EXPECT_EQ(tree.pathSub("a/b"), nullptr);
}

TEST(TStringTree, ClearOfANodeLeavesItsParentAndSiblings) {
    TStringTree tree(nullptr);
    tree.pathSet("a/b/c", "1");
    tree.pathSet("a/x", "2");
    tree.pathSet("d/e", "3");
    tree.sub("a")->clear();
    EXPECT_EQ(treeText(tree), "a:\na/x=2\nd:\nd/e=3\n");
}

TEST(TStringTreePath, LeadsToNodes) {
    TStringTree tree(nullptr);
    TStringTree* const driver = tree.addSub("DriverInfo")->addSub("Drivers")->addSub("7");
    EXPECT_EQ(tree.pathSub("DriverInfo/Drivers/7"), driver);
    EXPECT_EQ(std::as_const(tree).pathSub("DriverInfo/Drivers/7"), driver);
    EXPECT_EQ(tree.pathSub("DriverInfo"), tree.sub("DriverInfo"));
    EXPECT_EQ(tree.pathSub("DriverInfo/Drivers/8"), nullptr);
    EXPECT_EQ(tree.pathSub("DriverInfo/Teams/7"), nullptr);
    EXPECT_EQ(tree.pathSub("driverInfo"), nullptr);
    EXPECT_EQ(tree.pathSub("DriverInfo/Drivers/7/UserName"), nullptr);
}

TEST(TStringTreePath, NamesTheEmptyKeyByAnEmptyPart) {
    TStringTree tree(nullptr);
    EXPECT_EQ(tree.pathSub(""), nullptr);
    EXPECT_EQ(tree.pathSub(QString()), nullptr);
    TStringTree* const empty = tree.addSub("");
    EXPECT_EQ(tree.pathSub(""), empty);
    EXPECT_EQ(tree.pathSub(QString()), empty);
    EXPECT_EQ(tree.pathSub("/"), nullptr);
    TStringTree* const below = empty->addSub("");
    EXPECT_EQ(tree.pathSub("/"), below);
    TStringTree* const inner = tree.addSub("a")->addSub("")->addSub("b");
    EXPECT_EQ(tree.pathSub("a//b"), inner);
    EXPECT_EQ(tree.pathSub("/a"), nullptr);
    EXPECT_EQ(tree.pathSub("a/"), inner->parent());
}

TEST(TStringTreePath, ReadsValues) {
    TStringTree tree(nullptr);
    tree.set("one", "1");
    tree.addSub("a")->addSub("b")->set("c", "3");
    EXPECT_EQ(tree.pathValue("one"), tree.value("one"));
    EXPECT_EQ(tree.pathValue("a/b/c"), "3");
    EXPECT_TRUE(tree.pathValue("two").isNull());
    EXPECT_TRUE(tree.pathValue("a/b/d").isNull());
    EXPECT_TRUE(tree.pathValue("a/x/c").isNull());
    EXPECT_TRUE(tree.pathValue("x/b/c").isNull());
    EXPECT_TRUE(tree.pathValue("a/b").isNull()) << "a node is not a value";
    EXPECT_TRUE(tree.pathValue("").isNull());
    tree.set("", "nameless");
    EXPECT_EQ(tree.pathValue(""), "nameless");
    EXPECT_EQ(tree.pathValue(QString()), "nameless");
}

TEST(TStringTreePath, SetsValuesAndCreatesTheNodesOnTheWay) {
    TStringTree tree(nullptr);
    tree.pathSet("one", "1");
    tree.pathSet("a/b/c", "3");
    TStringTree* const node = tree.pathSub("a/b");
    tree.pathSet("a/b/c", "4");
    tree.pathSet("a//d", "5");
    tree.pathSet("e/", "6");
    EXPECT_EQ(tree.pathSub("a/b"), node);
    EXPECT_EQ(treeText(tree), "one=1\na:\na/:\na//d=5\na/b:\na/b/c=4\ne:\ne/=6\n");
}

TEST(TStringTree, IsDestroyedWithoutRecursionAtAnyDepth) {
    constexpr int kLevels = 200'000;
    TStringTree tree(nullptr);
    for (int round = 0; round < 2; ++round) {
        TStringTree* node = &tree;
        for (int i = 0; i < kLevels; ++i) {
            node->addSub("beside");
            node = node->addSub("below");
        }
        if (round == 0) {
            tree.clear();
            EXPECT_TRUE(tree.subTreesKeys().isEmpty());
        }
    }
}

TEST(TStringTree, FindsEveryNameOfACrowdedNode) {
    constexpr int kNames = 500;
    TStringTree tree(nullptr);
    const auto name = [](int i) { return QString::number(i * 7919 % kNames); };
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < kNames; ++i) {
            tree.set(name(i), QString::number(round * i));
            tree.addSub(name(i))->set("name", name(i));
        }
        EXPECT_EQ(tree.valueKeys().size(), kNames);
        for (int i = 0; i < kNames; ++i) {
            ASSERT_EQ(tree.value(name(i)), QString::number(round * i));
            ASSERT_EQ(tree.sub(name(i))->value("name"), name(i));
        }
    }
    QStringList sorted = tree.subTreesKeys();
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(tree.subTreesKeys(), sorted);
    EXPECT_EQ(tree.value("500"), QString());
    EXPECT_EQ(tree.sub(QString("-1")), nullptr);
}

TEST(TStringTree, FindsNamesThatComeAgainInAnyOrder) {
    for (const int names : {1, 2, 5, 31, 32, 33, 34, 100}) {
        TStringTree tree(nullptr);
        for (int i = 0; i < names; ++i) {
            tree.set(QString::number(i), "");
        }
        for (int step = 1; step < 7; ++step) {
            for (int i = 0; i < names; ++i) {
                const QString name = QString::number(i * step % names);
                tree.set(QStringView(name), QStringView(name));
                ASSERT_EQ(tree.value(name), name) << names << " names, step " << step;
            }
        }
        EXPECT_EQ(tree.valueKeys().size(), names);
    }
}

TEST(TStringTree, TakesNewChildrenAfterClear) {
    TStringTree tree(nullptr);
    for (const int children : {40, 33, 32, 10, 40}) {
        for (int i = 0; i < children; ++i) {
            tree.addSub(QString::number(i))->set("i", QString::number(i));
        }
        ASSERT_EQ(tree.subTreesKeys().size(), children);
        ASSERT_EQ(tree.sub(QString::number(children - 1))->value("i"),
                  QString::number(children - 1));
        tree.clear();
        ASSERT_EQ(tree.sub(QString("0")), nullptr);
    }
}

TEST(TStringTree, SharesTheKeysOfAListsEntries) {
    TStringTree tree(nullptr);
    for (const char* const entry : {"0", "1", "2"}) {
        TStringTree* const node = tree.addSub(QString(entry));
        node->set(QStringView(u"UserName"), QStringView(u"A"));
        node->set(QStringView(u"TeamName"), QStringView(u"B"));
        node->addSub(QStringView(u"Laps"));
    }
    const auto key = [&tree](const char* entry) {
        return tree.sub(QString(entry))->valueKeys()[1];
    };
    EXPECT_EQ(key("0"), "UserName");
    EXPECT_EQ(key("0").constData(), key("1").constData());
    EXPECT_EQ(key("1").constData(), key("2").constData());
    tree.clear();
    EXPECT_TRUE(tree.subTreesKeys().isEmpty());
}

TEST(TStringTreeRevision, GrowsOnlyWithChanges) {
    TStringTree tree(nullptr);
    auto before = tree.revision();
    const auto hasGrown = [&tree, &before] {
        const bool grown = tree.revision() > before;
        before = tree.revision();
        return grown;
    };
    tree.pathSet("a/b/c", "1");
    EXPECT_TRUE(hasGrown());
    tree.pathSet("a/b/c", "1");
    tree.addSub(QString("a"));
    EXPECT_FALSE(hasGrown());
    tree.pathSet("a/b/c", "2");
    EXPECT_TRUE(hasGrown());
    tree.pathSub("a")->clear();
    EXPECT_TRUE(hasGrown());
    EXPECT_EQ(tree.branchRevision(), tree.revision());
}

TEST(TStringTreeRevision, OfABranchStaysWhileOthersChange) {
    TStringTree tree(nullptr);
    tree.pathSet("a/b/c", "1");
    tree.pathSet("d/e", "1");
    const auto ofA = tree.pathSub("a")->branchRevision();
    tree.pathSet("d/e", "2");
    tree.pathSet("f/g/h", "2");
    tree.set(QString("root"), QString("2"));
    EXPECT_EQ(tree.pathSub("a")->branchRevision(), ofA);
    EXPECT_EQ(tree.pathSub("a/b")->branchRevision(), ofA);
    tree.pathSet("a/b/c", "2");
    EXPECT_GT(tree.pathSub("a")->branchRevision(), ofA);
    EXPECT_EQ(tree.pathSub("a/b")->branchRevision(), tree.revision());
}

TEST(TStringTreeRevision, OfANewBranchIsNeverThatOfAnEarlierOne) {
    TStringTree tree(nullptr);
    const auto first = tree.addSub(QString("a"))->branchRevision();
    EXPECT_GT(first, 0U) << "0 can stand for a missing branch";
    tree.clear();
    EXPECT_GT(tree.addSub(QString("a"))->branchRevision(), first);
}
