#include "platform/clock.h"

#include <gtest/gtest.h>

namespace vellobar::platform {
namespace {

TEST(Clock, ticks_count_100_nanoseconds_from_1_january_1601) {
  std::int64_t ticks = -1;
  ASSERT_TRUE(to_ticks({.year = 1601, .month = 1, .day = 1}, ticks));
  EXPECT_EQ(ticks, 0);
  ASSERT_TRUE(to_ticks({.year = 1970, .month = 1, .day = 1}, ticks));
  EXPECT_EQ(ticks, 116444736000000000);
  BrokenDownTime time;
  ASSERT_TRUE(from_ticks(116444736000000000 + 10'000LL * 86'399'999, time));
  EXPECT_EQ(time, (BrokenDownTime{.year = 1970,
                                  .month = 1,
                                  .day_of_week = 4,
                                  .day = 1,
                                  .hour = 23,
                                  .minute = 59,
                                  .second = 59,
                                  .milliseconds = 999}));
}

TEST(Clock, a_negative_automation_date_counts_its_fraction_forwards) {
  BrokenDownTime time;
  ASSERT_TRUE(from_automation_date(-1.25, time));
  EXPECT_EQ(time, (BrokenDownTime{.year = 1899, .month = 12, .day_of_week = 5, .day = 29, .hour = 6}));
  double date = 0;
  ASSERT_TRUE(to_automation_date(time, date));
  EXPECT_EQ(date, -1.25);
}

TEST(Clock, a_fixed_clock_and_tick_count_hold_until_the_object_dies) {
  const ClockReading reading = {.utc = {.year = 2024, .month = 1, .day = 7, .hour = 16},
                                .local = {.year = 2024, .month = 1, .day = 7, .hour = 17}};
  {
    const FixedClock fixed(reading, 0xFFFFFFFF);
    EXPECT_EQ(read_clock().local, reading.local);
    EXPECT_EQ(read_clock().utc, reading.utc);
    EXPECT_EQ(tick_count(), 0xFFFFFFFFu);
  }
  EXPECT_GT(read_clock().utc.year, 2024);
}

}  // namespace
}  // namespace vellobar::platform
