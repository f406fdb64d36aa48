#pragma once

#include <QString>

/**
 * The whole tree as a text, with a line for each value ("<path>/key=value") and each node
 * ("<path>/key:"), each level's values before its nodes. Only for trees of a few levels: it
 * recurses.
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
