#include "mime/nested_words.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "codecs/quoted_printable.h"
#include "mime/ascii.h"
#include "mime/encoded_word_syntax.h"

namespace vellobar::mime {
namespace {

constexpr std::size_t npos = std::string_view::npos;

bool is_hex_digit(char c) { return is_ascii_digit(c) || (c >= 'A' && c <= 'F'); }

/// True when "=" and these two characters stay what they are, however often they are decoded.
bool is_settled_escape(char first, char second) {
  constexpr auto is_restless = [](char c) { return c == '=' || (c >= 'a' && c <= 'z'); };
  if (is_restless(first) || is_restless(second)) return false;
  if (first == '\r' && second == '\n') return false;
  return !is_hex_digit(first) || !is_hex_digit(second);
}

/// True when decoding the text as "Q" once more gives the same text, and no pass would find another thing in it to do
/// than a word to begin.
bool is_settled(std::string_view text) {
  if (text.find('_') != npos || text.find('\0') != npos) return false;
  if (text.find(kWordEnd) != npos || text.find(kTabFold) != npos) return false;
  for (std::size_t at = text.find('='); at != npos; at = text.find('=', at + 3)) {
    if (at + 2 >= text.size() || !is_settled_escape(text[at + 1], text[at + 2])) return false;
  }
  return true;
}

/// True when the byte before a text makes no end of a word and no fold with it.
bool joins_plainly(char before, std::string_view text) {
  if (before == '?') return !text.starts_with('=');
  const bool ends_line = before == '\r' || before == '\n';
  return !ends_line || !(text.starts_with('\n') || text.starts_with('\t'));
}

bool begins_with_prefix(std::string_view text) {
  return std::any_of(kCodePagePrefixes.begin(), kCodePagePrefixes.end(),
                     [&](std::string_view prefix) { return starts_with_ignoring_case(text, prefix); });
}

bool begins_with_any_prefix(std::string_view text) {
  return begins_with_prefix(text) || starts_with_ignoring_case(text, kUnicodeUtf7Prefix);
}

/// Where the last charset prefix of a text begins; npos when there is none.
std::size_t last_prefix(std::string_view text) {
  for (std::size_t at = text.rfind(kWordStart); at != npos; at = at == 0 ? npos : text.rfind(kWordStart, at - 1)) {
    if (begins_with_prefix(text.substr(at))) return at;
  }
  return npos;
}

bool holds_prefix(const WorkingText& text) {
  return text.holds(Pattern::utf7) || text.holds(Pattern::utf8) || text.holds(Pattern::windows);
}

/// How far the text behind reaches up to the end of the innermost word, when it begins nothing new, also where it meets
/// the text of the word; npos otherwise.
std::size_t tail_end(std::string_view behind, char before) {
  if (!joins_plainly(before, behind)) return npos;
  const std::size_t end = behind.find(kWordEnd);
  if (end == npos || begins_with_any_prefix(behind.substr(end + 1))) return npos;
  return behind.substr(0, end).find(kWordStart) == npos ? end : npos;
}

/// What the tail of a word decodes to, when one pass is enough for it; nothing otherwise.
std::optional<std::string> settled_tail(std::string_view tail, char before) {
  std::string added = codecs::decode_quoted_printable(tail, true);
  if (!is_settled(added) || added.find(kWordStart) != npos || !joins_plainly(before, added)) return std::nullopt;
  return added;
}

/// True when the text that is added to the end of `inside` completes a charset prefix there.
bool completes_prefix(std::string_view inside, std::string_view added) {
  // An older beginning is too far away to be completed.
  inside = inside.substr(inside.size() - std::min(inside.size(), kUnicodeUtf7Prefix.size() - 1));
  const std::size_t start = inside.rfind(kWordStart);
  if (start == npos) return false;
  const std::string tail =
      std::string(inside.substr(start)) + std::string(added.substr(0, kUnicodeUtf7Prefix.size())) + '?';
  const bool is_complete = begins_with_prefix(inside.substr(start));
  return !is_complete && begins_with_any_prefix(tail);
}

bool meets_plainly(const WorkingText& text, std::size_t position) {
  if (position == 0) return true;
  const char before = text.at(position - 1);
  return before != '=' && before != '\r' && before != '\n';
}

}  // namespace

std::size_t take_off_levels(WorkingText& text, std::size_t position, std::string& decoded, int& code_page) {
  if (text.holds(Pattern::unicode_utf7) || find_ignoring_case(decoded, kUnicodeUtf7Prefix) != npos) return position;
  if (!is_settled(decoded)) return position;
  const std::size_t prefix = last_prefix(decoded);
  std::size_t taken = 0;
  while (meets_plainly(text, position)) {
    const std::string_view inside = std::string_view(decoded).substr(taken);
    const std::optional<WordHead> head = find_word_head(inside);
    if (!head || head->encoding != WordEncoding::quoted_printable) break;
    const std::string_view behind = text.from(position);
    const std::size_t end = tail_end(behind, inside.back());
    if (end == npos) break;
    // A settled text ends outside any escape: its tail decodes to the same on its own.
    const std::string_view tail = behind.substr(0, end);
    const std::optional<std::string> added = settled_tail(tail, inside.back());
    if (!added || completes_prefix(inside, tail) || completes_prefix(inside, *added)) break;
    const std::string before(inside.substr(0, head->start));
    const std::string_view name = inside.substr(head->start, head->text - head->start);
    const std::optional<int> named = code_page_named_in(name);
    text.replace(position, end + kWordEnd.size(), before);
    position += before.size();
    taken += head->text;
    const bool named_later = holds_prefix(text) || (prefix != npos && prefix >= taken);
    if (named && !named_later) code_page = *named;
    decoded += *added;
  }
  decoded.erase(0, taken);
  return position;
}

}  // namespace vellobar::mime
