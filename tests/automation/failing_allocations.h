// Allocations that fail, for tests that link the code under test into their own program.
#pragma once

#include <functional>

namespace vellobar::tests {

/// Lets every allocation of this thread behind the first few fail for as long as it lives.
class FailingAllocations {
 public:
  explicit FailingAllocations(int succeeding);
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;

  /// Whether one has failed.
  bool failed() const;
};

/// Does the same again and again, with one more allocation that succeeds each time, until none fails any more. `check`
/// looks at what came of it: whether an allocation failed.
void with_each_allocation_failing(const std::function<void()>& work, const std::function<void(bool failed)>& check);

}  // namespace vellobar::tests
