#pragma once

#include "reader/samplingplan.h"
#include "sdk/sample.h"

#include <QString>
#include <QStringView>

#include <array>
#include <cstddef>
#include <optional>
#include <vector>

/** Values that the recorder looks at in every tick of every car. */
enum class KnownValue {
    LapDistPct,
    SessionState,
    SessionTick,
    OnPitRoad,
    Speed,
    SessionTime,
};

struct KnownKey {
    KnownValue value;
    QStringView key;
};

/** Every known value with its sample key, in the order of the values. */
inline constexpr std::array knownKeys{
    KnownKey{KnownValue::LapDistPct, u"lapdistpct"},
    KnownKey{KnownValue::SessionState, u"sessionstate"},
    KnownKey{KnownValue::SessionTick, u"sessiontick"},
    KnownKey{KnownValue::OnPitRoad, u"onpitroad"},
    KnownKey{KnownValue::Speed, u"Speed"},  // with a capital S
    KnownKey{KnownValue::SessionTime, u"sessiontime"},
};

inline constexpr std::size_t knownValueCount = knownKeys.size();

/** The sample key of a known value. */
[[nodiscard]] const QString& keyOf(KnownValue value);

/**
 * Writes the values of one car's sample tick after tick without building a key, looking up a name
 * or taking memory, also while the host keeps samples of earlier ticks.
 *
 * A sample that the host keeps shares its values with the car's sample, and writing to shared
 * values would copy them all. So a few generations of the values are kept: when the newest is
 * shared, the sample goes on with one that nobody holds any more. Nothing is ever written to values
 * that somebody else holds. A host that keeps every sample costs a copy of the values a tick; once
 * it is known to, it gets copies of an original that is never given away.
 *
 * Whoever changes the sample's values by other means MUST use another `revision` from then on: the
 * places of the values are remembered, and a generation that missed a change must not come back.
 */
class SampleGenerations {
public:
    /**
     * Puts `plan`'s values of slot `car` into `sample`, read from the snapshot at `data`; the other
     * values of the sample stay. `tick` is the own car's session tick.
     */
    void write(TLM::SDK::Sample& sample, const SamplingPlan& plan, int car, quint64 revision,
               const char* data, quint64 tick);

    /**
     * A known value of the sample that write() was called for, null when the sample has none.
     * Nothing when the sample has changed since: then it has to be looked up.
     */
    [[nodiscard]] std::optional<const QVariant*> find(KnownValue value, quint64 revision) const;

private:
    using ValueMap = TLM::SDK::DynamicData::ValueMap;

    /** What remembered places belong to. */
    struct Stamp {
        quint64 planVersion = 0;
        quint64 revision = 0;

        bool operator==(const Stamp&) const = default;
    };

    /** What the host is taken to do with samples. */
    enum class Host { LetsGo, KeepsEverything };

    /** The ways in which values go from a snapshot into a QVariant. */
    enum class Way { FourBytes, EightBytes, Bool, CharAsInt, Tick, Nothing };
    static constexpr std::size_t wayCount = 6;

    /** Where things are in the map of one generation. */
    struct Places {
        std::vector<void*> planned;   // the numbers themselves, grouped by their way
        std::vector<quint64> stored;  // what they are; a number that is there already is left alone
        std::array<const QVariant*, knownValueCount> known{};
        bool areFound = false;  // of `planned`, and `stored` with them
    };

    /** Values that were those of the sample, and the places in them. */
    struct Generation {
        ValueMap values;
        Places places;
        Stamp stamp;
    };

    /** What an entry of the map is, by its rank. */
    struct Rank {
        int planned = -1;  // index into Places::planned
        int known = -1;    // index into Places::known
    };

    static Way wayOf(Reading reading);
    template <Way way>
    static quint64 load(const char* bytes, quint64 tick);
    template <Way way>
    static void put(void* place, quint64 number);

    void resolve(ValueMap& values, const std::vector<PlannedValue>& planned);
    void rank(const ValueMap& values, const std::vector<PlannedValue>& planned);
    void locate(ValueMap& values);
    [[nodiscard]] bool takeFreeGeneration(ValueMap& values);
    void continueWithCopy(ValueMap& values);
    void exchange(ValueMap& values, Generation& spare);
    void takeHostToLetGo();
    void giveCopy(ValueMap& values, const char* data, quint64 tick);
    void store(ValueMap& values, const char* data, quint64 tick);
    template <bool all>
    void storeNumbers(const char* data, quint64 tick);
    template <Way way, bool all>
    void storeGroup(const char* data, quint64 tick);

    // Enough for a host that keeps the last two samples while a third is on its way to it.
    static constexpr std::size_t spareCount = 3;

    Stamp m_stamp;
    Places m_places;
    std::vector<qint64> m_offsets;                     // in a snapshot, in the order of the places
    std::array<std::size_t, wayCount + 1> m_groups{};  // first place of each way
    std::vector<Rank> m_ranks;                         // in the order of the map
    std::array<Generation, spareCount> m_spares;
    std::size_t m_oldest = 0;
    Host m_host = Host::LetsGo;
    int m_copiesInARow = 0;  // since the host is taken to do so
    ValueMap m_original;  // of the copies for a host that keeps everything; m_places are in it then
};
