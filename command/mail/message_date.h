// The date of a message, where its header has one that can be read.
#pragma once

#include <optional>
#include <string>

#include "platform/clock.h"

namespace vellobar {
class CMessage;
}

namespace vellobar::command {

/// As an automation date in local time; none for a message without a readable one.
std::optional<double> date_of(CMessage& message);

/// A date in local time as that instant in UTC.
platform::BrokenDownTime in_utc(double date);

/// A date in local time as "2024-03-31 17:05".
std::string local_minute(double date);
/// A date in local time as that instant in UTC, "2024-03-31T16:05:09Z".
std::string utc_timestamp(double date);

}  // namespace vellobar::command
