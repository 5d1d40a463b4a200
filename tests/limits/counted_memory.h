// The memory of a test program, counted and refused at will: the program's own `operator new` stands behind this, so
// that everything the component allocates is seen. One test at a time; what is allocated on other threads counts too.
#pragma once

#include <cstddef>

namespace vellobar::tests {

/// Bytes, and pieces, that are allocated now.
std::size_t allocated_bytes() noexcept;
std::size_t allocated_pieces() noexcept;

/// The most bytes that were allocated at once since it was made, beyond those allocated at that moment.
class PeakMemory {
 public:
  PeakMemory() noexcept;
  PeakMemory(const PeakMemory&) = delete;
  PeakMemory& operator=(const PeakMemory&) = delete;
  std::size_t bytes() const noexcept;

 private:
  std::size_t before_;
};

enum class Refusal { once, from_then_on };

/// While it lives, the allocation of a number (counted from 1) fails, alone or with all that follow.
class RefusedAllocation {
 public:
  RefusedAllocation(std::size_t number, Refusal refusal) noexcept;
  ~RefusedAllocation();
  RefusedAllocation(const RefusedAllocation&) = delete;
  RefusedAllocation& operator=(const RefusedAllocation&) = delete;

  /// True when it came to that allocation.
  bool came() const noexcept;
};

/// For allocations that do not come through `operator new`: counted like those, and true for one that is to fail.
bool is_next_allocation_refused() noexcept;

}  // namespace vellobar::tests
