#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace obvious {

/**
 * The session-info tree in the obvious way: maps of texts, paths split into lists, the text split
 * into lines and every line into its parts. It gives the same tree as TYamlTree, which is measured
 * and tested against it.
 */
class TextTree {
public:
    explicit TextTree(TextTree* parent = nullptr);
    ~TextTree();
    TextTree(const TextTree&) = delete;
    TextTree& operator=(const TextTree&) = delete;

    [[nodiscard]] QString value(const QString& key) const;
    [[nodiscard]] TextTree* sub(const QString& key) const;
    void set(const QString& key, const QString& value);
    TextTree* addSub(const QString& key);

    [[nodiscard]] const TextTree* pathSub(const QString& path) const;
    [[nodiscard]] QString pathValue(const QString& path) const;

    [[nodiscard]] QStringList subTreesKeys() const;
    [[nodiscard]] QStringList valueKeys() const;

    void setYaml(const char* yaml);

private:
    using Line = QStringList::iterator;

    static int countLeadingSpaces(const QString& line, bool& isListItem);
    static bool isNewSection(const Line& line, const Line& end);

    QMap<QString, QString> m_values;
    QMap<QString, TextTree*> m_subs;
    TextTree* m_parent;
};

}  // namespace obvious
