#include "platform/clock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace vellobar::platform {
namespace {

BrokenDownTime moment(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                      int milliseconds = 0) {
  return {.year = year,
          .month = month,
          .day = day,
          .hour = hour,
          .minute = minute,
          .second = second,
          .milliseconds = milliseconds};
}

BrokenDownTime moment_on(int day_of_week, BrokenDownTime time) {
  time.day_of_week = day_of_week;
  return time;
}

TEST(Clock, ticks_count_100_nanoseconds_from_1_january_1601_and_back) {
  const struct {
    BrokenDownTime time;
    std::int64_t ticks;
  } rows[] = {
      {moment_on(1, moment(1601, 1, 1)), 0},
      {moment_on(4, moment(1970, 1, 1)), 116444736000000000},
      {moment_on(2, moment(1994, 11, 15, 8, 12, 31)), 124293607510000000},
      {moment_on(2, moment(2000, 2, 29)), 125962560000000000},
      {moment_on(4, moment(2024, 2, 29, 23, 59, 59, 999)), 133537247999990000},
      {moment_on(5, moment(9999, 12, 31, 23, 59, 59, 999)), 2650467743999990000},
  };
  for (const auto& row : rows) {
    std::int64_t ticks = -1;
    EXPECT_TRUE(to_ticks(row.time, ticks)) << row.ticks;
    EXPECT_EQ(ticks, row.ticks);
    BrokenDownTime time;
    EXPECT_TRUE(from_ticks(row.ticks, time)) << row.ticks;
    EXPECT_EQ(time, row.time) << row.ticks;
  }
}

TEST(Clock, fields_out_of_their_range_have_no_ticks) {
  const BrokenDownTime refused[] = {
      moment(1600, 12, 31),
      moment(10000, 1, 1),
      moment(2024, 0, 1),
      moment(2024, 13, 1),
      moment(2024, 1, 0),
      moment(2024, 1, 32),
      moment(2023, 2, 29),
      moment(1900, 2, 29),
      moment(2024, 4, 31),
      moment(2024, 1, 1, 24),
      moment(2024, 1, 1, 0, 60),
      moment(2024, 1, 1, 0, 0, 60),
      moment(2024, 1, 1, -1),
      moment(2024, 1, 1, 0, -1),
      moment(2024, 1, 1, 0, 0, -1),
      moment(2024, -1, 1),
      moment(2024, 1, -1),
      moment(-2024, 1, 1),
      moment(2024 + 65536, 1, 1),
      moment(2024, 1 + 65536, 1),
      moment(2024, 1, 1, 65536),
      moment(2024, 1, 1, 0, 0, 0, 1000),
      moment(2024, 1, 1, 0, 0, 0, -1),
      moment(0, 0, 0),
  };
  for (const BrokenDownTime& time : refused) {
    std::int64_t ticks = 42;
    EXPECT_FALSE(to_ticks(time, ticks)) << time.year << "-" << time.month << "-" << time.day << " " << time.hour;
  }
}

TEST(Clock, the_day_of_week_is_not_read_on_the_way_to_ticks) {
  std::int64_t ticks = 0;
  EXPECT_TRUE(to_ticks(moment_on(99, moment(1970, 1, 1)), ticks));
  EXPECT_EQ(ticks, 116444736000000000);
}

TEST(Clock, ticks_before_1601_and_after_9999_have_no_time) {
  BrokenDownTime time;
  EXPECT_FALSE(from_ticks(-1, time));
  EXPECT_FALSE(from_ticks(std::numeric_limits<std::int64_t>::min(), time));
  EXPECT_TRUE(from_ticks(2650467743999999999, time));
  EXPECT_FALSE(from_ticks(2650467744000000000, time));
  EXPECT_FALSE(from_ticks(std::numeric_limits<std::int64_t>::max(), time));
}

TEST(Clock, an_automation_date_counts_days_from_30_december_1899) {
  const struct {
    BrokenDownTime time;
    double date;
  } rows[] = {
      {moment_on(6, moment(1899, 12, 30)), 0.0},        {moment_on(1, moment(1900, 1, 1)), 2.0},
      {moment_on(6, moment(2000, 1, 1)), 36526.0},      {moment_on(2, moment(1994, 11, 15, 18)), 34653.75},
      {moment_on(4, moment(2024, 2, 29, 12)), 45351.5}, {moment_on(1, moment(1601, 1, 1)), -109205.0},
      {moment_on(5, moment(100, 1, 1)), -657434.0},     {moment_on(5, moment(9999, 12, 31, 12)), 2958465.5},
  };
  for (const auto& row : rows) {
    double date = 0;
    EXPECT_TRUE(to_automation_date(row.time, date)) << row.date;
    EXPECT_EQ(date, row.date);
    BrokenDownTime time;
    EXPECT_TRUE(from_automation_date(row.date, time)) << row.date;
    EXPECT_EQ(time, row.time) << row.date;
  }
}

TEST(Clock, a_negative_automation_date_counts_its_fraction_forwards) {
  BrokenDownTime time;
  ASSERT_TRUE(from_automation_date(-1.25, time));
  EXPECT_EQ(time, moment_on(5, moment(1899, 12, 29, 6)));
  double date = 0;
  ASSERT_TRUE(to_automation_date(time, date));
  EXPECT_EQ(date, -1.25);
  ASSERT_TRUE(from_automation_date(-0.75, time));
  EXPECT_EQ(time, moment_on(6, moment(1899, 12, 30, 18)));
}

TEST(Clock, an_automation_date_is_read_to_the_nearest_second) {
  const struct {
    double seconds;
    int second;
  } rows[] = {{30.0, 30}, {30.4, 30}, {30.5, 31}, {30.6, 31}, {30.999, 31}};
  for (const auto& row : rows) {
    BrokenDownTime time;
    ASSERT_TRUE(from_automation_date(45000 + row.seconds / 86400, time));
    EXPECT_EQ(time, moment_on(3, moment(2023, 3, 15, 0, 0, row.second))) << row.seconds;
  }
}

TEST(Clock, rounding_up_to_midnight_goes_on_to_the_next_day_and_its_day_of_week) {
  BrokenDownTime time;
  ASSERT_TRUE(from_automation_date(45000 + 86399.6 / 86400, time));
  EXPECT_EQ(time, moment_on(4, moment(2023, 3, 16)));
  ASSERT_TRUE(from_automation_date(-1 - 86399.6 / 86400, time));
  EXPECT_EQ(time, moment_on(6, moment(1899, 12, 30)));
}

TEST(Clock, milliseconds_are_dropped_on_the_way_to_an_automation_date) {
  double date = 0;
  ASSERT_TRUE(to_automation_date(moment(1994, 11, 15, 18, 0, 0, 999), date));
  EXPECT_EQ(date, 34653.75);
}

TEST(Clock, an_automation_date_outside_its_years_cannot_be_read) {
  BrokenDownTime time;
  EXPECT_TRUE(from_automation_date(-657434.99, time));
  EXPECT_EQ(time.day, 1);
  for (double date : {-657435.0, -1e300, 2958466.0, 1e300, std::numeric_limits<double>::infinity(),
                      -std::numeric_limits<double>::infinity(), std::nan("")}) {
    EXPECT_FALSE(from_automation_date(date, time)) << date;
  }
}

TEST(Clock, a_day_that_its_month_lacks_rolls_over_in_an_automation_date) {
  const struct {
    BrokenDownTime time;
    double date;
  } rows[] = {
      {moment(2023, 2, 29), 44986.0},     // 1 March 2023
      {moment(2024, 4, 31), 45413.0},     // 1 May 2024
      {moment(2024, 1, 0), 45291.0},      // 31 December 2023
      {moment(2024, 0, 1), 45261.0},      // 1 December 2023
      {moment(2024, 1, 1, 24), 45293.0},  // 2 January 2024
      {moment(49, 1, 1), 54424.0},        // 1 January 2049
      {moment(50, 1, 1), 18264.0},        // 1 January 1950
  };
  for (const auto& row : rows) {
    double date = 0;
    EXPECT_TRUE(to_automation_date(row.time, date)) << row.date;
    EXPECT_EQ(date, row.date);
  }
  double date = 0;
  for (const BrokenDownTime& time : {moment(2024, 13, 1), moment(2024, 1, 32), moment(10000, 1, 1), moment(-1, 1, 1),
                                     moment(2024, 1, 1, -1), moment(2024, 1, 1, 65536)}) {
    EXPECT_FALSE(to_automation_date(time, date));
  }
}

TEST(Clock, a_fixed_clock_and_tick_count_hold_until_the_object_dies) {
  const ClockReading reading = {.utc = moment(2024, 1, 7, 16), .local = moment(2024, 1, 7, 17)};
  {
    const FixedClock fixed(reading, 0xFFFFFFFF);
    EXPECT_EQ(read_clock().local, reading.local);
    EXPECT_EQ(read_clock().utc, reading.utc);
    EXPECT_EQ(tick_count(), 0xFFFFFFFFu);
  }
  EXPECT_GT(read_clock().utc.year, 2024);
}

TEST(Clock, both_times_of_a_reading_are_valid_and_less_than_a_day_apart) {
  const ClockReading reading = read_clock();
  std::int64_t utc = 0, local = 0;
  ASSERT_TRUE(to_ticks(reading.utc, utc));
  ASSERT_TRUE(to_ticks(reading.local, local));
  EXPECT_LT(std::abs(local - utc), 24 * 36'000'000'000);
  BrokenDownTime back;
  ASSERT_TRUE(from_ticks(utc, back));
  EXPECT_EQ(back, reading.utc) << "the day of week is the calendar's";
}

#ifndef _WIN32
/// The TZ variable, put back at the end.
class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~TimeZone() {
    before_.empty() ? ::unsetenv("TZ") : ::setenv("TZ", before_.c_str(), 1);
    ::tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;

 private:
  std::string before_;
};

TEST(Clock, local_time_follows_the_time_zone_of_the_process) {
  const struct {
    const char* zone;
    int minutes_east;
  } rows[] = {{"UTC0", 0}, {"ONE-1", 60}, {"TEN10", -600}, {"HALF-5:30", 330}};
  for (const auto& row : rows) {
    const TimeZone zone(row.zone);
    const ClockReading reading = read_clock();
    std::int64_t utc = 0, local = 0;
    ASSERT_TRUE(to_ticks(reading.utc, utc) && to_ticks(reading.local, local));
    EXPECT_EQ(local - utc, row.minutes_east * 600'000'000LL) << row.zone;
  }
}
#endif

}  // namespace
}  // namespace vellobar::platform
