#include "api/dates.h"

#include <gtest/gtest.h>

namespace vellobar {

namespace {

using namespace std::chrono;

local_seconds at(year_month_day day, seconds time) { return local_days(day) + time; }

}  // namespace

TEST(Dates, count_days_from_30_december_1899) {
  EXPECT_EQ(local_time(0.0), at(1899y / December / 30, 0s));
  EXPECT_EQ(local_time(1.5), at(1899y / December / 31, 12h));
  EXPECT_EQ(local_time(45355.25), at(2024y / March / 4, 6h));
  EXPECT_EQ(automation_date(at(2024y / March / 4, 6h)), 45355.25);
}

TEST(Dates, before_the_first_day_the_time_of_day_still_counts_forward) {
  EXPECT_EQ(local_time(-1.25), at(1899y / December / 29, 6h));
  EXPECT_EQ(automation_date(at(1899y / December / 29, 6h)), -1.25);
}

TEST(Dates, every_second_of_a_day_comes_through_both_ways) {
  for (int second = 0; second < 86400; ++second) {
    const local_seconds time = at(2024y / March / 4, seconds(second));
    ASSERT_EQ(local_time(automation_date(time)), time);
  }
}

}  // namespace vellobar
