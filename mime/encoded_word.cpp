#include "mime/encoded_word.h"

#include <algorithm>
#include <cstddef>
#include <optional>

#include "codecs/base64.h"
#include "codecs/quoted_printable.h"
#include "mime/ascii.h"
#include "mime/encoded_word_syntax.h"
#include "mime/nested_words.h"
#include "mime/working_text.h"
#include "platform/code_page.h"

namespace vellobar::mime {
namespace {

constexpr std::size_t npos = std::string_view::npos;

bool is_base64_letter(char c) { return is_ascii_letter(c) || is_ascii_digit(c) || c == '+' || c == '/'; }

/// Removes CR LF TAB until none is left; what a removal brings together counts.
std::string without_tab_folds(std::string_view value) {
  std::string unfolded;
  unfolded.reserve(value.size());
  for (const char c : value) {
    unfolded += c;
    if (c == '\t' && unfolded.ends_with(kTabFold)) unfolded.resize(unfolded.size() - kTabFold.size());
  }
  return unfolded;
}

std::string decode_word_text(std::string_view encoded, WordEncoding encoding) {
  std::string decoded = encoding == WordEncoding::base64 ? codecs::decode_base64(encoded)
                                                         : codecs::decode_quoted_printable(encoded, true);
  // Deliberate: what follows a decoded NUL is lost; see decoded_bytes_end_at_their_first_nul.
  decoded.resize(std::min(decoded.find('\0'), decoded.size()));
  return decoded;
}

/// Decodes one header value pass by pass: a pass removes a fold or decodes a word.
class Decoding {
 public:
  explicit Decoding(std::string_view value) : text_(value), most_(most_decoded_bytes(value.size())) {}

  DecodedValue run() {
    bool goes_on = true;
    while (goes_on) {
      const bool fixes_utf7 = text_.holds(Pattern::unicode_utf7);
      choose_code_page();
      goes_on = decode_once(fixes_utf7);
      if (goes_on && fixes_utf7 && text_.holds(Pattern::plus)) fix_utf7_run();
    }
    return {text_.take(), code_page_};
  }

 private:
  /// Without any prefix the code page of an earlier pass stays.
  void choose_code_page() {
    if (text_.holds(Pattern::unicode_utf7)) code_page_ = platform::kUtf7CodePage;
    if (text_.holds(Pattern::utf7)) {
      code_page_ = platform::kUtf7CodePage;
    } else if (text_.holds(Pattern::utf8)) {
      code_page_ = platform::kUtf8CodePage;
    } else if (text_.holds(Pattern::windows)) {
      code_page_ = text_.first_windows_number();
    }
  }

  /// False when there is nothing left to decode.
  bool decode_once(bool fixes_utf7) {
    if (text_.holds(Pattern::tab_fold)) {
      text_.replace(text_.first(Pattern::tab_fold), kTabFold.size(), {});
      return true;
    }
    return text_.holds(Pattern::word) && decode_word(text_.first(Pattern::word), fixes_utf7);
  }

  bool decode_word(std::size_t position, bool fixes_utf7) {
    const std::string_view word = text_.from(position);
    const std::optional<WordHead> head = find_word_head(word);
    if (!head) return false;
    const std::size_t end = word.find(kWordEnd, head->text);
    if (end == npos) return false;
    std::string decoded = decode_word_text(word.substr(head->text, end - head->text), head->encoding);
    if (!may_put(decoded)) return false;
    const std::size_t length = end + kWordEnd.size();
    if (fixes_utf7 || head->encoding != WordEncoding::quoted_printable || decoded.find(kWordStart) == npos) {
      text_.replace(position, length, decoded);
      return true;
    }
    text_.replace(position, length, {});
    position = take_off_levels(text_, position, decoded, code_page_);
    text_.replace(position, 0, decoded);
    return true;
  }

  /// The first "+" of the whole text and the Base64 letters behind it become what they stand for, in a way of its own:
  /// of the decoded bytes one leading NUL is skipped, the next one ends them, and they are read as UTF-7. See
  /// the_utf7_fix_up_reads_the_decoded_bytes_as_utf7_again.
  void fix_utf7_run() {
    const std::size_t position = text_.first(Pattern::plus);
    const std::string_view behind = text_.from(position).substr(1);
    const auto* run_end = std::find_if_not(behind.begin(), behind.end(), is_base64_letter);
    std::size_t length = static_cast<std::size_t>(run_end - behind.begin());
    const std::string decoded = codecs::decode_base64(behind.substr(0, length));
    std::string_view bytes = decoded;
    if (bytes.starts_with('\0')) bytes.remove_prefix(1);
    bytes = bytes.substr(0, bytes.find('\0'));
    if (length < behind.size() && behind[length] == '-') ++length;
    const std::string text =
        platform::narrow(platform::process_code_page(), platform::widen(platform::kUtf7CodePage, bytes));
    if (may_put(text)) text_.replace(position, 1 + length, text);
  }

  /// False when the value bursts.
  bool may_put(std::string_view decoded) {
    put_ += decoded.size();
    return put_ <= most_;
  }

  WorkingText text_;
  int code_page_ = 0;
  std::size_t put_ = 0;
  std::size_t most_;
};

}  // namespace

DecodedValue decode_encoded_words(std::string_view value) {
  const bool is_folded = value.find(kTabFold) != npos;
  if (!is_folded) {
    if (value.find(kWordStart) == npos) return {std::string(value), 0};
    return Decoding(value).run();
  }
  std::string unfolded = without_tab_folds(value);
  if (unfolded.find(kWordStart) == npos) return {std::move(unfolded), 0};
  // Passes that remove folds do nothing else unless they also have a UTF-7 run to fix.
  const bool fixes_utf7 = find_ignoring_case(unfolded, kUnicodeUtf7Prefix) != npos;
  return Decoding(fixes_utf7 ? value : std::string_view(unfolded)).run();
}

std::u16string decode_header_value(std::string_view value) {
  const bool is_plain = value.find(kWordStart) == npos && value.find(kTabFold) == npos;
  if (is_plain) return platform::widen(platform::kAnsiCodePage, value);
  const DecodedValue decoded = decode_encoded_words(value);
  return platform::widen(decoded.code_page, decoded.bytes);
}

std::u16string utf8_encoded_word(std::u16string_view text) {
  const std::string bytes = platform::narrow(platform::kUtf8CodePage, text);
  if (bytes.empty()) return {};
  return platform::widen(platform::kThreadCodePage, "=?UTF-8?B?" + codecs::encode_base64(bytes) + "?=");
}

bool has_8_bit_bytes(std::string_view bytes) { return !platform::is_ascii(bytes); }

}  // namespace vellobar::mime
