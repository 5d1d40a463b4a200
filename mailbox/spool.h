// Bytes that are put together before they go where they belong: in memory while they are few, in a temporary file when
// they are many, so that what is written needs no memory for itself.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "mailbox/scratch_file.h"
#include "platform/file.h"

namespace vellobar::mailbox {

class Spool final : public platform::ByteSink {
 public:
  void write(std::string_view bytes) override;
  /// Hands out everything, once.
  void move_to(platform::ByteSink& to);

 private:
  void open_file();

  std::string bytes_;
  std::optional<ScratchFile> scratch_;
  std::unique_ptr<platform::OutputFile> file_;
  bool stays_in_memory_ = false;
};

}  // namespace vellobar::mailbox
