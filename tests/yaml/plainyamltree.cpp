#include "tests/yaml/plainyamltree.h"

#include <QStringList>

namespace {

int indentationOf(const QString& line, bool& isListItem) {
    int spaces = 0;
    while (spaces < line.size() && line.at(spaces) == ' ') {
        ++spaces;
    }
    if (spaces == line.size()) {
        return 0;
    }
    isListItem = line.at(spaces) == '-';
    return isListItem ? spaces + 1 : spaces;
}

bool isSection(const QStringList& lines, qsizetype index, qsizetype end) {
    if (index + 1 == end) {
        return false;
    }
    bool isListItem = false;
    const int indentation = indentationOf(lines.at(index), isListItem);
    const QString& next = lines.at(index + 1);
    if (next.isEmpty() || next.count(' ') == next.size()) {
        return false;
    }
    bool nextIsListItem = false;
    return indentationOf(next, nextIsListItem) > indentation && !isListItem;
}

}  // namespace

void PlainYamlTree::setYaml(const char* yaml) {
    const QStringList lines = QString::fromLatin1(yaml).split('\n');
    const qsizetype end = lines.size() - 1;
    TStringTree* node = this;
    int current = 0;
    bool previousWasSection = false;
    bool isListItem = false;
    for (qsizetype i = 1; i < end; ++i) {
        const QString& line = lines.at(i);
        if (line.isEmpty()) {
            continue;
        }
        const int indentation = indentationOf(line, isListItem);
        bool asSection = false;
        bool asListItem = false;
        if (indentation < current) {
            for (; current != indentation; --current) {
                node = node->hasParent() ? node->parent() : node;
            }
            asListItem = isListItem;
            asSection = !asListItem && isSection(lines, i, end);
        } else {
            asSection = isSection(lines, i, end);
            asListItem = !asSection && isListItem;
            if (asSection && previousWasSection && node->hasParent() && indentation == current) {
                ++m_adjoiningSections;
                node = node->parent();
            }
        }
        if (asSection) {
            QString key = line.trimmed();
            key.chop(1);
            node = key.isEmpty() ? node : node->addSub(key);
        } else if (asListItem) {
            node = node->addSub(line.split(": ").last().trimmed());
        } else {
            const QStringList parts = line.split(": ");
            node->set(parts.at(0).trimmed(), parts.size() > 1 ? parts.at(1) : QString(""));
        }
        current = indentation;
        previousWasSection = asSection;
    }
}
