// Messages appended to a mailbox: each begins with a separator line and is followed by an empty one, and no other line
// of it looks like a separator line.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/clock.h"
#include "platform/file.h"

namespace vellobar {
class CMessage;
}

namespace vellobar::command {

class MailboxFile;

/// "From ann@example.org Mon Jan  5 10:00:00 2026": the form of RFC 4155, in UTC. A sender that is empty or no plain
/// word becomes MAILER-DAEMON.
std::string separator_line(std::string_view sender, const platform::BrokenDownTime& utc);

/// Passes everything on with a ">" before each line that begins with "From ".
class QuotingSink final : public platform::ByteSink {
 public:
  explicit QuotingSink(platform::ByteSink& to) : to_(to) {}

  void write(std::string_view bytes) override;
  /// To be called at the end: what may still have become a separator line is passed on.
  void end();

 private:
  platform::ByteSink& to_;
  std::size_t matched_ = 0;  ///< how much of "From " the line consists of, which is held back
  bool is_open_ = true;      ///< the line may still become one
};

class Appender final : public platform::ByteSink {
 public:
  /// Lines that this adds end like those of the mailbox.
  Appender(platform::ByteSink& to, std::string_view line_end) : to_(to), line_end_(line_end) {}

  /// What the mailbox holds already.
  void write(std::string_view bytes) override;

  /// A message as it stands in another mailbox.
  void add(const MailboxFile& from, std::int64_t index);
  /// A file that is one message.
  void add(platform::File& message_file);

 private:
  void begin_message();
  void write_separator_of(CMessage& message);

  platform::ByteSink& to_;
  std::string line_end_;
  std::string last_;  ///< the last bytes written, as many as tell whether an empty line was written
};

}  // namespace vellobar::command
