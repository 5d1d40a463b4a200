// Code pages and charset names: text that a code page holds comes back through it, and what came through once comes
// through again as it is.
#include <string>

#include "fuzz/choices.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "mime/charset_name.h"
#include "platform/code_page.h"

namespace vellobar::fuzz {

namespace {

constexpr int kCodePages[] = {0, 3, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258, 874, 65000, 65001};

/// Well-formed UTF-16 of the bytes, two for each unit.
std::u16string units_of(std::string_view bytes) {
  std::u16string text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto unit =
        static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) << 8 | static_cast<unsigned char>(bytes[i + 1]));
    const bool is_surrogate = unit >= 0xD800 && unit <= 0xDFFF;
    if (is_surrogate) {
      text += static_cast<char16_t>(0xD800 | (unit & 0x3FF));
      text += static_cast<char16_t>(0xDC00 | (unit & 0x3FF));
    } else {
      text += unit;
    }
  }
  return text;
}

void require_charset_name(std::string_view value) {
  const std::string_view name = mime::charset_in_content_type(value);
  require(name.empty() || (name.data() >= value.data() && name.data() + name.size() <= value.data() + value.size()),
          "a charset name stands in its value");
  require(name.find_first_of(" '\"") == name.npos, "a charset name ends at a blank or a quote");
  mime::code_page_of_charset(name);
  mime::code_page_of_charset(value);
}

}  // namespace

void fuzz_charsets(std::string_view input) {
  Choices choices(input);
  const int code_page = choices.among(kCodePages);
  const std::string_view bytes = choices.text();
  const std::u16string widened = platform::widen(code_page, bytes);
  const std::string narrowed = platform::narrow(code_page, widened);
  if (code_page == 1252 || code_page == 0 || code_page == 3) {
    require_same(narrowed, bytes, "in the default code page every byte stands for a character of its own");
  }
  require(platform::widen(code_page, narrowed) == widened, "what came through a code page comes through again");
  const std::u16string text = units_of(bytes);
  for (const int whole : {platform::kUtf8CodePage, platform::kUtf7CodePage}) {
    require(platform::widen(whole, platform::narrow(whole, text)) == text, "UTF-8 and UTF-7 hold every text");
  }
  const std::u16string held = platform::widen(code_page, platform::narrow(code_page, text));
  require(platform::widen(code_page, platform::narrow(code_page, held)) == held, "what a code page holds stays");
  require_charset_name(bytes);
}

}  // namespace vellobar::fuzz
