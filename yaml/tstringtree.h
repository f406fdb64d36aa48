#pragma once

#include "yaml/namedlist.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <cstdint>
#include <memory>

/**
 * A tree whose nodes hold named texts and named children, both listed in the order of their names
 * (case-sensitive, by UTF-16 code units).
 *
 * Nothing here reports an error: a missing text is a null text, a missing node a null pointer.
 *
 * The parts of a path are separated by slashes, "DriverInfo/Drivers/7/UserName". Every slash
 * separates: a leading, trailing or doubled one names the empty key, and the empty path is a single
 * empty part.
 *
 * A node owns its children; pointers to them are valid until clear() or the node's end. Not
 * thread-safe.
 */
class TStringTree {
public:
    /** An empty node under `parent`, which is not owned; null for a root. */
    explicit TStringTree(TStringTree* parent);
    virtual ~TStringTree();

    // Children point back at their parent, so a node stays where it is.
    TStringTree(const TStringTree&) = delete;
    TStringTree& operator=(const TStringTree&) = delete;

    /** Deletes all children; the node's own values stay. */
    void clear();

    bool hasParent() const { return m_parent != nullptr; }
    TStringTree* parent() const { return m_parent; }

    /** The text under `key`, or a null text. */
    QString value(const QString& key) const { return value(QStringView(key)); }
    QString value(QStringView key) const;

    /** The child under `key`, or null. */
    TStringTree* sub(const QString& key) { return sub(QStringView(key)); }
    const TStringTree* sub(const QString& key) const { return sub(QStringView(key)); }
    TStringTree* sub(QStringView key);
    const TStringTree* sub(QStringView key) const;

    /** Stores `value` under `key`. An equal text is left alone. */
    void set(const QString& key, const QString& value);
    /** The same for slices: copies neither key nor value when nothing changes. */
    void set(QStringView key, QStringView value);

    /** The child under `key`, created if missing. */
    TStringTree* addSub(const QString& key);
    TStringTree* addSub(QStringView key);

    /** The node that `path` leads to, or null. */
    TStringTree* pathSub(const QString& path);
    const TStringTree* pathSub(const QString& path) const;

    /** The text at `path`, whose last part is the text's key, or a null text. */
    QString pathValue(const QString& path) const;

    /** Stores `value` at `path`, creating the nodes on the way. */
    void pathSet(const QString& path, const QString& value);

    /**
     * A number that grows with every change anywhere in this node's tree, so that whatever is
     * derived from the tree need not be derived again while nothing has changed.
     */
    std::uint64_t revision() const { return *m_revision; }

    /**
     * The tree's revision at the last change in this node's branch, which begins at a child of the
     * root. For the root it is revision().
     */
    std::uint64_t branchRevision() const { return *m_branchRevision; }

    /** Keys of the children in ascending order. */
    QStringList subTreesKeys() const;
    /** Keys of the texts in ascending order. */
    QStringList valueKeys() const;

private:
    void noteChange();

    NamedList<QString> m_values;
    NamedList<std::unique_ptr<TStringTree>> m_subs;
    TStringTree* m_parent;
    // The sibling that came before: the entries of a list mostly have the same keys.
    const TStringTree* m_elder = nullptr;
    std::uint64_t m_ownRevision = 0;  // of the tree in its root, of the branch in the root's child
    std::uint64_t* m_revision;
    std::uint64_t* m_branchRevision;
};
