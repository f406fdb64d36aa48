#include "tools/viewer/settings.h"

#include <QHeaderView>

namespace rataip::viewer {

namespace {

// To be increased with every other set of panes: a layout of another version is not restored.
constexpr int kLayoutVersion = 1;

constexpr char kGeometryKey[] = "window/geometry";
constexpr char kLayoutKey[] = "window/layout";
constexpr char kLapSizeKey[] = "lap/size";
constexpr char kLapSplitterKey[] = "lap/splitter";
constexpr char kLapOverTimeKey[] = "lap/overTime";
constexpr char kLapChannelsKey[] = "lap/channels";
constexpr char kLapFolderKey[] = "laps/folder";

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
    window.restoreGeometry(m_stored.value(kGeometryKey).toByteArray());
    for (const QTableView* table : tables) {
        table->horizontalHeader()->restoreState(m_stored.value(columnsKey(*table)).toByteArray());
    }
    return window.restoreState(m_stored.value(kLayoutKey).toByteArray(), kLayoutVersion);
}

void Settings::storeWindow(const QMainWindow& window, const QList<QTableView*>& tables) {
    m_stored.setValue(kGeometryKey, window.saveGeometry());
    m_stored.setValue(kLayoutKey, window.saveState(kLayoutVersion));
    for (const QTableView* table : tables) {
        m_stored.setValue(columnsKey(*table), table->horizontalHeader()->saveState());
    }
}

LapLayout Settings::lapLayout() const {
    LapLayout layout;
    layout.size = m_stored.value(kLapSizeKey).toSize();
    layout.splitter = m_stored.value(kLapSplitterKey).toByteArray();
    layout.axis =
        m_stored.value(kLapOverTimeKey).toBool() ? laps::Axis::Time : laps::Axis::Distance;
    if (m_stored.contains(kLapChannelsKey)) {
        layout.channels = fromTexts(m_stored.value(kLapChannelsKey).toStringList());
    }
    return layout;
}

void Settings::storeLapLayout(const LapLayout& layout) {
    m_stored.setValue(kLapSizeKey, layout.size);
    m_stored.setValue(kLapSplitterKey, layout.splitter);
    m_stored.setValue(kLapOverTimeKey, layout.axis == laps::Axis::Time);
    if (layout.channels) {
        m_stored.setValue(kLapChannelsKey, toTexts(*layout.channels));
    }
}

QString Settings::lapFolder() const {
    return m_stored.value(kLapFolderKey).toString();
}

void Settings::storeLapFolder(const QString& folder) {
    m_stored.setValue(kLapFolderKey, folder);
}

}  // namespace rataip::viewer
