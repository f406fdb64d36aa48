#include "tests/benchmarks/sameresults.h"

#include "tests/support/printqt.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace fastpath {

using testing::AssertionFailure;
using testing::AssertionResult;
using testing::AssertionSuccess;
using TLM::SDK::Channel;
using TLM::SDK::DynamicData;
using TLM::SDK::Lap;

namespace {

bool isSameToTheBit(double left, double right) {
    return std::bit_cast<std::uint64_t>(left) == std::bit_cast<std::uint64_t>(right);
}

AssertionResult differ(const QString& name, const QVariant& left, const QVariant& right) {
    return AssertionFailure() << name.toStdString() << ": " << left.typeName() << ' '
                              << left.toString().toStdString() << " and " << right.typeName() << ' '
                              << right.toString().toStdString();
}

AssertionResult areSameChannels(const QString& name, const Channel& left, const Channel& right) {
    if (left.unit() != right.unit()) {
        return AssertionFailure() << name.toStdString() << " differs in its unit";
    }
    if (left.samples.size() != right.samples.size()) {
        return AssertionFailure() << name.toStdString() << " has " << left.samples.size() << " and "
                                  << right.samples.size() << " entries";
    }
    for (qsizetype i = 0; i < left.samples.size(); ++i) {
        if (!isSameToTheBit(left.sample(i), right.sample(i))) {
            return differ(name, left.sample(i), right.sample(i)) << " at " << i;
        }
    }
    return AssertionSuccess();
}

}  // namespace

bool isSameToTheBit(const QVariant& left, const QVariant& right) {
    if (left.metaType() != right.metaType()) {
        return false;
    }
    switch (left.typeId()) {
        case QMetaType::Bool:
        case QMetaType::Int:
        case QMetaType::ULongLong:
        case QMetaType::Float:
        case QMetaType::Double:
            return std::memcmp(left.constData(), right.constData(),
                               static_cast<std::size_t>(left.metaType().sizeOf())) == 0;
        default:
            return left == right;
    }
}

AssertionResult haveSameValues(const DynamicData& left, const DynamicData& right) {
    if (left.data().size() != right.data().size()) {
        return AssertionFailure() << left.data().size() << " and " << right.data().size()
                                  << " values";
    }
    auto other = right.data().cbegin();
    for (auto it = left.data().cbegin(); it != left.data().cend(); ++it, ++other) {
        if (it.key() != other.key()) {
            return AssertionFailure()
                   << "names " << it.key().toStdString() << " and " << other.key().toStdString();
        }
        if (it->unit() != other->unit() || !isSameToTheBit(it->value, other->value)) {
            return differ(it.key(), it->value, other->value);
        }
    }
    return AssertionSuccess();
}

AssertionResult haveSameChannels(const Lap& left, const Lap& right) {
    if (left.channels().keys() != right.channels().keys()) {
        return AssertionFailure() << "channels " << left.channels().size() << " and "
                                  << right.channels().size();
    }
    for (auto it = left.channels().cbegin(); it != left.channels().cend(); ++it) {
        const AssertionResult same =
            areSameChannels(it.key(), *it.value(), *right.channel(it.key()));
        if (!same) {
            return same;
        }
    }
    return AssertionSuccess();
}

AssertionResult areSameLaps(const Lap& left, const Lap& right) {
    const auto header = [](const Lap& lap) {
        return QStringList{lap.carId(),
                           lap.driverName(),
                           lap.carName(),
                           lap.trackName(),
                           lap.trackConfig(),
                           lap.sessionId().toString(),
                           lap.lapTime().toString(Qt::ISODateWithMs),
                           QString::number(lap.lapInSession()),
                           QString::number(lap.lapInStint()),
                           QString::number(lap.stintInSession()),
                           QString::number(static_cast<int>(lap.session())),
                           QString::number(static_cast<int>(lap.lapType())),
                           QString::number(static_cast<int>(lap.completed())),
                           QString::number(static_cast<int>(lap.detailedTelemetry()))};
    };
    if (header(left) != header(right)) {
        return AssertionFailure() << "headers " << header(left).join(u'|').toStdString() << " and "
                                  << header(right).join(u'|').toStdString();
    }
    const AssertionResult sameValues = haveSameValues(left.values(), right.values());
    return sameValues ? haveSameChannels(left, right) : sameValues;
}

}  // namespace fastpath
