// Passes bytes on, and can make sure that what follows begins a line. Behind a text without a line end (a last line of
// a mailbox, a file added as it stands) a separator or delimiter line would not be one, and what it introduces would be
// lost.
#pragma once

#include <string_view>

#include "platform/ascii.h"
#include "platform/file.h"

namespace vellobar::mailbox {

class LineSink final : public platform::ByteSink {
 public:
  explicit LineSink(platform::ByteSink& to) : to_(to) {}

  void write(std::string_view bytes) override {
    if (!bytes.empty()) is_in_line_ = bytes.back() != '\n';
    to_.write(bytes);
  }

  /// Ends the line that was begun, if one was.
  void end_line() {
    if (is_in_line_) write(platform::kLineEnd);
  }

 private:
  platform::ByteSink& to_;
  bool is_in_line_ = false;
};

}  // namespace vellobar::mailbox
