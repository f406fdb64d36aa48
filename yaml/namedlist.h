#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

/**
 * Entries by name, each name once.
 *
 * They are kept in the order in which they were added. A text that is read again names them in that
 * order, so findOrAdd() mostly finds an entry right after the last one, with one comparison.
 */
template <typename Entry>
class NamedList {
public:
    /** Null for a name that is not there. */
    [[nodiscard]] const Entry* find(QStringView name) const {
        const std::size_t index = indexOf(name);
        return index == m_items.size() ? nullptr : &m_items[index].entry;
    }

    /** An entry, and whether it was just added. The reference is valid until the next call. */
    struct Found {
        Entry& entry;
        bool isNew;
    };

    /**
     * The entry under `name`; adds a default one if there is none. `model` is a list that probably
     * has the same names in the same order: a new entry then shares the text of its name. After
     * running out of memory, a list can only be destroyed.
     */
    Found findOrAdd(QStringView name, const NamedList* model = nullptr) {
        if (m_next >= m_items.size()) {
            m_next = 0;
        }
        std::size_t index = m_next;
        if (m_items.empty() || m_items[index].name != name) {
            index = indexOf(name);
        }
        m_next = index + 1;
        const bool isNew = index == m_items.size();
        if (isNew) {
            add(model == nullptr ? name.toString() : model->sharedName(index, name));
        }
        return {m_items[index].entry, isNew};
    }

    /** All names in ascending order, by UTF-16 code units. */
    [[nodiscard]] QStringList sortedNames() const {
        QStringList names;
        names.reserve(static_cast<qsizetype>(m_items.size()));
        for (const Item& item : m_items) {
            names.append(item.name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    [[nodiscard]] bool isEmpty() const { return m_items.empty(); }

    /** The entry that was added last, which must exist. */
    [[nodiscard]] Entry& last() { return m_items.back().entry; }

    void removeLast() {
        m_indexes.remove(m_items.back().name);
        m_items.pop_back();
    }

private:
    struct Item {
        QString name;
        Entry entry;
    };

    // Up to this many names are searched linearly, which needs no memory.
    static constexpr std::size_t kMaxScannedItems = 32;

    [[nodiscard]] std::size_t indexOf(QStringView name) const {
        if (m_items.size() > kMaxScannedItems) {
            const auto found = m_indexes.constFind(name);
            return found == m_indexes.cend() ? m_items.size() : *found;
        }
        const auto found = std::find_if(m_items.begin(), m_items.end(), [name](const Item& item) {
            return QStringView(item.name) == name;
        });
        return static_cast<std::size_t>(found - m_items.begin());
    }

    [[nodiscard]] QString sharedName(std::size_t index, QStringView name) const {
        const bool isThere = index < m_items.size() && m_items[index].name == name;
        return isThere ? m_items[index].name : name.toString();
    }

    void add(QString name) {
        m_items.push_back({std::move(name), Entry()});
        if (m_items.size() == kMaxScannedItems + 1) {
            for (std::size_t i = 0; i < m_items.size(); ++i) {
                m_indexes.insert(m_items[i].name, i);
            }
        } else if (m_items.size() > kMaxScannedItems) {
            m_indexes.insert(m_items.back().name, m_items.size() - 1);
        }
    }

    std::vector<Item> m_items;
    QHash<QStringView, std::size_t>
        m_indexes;           // empty while there are few; the items own the names
    std::size_t m_next = 0;  // after the entry found last
};
