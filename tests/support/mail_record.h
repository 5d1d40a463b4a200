// What a client learns of real mail, written down so that two readers of the same mail can be compared: the tree of
// every message with the positions of its parts, and lengths and checksums of its texts and of its decoded attachments.
// The record holds no text of the mail. Whoever reads the mail shows it through the classes here.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vellobar::tests {

/// The result of a call: a text, or the error's number (1 for an error without one).
struct ReadText {
  std::u16string text;
  int error = 0;
};

/// An attachment as it is described, and the bytes that saving it gave.
struct ReadAttachment {
  std::u16string name = {};
  std::u16string type = {};
  std::int64_t encoding = 0;
  std::int64_t size = 0;
  std::string saved = {};
  int error = 0;
};

class ReadMessage {
 public:
  virtual ~ReadMessage() = default;
  virtual std::int64_t start() = 0;
  virtual std::int64_t end() = 0;
  virtual ReadText content_type() = 0;
  virtual ReadText mail_info() = 0;
  virtual ReadText text() = 0;
  virtual ReadText plain_text() = 0;
  virtual ReadText html_text() = 0;
  virtual ReadText body() = 0;
  virtual ReadText boundary() = 0;
  virtual std::int64_t part_count() = 0;
  virtual std::unique_ptr<ReadMessage> part(std::int64_t index) = 0;
  /// Those of the whole tree, blocks in the text included, or the error in place of the first.
  virtual std::vector<ReadAttachment> attachments() = 0;
  /// Drops what was read.
  virtual void unload() = 0;
};

class ReadMailbox {
 public:
  virtual ~ReadMailbox() = default;
  virtual std::int64_t message_count() = 0;
  virtual std::unique_ptr<ReadMessage> message(std::int64_t index) = 0;
};

/// The lines about each mailbox, by the mailbox's name below the folder of real mail.
using MailRecord = std::map<std::string, std::string>;

/// Reads all real mail; empty where there is none. `open` gives the mailbox at a path.
MailRecord record_real_mail(const std::function<std::unique_ptr<ReadMailbox>(const std::string& path)>& open);

/// A record as the text of a file, and back.
std::string to_text(const MailRecord& record);
MailRecord to_record(std::string_view text);

/// Reads all real mail through the core. Attachments are saved into `folder`, which also takes the temporary files.
MailRecord record_real_mail_of_core(const std::string& folder);

}  // namespace vellobar::tests
