#include "benchmarks/obvious/texttree.h"

#include <memory>

namespace obvious {

TextTree::TextTree(TextTree* parent) : m_parent(parent) {}

// Without recursion: a text can nest deeper than the stack.
TextTree::~TextTree() {
    QList<TextTree*> subs = m_subs.values();
    while (!subs.isEmpty()) {
        const std::unique_ptr<TextTree> sub(subs.takeLast());
        subs += sub->m_subs.values();
        sub->m_subs.clear();
    }
}

QString TextTree::value(const QString& key) const {
    return m_values.value(key);
}

TextTree* TextTree::sub(const QString& key) const {
    return m_subs.value(key, nullptr);
}

void TextTree::set(const QString& key, const QString& value) {
    m_values.insert(key, value);
}

TextTree* TextTree::addSub(const QString& key) {
    if (!m_subs.contains(key)) {
        m_subs.insert(key, new TextTree(this));
    }
    return m_subs.value(key);
}

const TextTree* TextTree::pathSub(const QString& path) const {
    const TextTree* node = this;
    const QStringList parts = path.split(u'/');
    for (const QString& part : parts) {
        node = node->sub(part);
        if (node == nullptr) {
            return nullptr;
        }
    }
    return node;
}

QString TextTree::pathValue(const QString& path) const {
    const TextTree* node = this;
    const QStringList parts = path.split(u'/');
    for (qsizetype i = 0; i + 1 < parts.size(); ++i) {
        node = node->sub(parts[i]);
        if (node == nullptr) {
            return {};
        }
    }
    return node->value(parts.last());
}

QStringList TextTree::subTreesKeys() const {
    return m_subs.keys();
}

QStringList TextTree::valueKeys() const {
    return m_values.keys();
}

int TextTree::countLeadingSpaces(const QString& line, bool& isListItem) {
    for (int i = 0; i < line.size(); ++i) {
        if (line[i] != u' ') {
            isListItem = line[i] == u'-';
            return isListItem ? i + 1 : i;
        }
    }
    return 0;
}

bool TextTree::isNewSection(const Line& line, const Line& end) {
    const Line next = line + 1;
    if (next == end) {
        return false;
    }
    bool isListItem = false;
    const int indentation = countLeadingSpaces(*line, isListItem);
    if (next->count(u' ') == next->size()) {
        return false;
    }
    bool nextIsListItem = false;
    return countLeadingSpaces(*next, nextIsListItem) > indentation && !isListItem;
}

void TextTree::setYaml(const char* yaml) {
    QStringList lines = QString::fromLatin1(yaml).split(u'\n');
    const QString separator = QStringLiteral(": ");
    const Line end = lines.end() - 1;
    TextTree* node = this;
    int currentIndentation = 0;
    bool afterSection = false;
    bool isListItem = false;
    if (lines.size() < 2) {
        return;
    }
    for (Line line = lines.begin() + 1; line != end; ++line) {
        if (line->isEmpty()) {
            continue;
        }
        const int indentation = countLeadingSpaces(*line, isListItem);
        bool isSection = isNewSection(line, end);
        bool isListEntry = isListItem;
        if (indentation < currentIndentation) {
            for (; currentIndentation > indentation && node->m_parent != nullptr;
                 --currentIndentation) {
                node = node->m_parent;
            }
            isSection = isSection && !isListEntry;
        } else if (isSection) {
            isListEntry = false;
            if (afterSection && node->m_parent != nullptr && indentation == currentIndentation) {
                node = node->m_parent;
            }
        }
        if (isSection) {
            const QString key = line->trimmed().chopped(line->trimmed().isEmpty() ? 0 : 1);
            if (!key.isEmpty()) {
                node = node->addSub(key);
            }
        } else if (isListEntry) {
            node = node->addSub(line->split(separator).last().trimmed());
        } else {
            const QStringList parts = line->split(separator);
            node->set(parts[0].trimmed(), parts.size() > 1 ? parts[1] : QString(""));
        }
        currentIndentation = indentation;
        afterSection = isSection;
    }
}

}  // namespace obvious
