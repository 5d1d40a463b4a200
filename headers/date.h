// The "Date" header as automation dates. Reading takes the forms that mail programs wrote before and after RFC 822
// (day names or none, two-digit years, named zones); writing has one fixed form. Both use the distance from UTC that
// the clock shows now, whatever rule was in force on the date itself.
#pragma once

#include <string>
#include <string_view>

namespace vellobar::headers {

/// A date text (bytes in the process code page) as an automation date in the machine's present local time.
/// Status::invalid_argument when the month cannot be read; the zero date when the fields make no date.
double parse_date(std::string_view text);

/// The current local time as an automation date.
double current_date();

/// An automation date, taken as it stands, in the fixed form "Sun, 7 Jan 2024 17:05:09 +0001": the zone is the whole
/// hours between UTC and local time, filled in from the right. A date that cannot be converted prints as the zero date.
std::string format_date(double date);

}  // namespace vellobar::headers
