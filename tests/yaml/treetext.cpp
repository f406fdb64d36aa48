#include "tests/yaml/treetext.h"

QString treeText(const TStringTree& tree, const QString& path) {
    QString text;
    for (const QString& key : tree.valueKeys()) {
        text += path + key + '=' + tree.value(key) + '\n';
    }
    for (const QString& key : tree.subTreesKeys()) {
        text += path + key + ":\n" + treeText(*tree.sub(key), path + key + '/');
    }
    return text;
}
