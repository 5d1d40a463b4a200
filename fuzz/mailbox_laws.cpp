#include "fuzz/mailbox_laws.h"

#include <cstdint>
#include <memory>

#include "fuzz/literal_mail.h"
#include "fuzz/target.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"

namespace vellobar::fuzz {

namespace {

constexpr std::size_t kLongestLine = 16384;
constexpr std::size_t kLongestUnwrittenDelimiter = 5;
/// What the boundaries that are made begin with.
constexpr std::string_view kMadeBoundary = "----=_NextPart_";

std::string bytes(std::u16string_view text) { return platform::narrow(platform::kThreadCodePage, text); }

std::string header_bytes(CMessage& message) {
  const CHeaders* headers = message.load_headers();
  require(headers != nullptr, "headers of short lines are readable");
  std::string text;
  for (std::size_t i = 0; i < static_cast<std::size_t>(headers->Count()); ++i) {
    text += bytes(headers->name(i)) + ": " + bytes(headers->value(i)) + "\r\n";
  }
  return text;
}

/// A line that was begun is ended before a separator or delimiter line.
void end_line(std::string& text) {
  if (!text.empty() && !text.ends_with('\n')) text += "\r\n";
}

void append_message(std::string& to, CMessage& message);

void append_parts(std::string& to, CMessages& parts) {
  const std::string delimiter = bytes(parts.separator());
  const bool has_delimiter = delimiter.size() > kLongestUnwrittenDelimiter;
  for (std::int64_t i = 0; i < parts.Count(); ++i) {
    if (has_delimiter) {
      end_line(to);
      to += delimiter + "\r\n";
    }
    append_message(to, *parts.Item(i));
  }
  if (has_delimiter) {
    end_line(to);
    to += delimiter + "--\r\n";
  }
  to += "\r\n";
}

void append_message(std::string& to, CMessage& message) {
  to += header_bytes(message) + "\r\n" + bytes(message.Text());
  const std::shared_ptr<CMessages> parts = message.Parts();
  if (parts->Count() > 0) append_parts(to, *parts);
}

bool begins_one_message(std::string_view text) {
  return text.starts_with("From ") && text.find("\nFrom ") == text.npos;
}

}  // namespace

bool has_short_lines(std::string_view file) {
  for (std::size_t position = 0; position < file.size();) {
    const std::size_t end = std::min(file.find('\n', position), file.size() - 1) + 1;
    if (end - position >= kLongestLine) return false;
    position = end;
  }
  return true;
}

void require_as_in_file(CMessages& messages, std::string_view file) {
  const std::vector<LiteralMessage> expected = read_mailbox(file);
  require(messages.Count() == static_cast<std::int64_t>(expected.size()), "as many messages are found as there are");
  std::int64_t position = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    CMessage& message = *messages.Item(static_cast<std::int64_t>(i));
    require(message.StartPosition() == position, "a message begins where the one before it ends");
    require(message.EndPosition() == static_cast<std::int64_t>(expected[i].end), "a message ends where its text ends");
    require(message.Bytes() == message.Size(), "a message has the bytes between its positions");
    require_same(bytes(message.MailInfo()), expected[i].separator_line, "MailInfo is the separator line");
    require_same(header_bytes(message), written(expected[i].block.headers), "headers are those in the file");
    if (message.Parts()->Count() == 0 && message.PartsBoundary().empty()) {
      require_same(bytes(message.Text()), expected[i].body, "the body is that in the file, byte for byte");
    }
    position = message.EndPosition();
  }
  require(position == static_cast<std::int64_t>(file.size()), "the messages cover the file");
}

std::string expected_bytes(CMessage& message) {
  const std::string separator_line = bytes(message.MailInfo());
  std::string text;
  if (separator_line.starts_with("From ")) text = separator_line + "\r\n";
  append_message(text, message);
  return text;
}

ExpectedMailbox expected_mailbox(CMessages& messages) {
  ExpectedMailbox expected;
  for (std::int64_t i = 0; i < messages.Count(); ++i) {
    expected.messages.push_back(expected_bytes(*messages.Item(i)));
    end_line(expected.bytes);
    expected.bytes += expected.messages.back();
    expected.is_read_as_written = expected.is_read_as_written && begins_one_message(expected.messages.back());
  }
  if (messages.Count() > 0) expected.bytes += "\r\n";
  return expected;
}

std::size_t tree_size(CMessage& top, std::size_t most) {
  std::vector<std::shared_ptr<CMessage>> waiting{top.shared_from_this()};
  std::size_t size = 0;
  while (!waiting.empty() && size <= most) {
    const std::shared_ptr<CMessage> held = std::move(waiting.back());
    CMessage& message = *held;
    waiting.pop_back();
    ++size;
    const std::shared_ptr<CMessages> parts = message.Parts();
    for (std::int64_t i = 0; i < parts->Count(); ++i) waiting.push_back(parts->Item(i));
  }
  return size;
}

std::string with_plain_boundaries(std::string file) {
  constexpr std::size_t kAddress = 8;
  for (std::size_t at = file.find(kMadeBoundary); at != file.npos; at = file.find(kMadeBoundary, at + 1)) {
    const std::size_t digits = at + kMadeBoundary.size();
    if (digits + kAddress <= file.size()) file.replace(digits, kAddress, kAddress, '#');
  }
  return file;
}

bool has_made_boundary(std::string_view bytes) { return bytes.find(kMadeBoundary) != bytes.npos; }

}  // namespace vellobar::fuzz
