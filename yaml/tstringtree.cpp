#include "yaml/tstringtree.h"

#include <utility>

namespace {

// A path split before its last part: the nodes to walk, each with its slash, and the name in the
// last of them.
struct SplitPath {
    QStringView nodes;
    QStringView name;
};

SplitPath splitPath(QStringView path) {
    const qsizetype nameAt = path.lastIndexOf(u'/') + 1;
    return {path.first(nameAt), path.sliced(nameAt)};
}

// Removes the first part and its slash from `nodes`, which ends with a slash.
QStringView takeFirstPart(QStringView& nodes) {
    const qsizetype slash = nodes.indexOf(u'/');
    const QStringView part = nodes.first(slash);
    nodes = nodes.sliced(slash + 1);
    return part;
}

const TStringTree* walk(const TStringTree* node, QStringView nodes) {
    while (node != nullptr && !nodes.isEmpty()) {
        node = node->sub(takeFirstPart(nodes));
    }
    return node;
}

}  // namespace

TStringTree::TStringTree(TStringTree* parent) : m_parent(parent) {
    const bool isBranch = parent == nullptr || !parent->hasParent();
    m_revision = parent == nullptr ? &m_ownRevision : parent->m_revision;
    m_branchRevision = isBranch ? &m_ownRevision : parent->m_branchRevision;
}

TStringTree::~TStringTree() {
    clear();
}

void TStringTree::noteChange() {
    ++*m_revision;
    *m_branchRevision = *m_revision;
}

// Deletes leaf by leaf and goes back through the parents: a text can nest far deeper than the call
// stack allows, and nothing here can fail.
void TStringTree::clear() {
    TStringTree* node = this;
    while (node != this || !m_subs.isEmpty()) {
        if (!node->m_subs.isEmpty() && node->m_subs.last() != nullptr) {
            node = node->m_subs.last().get();
            continue;
        }
        if (node->m_subs.isEmpty()) {
            node = node->m_parent;
        }
        // The last one is empty by now, or null because there was no memory for it.
        node->m_subs.removeLast();
        node->noteChange();
    }
}

QString TStringTree::value(QStringView key) const {
    const QString* const found = m_values.find(key);
    return found == nullptr ? QString() : *found;
}

const TStringTree* TStringTree::sub(QStringView key) const {
    const std::unique_ptr<TStringTree>* const found = m_subs.find(key);
    return found == nullptr ? nullptr : found->get();
}

TStringTree* TStringTree::sub(QStringView key) {
    return const_cast<TStringTree*>(std::as_const(*this).sub(key));
}

void TStringTree::set(const QString& key, const QString& value) {
    const auto [text, isNew] = m_values.findOrAdd(key);
    if (isNew || text != value || text.isNull() != value.isNull()) {
        text = value;
        noteChange();
    }
}

void TStringTree::set(QStringView key, QStringView value) {
    const auto [text, isNew] =
        m_values.findOrAdd(key, m_elder == nullptr ? nullptr : &m_elder->m_values);
    if (isNew || text != value) {
        text = value.toString();
        noteChange();
    }
}

TStringTree* TStringTree::addSub(const QString& key) {
    return addSub(QStringView(key));
}

TStringTree* TStringTree::addSub(QStringView key) {
    const TStringTree* const elder = m_subs.isEmpty() ? nullptr : m_subs.last().get();
    std::unique_ptr<TStringTree>& child =
        m_subs.findOrAdd(key, m_elder == nullptr ? nullptr : &m_elder->m_subs).entry;
    if (child == nullptr) {
        child = std::make_unique<TStringTree>(this);
        child->m_elder = elder;
        child->noteChange();
    }
    return child.get();
}

const TStringTree* TStringTree::pathSub(const QString& path) const {
    const auto [nodes, name] = splitPath(path);
    const TStringTree* const node = walk(this, nodes);
    return node == nullptr ? nullptr : node->sub(name);
}

TStringTree* TStringTree::pathSub(const QString& path) {
    return const_cast<TStringTree*>(std::as_const(*this).pathSub(path));
}

QString TStringTree::pathValue(const QString& path) const {
    const auto [nodes, name] = splitPath(path);
    const TStringTree* const node = walk(this, nodes);
    return node == nullptr ? QString() : node->value(name);
}

void TStringTree::pathSet(const QString& path, const QString& value) {
    auto [nodes, name] = splitPath(path);
    TStringTree* node = this;
    while (!nodes.isEmpty()) {
        node = node->addSub(takeFirstPart(nodes));
    }
    node->set(name.toString(), value);
}

QStringList TStringTree::subTreesKeys() const {
    return m_subs.sortedNames();
}

QStringList TStringTree::valueKeys() const {
    return m_values.sortedNames();
}
