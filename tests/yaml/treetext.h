#pragma once

#include <QString>

/**
 * The whole tree as a text, a line for every value ("<path>/key=value") and for every node
 * ("<path>/key:"), each level's values before its nodes. For trees of a few levels: it recurses.
 */
template <typename Tree>
QString treeText(const Tree& tree, const QString& path = QString()) {
    QString text;
    for (const QString& key : tree.valueKeys()) {
        text += path + key + '=' + tree.value(key) + '\n';
    }
    for (const QString& key : tree.subTreesKeys()) {
        text += path + key + ":\n" + treeText(*tree.sub(key), path + key + '/');
    }
    return text;
}
