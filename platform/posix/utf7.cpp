#include <array>
#include <cstdint>

#include "platform/posix/unicode_transformations.h"

namespace vellobar::platform {

namespace {

constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// By byte: its six bits, or -1 for one outside the Base64 alphabet.
constexpr auto kSextets = [] {
  std::array<short, 256> sextets{};
  sextets.fill(-1);
  for (std::size_t i = 0; i < kBase64.size(); ++i) {
    sextets[static_cast<unsigned char>(kBase64[i])] = static_cast<short>(i);
  }
  return sextets;
}();

/// By character below 0x80: whether it is written as it stands.
constexpr auto kDirect = [] {
  std::array<bool, 128> direct{};
  constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789'(),-./:? \t\r\n";
  for (char c : kPlain) direct[static_cast<unsigned char>(c)] = true;
  direct[0] = true;
  return direct;
}();

bool is_direct(char16_t unit) noexcept { return unit < kDirect.size() && kDirect[unit]; }

/// Bits gathered six at a time and taken sixteen at a time, or the other way round.
struct BitBuffer {
  std::uint32_t bits = 0;
  int count = 0;

  void put(std::uint32_t value, int width) noexcept {
    bits = bits << width | value;
    count += width;
  }
  std::uint32_t take(int width) noexcept {
    count -= width;
    return bits >> count & ((1u << width) - 1);
  }
};

}  // namespace

std::u16string from_utf7(std::string_view bytes) {
  std::u16string text;
  text.reserve(bytes.size());
  BitBuffer buffer;
  std::size_t at = 0;
  while (at < bytes.size()) {
    if (bytes[at] != '+') {
      text += static_cast<unsigned char>(bytes[at++]);
      continue;
    }
    ++at;
    if (at < bytes.size() && bytes[at] == '-') {
      text += u'+';
      ++at;
      continue;
    }
    for (; at < bytes.size(); ++at) {
      const int sextet = kSextets[static_cast<unsigned char>(bytes[at])];
      if (sextet < 0) break;
      buffer.put(static_cast<std::uint32_t>(sextet), 6);
      if (buffer.count >= 16) text += static_cast<char16_t>(buffer.take(16));
    }
    if (at == bytes.size()) break;
    const auto end = static_cast<unsigned char>(bytes[at]);
    // Deliberate, as Windows does it: a byte beyond ASCII ends the run without discarding its last bits, which then
    // begin the next run (test malformed_utf7_ends_as_on_windows).
    if (end < 0x80) buffer = {};
    if (end == '-') ++at;
  }
  return text;
}

std::string to_utf7(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    if (is_direct(text[at])) {
      bytes += static_cast<char>(text[at++]);
      continue;
    }
    bytes += '+';
    if (text[at] == u'+') {
      bytes += '-';
      ++at;
      continue;
    }
    BitBuffer buffer;
    for (; at < text.size() && !is_direct(text[at]) && text[at] != u'+'; ++at) {
      buffer.put(text[at], 16);
      while (buffer.count >= 6) bytes += kBase64[buffer.take(6)];
    }
    if (buffer.count > 0) {
      buffer.put(0, 6 - buffer.count);
      bytes += kBase64[buffer.take(6)];
    }
    bytes += '-';
  }
  return bytes;
}

}  // namespace vellobar::platform
