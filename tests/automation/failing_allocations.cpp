#include "tests/automation/failing_allocations.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <new>

namespace vellobar::tests {

namespace {

constexpr int kUnlimited = -1;
thread_local int left = kUnlimited;
thread_local bool one_failed = false;

}  // namespace

FailingAllocations::FailingAllocations(int succeeding) {
  left = succeeding;
  one_failed = false;
}
FailingAllocations::~FailingAllocations() { left = kUnlimited; }

bool FailingAllocations::failed() const { return one_failed; }

void with_each_allocation_failing(const std::function<void()>& work, const std::function<void(bool failed)>& check) {
  constexpr int kMost = 1000;
  for (int succeeding = 0; succeeding < kMost; ++succeeding) {
    SCOPED_TRACE(testing::Message() << succeeding << " allocations succeed");
    bool failed = false;
    {
      const FailingAllocations failing(succeeding);
      work();
      failed = failing.failed();
    }
    check(failed);
    if (!failed) return;
  }
  FAIL() << "allocations never came to an end";
}

}  // namespace vellobar::tests

void* operator new(std::size_t size) {
  using vellobar::tests::left, vellobar::tests::one_failed;
  if (left == 0) {
    one_failed = true;
    throw std::bad_alloc();
  }
  if (left > 0) --left;
  if (void* memory = std::malloc(size > 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
