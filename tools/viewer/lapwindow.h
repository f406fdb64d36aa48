#pragma once

#include "tools/laps/curve.h"
#include "tools/viewer/channellist.h"
#include "tools/viewer/laplistmodel.h"
#include "tools/viewer/outcomeline.h"
#include "tools/viewer/plotpanel.h"
#include "tools/viewer/settings.h"

#include <QComboBox>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QList>
#include <QMainWindow>
#include <QSharedPointer>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QTabWidget>
#include <QTreeView>
#include <QVBoxLayout>

namespace rataip::viewer {

/** A shortcut and what it does. */
struct KeyText {
    QKeySequence shortcut;
    QString text;

    bool operator==(const KeyText&) const = default;
};

/**
 * Shows a lap: a list of its channels to search and tick, plots of the ticked ones over distance or
 * time, optionally with a second lap to compare with, and a table of its header and values.
 *
 * Plots show every reading unchanged, in the channel's own unit. A channel that the second lap does
 * not have is plotted for the first lap only. A plot stays empty when the lap has no distance or
 * time.
 */
class LapWindow : public QMainWindow {
    Q_OBJECT

public:
    using LapPointer = LapStore::LapPointer;

    /** `laps` are offered for comparison and must outlive the window. */
    LapWindow(const LapPointer& lap, const LapListModel& laps, QWidget* parent = nullptr);

    void setAxis(laps::Axis axis);
    /** Plots a second lap over the first; null removes it. */
    void compareWith(const LapPointer& other);

    /**
     * Applies the layout of the lap window closed last, and stores this window's layout when it is
     * closed. The settings must outlive the window.
     */
    void rememberLayoutIn(Settings& settings);

    /** Shows the result of saving. */
    void showOutcome(const QString& sentence);

    /** The shortcuts that every lap window has. */
    [[nodiscard]] static QList<KeyText> keys();

    [[nodiscard]] ChannelList& channels() { return *m_channels; }
    [[nodiscard]] const QList<PlotPanel*>& panels() const { return m_panels; }
    [[nodiscard]] const LapPointer& lap() const { return m_lap; }

signals:
    void saveRequested(const QSharedPointer<TLM::SDK::Lap>& lap);

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QAction* addCommand(const QString& text, const QKeySequence& shortcut);
    void makeCommands();
    QWidget* makeChannelPane();
    QWidget* makePlotPane();
    QWidget* makeValuesPane();
    void chooseDefaultChannels();
    [[nodiscard]] bool hasChannel(const ChannelName& name) const;
    [[nodiscard]] QList<ChannelName> channelsToHandOn() const;
    void offerLap(const LapPointer& other);
    void offerLaps(int first, int last);
    void withdrawReleasedLaps();
    [[nodiscard]] int placeOf(const LapPointer& other) const;
    [[nodiscard]] bool isOfSameCar(const LapPointer& other) const;
    void rebuildPanels();
    void drawPanels();
    void describeLines();

    LapPointer m_lap;
    LapPointer m_other;
    const LapListModel& m_laps;
    laps::Axis m_axis = laps::Axis::Distance;
    ChannelList* m_channels;
    QSortFilterProxyModel* m_found;
    QTreeView* m_tree = nullptr;
    QLineEdit* m_search = nullptr;
    QComboBox* m_others = nullptr;
    QLabel* m_legend = nullptr;
    OutcomeLine* m_outcome = nullptr;
    QTabWidget* m_tabs = nullptr;
    QSplitter* m_splitter = nullptr;
    QVBoxLayout* m_panelLayout = nullptr;
    QAction* m_overDistance = nullptr;
    QAction* m_overTime = nullptr;
    QList<PlotPanel*> m_panels;  // one for each channel chosen, owned by their layout's widget
    Settings* m_settings = nullptr;
    QList<ChannelName> m_handedOn;  // chosen in the last window; this lap may lack some
};

}  // namespace rataip::viewer
