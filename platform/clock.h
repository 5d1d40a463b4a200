// The clock, the tick count and local time. A test can fix each of them.
#pragma once

#include <cstdint>

namespace vellobar::platform {

/// A point in time broken down as calendars show it. `day_of_week` 0 is Sunday; months and days count from 1.
struct BrokenDownTime {
  int year = 0, month = 0, day_of_week = 0, day = 0, hour = 0, minute = 0, second = 0, milliseconds = 0;
  bool operator==(const BrokenDownTime&) const = default;
};

/// UTC and local time of one and the same instant.
struct ClockReading {
  BrokenDownTime utc;
  BrokenDownTime local;
};

/// Reads the clock once.
ClockReading read_clock();

/// Milliseconds since the machine started, wrapping at 2^32.
std::uint32_t tick_count() noexcept;

/// Fixes what read_clock and tick_count return until the object dies. For tests.
class FixedClock {
 public:
  FixedClock(const ClockReading& reading, std::uint32_t ticks);
  ~FixedClock();
  FixedClock(const FixedClock&) = delete;
  FixedClock& operator=(const FixedClock&) = delete;
};

/// Calendar time to 100-nanosecond ticks since 1 January 1601 (the FILETIME scale) and back. The day of week is not
/// read on the way there. False when a field is out of its range or the year lies outside 1601 to 9999.
bool to_ticks(const BrokenDownTime& time, std::int64_t& ticks) noexcept;
bool from_ticks(std::int64_t ticks, BrokenDownTime& time) noexcept;

/// Calendar time to an automation date (days since 30 December 1899 as a double, time of day as the fraction) and back,
/// to the nearest second, with the platform's rules on every system. False when it cannot be converted.
bool to_automation_date(const BrokenDownTime& time, double& date) noexcept;
bool from_automation_date(double date, BrokenDownTime& time) noexcept;

}  // namespace vellobar::platform
