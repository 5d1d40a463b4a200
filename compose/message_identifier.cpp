#include "compose/message_identifier.h"

#include <algorithm>

namespace vellobar::compose {

namespace {

constexpr int kDigits = 32;

/// The linear congruential generator of the Windows C runtime, so that a tick gives the same digits on every system.
class Generator {
 public:
  explicit Generator(std::uint32_t seed) : state_(seed) {}

  std::uint32_t next() {
    state_ = state_ * 214013u + 2531011u;
    return (state_ >> 16) & 0x7FFF;
  }

 private:
  std::uint32_t state_;
};

}  // namespace

std::string message_identifier(std::uint32_t ticks, std::string_view host) {
  Generator generator(ticks);
  std::string identifier;
  for (int i = 0; i < kDigits; ++i) identifier += "0123456789ABCDEF"[generator.next() & 15];
  identifier += '@';
  identifier += host;
  std::replace_if(
      identifier.begin(), identifier.end(), [](char c) { return c == ' ' || c == '<' || c == '>'; }, '_');
  return identifier;
}

}  // namespace vellobar::compose
