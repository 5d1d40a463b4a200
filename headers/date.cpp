#include "headers/date.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "errors/error.h"
#include "mime/ascii.h"
#include "platform/clock.h"

namespace vellobar::headers {
namespace {

constexpr std::int64_t kTicksPerMinute = 600'000'000;
constexpr std::int64_t kTicksPerHour = 60 * kTicksPerMinute;
constexpr double kZeroDate = 0.0;

constexpr std::array<std::string_view, 7> kDayNames = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<std::string_view, 12> kMonthNames = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

struct NamedZone {
  std::string_view name;
  int minutes_east;
};
constexpr std::array<NamedZone, 9> kNamedZones = {{{"GMT", 0},
                                                   {"EST", -300},
                                                   {"EDT", -240},
                                                   {"CST", -360},
                                                   {"CDT", -300},
                                                   {"MST", -420},
                                                   {"MDT", -360},
                                                   {"PST", -480},
                                                   {"PDT", -420}}};

/// Reads a date text from left to right. Behind the end of the text every byte is zero.
class DateReader {
 public:
  explicit DateReader(std::string_view text) : text_(text) {}

  char byte(std::size_t ahead = 0) const { return position_ + ahead < text_.size() ? text_[position_ + ahead] : '\0'; }

  bool has_digit(std::size_t ahead = 0) const { return mime::is_ascii_digit(byte(ahead)); }

  /// The value of a digit, 0 for any other byte.
  int digit(std::size_t ahead) const { return has_digit(ahead) ? byte(ahead) - '0' : 0; }

  /// The number made by the digits from here on, 0 when there are none. Too large a number is the largest.
  int number(std::size_t ahead = 0) const {
    std::int64_t value = 0;
    for (; has_digit(ahead); ++ahead) {
      value = std::min<std::int64_t>(value * 10 + digit(ahead), std::numeric_limits<std::int32_t>::max());
    }
    return static_cast<int>(value);
  }

  /// True when the next three bytes are this name, in any case.
  bool at_name(std::string_view name) const {
    return position_ < text_.size() && mime::starts_with_ignoring_case(text_.substr(position_), name);
  }

  void skip(std::size_t bytes) { position_ += bytes; }

  /// White space is every byte up to 32 and, deliberately, every 8-bit byte: its value as a signed byte is negative.
  /// See bytes_from_128_up_count_as_white_space.
  void skip_white_space() {
    while (at_white_space()) ++position_;
  }

  void skip_white_space_and_commas() {
    while (at_white_space() || byte() == ',') ++position_;
  }

 private:
  bool at_white_space() const { return position_ < text_.size() && static_cast<signed char>(byte()) <= ' '; }

  std::string_view text_;
  std::size_t position_ = 0;
};

void read_day_of_week(DateReader& reader, platform::BrokenDownTime& time) {
  for (std::size_t i = 0; i < kDayNames.size(); ++i) {
    if (!reader.at_name(kDayNames[i])) continue;
    time.day_of_week = static_cast<int>(i);
    reader.skip(4);
    reader.skip_white_space_and_commas();
    return;
  }
}

void read_month(DateReader& reader, platform::BrokenDownTime& time) {
  for (std::size_t i = 0; i < kMonthNames.size(); ++i) {
    if (!reader.at_name(kMonthNames[i])) continue;
    time.month = static_cast<int>(i) + 1;
    reader.skip(4);
    reader.skip_white_space();
    return;
  }
  throw Error(Status::invalid_argument);
}

void read_year(DateReader& reader, platform::BrokenDownTime& time) {
  time.year = reader.number();
  reader.skip(2);
  // Deliberate: a two-digit year is of the twentieth century; see a_two_digit_year_is_of_the_twentieth_century.
  if (reader.has_digit()) {
    reader.skip(2);
  } else {
    time.year += 1900;
  }
  reader.skip_white_space();
}

void read_time_of_day(DateReader& reader, platform::BrokenDownTime& time) {
  time.hour = reader.number();
  time.minute = reader.number(3);
  reader.skip(5);
  if (reader.byte() == ':') {
    time.second = reader.number(1);
    reader.skip(3);
  }
  reader.skip_white_space();
}

/// Minutes east of UTC.
std::int64_t read_zone(DateReader& reader) {
  if (reader.byte() == '(') reader.skip(1);
  const char first = reader.byte();
  const bool has_sign = first == '+' || first == '-';
  if (has_sign || (first >= '0' && first <= '2')) {
    if (has_sign) reader.skip(1);
    const std::int64_t minutes = std::int64_t{reader.digit(0)} * 600 + reader.digit(1) * 60 + reader.number(2);
    return first == '-' ? -minutes : minutes;
  }
  const auto* zone = std::find_if(kNamedZones.begin(), kNamedZones.end(),
                                  [&](const NamedZone& candidate) { return reader.at_name(candidate.name); });
  return zone == kNamedZones.end() ? 0 : zone->minutes_east;
}

/// How far local time is ahead of UTC now, in ticks.
std::int64_t present_distance_from_utc() {
  const platform::ClockReading now = platform::read_clock();
  std::int64_t utc = 0;
  std::int64_t local = 0;
  if (!platform::to_ticks(now.utc, utc) || !platform::to_ticks(now.local, local)) return 0;
  return local - utc;
}

}  // namespace

double parse_date(std::string_view text) {
  DateReader reader(text);
  platform::BrokenDownTime time;
  reader.skip_white_space();
  read_day_of_week(reader, time);
  time.day = reader.number();
  reader.skip(2);
  reader.skip_white_space();
  read_month(reader, time);
  read_year(reader, time);
  read_time_of_day(reader, time);
  const std::int64_t zone_minutes = read_zone(reader);

  std::int64_t ticks = 0;
  if (!platform::to_ticks(time, ticks)) return kZeroDate;
  ticks += present_distance_from_utc() - zone_minutes * kTicksPerMinute;
  double date = kZeroDate;
  if (!platform::from_ticks(ticks, time) || !platform::to_automation_date(time, date)) return kZeroDate;
  return date;
}

double current_date() {
  double date = kZeroDate;
  return platform::to_automation_date(platform::read_clock().local, date) ? date : kZeroDate;
}

std::string format_date(double date) {
  platform::BrokenDownTime time;
  if (!platform::from_automation_date(date, time)) platform::from_automation_date(kZeroDate, time);
  const std::int64_t distance = present_distance_from_utc();
  const std::int64_t hours = std::abs(distance) / kTicksPerHour;
  // Deliberate: the hours stand in the places of the minutes, and no hours at all make the zone one digit longer; see
  // the_zone_is_the_number_of_hours_filled_in_from_the_right and at_utc_the_zone_reads_minus_and_five_zeros.
  const int zone_digits = hours == 0 ? 5 : 4;
  char text[96];
  std::snprintf(text, sizeof text, "%s, %d %s %d %02d:%02d:%02d %c%0*d",
                kDayNames[static_cast<std::size_t>(time.day_of_week)].data(), time.day,
                kMonthNames[static_cast<std::size_t>(time.month - 1)].data(), time.year, time.hour, time.minute,
                time.second, distance > 0 ? '+' : '-', zone_digits, static_cast<int>(hours));
  return text;
}

}  // namespace vellobar::headers
