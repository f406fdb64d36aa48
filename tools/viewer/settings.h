#pragma once

#include "tools/laps/curve.h"
#include "tools/viewer/channellist.h"

#include <QByteArray>
#include <QList>
#include <QMainWindow>
#include <QSettings>
#include <QSize>
#include <QString>
#include <QTableView>

#include <optional>

namespace rataip::viewer {

/** The layout of a lap's window, which the next one to open takes over. */
struct LapLayout {
    QSize size;  // invalid when none is stored
    QByteArray splitter;
    laps::Axis axis = laps::Axis::Distance;
    std::optional<QList<ChannelName>> channels;  // no value when none are stored
};

/** What the viewer remembers between runs. Only this class knows the stored keys. */
class Settings {
public:
    /** `stored` must outlive the object. */
    explicit Settings(QSettings& stored) : m_stored(stored) {}

    /**
     * Restores the main window's size, panes and columns. False when its panes stay as they are:
     * nothing is stored, or it is damaged, or it is of a version with other panes.
     */
    bool restoreWindow(QMainWindow& window, const QList<QTableView*>& tables) const;
    void storeWindow(const QMainWindow& window, const QList<QTableView*>& tables);

    [[nodiscard]] LapLayout lapLayout() const;
    void storeLapLayout(const LapLayout& layout);

    /** The folder that laps were saved in last, or an empty text. */
    [[nodiscard]] QString lapFolder() const;
    void storeLapFolder(const QString& folder);

private:
    QSettings& m_stored;
};

}  // namespace rataip::viewer
