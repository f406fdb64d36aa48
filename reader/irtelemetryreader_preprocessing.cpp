#include "reader/debuglines.h"
#include "reader/irtelemetryreader.h"
#include "reader/zeroreadings.h"
#include "sdk/shared.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using TLM::SDK::Channel;
using TLM::SDK::Lap;

namespace {

// A lap whose first reading lies before this part of the lap starts at the line.
constexpr double lapStartDistance = 0.01;

/**
 * Adds the north offset to the heading. The offset is stored as "YawOffset" and the heading is
 * recorded as "yaw", so that neither is found under the names asked for here and both reach the
 * host as they are, which is what hosts are used to.
 */
void correctYaw(Lap& lap) {
    const double offset = lap.value(u"yawOffset"_s).value.toDouble();
    if (const auto yaw = lap.channel(u"Yaw"_s)) {
        for (double& reading : yaw->samples) {
            reading += offset;
        }
    }
    // Asked first, because the values are shared with other laps and removing copies them.
    if (lap.containsValue(u"yawOffset"_s)) {
        lap.removeValue(u"yawOffset"_s);
    }
}

void addChannel(Lap& lap, const QString& name, const QList<double>& samples,
                const QString& unit = {}) {
    const auto channel = TLM::SDK::makeShared<Channel>();
    channel->samples = samples;
    channel->setUnit(unit);
    lap.addChannel(channel, name);
}

void addFuelWeight(Lap& lap) {
    const auto level = lap.channel(u"fuellevel"_s);
    const double density = lap.value(u"Kg per fuel litre"_s).value.toDouble();
    if (level == nullptr || !reader::isDensity(density)) {
        return;
    }
    QList<double> weight(level->samples.size());
    std::transform(level->samples.cbegin(), level->samples.cend(), weight.begin(),
                   [density](double reading) { return reading * density; });
    addChannel(lap, u"fuelweight"_s, weight, u"kg"_s);
}

void renamePercentUnits(Lap& lap) {
    for (const auto& channel : lap.channels()) {
        if (channel->unit() == "%"_L1) {
            channel->setUnit(u"pu"_s);
        }
    }
}

LapCourse courseAlong(const QList<double>& clock, const QList<double>& fractions, qsizetype count,
                      double kilometres) {
    LapCourse course(kilometres);
    course.expect(count);
    for (qsizetype i = 0; i < count; ++i) {
        course.add(clock[i], fractions[i]);
    }
    return course;
}

}  // namespace

void iRTelemetryReader::preprocessLap(int car) {
    // The course is the lap's as long as nobody else could change its channels.
    if (m_cars[car].lap->areChannelsSeen()) {
        m_cars[car].course.spoil();
    }
    deriveChannels(car);
    reader::writeDebugLines(takeDebugLines());
}

void iRTelemetryReader::deriveChannels(int car) {
    Lap& lap = *m_cars[car].lap;
    correctYaw(lap);
    addFuelWeight(lap);
    renamePercentUnits(lap);
    if (needsCourse(car)) {
        addTimeAndDistance(m_cars[car]);
    }
}

/** The own car's own variables say it better, but a replay does not have them. */
bool iRTelemetryReader::needsCourse(int car) const {
    return car != m_myCarIdx || isReplay();
}

void iRTelemetryReader::addTimeAndDistance(RecorderCar& car) {
    Lap& lap = *car.lap;
    const auto fractions = lap.channel(keyOf(KnownValue::LapDistPct));
    const auto sessionTime = lap.channel(keyOf(KnownValue::SessionTime));
    if (fractions == nullptr || sessionTime == nullptr) {
        return;
    }
    // The two differ by the entries that a channel lacks when it came to the lap late.
    const qsizetype count = std::min(fractions->samples.size(), sessionTime->samples.size());
    if (count == 0) {
        return;
    }
    const QVariant trackLength = lap.value(u"Track length"_s).value;
    const double kilometres = trackLength.toDouble();
    LapCourse course = std::move(car.course);
    car.course = {};
    if (!course.isOf(fractions->samples.size(), kilometres) ||
        !course.isOf(sessionTime->samples.size(), kilometres)) {
        course = courseAlong(sessionTime->samples, fractions->samples, count, kilometres);
    }
    course.complete();
    if (fractions->samples.constFirst() < lapStartDistance) {
        addChannel(lap, u"lapcurrentlaptime"_s, course.time());
    }
    if (isLive() && trackLength.isValid()) {
        m_debugLines += course.repairSpikes();
        addChannel(lap, u"speed"_s, course.speed(), "m/"_L1 + sessionTime->unit());
        addChannel(lap, u"lapdist"_s, course.distance(), u"m"_s);
    }
    addChannel(lap, u"dt"_s, course.timeSteps());
}
