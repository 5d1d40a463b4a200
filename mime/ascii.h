// ASCII classes and case-blind comparison of mail bytes, free of any locale.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string_view>

#include "platform/ascii.h"

namespace vellobar::mime {

constexpr bool is_ascii_digit(char c) noexcept { return c >= '0' && c <= '9'; }

constexpr bool is_ascii_letter(char c) noexcept {
  const char lower = platform::lower_ascii(c);
  return lower >= 'a' && lower <= 'z';
}

constexpr bool equal_ignoring_case(char left, char right) noexcept {
  return platform::lower_ascii(left) == platform::lower_ascii(right);
}

constexpr bool starts_with_ignoring_case(std::string_view text, std::string_view start) noexcept {
  return text.size() >= start.size() && std::equal(start.begin(), start.end(), text.begin(), equal_ignoring_case);
}

/// Position of the first occurrence at or behind `from`, npos when there is none.
constexpr std::size_t find_ignoring_case(std::string_view text, std::string_view wanted,
                                         std::size_t from = 0) noexcept {
  if (from > text.size()) return std::string_view::npos;
  const auto found = std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), wanted.begin(),
                                 wanted.end(), equal_ignoring_case);
  return found == text.end() && !wanted.empty() ? std::string_view::npos
                                                : static_cast<std::size_t>(found - text.begin());
}

/// The decimal number made by the leading digits, 0 when there are none. Too large a number is the largest.
constexpr int leading_number(std::string_view text) noexcept {
  long long value = 0;
  for (const char c : text) {
    if (!is_ascii_digit(c)) break;
    value = std::min<long long>(value * 10 + (c - '0'), std::numeric_limits<int>::max());
  }
  return static_cast<int>(value);
}

}  // namespace vellobar::mime
