#include "tools/viewer/lapvalues.h"

#include "tools/host/laptext.h"
#include "tools/laps/lapjson.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QVariant>

namespace rataip::viewer {

using TLM::SDK::Lap;

namespace {

void addRow(QStandardItemModel& table, const QString& name, const QString& value,
            const QString& unit) {
    QList<QStandardItem*> row;
    for (const QString& text : {name, value, unit}) {
        auto* const item = new QStandardItem(text);
        item->setEditable(false);
        row.append(item);
    }
    table.appendRow(row);
}

QString shown(const QString& field, const QJsonValue& value, const Lap& lap) {
    if (field == QLatin1String("lapTime")) {
        return host::lapTimeText(lap.lapTime());
    }
    if (value.isBool()) {
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    }
    return value.toVariant().toString();
}

}  // namespace

std::unique_ptr<QStandardItemModel> lapValues(const Lap& lap) {
    auto table = std::make_unique<QStandardItemModel>();
    table->setHorizontalHeaderLabels(
        {QStringLiteral("Name"), QStringLiteral("Value"), QStringLiteral("Unit")});
    const QJsonObject header = laps::lapHeaderJson(lap);
    for (auto field = header.constBegin(); field != header.constEnd(); ++field) {
        addRow(*table, field.key(), shown(field.key(), field.value(), lap), {});
    }
    const QStringList names = lap.valueNameList();
    for (const QString& name : names) {
        const TLM::SDK::Value value = lap.values().value(name);
        addRow(*table, name, value.value.toString(), value.unit());
    }
    return table;
}

QString lapTitle(const TLM::SDK::LapHeader& lap) {
    return QStringLiteral("%1, lap %2, %3")
        .arg(lap.driverName(), QString::number(lap.lapInSession()),
             host::lapTimeText(lap.lapTime()));
}

}  // namespace rataip::viewer
