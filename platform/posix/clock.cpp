#include "platform/clock.h"

#include <sys/time.h>
#include <time.h>

#include <cmath>

#include "platform/clock_source.h"

namespace vellobar::platform {

namespace {

constexpr std::int64_t kTicksPerMillisecond = 10'000;
constexpr std::int64_t kMillisecondsPerDay = 86'400'000;
constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr int kFirstTicksYear = 1601, kLastYear = 9999;
constexpr int kLastField = 0x7FFF;  // the fields of an automation date are signed 16-bit numbers

/// Days from 1 March of the year 0 (Gregorian rules throughout) to the day; months count from March, so that the leap
/// day ends its year.
constexpr std::int64_t day_number(int year, int month, int day) noexcept {
  const int shifted_month = month <= 2 ? month + 9 : month - 3;
  const std::int64_t y = month <= 2 ? year - 1 : year;
  return 365 * y + y / 4 - y / 100 + y / 400 + (153 * shifted_month + 2) / 5 + day - 1;
}

constexpr std::int64_t kFirstTicksDay = day_number(1601, 1, 1);    // a Monday
constexpr std::int64_t kAutomationDay = day_number(1899, 12, 30);  // a Saturday
constexpr std::int64_t kFirstAutomationDay = day_number(100, 1, 1);
constexpr std::int64_t kLastAutomationDay = day_number(9999, 12, 31);

/// Year, month, day and day of week of a day number.
void set_day(std::int64_t number, BrokenDownTime& time) noexcept {
  const std::int64_t era = number / 146'097;
  const std::int64_t day_of_era = number % 146'097;
  const std::int64_t year_of_era = (day_of_era - day_of_era / 1'460 + day_of_era / 36'524 - day_of_era / 146'096) / 365;
  const std::int64_t day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const std::int64_t shifted_month = (5 * day_of_year + 2) / 153;
  time.day = static_cast<int>(day_of_year - (153 * shifted_month + 2) / 5 + 1);
  time.month = static_cast<int>(shifted_month < 10 ? shifted_month + 3 : shifted_month - 9);
  time.year = static_cast<int>(era * 400 + year_of_era + (time.month <= 2 ? 1 : 0));
  time.day_of_week = static_cast<int>((number - kFirstTicksDay + 1 + 7LL * 300'000) % 7);
}

void set_time_of_day(std::int64_t milliseconds, BrokenDownTime& time) noexcept {
  time.milliseconds = static_cast<int>(milliseconds % 1000);
  time.second = static_cast<int>(milliseconds / 1000 % 60);
  time.minute = static_cast<int>(milliseconds / 60'000 % 60);
  time.hour = static_cast<int>(milliseconds / 3'600'000);
}

/// Automation dates read a year below 50 as one of this century and one below 100 as one of the last.
constexpr int century_added(int year) noexcept { return year >= 100 ? year : year + (year < 50 ? 2000 : 1900); }

constexpr int days_in_month(int year, int month) noexcept {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  return month == 2 && leap ? 29 : kDays[month - 1];
}

bool within(int value, int first, int last) noexcept { return value >= first && value <= last; }

bool is_time_of_day(const BrokenDownTime& time) noexcept {
  return within(time.hour, 0, 23) && within(time.minute, 0, 59) && within(time.second, 0, 59);
}

bool is_day(const BrokenDownTime& time) noexcept {
  return within(time.month, 1, 12) && within(time.day, 1, days_in_month(time.year, time.month));
}

BrokenDownTime from_tm(const tm& fields, int milliseconds) noexcept {
  return {.year = fields.tm_year + 1900,
          .month = fields.tm_mon + 1,
          .day_of_week = fields.tm_wday,
          .day = fields.tm_mday,
          .hour = fields.tm_hour,
          .minute = fields.tm_min,
          .second = fields.tm_sec,
          .milliseconds = milliseconds};
}

}  // namespace

ClockReading read_system_clock() {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const int milliseconds = static_cast<int>(now.tv_nsec / 1'000'000);
  tm utc{}, local{};
  // Once a process: each call looks for the time zone's file again, which costs as much as parsing a date.
  [[maybe_unused]] static const bool zone_is_set = (::tzset(), true);
  ::gmtime_r(&now.tv_sec, &utc);
  ::localtime_r(&now.tv_sec, &local);
  return {.utc = from_tm(utc, milliseconds), .local = from_tm(local, milliseconds)};
}

std::uint32_t system_tick_count() noexcept {
#if defined(CLOCK_BOOTTIME)
  constexpr clockid_t kSinceStart = CLOCK_BOOTTIME;
#else
  constexpr clockid_t kSinceStart = CLOCK_MONOTONIC;
#endif
  timespec now{};
  ::clock_gettime(kSinceStart, &now);
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 1000 +
                                    static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000);
}

bool to_ticks(const BrokenDownTime& time, std::int64_t& ticks) noexcept {
  if (!within(time.year, kFirstTicksYear, kLastYear) || !is_day(time) || !is_time_of_day(time) ||
      !within(time.milliseconds, 0, 999)) {
    return false;
  }
  const std::int64_t days = day_number(time.year, time.month, time.day) - kFirstTicksDay;
  const std::int64_t milliseconds = ((time.hour * 60LL + time.minute) * 60 + time.second) * 1000 + time.milliseconds;
  ticks = (days * kMillisecondsPerDay + milliseconds) * kTicksPerMillisecond;
  return true;
}

bool from_ticks(std::int64_t ticks, BrokenDownTime& time) noexcept {
  if (ticks < 0) return false;
  const std::int64_t milliseconds = ticks / kTicksPerMillisecond;
  const std::int64_t day = milliseconds / kMillisecondsPerDay + kFirstTicksDay;
  if (day > kLastAutomationDay) return false;
  set_day(day, time);
  set_time_of_day(milliseconds % kMillisecondsPerDay, time);
  return true;
}

bool to_automation_date(const BrokenDownTime& time, double& date) noexcept {
  if (!within(time.year, 0, kLastYear) || !within(time.month, 0, 12) || !within(time.day, 0, 31) ||
      !within(time.hour, 0, kLastField) || !within(time.minute, 0, kLastField) || !within(time.second, 0, kLastField) ||
      !within(time.milliseconds, 0, kLastField)) {
    return false;
  }
  const std::int64_t seconds = (time.hour * 60LL + time.minute) * 60 + time.second;
  const std::int64_t days = day_number(century_added(time.year), time.month, time.day) + seconds / kSecondsPerDay;
  if (days > kLastAutomationDay) return false;
  // Before 30 December 1899 the days count backwards, but the time of day still counts forwards from midnight. Its
  // parts are added to the day one by one, as the system does it: adding their sum differs in the last bit.
  const auto hour = static_cast<double>(seconds / 3600 % 24);
  const auto minute = static_cast<double>(seconds / 60 % 60);
  const auto second = static_cast<double>(seconds % 60);
  const double whole = static_cast<double>(days - kAutomationDay);
  const double sign = whole < 0 ? -1.0 : 1.0;
  date = whole + sign * hour / 24.0;
  date += sign * minute / 1440.0;
  date += sign * second / 86400.0;
  return true;
}

bool from_automation_date(double date, BrokenDownTime& time) noexcept {
  if (!(date > static_cast<double>(kFirstAutomationDay - kAutomationDay - 1)) ||
      !(date < static_cast<double>(kLastAutomationDay - kAutomationDay + 1))) {
    return false;
  }
  // Half a second rounds up, also when the double that stands for it lies a little below.
  constexpr double kSlackDays = 1e-11;
  const double whole = std::trunc(date);
  const double fraction = std::fabs(date - whole) + kSlackDays;
  const auto seconds = static_cast<std::int64_t>(std::floor(fraction * kSecondsPerDay + 0.5));
  const std::int64_t day = static_cast<std::int64_t>(whole) + kAutomationDay + seconds / kSecondsPerDay;
  set_day(day, time);
  set_time_of_day(seconds % kSecondsPerDay * 1000, time);
  return true;
}

}  // namespace vellobar::platform
