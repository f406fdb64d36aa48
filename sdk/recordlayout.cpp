// Hosts and plugins are built apart and share these records by their layout. It may grow with a new
// interface version (see sdk/interfaceid.h.in), never within one: a member that is added, moved or
// taken away makes every plugin and host of the version read the wrong bytes.

#include "sdk/carinfo.h"
#include "sdk/channel.h"
#include "sdk/lap.h"
#include "sdk/liveplugininfo.h"
#include "sdk/sample.h"
#include "sdk/value.h"

#include <cstddef>

#if defined(__GNUC__)
// Compilers lay records with base classes out as others, the standard just does not demand it.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#endif

namespace TLM::SDK {

/** Sees the private members of the records. */
struct RecordLayout {
    static constexpr bool kIsPinned = sizeof(void*) == 8;  // plugins exist for 64 bits alone

    static_assert(!kIsPinned || (sizeof(QString) == 24 && sizeof(QVariant) == 32 &&
                                 sizeof(QMap<int, int>) == 8 && sizeof(QDateTime) == 8),
                  "another major version of Qt");

    static_assert(!kIsPinned || sizeof(Value) == 56);
    static_assert(!kIsPinned || offsetof(Value, value) == 0);
    static_assert(!kIsPinned || offsetof(Value, m_unit) == 32);

    static_assert(!kIsPinned || sizeof(DynamicData) == 8);

    static_assert(!kIsPinned || sizeof(CarInfo) == 200);
    static_assert(!kIsPinned || offsetof(CarInfo, m_carId) == 0);
    static_assert(!kIsPinned || offsetof(CarInfo, m_trackName) == 24);
    static_assert(!kIsPinned || offsetof(CarInfo, m_trackConfig) == 48);
    static_assert(!kIsPinned || offsetof(CarInfo, m_source) == 72);
    static_assert(!kIsPinned || offsetof(CarInfo, m_carName) == 96);
    static_assert(!kIsPinned || offsetof(CarInfo, m_className) == 120);
    static_assert(!kIsPinned || offsetof(CarInfo, m_driverName) == 144);
    static_assert(!kIsPinned || offsetof(CarInfo, m_teamName) == 168);
    static_assert(!kIsPinned || offsetof(CarInfo, m_status) == 192);
    static_assert(!kIsPinned || offsetof(CarInfo, m_detailedTelemetry) == 196);

    static_assert(!kIsPinned || sizeof(Sample) == sizeof(CarInfo) + sizeof(DynamicData));

    static_assert(!kIsPinned || sizeof(Channel) == 48);
    static_assert(!kIsPinned || offsetof(Channel, samples) == 0);
    static_assert(!kIsPinned || offsetof(Channel, m_unit) == 24);

    static_assert(!kIsPinned || sizeof(LapHeader) == 344);
    static_assert(!kIsPinned || offsetof(LapHeader, m_dateTime) == 208);
    static_assert(!kIsPinned || offsetof(LapHeader, m_fileName) == 216);
    static_assert(!kIsPinned || offsetof(LapHeader, m_lapTime) == 240);
    static_assert(!kIsPinned || offsetof(LapHeader, m_pluginName) == 248);
    static_assert(!kIsPinned || offsetof(LapHeader, m_lapId) == 272);
    static_assert(!kIsPinned || offsetof(LapHeader, m_stintId) == 288);
    static_assert(!kIsPinned || offsetof(LapHeader, m_sessionId) == 304);
    static_assert(!kIsPinned || offsetof(LapHeader, m_lapInSession) == 320);
    static_assert(!kIsPinned || offsetof(LapHeader, m_lapInStint) == 324);
    static_assert(!kIsPinned || offsetof(LapHeader, m_stintInSession) == 328);
    static_assert(!kIsPinned || offsetof(LapHeader, m_session) == 332);
    static_assert(!kIsPinned || offsetof(LapHeader, m_lapType) == 336);
    static_assert(!kIsPinned || offsetof(LapHeader, m_completed) == 340);

    static_assert(!kIsPinned || sizeof(Lap) == 360);
    static_assert(!kIsPinned || offsetof(Lap, m_channels) == 344);
    static_assert(!kIsPinned || offsetof(Lap, m_calculatedChannels) == 352);

    static_assert(!kIsPinned || sizeof(LivePluginInfo) == 72);
    static_assert(!kIsPinned || offsetof(LivePluginInfo, cars) == 0);
    static_assert(!kIsPinned || offsetof(LivePluginInfo, m_pluginName) == 24);
    static_assert(!kIsPinned || offsetof(LivePluginInfo, m_sourceName) == 48);
};

}  // namespace TLM::SDK
