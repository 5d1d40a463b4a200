#include "api/dates.h"

#include <cmath>

namespace vellobar {

namespace {

using std::chrono::days;
using std::chrono::local_days;
using std::chrono::seconds;

constexpr local_days kDayZero{std::chrono::year(1899) / std::chrono::December / 30};
constexpr double kSecondsOfDay = 86400;

}  // namespace

std::chrono::local_seconds local_time(double automation_date) {
  const double day = std::trunc(automation_date);
  const double second = std::round(std::abs(automation_date - day) * kSecondsOfDay);
  return kDayZero + days(static_cast<int>(day)) + seconds(static_cast<int>(second));
}

double automation_date(std::chrono::local_seconds time) {
  const local_days day = std::chrono::floor<days>(time);
  const double fraction = static_cast<double>((time - day).count()) / kSecondsOfDay;
  const auto count = static_cast<double>((day - kDayZero).count());
  return count < 0 ? count - fraction : count + fraction;
}

}  // namespace vellobar
