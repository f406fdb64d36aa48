#include "tools/viewer/settings.h"

#include <QHeaderView>

namespace rataip::viewer {

namespace {

// To be increased with every other set of panes: a layout of another version is not restored.
constexpr int layoutVersion = 1;

constexpr char geometryKey[] = "window/geometry";
constexpr char layoutKey[] = "window/layout";
constexpr char lapSizeKey[] = "lap/size";
constexpr char lapSplitterKey[] = "lap/splitter";
constexpr char lapOverTimeKey[] = "lap/overTime";
constexpr char lapChannelsKey[] = "lap/channels";
constexpr char lapFolderKey[] = "laps/folder";

QString columnsKey(const QWidget& table) {
    return QStringLiteral("window/columns/") + table.objectName();
}

QString calculatedMark() {
    return QStringLiteral("calculated:");
}

QStringList toTexts(const QList<ChannelName>& names) {
    QStringList texts;
    for (const ChannelName& name : names) {
        texts.append(name.isCalculated ? calculatedMark() + name.name : name.name);
    }
    return texts;
}

QList<ChannelName> fromTexts(const QStringList& texts) {
    QList<ChannelName> names;
    for (const QString& text : texts) {
        const bool isCalculated = text.startsWith(calculatedMark());
        names.append({isCalculated ? text.mid(calculatedMark().size()) : text, isCalculated});
    }
    return names;
}

}  // namespace

bool Settings::restoreWindow(QMainWindow& window, const QList<QTableView*>& tables) const {
    window.restoreGeometry(m_stored.value(geometryKey).toByteArray());
    for (const QTableView* table : tables) {
        table->horizontalHeader()->restoreState(m_stored.value(columnsKey(*table)).toByteArray());
    }
    return window.restoreState(m_stored.value(layoutKey).toByteArray(), layoutVersion);
}

void Settings::storeWindow(const QMainWindow& window, const QList<QTableView*>& tables) {
    m_stored.setValue(geometryKey, window.saveGeometry());
    m_stored.setValue(layoutKey, window.saveState(layoutVersion));
    for (const QTableView* table : tables) {
        m_stored.setValue(columnsKey(*table), table->horizontalHeader()->saveState());
    }
}

LapLayout Settings::lapLayout() const {
    LapLayout layout;
    layout.size = m_stored.value(lapSizeKey).toSize();
    layout.splitter = m_stored.value(lapSplitterKey).toByteArray();
    layout.axis = m_stored.value(lapOverTimeKey).toBool() ? laps::Axis::Time : laps::Axis::Distance;
    if (m_stored.contains(lapChannelsKey)) {
        layout.channels = fromTexts(m_stored.value(lapChannelsKey).toStringList());
    }
    return layout;
}

void Settings::storeLapLayout(const LapLayout& layout) {
    m_stored.setValue(lapSizeKey, layout.size);
    m_stored.setValue(lapSplitterKey, layout.splitter);
    m_stored.setValue(lapOverTimeKey, layout.axis == laps::Axis::Time);
    if (layout.channels) {
        m_stored.setValue(lapChannelsKey, toTexts(*layout.channels));
    }
}

QString Settings::lapFolder() const {
    return m_stored.value(lapFolderKey).toString();
}

void Settings::storeLapFolder(const QString& folder) {
    m_stored.setValue(lapFolderKey, folder);
}

}  // namespace rataip::viewer
