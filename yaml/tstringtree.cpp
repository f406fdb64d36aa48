#include "yaml/tstringtree.h"

#include <utility>

namespace {

// A path cut before its last part: the nodes to walk, each followed by its slash, and the name
// within the last of them.
struct SplitPath {
    QStringView nodes;
    QStringView name;
};

SplitPath splitPath(QStringView path) {
    const qsizetype nameAt = path.lastIndexOf(u'/') + 1;
    return {path.first(nameAt), path.sliced(nameAt)};
}

// Takes the first part and its slash off `nodes`, which ends with a slash.
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

template <typename Map>
QStringList keysOf(const Map& map) {
    QStringList keys;
    keys.reserve(static_cast<qsizetype>(map.size()));
    for (const auto& entry : map) {
        keys.append(entry.first);
    }
    return keys;
}

}  // namespace

TStringTree::TStringTree(TStringTree* parent)
    : m_parent(parent), m_revision(parent == nullptr ? &m_ownRevision : parent->m_revision) {}

TStringTree::~TStringTree() {
    clear();
}

// Deletes leaf by leaf, finding its way by the parents: a text can nest far deeper than the call
// stack reaches, and there is nothing here that could fail.
void TStringTree::clear() {
    TStringTree* node = this;
    while (node != this || !m_subs.empty()) {
        if (!node->m_subs.empty()) {
            node = node->m_subs.begin()->second.get();
        } else {
            node = node->m_parent;
            node->m_subs.erase(node->m_subs.begin());
            ++*m_revision;
        }
    }
}

QString TStringTree::value(QStringView key) const {
    const auto found = m_values.find(key);
    return found == m_values.end() ? QString() : found->second;
}

const TStringTree* TStringTree::sub(QStringView key) const {
    const auto found = m_subs.find(key);
    return found == m_subs.end() ? nullptr : found->second.get();
}

TStringTree* TStringTree::sub(QStringView key) {
    return const_cast<TStringTree*>(std::as_const(*this).sub(key));
}

void TStringTree::set(const QString& key, const QString& value) {
    const auto found = m_values.lower_bound(key);
    if (found == m_values.end() || found->first != key) {
        m_values.emplace_hint(found, key, value);
        ++*m_revision;
    } else if (found->second != value || found->second.isNull() != value.isNull()) {
        found->second = value;
        ++*m_revision;
    }
}

void TStringTree::set(QStringView key, QStringView value) {
    const auto found = m_values.lower_bound(key);
    if (found == m_values.end() || found->first != key) {
        m_values.emplace_hint(found, key.toString(), value.toString());
        ++*m_revision;
    } else if (found->second != value) {
        found->second = value.toString();
        ++*m_revision;
    }
}

TStringTree* TStringTree::addSub(const QString& key) {
    return addSub(QStringView(key));
}

TStringTree* TStringTree::addSub(QStringView key) {
    auto found = m_subs.lower_bound(key);
    if (found == m_subs.end() || found->first != key) {
        found = m_subs.emplace_hint(found, key.toString(), std::make_unique<TStringTree>(this));
        ++*m_revision;
    }
    return found->second.get();
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
    return keysOf(m_subs);
}

QStringList TStringTree::valueKeys() const {
    return keysOf(m_values);
}
