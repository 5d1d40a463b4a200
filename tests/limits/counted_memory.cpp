#include "tests/limits/counted_memory.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t kAlignment = alignof(std::max_align_t);
constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

std::atomic<std::size_t> bytes_now{0};
std::atomic<std::size_t> pieces_now{0};
std::atomic<std::size_t> most_bytes{0};
/// How many allocations are still granted.
std::atomic<std::size_t> granted{kNever};
std::atomic<bool> refuses_on{false};
std::atomic<bool> has_refused{false};

/// Stands in front of every piece.
struct Piece {
  std::size_t size;
  void* start;
};

bool is_refused() noexcept {
  if (granted == kNever) return false;
  if (granted > 1) {
    --granted;
    return false;
  }
  has_refused = true;
  granted = refuses_on ? 1 : kNever;
  return true;
}

void count(std::size_t size) noexcept {
  ++pieces_now;
  const std::size_t bytes = bytes_now += size;
  if (bytes > most_bytes) most_bytes = bytes;
}

void* allocate(std::size_t size, std::size_t alignment) noexcept {
  if (is_refused() || size > kNever / 2) return nullptr;
  void* const start = std::malloc(size + sizeof(Piece) + alignment);
  if (start == nullptr) return nullptr;
  const auto behind_piece = reinterpret_cast<std::uintptr_t>(start) + sizeof(Piece);
  const std::uintptr_t aligned = (behind_piece + alignment - 1) / alignment * alignment;
  *(reinterpret_cast<Piece*>(aligned) - 1) = {size, start};
  count(size);
  return reinterpret_cast<void*>(aligned);
}

void release(void* memory) noexcept {
  if (memory == nullptr) return;
  const Piece piece = *(static_cast<Piece*>(memory) - 1);
  --pieces_now;
  bytes_now -= piece.size;
  std::free(piece.start);
}

void* allocate_or_throw(std::size_t size, std::size_t alignment) {
  void* const memory = allocate(size, alignment);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

// Every form, because a sanitizer brings its own for those that are missing.
void* operator new(std::size_t size) { return allocate_or_throw(size, kAlignment); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  return allocate_or_throw(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size, kAlignment); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept { release(memory); }
void* operator new[](std::size_t size) { return allocate_or_throw(size, kAlignment); }
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return allocate_or_throw(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size, kAlignment); }
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, std::align_val_t, const std::nothrow_t&) noexcept { release(memory); }

namespace vellobar::tests {

std::size_t allocated_bytes() noexcept { return bytes_now; }
std::size_t allocated_pieces() noexcept { return pieces_now; }

PeakMemory::PeakMemory() noexcept : before_(bytes_now) { most_bytes = before_; }
std::size_t PeakMemory::bytes() const noexcept { return most_bytes - before_; }

RefusedAllocation::RefusedAllocation(std::size_t number, Refusal refusal) noexcept {
  has_refused = false;
  refuses_on = refusal == Refusal::from_then_on;
  granted = number;
}

RefusedAllocation::~RefusedAllocation() { granted = kNever; }

bool is_next_allocation_refused() noexcept { return is_refused(); }

bool RefusedAllocation::came() const noexcept { return has_refused; }

}  // namespace vellobar::tests
