#include <cstddef>
#include <cstdint>

#include "platform/posix/unicode_transformations.h"

namespace vellobar::platform {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// What a lead byte asks for: how many bytes follow, and the range of the first of them, which keeps overlong forms,
/// surrogates and numbers above U+10FFFF out (Unicode, table 3-7).
struct LeadByte {
  int following = 0;
  unsigned char first = 0x80, last = 0xBF;
};

constexpr LeadByte classify(unsigned char byte) noexcept {
  if (byte >= 0xC2 && byte <= 0xDF) return {1};
  if (byte == 0xE0) return {2, 0xA0, 0xBF};
  if (byte == 0xED) return {2, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {2};
  if (byte == 0xF0) return {3, 0x90, 0xBF};
  if (byte == 0xF4) return {3, 0x80, 0x8F};
  if (byte >= 0xF1 && byte <= 0xF3) return {3};
  return {};
}

/// Reads one character that does not begin with an ASCII byte, from `at` on, which moves behind what was read.
char32_t read_character(std::string_view bytes, std::size_t& at) noexcept {
  const auto byte = static_cast<unsigned char>(bytes[at++]);
  const LeadByte lead = classify(byte);
  if (lead.following == 0) return kReplacement;
  char32_t character = byte & (0x3Fu >> lead.following);
  unsigned char first = lead.first, last = lead.last;
  for (int i = 0; i < lead.following; ++i) {
    if (at == bytes.size()) return kReplacement;
    const auto next = static_cast<unsigned char>(bytes[at]);
    if (next < first || next > last) return kReplacement;
    character = character << 6 | (next & 0x3F);
    ++at;
    first = 0x80;
    last = 0xBF;
  }
  return character;
}

bool is_high_surrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xD800; }
bool is_low_surrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

/// Reads one character from `at` on, which moves behind it.
char32_t read_character(std::u16string_view text, std::size_t& at) noexcept {
  const char16_t unit = text[at++];
  if (is_high_surrogate(unit) && at < text.size() && is_low_surrogate(text[at])) {
    return 0x10000 + ((unit & 0x3FFu) << 10) + (text[at++] & 0x3FFu);
  }
  return is_high_surrogate(unit) || is_low_surrogate(unit) ? kReplacement : unit;
}

char continuation(char32_t character, int shift) noexcept {
  return static_cast<char>(0x80 | ((character >> shift) & 0x3F));
}

}  // namespace

void append_from_utf8(std::string_view bytes, std::u16string& text) {
  // Room for the worst case first: no character has more units than bytes.
  std::size_t length = text.size();
  text.resize(length + bytes.size());
  std::size_t at = 0;
  while (at < bytes.size()) {
    if (static_cast<unsigned char>(bytes[at]) < 0x80) {
      text[length++] = static_cast<char16_t>(bytes[at++]);
      continue;
    }
    const char32_t character = read_character(bytes, at);
    if (character < 0x10000) {
      text[length++] = static_cast<char16_t>(character);
    } else {
      text[length++] = static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
      text[length++] = static_cast<char16_t>(0xDC00 + (character & 0x3FF));
    }
  }
  text.resize(length);
}

void append_to_utf8(std::u16string_view text, std::string& bytes) {
  constexpr std::size_t kMostBytes = 3;  // of one unit; a pair of two has four
  std::size_t length = bytes.size();
  bytes.resize(length + text.size() * kMostBytes);
  std::size_t at = 0;
  while (at < text.size()) {
    const char32_t character = read_character(text, at);
    if (character < 0x80) {
      bytes[length++] = static_cast<char>(character);
    } else if (character < 0x800) {
      bytes[length++] = static_cast<char>(0xC0 | character >> 6);
      bytes[length++] = continuation(character, 0);
    } else if (character < 0x10000) {
      bytes[length++] = static_cast<char>(0xE0 | character >> 12);
      bytes[length++] = continuation(character, 6);
      bytes[length++] = continuation(character, 0);
    } else {
      bytes[length++] = static_cast<char>(0xF0 | character >> 18);
      bytes[length++] = continuation(character, 12);
      bytes[length++] = continuation(character, 6);
      bytes[length++] = continuation(character, 0);
    }
  }
  bytes.resize(length);
}

}  // namespace vellobar::platform
