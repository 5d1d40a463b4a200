// A header value while its encoded words are being decoded: a text that is edited in one place after another and always
// knows where each of the patterns that steer decoding stands first. The text is held in two pieces, before and behind
// the place of the last edit, so that an edit costs its own length and the way from the last one, not the length of the
// text.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vellobar::mime {

/// What decoding looks for anywhere in a value. The prefixes are matched in any case.
enum class Pattern {
  tab_fold,      ///< CR LF TAB
  word,          ///< "=?"
  plus,          ///< "+"
  unicode_utf7,  ///< "=?unicode-1-1-utf-7?"
  utf7,          ///< "=?utf-7?"
  utf8,          ///< "=?utf-8?"
  windows,       ///< "=?windows-"
};

class WorkingText {
 public:
  explicit WorkingText(std::string_view text);

  static constexpr std::size_t npos = static_cast<std::size_t>(-1);
  std::size_t size() const { return left_.size() + right_size(); }
  char at(std::size_t position) const;
  bool holds(Pattern pattern) const;
  /// Position of the first occurrence, npos when there is none.
  std::size_t first(Pattern pattern) const;
  /// The decimal number behind the first "=?windows-", which must be there.
  int first_windows_number();

  /// The text from a position on; good until the next call that is not const.
  std::string_view from(std::size_t position);
  /// Puts `inserted`, which must not be part of this text, in the place of `removed` bytes.
  void replace(std::size_t position, std::size_t removed, std::string_view inserted);

  /// The whole text; nothing else may be called afterwards.
  std::string take();

 private:
  /// Where a pattern stands: before the gap counted from the start, the last one on top; behind it counted from the end
  /// of the text, the first one on top. An edit at the gap leaves both right.
  struct Places {
    std::vector<std::size_t> left;
    std::vector<std::size_t> right;
  };

  std::size_t right_size() const { return right_.size() - right_at_; }
  std::string_view right() const { return std::string_view(right_).substr(right_at_); }
  Places& places(Pattern pattern) { return places_[static_cast<std::size_t>(pattern)]; }
  const Places& places(Pattern pattern) const { return places_[static_cast<std::size_t>(pattern)]; }
  void move_gap(std::size_t position);
  void prepend(std::string_view bytes);
  void note_places(std::size_t count);
  void note_prefixes(std::string_view word, std::size_t place);

  std::string left_;
  std::string right_;
  std::size_t right_at_ = 0;
  std::array<Places, 7> places_;
  std::size_t number_place_ = npos;
  int number_ = 0;
};

}  // namespace vellobar::mime
