#include "mime/quoted_text.h"

#include <algorithm>
#include <utility>

#include "codecs/quoted_printable.h"
#include "mime/ascii.h"
#include "mime/working_text.h"

namespace vellobar::mime {
namespace {

/// Restless places no further apart are decoded as one.
constexpr std::size_t kNear = 64;

constexpr bool is_lower_case(char c) { return c >= 'a' && c <= 'z'; }

constexpr bool is_hex_digit(char c) { return is_ascii_digit(c) || (c >= 'A' && c <= 'F'); }

/// The characters around a position; those outside the text read as a space, which decoding leaves alone.
class Around {
 public:
  Around(std::string_view text, std::size_t position) : text_(text), position_(position) {}

  char operator[](int distance) const {
    const std::size_t at = position_ + static_cast<std::size_t>(distance);
    return at < text_.size() ? text_[at] : ' ';
  }

 private:
  std::string_view text_;
  std::size_t position_;
};

/// "=", and the two characters behind it. Equals signs that are no further apart than that are decoded together: the
/// first of them stands for all.
bool is_restless_escape(const Around& at) {
  const char first = at[1];
  const char second = at[2];
  if (second == '=') return true;
  // "==31" decodes to itself: "==3" is passed on, and "=31" is the digit.
  if (first == '=') return second != '3' || !is_ascii_digit(at[3]);
  if (at[-1] == '=' && first == '3' && is_ascii_digit(second)) return false;
  const bool is_cut_short = second == '?' && at[3] == '=';
  const bool is_soft_break = first == '\r' && second == '\n';
  if (is_cut_short || is_soft_break) return true;
  return is_lower_case(first) || is_lower_case(second) || (is_hex_digit(first) && is_hex_digit(second));
}

/// The end of what is decoded together with the restless character at `begin`, which is an equals sign or "_".
std::size_t end_of_restless(const WorkingText& text, std::size_t begin, std::size_t end) {
  for (std::size_t count = kNear;; count *= 2) {
    const std::string piece = text.copy(begin, std::min(count, end - begin));
    if (piece.front() != '=') return begin + 1;
    std::size_t last = 0;
    std::size_t i = 1;
    for (; i < piece.size() && i <= last + 2; ++i) {
      if (piece[i] == '=') last = i;
    }
    if (i > last + 2 || piece.size() == end - begin) return begin + i;
  }
}

}  // namespace

bool is_restless(std::string_view text, std::size_t position) {
  const Around at(text, position);
  switch (at[0]) {
    case '\0':
      return true;
    case '_':
      return at[-1] != '=' && at[-2] != '=';
    case '=':
      return is_restless_escape(at);
    default:
      return false;
  }
}

std::vector<Change> changes_by_decoding_quoted_text(const WorkingText& text, std::size_t begin, std::size_t end) {
  std::vector<Change> changes;
  const auto next_from = [&](std::size_t from) { return std::min(text.first(Pattern::restless, from), end); };
  for (std::size_t at = next_from(begin); at < end;) {
    std::size_t behind = at;
    std::size_t next = at;
    do {
      // A NUL needs no decoding, and there is nothing behind it.
      behind = text.copy(next, 1).front() == '\0' ? end : end_of_restless(text, next, end);
      next = next_from(behind);
    } while (next < end && next - behind < kNear);
    std::string decoded = codecs::decode_quoted_printable(text.copy(at, behind - at), true);
    // Deliberate: what follows a decoded NUL is lost; see decoded_bytes_end_at_their_first_nul.
    const std::size_t nul = decoded.find('\0');
    if (nul != std::string::npos) {
      decoded.resize(nul);
      behind = next = end;
    }
    changes.push_back({at, behind - at, std::move(decoded)});
    at = next;
  }
  return changes;
}

}  // namespace vellobar::mime
