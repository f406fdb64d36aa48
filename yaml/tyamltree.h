#pragma once

#include "yaml/tstringtree.h"

#include <QList>
#include <QString>

/**
 * Reads the simulator's session information into the tree of which it is the root.
 *
 * There are no errors: every text gives a tree, and one that does not follow the subset below a
 * tree of odd keys. No text makes the reader go above the root, recurse or take more than linear
 * time.
 *
 * This is no YAML parser. It knows what the simulator writes, line by line, one level of the tree
 * for one column of indentation (a list's dash counts as a column):
 * - `Key: value` is a text of the current node, up to a second ": ";
 * - `Key:` before a deeper line opens the child `Key`;
 * - `- Field: value` opens a child named by the value, so that a list's entries can be reached by
 * path; the field itself is not stored. It supports no quotes, no comments, no flow style, no
 * multi-line text, no anchors, no documents after the first, and takes tabs for ordinary
 * characters. The first line (the document's start) and what follows the last line break are not
 * read.
 */
class TYamlTree : public TStringTree {
public:
    TYamlTree();

    /**
     * Parses the zero-terminated Latin-1 text `yaml`; null counts as an empty text. The tree is not
     * emptied first: values are replaced, nodes reused, and what the new text no longer has stays.
     */
    void setYaml(const char* yaml);

    /**
     * Indentation of a line: its leading spaces, and one more when a dash follows. Sets
     * `isListItem` to whether it does. A line without any other character has indentation 0 and
     * leaves `isListItem` as it is.
     */
    static int countLeadingSpaces(const QString& line, bool& isListItem);

    /**
     * Whether `line` opens a section: it is no list item and the line after it, which lies before
     * `end`, is not blank and indented deeper.
     */
    static bool isNewSection(const QList<QString>::iterator& line,
                             const QList<QString>::iterator& end);
};
