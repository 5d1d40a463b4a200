// A header value while its encoded words are being decoded: a text that is edited in one place after another and always
// knows where each of the patterns that steer decoding stands. A search and an edit cost the logarithm of the text's
// size, wherever they are, and an edit its own length more.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "mime/character_tree.h"

namespace vellobar::mime {

/// What decoding looks for in a value. Letters are matched in any case.
enum class Pattern : Marks {
  tab_fold = 1 << 0,      ///< CR LF TAB
  word = 1 << 1,          ///< "=?"
  encoding = 1 << 2,      ///< "?b?" or "?q?"
  word_end = 1 << 3,      ///< "?="
  plus = 1 << 4,          ///< "+"
  unicode_utf7 = 1 << 5,  ///< "=?unicode-1-1-utf-7?"
  utf7 = 1 << 6,          ///< "=?utf-7?"
  utf8 = 1 << 7,          ///< "=?utf-8?"
  windows = 1 << 8,       ///< "=?windows-"
  restless = 1 << 9,      ///< what decoding as "Q" changes; see quoted_text.h
  not_zero = 1 << 10,     ///< any character but "0"
};

class WorkingText {
 public:
  explicit WorkingText(std::string_view text);

  static constexpr std::size_t npos = CharacterTree::npos;
  std::size_t size() const { return tree_.size(); }
  bool holds(Pattern pattern) const { return (tree_.marks() & static_cast<Marks>(pattern)) != 0; }
  /// Position of the first occurrence that begins at or behind `from`, npos when there is none.
  std::size_t first(Pattern pattern, std::size_t from = 0) const {
    return tree_.find(static_cast<Marks>(pattern), from);
  }
  /// The decimal number behind the first "=?windows-", which must be there.
  int first_windows_number() const;
  /// At most `count` characters from a position on.
  std::string copy(std::size_t position, std::size_t count = npos) const;

  /// Puts `inserted` in the place of `removed` characters.
  void replace(std::size_t position, std::size_t removed, std::string_view inserted);

 private:
  CharacterTree tree_;
};

}  // namespace vellobar::mime
