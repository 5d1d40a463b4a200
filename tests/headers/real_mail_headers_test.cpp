// Real mail, where it is present: every named property of every message can be read, and subjects decode as
// Python's email.header decodes them where the rules coincide.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "platform/code_page.h"
#include "tests/support/mailboxes.h"

namespace vellobar {
namespace {

template <typename Action>
void for_each_message(const Action& action) {
  for (const char* folder : {"mbox", "joined", "messages"}) {
    for (const std::string& path : tests::corpus_files(folder)) {
      CVellobar control;
      control.SetFilename(tests::wide(path));
      control.Lock();
      for (std::int64_t i = 0; i < control.Messages()->Count(); ++i) action(*control.Messages()->Item(i));
    }
  }
}

/// Reads every named property; the number of characters they give.
std::size_t read_named_properties(CMessage& message) {
  std::size_t size = 0;
  for (const std::u16string& text :
       {message.From(), message.Subject(), message.CC(), message.BCC(), message.To(), message.ContentDescription(),
        message.ContentDisposition(), message.ContentID(), message.ContentTransferEncoding(), message.ContentType(),
        message.MessageID(), message.MIMEVersion(), message.ContentSubtype(), message.ContentSubtypeParameters(),
        message.FromName(), message.FromEmail(), message.ToName(), message.ToEmail(), message.CharSet()}) {
    size += text.size();
  }
  message.code_page();
  try {
    message.Date();
  } catch (const Error& error) {
    EXPECT_EQ(error.status(), Status::invalid_argument);
  }
  return size;
}

TEST(RealMailHeaders, every_named_property_of_every_message_can_be_read) {
  std::size_t messages = 0;
  std::size_t characters = 0;
  for_each_message([&](CMessage& message) {
    ++messages;
    characters += read_named_properties(message);
  });
  if (messages == 0) GTEST_SKIP() << "no real mail here";
  EXPECT_GT(characters, messages);
}

TEST(RealMailHeaders, reading_named_properties_changes_neither_message_nor_mailbox) {
  std::size_t messages = 0;
  for_each_message([&](CMessage& message) {
    if (++messages % 10 != 0 || message.load_headers() == nullptr) return;
    const std::u16string before = message.Headers()->ToString();
    read_named_properties(message);
    EXPECT_EQ(message.Headers()->ToString(), before);
    EXPECT_FALSE(message.Changed());
  });
  if (messages == 0) GTEST_SKIP() << "no real mail here";
}

#ifndef _WIN32

std::string hexadecimal(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    constexpr char kDigits[] = "0123456789abcdef";
    text += kDigits[static_cast<unsigned char>(c) >> 4];
    text += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return text;
}

// Where the two part, in Python's answer, the rules of this component that keep them apart are these: white space
// between words and leading white space stay; folds led by a space stay, TAB folds go with their TAB; one code page
// serves all words and raw 8-bit bytes; only UTF-8, UTF-7 and "windows-" names are known; what is no well-formed word
// (a space or "?" in its text, no end) ends the decoding or is decoded as far as it goes; Base64 ends at the first
// stranger, broken escapes are passed on in upper case, decoded text ends at its first NUL; decoded text that forms a
// word is decoded again.
TEST(RealMailHeaders, subjects_decode_as_pythons_where_the_rules_coincide) {
  if (std::system("python3 -c pass >/dev/null 2>&1") != 0) GTEST_SKIP() << "no Python here";
  std::vector<std::string> decoded;
  std::string values;
  for_each_message([&](CMessage& message) {
    const CHeaders* headers = message.load_headers();
    const std::size_t position = headers == nullptr ? CHeaders::npos : headers->find(std::string_view("Subject"));
    if (position == CHeaders::npos) return;
    values += hexadecimal(headers->narrow_value(position)) + '\n';
    decoded.push_back(hexadecimal(platform::narrow(platform::kUtf8CodePage, message.Subject())));
  });
  if (decoded.empty()) GTEST_SKIP() << "no real mail here";

  const tests::TemporaryFolder folder;
  const std::string input = folder.file("values", values);
  const std::string output = folder.path("texts");
  const std::string command = "python3 \"" + tests::source_file("tests/headers/decode_subjects.py") + "\" < \"" +
                              input + "\" > \"" + output + '"';
  ASSERT_EQ(std::system(command.c_str()), 0);

  std::map<std::string, int> apart;
  std::size_t compared = 0;
  std::size_t line_count = 0;
  std::ifstream lines(output);
  for (std::string line; std::getline(lines, line); ++line_count) {
    ASSERT_LT(line_count, decoded.size());
    if (line.starts_with("# ")) {
      ++apart[line.substr(2)];
    } else {
      ++compared;
      EXPECT_EQ(decoded[line_count], line.substr(2)) << "subject " << line_count;
    }
  }
  EXPECT_EQ(line_count, decoded.size());
  EXPECT_GT(compared, decoded.size() / 2);
  std::printf("  %zu of %zu subjects compared\n", compared, decoded.size());
  for (const auto& [rule, count] : apart) std::printf("  %d set apart: %s\n", count, rule.c_str());
}

#endif

}  // namespace
}  // namespace vellobar
