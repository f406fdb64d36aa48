#pragma once

#include "sdk/lap.h"

#include <QList>
#include <QStandardItemModel>
#include <QString>

namespace rataip::viewer {

/** A channel of a lap by its name and kind: the same name may be both. */
struct ChannelName {
    QString name;
    bool isCalculated = false;

    bool operator==(const ChannelName&) const = default;
};

/** The channel of that name and kind; null when the lap has none. */
[[nodiscard]] QSharedPointer<TLM::SDK::Channel> channelOf(TLM::SDK::Lap& lap,
                                                          const ChannelName& name);

/**
 * The channels of a lap with their units, the recorded and the calculated ones each below a heading
 * of their own; each may be ticked.
 */
class ChannelList : public QStandardItemModel {
    Q_OBJECT

public:
    explicit ChannelList(const TLM::SDK::Lap& lap, QObject* parent = nullptr);

    /** The channels ticked, in the order in which they were. */
    [[nodiscard]] const QList<ChannelName>& chosen() const { return m_chosen; }

    /** Ticks or unticks a channel; one that the lap lacks is left out. */
    void choose(const ChannelName& name, bool isChosen);

    /** Ticks these channels, in this order, and no others; told once for all of them. */
    void chooseOnly(const QList<ChannelName>& names);

signals:
    void chosenChanged();

private:
    void addGroup(const QString& heading, const QStringList& names, const QStringList& units,
                  bool isCalculated);
    void onItemChanged(const QStandardItem* item);

    QList<ChannelName> m_chosen;
    bool m_isTicking = false;  // several channels, one after the other
};

}  // namespace rataip::viewer
