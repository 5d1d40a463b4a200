#include "platform/clock.h"

#include <windows.h>
// oleauto.h needs windows.h before it.
#include <oleauto.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <iterator>

#include "platform/clock_source.h"

namespace vellobar::platform {

namespace {

constexpr int kLastYear = 9999;

/// False when a field does not fit the system's 16-bit fields; the system judges the rest.
bool to_system_time(const BrokenDownTime& time, SYSTEMTIME& out) noexcept {
  const int fields[] = {time.year, time.month, time.day, time.hour, time.minute, time.second, time.milliseconds};
  if (!std::all_of(std::begin(fields), std::end(fields), [](int field) { return field >= 0 && field <= 0x7FFF; })) {
    return false;
  }
  out = SYSTEMTIME{};
  out.wYear = static_cast<WORD>(time.year);
  out.wMonth = static_cast<WORD>(time.month);
  out.wDay = static_cast<WORD>(time.day);
  out.wHour = static_cast<WORD>(time.hour);
  out.wMinute = static_cast<WORD>(time.minute);
  out.wSecond = static_cast<WORD>(time.second);
  out.wMilliseconds = static_cast<WORD>(time.milliseconds);
  return true;
}

BrokenDownTime from_system_time(const SYSTEMTIME& time) noexcept {
  return {.year = time.wYear,
          .month = time.wMonth,
          .day_of_week = time.wDayOfWeek,
          .day = time.wDay,
          .hour = time.wHour,
          .minute = time.wMinute,
          .second = time.wSecond,
          .milliseconds = time.wMilliseconds};
}

/// The system converts dates in the floating-point unit of 32-bit processors, where results depend on the precision
/// that the thread's host or start-up code chose; programs built with this compiler start with more than the double
/// precision of Windows programs. While an object lives, that precision holds.
#ifdef _X86_
class DoublePrecision {
 public:
  DoublePrecision() : before_(::_controlfp(0, 0)) { ::_controlfp(_PC_53, _MCW_PC); }
  ~DoublePrecision() { ::_controlfp(before_, _MCW_PC); }
  DoublePrecision(const DoublePrecision&) = delete;
  DoublePrecision& operator=(const DoublePrecision&) = delete;

 private:
  unsigned before_;
};
#else
struct DoublePrecision {
  ~DoublePrecision() {}
};
#endif

/// The day of week of a date between the years 100 and 9999. Asked of the calendar, because the system may name the day
/// before when the time of day was rounded up to midnight. Weekdays repeat every 400 years; 1600 years on, file times
/// reach all of them.
int day_of_week(SYSTEMTIME fields) noexcept {
  FILETIME file_time;
  fields.wYear = static_cast<WORD>(fields.wYear + 1600);
  ::SystemTimeToFileTime(&fields, &file_time);
  ::FileTimeToSystemTime(&file_time, &fields);
  return fields.wDayOfWeek;
}

}  // namespace

ClockReading read_system_clock() {
  FILETIME utc, local;
  SYSTEMTIME utc_fields{}, local_fields{};
  ::GetSystemTimeAsFileTime(&utc);
  ::FileTimeToLocalFileTime(&utc, &local);
  ::FileTimeToSystemTime(&utc, &utc_fields);
  ::FileTimeToSystemTime(&local, &local_fields);
  return {.utc = from_system_time(utc_fields), .local = from_system_time(local_fields)};
}

std::uint32_t system_tick_count() noexcept { return ::GetTickCount(); }

bool to_ticks(const BrokenDownTime& time, std::int64_t& ticks) noexcept {
  SYSTEMTIME fields;
  FILETIME file_time;
  if (time.year > kLastYear || !to_system_time(time, fields) || !::SystemTimeToFileTime(&fields, &file_time)) {
    return false;
  }
  // A day that its month does not have must not slip through as one of the next month.
  SYSTEMTIME back;
  if (!::FileTimeToSystemTime(&file_time, &back) || back.wDay != fields.wDay) return false;
  ticks =
      static_cast<std::int64_t>(static_cast<std::uint64_t>(file_time.dwHighDateTime) << 32 | file_time.dwLowDateTime);
  return true;
}

bool from_ticks(std::int64_t ticks, BrokenDownTime& time) noexcept {
  if (ticks < 0) return false;
  const FILETIME file_time = {static_cast<DWORD>(ticks & 0xFFFFFFFF), static_cast<DWORD>(ticks >> 32)};
  SYSTEMTIME fields;
  if (!::FileTimeToSystemTime(&file_time, &fields) || fields.wYear > kLastYear) return false;
  time = from_system_time(fields);
  return true;
}

bool to_automation_date(const BrokenDownTime& time, double& date) noexcept {
  const DoublePrecision precision;
  SYSTEMTIME fields;
  return to_system_time(time, fields) && ::SystemTimeToVariantTime(&fields, &date) != 0;
}

bool from_automation_date(double date, BrokenDownTime& time) noexcept {
  const DoublePrecision precision;
  SYSTEMTIME fields;
  if (std::isnan(date) || !::VariantTimeToSystemTime(date, &fields)) return false;
  time = from_system_time(fields);
  time.day_of_week = day_of_week(fields);
  return true;
}

}  // namespace vellobar::platform
