#include "yaml/tyamltree.h"

#include <QStringView>

#include <iterator>
#include <optional>

namespace {

constexpr qsizetype kSeparatorLength = 2;

// The place of the first ": " in `text`, or -1. Most texts have one colon, and a search for a
// single character is many times faster than one for two.
qsizetype firstSeparator(QStringView text) {
    qsizetype colon = text.indexOf(u':');
    while (colon >= 0 && colon + 1 < text.size() && text[colon + 1] != u' ') {
        colon = text.indexOf(u':', colon + 1);
    }
    return colon + 1 < text.size() ? colon : -1;
}

// A line and its indentation.
struct Line {
    explicit Line(QStringView lineText) : text(lineText) {
        while (leadingSpaces < text.size() && text[leadingSpaces] == u' ') {
            ++leadingSpaces;
        }
        isBlank = leadingSpaces == text.size();
        hasDash = !isBlank && text[leadingSpaces] == u'-';
    }

    qsizetype indentation() const {
        if (isBlank) {
            return 0;
        }
        return hasDash ? leadingSpaces + 1 : leadingSpaces;
    }

    QStringView text;
    qsizetype leadingSpaces = 0;
    bool isBlank;
    bool hasDash;
};

// No section opens before a blank line, which has no indentation.
bool opensSection(const Line& line, const Line& following) {
    return !line.hasDash && following.indentation() > line.indentation();
}

// Gives the lines that end with a line break; text after the last break is not a line.
class ClosedLines {
public:
    explicit ClosedLines(QStringView text) : m_rest(text) {}

    std::optional<Line> next() {
        const qsizetype end = m_rest.indexOf(u'\n');
        if (end < 0) {
            return std::nullopt;
        }
        const Line line(m_rest.first(end));
        m_rest = m_rest.sliced(end + 1);
        return line;
    }

private:
    QStringView m_rest;
};

class TreeBuilder {
public:
    explicit TreeBuilder(TStringTree* root) : m_node(root) {}

    // `following` is the line after `line`, if there is one.
    //
    // A section line is always followed by a deeper line. So two sections at the same level need no
    // step up between them: the lines of the first are in between.
    void take(const Line& line, const std::optional<Line>& following) {
        if (line.text.isEmpty()) {
            return;
        }
        // A line of spaces is of the same kind as the line before it.
        if (!line.isBlank) {
            m_isListItem = line.hasDash;
        }
        const bool climbs = line.indentation() < m_indentation;
        const bool isSection = following && opensSection(line, *following);
        climbTo(line.indentation());
        m_indentation = line.indentation();

        // Only a line of spaces can be both; then it depends on whether the line climbs.
        if (isSection && !(climbs && m_isListItem)) {
            openSection(line.text);
        } else if (m_isListItem) {
            openListEntry(line.text);
        } else {
            storeValue(line.text);
        }
    }

private:
    // One level per column. If one line was indented by several columns, the way back leads higher
    // than where it began, at most to the root.
    void climbTo(qsizetype indentation) {
        for (; m_indentation > indentation && m_node->hasParent(); --m_indentation) {
            m_node = m_node->parent();
        }
    }

    void openSection(QStringView line) {
        const QStringView name = line.trimmed();
        if (name.size() > 1) {
            m_node = m_node->addSub(name.chopped(1));
        }
    }

    void openListEntry(QStringView line) {
        const qsizetype separator = line.lastIndexOf(u": ");
        const QStringView key = separator < 0 ? line : line.sliced(separator + kSeparatorLength);
        m_node = m_node->addSub(key.trimmed());
    }

    void storeValue(QStringView line) {
        const qsizetype separator = firstSeparator(line);
        if (separator < 0) {
            m_node->set(line.trimmed(), u"");
            return;
        }
        const QStringView rest = line.sliced(separator + kSeparatorLength);
        const qsizetype secondSeparator = firstSeparator(rest);
        m_node->set(line.first(separator).trimmed(),
                    secondSeparator < 0 ? rest : rest.first(secondSeparator));
    }

    TStringTree* m_node;
    qsizetype m_indentation = 0;
    bool m_isListItem = false;
};

}  // namespace

TYamlTree::TYamlTree() : TStringTree(nullptr) {}

void TYamlTree::setYaml(const char* yaml) {
    const QString text = QString::fromLatin1(yaml);
    ClosedLines lines(text);
    const std::optional<Line> documentStart = lines.next();
    if (!documentStart) {
        return;
    }
    TreeBuilder builder(this);
    for (std::optional<Line> line = lines.next(); line;) {
        const std::optional<Line> following = lines.next();
        builder.take(*line, following);
        line = following;
    }
}

int TYamlTree::countLeadingSpaces(const QString& line, bool& isListItem) {
    const Line shape(line);
    if (!shape.isBlank) {
        isListItem = shape.hasDash;
    }
    return static_cast<int>(shape.indentation());
}

bool TYamlTree::isNewSection(const QList<QString>::iterator& line,
                             const QList<QString>::iterator& end) {
    if (line == end || std::next(line) == end) {
        return false;
    }
    return opensSection(Line(*line), Line(*std::next(line)));
}
