// ASCII rules for bytes and code units, free of any locale.
#pragma once

#include <string>
#include <string_view>

namespace vellobar::platform {

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

/// True when no byte has its top bit set.
constexpr bool is_ascii(std::string_view bytes) noexcept {
  unsigned char all = 0;
  for (const char c : bytes) all = static_cast<unsigned char>(all | static_cast<unsigned char>(c));
  return all < 0x80;
}

}  // namespace vellobar::platform
