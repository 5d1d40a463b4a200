#include "headers/date.h"

#include <gtest/gtest.h>

#include <chrono>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>

#include "errors/error.h"
#include "platform/clock.h"

namespace vellobar {
namespace {

using namespace std::string_view_literals;
using headers::current_date;
using headers::format_date;
using headers::parse_date;

/// The automation date of a calendar time, reckoned by the standard library's calendar.
double date_of(int year, unsigned month, unsigned day, int hour = 0, int minute = 0, int second = 0) {
  using namespace std::chrono;
  const sys_days zero = 1899y / December / 30;
  const sys_days wanted = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
  const double days = static_cast<double>((wanted - zero).count());
  const double fraction = (hour * 3600 + minute * 60 + second) / 86400.0;
  return days < 0 ? days - fraction : days + fraction;
}

constexpr double kZeroDate = 0.0;
constexpr double kTenthOfASecond = 0.1 / 86400;

constexpr platform::BrokenDownTime kNoonUtc = {2026, 6, 1, 15, 12, 0, 0, 0};
constexpr platform::BrokenDownTime kOneHourEast = {2026, 6, 1, 15, 13, 0, 0, 0};
constexpr platform::BrokenDownTime kTwoHoursEast = {2026, 6, 1, 15, 14, 0, 0, 0};
constexpr platform::BrokenDownTime kTenHoursWest = {2026, 6, 1, 15, 2, 0, 0, 0};
constexpr platform::BrokenDownTime kFiveAndAHalfEast = {2026, 6, 1, 15, 17, 30, 0, 0};
constexpr platform::BrokenDownTime kHalfAnHourEast = {2026, 6, 1, 15, 12, 30, 0, 0};
constexpr platform::BrokenDownTime kHalfAnHourWest = {2026, 6, 1, 15, 11, 30, 0, 0};
constexpr platform::BrokenDownTime kThreeAndAHalfWest = {2026, 6, 1, 15, 8, 30, 0, 0};

/// It is noon UTC on 15 June 2026, wherever we are.
platform::FixedClock noon_in(const platform::BrokenDownTime& local) {
  return platform::FixedClock(platform::ClockReading{kNoonUtc, local}, 0);
}

TEST(Date, texts_read_at_utc_as_worked_out_by_hand) {
  const platform::FixedClock clock = noon_in(kNoonUtc);
  const double reference = date_of(1994, 11, 15, 8, 12, 31);
  const struct {
    std::string_view text;
    double date;
  } rows[] = {
      // One date in many forms.
      {"Tue, 15 Nov 1994 08:12:31 GMT", reference},
      {"Tue, 15 Nov 1994 08:12:31 +0000", reference},
      {"Tue, 15 Nov 1994 08:12:31 -0000", reference},
      {"Tue, 15 Nov 1994 08:12:31", reference},
      {"15 Nov 1994 08:12:31 GMT", reference},
      {"Tue,15 Nov 1994 08:12:31 GMT", reference},
      {"Tue 15 Nov 1994 08:12:31 GMT", reference},
      {"Tue,, , 15 Nov 1994 08:12:31 GMT", reference},
      {"TUE, 15 NOV 1994 08:12:31 gmt", reference},
      {"tue, 15 nov 1994 08:12:31 GMT", reference},
      {"  \t\r\n Tue, 15 Nov 1994 08:12:31 GMT", reference},
      {"\x80\xFF\x01 15 Nov 1994 08:12:31 GMT", reference},
      {"\0 15 Nov 1994 08:12:31 GMT"sv, reference},
      {"Tue, 15\tNov \t1994  08:12:31\r\n GMT", reference},
      {"15 Nov 94 08:12:31 GMT", reference},
      {"Fri, 15 Nov 1994 08:12:31 GMT", reference},
      {"15 Nov 1994 08.12:31 GMT", reference},
      {"Tue, 15 Nov 1994 08:12:31 GMT (comment)", reference},
      // A day name counts by its three letters only.
      {"Mon, 1 Jan 2024 00:00:00 GMT", date_of(2024, 1, 1)},
      {"1 Jan 2024 00:00:00", date_of(2024, 1, 1)},
      {"01 Jan 2024 00:00:00", date_of(2024, 1, 1)},
      {"Sat, 29 Feb 2020 23:59:59 GMT", date_of(2020, 2, 29, 23, 59, 59)},
      {"31 Dec 9999 23:59:59 GMT", date_of(9999, 12, 31, 23, 59, 59)},
      {"1 Jan 1601 00:00:00 GMT", date_of(1601, 1, 1)},
      // Months.
      {"2 Mar 2001 04:05:06", date_of(2001, 3, 2, 4, 5, 6)},
      {"2 apr 2001 04:05:06", date_of(2001, 4, 2, 4, 5, 6)},
      {"2 MAY 2001 04:05:06", date_of(2001, 5, 2, 4, 5, 6)},
      {"2 Jun 2001 04:05:06", date_of(2001, 6, 2, 4, 5, 6)},
      {"2 Jul 2001 04:05:06", date_of(2001, 7, 2, 4, 5, 6)},
      {"2 Aug 2001 04:05:06", date_of(2001, 8, 2, 4, 5, 6)},
      {"2 Sep 2001 04:05:06", date_of(2001, 9, 2, 4, 5, 6)},
      {"2 Oct 2001 04:05:06", date_of(2001, 10, 2, 4, 5, 6)},
      // Years.
      {"15 Nov 05 08:12:31", date_of(1905, 11, 15, 8, 12, 31)},
      {"15 Nov 99 08:12:31", date_of(1999, 11, 15, 8, 12, 31)},
      {"15 Nov 00 08:12:31", date_of(1900, 11, 15, 8, 12, 31)},
      // One digit of a year: two bytes are skipped, the space among them.
      {"15 Nov 7 08:12:31", kZeroDate},
      // Times: without seconds, with seconds behind something else, with one digit of an hour.
      {"15 Nov 1994 08:12 GMT", date_of(1994, 11, 15, 8, 12)},
      {"15 Nov 1994 08:12", date_of(1994, 11, 15, 8, 12)},
      {"15 Nov 1994 08:12.31 GMT", date_of(1994, 11, 15, 8, 12)},
      {"15 Nov 1994 08", date_of(1994, 11, 15, 8)},
      {"15 Nov 1994", date_of(1994, 11, 15)},
      {"15 Nov 1994 8:12:31 GMT", date_of(1994, 11, 15, 8, 2)},
      {"15 Nov 1994 08:12:3 GMT", date_of(1994, 11, 15, 8, 12, 3)},
      // Zones.
      {"15 Nov 1994 08:12:31 +0100", date_of(1994, 11, 15, 7, 12, 31)},
      {"15 Nov 1994 08:12:31 -0500", date_of(1994, 11, 15, 13, 12, 31)},
      {"15 Nov 1994 08:12:31 +0530", date_of(1994, 11, 15, 2, 42, 31)},
      {"15 Nov 1994 08:12:31 +0130", date_of(1994, 11, 15, 6, 42, 31)},
      {"15 Nov 1994 08:12:31 0130", date_of(1994, 11, 15, 6, 42, 31)},
      {"15 Nov 1994 08:12:31 (+0100)", date_of(1994, 11, 15, 7, 12, 31)},
      {"15 Nov 1994 08:12:31 (EST)", date_of(1994, 11, 15, 13, 12, 31)},
      {"15 Nov 1994 08:12:31 EST", date_of(1994, 11, 15, 13, 12, 31)},
      {"15 Nov 1994 08:12:31 edt", date_of(1994, 11, 15, 12, 12, 31)},
      {"15 Nov 1994 08:12:31 CST", date_of(1994, 11, 15, 14, 12, 31)},
      {"15 Nov 1994 08:12:31 CDT", date_of(1994, 11, 15, 13, 12, 31)},
      {"15 Nov 1994 08:12:31 MST", date_of(1994, 11, 15, 15, 12, 31)},
      {"15 Nov 1994 08:12:31 MDT", date_of(1994, 11, 15, 14, 12, 31)},
      {"15 Nov 1994 08:12:31 PST", date_of(1994, 11, 15, 16, 12, 31)},
      {"15 Nov 1994 08:12:31 PDT", date_of(1994, 11, 15, 15, 12, 31)},
      {"15 Nov 1994 08:12:31 ESTERN", date_of(1994, 11, 15, 13, 12, 31)},
      {"15 Nov 1994 08:12:31 UT", reference},
      {"15 Nov 1994 08:12:31 Z", reference},
      {"15 Nov 1994 08:12:31 A", reference},
      {"15 Nov 1994 08:12:31 3000", reference},
      {"15 Nov 1994 08:12:31 CET", reference},
      // Zone characters that are no digits count as 0; digits behind the second make one number.
      {"15 Nov 1994 08:12:31 +x1", date_of(1994, 11, 15, 7, 12, 31)},
      {"15 Nov 1994 08:12:31 +", reference},
      {"15 Nov 1994 08:12:31 +1", date_of(1994, 11, 14, 22, 12, 31)},
      {"15 Nov 1994 08:12:31 +01:30", date_of(1994, 11, 15, 7, 12, 31)},
      {"15 Nov 1994 08:12:31 +00120", date_of(1994, 11, 15, 6, 12, 31)},
      {"15 Nov 1994 08:12:31 -2400", date_of(1994, 11, 16, 8, 12, 31)},
      // Fields that make no date.
      {"0 Nov 1994 08:12:31", kZeroDate},
      {"31 Nov 1994 08:12:31", kZeroDate},
      {"29 Feb 2021 08:12:31", kZeroDate},
      {"15 Nov 1994 24:12:31", kZeroDate},
      {"15 Nov 1994 08:60:31", kZeroDate},
      {"15 Nov 1994 08:12:60", kZeroDate},
      {"15 Nov 1600 08:12:31", kZeroDate},
      {"15 Nov 19945 08:12:31", kZeroDate},
      {"15 Nov 99999999999999999999 08:12:31", kZeroDate},
      {"1 Jan 1601 00:00:00 +0100", kZeroDate},
      {"31 Dec 9999 23:30:00 -0100", kZeroDate},
      {"15 Nov 1994 08:12:31 +0099999999999999999999", kZeroDate},
  };
  static_assert(std::size(rows) >= 60);
  for (const auto& row : rows) EXPECT_NEAR(parse_date(row.text), row.date, kTenthOfASecond) << row.text;
}

TEST(Date, a_month_that_cannot_be_read_is_an_invalid_argument) {
  const platform::FixedClock clock = noon_in(kNoonUtc);
  for (const std::string_view text :
       {"Tue, 15 Foo 1994 08:12:31 GMT"sv, "x"sv, "15"sv, "15 No"sv, "Tue, "sv, "15  "sv,
        "Tuesday, 15 Nov 1994 08:12:31"sv, "1994-11-15 08:12:31"sv, "15-Nov-1994 08:12:31"sv, "Nov 15 1994 08:12:31"sv,
        "115 Nov 1994 08:12:31"sv, ", 15 Nov 1994 08:12:31"sv, "Tue, 15 N\0v 1994"sv, " "sv, "\xFF\xFF"sv}) {
    try {
      parse_date(text);
      ADD_FAILURE() << text;
    } catch (const Error& error) {
      EXPECT_EQ(error.status(), Status::invalid_argument) << text;
    }
  }
}

TEST(Date, a_date_cut_at_any_byte_reads_as_far_as_it_goes_or_is_an_invalid_argument) {
  const platform::FixedClock clock = noon_in(kNoonUtc);
  const std::string whole = "Tue, 15 Nov 1994 08:12:31 +0130";
  // What is read of texts up to this length and longer than that of the row above.
  const struct {
    std::size_t up_to;
    double date;
  } rows[] = {
      {10, -1},  // not even the month: an invalid argument
      // No year, then 1, 19 and 199, of which the last is taken for four digits.
      {12, date_of(1900, 11, 15)},
      {13, date_of(1901, 11, 15)},
      {14, date_of(1919, 11, 15)},
      {15, kZeroDate},
      {18, date_of(1994, 11, 15)},
      {20, date_of(1994, 11, 15, 8)},
      {21, date_of(1994, 11, 15, 8, 1)},
      {23, date_of(1994, 11, 15, 8, 12)},
      {24, date_of(1994, 11, 15, 8, 12, 3)},
      // "+" and "+0", then "+01", "+013", "+0130".
      {28, date_of(1994, 11, 15, 8, 12, 31)},
      {29, date_of(1994, 11, 15, 7, 12, 31)},
      {30, date_of(1994, 11, 15, 7, 9, 31)},
      {31, date_of(1994, 11, 15, 6, 42, 31)},
  };
  std::size_t length = 0;
  for (const auto& row : rows) {
    for (; length <= row.up_to && length <= whole.size(); ++length) {
      double date = -1;
      try {
        date = parse_date(std::string_view(whole).substr(0, length));
      } catch (const Error& error) {
        EXPECT_EQ(error.status(), Status::invalid_argument);
      }
      EXPECT_NEAR(date, row.date, kTenthOfASecond) << whole.substr(0, length);
    }
  }
  EXPECT_EQ(length, whole.size() + 1);
}

TEST(Date, a_date_is_shifted_to_the_local_time_in_force_now) {
  const struct {
    const platform::BrokenDownTime& local;
    double date;
  } rows[] = {{kNoonUtc, date_of(1994, 11, 15, 8, 12, 31)},
              {kOneHourEast, date_of(1994, 11, 15, 9, 12, 31)},
              {kTenHoursWest, date_of(1994, 11, 14, 22, 12, 31)},
              {kFiveAndAHalfEast, date_of(1994, 11, 15, 13, 42, 31)},
              {kThreeAndAHalfWest, date_of(1994, 11, 15, 4, 42, 31)}};
  for (const auto& row : rows) {
    const platform::FixedClock clock = noon_in(row.local);
    EXPECT_NEAR(parse_date("Tue, 15 Nov 1994 08:12:31 GMT"), row.date, kTenthOfASecond);
  }
}

TEST(Date, a_date_without_day_name_and_seconds_reads_as_1994_shifted_from_its_zone) {
  const platform::FixedClock clock = noon_in(kOneHourEast);
  EXPECT_NEAR(parse_date("15 Nov 94 08:12 -0500"), date_of(1994, 11, 15, 14, 12), kTenthOfASecond);
}

TEST(Date, a_two_digit_year_is_of_the_twentieth_century) {
  const platform::FixedClock clock = noon_in(kNoonUtc);
  EXPECT_NEAR(parse_date("15 Nov 05 08:12 +0000"), date_of(1905, 11, 15, 8, 12), kTenthOfASecond);
}

TEST(Date, bytes_from_128_up_count_as_white_space) {
  const platform::FixedClock clock = noon_in(kNoonUtc);
  EXPECT_NEAR(parse_date("\xA0Tue,\xA0"
                         "15 \xA0Nov \x80"
                         "1994 \xFF"
                         "08:12:31\xA0GMT"),
              date_of(1994, 11, 15, 8, 12, 31), kTenthOfASecond);
}

TEST(Date, a_shift_out_of_the_range_of_dates_gives_the_zero_date) {
  const platform::FixedClock east = noon_in(kOneHourEast);
  EXPECT_EQ(parse_date("31 Dec 9999 23:30:00 GMT"), kZeroDate);
  const platform::FixedClock west = noon_in(kTenHoursWest);
  EXPECT_EQ(parse_date("1 Jan 1601 00:00:00 GMT"), kZeroDate);
}

TEST(Date, the_current_date_is_the_local_time_of_the_clock) {
  const platform::FixedClock clock = noon_in(kFiveAndAHalfEast);
  EXPECT_NEAR(current_date(), date_of(2026, 6, 15, 17, 30), kTenthOfASecond);
}

TEST(Date, the_zone_is_the_number_of_hours_filled_in_from_the_right) {
  const double date = date_of(2024, 1, 7, 17, 5, 9);
  const struct {
    const platform::BrokenDownTime& local;
    const char* text;
  } rows[] = {{kOneHourEast, "Sun, 7 Jan 2024 17:05:09 +0001"},
              {kTwoHoursEast, "Sun, 7 Jan 2024 17:05:09 +0002"},
              {kTenHoursWest, "Sun, 7 Jan 2024 17:05:09 -0010"},
              {kFiveAndAHalfEast, "Sun, 7 Jan 2024 17:05:09 +0005"},
              {kThreeAndAHalfWest, "Sun, 7 Jan 2024 17:05:09 -0003"}};
  for (const auto& row : rows) {
    const platform::FixedClock clock = noon_in(row.local);
    EXPECT_EQ(format_date(date), row.text);
  }
}

TEST(Date, at_utc_the_zone_reads_minus_and_five_zeros) {
  const platform::FixedClock clock = noon_in(kNoonUtc);
  EXPECT_EQ(format_date(date_of(2024, 1, 7, 17, 5, 9)), "Sun, 7 Jan 2024 17:05:09 -00000");
}

TEST(Date, under_one_hour_from_utc_the_zone_has_five_zeros_and_the_sign_of_its_side) {
  const double date = date_of(2024, 1, 7, 17, 5, 9);
  {
    const platform::FixedClock clock = noon_in(kHalfAnHourEast);
    EXPECT_EQ(format_date(date), "Sun, 7 Jan 2024 17:05:09 +00000");
  }
  const platform::FixedClock clock = noon_in(kHalfAnHourWest);
  EXPECT_EQ(format_date(date), "Sun, 7 Jan 2024 17:05:09 -00000");
}

TEST(Date, dates_are_written_as_worked_out_by_hand) {
  const platform::FixedClock clock = noon_in(kOneHourEast);
  const struct {
    double date;
    const char* text;
  } rows[] = {
      {date_of(2024, 1, 7), "Sun, 7 Jan 2024 00:00:00 +0001"},
      {date_of(2000, 2, 29, 23, 59, 59), "Tue, 29 Feb 2000 23:59:59 +0001"},
      {date_of(1999, 12, 31, 1, 2, 3), "Fri, 31 Dec 1999 01:02:03 +0001"},
      {date_of(9999, 12, 31, 12), "Fri, 31 Dec 9999 12:00:00 +0001"},
      {date_of(2023, 3, 1, 10, 20, 30), "Wed, 1 Mar 2023 10:20:30 +0001"},
      {date_of(2023, 7, 3, 9, 8, 7), "Mon, 3 Jul 2023 09:08:07 +0001"},
      {date_of(2023, 8, 10), "Thu, 10 Aug 2023 00:00:00 +0001"},
      {date_of(2023, 9, 16), "Sat, 16 Sep 2023 00:00:00 +0001"},
      {0.0, "Sat, 30 Dec 1899 00:00:00 +0001"},
      // Before the zero date the fraction counts forward from midnight all the same.
      {-1.25, "Fri, 29 Dec 1899 06:00:00 +0001"},
  };
  for (const auto& row : rows) EXPECT_EQ(format_date(row.date), row.text);
}

TEST(Date, a_date_that_cannot_be_converted_is_written_as_the_zero_date) {
  const platform::FixedClock clock = noon_in(kOneHourEast);
  for (const double date :
       {1e9, -1e9, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(format_date(date), "Sat, 30 Dec 1899 00:00:00 +0001");
  }
}

TEST(Date, what_is_written_reads_back_less_its_odd_zone) {
  // "+0001" is one minute east when read.
  const platform::FixedClock clock = noon_in(kOneHourEast);
  EXPECT_NEAR(parse_date(format_date(date_of(2024, 1, 7, 17, 5, 9))), date_of(2024, 1, 7, 18, 4, 9), kTenthOfASecond);
}

TEST(Date, megabyte_dates_are_read) {
  const platform::FixedClock clock = noon_in(kNoonUtc);
  const std::string blanks(std::size_t{1} << 20, ' ');
  const std::string nines(std::size_t{1} << 20, '9');
  EXPECT_NEAR(parse_date(blanks + "15 Nov" + blanks + "1994" + blanks + "08:12:31"), date_of(1994, 11, 15, 8, 12, 31),
              kTenthOfASecond);
  EXPECT_EQ(parse_date("15 Nov " + nines), kZeroDate);
}

}  // namespace
}  // namespace vellobar
