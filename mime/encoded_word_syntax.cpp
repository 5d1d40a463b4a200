#include "mime/encoded_word_syntax.h"

#include <algorithm>

#include "mime/ascii.h"
#include "platform/code_page.h"

namespace vellobar::mime {

namespace {
constexpr std::size_t npos = std::string_view::npos;
}

std::optional<WordEncoding> word_encoding_at(std::string_view text) {
  if (text.size() < 3 || text[0] != '?' || text[2] != '?') return std::nullopt;
  const char letter = platform::lower_ascii(text[1]);
  if (letter == 'b') return WordEncoding::base64;
  if (letter == 'q') return WordEncoding::quoted_printable;
  return std::nullopt;
}

std::optional<WordHead> find_word_head(std::string_view text) {
  const std::size_t start = text.find(kWordStart);
  if (start == npos) return std::nullopt;
  for (std::size_t at = text.find('?', start + 2); at != npos; at = text.find('?', at + 1)) {
    const std::optional<WordEncoding> encoding = word_encoding_at(text.substr(at));
    if (encoding) return WordHead{start, at + 3, *encoding};
  }
  return std::nullopt;
}

std::size_t last_code_page_prefix(std::string_view text) {
  for (std::size_t at = text.rfind(kWordStart); at != npos; at = at == 0 ? npos : text.rfind(kWordStart, at - 1)) {
    const std::string_view here = text.substr(at);
    if (std::any_of(kCodePagePrefixes.begin(), kCodePagePrefixes.end(),
                    [&](std::string_view prefix) { return starts_with_ignoring_case(here, prefix); })) {
      return at;
    }
  }
  return npos;
}

std::optional<int> code_page_named_in(std::string_view text) {
  if (find_ignoring_case(text, kUtf7Prefix) != npos) return platform::kUtf7CodePage;
  if (find_ignoring_case(text, kUtf8Prefix) != npos) return platform::kUtf8CodePage;
  const std::size_t windows = find_ignoring_case(text, kWindowsPrefix);
  if (windows == npos) return std::nullopt;
  return leading_number(text.substr(windows + kWindowsPrefix.size()));
}

}  // namespace vellobar::mime
