#include "mime/encoded_word_syntax.h"

#include "mime/ascii.h"
#include "platform/code_page.h"

namespace vellobar::mime {

namespace {
constexpr std::size_t npos = std::string_view::npos;
}

std::optional<WordHead> find_word_head(std::string_view text) {
  const std::size_t start = text.find(kWordStart);
  if (start == npos) return std::nullopt;
  for (std::size_t at = text.find('?', start + 2); at != npos && at + 2 < text.size(); at = text.find('?', at + 1)) {
    if (text[at + 2] != '?') continue;
    const char encoding = platform::lower_ascii(text[at + 1]);
    if (encoding == 'b') return WordHead{start, at + 3, WordEncoding::base64};
    if (encoding == 'q') return WordHead{start, at + 3, WordEncoding::quoted_printable};
  }
  return std::nullopt;
}

std::optional<int> code_page_named_in(std::string_view text) {
  if (find_ignoring_case(text, kUtf7Prefix) != npos) return platform::kUtf7CodePage;
  if (find_ignoring_case(text, kUtf8Prefix) != npos) return platform::kUtf8CodePage;
  const std::size_t windows = find_ignoring_case(text, kWindowsPrefix);
  if (windows == npos) return std::nullopt;
  return leading_number(text.substr(windows + kWindowsPrefix.size()));
}

}  // namespace vellobar::mime
