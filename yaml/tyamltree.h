#pragma once

#include "yaml/tstringtree.h"

#include <QList>
#include <QString>

/**
 * Reads the simulator's session information into the tree of which it is the root.
 *
 * There are no errors: every text gives a tree, with odd keys if it does not follow the subset
 * below. No text makes the reader go above the root, recurse or take more than linear time.
 *
 * This is not a YAML parser. It reads what the simulator writes, line by line, one level of the
 * tree per column of indentation (a list's dash counts as a column):
 * - `Key: value` is a text of the current node, up to a second ": ";
 * - `Key:` before a deeper line opens the child `Key`;
 * - `- Field: value` opens a child named by the value, so that a list's entries can be reached by
 * path; the field itself is not stored.
 *
 * It supports no quotes, no comments, no flow style, no multi-line text, no anchors and no second
 * document, and tabs are ordinary characters. It ignores the first line (the document's start) and
 * any text after the last line break.
 */
class TYamlTree : public TStringTree {
public:
    TYamlTree();

    /**
     * Parses the zero-terminated Latin-1 text `yaml`; null counts as an empty text. The tree is not
     * emptied first: values are replaced, nodes reused, and entries missing from the new text stay.
     */
    void setYaml(const char* yaml);

    /**
     * Indentation of a line: its leading spaces, plus one if a dash follows. Sets `isListItem` to
     * whether it does. A line of spaces only has indentation 0 and leaves `isListItem` alone.
     */
    static int countLeadingSpaces(const QString& line, bool& isListItem);

    /**
     * Whether `line` opens a section: it is not a list item, and the line after it, before `end`,
     * is not blank and indented deeper.
     */
    static bool isNewSection(const QList<QString>::iterator& line,
                             const QList<QString>::iterator& end);
};
