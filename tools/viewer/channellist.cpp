#include "tools/viewer/channellist.h"

namespace rataip::viewer {

using TLM::SDK::Channel;
using TLM::SDK::Lap;

namespace {

enum Column {
    Name,
    Unit,
};

enum Group {
    Recorded,
    Calculated,
};

}  // namespace

QSharedPointer<Channel> channelOf(Lap& lap, const ChannelName& name) {
    return name.isCalculated ? lap.calculatedChannel(name.name) : lap.channel(name.name);
}

ChannelList::ChannelList(const Lap& lap, QObject* parent) : QStandardItemModel(parent) {
    setHorizontalHeaderLabels({QStringLiteral("Channel"), QStringLiteral("Unit")});
    QStringList units;
    for (const auto& channel : lap.channels()) {
        units.append(channel->unit());
    }
    addGroup(QStringLiteral("Recorded"), lap.getAvailableRecordedChannels(), units, false);
    units.clear();
    const QStringList calculated = lap.getAvailableCalculatedChannels();
    for (const QString& name : calculated) {
        units.append(lap.calculatedChannel(name)->unit());
    }
    addGroup(QStringLiteral("Calculated"), calculated, units, true);
    connect(this, &QStandardItemModel::itemChanged, this, &ChannelList::onItemChanged);
}

void ChannelList::addGroup(const QString& heading, const QStringList& names,
                           const QStringList& units, bool isCalculated) {
    auto* const group = new QStandardItem(QStringLiteral("%1 (%2)").arg(heading).arg(names.size()));
    group->setEditable(false);
    group->setData(isCalculated, Qt::UserRole);
    for (qsizetype i = 0; i < names.size(); ++i) {
        auto* const name = new QStandardItem(names.at(i));
        name->setEditable(false);
        name->setCheckable(true);
        auto* const unit = new QStandardItem(units.at(i));
        unit->setEditable(false);
        group->appendRow({name, unit});
    }
    auto* const noUnit = new QStandardItem;
    noUnit->setEditable(false);
    appendRow({group, noUnit});
}

void ChannelList::choose(const ChannelName& name, bool isChosen) {
    const QStandardItem* const group = item(name.isCalculated ? Calculated : Recorded);
    for (int row = 0; row < group->rowCount(); ++row) {
        if (group->child(row, Name)->text() == name.name) {
            group->child(row, Name)->setCheckState(isChosen ? Qt::Checked : Qt::Unchecked);
        }
    }
}

void ChannelList::chooseOnly(const QList<ChannelName>& names) {
    const QList<ChannelName> before = m_chosen;
    m_isTicking = true;
    for (const ChannelName& name : before) {
        choose(name, false);
    }
    for (const ChannelName& name : names) {
        choose(name, true);
    }
    m_isTicking = false;
    if (m_chosen != before) {
        emit chosenChanged();
    }
}

void ChannelList::onItemChanged(const QStandardItem* item) {
    if (item->parent() == nullptr || item->column() != Name) {
        return;
    }
    const ChannelName name{item->text(), item->parent()->data(Qt::UserRole).toBool()};
    const bool isChosen = item->checkState() == Qt::Checked;
    if (isChosen == m_chosen.contains(name)) {
        return;
    }
    if (isChosen) {
        m_chosen.append(name);
    } else {
        m_chosen.removeAll(name);
    }
    if (!m_isTicking) {
        emit chosenChanged();
    }
}

}  // namespace rataip::viewer
