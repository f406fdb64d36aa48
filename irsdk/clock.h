#pragma once

#include <cstdint>

/**
 * The calendar clock of the link in whole seconds. It only serves the rule that a snapshot older
 * than 30 seconds is no sign of life, and it can be replaced so that a test of that rule need not
 * wait.
 */
namespace irsdk {

using CalendarClock = std::int64_t (*)();

/** Seconds since the epoch as the clock in use tells them. */
std::int64_t calendarSeconds();

/** Puts another clock in use; null puts the system's clock back. */
void setCalendarClock(CalendarClock clock);

}  // namespace irsdk
