// What the operating system itself says about time; `clock.cpp` puts a test's fixed clock in front of it.
#pragma once

#include <cstdint>

#include "platform/clock.h"

namespace vellobar::platform {

/// UTC and local time from one reading of the system's clock, by the distance from UTC in force now.
ClockReading read_system_clock();

/// Milliseconds since the machine started, wrapping at 2^32.
std::uint32_t system_tick_count() noexcept;

}  // namespace vellobar::platform
