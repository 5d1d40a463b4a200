// Real mailboxes, where they are present: every tree and every text is read, and where a second reader must agree by
// rule, the parts are those that Python's email package finds.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/ascii.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

std::vector<std::string> real_mail() {
  std::vector<std::string> files;
  for (const char* folder : {"mbox", "joined", "messages"}) {
    for (const std::string& file : tests::corpus_files(folder)) files.push_back(file);
  }
  return files;
}

/// Reads all that a client can read of a tree. Returns how many parts it has.
int read_tree(CMessage& top) {
  int parts = 0;
  std::vector<std::shared_ptr<CMessage>> waiting{top.shared_from_this()};
  while (!waiting.empty()) {
    const std::shared_ptr<CMessage> held = std::move(waiting.back());
    CMessage& message = *held;
    waiting.pop_back();
    if (message.load_headers() == nullptr) continue;
    EXPECT_LE(static_cast<std::int64_t>(message.Text().size()), message.EndPosition() + 1);
    message.PlainText();
    try {
      message.HTMLText();
    } catch (const Error& error) {
      EXPECT_EQ(error.status(), Status::fail);
    }
    for (std::int64_t i = 0; i < message.Parts()->Count(); ++i, ++parts) {
      waiting.push_back(message.Parts()->Item(i));
    }
  }
  if (top.load_headers() != nullptr) {
    EXPECT_GE(top.Body().size(), top.Text().size());
  }
  top.Unload();
  return parts;
}

TEST(RealMailTree, of_every_message_is_read_with_all_its_texts) {
  const std::vector<std::string> files = real_mail();
  if (files.empty()) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";
  int parts = 0;
  for (const std::string& file : files) {
    CVellobar control;
    control.SetFilename(tests::wide(file));
    control.Lock();
    const auto messages = control.Messages();
    for (std::int64_t i = 0; i < messages->Count(); ++i) parts += read_tree(*messages->Item(i));
  }
  EXPECT_GT(parts, 1000);
}

/// Types, texts and header counts of a tree, up to what writing back must change.
std::string outline_of(CMessage& top, bool& is_comparable) {
  std::string text;
  std::vector<std::pair<std::shared_ptr<CMessage>, int>> waiting{{top.shared_from_this(), 0}};
  while (!waiting.empty()) {
    const auto [message, depth] = waiting.back();
    waiting.pop_back();
    // Short delimiters are not written, unreadable blocks and blocks that run on into other mail change by being read
    // again, and a preamble or text without a line end runs into what follows it.
    const bool is_unreadable = message->load_headers() == nullptr;
    const bool is_short = !is_unreadable && message->Parts()->Count() > 0 && message->PartsBoundary().size() <= 5;
    const bool is_open = !is_unreadable && !message->Text().empty() && !message->Text().ends_with(u"\n");
    if (is_unreadable || is_short || is_open || message->StartPosition() == message->EndPosition()) {
      is_comparable = false;
      return {};
    }
    text += std::to_string(depth) + " " + tests::plain(message->Headers()->ToString()) + "\n";
    if (message->Parts()->Count() > 0 || depth > 0) text += tests::plain(message->Text());
    for (std::int64_t i = message->Parts()->Count(); i-- > 0;) {
      waiting.push_back({message->Parts()->Item(i), depth + 1});
    }
  }
  return text;
}

TEST(RealMailTree, is_the_same_after_an_update_without_edits) {
  const std::vector<std::string> files = real_mail();
  if (files.empty()) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";
  int compared = 0;
  for (const std::string& file : files) {
    tests::Mailbox box(tests::read_file(file));
    box.control().Lock();
    bool is_comparable = true;
    std::vector<std::string> before;
    for (std::int64_t i = 0; i < box.count(); ++i) {
      before.push_back(outline_of(*box.message(i), is_comparable));
      if (!box.message(i)->MailInfo().starts_with(u"From ") && i > 0) is_comparable = false;
    }
    if (!is_comparable || box.count() == 0) continue;
    box.control().Update();
    if (box.count() != static_cast<std::int64_t>(before.size())) continue;
    for (std::int64_t i = 0; i < box.count(); ++i) {
      EXPECT_EQ(outline_of(*box.message(i), is_comparable), before[static_cast<std::size_t>(i)]) << file << " " << i;
      ++compared;
    }
  }
  EXPECT_GT(compared, 500);
}

#ifndef _WIN32

/// Prints, for each "path start end" it is given, the tree of that message, or "-" where the two readers part by rule:
/// malformed mail, delimiter lines with something behind them or two in a row (an empty part here, one line there),
/// headers that one of them does not understand.
constexpr std::string_view kReader = R"(
import email, email.policy, re, sys
policy = email.policy.compat32
def differs_by_rule(message, raw):
    boundaries = []
    for part in message.walk():
        if part.defects or len(part.get_all('content-type', [])) > 1: return True
        value = str(part.get('content-type', ''))
        if part.get_content_maintype() != 'multipart':
            if 'multipart/' in value.lower() or part.get_content_type() == 'message/rfc822': return True
            continue
        boundary = part.get_boundary()
        if not boundary or '\\' in value or '=?' in value or 'boundary*' in value.lower(): return True
        boundaries.append(boundary.encode('ascii', 'surrogateescape'))
    if len(set(boundaries)) < len(boundaries): return True
    lines = re.split(b'\r?\n', raw)
    for line, following in zip(lines, lines[1:] + [b'']):
        if len(line) > 16000 or b'\r' in line: return True
        for boundary in boundaries:
            if not line.startswith(b'--' + boundary): continue
            if line[2 + len(boundary):] not in (b'', b'--') or following.startswith(b'--' + boundary): return True
    return False
def tree(part):
    if not part.is_multipart() or part.get_content_maintype() != 'multipart': return part.get_content_type()
    return part.get_content_type() + '(' + ','.join(tree(p) for p in part.get_payload()) + ')'
for line in open(sys.argv[1], encoding='utf-8', errors='surrogateescape'):
    path, start, end = line.rstrip('\n').rsplit(' ', 2)
    with open(path, 'rb') as file:
        file.seek(int(start)); raw = file.read(int(end) - int(start))
    raw = raw[raw.index(b'\n') + 1:] if raw.startswith(b'From ') and b'\n' in raw else raw
    try:
        message = email.message_from_bytes(raw, policy=policy)
        text = '-' if not message.is_multipart() or differs_by_rule(message, raw) else tree(message)
    except Exception:
        text = '-'
    print(text.encode('ascii', 'replace').decode())
)";

/// The type of a part as the other reader shows it: lower-cased, without parameters.
std::string type_of(CMessage& part) {
  std::string type = tests::plain(part.ContentType());
  type = type.substr(0, type.find(';'));
  std::string shown;
  for (const char c : type) {
    if (c != ' ' && c != '\t' && c != '\r' && c != '\n') shown += platform::lower_ascii(c);
  }
  return shown.empty() ? "text/plain" : shown;
}

std::string tree_of(CMessage& message) {
  std::string tree = type_of(message);
  const auto parts = message.Parts();
  if (parts->Count() == 0) return tree;
  for (std::int64_t i = 0; i < parts->Count(); ++i) tree += (i == 0 ? "(" : ",") + tree_of(*parts->Item(i));
  return tree + ")";
}

std::vector<std::string> lines_printed_by(const std::string& command) {
  std::vector<std::string> lines;
  FILE* output = popen(command.c_str(), "r");
  if (output == nullptr) return lines;
  std::string text;
  char block[4096];
  for (std::size_t got = 0; (got = std::fread(block, 1, sizeof block, output)) > 0;) text.append(block, got);
  if (pclose(output) != 0) return lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(RealMailTree, is_the_one_that_python_finds_where_both_agree_by_rule) {
  const std::vector<std::string> files = real_mail();
  if (files.empty()) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";
  if (std::system("python3 -c 'import email' >/dev/null 2>&1") != 0) GTEST_SKIP() << "no python3 here";
  const tests::TemporaryFolder folder;
  std::string extents;
  std::vector<std::string> trees, places;
  for (const std::string& file : files) {
    CVellobar control;
    control.SetFilename(tests::wide(file));
    control.Lock();
    const auto messages = control.Messages();
    for (std::int64_t i = 0; i < messages->Count(); ++i) {
      const auto message = messages->Item(i);
      extents +=
          file + " " + std::to_string(message->StartPosition()) + " " + std::to_string(message->EndPosition()) + "\n";
      places.push_back(file + " message " + std::to_string(i));
      trees.push_back(tree_of(*message));
      message->Unload();
    }
  }
  const std::string command =
      "python3 '" + folder.file("reader.py", kReader) + "' '" + folder.file("extents", extents) + "'";
  const std::vector<std::string> expected = lines_printed_by(command);
  ASSERT_EQ(expected.size(), trees.size());
  int compared = 0;
  for (std::size_t i = 0; i < trees.size(); ++i) {
    if (expected[i] == "-") continue;
    EXPECT_EQ(trees[i], expected[i]) << places[i];
    ++compared;
  }
  EXPECT_GT(compared, 100);
  std::printf("compared %d of %zu messages\n", compared, trees.size());
}

#endif

}  // namespace
}  // namespace vellobar
