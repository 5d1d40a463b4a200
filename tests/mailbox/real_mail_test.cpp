// Real mailboxes, where they are present: they lock, count as many messages as an independent count of their separator
// lines says, and give up every header block.
#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

/// Messages of a file by the plainest reading of it: one for each line that begins with "From ", and one for what
/// stands before the first such line.
std::int64_t count_messages(const std::string& content) {
  std::int64_t count = 0;
  std::size_t line = 0;
  while (line < content.size()) {
    if (line == 0 || content.compare(line, 5, "From ") == 0) ++count;
    const std::size_t feed = content.find('\n', line);
    if (feed == std::string::npos) break;
    line = feed + 1;
  }
  return count;
}

/// True when a line is so long that positions may run ahead, which is another test's subject: mail whose lines end with
/// CR.
bool has_over_long_line(const std::string& content) {
  std::size_t line = 0;
  for (std::size_t feed = content.find('\n'); feed != std::string::npos; feed = content.find('\n', line)) {
    if (feed - line >= 16384) return true;
    line = feed + 1;
  }
  return content.size() - line >= 16384;
}

/// Lines of the header block that begins at `start`, up to its empty line; -1 when one of them is too long to be read.
std::int64_t count_headers(const std::string& content, std::size_t start, bool has_separator) {
  std::int64_t count = 0;
  if (has_separator) start = std::min(content.find('\n', start), content.size() - 1) + 1;
  while (start < content.size()) {
    const std::size_t feed = std::min(content.find('\n', start), content.size() - 1);
    const std::size_t length = feed + 1 - start;
    if (length >= 16384) return -1;
    const std::string line =
        content.substr(start, std::min(content.find_first_of("\r\n", start), content.size()) - start);
    if (line.empty()) break;
    const bool continues = line[0] == ' ' || line[0] == '\t';
    if (continues && count == 0) break;
    if (!continues && line.find(':') != std::string::npos) ++count;
    start = feed + 1;
  }
  return count;
}

void expect_indexed_and_readable(const std::string& path) {
  const std::string content = tests::read_file(path);
  if (has_over_long_line(content)) return;
  CVellobar control;
  control.SetFilename(tests::wide(path));
  control.Lock();
  const auto messages = control.Messages();
  EXPECT_EQ(messages->Count(), count_messages(content)) << path;
  for (std::int64_t i = 0; i < messages->Count(); ++i) {
    const auto message = messages->Item(i);
    const bool has_separator = content.compare(static_cast<std::size_t>(message->StartPosition()), 5, "From ") == 0;
    const std::int64_t expected =
        count_headers(content, static_cast<std::size_t>(message->StartPosition()), has_separator);
    if (expected < 0) {
      tests::expect_error(ErrorNumber::cannot_load_headers, Reporter::message, [&] { message->Headers(); });
    } else {
      EXPECT_EQ(message->Headers()->Count(), expected) << path << " message " << i;
    }
  }
}

TEST(RealMail, every_mailbox_locks_counts_its_messages_and_reads_every_header_block) {
  std::vector<std::string> files = tests::corpus_files("mbox");
  for (const std::string& file : tests::corpus_files("joined")) files.push_back(file);
  if (files.empty()) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";
  for (const std::string& file : files) expect_indexed_and_readable(file);
}

/// True when a header block runs on into the next message, for want of an empty line: its copy of that message's
/// separator line then begins a message of its own in what is written.
bool has_runaway_header_block(CMessages& messages) {
  for (std::int64_t i = 0; i < messages.Count(); ++i) {
    CHeaders& headers = *messages.Item(i)->Headers();
    for (std::int64_t h = 0; h < headers.Count(); ++h) {
      if (headers.Item(h)->Name().starts_with(u"From ")) return true;
    }
  }
  return false;
}

/// The texts of all messages; none for a multipart message, which is written from its parts by rules of their own.
std::vector<std::optional<std::u16string>> single_part_texts(CMessages& messages) {
  std::vector<std::optional<std::u16string>> texts;
  for (std::int64_t i = 0; i < messages.Count(); ++i) {
    std::u16string text = messages.Item(i)->Text();
    const bool is_single = messages.Item(i)->PartsBoundary().empty();
    texts.push_back(is_single ? std::optional(std::move(text)) : std::nullopt);
  }
  return texts;
}

TEST(RealMail, update_without_edits_keeps_every_message_and_every_single_part_body) {
  const std::vector<std::string> files = tests::corpus_files("mbox");
  if (files.empty()) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";
  int updated = 0;
  for (const std::string& file : files) {
    const std::string content = tests::read_file(file);
    tests::Mailbox box(content);
    box.control().Lock();
    if (box.count() == 0 || has_over_long_line(content) || has_runaway_header_block(*box.control().Messages()))
      continue;
    std::vector<std::optional<std::u16string>> texts = single_part_texts(*box.control().Messages());
    if (texts.back()) *texts.back() += u"\r\n";
    box.control().Update();
    EXPECT_TRUE(single_part_texts(*box.control().Messages()) == texts) << file;
    ++updated;
  }
  EXPECT_GT(updated, 100);
}

}  // namespace
}  // namespace vellobar
