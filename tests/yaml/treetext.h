#pragma once

#include "yaml/tstringtree.h"

#include <QString>

/**
 * The whole tree as a text, a line for every value ("<path>/key=value") and for every node
 * ("<path>/key:"), each level's values before its nodes. For trees of a few levels: it recurses.
 */
QString treeText(const TStringTree& tree, const QString& path = QString());
