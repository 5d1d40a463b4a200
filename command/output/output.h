// A file that a verb writes: whole or not at all. What is written goes to a file beside the wanted one, which takes the
// wanted name when everything is on the disk; whatever fails before that removes it. A file that was there keeps its
// owner, mode, links and content until then. "-" is standard output, and what is no regular file (a device, a pipe) is
// written as it comes.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "command/output/interruption.h"
#include "platform/file.h"
#include "platform/file_replacement.h"

namespace vellobar::command {

class Output final : public platform::ByteSink {
 public:
  enum class Existing { is_replaced, is_refused };

  /// Throws Failure when the file cannot be written, or is there and must not be.
  Output(const std::string& path, Existing existing);
  /// Removes what was not finished.
  ~Output() override;

  /// Throws Failure.
  void write(std::string_view bytes) override;
  /// Puts the file in its place. Throws Failure, and then the file is as it was before.
  void finish();

 private:
  void open_new();
  void put_new_in_place();
  [[noreturn]] void fail() const;
  template <typename Work>
  void do_or_fail(Work work) const;

  std::string path_;
  std::optional<UnfinishedWork> unfinished_;
  std::string staged_path_;                                 ///< empty when nothing new is staged
  std::unique_ptr<platform::OutputFile> file_;              ///< a new file, or what is no regular one
  std::unique_ptr<platform::FileReplacement> replacement_;  ///< of a file that is there
};

/// Why a path cannot be written, as the end of a sentence (": there is no such folder"); empty when nothing is known.
std::string why_unwritable(const std::string& path);

}  // namespace vellobar::command
