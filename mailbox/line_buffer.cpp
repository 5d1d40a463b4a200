#include "mailbox/line_buffer.h"

#include <cstring>
#include <utility>

namespace vellobar::mailbox {

namespace {

constexpr std::size_t kFirstCapacity = 4096;
constexpr std::size_t kFirstGrowthStep = 32768;
constexpr std::size_t kGrowthStepDoublesBelow = 1'280'000;

void wipe(char* bytes, std::size_t count) noexcept {
  std::memset(bytes, 0, count);
  // The compiler may not drop a write that this empty instruction could read.
  asm volatile("" : : "r"(bytes) : "memory");
}

}  // namespace

WipedStorage::WipedStorage(std::size_t size, std::pmr::memory_resource* memory)
    : data_(static_cast<char*>(memory->allocate(size, kAlignment))), size_(size), memory_(memory) {}

WipedStorage::~WipedStorage() {
  if (data_ == nullptr) return;
  wipe(data_, size_);
  memory_->deallocate(data_, size_, kAlignment);
}

WipedStorage::WipedStorage(WipedStorage&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)), memory_(other.memory_) {}

WipedStorage& WipedStorage::operator=(WipedStorage&& other) noexcept {
  WipedStorage taken(std::move(other));
  std::swap(data_, taken.data_);
  std::swap(size_, taken.size_);
  std::swap(memory_, taken.memory_);
  return *this;
}

LineBuffer::LineBuffer(std::pmr::memory_resource* memory)
    : memory_(memory), storage_(kFirstCapacity, memory), growth_step_(kFirstGrowthStep) {
  storage_.data()[0] = '\0';
}

void LineBuffer::append(std::string_view bytes) {
  make_room(bytes.size());
  if (!bytes.empty()) std::memcpy(storage_.data() + write_, bytes.data(), bytes.size());
  write_ += bytes.size();
  storage_.data()[write_] = '\0';
}

std::optional<Line> LineBuffer::take_line() {
  const std::string_view held = unread();
  const std::size_t line_feed = held.find('\n');
  if (line_feed == std::string_view::npos) return std::nullopt;
  const bool carriage_return = line_feed > 0 && held[line_feed - 1] == '\r';
  const std::size_t text_size = carriage_return ? line_feed - 1 : line_feed;
  storage_.data()[read_ + text_size] = '\0';
  read_ += line_feed + 1;
  return Line{held.substr(0, text_size), line_feed + 1};
}

void LineBuffer::make_room(std::size_t count) {
  while (write_ + count + 1 >= capacity()) {
    if (read_ > capacity() / 2) {
      std::memmove(storage_.data(), storage_.data() + read_, write_ - read_);
      write_ -= std::exchange(read_, 0);
    } else {
      grow(count);
    }
  }
}

void LineBuffer::grow(std::size_t count) {
  WipedStorage larger(growth_step_ + capacity() + count + 1, memory_);
  std::memcpy(larger.data(), storage_.data(), write_);
  storage_ = std::move(larger);
  if (growth_step_ < kGrowthStepDoublesBelow) growth_step_ *= 2;
}

}  // namespace vellobar::mailbox
