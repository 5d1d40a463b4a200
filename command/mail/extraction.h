// Saving attachments into a folder: under harmless names that are new there, in little memory.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "command/output/progress_bar.h"

namespace vellobar {
class CAttachment;
class CMessage;
}  // namespace vellobar

namespace vellobar::command {

class MailboxFile;

/// Saves attachments one after the other. One that cannot be written does not keep the others; `end` tells.
class Extraction {
 public:
  struct Options {
    std::string folder;
    bool scan_text = false;
    bool json = false;
  };

  /// Throws Failure when there is no such folder.
  Extraction(const MailboxFile& mailbox, const Options& options);

  /// Saves what a message holds and prints the path, or the object, of each file.
  void take(std::int64_t index, CMessage& message);

  /// Throws a Failure when something could not be written.
  void end() const;

 private:
  void save(std::int64_t index, std::int64_t number, const CAttachment& attachment);
  std::int64_t save_or_throw(const CAttachment& attachment, std::string& path);

  const MailboxFile& mailbox_;
  const Options& options_;
  ProgressBar bar_;
  std::int64_t not_written_ = 0;
  std::unordered_map<std::string, int> numbers_;  ///< to each name, the number that was free last
};

}  // namespace vellobar::command
