// The decoding of a header value written down pass by pass, as the rule has it, each pass over the whole value and with
// a codec of its own. Slow, and independent of the component's decoding, whose results are compared with it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vellobar::tests {

struct LiteralResult {
  std::string bytes;
  int code_page = 0;
  /// False when the value grew beyond kMostLiteralBytes and was given up.
  bool is_whole = true;
};

constexpr std::size_t kMostLiteralBytes = 50'000;

LiteralResult decode_literally(std::string_view value);

}  // namespace vellobar::tests
