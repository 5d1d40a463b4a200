// Real mail, where it is present: the attachments of every message can be listed and saved, and their bytes are those
// that Python's email package decodes where the rules coincide.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

/// Runs `action(path, message, attachment)` on every attachment of every message that has readable headers. Returns the
/// number of messages.
template <typename Action>
std::size_t for_each_attachment(bool scan_text, const Action& action) {
  std::size_t messages = 0;
  for (const char* folder : {"mbox", "joined", "messages"}) {
    for (const std::string& path : tests::corpus_files(folder)) {
      CVellobar control;
      control.SetFilename(tests::wide(path));
      control.Lock();
      for (std::int64_t i = 0; i < control.Messages()->Count(); ++i) {
        CMessage& message = *control.Messages()->Item(i);
        if (message.load_headers() == nullptr) continue;
        ++messages;
        const auto attachments = message.Attachments();
        attachments->SetScanText(scan_text);
        for (std::int64_t a = 0; a < attachments->Count(); ++a) action(path, message, *attachments->Item(a));
        message.Unload();
      }
    }
  }
  return messages;
}

TEST(RealMailAttachments, every_attachment_of_every_message_can_be_saved) {
  const tests::TemporaryFolder temporary;
  const platform::FixedTemporaryFolder fixed(temporary.path(""));
  const std::u16string target = tests::wide(temporary.path("saved"));
  std::size_t saved = 0;
  const std::size_t messages =
      for_each_attachment(true, [&](const std::string&, CMessage& message, CAttachment& found) {
        EXPECT_NE(found.Part(), nullptr);
        EXPECT_LE(found.Size(), message.Size() + 2 * message.Lines() + 2);
        found.Save(target);
        // A header block that ran on behind the end of its part leaves no body.
        if (found.Size() <= 0) {
          EXPECT_EQ(tests::read_file(temporary.path("saved")), "");
        }
        ++saved;
      });
  if (messages == 0) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";
  EXPECT_GT(saved, 100u);
}

#ifndef _WIN32

TEST(RealMailAttachments, decode_as_pythons_where_the_rules_coincide) {
  if (std::system("python3 -c pass >/dev/null 2>&1") != 0) GTEST_SKIP() << "no Python here";
  const tests::TemporaryFolder folder;
  std::string requests;
  std::size_t count = 0;
  const std::size_t messages =
      for_each_attachment(false, [&](const std::string& path, CMessage& message, CAttachment& found) {
        const std::string saved = folder.path(std::to_string(count++));
        found.Save(tests::wide(saved));
        requests += path;
        for (const std::int64_t number : {message.StartPosition(), message.EndPosition(), found.range().start,
                                          found.range().end, std::int64_t{found.Encoding()}}) {
          requests += '\t' + std::to_string(number);
        }
        requests += '\t' + saved + '\n';
      });
  if (messages == 0) GTEST_SKIP() << "no real mail here: set VELLOBAR_CORPUS to its folder";

  const std::string input = folder.file("requests", requests);
  const std::string output = folder.path("answers");
  const std::string command = "python3 \"" + tests::source_file("tests/attachments/decode_attachments.py") + "\" < \"" +
                              input + "\" > \"" + output + '"';
  ASSERT_EQ(std::system(command.c_str()), 0);

  std::map<std::string, int> apart;
  std::size_t equal = 0;
  std::size_t answers = 0;
  std::ifstream lines(output);
  std::ifstream asked(input);
  for (std::string line, request; std::getline(lines, line) && std::getline(asked, request); ++answers) {
    EXPECT_FALSE(line.starts_with("!")) << request << '\n' << line;
    if (line == "=") ++equal;
    if (line.starts_with("# ")) ++apart[line.substr(2)];
  }
  EXPECT_EQ(answers, count);
  EXPECT_GT(equal, count / 2);
  std::printf("  %zu of %zu attachments compared\n", equal, count);
  for (const auto& [rule, set_apart] : apart) std::printf("  %d set apart: %s\n", set_apart, rule.c_str());
}

#endif

}  // namespace
}  // namespace vellobar
