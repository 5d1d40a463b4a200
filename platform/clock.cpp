#include "platform/clock.h"

#include <optional>

#include "platform/clock_source.h"

namespace vellobar::platform {

namespace {

struct FixedTime {
  ClockReading reading;
  std::uint32_t ticks;
};

std::optional<FixedTime> fixed_time;

}  // namespace

ClockReading read_clock() { return fixed_time ? fixed_time->reading : read_system_clock(); }

std::uint32_t tick_count() noexcept { return fixed_time ? fixed_time->ticks : system_tick_count(); }

FixedClock::FixedClock(const ClockReading& reading, std::uint32_t ticks) { fixed_time = FixedTime{reading, ticks}; }

FixedClock::~FixedClock() { fixed_time.reset(); }

}  // namespace vellobar::platform
