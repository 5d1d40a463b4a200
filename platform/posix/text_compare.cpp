#include "platform/text_compare.h"

#include <algorithm>

#include "platform/ascii.h"
#include "platform/code_page.h"

namespace vellobar::platform {

namespace {

/// The lower-case letter of the same page: code page 1252 away from Windows.
char lower(char c) noexcept {
  const auto byte = static_cast<unsigned char>(c);
  const bool plain = byte >= 'A' && byte <= 'Z';
  const bool accented = byte >= 0xC0 && byte <= 0xDE && byte != 0xD7;  // 0xD7 is the multiplication sign
  if (plain || accented) return static_cast<char>(byte + 0x20);
  if (byte == 0x8A || byte == 0x8C || byte == 0x8E) return static_cast<char>(byte + 0x10);  // S, OE, Z with caron
  if (byte == 0x9F) return static_cast<char>(0xFF);                                         // Y with diaeresis
  return c;
}

}  // namespace

std::u16string fold_case(std::u16string_view text) {
  if (ascii_length(text) == text.size()) return lower_ascii(text);
  std::string bytes = narrow(kThreadCodePage, text);
  std::transform(bytes.begin(), bytes.end(), bytes.begin(), lower);
  return widen(kThreadCodePage, bytes);
}

bool equal_in_user_locale(std::u16string_view left, std::u16string_view right) { return left == right; }

}  // namespace vellobar::platform
