#include "command/mail/message_date.h"

#include <cstdint>
#include <cstdio>

#include "errors/error.h"
#include "mailbox/message.h"

namespace vellobar::command {

// Local time is read and written with the distance from UTC that is in force now, as the component does.
platform::BrokenDownTime in_utc(double date) {
  platform::BrokenDownTime utc;
  if (!platform::from_automation_date(date, utc)) return {};
  const platform::ClockReading now = platform::read_clock();
  std::int64_t ticks = 0, utc_now = 0, local_now = 0;
  if (!platform::to_ticks(utc, ticks) || !platform::to_ticks(now.utc, utc_now)) return utc;
  if (!platform::to_ticks(now.local, local_now)) return utc;
  platform::from_ticks(ticks - (local_now - utc_now), utc);
  return utc;
}

std::optional<double> date_of(CMessage& message) {
  if (message.decoded_header("Date").empty()) return std::nullopt;
  try {
    const double date = message.Date();
    // What makes no date is the zero date.
    return date == 0 ? std::nullopt : std::optional<double>(date);
  } catch (const Error&) {
    return std::nullopt;
  }
}

std::string local_minute(double date) {
  platform::BrokenDownTime time;
  if (!platform::from_automation_date(date, time)) return {};
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d", time.year, time.month, time.day, time.hour, time.minute);
  return text;
}

std::string utc_timestamp(double date) {
  const platform::BrokenDownTime time = in_utc(date);
  char text[80];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02dZ", time.year, time.month, time.day, time.hour,
                time.minute, time.second);
  return text;
}

}  // namespace vellobar::command
