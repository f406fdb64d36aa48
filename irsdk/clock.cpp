#include "irsdk/clock.h"

#include "irsdk/platform.h"

namespace irsdk {

namespace {

CalendarClock clockInUse = systemSeconds;

}  // namespace

std::int64_t calendarSeconds() {
    return clockInUse();
}

void setCalendarClock(CalendarClock clock) {
    clockInUse = clock == nullptr ? systemSeconds : clock;
}

}  // namespace irsdk
