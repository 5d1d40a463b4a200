// Date texts: any text is a date, the zero date or a month that cannot be read; a date that was written reads as
// itself, moved by what the fixed form of its zone says wrongly.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "errors/error.h"
#include "fuzz/choices.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "headers/date.h"
#include "platform/clock.h"

namespace vellobar::fuzz {

namespace {

constexpr double kMinutesOfDay = 24.0 * 60;
/// 1 January 1602 and 1 January 9999: between them no zone leads out of what can be converted.
constexpr double kFirst = -108'837;
constexpr double kLast = 2'958'101;

platform::BrokenDownTime after_midnight(int minutes) {
  return {.year = 2024, .month = 1, .day_of_week = 0, .day = 7, .hour = minutes / 60, .minute = minutes % 60};
}

/// Automation dates before day 0 count their time of day backwards; this makes minutes of one line of them.
double minutes_of(double date) {
  const double day = std::trunc(date);
  return (day + std::abs(date - day)) * kMinutesOfDay;
}

void require_form(const std::string& text, bool is_at_utc) {
  static constexpr std::string_view kForm = "Aaa, 9 Aaa 9999 99:99:99 +9999";
  std::size_t at = 0;
  for (const char wanted : kForm) {
    const char c = text[at];
    const bool fits = wanted == 'A'   ? c >= 'A' && c <= 'Z'
                      : wanted == 'a' ? c >= 'a' && c <= 'z'
                      : wanted == '9' ? c >= '0' && c <= '9'
                      : wanted == '+' ? c == '+' || c == '-'
                                      : c == wanted;
    // The first number is the day, of one digit or two; years before 1000 have three.
    const bool is_second_digit = wanted == ' ' && at == 6 && c >= '0' && c <= '9';
    if (is_second_digit) ++at;
    require(is_second_digit || fits, "a date is written in its fixed form");
    ++at;
  }
  require(text.size() == at + (is_at_utc ? 1 : 0), "a date is written in its fixed form and nothing behind");
}

void require_round_trip(double date, int distance) {
  if (!(date >= kFirst && date <= kLast)) return;
  const std::string text = headers::format_date(date);
  require_form(text, std::abs(distance) < 60);
  // The hours stand in the places of the minutes.
  const double zone = std::abs(distance) / 60 * (distance > 0 ? 1 : -1);
  const double expected = minutes_of(date) + distance - zone;
  require(std::abs(minutes_of(headers::parse_date(text)) - expected) < 0.02, "a date that was written reads as itself");
}

}  // namespace

void fuzz_dates(std::string_view input) {
  Choices choices(input);
  const int distance = (static_cast<int>(choices.below(105)) - 48) * 15;
  const bool is_east = distance > 0;
  const platform::FixedClock clock({after_midnight(is_east ? 0 : -distance), after_midnight(is_east ? distance : 0)},
                                   0);
  try {
    const double date = headers::parse_date(choices.text());
    require(date >= -109'205 - 1 && date < 2'958'466, "a date lies between 1601 and 9999");
    require_round_trip(date, distance);
  } catch (const Error& error) {
    require(error.status() == Status::invalid_argument, "nothing is wrong with a date but its month");
  }
  double date = 0;
  const std::string_view bytes = choices.take(sizeof date);
  std::memcpy(&date, bytes.data(), bytes.size());
  require(!headers::format_date(date).empty(), "any number is written as a date");
  require_round_trip(std::fmod(date, 3e6), distance);
}

}  // namespace vellobar::fuzz
