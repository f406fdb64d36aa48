#pragma once

#include "sdk/lap.h"

#include <QList>
#include <QStandardItemModel>
#include <QString>

namespace rataip::viewer {

/** Names a channel of a lap. A recorded and a calculated channel may have the same name. */
struct ChannelName {
    QString name;
    bool isCalculated = false;

    bool operator==(const ChannelName&) const = default;
};

/** The channel of that name and kind, or null when the lap does not have it. */
[[nodiscard]] QSharedPointer<TLM::SDK::Channel> channelOf(TLM::SDK::Lap& lap,
                                                          const ChannelName& name);

/**
 * The channels of a lap with their units and check boxes, grouped into recorded and calculated
 * ones.
 */
class ChannelList : public QStandardItemModel {
    Q_OBJECT

public:
    explicit ChannelList(const TLM::SDK::Lap& lap, QObject* parent = nullptr);

    /** The ticked channels in the order in which they were ticked. */
    [[nodiscard]] const QList<ChannelName>& chosen() const { return m_chosen; }

    /** Ticks or unticks a channel. Does nothing when the lap does not have it. */
    void choose(const ChannelName& name, bool isChosen);

    /** Ticks exactly these channels, in this order. Emits chosenChanged() at most once. */
    void chooseOnly(const QList<ChannelName>& names);

signals:
    void chosenChanged();

private:
    void addGroup(const QString& heading, const QStringList& names, const QStringList& units,
                  bool isCalculated);
    void onItemChanged(const QStandardItem* item);

    QList<ChannelName> m_chosen;
    bool m_isTicking = false;  // within chooseOnly(), which emits the signal itself
};

}  // namespace rataip::viewer
