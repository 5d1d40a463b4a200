// Dates of messages are automation dates, as every client of the component gets them: days since 30 December 1899 in
// local time, the time of day as the fraction, which before that day counts forward all the same.
#pragma once

#include <chrono>

namespace vellobar {

/// An automation date as local time, to the nearest second, and back.
std::chrono::local_seconds local_time(double automation_date);
double automation_date(std::chrono::local_seconds time);

}  // namespace vellobar
