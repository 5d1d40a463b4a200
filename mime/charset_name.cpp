#include "mime/charset_name.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "mime/ascii.h"
#include "platform/code_page.h"

namespace vellobar::mime {
namespace {

struct KnownCharset {
  std::string_view name;
  int code_page;
};

// Deliberately no longer than this; see every_other_name_stands_for_the_system_code_page.
constexpr std::array<KnownCharset, 4> kKnownCharsets = {{{"utf8", platform::kUtf8CodePage},
                                                         {"utf-8", platform::kUtf8CodePage},
                                                         {"utf7", platform::kUtf7CodePage},
                                                         {"utf-7", platform::kUtf7CodePage}}};
constexpr std::string_view kNumberedCharset = "windows-";

}  // namespace

int code_page_of_charset(std::string_view name) {
  if (starts_with_ignoring_case(name, kNumberedCharset)) return leading_number(name.substr(kNumberedCharset.size()));
  for (const KnownCharset& known : kKnownCharsets) {
    if (name.size() == known.name.size() && starts_with_ignoring_case(name, known.name)) return known.code_page;
  }
  return platform::kAnsiCodePage;
}

std::string_view charset_in_content_type(std::string_view content_type) {
  const std::size_t parameter = find_ignoring_case(content_type, "charset");
  if (parameter == std::string_view::npos) return {};
  const std::size_t equals = content_type.find('=', parameter);
  if (equals == std::string_view::npos) return {};
  const std::string_view value = content_type.substr(equals + 1);
  const auto* begin = std::find_if(value.begin(), value.end(), is_ascii_letter);
  const std::string_view name = value.substr(static_cast<std::size_t>(begin - value.begin()));
  return name.substr(0, name.find_first_of(" '\""));
}

}  // namespace vellobar::mime
