// ASCII rules for bytes and code units, free of any locale: nearly all header text is ASCII, so finding the ASCII run
// and widening it are the loops that count. Both work on plain arrays without branches inside a block, for the compiler
// to turn into vector code.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vellobar::platform {

/// The line end that the component writes.
inline constexpr std::string_view kLineEnd = "\r\n";

template <typename Character>
constexpr Character lower_ascii(Character c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<Character>(c + ('a' - 'A')) : c;
}

/// True when every character lies between blank and tilde.
template <typename Character>
constexpr bool is_printable_ascii(std::basic_string_view<Character> text) noexcept {
  for (const Character c : text) {
    if (c < 0x20 || c > 0x7E) return false;
  }
  return true;
}

/// How many bytes at the front are ASCII.
inline std::size_t ascii_length(std::string_view bytes) noexcept {
  constexpr std::uint64_t kTopBits = 0x8080808080808080u;
  std::size_t at = 0;
  for (; at + 16 <= bytes.size(); at += 16) {
    std::uint64_t words[2];
    std::memcpy(words, bytes.data() + at, sizeof words);
    if (((words[0] | words[1]) & kTopBits) != 0) break;
  }
  while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80) ++at;
  return at;
}

/// True when no byte has its top bit set.
inline bool is_ascii(std::string_view bytes) noexcept { return ascii_length(bytes) == bytes.size(); }

/// How many UTF-16 units at the front are ASCII.
inline std::size_t ascii_length(std::u16string_view text) noexcept {
  constexpr std::uint64_t kBeyondAscii = 0xFF80FF80FF80FF80u;
  std::size_t at = 0;
  for (; at + 8 <= text.size(); at += 8) {
    std::uint64_t words[2];
    std::memcpy(words, text.data() + at, sizeof words);
    if (((words[0] | words[1]) & kBeyondAscii) != 0) break;
  }
  while (at < text.size() && text[at] < 0x80) ++at;
  return at;
}

/// Bytes that are known to be ASCII (or ISO 8859-1) as UTF-16.
inline std::u16string widen_ascii(std::string_view bytes) {
  std::u16string text(bytes.size(), u'\0');
  std::transform(bytes.begin(), bytes.end(), text.begin(), [](char c) { return static_cast<unsigned char>(c); });
  return text;
}

/// UTF-16 that is known to be ASCII as bytes.
inline std::string narrow_ascii(std::u16string_view text) {
  std::string bytes(text.size(), '\0');
  std::transform(text.begin(), text.end(), bytes.begin(), [](char16_t c) { return static_cast<char>(c); });
  return bytes;
}

/// ASCII capital letters in lower case, everything else as it stands.
inline std::u16string lower_ascii(std::u16string_view text) {
  std::u16string lower(text.size(), u'\0');
  std::transform(text.begin(), text.end(), lower.begin(),
                 [](char16_t c) { return static_cast<char16_t>(c >= u'A' && c <= u'Z' ? c + 32 : c); });
  return lower;
}

}  // namespace vellobar::platform
