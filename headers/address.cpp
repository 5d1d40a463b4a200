#include "headers/address.h"

#include <algorithm>
#include <cstddef>

#include "mime/encoded_word.h"
#include "platform/code_page.h"

namespace vellobar::headers {
namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::string_view kQuotes = "\"'";
constexpr std::string_view kQuotesAndSpace = " \"'";
/// Bytes below this one, taken as signed, divide the entries of a list: control bytes and all 8-bit bytes.
constexpr signed char kFirstOrdinaryByte = 31;

/// The first "<" outside double quotes.
std::size_t find_opening_bracket(std::string_view text) {
  bool in_quotes = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') in_quotes = !in_quotes;
    if (text[i] == '<' && !in_quotes) return i;
  }
  return npos;
}

std::string_view without_leading(std::string_view text, std::string_view unwanted) {
  return text.substr(std::min(text.find_first_not_of(unwanted), text.size()));
}

std::string_view without_trailing(std::string_view text, std::string_view unwanted) {
  return text.substr(0, text.find_last_not_of(unwanted) + 1);
}

/// Finds where the entries of a list end.
class EntryState {
 public:
  /// Takes the next byte; true when it divides two entries.
  bool ends_entry(char byte) {
    if (byte == '"' && !in_apostrophes_) in_quotes_ = !in_quotes_;
    if (byte == '\'' && !in_quotes_) in_apostrophes_ = !in_apostrophes_;
    if (byte == '<') in_brackets_ = true;
    if (byte == '>') in_brackets_ = false;
    if (in_quotes_ || in_apostrophes_ || in_brackets_) return false;
    // Deliberate: an unquoted 8-bit byte divides as a comma would; see
    // an_unquoted_8_bit_byte_splits_an_entry_as_a_comma_would.
    return byte == ',' || byte == ';' || static_cast<signed char>(byte) < kFirstOrdinaryByte;
  }

 private:
  bool in_quotes_ = false;
  bool in_apostrophes_ = false;
  bool in_brackets_ = false;
};

template <typename Take>
void for_each_entry(std::string_view text, Take take) {
  EntryState state;
  std::size_t begin = 0;
  bool has_any = false;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    const bool ends = i == text.size() || state.ends_entry(text[i]);
    if (!ends) continue;
    const std::string_view entry = without_leading(text.substr(begin, i - begin), " ");
    begin = i + 1;
    if (entry.empty()) continue;
    has_any = true;
    take(entry);
  }
  if (!has_any) take(text);
}

/// The entries a client wrote. Deliberate: ";" does not divide here and quotes do not protect; see
/// the_writer_does_not_split_at_a_semicolon and the_writer_splits_at_a_comma_inside_quotes. The end of the text divides
/// as a CR LF behind it would, so a CR that stands there is part of its entry; see
/// the_writer_keeps_a_CR_that_no_line_feed_of_the_text_follows.
std::vector<std::string_view> split_client_entries(std::string_view text) {
  std::vector<std::string_view> entries;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(",\n"), text.size());
    std::string_view entry = text.substr(0, end);
    const bool ends_line = end < text.size() && text[end] == '\n';
    if (ends_line && entry.ends_with('\r')) entry.remove_suffix(1);
    if (!entry.empty()) entries.push_back(entry);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return entries;
}

/// A piece of the new value, as an encoded word when it holds 8-bit bytes.
std::u16string written_piece(const std::string& piece) {
  if (!mime::has_8_bit_bytes(piece)) return platform::widen(platform::kThreadCodePage, piece);
  return mime::utf8_encoded_word(platform::widen(platform::process_code_page(), piece));
}

}  // namespace

std::string display_name_of(std::string_view text) {
  text = text.substr(0, std::min(find_opening_bracket(text), text.size()));
  text = without_trailing(without_leading(text, kQuotesAndSpace), kQuotesAndSpace);
  const std::size_t at = text.find('@');
  if (at != npos) text = text.substr(0, std::min(text.rfind(' ', at), text.size()));
  return std::string(without_trailing(text, kQuotes));
}

std::string address_of(std::string_view text) {
  const std::size_t opening = find_opening_bracket(text);
  const std::size_t closing = opening == npos ? npos : text.find('>', opening);
  if (closing != npos) text = text.substr(opening + 1, closing - opening - 1);
  const std::size_t at = text.find('@');
  if (at == npos) return {};
  const std::size_t begin = text.rfind(' ', at) + 1;
  const std::size_t end = std::min(text.find(' ', at), text.size());
  return std::string(text.substr(begin, end - begin));
}

std::vector<std::string_view> split_address_list(std::string_view text) {
  std::vector<std::string_view> entries;
  for_each_entry(text, [&](std::string_view entry) { entries.push_back(entry); });
  return entries;
}

std::string from_each_address(std::string_view list, std::string (*extract)(std::string_view)) {
  std::string joined;
  joined.reserve(list.size());
  for_each_entry(list, [&](std::string_view entry) {
    const std::string taken = extract(entry);
    if (taken.empty()) return;
    if (!joined.empty()) joined += ", ";
    joined += taken;
  });
  return joined;
}

std::u16string address_list_text(std::u16string_view client_text) {
  const std::string narrow = platform::narrow(platform::process_code_page(), client_text);
  std::u16string result;
  for (const std::string_view entry : split_client_entries(narrow)) {
    const std::string name = display_name_of(entry);
    const std::string address = address_of(entry);
    if (!result.empty()) result += u", ";
    if (!name.empty()) result += written_piece('"' + name + '"');
    if (address.empty()) continue;
    if (!result.empty()) result += u' ';
    result += u'<' + written_piece(address) + u'>';
  }
  return result;
}

}  // namespace vellobar::headers
