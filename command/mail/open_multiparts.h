// The multiparts that a line of a message lies in, and whether each of them was closed. Lines are taken one after the
// other; a line belongs to the outermost multipart whose delimiter it begins with, and leaves all below it.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "mime/delimiter_set.h"

namespace vellobar::command {

class OpenMultiparts {
 public:
  /// What became of one that ends without its closing line.
  using NotClosed = std::function<void(const std::string& delimiter, bool has_parts)>;

  explicit OpenMultiparts(NotClosed not_closed) : not_closed_(std::move(not_closed)) {}

  bool is_empty() const { return levels_.empty(); }

  /// A multipart begins below the innermost one.
  void open(std::string delimiter);

  enum class Line { text, part_begins, parts_end };
  /// Takes a line of text and says what it is.
  Line take(std::string_view line);

  /// The message ends.
  void end() { leave_down_to(0); }

 private:
  struct Level {
    std::string delimiter;
    bool has_parts = false;
    bool is_closed = false;
  };

  void leave_down_to(std::size_t count);

  NotClosed not_closed_;
  std::vector<Level> levels_;
  mime::DelimiterSet delimiters_;
};

}  // namespace vellobar::command
