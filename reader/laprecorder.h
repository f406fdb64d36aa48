#pragma once

#include "reader/carsample.h"
#include "reader/lapcourse.h"
#include "sdk/lap.h"

#include <QSharedPointer>
#include <QString>

#include <memory>
#include <optional>

namespace reader {

/** Where a car is, as far as the lap being recorded is concerned. */
enum class LapPart { BeforeLine, AfterLine };

/**
 * Records a lap, and alone appends to it.
 *
 * The ends of a lap's channels lie far apart, and in a tick thousands of them grow by one entry
 * each. So the rows of some samples are kept side by side first and go into the channels together.
 * Nobody sees that: a lap that somebody is given is complete at that moment and stays so, because
 * every sample after it goes to the channels at once.
 *
 * The recorder stands for its lap and is used like the QSharedPointer that the lap travels as;
 * every such use gives the lap out. It is never null. A copy records the same lap.
 */
class LapRecorder {
public:
    /** An empty lap, of which so many samples are expected: a hint for the room of its channels. */
    explicit LapRecorder(qsizetype expectedSamples = 0);

    LapRecorder(const LapRecorder&) = default;
    LapRecorder& operator=(const LapRecorder&) = default;
    ~LapRecorder() = default;

    void expect(qsizetype samples);
    [[nodiscard]] qsizetype expectedSamples() const;

    /** How many samples the next lap may have, as far as this one tells. */
    [[nodiscard]] qsizetype expectedOfNext() const;

    /** Adds a sample; with a track length in kilometres the lap's course is derived on the way. */
    void add(const CarSample& sample, std::optional<double> trackKilometres = std::nullopt);

    /**
     * The course of the lap, which is complete then. An empty one when the lap was given out on the
     * way: its channels may have been changed.
     */
    [[nodiscard]] LapCourse takeCourse();

    /** Keeps the farthest place of the lap, and says where the car is. */
    [[nodiscard]] LapPart noteDistance(float lapDistPct);

    /**
     * The name under which a lap that is being recorded keeps how far its car has come, as a part
     * of the lap. A lap that is handed over has no such value.
     */
    [[nodiscard]] static const QString& farthestDistanceName();

    /** True while no channel is recorded. */
    [[nodiscard]] bool isEmpty() const;

    /** The lap's header and values, without its channels: they are not given out by it. */
    [[nodiscard]] TLM::SDK::LapHeader& header() const;

    /** Begins the same lap anew, without channels and values. */
    void discard();

    // The lap as those see it who are given it.

    LapRecorder& operator=(const QSharedPointer<TLM::SDK::Lap>& lap);
    operator QSharedPointer<TLM::SDK::Lap>() const { return giveOut(); }
    [[nodiscard]] TLM::SDK::Lap* operator->() const { return giveOut().data(); }
    [[nodiscard]] TLM::SDK::Lap& operator*() const { return *giveOut(); }
    [[nodiscard]] TLM::SDK::Lap* data() const { return giveOut().data(); }
    [[nodiscard]] TLM::SDK::Lap* get() const { return giveOut().data(); }
    [[nodiscard]] bool isNull() const { return false; }
    explicit operator bool() const { return true; }
    friend bool operator==(const LapRecorder& left, const QSharedPointer<TLM::SDK::Lap>& right) {
        return left.lap() == right;
    }
    friend bool operator==(const LapRecorder& left, const LapRecorder& right) {
        return left.lap() == right.lap();
    }
    friend bool operator==(const LapRecorder& /*left*/, std::nullptr_t) { return false; }

private:
    class Recording;

    [[nodiscard]] const QSharedPointer<TLM::SDK::Lap>& lap() const;
    [[nodiscard]] const QSharedPointer<TLM::SDK::Lap>& giveOut() const;

    std::shared_ptr<Recording> m_recording;
};

}  // namespace reader
