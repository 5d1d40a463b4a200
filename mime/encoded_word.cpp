#include "mime/encoded_word.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "codecs/base64.h"
#include "codecs/quoted_printable.h"
#include "mime/ascii.h"
#include "mime/decoding_passes.h"
#include "mime/encoded_word_syntax.h"
#include "platform/code_page.h"

namespace vellobar::mime {
namespace {

constexpr std::size_t npos = std::string_view::npos;

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

/// True when the text from a position on, with what stands before and behind it, begins something that a later pass
/// would read as a word or a fold.
bool begins_something(std::string_view text, std::size_t from, std::string_view behind) {
  constexpr std::size_t kReach = kTabFold.size() - 1;
  const std::size_t seam = text.size() - std::min(text.size(), kReach);
  const std::string around = std::string(text.substr(seam)) + std::string(behind.substr(0, kReach));
  const std::string_view joined = text.substr(from - std::min(from, kReach));
  for (const std::string_view pattern : {kWordStart, kTabFold}) {
    if (joined.find(pattern) != npos || around.find(pattern) < text.size() - seam) return true;
  }
  return false;
}

/// The value without its words when none of them decodes to anything that is decoded again; nothing otherwise. Then the
/// passes go once through the value, each from where the one before ended.
std::optional<DecodedValue> decode_once_through(std::string_view value) {
  const std::size_t last_prefix = last_code_page_prefix(value);
  // What is left of the value in the last pass that sees a prefix.
  std::string_view last_with_prefix;
  std::string bytes;
  bytes.reserve(value.size());
  for (std::string_view rest = value;;) {
    const std::size_t position = value.size() - rest.size();
    if (last_prefix != npos && position <= last_prefix) last_with_prefix = rest;
    const std::optional<WordHead> head = find_word_head(rest);
    const std::size_t end = head ? rest.find(kWordEnd, head->text) : npos;
    if (end == npos) {
      bytes += rest;
      return DecodedValue{std::move(bytes), code_page_named_in(last_with_prefix).value_or(0)};
    }
    bytes += rest.substr(0, head->start);
    const std::size_t joint = bytes.size();
    bytes += decode_word_text(rest.substr(head->text, end - head->text), head->encoding);
    rest.remove_prefix(end + kWordEnd.size());
    if (begins_something(bytes, joint, rest)) return std::nullopt;
  }
}

}  // namespace

DecodedValue decode_encoded_words(std::string_view value) {
  const bool is_folded = value.find(kTabFold) != npos;
  const std::string without_folds = is_folded ? without_tab_folds(value) : std::string();
  const std::string_view unfolded = is_folded ? without_folds : value;
  if (unfolded.find(kWordStart) == npos) return {std::string(unfolded), 0};
  // Then a pass that removes a fold does something else, too.
  if (find_ignoring_case(unfolded, kUnicodeUtf7Prefix) != npos) return decode_pass_by_pass(value);
  std::optional<DecodedValue> decoded = decode_once_through(unfolded);
  return decoded ? std::move(*decoded) : decode_pass_by_pass(unfolded);
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
