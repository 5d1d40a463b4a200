// A mailbox as the verbs use it: where each message lies, byte for byte. Unlike the control, whose positions run ahead
// behind a line longer than a read, this counts every line once however long it is, so that what is copied, listed or
// reported is what stands in the file. Messages are made when they are asked for and not kept: a mailbox of any size
// takes 32 bytes a message.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "mailbox/extent.h"

namespace vellobar {
class CMessage;
namespace platform {
class ByteSink;
class File;
}  // namespace platform
}  // namespace vellobar

namespace vellobar::command {

class MailboxFile {
 public:
  /// Opens and indexes the mailbox at a path, "-" being standard input. Throws Failure that says why it cannot be read.
  explicit MailboxFile(const std::string& path);
  /// The same with a file that is open.
  MailboxFile(std::string path, std::shared_ptr<platform::File> file);

  /// As the user calls it.
  const std::string& path() const { return path_; }
  platform::File& file() const { return *file_; }
  std::int64_t size() const;

  std::int64_t count() const { return static_cast<std::int64_t>(extents_.size()); }
  /// "holds 2 messages, counted from 0", for a message to the user.
  std::string described_count() const;

  const mailbox::Extent& extent(std::int64_t index) const { return extents_[static_cast<std::size_t>(index)]; }
  /// A message made for the caller alone.
  std::shared_ptr<CMessage> message(std::int64_t index) const;
  /// Writes the bytes of a message as they stand in the file.
  void copy(std::int64_t index, platform::ByteSink& to) const;
  /// Writes what lies from one position to just before another.
  void copy_range(std::int64_t from, std::int64_t to, platform::ByteSink& sink) const;

  /// True while the path names the file that was indexed, which has grown at most, and every message begins where it
  /// was found.
  bool is_as_indexed() const;

 private:
  std::string path_;
  std::shared_ptr<platform::File> file_;
  mailbox::ExtentTable extents_;
};

/// Opens mail to read it, "-" being standard input. Throws Failure that says why it cannot be read.
std::shared_ptr<platform::File> open_mail(const std::string& path);

/// How a scan goes that counts every line once: no read is the end of a chunk.
inline constexpr std::int64_t kEndlessChunk = std::int64_t{1} << 62;

}  // namespace vellobar::command
